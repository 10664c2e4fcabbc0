/** \file
 * The rows of a comparison: what both sides have.
 */
#ifndef PAIR_ROWS_H
#define PAIR_ROWS_H

#include "examination.h"

#include <array>
#include <vector>

/** A combination that both sides have. */
struct PairRow {
    std::array<const Combination*, 2> sides{};

    const Combination& before() const { return *sides[0]; }
    const Combination& after() const { return *sides[1]; }
};

/** The combinations of two sides, put together. */
struct PairRows {
    std::vector<PairRow> both; /**< in an order that both sides run in */
    std::array<std::vector<const Combination*>, 2> only;
    /** On both sides, but in another order among the others: the sides cannot meet there. */
    std::vector<PairRow> crossed;
};

/**
 * Puts together what has the same function and parameters; equal ones pair up in their order. The sides stay
 * in step only along rows that follow each other on both, so the longest such sequence is taken.
 */
PairRows matchRows(const Examination& before, const Examination& after);

#endif
