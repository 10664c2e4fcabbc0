/** \file
 * A comparison of two sides as text for people, as csv and as JSON.
 */
#ifndef PAIR_PAIROUTPUT_H
#define PAIR_PAIROUTPUT_H

#include "counts.h"
#include "outputs.h"
#include "pairrun.h"

#include <iosfwd>
#include <string>
#include <vector>

/** All that is to be told. */
struct PairReport {
    const Sides& sides;
    const PairRules& rules;
    const PairRows& rows;
    const PairResult& result;
    const std::vector<OutputComparison>& outputs; /**< of the result's rows */
    const std::vector<PairCount>& counts;         /**< of the same rows, where they were counted */
    std::vector<std::string> notes;
    double seconds = 0; /**< from start to end */
    bool allRows = false;
};

/** The verdict as a word. */
const char* pairVerdictName(PairVerdict verdict);
/** Whether the row is slower than the threshold allows. */
bool isSlowerThanAllowed(const RowProgress& row, const PairRules& rules);

void writeText(std::ostream& out, const PairReport& report);
/** One line a row under a line of titles. */
void writeCsv(std::ostream& out, const PairReport& report);
void writeJson(std::ostream& out, const PairReport& report);

#endif
