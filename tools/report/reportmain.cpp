// benchex-report: result tables as a page to look at, or as JSON.
#include "commandline.h"
#include "reportjson.h"
#include "reportpage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

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
    bool partial = false;

    explicit Options(CLI::App& app) {
        app.add_option("TABLE", tables, "csv files, or directories of them")->required()->type_name("");
        app.add_option("-o,--output", output,
                       "file to write (report.html, or report.json with --json; \"-\" is standard output)")
            ->type_name("FILE");
        app.add_flag("--json", json, "write the data as JSON")->disable_flag_override();
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

int report(const Options& options) {
    const Collection tables = collectTables(options.tables, options.partial);
    for (const std::string& note : tables.notes)
        std::cerr << "benchex-report: " << note << "\n";
    const bool anything = std::any_of(tables.runs.begin(), tables.runs.end(), [](const TableRun& run) {
        return !run.rows.empty() || !run.tests.empty();
    });
    if (!anything)
        throw TableError(options.tables.front().string() + ": no row and no tested function to show");
    const ReportData data = makeReport(tables);
    if (options.json) {
        write(options.output.empty() ? "report.json" : options.output, reportJson(data));
        return done;
    }
    const ChartLibrary library = findChartLibrary(options.chartLibrary);
    if (!library.script)
        std::cerr << "benchex-report: no charts: " << library.missing << "\n";
    write(options.output.empty() ? "report.html" : options.output, reportPage(data, options.title, library));
    return done;
}

} // namespace

// Options are declared before anything is caught: what they throw is a mistake in this file.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    CLI::App app(description, "benchex-report");
    app.footer("Exit status: 0 written, 2 a table cannot be read or the file cannot be written.");
    const Options options(app);
    return runProgram(app, argc, argv, [&] { return report(options); });
}
