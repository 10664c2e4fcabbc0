// benchex-report: result tables as a page to look at, or as JSON.
#include "arguments.h"
#include "reportjson.h"
#include "reportpage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

constexpr const char* usage =
    R"(Usage: benchex-report [options] TABLE...
Writes result tables as one HTML page that needs no network. A table is a csv file of benchex -r or -R, or a directory
of them; "<title>_sum.csv" (-u) and "<title>_name.csv" (-q) beside it are read, too. Several tables are laid over each
other.

  -o, --output FILE       file to write (report.html, or report.json with --json; "-" is standard output)
  --json                  write the data as JSON
  --title TEXT            title of the page
  --chart-library FILE    script of the chart library, where it is not in its package's place
  --partial               accept tables whose last line is cut off
  --help, --version

Exit status: 0 written, 2 a table cannot be read or the file cannot be written.
)";

struct Options {
    std::vector<std::filesystem::path> tables;
    std::string output;
    std::string title = "Benchex report";
    std::filesystem::path chartLibrary;
    bool json = false;
    bool partial = false;
    bool answered = false; /**< --help or --version: nothing else to do */
};

Options readOptions(Arguments arguments) {
    Options options;
    while (arguments.next()) {
        if (arguments.isOperand()) {
            options.tables.emplace_back(arguments.word());
        } else if (arguments.is("-o") || arguments.is("--output")) {
            options.output = arguments.value();
        } else if (arguments.is("--json")) {
            options.json = true;
        } else if (arguments.is("--title")) {
            options.title = arguments.value();
        } else if (arguments.is("--chart-library")) {
            options.chartLibrary = arguments.value();
        } else if (arguments.is("--partial")) {
            options.partial = true;
        } else if (arguments.is("--help") || arguments.is("-h")) {
            std::cout << usage;
            options.answered = true;
            return options;
        } else if (arguments.is("--version")) {
            std::cout << "benchex-report " BENCHEX_VERSION "\n";
            options.answered = true;
            return options;
        } else {
            arguments.refuse();
        }
    }
    if (options.tables.empty())
        throw UsageError("no table given");
    if (options.output.empty())
        options.output = options.json ? "report.json" : "report.html";
    return options;
}

void write(const std::string& output, const std::string& text) {
    if (output == "-") {
        std::cout << text;
        if (!std::cout.flush())
            throw TableError("standard output cannot be written");
        return;
    }
    std::ofstream file(output, std::ios::binary);
    if (!(file << text) || !file.flush())
        throw TableError(output + ": cannot be written");
}

void report(const Options& options) {
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
        write(options.output, reportJson(data));
        return;
    }
    const ChartLibrary library = findChartLibrary(options.chartLibrary);
    if (!library.script)
        std::cerr << "benchex-report: no charts: " << library.missing << "\n";
    write(options.output, reportPage(data, options.title, library));
}

} // namespace

int main(int argc, char** argv) {
    try {
        const Options options = readOptions(Arguments(argc, argv));
        if (!options.answered)
            report(options);
        return ExitStatus::done;
    } catch (const UsageError& error) {
        std::cerr << "benchex-report: " << error.what() << "\nTry 'benchex-report --help'.\n";
    } catch (const std::exception& error) {
        std::cerr << "benchex-report: " << error.what() << "\n";
    }
    return ExitStatus::cannotDo;
}
