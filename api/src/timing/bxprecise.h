/** \file
 * The precise mode. What the counter reads and the entry of the loop cost is the same for n calls and for 2n,
 * so their difference is that of n calls alone. Each such pair stands between two differenced chains of
 * additions of one core clock each, so that the figure is in core clocks even where the core's clock is not
 * the counter's, or drifts.
 */
#ifndef BXPRECISE_H
#define BXPRECISE_H

#include "timing/bxtiming.h"

/** \param core  what is known of the core by now; learns from the slices */
bxTimingFigures bxTimePrecisely(const bxTimingSettings& settings, const bxLoopSampler& sampler,
                                bxOwnCore& core);

#endif
