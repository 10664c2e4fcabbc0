/** \file
 * What a call costs that finds nothing in the caches: a codec's block often runs once between others.
 */
#ifndef BXCOLDCALL_H
#define BXCOLDCALL_H

#include "timing/bxsinglecalls.h"

/** A first call. */
struct bxColdFigure {
    double clocks = 0; /**< of a call: the median of the tries, 0 where nothing was asked for */
    bxString problem;  /**< a word where there is no figure; empty otherwise */

    /** For the comment column: "first=5400", "first=?nocall" or empty. */
    bxString text() const;
};

/**
 * Times calls in counts, some dozens of tries, before each of which all of the process's memory is put out of
 * the caches: data, code, tables, stack. \param status  the last one that was not 0
 */
bxColdFigure bxTimeColdCalls(const bxPreparedCall& function, int priority, int& status);

#endif
