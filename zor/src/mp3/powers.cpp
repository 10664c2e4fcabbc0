#include "mp3/powers.h"

#include <algorithm>
#include <cmath>

namespace zor::mp3 {

const std::array<float, largestQuantised + 1>& fourThirds() {
    static const auto table = [] {
        std::array<float, largestQuantised + 1> powers;
        for (std::size_t x = 0; x < powers.size(); ++x)
            powers[x] = static_cast<float>(std::cbrt(static_cast<double>(x)) * static_cast<double>(x));
        return powers;
    }();
    return table;
}

namespace {

constexpr int most = 400;

/** 2^(i * exponent) for i from -most to most. */
std::array<float, 2 * most + 1> powersOfTwo(double exponent) {
    std::array<float, 2 * most + 1> powers;
    for (int i = -most; i <= most; ++i)
        powers[static_cast<std::size_t>(i + most)] = static_cast<float>(std::exp2(exponent * i));
    return powers;
}

std::size_t placeOf(int steps) {
    return static_cast<std::size_t>(std::clamp(steps, -most, most) + most);
}

} // namespace

float quarterPower(int steps) {
    static const auto table = powersOfTwo(0.25);
    return table[placeOf(steps)];
}

float quantiserScale(int steps) {
    static const auto table = powersOfTwo(-3.0 / 16);
    return table[placeOf(steps)];
}

} // namespace zor::mp3
