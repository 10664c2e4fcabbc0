/** \file
 * Fixed-point arithmetic for kernels. Everything has internal linkage: each code path compiles its own.
 */
#ifndef ZOR_AAC_FIXEDPOINT_H
#define ZOR_AAC_FIXEDPOINT_H

#include "zortypes.h"

#include <algorithm>
#include <limits>

namespace zor {

namespace {

[[maybe_unused]] constexpr Zor32s most32 = std::numeric_limits<Zor32s>::max();
[[maybe_unused]] constexpr Zor32s least32 = std::numeric_limits<Zor32s>::min();

/** Makes a 63-bit sum positive, for shifts that know no sign (vector units shift 64 bits without one). */
[[maybe_unused]] constexpr Zor64u bias = Zor64u{1} << 62;

/** The bias with half a unit of the result of a shift by 1 to 62 bits. */
[[maybe_unused]] inline Zor64u roundingBias(int shift) {
    return bias + (Zor64u{1} << (shift - 1));
}

/** A sum below 2^62 in magnitude, shifted right and saturated; `round` is roundingBias(shift). */
[[maybe_unused]] inline Zor32s narrow(Zor64s sum, Zor64u round, int shift) {
    const Zor64u biased = static_cast<Zor64u>(sum) + round;
    const auto value = static_cast<Zor64s>(biased >> shift) - static_cast<Zor64s>(bias >> shift);
    return static_cast<Zor32s>(std::max<Zor64s>(std::min<Zor64s>(value, most32), least32));
}

/** The same where the result is known to fit: the low bits need no sign. */
[[maybe_unused]] inline Zor32s shifted(Zor64s sum, Zor64u half, int shift) {
    return static_cast<Zor32s>(static_cast<Zor32u>((static_cast<Zor64u>(sum) + half) >> shift));
}

[[maybe_unused]] inline Zor64s product(Zor32s a, Zor32s b) {
    return static_cast<Zor64s>(a) * b;
}

/** a + b, or the end of the range that it passes. */
[[maybe_unused]] inline Zor32s saturatingAdd(Zor32s a, Zor32s b) {
    const auto sum = static_cast<Zor32s>(static_cast<Zor32u>(a) + static_cast<Zor32u>(b));
    const Zor32s overflow = ((a ^ sum) & (b ^ sum)) >> 31;
    return (sum & ~overflow) | (((a >> 31) ^ most32) & overflow);
}

[[maybe_unused]] inline Zor32s saturatingSubtract(Zor32s a, Zor32s b) {
    const auto difference = static_cast<Zor32s>(static_cast<Zor32u>(a) - static_cast<Zor32u>(b));
    const Zor32s overflow = ((a ^ b) & (a ^ difference)) >> 31;
    return (difference & ~overflow) | (((a >> 31) ^ most32) & overflow);
}

} // namespace

} // namespace zor

#endif
