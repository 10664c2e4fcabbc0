/** \file
 * How far single calls of a function lie apart. Pure functions of what was timed.
 */
#ifndef BXCALLSPREAD_H
#define BXCALLSPREAD_H

#include "foundation/bxstring.h"

#include <array>
#include <vector>

/** One call of a series. */
struct bxTimedCall {
    double clocks = 0;        /**< without the cost of the counter reads */
    bool interrupted = false; /**< known to be */
};

/** What single calls cost, in the unit of their clocks. */
struct bxCallSpread {
    static constexpr int bins = 16;

    int calls = 0;
    double least = 0, median = 0, percent99 = 0, permille999 = 0, most = 0;
    int interrupted = 0;           /**< calls that the system interrupted */
    double longestInterrupted = 0; /**< of these */
    /** Whether the figures are of the other calls only: not where half of all or more were interrupted. */
    bool apart = true;
    /** Calls of the figures, in bins of the same ratio from `least` (at least 1) to `most`. */
    std::array<int, bins> histogram{};
    bxString problem; /**< a word where there is no such figure; empty otherwise */

    /** In another unit, of which there are so many to one of the present. */
    void scale(double factor);
    /**
     * For the comment column: "calls=10000 least=98.0 median=100 99%=102 99.9%=110 most=180 interrupted=3
     * upto=9000 hist=9000.900.97..." ("interrupted=6000 kept" where they are among the others),
     * "calls=?nocall", or empty where nothing was asked for.
     */
    bxString text() const;
};

/**
 * The spread of a series of calls. \param idle  how much longer than usual samples of idle loops took, that
 * together ran as long as the calls: those only that no other sign told to be interrupted. As many calls are
 * taken for interrupted, from the longest on, as there are samples that were extended by the same, within a
 * factor of 2: the system does to the calls what it does to a loop that calls nothing.
 */
bxCallSpread bxSpreadOfCalls(std::vector<bxTimedCall> calls, std::vector<double> idle);

/**
 * Marks the longest of some calls that follow each other, if the kernel took the processor away more often
 * than calls are known to be interrupted. \param switches  involuntary ones, during these calls
 */
void bxMarkSwitchedCalls(std::vector<bxTimedCall>::iterator begin, std::vector<bxTimedCall>::iterator end,
                         long switches);

#endif
