/** \file
 * Times calls one by one: for who works against a deadline, the longest counts, not the mean.
 */
#ifndef BXSINGLECALLS_H
#define BXSINGLECALLS_H

#include "timing/bxcallspread.h"
#include "timing/bxtiming.h"

/** A function to be called, and what comes before each call. */
struct bxPreparedCall {
    bxFuncCall call = nullptr;
    bxFuncInit init = nullptr;
    bool restoreData = false; /**< the copies of all vectors */

    void prepare() const;
};

/**
 * Times `count` calls in counts, after one that is not timed. In between loops that do nothing run, each as
 * long as a usual call and together as long as all of them, to see what the system does meanwhile. A status
 * below 0 ends the series. \param status  the last one that was not 0
 */
bxCallSpread bxTimeSingleCalls(const bxPreparedCall& function, int count, int priority, int& status);

#endif
