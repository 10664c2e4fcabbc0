#include "aac/spectrum_kernels.h"

#include "aac/fixedpoint.h"

#include <bit>
#include <cmath>
#include <type_traits>

namespace zor::aac {
namespace {

inline Zor32s sum(Zor32s a, Zor32s b) {
    return saturatingAdd(a, b);
}
inline float sum(float a, float b) {
    return a + b;
}
inline Zor32s difference(Zor32s a, Zor32s b) {
    return saturatingSubtract(a, b);
}
inline float difference(float a, float b) {
    return a - b;
}

template <class Line>
void midSide(Line* __restrict l, Line* __restrict r, int count) {
    for (int i = 0; i < count; ++i) {
        const Line mid = l[i], side = r[i];
        l[i] = sum(mid, side);
        r[i] = difference(mid, side);
    }
}

template <class Line>
void addTo(const Line* __restrict a, Line* __restrict b, int count) {
    for (int i = 0; i < count; ++i)
        b[i] = sum(a[i], b[i]);
}

/** Rounds a number of the 32-bit range, which the sum with 1.5 * 2^52 leaves in its low bits. */
inline Zor32s rounded(double value) {
    constexpr double magic = 6755399441055744.0;
    const double limited = std::min(std::max(value, -2147483648.0), 2147483647.0);
    return static_cast<Zor32s>(static_cast<Zor32u>(std::bit_cast<Zor64u>(limited + magic)));
}

inline Zor32s scaled(Zor32s line, double factor) {
    return rounded(line * factor);
}
inline float scaled(float line, double factor) {
    return static_cast<float>(line * factor);
}

template <class Line>
void intensity(const Line* __restrict l, Line* __restrict r, BandLines bands, const double* gains) {
    for (int band = 0; band < bands.count; ++band) {
        const double gain = gains[band];
        if (gain == 0)
            continue;
        const int end = bands.offset[band + 1] * bands.windows;
        for (int i = bands.offset[band] * bands.windows; i < end; ++i)
            r[i] = scaled(l[i], gain);
    }
}

/** The integer next to a number that is not negative. */
inline Zor32s roundedPositive(float value) {
    // The largest float below 2^31.
    return static_cast<Zor32s>(std::min(value + 0.5F, 2147483520.0F));
}

void dequantise(Zor32s* lines, BandLines bands, const float* gains, const float* power) {
    for (int band = 0; band < bands.count; ++band) {
        const float gain = gains[band];
        const int end = bands.offset[band + 1] * bands.windows;
        for (int i = bands.offset[band] * bands.windows; i < end; ++i) {
            const Zor32s sign = lines[i] >> 31;
            const Zor32u magnitude = static_cast<Zor32u>(lines[i] ^ sign) - static_cast<Zor32u>(sign);
            const auto index = static_cast<Zor32s>(std::min<Zor32u>(magnitude, largestQuantised));
            lines[i] = (roundedPositive(power[index] * gain) ^ sign) - sign;
        }
    }
}

void dequantiseBand(const Zor32s* __restrict from, float* __restrict to, int count, float gain,
                    const float* __restrict power) {
    constexpr auto signBit = static_cast<Zor32s>(0x80000000U);
    for (int i = 0; i < count; ++i) {
        const Zor32s sign = from[i] >> 31;
        const Zor32u magnitude = static_cast<Zor32u>(from[i] ^ sign) - static_cast<Zor32u>(sign);
        const auto index = static_cast<Zor32s>(std::min<Zor32u>(magnitude, largestQuantised));
        to[i] = std::bit_cast<float>(std::bit_cast<Zor32s>(power[index] * gain) ^ (sign & signBit));
    }
}

void dequantiseToFloat(const Zor32s* from, float* to, BandLines bands, const float* gains, const float* power,
                       int winLen) {
    for (int band = 0; band < bands.count; ++band) {
        const int first = bands.offset[band], width = bands.offset[band + 1] - first;
        for (int window = 0; window < bands.windows; ++window, from += width) {
            float* const lines = to + window * winLen + first;
            if (gains[band] != 0)
                dequantiseBand(from, lines, width, gains[band], power);
            else
                std::fill_n(lines, width, 0.0F);
        }
    }
}

/** A linear congruential generator, whose next steps all follow from one state. */
struct Generator {
    static constexpr int lanes = 8;
    static constexpr Zor32u multiplier = 1664525, increment = 1013904223;
    /** Step i + 1 from a state: state * factor[i] + offset[i]. */
    Zor32u factor[lanes]{}, offset[lanes]{};

    constexpr Generator() {
        Zor32u f = 1, o = 0;
        for (int i = 0; i < lanes; ++i) {
            factor[i] = f = f * multiplier;
            offset[i] = o = o * multiplier + increment;
        }
    }
};

constexpr Generator generator;

/** The upper halves of the next states; returns the last one. */
inline Zor32u draw(Zor32s* lines, Zor32u state, int count) {
    for (int i = 0; i < count; ++i)
        lines[i] = static_cast<Zor32s>(state * generator.factor[i] + generator.offset[i]) >> 16;
    return state * generator.factor[count - 1] + generator.offset[count - 1];
}

template <class Line>
Zor32u noise(Line* lines, int count, Zor32u state, double root) {
    constexpr bool whole = std::is_same_v<Line, Zor32s>;
    alignas(32) Zor32s own[whole ? 1 : longestBand];
    Zor32s* drawn = own;
    if constexpr (whole)
        drawn = lines;
    int i = 0;
    for (; i + Generator::lanes <= count; i += Generator::lanes)
        state = draw(drawn + i, state, Generator::lanes);
    if (i < count)
        state = draw(drawn + i, state, count - i);
    Zor64s energy = 0;
    for (i = 0; i < count; ++i)
        energy += product(drawn[i], drawn[i]);
    const double scale = root / std::sqrt(static_cast<double>(std::max<Zor64s>(energy, 1)));
    for (i = 0; i < count; ++i)
        if constexpr (whole)
            lines[i] = rounded(drawn[i] * scale);
        else
            lines[i] = static_cast<float>(drawn[i] * scale);
    return state;
}

template <class Line>
constexpr LineKernels<Line> lineKernels{
    .midSide = midSide<Line>, .addTo = addTo<Line>, .intensity = intensity<Line>, .noise = noise<Line>};

} // namespace
} // namespace zor::aac

template <>
const zor::aac::LineKernels<Zor32s>& zor::kernelTable<zor::aac::LineKernels<Zor32s>, ZOR_PATH>() {
    return aac::lineKernels<Zor32s>;
}

template <>
const zor::aac::LineKernels<Zor32f>& zor::kernelTable<zor::aac::LineKernels<Zor32f>, ZOR_PATH>() {
    return aac::lineKernels<Zor32f>;
}

template <>
const zor::aac::QuantKernels& zor::kernelTable<zor::aac::QuantKernels, ZOR_PATH>() {
    static constexpr aac::QuantKernels table{.dequantise = aac::dequantise,
                                             .dequantiseToFloat = aac::dequantiseToFloat};
    return table;
}
