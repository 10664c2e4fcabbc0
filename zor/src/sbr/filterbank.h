/** \file
 * The filter banks of spectral band replication: their tables, states and kernels.
 *
 * A bank of M bands has 2M windowed values u[n] and the modulation e(pi/M (k + 1/2)(n + phase)). That is a
 * Fourier transform of 2M real values at odd frequencies, whose spectrum is conjugate-symmetric, so its even
 * half, a complex transform of M, says all: with z[n] = (u[n] - j u[n+M]) exp(-j pi n/2M) and Z its
 * transform, Y[2l] = conj(Z[l]),  and Y[2M-1-2l] = Z[l] for the upper half of l. Synthesis is the transpose
 * of it.
 */
#ifndef ZOR_SBR_FILTERBANK_H
#define ZOR_SBR_FILTERBANK_H

#include "transform/fft.h"

namespace zor {

inline constexpr int sbrAnalysisBands = 32;

struct OddFourierPlan {
    int bands; /**< M */
    FftPlan fft;
    Split inner; /**< exp(-j pi n/2M) for n below M */
    Split outer; /**< gain times phase factor of Z[l] */
    Split data;  /**< buffers of the transform */
    Split work;
};

/** Analysis of 32 bands. */
struct SbrAnalysis {
    static constexpr int windowLength = 320;
    static constexpr int past = windowLength - sbrAnalysisBands;
    static constexpr int joinedSlots =
        past / sbrAnalysisBands; /**< slots whose window reaches into the past */

    OddFourierPlan plan;
    float* window; /**< in the order of the samples, oldest first */
    float* line;   /**< the past samples and room for those of the joined slots */
};

/** Synthesis of 64 or 32 bands. */
struct SbrSynthesis {
    static constexpr int ringSlots = 10;

    OddFourierPlan plan;
    float* window; /**< 10 M values */
    float* ring;   /**< 2 M modulated values for each of the last ten slots */
    int newest;    /**< the slot of the ring that was written last */
};

/** Fills tables and clears delay lines; only measures with a measuring arena. */
void placeSbrAnalysis(SbrAnalysis& filter, double phase, Arena& arena);
void placeSbrSynthesis(SbrSynthesis& filter, int bands, double phase, double gain, Arena& arena);

/** Bands lines apart in real and imaginary parts. */
template <class Float>
struct SplitLines {
    Float* const* re;
    Float* const* im;
};

struct SbrKernels {
    void (*analyseSplit)(SbrAnalysis& filter, const float* src, SplitLines<float> dst, int slots);
    void (*analysePairs)(SbrAnalysis& filter, const float* src, Zor32fc* const* dst, int slots);
    void (*analyseReal)(SbrAnalysis& filter, const float* src, float* const* dst, int slots);
    void (*synthesiseSplit)(SbrSynthesis& filter, SplitLines<const float> src, float* dst, int slots);
    void (*synthesisePairs)(SbrSynthesis& filter, const Zor32fc* const* src, float* dst, int slots);
    void (*synthesiseReal)(SbrSynthesis& filter, const float* const* src, float* dst, int slots);
};

} // namespace zor

#endif
