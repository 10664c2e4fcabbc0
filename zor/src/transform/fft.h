/** \file
 * The complex transform that all others are built on: y[k] = sum over n of x[n] exp(-2 pi j n k / N).
 *
 * Lengths 2^a 3^b 5^c. Real and imaginary parts lie in arrays of their own. The transform goes back and forth
 * between two buffers (Stockham's self-sorting form, radices 8, 5, 4, 3, 2), so no pass reorders its data.
 * The inverse (positive exponent, no factor 1/N) is the same call with re and im exchanged on both sides.
 */
#ifndef ZOR_TRANSFORM_FFT_H
#define ZOR_TRANSFORM_FFT_H

#include "codepath.h"
#include "common/arena.h"

namespace zor {

/** A complex array in two parts. */
struct Split {
    float* re;
    float* im;
};

/** Arrays that several passes read at once are kept off each other's cache sets by this many elements. */
inline constexpr int splitGap = 16;

/** A split array of n elements over 2 n + splitGap floats. */
inline Split splitOver(float* floats, int n) {
    return {floats, floats + n + splitGap};
}

/** Floats behind splitOver(.., n), rounded up so that several stand in a row on cache-line boundaries. */
constexpr int splitFloats(int n) {
    return (2 * n + splitGap + 15) / 16 * 16;
}

/** One pass: `blocks` butterflies of `radix` points on runs of `stride` neighbouring elements. */
struct FftPass {
    int radix;
    int blocks;
    int stride;
    const float* twiddle; /**< for k from 1 to radix - 1: cosines, then sines, of `blocks` angles; null where
                             all are 1 */
};

struct FftPlan {
    static constexpr int maxPasses = 20;
    int size;
    int passes;
    FftPass pass[maxPasses];
};

/** Whether n is 2^a 3^b 5^c, n at least 1. */
bool isFftSize(int n);

/** Fills the plan of length n and takes its twiddle factors from the arena; only measures with a measuring
 * one. */
void placeFft(FftPlan& plan, int n, Arena& arena);

struct FftKernels {
    /** Transforms `data`, using `work` of the same length; returns the one of the two that holds the result.
     */
    Split (*transform)(const FftPlan& plan, Split data, Split work);
};

} // namespace zor

#endif
