/** \file
 * Whether both sides computed the same.
 */
#ifndef PAIR_OUTPUTS_H
#define PAIR_OUTPUTS_H

#include "examination.h"
#include "rows.h"

#include <optional>
#include <string>

/** What counts as right. */
struct OutputRules {
    /** Signal-to-noise ratio that floats have to reach, dB; none: they have to be equal. */
    std::optional<double> decibels = 100;
};

/** The first call of a row on both sides. */
struct OutputComparison {
    bool right = true;
    bool equal = true;       /**< bit for bit */
    bool dataDiffer = false; /**< the data before the call were not the same: nothing can be said */
    double ulps = 0;         /**< largest difference of floats in units of the last place */
    double decibels = 0;     /**< least signal-to-noise ratio of the blocks that differ; infinite for none */
    std::string difference;  /**< where the worst one is, and both values */
};

/**
 * Compares status and blocks. Integers have to be equal. Floats have to reach a signal-to-noise ratio over
 * the block; a NaN or an infinity on one side only is wrong. In blocks of bytes, which may hold anything, a
 * word that is an address on both sides counts as equal.
 */
OutputComparison compareOutputs(const PairRow& row, const OutputRules& rules, const AddressRanges& before,
                                const AddressRanges& after);

#endif
