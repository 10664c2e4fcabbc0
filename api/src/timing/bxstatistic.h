/** \file
 * The Statistic method: every call timed by itself, until there are enough calls and enough clocks.
 */
#ifndef BXSTATISTIC_H
#define BXSTATISTIC_H

#include "timing/bxtiming.h"

bxTimingFigures bxTimeCallByCall(const bxTimingSettings& settings, const bxStatSampler& sampler);

#endif
