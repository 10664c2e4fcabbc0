#include "aac/spectrum_kernels.h"

#include "aac/fixedpoint.h"

#include <bit>
#include <cmath>

namespace zor::aac {
namespace {

void midSide(Zor32s* __restrict l, Zor32s* __restrict r, int count) {
    for (int i = 0; i < count; ++i) {
        const Zor32s mid = l[i], side = r[i];
        l[i] = saturatingAdd(mid, side);
        r[i] = saturatingSubtract(mid, side);
    }
}

void addTo(const Zor32s* __restrict a, Zor32s* __restrict b, int count) {
    for (int i = 0; i < count; ++i)
        b[i] = saturatingAdd(a[i], b[i]);
}

/** Rounds a number of the 32-bit range, which the sum with 1.5 * 2^52 leaves in its low bits. */
inline Zor32s rounded(double value) {
    constexpr double magic = 6755399441055744.0;
    const double limited = std::min(std::max(value, -2147483648.0), 2147483647.0);
    return static_cast<Zor32s>(static_cast<Zor32u>(std::bit_cast<Zor64u>(limited + magic)));
}

void intensity(const Zor32s* __restrict l, Zor32s* __restrict r, BandLines bands, const double* gains) {
    for (int band = 0; band < bands.count; ++band) {
        const double gain = gains[band];
        if (gain == 0)
            continue;
        const int end = bands.offset[band + 1] * bands.windows;
        for (int i = bands.offset[band] * bands.windows; i < end; ++i)
            r[i] = rounded(l[i] * gain);
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

Zor32u noise(Zor32s* lines, int count, Zor32u state, double root) {
    int i = 0;
    for (; i + Generator::lanes <= count; i += Generator::lanes)
        state = draw(lines + i, state, Generator::lanes);
    if (i < count)
        state = draw(lines + i, state, count - i);
    Zor64s energy = 0;
    for (i = 0; i < count; ++i)
        energy += product(lines[i], lines[i]);
    const double scale = root / std::sqrt(static_cast<double>(std::max<Zor64s>(energy, 1)));
    for (i = 0; i < count; ++i)
        lines[i] = rounded(lines[i] * scale);
    return state;
}

} // namespace
} // namespace zor::aac

template <>
const zor::aac::AacKernels& zor::kernelTable<zor::aac::AacKernels, ZOR_PATH>() {
    static constexpr aac::AacKernels table{.midSide = aac::midSide,
                                           .addTo = aac::addTo,
                                           .intensity = aac::intensity,
                                           .dequantise = aac::dequantise,
                                           .noise = aac::noise};
    return table;
}
