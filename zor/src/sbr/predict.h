/** \file
 * Entry points of the prediction coefficients of SBR. Each call does all its bands; arguments have been
 * checked.
 */
#ifndef ZOR_SBR_PREDICT_H
#define ZOR_SBR_PREDICT_H

#include "codepath.h"

namespace zor {

/** Slots before the first one that the covariances reach back to. */
inline constexpr int predictPast = 2;

struct PredictKernels {
    void (*real)(const float* const* src, float* alpha0, float* alpha1, int bands, int length);
    void (*split)(const float* const* re, const float* const* im, float* alpha0Re, float* alpha0Im,
                  float* alpha1Re, float* alpha1Im, int bands, int length);
    void (*pairs)(const Zor32fc* const* src, Zor32fc* alpha0, Zor32fc* alpha1, int bands, int length);
};

} // namespace zor

#endif
