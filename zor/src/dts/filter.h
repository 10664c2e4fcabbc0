/** \file
 * The 32-band synthesis filter of DTS: modulation s[k] h[n] cos(pi/32 (k + 1/2)(n + 16.5)) of 512 taps. The
 * signs s[k], +1 -1 -1 +1 over and over, are those of the interpolation procedure of ETSI TS 102 114: without
 * them a bank would still undo its own analysis, but streams of the standard would come out as noise.
 *
 * The modulation changes its sign every 64 taps (the printed taps carry that sign), so a slot needs 64 values
 * v[r] = sum of s[k] X[k] cos(pi/32 (k + 1/2)(r + 16.5)); by symmetry they are the 32 of a cosine transform
 * of type IV.
 */
#ifndef ZOR_DTS_FILTER_H
#define ZOR_DTS_FILTER_H

#include "transform/dct.h"

namespace zor {

struct DtsSynthesis {
    static constexpr int bands = 32, ringSlots = 16, taps = bands * ringSlots;

    Dct4Plan plan;
    float* window[2]; /**< by mode */
    float* ring;      /**< 64 modulated values for each of the last 16 slots */
    float* work;
    int newest; /**< the slot of the ring that was written last */
};

struct DtsKernels {
    void (*synthesise)(DtsSynthesis& filter, const float* src, float* dst, int mode);
};

} // namespace zor

#endif
