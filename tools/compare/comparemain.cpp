// benchex-compare: did it get slower?
#include "commandline.h"
#include "comparison.h"
#include "comparisonoutput.h"
#include "pairmain.h"

#include <filesystem>
#include <iostream>

namespace {

constexpr const char* description =
    R"(Compares two result tables, or two sets of tables of repeated runs. A table is a csv file of benchex -r or -R, or a
directory of them. "benchex-compare --pair BEFORE AFTER" runs two builds against each other instead; see
"benchex-compare --pair --help".)";

using Paths = std::vector<std::filesystem::path>;

struct Options {
    Paths loose, before, after;
    ComparisonRules rules;
    bool csv = false;
    bool json = false;
    bool allRows = false;
    bool partial = false;

    explicit Options(CLI::App& app);
    /** Tables stand alone, one a side, or behind the words that name the sides. */
    void takeLoose();
};

Options::Options(CLI::App& app) {
    const auto tables = [&](const char* name, Paths& to, const char* help) {
        app.add_option(name, to, help)->type_name("TABLE");
    };
    const auto flag = [&](const char* name, bool& to, const char* help) {
        return app.add_flag(name, to, help)->disable_flag_override();
    };
    app.add_option("BEFORE AFTER", loose, "a table of each side")->type_name("");
    tables("--before", before, "tables of the first side, up to the next option");
    tables("--after", after, "tables of the second side");
    addShare(app, "--threshold", rules.threshold, 1000, "slowdown allowed (5)");
    addShare(app, "--alpha", rules.alpha, 100, "probability of a false alarm where nothing changed (5)");
    addShare(app, "--accuracy", rules.accuracy, 100,
             "of a figure without repeated runs that states none (5)");
    flag("--time", rules.time, "compare microseconds per call instead of clocks per unit");
    flag("--instructions", rules.instructions,
         "compare the instructions of a call, exactly, and no clocks (runs with -dInstructions=yes)")
        ->excludes("--time");
    flag("--all", allRows, "list rows that are the same, too");
    flag("--json", json, "write JSON")->excludes(flag("--csv", csv, "write csv"));
    flag("--partial", partial, "accept tables whose last line is cut off");
}

void Options::takeLoose() {
    const bool sides = !before.empty() || !after.empty();
    if (!loose.empty() && sides) {
        throw CLI::ValidationError("tables stand either alone or behind --before and --after",
                                   CLI::ExitCodes::ValidationError);
    }
    if (loose.size() == 2) {
        before = {loose[0]};
        after = {loose[1]};
    } else if (!sides) {
        throw CLI::ValidationError("two tables are needed; several a side stand behind --before and --after",
                                   CLI::ExitCodes::ValidationError);
    }
    if (before.empty() || after.empty())
        throw CLI::ValidationError("a table of either side is needed", CLI::ExitCodes::ValidationError);
}

/** "before.csv", or "dir (5 runs)". */
std::string sideName(const Paths& paths, std::size_t runs) {
    std::string name = paths.front().string();
    if (paths.size() > 1)
        name += " and " + std::to_string(paths.size() - 1) + " more";
    return runs == 1 ? name : name + " (" + std::to_string(runs) + " runs)";
}

int compare(Options& options) {
    options.takeLoose();
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
    (options.json ? writeJson : options.csv ? writeCsv : writeText)(std::cout, report);
    return comparison.count(Verdict::slower) > 0 ? slowerThanAllowed : done;
}

} // namespace

// Options are declared before anything is caught: what they throw is a mistake in this file.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    if (asksForPair(argc, argv))
        return runPair(argc, argv);
    CLI::App app(description, "benchex-compare");
    app.footer(
        "Exit status: 0 nothing is slower than allowed, 1 some row is, 2 the tables cannot be compared.");
    Options options(app);
    return runProgram(app, argc, argv, [&] { return compare(options); });
}
