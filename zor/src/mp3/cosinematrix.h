/** \file
 * The 32-point cosine transform of type II as products with matrices, for kernel sources of vector paths.
 *
 * Two levels of sums and differences of mirrored inputs leave 8 x 8, 8 x 8 and 16 x 16 products for the
 * outputs 4k, 4k + 2 and 2k + 1: 384 multiplications where the fast transform takes 80, but these stand in
 * whole vectors of outputs, without a shuffle, and several transforms share each load of the matrix.
 */
#ifndef ZOR_MP3_COSINEMATRIX_H
#define ZOR_MP3_COSINEMATRIX_H

#include "common/cosine.h"
#include "common/simd.h"
#include "mp3/kernel_tables.h"

namespace zor::mp3 {
namespace {

/** weight[n][k] of input n in output k. */
template <int N>
struct CosineMatrix {
    float weight[N][N];
};

/** Type II: cos(pi/N (n + 1/2) k); type IV: k + 1/2 instead of k. */
template <int N>
constexpr CosineMatrix<N> makeCosineMatrix(bool typeFour) {
    CosineMatrix<N> matrix{};
    for (int n = 0; n < N; ++n)
        for (int k = 0; k < N; ++k) {
            const int turns = (2 * n + 1) * (2 * k + typeFour) % (8 * N); // of 2 pi / 8N
            const int folded = turns > 4 * N ? 8 * N - turns : turns;
            matrix.weight[n][k] = static_cast<float>(tableCosine(std::numbers::pi * folded / (4 * N)));
        }
    return matrix;
}

alignas(32) constexpr auto type2Of8 = makeCosineMatrix<8>(false);
alignas(32) constexpr auto type4Of8 = makeCosineMatrix<8>(true);
alignas(32) constexpr auto type4Of16 = makeCosineMatrix<16>(true);

/** N outputs at `dst` for each of `count` vectors of N inputs at `src`, `stride` apart. */
template <class V, int count, int N>
[[gnu::always_inline]] inline void multiply(const CosineMatrix<N>& matrix, const float* src, float* dst,
                                            int stride) {
    constexpr int lanes = lanesIn<V>, blocks = N / lanes < 2 ? 1 : 2;
    for (int k = 0; k < N; k += blocks * lanes) {
        V sum[2][count][blocks]{}; // two halves, so that a single transform does not wait for its own sums
        for (int n = 0; n < N; n += 2)
            for (int part = 0; part < 2; ++part)
                for (int block = 0; block < blocks; ++block) {
                    const V weight = load<V>(matrix.weight[n + part] + k + block * lanes);
                    for (int i = 0; i < count; ++i)
                        sum[count > 1 ? 0 : part][i][block] += splat<V>(src[i * stride + n + part]) * weight;
                }
        for (int i = 0; i < count; ++i)
            for (int block = 0; block < blocks; ++block)
                store<V>(dst + i * stride + k + block * lanes,
                         count > 1 ? sum[0][i][block] : sum[0][i][block] + sum[1][i][block]);
    }
}

/** sum[i] = x[i] + x[N-1-i], difference[i] likewise, for i below N / 2. */
template <class V, int N>
[[gnu::always_inline]] inline void fold(const float* x, float* sum, float* difference) {
    for (int i = 0; i < N / 2; i += lanesIn<V>) {
        const V low = load<V>(x + i), high = reversed(load<V>(x + N - lanesIn<V> - i));
        store<V>(sum + i, low + high);
        store<V>(difference + i, low - high);
    }
}

/** even[0], odd[0], even[1], ... for `length` of each. */
template <class V>
[[gnu::always_inline]] inline void joinPairs(const float* even, const float* odd, float* dst, int length) {
    for (int i = 0; i < length; i += lanesIn<V>)
        storePairs(dst + 2 * i, load<V>(even + i), load<V>(odd + i));
}

/** `count` transforms of 32 values, each behind the other. */
template <int count>
[[gnu::always_inline]] inline void cosineTransforms(const float* src, float* dst) {
    if constexpr (maxLanes == 1) {
        for (int i = 0; i < count; ++i) {
            float samples[subbands], cosines[subbands];
            std::memcpy(samples, src + i * subbands, sizeof samples);
            dct2(samples, cosines);
            std::memcpy(dst + i * subbands, cosines, sizeof cosines);
        }
    } else {
        using V = Lanes<maxLanes>;
        constexpr int half = subbands / 2, quarter = subbands / 4;
        float sum[count * half], odd[count * half], folded[count * half], even[count * half];
        float oddOut[count * half];
        for (int i = 0; i < count; ++i) {
            fold<V, subbands>(src + i * subbands, sum + i * half, odd + i * half);
            fold<V, half>(sum + i * half, folded + i * half, folded + i * half + quarter);
        }
        multiply<V, count>(type4Of16, odd, oddOut, half);
        multiply<V, count>(type2Of8, folded, sum, half);
        multiply<V, count>(type4Of8, folded + quarter, sum + quarter, half);
        for (int i = 0; i < count; ++i) {
            joinPairs<V>(sum + i * half, sum + i * half + quarter, even + i * half, quarter);
            joinPairs<V>(even + i * half, oddOut + i * half, dst + i * subbands, half);
        }
    }
}

/** weight[n][k] = cos(pi/64 (2k + 1) n): input n of the 32 of type III in the first 16 outputs. Output 31 - k
 * has the same weights, those of odd inputs with the other sign. */
struct InverseMatrix {
    float weight[subbands][subbands / 2];
};

alignas(32) constexpr InverseMatrix type3Of32 = [] {
    InverseMatrix matrix{};
    for (int n = 0; n < subbands; ++n)
        for (int k = 0; k < subbands / 2; ++k) {
            const int turns = (2 * k + 1) * n % (4 * subbands); // of 2 pi / 128
            const int folded = turns > 2 * subbands ? 4 * subbands - turns : turns;
            matrix.weight[n][k] = static_cast<float>(tableCosine(std::numbers::pi * folded / (2 * subbands)));
        }
    return matrix;
}();

/** The transform of type III of 32 values, X[k] = sum of x[n] cos(pi/64 (2k + 1) n). The inputs are read one
 * by one: stored as vectors before, they need not be put together from parts again. */
[[gnu::always_inline]] inline void inverseTransform(const float* src, float* dst) {
    using V = Lanes<maxLanes>;
    constexpr int lanes = lanesIn<V>, half = subbands / 2, blocks = 2;
    for (int k = 0; k < half; k += blocks * lanes) {
        V sum[4][blocks]{}; // even and odd inputs, in two parts each, which do not wait for each other
        for (int n = 0; n < subbands; n += 4)
            for (int part = 0; part < 4; ++part)
                for (int block = 0; block < blocks; ++block)
                    sum[part][block] +=
                        splat<V>(src[n + part]) * load<V>(type3Of32.weight[n + part] + k + block * lanes);
        for (int block = 0; block < blocks; ++block) {
            const V even = sum[0][block] + sum[2][block], odd = sum[1][block] + sum[3][block];
            const int at = k + block * lanes;
            store<V>(dst + at, even + odd);
            store<V>(dst + subbands - lanes - at, reversed(even - odd));
        }
    }
}

} // namespace
} // namespace zor::mp3

#endif
