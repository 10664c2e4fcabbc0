/** \file
 * The Manual loop method: one measurement of as many calls as the user wants.
 */
#ifndef BXMANUALLOOP_H
#define BXMANUALLOOP_H

#include "timing/bxtiming.h"

bxTimingFigures bxTimeManually(const bxTimingSettings& settings, const bxLoopSampler& sampler);

#endif
