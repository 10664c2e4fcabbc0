/** \file
 * The psychoacoustic model's loops over samples, lines and partitions, one entry per code path.
 */
#ifndef ZOR_MP3_PSYCH_KERNELS_H
#define ZOR_MP3_PSYCH_KERNELS_H

#include "transform/fft.h"

namespace zor::mp3 {

struct PsychKernels {
    /** to[i] = from[i] window[i]. */
    void (*window)(const Zor16s* from, const float* window, float* to, int n);
    /** The spectra, lines 0 to n/2, of two real signals that went through one complex transform of n. */
    void (*separate)(Split both, int n, Split first, Split second);
    /** Squares of n lines. */
    void (*energies)(Split spectrum, float* energy, int n);
    /** Squares of the lines of (a + sign b) / sqrt 2. */
    void (*mixedEnergies)(Split a, Split b, float sign, float* energy, int n);
    /** How far n lines lie from what the two before them predict: 0 (as predicted) to 1. */
    void (*unpredictability)(Split now, Split before, Split beforeThat, float* result, int n);
    /** to[i] = sum of matrix[i][j] from[j], both of n; rows are `stride` apart. */
    void (*spread)(const float* matrix, int stride, const float* from, float* to, int n);
};

} // namespace zor::mp3

#endif
