/** \file
 * Entry points of the MDCT kernels. An MDCT of N samples is a cosine transform of type IV of M = N/2 values
 * after its samples a b c d (quarters, r for reversed) have been folded to -c_r - d, a - b_r.
 */
#ifndef ZOR_TRANSFORM_MDCT_KERNELS_H
#define ZOR_TRANSFORM_MDCT_KERNELS_H

#include "codepath.h"

namespace zor {

struct MdctKernels {
    /** `length` samples to length/2 values; `to` is apart from `from`. */
    void (*fold)(const float* from, float* to, int length);
    /** length/2 values y0 y1 (halves) to y1, -y1_r, -y0_r, -y0. */
    void (*unfold)(const float* from, float* to, int length);
    void (*toFloat)(const Zor16s* from, float* to, int length);
    /** Multiplies, rounds to nearest and saturates. */
    void (*toInt)(const float* from, float factor, Zor16s* to, int length);
};

} // namespace zor

#endif
