/** \file
 * The fixed-point MDCT of AAC, one entry per code path.
 *
 * An MDCT of 2M samples is a DCT-IV of M folded samples, X[k] = sum v[n] cos(pi/M (n + 1/2)(k + 1/2)), and
 * that is a complex Fourier transform of M/2 points between two rotations by exp(-i pi (n + 1/8) / M).
 */
#ifndef ZOR_AAC_MDCT_KERNELS_H
#define ZOR_AAC_MDCT_KERNELS_H

#include "codepath.h"

namespace zor::aac {

/** Rotations in fixed point; real and imaginary parts apart. */
struct Rotations {
    const Zor32s* re;
    const Zor32s* im;
};

/** The constants of a DCT-IV. */
struct Dct4Plan {
    static constexpr int maxStages = 4;

    int length; /**< M: 1024 or 128 */
    int stages; /**< radix-4 stages; a radix-2 one follows where M/2 is no power of 4 */
    bool radix2;
    Rotations ends; /**< M/2 rotations before and after the Fourier transform; 31 fractional bits */
    /** Per stage: of the second, third and fourth output; 30 fractional bits. In the second stage four of
     * each. */
    Rotations stage[maxStages][3];
};

struct AacMdctKernels {
    /** The bits that the largest magnitude takes. */
    int (*bitsOf)(const Zor32s* values, int count);
    /**
     * Windows 2M samples and folds them to M, shifted left by `norm` bits (right where negative). `rise` and
     * `fall` hold the M values of either half of the window. Folded values stay below 2^28 where the samples,
     * so shifted, are below 2^27.
     */
    void (*foldWindowed)(const Zor32s* first, const Zor32s* second, const Zor32s* rise, const Zor32s* fall,
                         Zor32s* folded, int length, int norm);
    /**
     * DCT-IV. The input shifted left by `norm` has to be below 2^28; the sum is multiplied by
     * 2^(31 - shift) 2 / M and 2^norm, rounded and saturated (never to the lowest number, which has no
     * negative). `work` holds 2 * M elements.
     */
    void (*dct4)(const Dct4Plan& plan, const Zor32s* in, int norm, Zor32s* out, int shift, Zor32s* work);
    /** Unfolds M values to 2M samples, windows them and adds them to `sum`, saturated. */
    void (*addUnfolded)(const Zor32s* folded, const Zor32s* rise, const Zor32s* fall, Zor32s* sum,
                        int length);
    /** The same for the first half; the second half is stored in place of the overlap, which was the sum's.
     */
    void (*overlapUnfolded)(const Zor32s* folded, const Zor32s* rise, const Zor32s* fall, Zor32s* overlap,
                            Zor16s* out, int length);
    /** Rounds to integers, saturated to 16 bits. */
    void (*toSamples)(const Zor32s* sum, Zor16s* out, int count);
};

/** Bits behind the binary point of what is overlapped and added. */
constexpr int overlapBits = 8;

} // namespace zor::aac

#endif
