/** \file
 * Windowing, folding and overlap of the floating-point MDCT of AAC, one entry per code path. `length` is that
 * of half a window and a multiple of 16; u stands for the values of a cosine transform of type IV.
 */
#ifndef ZOR_AAC_MDCT_FLOAT_KERNELS_H
#define ZOR_AAC_MDCT_FLOAT_KERNELS_H

#include "codepath.h"

namespace zor::aac {

struct AacFloatMdctKernels {
    /** Windows 2 * length samples, whose halves begin at `first` and `second`, and folds them to length. */
    void (*foldWindowed)(const float* first, const float* second, const float* rise, const float* fall,
                         float* folded, int length);
    /** Unfolds u, windows it and adds its first half to the overlap to `out`; its second is the new overlap.
     */
    void (*overlapUnfolded)(const float* u, const float* rise, const float* fall, float* overlap, float* out,
                            int length);
    /** Unfolds u, windows it and adds its 2 * length samples to `sum`. */
    void (*addUnfolded)(const float* u, const float* rise, const float* fall, float* sum, int length);
};

} // namespace zor::aac

#endif
