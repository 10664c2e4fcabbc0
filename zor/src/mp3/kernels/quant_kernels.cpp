/** \file
 * Loops over quantised values and spectral lines.
 */
#include "mp3/convert.h"
#include "mp3/kernel_tables.h"

#include <cmath>
#include <numbers>

namespace zor::mp3 {
namespace {

using V = Lanes<maxLanes>;

bool within(const Zor32s* values, int n, int limit) {
    unsigned beyond = 0;
    for (int i = 0; i < n; ++i)
        beyond |= static_cast<unsigned>(values[i] > limit) | static_cast<unsigned>(values[i] < -limit);
    return beyond == 0;
}

void requantise(Zor32s* data, const ScaledRuns& runs, const float* power) {
    constexpr float high = 2147483520.f;
    for (int run = 0, line = 0; run < runs.count; ++run) {
        const float scale = runs.scale[run];
        for (; line < runs.end[run]; ++line) {
            const Zor32s value = data[line], sign = value >> 31;
            float magnitude = power[(value ^ sign) - sign] * scale;
            magnitude = magnitude < high ? magnitude : high;
            data[line] = (static_cast<Zor32s>(magnitude + 0.5f) ^ sign) - sign;
        }
    }
}

/** Calls run(lane, begin, end) for whole vectors, then for the rest in single values. */
template <class Run>
[[gnu::always_inline]] inline void forLanes(int n, Run run) {
    const int whole = n / maxLanes * maxLanes;
    run(V{}, 0, whole);
    run(float{}, whole, n);
}

void rotate(Zor32s* a, Zor32s* b, int n) {
    constexpr float scale = static_cast<float>(1 / std::numbers::sqrt2);
    forLanes(n, [&](auto lane, int begin, int end) {
        using L = decltype(lane);
        for (int i = begin; i < end; i += lanesIn<L>) {
            const L x = loadInts<L>(a + i), y = loadInts<L>(b + i);
            storeRounded(a + i, (x + y) * scale);
            storeRounded(b + i, (x - y) * scale);
        }
    });
}

void spreadCarrier(Zor32s* left, Zor32s* right, int n, float toLeft, float toRight) {
    forLanes(n, [&](auto lane, int begin, int end) {
        using L = decltype(lane);
        for (int i = begin; i < end; i += lanesIn<L>) {
            const L carrier = loadInts<L>(left + i);
            storeRounded(left + i, carrier * toLeft);
            storeRounded(right + i, carrier * toRight);
        }
    });
}

void power34(const Zor32s* from, float* to, int n) {
    constexpr float scale = 1.f / (1 << fractionBits);
    for (int i = 0; i < n; ++i) {
        const float x = std::fabs(static_cast<float>(from[i])) * scale;
        to[i] = std::sqrt(x * std::sqrt(x));
    }
}

int quantise(const float* from, Zor32s* to, const ScaledRuns& runs) {
    constexpr float high = largestQuantised;
    int largest = 0;
    for (int run = 0, line = 0; run < runs.count; ++run) {
        const float scale = runs.scale[run];
        for (; line < runs.end[run]; ++line) {
            const float scaled = from[line] * scale + 0.4054f;
            const int value = static_cast<int>(scaled < high ? scaled : high);
            to[line] = value;
            largest = value > largest ? value : largest;
        }
    }
    return largest;
}

} // namespace
} // namespace zor::mp3

template <>
const zor::mp3::QuantKernels& zor::kernelTable<zor::mp3::QuantKernels, ZOR_PATH>() {
    static constexpr mp3::QuantKernels table{mp3::within,        mp3::requantise, mp3::rotate,
                                             mp3::spreadCarrier, mp3::power34,    mp3::quantise};
    return table;
}
