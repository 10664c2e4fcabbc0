/** \file
 * Result tables as the program writes them (-r, -R), with the summary tables (-u, -U) and the parameter names
 * (-q) that belong to them.
 */
#ifndef RESULTTABLE_H
#define RESULTTABLE_H

#include "output/bxtable.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <iosfwd>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/** A table that cannot be read; the text names file and line. */
class TableError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** A label of a table's text head with its value, as written. */
using Label = std::pair<std::string, std::string>;

/** The text head of a run: machine, system, libraries, start. */
struct RunHead {
    std::vector<Label> labels;

    /** The value of the first such label, empty without one. */
    std::string value(std::string_view label) const;
    std::vector<std::string> values(std::string_view label) const;
};

/** What single calls of a combination cost, in the clocks of the comment (setting "Calls"). */
struct CallSpread {
    double calls = 0, least = 0, median = 0, percent99 = 0, permille999 = 0, most = 0;
    double interrupted = 0;                   /**< calls that the system interrupted */
    std::optional<double> longestInterrupted; /**< of these */
    bool apart = true;                        /**< whether the figures are of the other calls only */
    std::vector<double> histogram;            /**< calls in bins of one ratio from the least to the most */
};

/** One measured combination. */
struct ResultRow {
    std::string function; /**< full name, "zorsDecodeTNS_AAC_32s_I" */
    std::string name, types, descriptor;
    std::vector<std::string>
        parameters; /**< one cell a parameter column; empty where the function has none */
    std::string comment;
    std::optional<double> clocks; /**< per unit; nothing where none was measured */
    std::string unit;
    std::optional<double> microseconds;       /**< per call */
    std::string clocksText, microsecondsText; /**< as written: the digits tell how far they were rounded */
    std::optional<double> mflops;
    bool hot = false;
    std::vector<Label> other; /**< cells of columns that are not known here */
    std::size_t line = 0;     /**< line of the file, from 1 */

    std::optional<double>
    accuracy() const; /**< stated by "acc=", relative; only where the wanted one was missed */
    std::optional<double>
    shared() const;       /**< share of the core that others took, "shared=", relative; only where they did */
    bool unknown() const; /**< the precise mode had too few clean slices: "95%=unknown" */
    bool inCoreClocks() const; /**< of the precise mode; counts of the clock counter otherwise */
    std::optional<double> instructions() const; /**< of a call, "instr="; only where it could be counted */
    std::optional<double> steps() const; /**< the same with the iterations of repeated string instructions */
    std::optional<double> ipc() const;   /**< instructions in a core clock, "ipc=" */
    std::optional<CallSpread> callSpread() const; /**< "calls=" */
    std::optional<double> firstCall() const;      /**< clocks with empty caches, "first=" */
    std::string codeDigest() const;      /**< of the instructions in their order, "code="; may be empty */
    std::optional<double> loops() const; /**< timed calls, "nLps=" or "nCalls=" */
    std::string cacheMode() const;       /**< "inCache", "outofCache" or empty */
    bool deprecated() const { return comment == bxTable::deprecated; }
};

/** A tested function in a summary table. */
struct TestOutcome {
    std::string function, test, source, result, program;
    std::optional<double> seconds;
    std::vector<Label> watch; /**< the cells of the floating-point watch */
};

/** One run of the program: a result table, or what of it one file holds. */
struct TableRun {
    std::string label; /**< how readers tell it from the other runs */
    std::filesystem::path file;
    RunHead head;
    std::size_t parameterColumns = 0;
    bool hasInterest = false; /**< hot functions were asked for, so an empty cell means "not hot" */
    bool incomplete = false;  /**< the file ends within a line */
    std::vector<ResultRow> rows;
    std::vector<TestOutcome> tests; /**< from the summary table; empty without one */
    std::vector<Label> counts;      /**< closing counts of the summary table, labels as words */
    bool hasSummary = false;
};

/** Names of a function's parameters, one for each parameter column. */
using ParameterNames = std::map<std::string, std::vector<std::string>>;

/** What one csv file holds. */
struct TableFile {
    std::vector<TableRun> runs; /**< result tables, one for each heading; a run may have no rows */
    std::vector<TableRun> summaries;
    ParameterNames names;
    std::vector<std::string> notes; /**< what was passed over */
};

/**
 * Reads a csv file of the program, result table, name table or summary table, appended runs included.
 * \param allowPartial  drop a last line without an end, and note it, instead of refusing the file
 * \throws TableError   no heading, a needed column missing, a line that does not fit its heading, a cut-off
 * last line
 */
TableFile readTable(std::istream& input, const std::filesystem::path& name, bool allowPartial);

/** What stands behind a table's title to name a file that belongs to it and is no result table of its own. */
inline constexpr std::array besideTables{bxTable::summaryFile, bxTable::nameFile};

/** "dir/title.csv" with a suffix: "dir/title_sum.csv". */
std::filesystem::path besideTable(const std::filesystem::path& table, std::string_view suffix);

/** All runs of some tables with what stands beside them. */
struct Collection {
    std::vector<TableRun> runs;
    ParameterNames names;
    std::vector<std::string> notes;
};

/**
 * Reads tables and directories of tables (searched downwards, summary and name tables left to their result
 * tables), each with "<title>_sum.csv" and "<title>_name.csv" beside it where they exist. Runs get labels
 * that differ. \throws TableError  also for a path that does not exist and a directory without a table
 */
Collection collectTables(const std::vector<std::filesystem::path>& paths, bool allowPartial);

#endif
