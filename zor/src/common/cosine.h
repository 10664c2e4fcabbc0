/** \file
 * Short cosine transforms for kernel sources, unrolled at compile time, on floats or on vectors of floats
 * (one transform in each lane). Lengths 2^n, 3 x 2^n and 9 x 2^n. Without scaling, k and n from 0 to N - 1:
 *
 *     type II   X[k] = sum of x[n] cos(pi/N k (n + 1/2))
 *     type III  X[k] = sum of x[n] cos(pi/N n (k + 1/2))
 *     type IV   X[k] = sum of x[n] cos(pi/N (n + 1/2)(k + 1/2))
 *
 * A type II of even length falls into a type II of the sums and a type IV of the differences of its mirrored
 * inputs, the two halves giving the even and the odd outputs; type III is its transpose. A type IV comes from
 * a type II of the same length by cos a = (cos(a - b) + cos(a + b)) / (2 cos b). So length N costs O(N log
 * N).
 */
#ifndef ZOR_COMMON_COSINE_H
#define ZOR_COMMON_COSINE_H

#include <array>
#include <numbers>

namespace zor {
namespace {

/** Cosine of 0 to pi by its power series, for tables. */
constexpr double tableCosine(double angle) {
    if (angle > std::numbers::pi / 2)
        return -tableCosine(std::numbers::pi - angle);
    double sum = 1, term = 1;
    for (int n = 1; n <= 12; ++n) {
        term *= -angle * angle / ((2 * n - 1) * (2 * n));
        sum += term;
    }
    return sum;
}

/** 1 / (2 cos(pi/(2N) (n + 1/2))). */
template <int N>
inline constexpr auto halfSecants = [] {
    std::array<float, N> table{};
    for (int n = 0; n < N; ++n)
        table[static_cast<std::size_t>(n)] =
            static_cast<float>(0.5 / tableCosine(std::numbers::pi * (2 * n + 1) / (4 * N)));
    return table;
}();

template <int N, class V>
[[gnu::always_inline]] inline void dct2(const V (&x)[N], V (&X)[N]);

template <int N, class V>
[[gnu::always_inline]] inline void dct4(const V (&x)[N], V (&X)[N]) {
    V scaled[N], sum[N];
    for (int n = 0; n < N; ++n)
        scaled[n] = x[n] * halfSecants<N>[static_cast<std::size_t>(n)];
    dct2(scaled, sum);
    for (int k = 0; k < N - 1; ++k)
        X[k] = sum[k] + sum[k + 1];
    X[N - 1] = sum[N - 1];
}

template <class V>
[[gnu::always_inline]] inline void dct2Of3(const V (&x)[3], V (&X)[3]) {
    constexpr float c1 = static_cast<float>(tableCosine(std::numbers::pi / 6));
    const V ends = x[0] + x[2];
    X[0] = ends + x[1];
    X[1] = (x[0] - x[2]) * c1;
    X[2] = ends * 0.5f - x[1];
}

template <class V>
[[gnu::always_inline]] inline void dct2Of9(const V (&x)[9], V (&X)[9]) {
    constexpr auto c = [](int n) { return static_cast<float>(tableCosine(std::numbers::pi * n / 18)); };
    constexpr float c1 = c(1), c2 = c(2), c3 = c(3), c4 = c(4), c5 = c(5), c7 = c(7), c8 = c(8);
    const V s0 = x[0] + x[8], s1 = x[1] + x[7], s2 = x[2] + x[6], s3 = x[3] + x[5];
    const V d0 = x[0] - x[8], d1 = (x[1] - x[7]) * c3, d2 = x[2] - x[6], d3 = x[3] - x[5];
    const V outer = s0 + s2 + s3, centre = s1 * 0.5f - x[4];
    X[0] = outer + s1 + x[4];
    X[2] = s0 * c2 - s2 * c8 - s3 * c4 + centre;
    X[4] = s0 * c4 - s2 * c2 + s3 * c8 - centre;
    X[6] = outer * 0.5f - s1 - x[4];
    X[8] = s0 * c8 + s2 * c4 - s3 * c2 - centre;
    X[1] = d0 * c1 + d1 + d2 * c5 + d3 * c7;
    X[3] = (d0 - d2 - d3) * c3;
    X[5] = d0 * c5 - d1 - d2 * c7 + d3 * c1;
    X[7] = d0 * c7 - d1 + d2 * c1 - d3 * c5;
}

template <int N, class V>
[[gnu::always_inline]] inline void dct2(const V (&x)[N], V (&X)[N]) {
    if constexpr (N == 1) {
        X[0] = x[0];
    } else if constexpr (N == 3) {
        dct2Of3(x, X);
    } else if constexpr (N == 9) {
        dct2Of9(x, X);
    } else {
        constexpr int half = N / 2;
        V sum[half], difference[half], even[half], odd[half];
        for (int n = 0; n < half; ++n) {
            sum[n] = x[n] + x[N - 1 - n];
            difference[n] = x[n] - x[N - 1 - n];
        }
        dct2(sum, even);
        dct4(difference, odd);
        for (int k = 0; k < half; ++k) {
            X[2 * k] = even[k];
            X[2 * k + 1] = odd[k];
        }
    }
}

template <int N, class V>
[[gnu::always_inline]] inline void dct3(const V (&x)[N], V (&X)[N]) {
    if constexpr (N == 1) {
        X[0] = x[0];
    } else {
        constexpr int half = N / 2;
        V even[half], odd[half], sum[half], difference[half];
        for (int n = 0; n < half; ++n) {
            even[n] = x[2 * n];
            odd[n] = x[2 * n + 1];
        }
        dct3(even, sum);
        dct4(odd, difference);
        for (int k = 0; k < half; ++k) {
            X[k] = sum[k] + difference[k];
            X[N - 1 - k] = sum[k] - difference[k];
        }
    }
}

} // namespace
} // namespace zor

#endif
