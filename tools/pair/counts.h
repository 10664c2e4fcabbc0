/** \file
 * What calls execute on both sides, counted.
 */
#ifndef PAIR_COUNTS_H
#define PAIR_COUNTS_H

#include "rows.h"

#include <array>
#include <functional>
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
    /** "120 instructions, the same code", "instructions 120 -> 121", or why that is not known; empty where it
     * was not wanted. */
    std::string text() const;
};

/** Told how many rows of a side are counted, of how many. */
using CountObserver = std::function<void(std::size_t counted, std::size_t of)>;

/**
 * Steps through a call of each row on both sides, side by side where there are cores. A side that dies on the
 * way is started again behind the row that ended it. \param wanted  indices of rows that are counted,
 * ascending \return one for each row of `rows.both`
 */
std::vector<PairCount> countRows(const Sides& sides, const PairRows& rows,
                                 const std::vector<std::size_t>& wanted, const CountObserver& observer);

#endif
