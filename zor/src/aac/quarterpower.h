/** \file
 * Powers of two in quarter steps, as scale factors count them.
 */
#ifndef ZOR_AAC_QUARTERPOWER_H
#define ZOR_AAC_QUARTERPOWER_H

#include "zortypes.h"

#include <algorithm>
#include <bit>

namespace zor {

/** 2^(exponent / 4) for exponents from -400 to 400; beyond them the value at the end, far from the float
 * range. */
constexpr double quarterPower(int exponent) {
    constexpr double roots[4] = {1, 1.189207115002721, 1.414213562373095, 1.681792830507429};
    const int limited = std::clamp(exponent, -400, 400);
    const auto whole = static_cast<Zor64u>(1023 + (limited >> 2));
    return roots[limited & 3] * std::bit_cast<double>(whole << 52);
}

} // namespace zor

#endif
