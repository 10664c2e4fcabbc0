/** \file
 * Backward-adaptive prediction of spectral lines: the predictors' state and kernels.
 */
#ifndef ZOR_AAC_FDP_H
#define ZOR_AAC_FDP_H

#include "codepath.h"

namespace zor {

/** For each line the lattice's two delayed signals, and correlation and energy of its two stages. */
struct FdpPredictors {
    float *delay0, *delay1, *correlation0, *correlation1, *energy0, *energy1;

    /** As in the reset state of the standard. */
    void reset(int line) const {
        delay0[line] = delay1[line] = correlation0[line] = correlation1[line] = 0;
        energy0[line] = energy1[line] = 1;
    }
};

struct FdpKernels {
    /** Lines begin to end of one frame: errors where `predict` is set, else the values themselves. */
    void (*forward)(const FdpPredictors& predictors, const float* src, float* dst, int begin, int end,
                    bool predict);
    void (*inverse)(const FdpPredictors& predictors, float* srcDst, int begin, int end, bool predict);
};

} // namespace zor

#endif
