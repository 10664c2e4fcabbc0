#include "mp3/psych_kernels.h"

#include "common/simd.h"

#include <cmath>

namespace zor::mp3 {
namespace {

void window(const Zor16s* from, const float* weights, float* to, int n) {
    for (int i = 0; i < n; ++i)
        to[i] = static_cast<float>(from[i]) * weights[i];
}

void separate(Split both, int n, Split first, Split second) {
    first.re[0] = both.re[0];
    second.re[0] = both.im[0];
    first.im[0] = second.im[0] = 0;
    for (int k = 1; k <= n / 2; ++k) {
        const float re = both.re[k], im = both.im[k], mirroredRe = both.re[n - k],
                    mirroredIm = both.im[n - k];
        first.re[k] = 0.5f * (re + mirroredRe);
        first.im[k] = 0.5f * (im - mirroredIm);
        second.re[k] = 0.5f * (im + mirroredIm);
        second.im[k] = 0.5f * (mirroredRe - re);
    }
}

void energies(Split spectrum, float* energy, int n) {
    for (int k = 0; k < n; ++k)
        energy[k] = spectrum.re[k] * spectrum.re[k] + spectrum.im[k] * spectrum.im[k];
}

void mixedEnergies(Split a, Split b, float sign, float* energy, int n) {
    for (int k = 0; k < n; ++k) {
        const float re = a.re[k] + sign * b.re[k], im = a.im[k] + sign * b.im[k];
        energy[k] = 0.5f * (re * re + im * im);
    }
}

/**
 * The prediction has the magnitude 2 r1 - r0 and the phase 2 f1 - f0. Its unit vector is u1 u1 conj(u0), u
 * being x / |x|, so no angle is needed.
 */
void unpredictability(Split now, Split before, Split beforeThat, float* result, int n) {
    constexpr float tiny = 1e-20f;
    for (int k = 0; k < n; ++k) {
        const float a = before.re[k], b = before.im[k], c = beforeThat.re[k], d = beforeThat.im[k];
        const float squared1 = a * a + b * b + tiny, squared0 = c * c + d * d + tiny;
        const float r1 = std::sqrt(squared1), r0 = std::sqrt(squared0);
        const float squareRe = a * a - b * b, squareIm = 2 * a * b;
        const float magnitude = 2 * r1 - r0, scale = magnitude / (squared1 * r0);
        const float re = (squareRe * c + squareIm * d) * scale, im = (squareIm * c - squareRe * d) * scale;
        const float x = now.re[k], y = now.im[k];
        const float distance = std::sqrt((x - re) * (x - re) + (y - im) * (y - im));
        result[k] = distance / (std::sqrt(x * x + y * y) + std::fabs(magnitude) + tiny);
    }
}

void spread(const float* matrix, int stride, const float* from, float* to, int n) {
    using V = Lanes<maxLanes>;
    const int whole = n / maxLanes * maxLanes;
    for (int i = 0; i < n; ++i) {
        const float* row = matrix + i * stride;
        V sums{};
        for (int j = 0; j < whole; j += maxLanes)
            sums += load<V>(row + j) * load<V>(from + j);
        float lanes[maxLanes], sum = 0;
        store(lanes, sums);
        for (const float lane : lanes)
            sum += lane;
        for (int j = whole; j < n; ++j)
            sum += row[j] * from[j];
        to[i] = sum;
    }
}

} // namespace
} // namespace zor::mp3

template <>
const zor::mp3::PsychKernels& zor::kernelTable<zor::mp3::PsychKernels, ZOR_PATH>() {
    static constexpr mp3::PsychKernels table{mp3::window,        mp3::separate,         mp3::energies,
                                             mp3::mixedEnergies, mp3::unpredictability, mp3::spread};
    return table;
}
