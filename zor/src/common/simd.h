/** \file
 * Short vectors of float for kernel sources: the widest of a code path, and the narrower ones it may fall
 * back to for short runs. The portable path has single floats only, so the same templates serve all paths.
 *
 * Everything has internal linkage: each path compiles its own.
 */
#ifndef ZOR_COMMON_SIMD_H
#define ZOR_COMMON_SIMD_H

#include "codepath.h"

#include <cstddef>
#include <cstring>

namespace zor {
namespace {

template <int lanes>
struct LanesOf;
template <>
struct LanesOf<1> {
    using Type = float;
};
template <>
struct LanesOf<4> {
    using Type [[gnu::vector_size(16)]] = float;
};
template <>
struct LanesOf<8> {
    using Type [[gnu::vector_size(32)]] = float;
};

constexpr int widestLanes(CodePath path) {
    return path == CodePath::portable ? 1 : path == CodePath::sse2 ? 4 : 8;
}

/** Lanes of the widest vector of this path. */
constexpr int maxLanes = widestLanes(ZOR_PATH);

template <int lanes>
using Lanes = typename LanesOf<lanes>::Type;

/** Integers in as many lanes as V has. */
template <class V>
struct BitsOf {
    using Type = decltype(V{} < V{});
};
template <>
struct BitsOf<float> {
    using Type = int;
};
template <class V>
using Bits = typename BitsOf<V>::Type;

template <class V>
constexpr int lanesIn = sizeof(V) / sizeof(float);

template <class V>
[[gnu::always_inline]] inline V load(const float* from) {
    V v;
    std::memcpy(&v, from, sizeof v);
    return v;
}

template <class V>
[[gnu::always_inline]] inline void store(float* to, const V& v) {
    std::memcpy(to, &v, sizeof v);
}

/** All lanes the same. */
template <class V>
[[gnu::always_inline]] inline V splat(float value) {
    if constexpr (lanesIn<V> == 1)
        return value;
    else
        return value - V{}; // not V{} + value, which turns -0 into 0 and so costs an addition
}

/** The lanes in opposite order. */
template <class V>
[[gnu::always_inline]] inline V reversed(V v) {
    if constexpr (lanesIn<V> == 8)
        return __builtin_shufflevector(v, v, 7, 6, 5, 4, 3, 2, 1, 0);
    else if constexpr (lanesIn<V> == 4)
        return __builtin_shufflevector(v, v, 3, 2, 1, 0);
    else
        return v;
}

/** Splits x0 y0 x1 y1 ... in a and then b into x and y. */
template <class V>
[[gnu::always_inline]] inline void splitPairs(V a, V b, V& x, V& y) {
    if constexpr (lanesIn<V> == 8) {
        const V low = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
        const V high = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
        x = __builtin_shufflevector(low, high, 0, 2, 8, 10, 4, 6, 12, 14);
        y = __builtin_shufflevector(low, high, 1, 3, 9, 11, 5, 7, 13, 15);
    } else if constexpr (lanesIn<V> == 4) {
        x = __builtin_shufflevector(a, b, 0, 2, 4, 6);
        y = __builtin_shufflevector(a, b, 1, 3, 5, 7);
    } else {
        x = a;
        y = b;
    }
}

/** Reads x0 y0 x1 y1 ... at `from` into x and y. */
template <class V>
[[gnu::always_inline]] inline void loadPairs(const float* from, V& x, V& y) {
    splitPairs(load<V>(from), load<V>(from + lanesIn<V>), x, y);
}

/** Writes x0 y0 x1 y1 ... to `to`. */
template <class V>
[[gnu::always_inline]] inline void storePairs(float* to, V x, V y) {
    if constexpr (lanesIn<V> == 8) {
        const V a = __builtin_shufflevector(x, y, 0, 8, 1, 9, 4, 12, 5, 13);
        const V b = __builtin_shufflevector(x, y, 2, 10, 3, 11, 6, 14, 7, 15);
        store(to, __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11));
        store(to + 8, __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15));
    } else if constexpr (lanesIn<V> == 4) {
        store(to, __builtin_shufflevector(x, y, 0, 4, 1, 5));
        store(to + 4, __builtin_shufflevector(x, y, 2, 6, 3, 7));
    } else {
        to[0] = x;
        to[1] = y;
    }
}

