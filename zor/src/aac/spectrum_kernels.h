/** \file
 * The inner loops of the AAC stereo, noise and quantisation tools, one entry per code path.
 */
#ifndef ZOR_AAC_SPECTRUM_KERNELS_H
#define ZOR_AAC_SPECTRUM_KERNELS_H

#include "codepath.h"

#include <cstdint>

namespace zor::aac {

constexpr int largestQuantised = 8191;

/** Bands of lines: band b spans offset[b] * windows to offset[b + 1] * windows - 1. */
struct BandLines {
    const std::uint16_t* offset;
    int count;
    int windows;
};

struct AacKernels {
    /** (l, r) becomes (l + r, l - r), saturated. */
    void (*midSide)(Zor32s* l, Zor32s* r, int count);
    /** a + b, saturated. */
    void (*addTo)(const Zor32s* a, Zor32s* b, int count);
    /** r = l * gain in the bands whose gain is not 0, rounded and saturated. */
    void (*intensity)(const Zor32s* l, Zor32s* r, BandLines bands, const double* gains);
    /** sign(q) |q|^(4/3) * gain, rounded and saturated; `power` holds q^(4/3). */
    void (*dequantise)(Zor32s* lines, BandLines bands, const float* gains, const float* power);
    /** Fills with noise of an energy: the root of the energy is given. Returns the generator's new state. */
    Zor32u (*noise)(Zor32s* lines, int count, Zor32u state, double root);
};

} // namespace zor::aac

#endif
