/** \file
 * The inner loops of the AAC stereo, noise and quantisation tools, one entry per code path.
 */
#ifndef ZOR_AAC_SPECTRUM_KERNELS_H
#define ZOR_AAC_SPECTRUM_KERNELS_H

#include "codepath.h"

#include <cstdint>

namespace zor::aac {

constexpr int largestQuantised = 8191;
constexpr int longestBand = 96; /**< lines, at any sampling rate */

/** Bands of lines: band b spans offset[b] * windows to offset[b + 1] * windows - 1. */
struct BandLines {
    const std::uint16_t* offset;
    int count;
    int windows;
};

/** The tools on lines of a type: whole numbers, which are rounded and saturate, or floats. */
template <class Line>
struct LineKernels {
    /** (l, r) becomes (l + r, l - r). */
    void (*midSide)(Line* l, Line* r, int count);
    /** b becomes a + b. */
    void (*addTo)(const Line* a, Line* b, int count);
    /** r = l * gain in the bands whose gain is not 0. */
    void (*intensity)(const Line* l, Line* r, BandLines bands, const double* gains);
    /** Fills with noise of an energy: the root of the energy is given. Returns the generator's new state. */
    Zor32u (*noise)(Line* lines, int count, Zor32u state, double root);
};

struct QuantKernels {
    /** sign(q) |q|^(4/3) * gain, rounded and saturated; `power` holds q^(4/3). */
    void (*dequantise)(Zor32s* lines, BandLines bands, const float* gains, const float* power);
    /**
     * The same of a group to floats, from group order to window order: the windows of the group follow one
     * another at `to`, `winLen` apart. Bands whose gain is 0 become 0.
     */
    void (*dequantiseToFloat)(const Zor32s* from, float* to, BandLines bands, const float* gains,
                              const float* power, int winLen);
};

} // namespace zor::aac

#endif