/** Turns columns into rows within each group of four lanes. */
template <class V>
[[gnu::always_inline]] inline void transposeQuads(V (&a)[4]) {
    if constexpr (lanesIn<V> == 8) {
        const V ab0 = __builtin_shufflevector(a[0], a[1], 0, 8, 1, 9, 4, 12, 5, 13);
        const V ab1 = __builtin_shufflevector(a[0], a[1], 2, 10, 3, 11, 6, 14, 7, 15);
        const V cd0 = __builtin_shufflevector(a[2], a[3], 0, 8, 1, 9, 4, 12, 5, 13);
        const V cd1 = __builtin_shufflevector(a[2], a[3], 2, 10, 3, 11, 6, 14, 7, 15);
        a[0] = __builtin_shufflevector(ab0, cd0, 0, 1, 8, 9, 4, 5, 12, 13);
        a[1] = __builtin_shufflevector(ab0, cd0, 2, 3, 10, 11, 6, 7, 14, 15);
        a[2] = __builtin_shufflevector(ab1, cd1, 0, 1, 8, 9, 4, 5, 12, 13);
        a[3] = __builtin_shufflevector(ab1, cd1, 2, 3, 10, 11, 6, 7, 14, 15);
    } else {
        const V ab0 = __builtin_shufflevector(a[0], a[1], 0, 4, 1, 5);
        const V ab1 = __builtin_shufflevector(a[0], a[1], 2, 6, 3, 7);
        const V cd0 = __builtin_shufflevector(a[2], a[3], 0, 4, 1, 5);
        const V cd1 = __builtin_shufflevector(a[2], a[3], 2, 6, 3, 7);
        a[0] = __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5);
        a[1] = __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7);
        a[2] = __builtin_shufflevector(ab1, cd1, 0, 1, 4, 5);
        a[3] = __builtin_shufflevector(ab1, cd1, 2, 3, 6, 7);
    }
}

/** Writes lane 0 of all columns, then lane 1 of all columns, and so on. */
template <class V, int columns>
[[gnu::always_inline]] inline void storeTransposed(float* to, const V (&a)[columns]) {
    if constexpr (lanesIn<V> == 1) {
        for (int k = 0; k < columns; ++k)
            to[k] = a[k];
    } else if constexpr (columns == 4) {
        V low[4] = {a[0], a[1], a[2], a[3]};
        transposeQuads(low);
        if constexpr (lanesIn<V> == 4) {
            for (int i = 0; i < 4; ++i)
                store(to + 4 * i, low[i]);
        } else {
            store(to, __builtin_shufflevector(low[0], low[1], 0, 1, 2, 3, 8, 9, 10, 11));
            store(to + 8, __builtin_shufflevector(low[2], low[3], 0, 1, 2, 3, 8, 9, 10, 11));
            store(to + 16, __builtin_shufflevector(low[0], low[1], 4, 5, 6, 7, 12, 13, 14, 15));
            store(to + 24, __builtin_shufflevector(low[2], low[3], 4, 5, 6, 7, 12, 13, 14, 15));
        }
    } else if constexpr (columns == 8) {
        V low[4] = {a[0], a[1], a[2], a[3]}, high[4] = {a[4], a[5], a[6], a[7]};
        transposeQuads(low);
        transposeQuads(high);
        for (int i = 0; i < 4; ++i) {
            if constexpr (lanesIn<V> == 4) {
                store(to + 8 * i, low[i]);
                store(to + 8 * i + 4, high[i]);
            } else {
                store(to + 8 * i, __builtin_shufflevector(low[i], high[i], 0, 1, 2, 3, 8, 9, 10, 11));
                store(to + 8 * i + 32, __builtin_shufflevector(low[i], high[i], 4, 5, 6, 7, 12, 13, 14, 15));
            }
        }
    } else {
        for (int lane = 0; lane < lanesIn<V>; ++lane)
            for (int k = 0; k < columns; ++k)
                to[lane * columns + k] = a[k][lane];
    }
}

/** Calls `f` with a vector of the widest type of this path whose lanes divide `run`. */
template <class Function>
[[gnu::always_inline]] inline void withLanesFor(int run, Function f) {
    if constexpr (maxLanes >= 8) {
        if (run % 8 == 0)
            return f(Lanes<8>{});
    }
    if constexpr (maxLanes >= 4) {
        if (run % 4 == 0)
            return f(Lanes<4>{});
    }
    f(float{});
}

} // namespace
} // namespace zor

#endif
