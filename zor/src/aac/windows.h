/** \file
 * The windows of AAC, ISO/IEC 14496-3 4.6.11.3, in fixed point and in floating point.
 */
#ifndef ZOR_AAC_WINDOWS_H
#define ZOR_AAC_WINDOWS_H

#include "aac/bands.h"
#include "zorac/aac.h"

#include <algorithm>
#include <cmath>

namespace zor::aac {

constexpr int flatLength =
    (frameLength - shortLength) / 2; /**< lines of a start or stop window beside its slope */

/** A number of fixed point, the largest one at most. */
inline Zor32s fixed(double value, int bits) {
    return static_cast<Zor32s>(std::llrint(std::min(std::ldexp(value, bits), 2147483647.0)));
}

/** The two halves of a window; in fixed point with 31 bits behind the binary point. */
template <class Sample>
struct WindowHalves {
    const Sample* rise;
    const Sample* fall;
};

/** Window sequence and shapes of a frame and the one before it. */
struct WindowChoice {
    int sequence, shape, prevShape;

    [[nodiscard]] bool valid() const {
        return sequence >= zorAacOnlyLong && sequence <= zorAacLongStop && (shape | 1) == 1 &&
               (prevShape | 1) == 1;
    }
    [[nodiscard]] bool isShort() const { return sequence == zorAacEightShort; }
};

/** The window of a long sequence, for samples of Zor32s or Zor32f. */
template <class Sample>
WindowHalves<Sample> longWindow(const WindowChoice& choice);

/** The window of a short window whose first half has the shape `before`. */
template <class Sample>
WindowHalves<Sample> shortWindow(int before, int shape);

} // namespace zor::aac

#endif
