/** \file
 * A comparison as text for people, as csv and as JSON.
 */
#ifndef COMPARISONOUTPUT_H
#define COMPARISONOUTPUT_H

#include "comparison.h"

#include <iosfwd>
#include <string>

/** A comparison with what its readers need beside it. */
struct ComparisonReport {
    const Comparison& comparison;
    const ComparisonRules& rules;
    const ParameterNames& names;
    std::string before, after; /**< what the sides are called */
    bool allRows = false;      /**< text: also rows that are the same */
};

/** Rows worst first, functions, the whole, rows of one side. */
void writeText(std::ostream& out, const ComparisonReport& report);

/** One line a row under a line of titles; rows of one side have the verdicts "only before" and "only after".
 */
void writeCsv(std::ostream& out, const ComparisonReport& report);

/** All of it; docs/benchex-compare.1 names the members. */
void writeJson(std::ostream& out, const ComparisonReport& report);

#endif
