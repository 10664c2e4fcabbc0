/** \file
 * Entry points of the MDCT kernels. An MDCT of N samples is a cosine transform of type IV of M = N/2 values
 * after its samples a b c d (quarters, r for reversed) have been folded to -c_r - d, a - b_r.
 */
#ifndef ZOR_AC_MDCTKERNELS_H
#define ZOR_AC_MDCTKERNELS_H

#include "codepath.h"

namespace zor {

struct MdctKernels {
    /** `len` samples to len/2 values; `to` is apart from `from`. */
    void (*fold)(const float* from, float* to, int len);
    /** len/2 values y0 y1 (halves) to y1, -y1_r, -y0_r, -y0. */
    void (*unfold)(const float* from, float* to, int len);
    void (*toFloat)(const Zor16s* from, float* to, int len);
    /** Multiplies, rounds to nearest and saturates. */
    void (*toInt)(const float* from, float factor, Zor16s* to, int len);
};

} // namespace zor

#endif
