#include "pairmain.h"

#include "cells.h"
#include "commandline.h"
#include "outputs.h"
#include "pairoutput.h"
#include "pairrun.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <optional>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct Options {
    std::vector<std::string> sides;
    std::vector<std::string> keys;
    std::string program;
    std::string outputs = "100";
    PairRules rules;
    bool csv = false;
    bool json = false;
    bool allRows = false;
};

/** The program beside this one. */
fs::path ownProgram() {
    std::error_code unknown;
    return fs::read_symlink("/proc/self/exe", unknown).parent_path() / "benchex";
}

OutputRules outputRules(const std::string& text) {
    if (text == "equal")
        return {std::nullopt};
    const auto decibels = toNumber(text);
    if (!decibels)
        throw PairError("--outputs: \"" + text + "\" is neither equal nor a number of dB");
    return {decibels};
}

/** A line that tells how far the rounds are, on a terminal. */
class Progress {
  public:
    explicit Progress(const PairRules& rules, Moment start)
        : m_shown(isatty(STDERR_FILENO) != 0), m_rules(rules), m_start(start) {}
    ~Progress() {
        if (m_shown)
            std::cerr << "\r\x1b[K";
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(const PairResult& result) const {
        if (!m_shown)
            return;
        const auto open = std::count_if(result.rows.begin(), result.rows.end(),
                                        [](const RowProgress& row) { return row.open(); });
        const double elapsed =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
        const double most = std::max(0.0, m_rules.seconds - elapsed);
        std::cerr << "\r\x1b[K" << result.rounds << " rounds, " << open << " of " << result.rows.size()
                  << " rows undecided, about " << std::lround(std::min(most, secondsLeft(result, m_rules)))
                  << " s left, at most " << std::lround(most) << std::flush;
    }
    /** What goes on before the first round. */
    void show(const char* what) const {
        if (m_shown)
            std::cerr << "\r\x1b[K" << what << std::flush;
    }

  private:
    bool m_shown;
    const PairRules& m_rules;
    Moment m_start;
};

std::vector<std::string> notesOf(const std::vector<Examination>& examined, const PairRows& rows,
                                 const PairResult& result) {
    std::vector<std::string> notes;
    if (!canFixAddresses())
        notes.emplace_back(
            "the system lays out each process differently: intervals are wider than elsewhere");
    for (std::size_t side = 0; side < 2; ++side)
        for (const std::string& note : examined[side].notes)
            notes.push_back(std::string(sideNames[side]) + ": " + note);
    if (!rows.crossed.empty())
        notes.push_back(std::to_string(rows.crossed.size()) +
                        " rows stand in another order on the two sides and are left out");
    if (result.ownShare < 1 - mostCompany)
        notes.push_back("others had " + std::to_string(std::lround(100 * (1 - result.ownShare))) +
                        " % of the core's time");
    if (result.interrupted)
        notes.emplace_back("interrupted: this is what was known by then");
    return notes;
}

/** Where times differ the instructions tell whether the code does. */
std::vector<std::size_t> rowsToCount(const PairResult& result, const PairRules& rules) {
    std::vector<std::size_t> wanted;
    for (std::size_t i = 0; i < result.rows.size() && !rules.outputsOnly; ++i) {
        const PairVerdict verdict = result.rows[i].judgement.verdict;
        if (rules.instructions || verdict == PairVerdict::slower || verdict == PairVerdict::faster)
            wanted.push_back(i);
    }
    return wanted;
}

/** Where nothing else is wanted all of the time is for it, and otherwise what is left, and a little more. */
Moment countingEnd(const PairRules& rules, Moment start) {
    constexpr std::chrono::seconds least{10};
    const auto all =
        std::chrono::duration_cast<Moment::duration>(std::chrono::duration<double>(rules.seconds));
    return std::max(start + all, std::chrono::steady_clock::now() + least);
}

int compareSides(const Options& options) {
    const Moment start = std::chrono::steady_clock::now();
    const fs::path program = options.program.empty() ? ownProgram() : fs::path(options.program);
    const OutputRules right = outputRules(options.outputs);
    const Sides sides{readSide(options.sides[0], program, options.keys),
                      readSide(options.sides[1], program, options.keys)};
    catchInterrupts();
    std::optional<Progress> progress(std::in_place, options.rules, start);
    progress->show("looking at the rows of both sides");
    const std::vector<Examination> examined = examineSides(sides, options.rules.timeLimit);
    const PairRows rows = matchRows(examined[0], examined[1]);
    if (rows.both.empty())
        throw PairError("the two sides have no row in common");
    std::vector<OutputComparison> outputs;
    for (const PairRow& row : rows.both)
        outputs.push_back(compareOutputs(row, right, examined[0].memory, examined[1].memory));
    const PairResult result =
        runRounds(sides, rows, options.rules, start, [&](const PairResult& known) { progress->show(known); });
    progress->show("counting instructions");
    const std::vector<PairCount> counts =
        countRows(sides, rows, rowsToCount(result, options.rules), countingEnd(options.rules, start));
    progress.reset(); // takes its line away
    const PairReport report{sides,
                            options.rules,
                            rows,
                            result,
                            outputs,
                            counts,
                            notesOf(examined, rows, result),
                            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
                            options.allRows};
    (options.json ? writeJson : options.csv ? writeCsv : writeText)(std::cout, report);
    const bool slower = std::any_of(result.rows.begin(), result.rows.end(), [&](const RowProgress& row) {
        return isSlowerThanAllowed(row, options.rules);
    });
    const bool wrong = std::any_of(outputs.begin(), outputs.end(),
                                   [](const OutputComparison& output) { return !output.right; });
    const bool more =
        options.rules.instructions &&
        std::any_of(counts.begin(), counts.end(), [](const PairCount& row) { return row.more() > 0; });
    return slower || wrong || more ? slowerThanAllowed : done;
}

void describe(CLI::App& app, Options& options) {
    PairRules& rules = options.rules;
    const auto flag = [&](const char* name, bool& to, const char* help) {
        return app.add_flag(name, to, help)->disable_flag_override();
    };
    addShare(app, "--threshold", rules.threshold, 1000, "difference that counts as none (1)");
    addShare(app, "--alpha", rules.alpha, 50, "probability of any false alarm where nothing changed (5)");
    app.add_option("--seconds", rules.seconds, "for all of it (300)")->check(CLI::Range(0.1, 1e6));
    app.add_option("--limit", rules.timeLimit, "seconds for the calls of one combination (10)")
        ->check(CLI::Range(1, 86400));
    app.add_option("--outputs", options.outputs,
                   "what counts as right: equal, or the signal-to-noise ratio of floats in dB (100)")
        ->type_name("equal|DB");
    app.add_option("--program", options.program, "where a side names none (the benchex beside this program)")
        ->type_name("PATH");
    app.add_option("--seed", rules.seed, "of the placements (1)");
    flag("--outputs-only", rules.outputsOnly,
         "compare what the first calls make of their data, and no times");
    flag("--instructions", rules.instructions, "count the instructions of a call, and time nothing");
    flag("--all", options.allRows, "list rows that are the same, too");
    flag("--json", options.json, "write JSON")->excludes(flag("--csv", options.csv, "write csv"));
}

/** The words before the keys of the sides, without "--pair" and the sides. */
std::vector<char*> takeSides(int argc, char** argv, Options& options) {
    char** const end = argv + argc;
    char** const keys = std::find(argv, end, std::string_view("--"));
    char** const pair = std::find(argv, keys, std::string_view("--pair"));
    char** const behind = keys - pair > 2 ? pair + 3 : pair + 1; // too few: "--pair --help" for one
    options.sides.assign(pair + 1, behind);
    if (keys != end)
        options.keys.assign(keys + 1, end);
    std::vector<char*> rest(argv, pair);
    rest.insert(rest.end(), behind, keys);
    return rest;
}

} // namespace

bool asksForPair(int argc, const char* const* argv) {
    const auto* const keys = std::find(argv, argv + argc, std::string_view("--"));
    return std::find(argv, keys, std::string_view("--pair")) != keys;
}

int runPair(int argc, char** argv) {
    Options options;
    // Sides and keys may begin with "-" and are taken out first.
    std::vector<char*> words = takeSides(argc, argv, options);
    CLI::App app(
        "benchex-compare --pair BEFORE AFTER [OPTIONS] [-- keys of both sides]\n"
        "Runs two sides against each other: what became slower, and is it still right? A side is a\n"
        "directory of the library, a program, keys (-T SSE2), NAME=value, or several of these in one\n"
        "word, separated by blanks; an empty word is the program as it stands.",
        "benchex-compare");
    app.footer("Exit status: 0 nothing is slower than allowed or wrong (--instructions: or has more of "
               "them), 1 some row is, 2 the sides cannot be "
               "compared.");
    describe(app, options);
    return runProgram(app, static_cast<int>(words.size()), words.data(), [&] {
        if (options.sides.size() != 2)
            throw PairError("--pair needs two sides");
        return compareSides(options);
    });
}
