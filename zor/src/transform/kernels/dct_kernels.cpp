// Real transforms: packing into the complex transform and out of it.
#include "transform/dct.h"
#include "transform/kernels/complex.h"

namespace {

using zor::Complex;
using zor::Dct4Plan;
using zor::lanesIn;
using zor::Split;

/** z[i] = (x[2i] + j x[N-1-2i]) times the first twiddle factor. */
template <class V>
void pack(const Dct4Plan& plan, const float* from, Split z) {
    const std::size_t half = static_cast<std::size_t>(plan.size / 2);
    for (std::size_t i = 0; i < half; i += lanesIn<V>) {
        V even, odd, unused;
        zor::loadPairs(from + 2 * i, even, unused);
        zor::loadPairs(from + 2 * (half - i - lanesIn<V>), unused, odd);
        zor::storeComplex(z, i, Complex<V>{even, zor::reversed(odd)} * zor::loadComplex<V>(plan.before, i));
    }
}

/** X[2k] = re Y[k] and X[N-1-2k] = -im Y[k]; a block shares its cells with its mirror image (the middle one
 * with itself). */
template <class V>
void unpack(const Dct4Plan& plan, Split z, float* to) {
    const std::size_t half = static_cast<std::size_t>(plan.size / 2);
    for (std::size_t low = 0; low + lanesIn<V> <= half - low; low += lanesIn<V>) {
        const std::size_t high = half - low - lanesIn<V>;
        const auto a = zor::loadComplex<V>(z, low) * zor::loadComplex<V>(plan.after, low);
        const auto b = zor::loadComplex<V>(z, high) * zor::loadComplex<V>(plan.after, high);
        zor::storePairs(to + 2 * low, a.re, -zor::reversed(b.im));
        zor::storePairs(to + 2 * high, b.re, -zor::reversed(a.im));
    }
}

/** Type IV through a complex transform of half the length. */
void dct4(const Dct4Plan& plan, const float* from, float* to, float* work) {
    const int half = plan.size / 2;
    const Split data = zor::splitOver(work, half),
                other = zor::splitOver(work + zor::splitFloats(half), half);
    zor::withLanesFor(half, [&]<class V>(V) {
        pack<V>(plan, from, data);
        const Split result = zor::kernelTable<zor::FftKernels, ZOR_PATH>().transform(plan.fft, data, other);
        unpack<V>(plan, result, to);
    });
}

} // namespace

template <>
const zor::DctKernels& zor::kernelTable<zor::DctKernels, ZOR_PATH>() {
    static constexpr DctKernels table{.dct4 = dct4};
    return table;
}
