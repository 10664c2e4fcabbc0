// benchex-compare: did it get slower?
#include "arguments.h"
#include "comparison.h"
#include "comparisonoutput.h"

#include <filesystem>
#include <iostream>

namespace {

constexpr const char* usage =
    R"(Usage: benchex-compare [options] BEFORE AFTER
       benchex-compare [options] --before TABLE... --after TABLE...
Compares two result tables, or two sets of tables of repeated runs. A table is a csv file of benchex -r or -R, or a
directory of them.

  --before TABLE...    tables of the first side, up to the next option
  --after TABLE...     tables of the second side
  --threshold PERCENT  slowdown allowed (5)
  --alpha PERCENT      probability of a false alarm where nothing changed (5)
  --accuracy PERCENT   of a figure without repeated runs that states none (5)
  --time               compare microseconds per call instead of clocks per unit
  --all                list rows that are the same, too
  --csv, --json        write for scripts instead of for people
  --partial            accept tables whose last line is cut off
  --help, --version

Exit status: 0 nothing is slower than allowed, 1 some row is, 2 the tables cannot be compared.
)";

enum class Form { text, csv, json };

struct Options {
    std::vector<std::filesystem::path> before, after;
    ComparisonRules rules;
    Form form = Form::text;
    bool allRows = false;
    bool partial = false;
    bool answered = false; /**< --help or --version: nothing else to do */
};

/** Operands go to the side named last; with none named there are exactly two, one a side. */
void sortOperands(Options& options, std::vector<std::filesystem::path>& loose) {
    if (!loose.empty() && (!options.before.empty() || !options.after.empty()))
        throw UsageError("tables stand either alone or behind --before and --after");
    if (loose.size() == 2) {
        options.before = {loose[0]};
        options.after = {loose[1]};
    } else if (!loose.empty()) {
        throw UsageError("two tables are needed; several a side stand behind --before and --after");
    }
    if (options.before.empty() || options.after.empty())
        throw UsageError("a table of either side is needed");
}

Options readOptions(Arguments arguments) {
    Options options;
    std::vector<std::filesystem::path> loose;
    auto* side = &loose;
    while (arguments.next()) {
        if (arguments.isOperand()) {
            side->emplace_back(arguments.word());
        } else if (arguments.is("--before")) {
            side = &options.before;
        } else if (arguments.is("--after")) {
            side = &options.after;
        } else {
            side = &loose;
            if (arguments.is("--threshold")) {
                options.rules.threshold = arguments.percent(1000);
            } else if (arguments.is("--alpha")) {
                options.rules.alpha = arguments.percent(100);
            } else if (arguments.is("--accuracy")) {
                options.rules.accuracy = arguments.percent(100);
            } else if (arguments.is("--time")) {
                options.rules.time = true;
            } else if (arguments.is("--all")) {
                options.allRows = true;
            } else if (arguments.is("--csv")) {
                options.form = Form::csv;
            } else if (arguments.is("--json")) {
                options.form = Form::json;
            } else if (arguments.is("--partial")) {
                options.partial = true;
            } else if (arguments.is("--help") || arguments.is("-h")) {
                std::cout << usage;
                options.answered = true;
                return options;
            } else if (arguments.is("--version")) {
                std::cout << "benchex-compare " BENCHEX_VERSION "\n";
                options.answered = true;
                return options;
            } else {
                arguments.refuse();
            }
        }
    }
    sortOperands(options, loose);
    return options;
}

/** "before.csv", or "dir (5 runs)". */
std::string sideName(const std::vector<std::filesystem::path>& paths, std::size_t runs) {
    std::string name = paths.front().string();
    if (paths.size() > 1)
        name += " and " + std::to_string(paths.size() - 1) + " more";
    return runs == 1 ? name : name + " (" + std::to_string(runs) + " runs)";
}

int compare(const Options& options) {
    Collection before = collectTables(options.before, options.partial);
    Collection after = collectTables(options.after, options.partial);
    for (const Collection* side : {&before, &after})
        for (const std::string& note : side->notes)
            std::cerr << "benchex-compare: " << note << "\n";
    const Comparison comparison = compareRuns(before.runs, after.runs, options.rules);
    if (comparison.rows.empty()) {
        throw TableError("no row of " + options.before.front().string() + " has a figure in " +
                         options.after.front().string() + ", too");
    }
    ParameterNames names = before.names;
    names.merge(after.names);
    const ComparisonReport report{comparison,
                                  options.rules,
                                  names,
                                  sideName(options.before, before.runs.size()),
                                  sideName(options.after, after.runs.size()),
                                  options.allRows};
    switch (options.form) {
    case Form::text:
        writeText(std::cout, report);
        break;
    case Form::csv:
        writeCsv(std::cout, report);
        break;
    case Form::json:
        writeJson(std::cout, report);
        break;
    }
    return comparison.count(Verdict::slower) > 0 ? ExitStatus::slowerThanAllowed : ExitStatus::done;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const Options options = readOptions(Arguments(argc, argv));
        const int status = options.answered ? static_cast<int>(ExitStatus::done) : compare(options);
        if (!std::cout.flush())
            throw TableError("the result cannot be written");
        return status;
    } catch (const UsageError& error) {
        std::cerr << "benchex-compare: " << error.what() << "\nTry 'benchex-compare --help'.\n";
    } catch (const std::exception& error) {
        std::cerr << "benchex-compare: " << error.what() << "\n";
    }
    return ExitStatus::cannotDo;
}
