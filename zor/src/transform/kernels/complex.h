/** \file
 * Complex numbers in vector lanes, for kernel sources.
 */
#ifndef ZOR_TRANSFORM_KERNELS_COMPLEX_H
#define ZOR_TRANSFORM_KERNELS_COMPLEX_H

#include "common/simd.h"
#include "transform/fft.h"

namespace zor {
namespace {

/** Complex numbers in as many lanes as V has. */
template <class V>
struct Complex {
    V re, im;
    [[gnu::always_inline]] friend inline Complex operator+(Complex a, Complex b) {
        return {a.re + b.re, a.im + b.im};
    }
    [[gnu::always_inline]] friend inline Complex operator-(Complex a, Complex b) {
        return {a.re - b.re, a.im - b.im};
    }
    [[gnu::always_inline]] friend inline Complex operator*(float f, Complex a) {
        return {f * a.re, f * a.im};
    }
    [[gnu::always_inline]] friend inline Complex operator*(Complex a, Complex b) {
        return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
    }
};

template <class V>
[[gnu::always_inline]] inline Complex<V> loadComplex(Split from, std::size_t i) {
    return {load<V>(from.re + i), load<V>(from.im + i)};
}

template <class V>
[[gnu::always_inline]] inline void storeComplex(Split to, std::size_t i, Complex<V> a) {
    store(to.re + i, a.re);
    store(to.im + i, a.im);
}

} // namespace
} // namespace zor

#endif
