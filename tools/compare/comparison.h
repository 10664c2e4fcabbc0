/** \file
 * Two sets of runs, row by row: what got slower.
 */
#ifndef COMPARISON_H
#define COMPARISON_H

#include "resulttable.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/** What is said of a row. */
enum class Verdict { slower, faster, same, cannotTell };

/** "slower", "faster", "same", "cannot tell". */
const char* verdictName(Verdict verdict);

/** How strict a comparison is. */
struct ComparisonRules {
    double threshold = 0.05;   /**< slowdown allowed, relative; also what counts as "the same" */
    double alpha = 0.05;       /**< probability of any alarm where nothing changed */
    double accuracy = 0.05;    /**< of a single figure that states none, relative */
    bool time = false;         /**< compare microseconds per call, not clocks per unit */
    bool instructions = false; /**< compare the counts of instructions, exactly, and nothing else */

    bool inClocks() const { return !time && !instructions; }
};

/** What makes rows the same row: the function, its parameters, the cache mode, and its place among equal
 * rows. */
struct RowKey {
    std::string function;
    std::vector<std::string> parameters;
    std::string cacheMode;
    int repetition = 0; /**< a run may hold rows with the same parameters; they pair up in their order */

    auto operator<=>(const RowKey&) const = default;
    bool operator==(const RowKey&) const = default;
};

/** The function's parameters as one text, named where names are given: "Len=16 Order=3"; cache mode behind
 * them. */
std::string describeParameters(const RowKey& key, const ParameterNames& names);

/** One row of both sides. */
struct RowComparison {
    RowKey key;
    std::string unit;
    double before = 0, after = 0;              /**< figures compared, centres of their runs */
    std::size_t runsBefore = 0, runsAfter = 0; /**< whose figures count */
    double ratio = 1;                          /**< after / before: above 1 is slower */
    double low = 1, high = 1;                  /**< 90 % interval of the ratio; 0 to infinity where unknown */
    double p = 1,
           adjusted = 1; /**< probability of such a difference by chance; corrected for the number of rows */
    Verdict verdict = Verdict::cannotTell;
};

/** The rows of a function together. */
struct FunctionComparison {
    std::string function;
    double ratio = 1; /**< geometric mean of its rows' ratios */
    std::size_t rows = 0, slower = 0, faster = 0;
};

/** All rows, worst first, and what can be said of them together. */
struct Comparison {
    std::vector<RowComparison>
        rows; /**< slower, cannot tell, same, faster; the highest ratio first in each */
    std::vector<FunctionComparison> functions; /**< highest ratio first */
    double ratio = 1;                          /**< geometric mean of all rows' ratios */
    std::vector<RowKey> onlyBefore, onlyAfter; /**< rows without a figure on the other side */
    std::vector<std::string> notes;

    std::size_t count(Verdict verdict) const;
};

/**
 * Compares runs with runs. Figures are compared as logarithms. Those that missed their accuracy, or do not
 * know it because others used the core, are left out where other runs of the row reached it; a row of which
 * no run knows it is not judged. A side with several figures of a row gives the mean of the smaller half of
 * them and its error; a side with one gives the figure, with half its accuracy as error. The digits that the
 * table dropped add to the error. Verdicts:
 * - slower, faster: Yuen's test (Welch's t on trimmed means) finds a difference (p, adjusted for all rows, at
 * most alpha) and the ratio lies beyond the threshold;
 * - same: the 90 % interval of the ratio lies within the threshold (two one-sided tests of 5 %);
 * - cannot tell: neither.
 * Counts of instructions are compared exactly: any more is slower, any fewer faster; where the runs of a side
 * differ among themselves nothing can be told.
 * \throws TableError  for a row that has another unit, or counts another clock (the core's, the counter's),
 * in some of the runs
 */
Comparison compareRuns(const std::vector<TableRun>& before, const std::vector<TableRun>& after,
                       const ComparisonRules& rules);

#endif
