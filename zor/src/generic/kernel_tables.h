/** \file
 * Entry points of the signal-processing kernels, one table per code path. Arguments have been checked.
 */
#ifndef ZOR_GENERIC_KERNEL_TABLES_H
#define ZOR_GENERIC_KERNEL_TABLES_H

#include "codepath.h"

namespace zor {

struct VectorKernels {
    void (*scale)(float* srcDst, float factor, int length);
    void (*calcSF)(const Zor16s* src, int offset, float* dst, int length);
    void (*makeFloat)(const Zor16s* src, float* dst, int length);
    void (*pow34)(const float* src, float* dst, int length);
    void (*pow34ToInt)(const float* src, Zor16s* dst, int length);
    void (*pow43)(const Zor16s* src, float* dst, int length);
    void (*toFloat)(const Zor32s* src, float* dst, int length, float factor);
    void (*toInt32)(const float* src, Zor32s* dst, int length, float factor);
    void (*toInt16)(const float* src, Zor16s* dst, int length, float factor);
};

template <class Sample>
struct InterleaveKernels {
    void (*interleave)(const Sample* const* src, int channels, int length, Sample* dst);
    void (*deinterleave)(const Sample* src, int channels, int length, Sample* const* dst);
};

struct FirKernels {
    /** dst[n] = sum over k below order of taps[k] x[n - k]; x is readable from x[1 - order] on. */
    void (*fir)(const float* x, float* dst, int length, const float* taps, int order);
};

} // namespace zor

#endif
