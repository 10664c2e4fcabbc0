/** \file
 * Steps in which a test builds its data.
 */
#ifndef BXBUILDSTEP_H
#define BXBUILDSTEP_H

#include "framework/bxtraced.h"
#include "timing/bxwatchdog.h"

/** A step of the test's own code, under the time limit like the function; gives what the step gives. */
template <class Body>
bool bxBuildStep(const char* step, Body body) {
    bxStartWatchdog();
    const bool built = bxTraced(step, [&body] {
        bxEnterCalls();
        const bool done = body();
        bxLeaveCalls();
        return done;
    });
    bxStopWatchdog();
    return built;
}

#endif
