/** \file
 * The Iterative method: the number of calls is doubled until two figures agree. Auto is the same with limits
 * of its own.
 */
#ifndef BXITERATIVE_H
#define BXITERATIVE_H

#include "timing/bxtiming.h"

/** Where the search begins and ends. */
struct bxIterativeLimits {
    int start;           /**< calls of the prior measurement */
    int most;            /**< calls of a measurement */
    long long minClocks; /**< that the prior measurement must reach */
};

/** Writes a warning where bad control status was met and fewer calls were tried. */
bxTimingFigures bxTimeIteratively(const bxTimingSettings& settings, const bxIterativeLimits& limits,
                                  const bxLoopSampler& sampler);

#endif
