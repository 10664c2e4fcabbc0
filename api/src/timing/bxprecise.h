/** \file
 * The precise mode. What the counter reads and the entry of the loop cost is the same for n calls and for 2n,
 * so their difference is that of n calls alone. Each such pair stands between two differenced chains of
 * additions of one core clock each, so that the figure is in core clocks even where the core's clock is not
 * the counter's, or drifts. A call that takes longer than the reads can matter is measured by itself, between
 * two references.
 */
#ifndef BXPRECISE_H
#define BXPRECISE_H

#include "timing/bxcores.h"
#include "timing/bxtiming.h"

/** \param cores  what is known of the cores by now; learns from the slices */
bxTimingFigures bxTimePrecisely(const bxTimingSettings& settings, const bxLoopSampler& sampler,
                                bxCores& cores);

#endif
