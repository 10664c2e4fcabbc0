// Loops on plain vectors, written so that the compiler makes vector loops of them.
#include "generic/kernel_tables.h"

#include <bit>
#include <cmath>

namespace {

void scale(float* __restrict srcDst, float factor, int length) {
    for (int i = 0; i < length; ++i)
        srcDst[i] *= factor;
}

/** 2^(quarters / 4): the exponent is built from the whole part, the four fractions are chosen. */
inline float quarterPower(int quarters) {
    constexpr float root1 = 1.18920711500272107f, root2 = 1.41421356237309505f, root3 = 1.68179283050742909f;
    const int whole = quarters >> 2;
    const int clipped = whole < -127 ? -127 : whole > 128 ? 128 : whole;
    const float power = std::bit_cast<float>((clipped + 127) << 23);
    const float low = quarters & 1 ? root1 : 1.0f, high = quarters & 1 ? root3 : root2;
    return power * (quarters & 2 ? high : low);
}

void calcSF(const Zor16s* __restrict src, int offset, float* __restrict dst, int length) {
    constexpr int limit = 1 << 20; // far beyond the range of float, so that the difference cannot overflow
    const int clipped = offset < -limit ? -limit : offset > limit ? limit : offset;
    for (int i = 0; i < length; ++i)
        dst[i] = quarterPower(src[i] - clipped);
}

void makeFloat(const Zor16s* __restrict src, float* __restrict dst, int length) {
    for (int i = 0; i < length; ++i)
        dst[i] = src[i];
}

/** |x|^(3/4) as the product of two roots. */
inline float pow34Magnitude(float x) {
    const float root = std::sqrt(std::fabs(x));
    return root * std::sqrt(root);
}

void pow34(const float* __restrict src, float* __restrict dst, int length) {
    for (int i = 0; i < length; ++i)
        dst[i] = std::copysign(pow34Magnitude(src[i]), src[i]);
}

void pow34ToInt(const float* __restrict src, Zor16s* __restrict dst, int length) {
    constexpr float rounding = 0.4054f; // of the encoder in ISO/IEC 14496-3
    for (int i = 0; i < length; ++i) {
        const float magnitude = pow34Magnitude(src[i]) + rounding;
        const int level = static_cast<int>(magnitude < 32767.0f ? magnitude : 32767.0f);
        dst[i] = static_cast<Zor16s>(src[i] < 0 ? -level : level);
    }
}

/** One step of Halley's iteration for the cube root of x: the error is cubed. */
inline float cubeRootStep(float root, float x) {
    const float cube = root * root * root;
    return root * (cube + 2 * x) / (2 * cube + x);
}

/** x^(1/3) for x from 1 to 32768: a third of the exponent as a first guess (5 % off at most), two steps. */
inline float cubeRoot(float x) {
    constexpr int bias = 0x2a5137a0; // 2/3 of the exponent bias, with the offset that balances the error
    const float guess =
        std::bit_cast<float>(bias + static_cast<int>(static_cast<float>(std::bit_cast<int>(x)) * (1.0f / 3)));
    return cubeRootStep(cubeRootStep(guess, x), x);
}

void pow43(const Zor16s* __restrict src, float* __restrict dst, int length) {
    for (int i = 0; i < length; ++i) {
        const float x = src[i], magnitude = std::fabs(x);
        dst[i] = x * cubeRoot(magnitude < 1 ? 1 : magnitude);
    }
}

void toFloat(const Zor32s* __restrict src, float* __restrict dst, int length, float factor) {
    for (int i = 0; i < length; ++i)
        dst[i] = static_cast<float>(src[i]) * factor;
}

/** To the nearest integer, halves away from zero, within `least` and `most`, which floats hold. */
inline int rounded(float value, float least, float most) {
    value = value < most ? value : most;
    value = value > least ? value : least;
    const int whole = static_cast<int>(value);
    const float rest = value - static_cast<float>(whole);
    return whole + (rest >= 0.5f) - (rest <= -0.5f);
}

void toInt32(const float* __restrict src, Zor32s* __restrict dst, int length, float factor) {
    constexpr float beyond = 2147483648.0f, most = 2147483520.0f; // the largest float below
    for (int i = 0; i < length; ++i) {
        const float value = src[i] * factor;
        const int whole = rounded(value, -beyond, most);
        dst[i] = value < beyond ? whole : 2147483647;
    }
}

void toInt16(const float* __restrict src, Zor16s* __restrict dst, int length, float factor) {
    for (int i = 0; i < length; ++i)
        dst[i] = static_cast<Zor16s>(rounded(src[i] * factor, -32768.0f, 32767.0f));
}

} // namespace

template <>
const zor::VectorKernels& zor::kernelTable<zor::VectorKernels, ZOR_PATH>() {
    static constexpr VectorKernels table{.scale = scale,
                                         .calcSF = calcSF,
                                         .makeFloat = makeFloat,
                                         .pow34 = pow34,
                                         .pow34ToInt = pow34ToInt,
                                         .pow43 = pow43,
                                         .toFloat = toFloat,
                                         .toInt32 = toInt32,
                                         .toInt16 = toInt16};
    return table;
}
