// Passes of the complex transform. The runs of a later pass are contiguous, and so are the blocks of the
// first one, so every inner loop is a vector loop.
#include "common/kernels/complex.h"

#include <utility>

namespace {

using zor::Complex;
using zor::FftPass;
using zor::FftPlan;
using zor::loadComplex;
using zor::Split;
using zor::storeComplex;

/** -j a, the quarter turn of the forward transform. */
template <class V>
[[gnu::always_inline]] inline Complex<V> turned(Complex<V> a) {
    return {a.im, -a.re};
}

template <int radix>
struct Butterfly;

template <>
struct Butterfly<2> {
    template <class V>
    [[gnu::always_inline]] static inline void run(Complex<V> (&a)[2]) {
        const Complex<V> b = a[1];
        a[1] = a[0] - b;
        a[0] = a[0] + b;
    }
};

template <>
struct Butterfly<3> {
    template <class V>
    [[gnu::always_inline]] static inline void run(Complex<V> (&a)[3]) {
        constexpr float half = 0.5f, sine = 0.866025403784438647f;
        const Complex<V> sum = a[1] + a[2], turn = sine * turned(a[1] - a[2]), mid = a[0] - half * sum;
        a[0] = a[0] + sum;
        a[1] = mid + turn;
        a[2] = mid - turn;
    }
};

template <>
struct Butterfly<4> {
    template <class V>
    [[gnu::always_inline]] static inline void run(Complex<V> (&a)[4]) {
        const Complex<V> s02 = a[0] + a[2], d02 = a[0] - a[2], s13 = a[1] + a[3], d13 = turned(a[1] - a[3]);
        a[0] = s02 + s13;
        a[1] = d02 + d13;
        a[2] = s02 - s13;
        a[3] = d02 - d13;
    }
};

template <>
struct Butterfly<5> {
    template <class V>
    [[gnu::always_inline]] static inline void run(Complex<V> (&a)[5]) {
        constexpr float c1 = 0.309016994374947424f, c2 = -0.809016994374947424f;
        constexpr float s1 = 0.951056516295153572f, s2 = 0.587785252292473129f;
        const Complex<V> sum14 = a[1] + a[4], sum23 = a[2] + a[3];
        const Complex<V> dif14 = turned(a[1] - a[4]), dif23 = turned(a[2] - a[3]);
        const Complex<V> mid1 = a[0] + c1 * sum14 + c2 * sum23, mid2 = a[0] + c2 * sum14 + c1 * sum23;
        const Complex<V> turn1 = s1 * dif14 + s2 * dif23, turn2 = s2 * dif14 - s1 * dif23;
        a[0] = a[0] + sum14 + sum23;
        a[1] = mid1 + turn1;
        a[2] = mid2 + turn2;
        a[3] = mid2 - turn2;
        a[4] = mid1 - turn1;
    }
};

template <>
struct Butterfly<8> {
    template <class V>
    [[gnu::always_inline]] static inline void run(Complex<V> (&a)[8]) {
        constexpr float root = 0.707106781186547524f;
        Complex<V> even[4] = {a[0], a[2], a[4], a[6]}, odd[4] = {a[1], a[3], a[5], a[7]};
        Butterfly<4>::run(even);
        Butterfly<4>::run(odd);
        odd[1] = root * Complex<V>{odd[1].re + odd[1].im, odd[1].im - odd[1].re};
        odd[2] = turned(odd[2]);
        odd[3] = root * Complex<V>{odd[3].im - odd[3].re, -odd[3].re - odd[3].im};
        a[0] = even[0] + odd[0];
        a[1] = even[1] + odd[1];
        a[2] = even[2] + odd[2];
        a[3] = even[3] + odd[3];
        a[4] = even[0] - odd[0];
        a[5] = even[1] - odd[1];
        a[6] = even[2] - odd[2];
        a[7] = even[3] - odd[3];
    }
};

/** The k-th twiddle factors of neighbouring blocks. */
template <class V>
[[gnu::always_inline]] inline Complex<V> twiddle(const float* tw, std::size_t k, std::size_t blocks) {
    return {zor::load<V>(tw + 2 * (k - 1) * blocks), zor::load<V>(tw + (2 * k - 1) * blocks)};
}

template <class V>
[[gnu::always_inline]] inline Complex<V> everyLane(Complex<float> w) {
    return {zor::splat<V>(w.re), zor::splat<V>(w.im)};
}

/** First pass: vector lanes are neighbouring blocks, the results of a block are stored side by side. */
template <int radix, class V, std::size_t... k>
inline void firstPass(const FftPass& pass, Split from, Split to, std::index_sequence<k...>) {
    const std::size_t blocks = static_cast<std::size_t>(pass.blocks);
    const float* tw = pass.twiddle;
    for (std::size_t p = 0; p < blocks; p += zor::lanesIn<V>, tw += zor::lanesIn<V>) {
        Complex<V> a[radix] = {loadComplex<V>(from, p + k * blocks)...};
        Butterfly<radix>::run(a);
        ((k == 0 ? void() : void(a[k] = twiddle<V>(tw, k, blocks) * a[k])), ...);
        const V re[radix] = {a[k].re...}, im[radix] = {a[k].im...};
        zor::storeTransposed(to.re + radix * p, re);
        zor::storeTransposed(to.im + radix * p, im);
    }
}

/** Later pass: vector lanes are the elements of a run. */
template <int radix, class V, std::size_t... k>
inline void laterPass(const FftPass& pass, Split from, Split to, std::index_sequence<k...>) {
    const std::size_t blocks = static_cast<std::size_t>(pass.blocks),
                      stride = static_cast<std::size_t>(pass.stride);
    for (std::size_t p = 0; p < blocks; ++p) {
        const float* tw = pass.twiddle + p;
        const Complex<float> w[radix] = {k == 0 ? Complex<float>{1, 0} : twiddle<float>(tw, k, blocks)...};
        for (std::size_t q = 0; q < stride; q += zor::lanesIn<V>) {
            Complex<V> a[radix] = {loadComplex<V>(from, q + (p + k * blocks) * stride)...};
            Butterfly<radix>::run(a);
            storeComplex(to, q + radix * p * stride, a[0]);
            ((k == 0 ? void() : storeComplex(to, q + (radix * p + k) * stride, everyLane<V>(w[k]) * a[k])),
             ...);
        }
    }
}

/** Last pass: one block, all twiddle factors 1. */
template <int radix, class V, std::size_t... k>
inline void lastPass(const FftPass& pass, Split from, Split to, std::index_sequence<k...>) {
    const std::size_t stride = static_cast<std::size_t>(pass.stride);
    for (std::size_t q = 0; q < stride; q += zor::lanesIn<V>) {
        Complex<V> a[radix] = {loadComplex<V>(from, q + k * stride)...};
        Butterfly<radix>::run(a);
        (storeComplex(to, q + k * stride, a[k]), ...);
    }
}

template <int radix>
void runPass(const FftPass& pass, Split from, Split to) {
    constexpr auto points = std::make_index_sequence<radix>();
    if (pass.blocks == 1)
        zor::withLanesFor(pass.stride, [&]<class V>(V) { lastPass<radix, V>(pass, from, to, points); });
    else if (pass.stride == 1)
        zor::withLanesFor(pass.blocks, [&]<class V>(V) { firstPass<radix, V>(pass, from, to, points); });
    else
        zor::withLanesFor(pass.stride, [&]<class V>(V) { laterPass<radix, V>(pass, from, to, points); });
}

Split transform(const FftPlan& plan, Split data, Split work) {
    using Run = void (*)(const FftPass&, Split, Split);
    static constexpr Run run[] = {nullptr,    nullptr, runPass<2>, runPass<3>, runPass<4>,
                                  runPass<5>, nullptr, nullptr,    runPass<8>};
    for (int i = 0; i < plan.passes; ++i) {
        run[plan.pass[i].radix](plan.pass[i], data, work);
        std::swap(data, work);
    }
    return data;
}

} // namespace

template <>
const zor::FftKernels& zor::kernelTable<zor::FftKernels, ZOR_PATH>() {
    static constexpr FftKernels table{.transform = transform};
    return table;
}
