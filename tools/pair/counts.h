/** \file
 * What calls execute on both sides, counted.
 */
#ifndef PAIR_COUNTS_H
#define PAIR_COUNTS_H

#include "rows.h"
#include "sideprocess.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

/** What a call of a row executes. */
struct PairCount {
    std::array<std::string, 2> texts; /**< "instr=120 code=9d2c5680"; empty where a side said nothing */

    bool wanted() const { return !texts[0].empty() || !texts[1].empty(); }
    /** Instructions of a call; none where it could not be counted to its end. */
    std::optional<long long> instructions(int side) const;
    /** Whether both counts are known. */
    bool known() const { return instructions(0) && instructions(1); }
    /** The same instructions in the same order, constants and addresses left out. */
    bool sameCode() const { return known() && texts[0] == texts[1]; }
    /** Instructions that the second side executes beyond the first; 0 where that is not known. */
    long long more() const { return known() ? *instructions(1) - *instructions(0) : 0; }
    /** "more", "fewer", "other" (as many, but not the same), "same", "cannot tell". */
    const char* verdict() const;
    /** "120 instructions, the same code", "instructions 120 -> 121", or why that is not known; empty where it
     * was not wanted. */
    std::string text() const;
};

/**
 * Steps through a call of each row on both sides, side by side where there are cores. A side that dies on the
 * way is started again behind the row that ended it. \param wanted  indices of rows that are counted,
 * ascending \param until  what is not counted by then remains so \return one for each row of `rows.both`
 */
std::vector<PairCount> countRows(const Sides& sides, const PairRows& rows,
                                 const std::vector<std::size_t>& wanted, Moment until);

#endif
