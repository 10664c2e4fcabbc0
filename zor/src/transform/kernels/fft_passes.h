/** \file
 * Passes of the complex transform, and whole transforms of fixed small lengths, for kernel sources.
 *
 * The runs of a later pass are contiguous, and so are the blocks of the first one, so every inner loop is a
 * vector loop.
 */
#ifndef ZOR_TRANSFORM_KERNELS_FFT_PASSES_H
#define ZOR_TRANSFORM_KERNELS_FFT_PASSES_H

#include "transform/kernels/complex.h"

#include <utility>

namespace zor {
namespace {

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
    return {load<V>(tw + 2 * (k - 1) * blocks), load<V>(tw + (2 * k - 1) * blocks)};
}

template <class V>
[[gnu::always_inline]] inline Complex<V> everyLane(Complex<float> w) {
    return {splat<V>(w.re), splat<V>(w.im)};
}

/** First pass: vector lanes are neighbouring blocks, the results of a block are stored side by side. */
template <int radix, class V, std::size_t... k>
[[gnu::always_inline]] inline void firstPass(const FftPass& pass, Split from, Split to,
                                             std::index_sequence<k...>) {
    const std::size_t blocks = static_cast<std::size_t>(pass.blocks);
    const float* tw = pass.twiddle;
    for (std::size_t p = 0; p < blocks; p += lanesIn<V>, tw += lanesIn<V>) {
        Complex<V> a[radix] = {loadComplex<V>(from, p + k * blocks)...};
        Butterfly<radix>::run(a);
        ((k == 0 ? void() : void(a[k] = twiddle<V>(tw, k, blocks) * a[k])), ...);
        const V re[radix] = {a[k].re...}, im[radix] = {a[k].im...};
        storeTransposed(to.re + radix * p, re);
        storeTransposed(to.im + radix * p, im);
    }
}

/** Later pass: vector lanes are the elements of a run. */
template <int radix, class V, std::size_t... k>
[[gnu::always_inline]] inline void laterPass(const FftPass& pass, Split from, Split to,
                                             std::index_sequence<k...>) {
    const std::size_t blocks = static_cast<std::size_t>(pass.blocks),
                      stride = static_cast<std::size_t>(pass.stride);
    for (std::size_t p = 0; p < blocks; ++p) {
        const float* tw = pass.twiddle + p;
        const Complex<float> w[radix] = {k == 0 ? Complex<float>{1, 0} : twiddle<float>(tw, k, blocks)...};
        for (std::size_t q = 0; q < stride; q += lanesIn<V>) {
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
[[gnu::always_inline]] inline void lastPass(const FftPass& pass, Split from, Split to,
                                            std::index_sequence<k...>) {
    const std::size_t stride = static_cast<std::size_t>(pass.stride);
    for (std::size_t q = 0; q < stride; q += lanesIn<V>) {
        Complex<V> a[radix] = {loadComplex<V>(from, q + k * stride)...};
        Butterfly<radix>::run(a);
        (storeComplex(to, q + k * stride, a[k]), ...);
    }
}

/** Lanes for a run of n, a power of two. */
constexpr int lanesFor(int n) {
    return n < 4 ? 1 : n < maxLanes ? 4 < maxLanes ? 4 : maxLanes : maxLanes;
}

/**
 * A transform of fixed length in two passes, firstRadix * lastRadix (those of the plan), inlined where it is
 * used. \return the buffer that holds the result, `data`.
 */
template <int firstRadix, int lastRadix>
[[gnu::always_inline]] inline Split fixedTransform(const FftPlan& plan, Split data, Split work) {
    const FftPass first{firstRadix, lastRadix, 1, plan.pass[0].twiddle},
        last{lastRadix, 1, firstRadix, nullptr};
    firstPass<firstRadix, Lanes<lanesFor(lastRadix)>>(first, data, work,
                                                      std::make_index_sequence<firstRadix>());
    lastPass<lastRadix, Lanes<lanesFor(firstRadix)>>(last, work, data, std::make_index_sequence<lastRadix>());
    return data;
}

} // namespace
} // namespace zor

#endif
