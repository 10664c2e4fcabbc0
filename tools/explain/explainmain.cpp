// benchex-explain: what a function executes, and how much of each kind.
#include "cells.h"
#include "commandline.h"
#include "explanation.h"
#include "resulttable.h"
#include "stepper.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

constexpr const char* description =
    R"(benchex-explain FUNCTION... [OPTIONS] [-- keys of the program]
Tells what a call of a function executes, instruction by instruction: kinds, bytes, floating-point operations, the
hottest blocks, the functions called. The program runs with -dInstructions=yes and -dPrecise=yes.)";

struct Options {
    std::vector<std::string> functions;
    std::vector<std::string> keys;
    std::string program;
    std::string steps;
    fs::path table;
    int line = 0;
    int row = 1;
    int blocks = 3;
    int most = 200'000;
    bool all = false;
    bool json = false;
    bool noClocks = false;
    bool noLimits = false;
    bool measure = false;

    explicit Options(CLI::App& app) {
        const auto number = [&](const char* name, int& to, int least, const char* help) {
            return app.add_option(name, to, help)->check(CLI::Range(least, 2'000'000'000));
        };
        const auto flag = [&](const char* name, bool& to, const char* help) {
            return app.add_flag(name, to, help)->disable_flag_override();
        };
        app.add_option("FUNCTION", functions, "names of tested functions");
        auto* const chosen = number("--row", row, 1, "which combination of its parameters, from 1 on (1)");
        chosen->excludes(flag("--all", all, "all combinations"));
        auto* const ofTable =
            app.add_option("--table", table, "a result table: explain what stands in one of its lines")
                ->type_name("TABLE");
        number("--line", line, 1, "of the table's file, the first is 1")->needs(ofTable)->excludes(chosen);
        app.add_option("--steps", steps,
                       "a file of -dInstructionsFile to explain, instead of running the program")
            ->type_name("FILE")
            ->excludes(ofTable);
        number("--blocks", blocks, 0, "how many of the hottest blocks to show (3)");
        number("--most", most, 1, "steps after which a call is given up (200000)");
        app.add_option("--program", program, "the program (the benchex beside this one)")->type_name("PATH");
        flag("--no-clocks", noClocks, "do not measure, only count");
        flag("--no-limits", noLimits, "do not compare with what the machine can do");
        flag("--measure", measure, "measure the machine although it is known, which takes a minute");
        flag("--json", json, "write JSON");
    }
};

fs::path beside(const char* name) {
    std::error_code unknown;
    return fs::read_symlink("/proc/self/exe", unknown).parent_path() / name;
}

/** The program that measures the machine: in the build beside this one, installed among those that nobody
 * calls. */
fs::path machineProgram() {
    const fs::path own = beside("benchex-machine");
    std::error_code unknown;
    return fs::exists(own, unknown)
               ? own
               : own.parent_path().parent_path() / BENCHEX_LIBEXEC / "benchex/benchex-machine";
}

/** Which combination of its function stands in a line of a table. */
int rowOfLine(const Options& options, std::string& function) {
    const Collection tables = collectTables({options.table}, false);
    for (const TableRun& run : tables.runs) {
        const auto row = std::find_if(run.rows.begin(), run.rows.end(), [&](const ResultRow& r) {
            return r.line == static_cast<std::size_t>(options.line);
        });
        if (row == run.rows.end())
            continue;
        function = row->function;
        return static_cast<int>(std::count_if(
                   run.rows.begin(), row,
                   [&](const ResultRow& r) { return r.function == row->function && !r.deprecated(); })) +
               1;
    }
    throw ExplainError(options.table.string() + ": no row in line " + std::to_string(options.line));
}

/** Those combinations that were asked for. */
std::vector<SteppedCall> chosen(std::vector<SteppedCall> calls, const Options& options) {
    if (options.all)
        return calls;
    const auto row = static_cast<std::size_t>(options.row);
    if (row > calls.size())
        throw ExplainError(calls.front().function + " has " + std::to_string(calls.size()) +
                           " combinations, and no " + std::to_string(row));
    return {std::move(calls[row - 1])};
}

std::vector<SteppedCall> callsOfFile(const Options& options) {
    std::ifstream input(options.steps, std::ios::binary);
    if (!input)
        throw ExplainError(options.steps + ": cannot be read");
    std::vector<SteppedCall> all = readSteps(input, options.steps);
    if (all.empty())
        throw ExplainError(options.steps + ": no call in it");
    if (options.functions.empty())
        return all;
    std::vector<SteppedCall> calls;
    for (const std::string& function : options.functions) {
        std::vector<SteppedCall> own;
        std::copy_if(all.begin(), all.end(), std::back_inserter(own),
                     [&](const SteppedCall& call) { return call.function == function; });
        if (own.empty())
            throw ExplainError(options.steps + ": no call of " + function);
        std::ranges::move(chosen(std::move(own), options), std::back_inserter(calls));
    }
    return calls;
}

/** \param missing  set where something cannot be counted */
std::vector<SteppedCall> callsOfProgram(const Options& options, bool& missing) {
    StepperRules rules{options.program.empty() ? beside("benchex") : fs::path(options.program), options.keys,
                       options.most, options.all ? 0 : options.row, !options.noClocks};
    std::vector<std::string> functions = options.functions;
    if (!options.table.empty())
        rules.row = rowOfLine(options, functions.emplace_back());
    if (functions.empty())
        throw ExplainError("which function? See --help");
    std::vector<SteppedCall> calls;
    for (const std::string& function : functions) {
        try {
            for (SteppedCall& call : stepThrough(function, rules))
                calls.push_back(std::move(call));
        } catch (const ExplainError& error) {
            // The others are told about all the same.
            std::cerr << "benchex-explain: " << error.what() << "\n";
            missing = true;
        }
    }
    return calls;
}

/** The machine, where there are clocks that it can be compared with. */
std::optional<Machine> machineFor(const std::vector<SteppedCall>& calls, const Options& options) {
    const bool clocks =
        std::any_of(calls.begin(), calls.end(), [](const SteppedCall& call) { return call.clocks > 0; });
    if (options.noLimits || !(clocks || options.measure))
        return std::nullopt;
    try {
        return thisMachine(machineProgram(), options.measure);
    } catch (const ExplainError& error) {
        std::cerr << "benchex-explain: no limits: " << error.what() << "\n";
        return std::nullopt;
    }
}

int explainCalls(const Options& options) {
    bool missing = false;
    const std::vector<SteppedCall> calls =
        options.steps.empty() ? callsOfProgram(options, missing) : callsOfFile(options);
    if (calls.empty())
        return cannotDo;
    const std::optional<Machine> machine = machineFor(calls, options);
    std::vector<Explanation> explanations;
    for (const SteppedCall& call : calls)
        explanations.push_back(explain(call, options.blocks, machine ? &*machine : nullptr));
    if (options.json) {
        JsonText text;
        text.add("schema", "benchex-explain");
        if (machine)
            text.add("machine", toJson(*machine));
        text.addList("calls", explanations, [](const Explanation& e) { return toJson(e); });
        std::cout << text.text();
        return missing ? cannotDo : done;
    }
    const char* separator = "";
    for (const Explanation& explanation : explanations) {
        std::cout << std::exchange(separator, "\n");
        writeText(std::cout, explanation);
    }
    return missing ? cannotDo : done;
}

} // namespace

// Options are declared before anything is caught: what they throw is a mistake in this file.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    CLI::App app(description, "benchex-explain");
    app.footer("Exit status: 0 explained, 2 something cannot be run, read or decoded; other functions are "
               "explained all the same.");
    Options options(app);
    // The program's keys begin with "-" and are taken out first.
    char** const end = argv + argc;
    char** const keys = std::find(argv, end, std::string_view("--"));
    if (keys != end)
        options.keys.assign(keys + 1, end);
    return runProgram(app, static_cast<int>(keys - argv), argv, [&] { return explainCalls(options); });
}
