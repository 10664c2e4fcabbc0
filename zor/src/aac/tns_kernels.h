/** \file
 * The filters of temporal noise shaping, one entry per code path.
 */
#ifndef ZOR_AAC_TNS_KERNELS_H
#define ZOR_AAC_TNS_KERNELS_H

#include "codepath.h"

namespace zor::aac {

constexpr int tnsMaxOrder = 20;

/**
 * A predictor in fixed point: sample n is predicted as minus the sum of coef[k] * sample[n - 1 - k] /
 * 2^shift. The sum of the magnitudes of coef is below 2^30, so that a sum over 32-bit samples stays within 63
 * bits.
 */
struct TnsPredictor {
    int order;
    int shift;
    Zor32s coef[tnsMaxOrder];
};

/** The same for samples in floating point, without the shift. */
struct TnsFloatPredictor {
    int order;
    float coef[tnsMaxOrder];
};

struct TnsKernels {
    /** In place: each sample plus its prediction from the `order` outputs before it; the predictor's memory,
        data[-order] to data[-1], is read. */
    void (*allPole)(const TnsPredictor& predictor, Zor32s* data, int length);
    /** Each sample minus its prediction from the inputs before it; src[-order] to src[-1] are read. */
    void (*allZero)(const TnsPredictor& predictor, const Zor32s* src, Zor32s* dst, int length);
    void (*allPoleFloat)(const TnsFloatPredictor& predictor, float* data, int length);
    void (*allZeroFloat)(const TnsFloatPredictor& predictor, const float* src, float* dst, int length);
};

} // namespace zor::aac

#endif
