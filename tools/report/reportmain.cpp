// benchex-report: result tables as a page to look at, or as JSON.
#include "commandline.h"
#include "history.h"
#include "pagesections.h"
#include "reportjson.h"
#include "reportpage.h"
#include "terminal.h"
#include "texttable.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr const char* description =
    R"(Writes result tables as one HTML page that needs no network. A table is a csv file of benchex -r or -R, or a
directory of them; "<title>_sum.csv" (-u) and "<title>_name.csv" (-q) beside it are read, too. Several tables are
laid over each other.)";

struct Options {
    std::vector<std::filesystem::path> tables;
    std::string output;
    std::string title = "Benchex report";
    std::filesystem::path chartLibrary;
    bool json = false;
    bool table = false;
    bool partial = false;
    bool history = false;
    bool rows = false;
    std::size_t alarm = 0;

    explicit Options(CLI::App& app) {
        app.add_option("TABLE", tables, "csv files, or directories of them")->required()->type_name("");
        app.add_option("-o,--output", output,
                       "file to write (report.html, or report.json with --json; \"-\" is standard output)")
            ->type_name("FILE");
        auto* asJson = app.add_flag("--json", json, "write the data as JSON")->disable_flag_override();
        app.add_flag("--table", table,
                     "write the last run as a table for the terminal; with -o the page too, named last")
            ->excludes(asJson)
            ->disable_flag_override();
        auto* asHistory =
            app.add_flag(
                   "--history", history,
                   "the tables are of many builds in their order: name the steps of each function, and write "
                   "the last build's page with all functions over the builds")
                ->excludes("--table")
                ->disable_flag_override();
        app.add_flag("--rows", rows, "with --history: each row by itself, not the functions")
            ->needs(asHistory)
            ->disable_flag_override();
        app.add_option("--alarm", alarm,
                       "with --history: exit status 1 when one of so many last builds began a slower level")
            ->needs(asHistory)
            ->type_name("BUILDS");
        app.add_option("--title", title, "title of the page");
        app.add_option("--chart-library", chartLibrary,
                       "script of the chart library, where it is not in its package's place")
            ->type_name("FILE");
        app.add_flag("--partial", partial, "accept tables whose last line is cut off")
            ->disable_flag_override();
    }
};

void write(const std::string& output, const std::string& text) {
    if (output == "-") {
        std::cout << text;
        return;
    }
    std::ofstream file(output, std::ios::binary);
    if (!(file << text) || !file.flush())
        throw TableError(output + ": cannot be written");
}

bool isJson(const fs::path& path) {
    return path.extension() == ".json";
}

/** Files "*.json" that were given or stand in the directories given. */
std::vector<fs::path> jsonFiles(const std::vector<fs::path>& given) {
    std::vector<fs::path> found;
    for (const fs::path& path : given) {
        std::error_code error;
        if (isJson(path)) {
            found.push_back(path);
        } else if (fs::is_directory(path, error)) {
            for (const auto& entry : fs::recursive_directory_iterator(path))
                if (entry.is_regular_file() && isJson(entry.path()))
                    found.push_back(entry.path());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

/** The page, and where a table came before it, its name as the last line. */
void writePage(const ReportData& data, const Options& options) {
    const ChartLibrary library = findChartLibrary(options.chartLibrary);
    if (!library.script)
        std::cerr << "benchex-report: no charts: " << library.missing << "\n";
    write(options.output.empty() ? "report.html" : options.output, reportPage(data, options.title, library));
    if (!options.table || options.output == "-")
        return;
    const std::string path = fs::absolute(options.output).lexically_normal().string();
    std::array<char, 256> host{};
    gethostname(host.data(), host.size() - 1);
    std::cout << "Report: ";
    if (findScreen().styled)
        std::cout << terminalLink(fileAddress(path, host.data()), "open") << " ";
    std::cout << path << "\n";
}

/** The history as text and as the section of the last build's page. */
int reportHistory(const Options& options) {
    const BuildList list = readBuilds(options.tables, options.partial);
    const Collection tables = list.pairs ? Collection{} : collectTables(list.last, options.partial);
    StepRules rules;
    rules.proven = list.pairs;
    History history = makeHistory(list.builds, options.rows ? SeriesOf::rows : SeriesOf::functions, rules);
    history.notes.insert(history.notes.begin(), list.notes.begin(), list.notes.end());
    ReportData data = makeReport(tables);
    SectionSources sources(tables, list.pairs ? list.last : std::vector<fs::path>{});
    data.sections = readSections(sources);
    data.sections["history"] = historyJson(history);
    if (options.json) {
        write(options.output.empty() ? "report.json" : options.output, reportJson(data));
    } else {
        if (options.output != "-")
            std::cout << historyText(history);
        writePage(data, options);
    }
    const std::vector<HistoryStep> steps = stepsOf(history);
    const bool alarm = std::any_of(steps.begin(), steps.end(), [&](const HistoryStep& step) {
        return step.size > 0 && step.after + options.alarm >= history.builds.size();
    });
    return alarm ? 1 : done;
}

int report(const Options& options) {
    if (options.history)
        return reportHistory(options);
    std::vector<fs::path> given;
    std::remove_copy_if(options.tables.begin(), options.tables.end(), std::back_inserter(given), isJson);
    const Collection tables = collectTables(given, options.partial);
    SectionSources sources(tables, jsonFiles(options.tables));
    Json sections = readSections(sources);
    for (const fs::path& path : options.tables)
        if (isJson(path) && !sources.isUsed(path))
            std::cerr << "benchex-report: " << path.string() << ": no part of the page is made of this\n";
    for (const std::string& note : tables.notes)
        std::cerr << "benchex-report: " << note << "\n";
    const bool anything = std::any_of(tables.runs.begin(), tables.runs.end(), [](const TableRun& run) {
        return !run.rows.empty() || !run.tests.empty();
    });
    if (!anything && sections.empty())
        throw TableError(options.tables.front().string() + ": no row and no tested function to show");
    ReportData data = makeReport(tables);
    data.sections = std::move(sections);
    if (options.table && !tables.runs.empty())
        std::cout << textTable(data, findScreen(), options.output.empty() ? 1 : 2);
    if (options.json)
        write(options.output.empty() ? "report.json" : options.output, reportJson(data));
    else if (!options.table || !options.output.empty())
        writePage(data, options);
    return done;
}

} // namespace

// Options are declared before anything is caught: what they throw is a mistake in this file.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    CLI::App app(description, "benchex-report");
    app.footer("Exit status: 0 written, 1 a step that --alarm asks for, 2 a table cannot be read or the file "
               "cannot be written.");
    const Options options(app);
    return runProgram(app, argc, argv, [&] { return report(options); });
}
