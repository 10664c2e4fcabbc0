/** \file
 * Conversions between 32-bit integers and vectors of float, for kernel sources.
 */
#ifndef ZOR_MP3_CONVERT_H
#define ZOR_MP3_CONVERT_H

#include "common/simd.h"

#include <type_traits>

namespace zor::mp3 {
namespace {

template <int lanes>
struct IntLanesOf;
template <>
struct IntLanesOf<4> {
    using Type [[gnu::vector_size(16)]] = Zor32s;
};
template <>
struct IntLanesOf<8> {
    using Type [[gnu::vector_size(32)]] = Zor32s;
};

template <class V>
[[gnu::always_inline]] inline V loadInts(const Zor32s* from) {
    if constexpr (lanesIn<V> == 1) {
        return static_cast<float>(*from);
    } else {
        typename IntLanesOf<lanesIn<V>>::Type ints;
        std::memcpy(&ints, from, sizeof ints);
        return __builtin_convertvector(ints, V);
    }
}

/** Rounds to nearest and saturates. */
template <class V>
[[gnu::always_inline]] inline void storeRounded(Zor32s* to, V v) {
    const V high = splat<V>(2147483520.f), low = splat<V>(-2147483648.f), half = splat<V>(0.5f);
    v = v < high ? v : high;
    v = v > low ? v : low;
    v += v < V{} ? -half : half;
    if constexpr (lanesIn<V> == 1) {
        *to = static_cast<Zor32s>(v);
    } else {
        const auto ints = __builtin_convertvector(v, typename IntLanesOf<lanesIn<V>>::Type);
        std::memcpy(to, &ints, sizeof ints);
    }
}

} // namespace
} // namespace zor::mp3

#endif
