/** \file
 * The hybrid's transforms, one sub-band in each lane: MDCT of 36 or three of 12 samples through a cosine
 * transform of type IV and half the length, then the alias butterflies between neighbouring sub-bands.
 *
 * With N inputs after folding (18 or 6), sample z[n] of the 2N and line k meet in
 * cos(pi/N (n + N/2 + 1/2)(k + 1/2)), so that folded[j] = -z[3N/2-1-j] - z[3N/2+j] for j below N/2 and
 * z[j-N/2] - z[3N/2-1-j] above. The inverse unfolds by the same symmetry.
 */
#include "common/cosine.h"
#include "common/simd.h"
#include "mp3/convert.h"
#include "mp3/kernel_tables.h"
#include "tables/mp3_antialias.h"

#include <algorithm>

namespace zor::mp3 {
namespace {

using V = Lanes<maxLanes>;

constexpr int shortLines = 6;
constexpr int shortBlock = 2;

constexpr float windowSine(int n, int length) {
    return static_cast<float>(tableCosine(std::numbers::pi / 2 - std::numbers::pi * (n + 0.5) / length));
}

/** Windows of 36 samples by block type: long, start, (short), stop; and that of 12 samples. */
struct Windows {
    float full[4][36];
    float brief[12];
};

constexpr Windows makeWindows() {
    Windows windows{};
    for (int n = 0; n < 12; ++n)
        windows.brief[n] = windowSine(std::min(n, 11 - n), 12);
    for (int n = 0; n < 36; ++n) {
        const float sine = windowSine(std::min(n, 35 - n), 36);
        const float fall = n < 24 ? 1.f : n < 30 ? windows.brief[n - 18] : 0.f;
        const float rise = n < 6 ? 0.f : n < 12 ? windows.brief[n - 6] : 1.f;
        windows.full[0][n] = sine;
        windows.full[1][n] = n < 18 ? sine : fall;
        windows.full[3][n] = n < 18 ? rise : sine;
    }
    return windows;
}

constexpr Windows windows = makeWindows();

/** The forward transform carries the factor 2/N that makes the pair reconstruct. */
constexpr float longScale = 2.f / slots;
constexpr float shortScale = 2.f / shortLines;

/** Odd time slots of odd sub-bands change their sign. */
struct Inversion {
    float sign[subbands];
};
alignas(32) constexpr Inversion inversion = [] {
    Inversion table{};
    for (int b = 0; b < subbands; ++b)
        table.sign[b] = b % 2 ? -1.f : 1.f;
    return table;
}();

struct Butterflies {
    float cs[8], ca[8];
};

constexpr double squareRoot(double x) {
    double root = x;
    for (int i = 0; i < 8; ++i)
        root = 0.5 * (root + x / root);
    return root;
}

constexpr Butterflies butterflies = [] {
    Butterflies table{};
    for (int i = 0; i < 8; ++i) {
        const double c = tables::mp3_antialias::ci[i], norm = squareRoot(1 + c * c);
        table.cs[i] = static_cast<float>(1 / norm);
        table.ca[i] = static_cast<float>(c / norm);
    }
    return table;
}();

/** Rotates the eight lines on either side of the first `boundaries` sub-band boundaries. */
template <int direction>
[[gnu::always_inline]] inline void aliasButterflies(float* spectrum, int boundaries) {
    for (int b = 1; b <= boundaries; ++b) {
        float* up = spectrum + slots * b;
        for (int i = 0; i < 8; ++i) {
            const float low = up[-1 - i], high = up[i];
            const float ca = direction * butterflies.ca[i];
            up[-1 - i] = low * butterflies.cs[i] + high * ca;
            up[i] = high * butterflies.cs[i] - low * ca;
        }
    }
}

/** Boundaries with butterflies: none in short blocks, in mixed ones that within the long part. */
constexpr int aliasBoundaries(int blockType, bool mixed) {
    return blockType != shortBlock ? subbands - 1 : mixed ? 1 : 0;
}

/** Lanes of sub-bands below 2 from `low`, the others stay. */
template <class U, int count>
[[gnu::always_inline]] inline void keepLowSubbands(U (&values)[count], const U (&low)[count]) {
    for (int i = 0; i < count; ++i) {
        if constexpr (lanesIn<U> == 1) {
            values[i] = low[i];
        } else {
            values[i][0] = low[i][0];
            values[i][1] = low[i][1];
        }
    }
}

[[gnu::always_inline]] inline void forwardLong(const V (&z)[2 * slots], const float* window, V (&X)[slots]) {
    constexpr int half = slots / 2;
    V folded[slots];
    for (int j = 0; j < half; ++j) {
        const int a = 3 * half - 1 - j, b = 3 * half + j, c = half - 1 - j, d = half + j;
        folded[j] = -(z[a] * window[a]) - z[b] * window[b];
        folded[slots - 1 - j] = z[c] * window[c] - z[d] * window[d];
    }
    dct4(folded, X);
    for (V& line : X)
        line *= longScale;
}

[[gnu::always_inline]] inline void forwardShort(const V (&z)[2 * slots], V (&X)[slots]) {
    constexpr int half = shortLines / 2;
    for (int w = 0; w < 3; ++w) {
        const V* from = z + shortLines * (w + 1);
        V folded[shortLines], lineOf[shortLines];
        for (int j = 0; j < half; ++j) {
            const int a = 3 * half - 1 - j, b = 3 * half + j, c = half - 1 - j, d = half + j;
            folded[j] = -(from[a] * windows.brief[a]) - from[b] * windows.brief[b];
            folded[shortLines - 1 - j] = from[c] * windows.brief[c] - from[d] * windows.brief[d];
        }
        dct4(folded, lineOf);
        for (int k = 0; k < shortLines; ++k)
            X[3 * k + w] = lineOf[k] * shortScale;
    }
}

[[gnu::always_inline]] inline void forwardOf(int blockType, const V (&z)[2 * slots], V (&X)[slots]) {
    if (blockType == shortBlock)
        forwardShort(z, X);
    else
        forwardLong(z, windows.full[blockType], X);
}

/** The samples of both granules for a group of sub-bands, with frequency inversion; keeps the new ones. */
[[gnu::always_inline]] inline void loadSamples(const Zor32s* src, Zor32s* overlap, int band,
                                               V (&z)[2 * slots]) {
    const V sign = load<V>(inversion.sign + band);
    for (int slot = 0; slot < slots; ++slot) {
        const int at = slot * subbands + band;
        const V before = loadInts<V>(overlap + at), now = loadInts<V>(src + at);
        z[slot] = slot % 2 ? before * sign : before;
        z[slots + slot] = slot % 2 ? now * sign : now;
        std::memcpy(overlap + at, src + at, maxLanes * sizeof *src);
    }
}

void forward(const Zor32s* src, Zor32s* overlap, Zor32s* dst, int blockType, bool mixed) {
    alignas(32) float spectrum[lines];
    for (int band = 0; band < subbands; band += maxLanes) {
        V z[2 * slots], X[slots];
        loadSamples(src, overlap, band, z);
        forwardOf(blockType, z, X);
        if (mixed && band < 2) {
            V low[slots];
            forwardOf(0, z, low);
            keepLowSubbands(X, low);
        }
        storeTransposed(spectrum + slots * band, X);
    }
    aliasButterflies<1>(spectrum, aliasBoundaries(blockType, mixed));
    for (int i = 0; i < lines; i += maxLanes)
        storeRounded(dst + i, load<V>(spectrum + i));
}

[[gnu::always_inline]] inline void inverseLong(const V (&X)[slots], const float* window, V (&z)[2 * slots]) {
    constexpr int half = slots / 2;
    V folded[slots];
    dct4(X, folded);
    for (int j = 0; j < half; ++j) {
        const int a = 3 * half - 1 - j, b = 3 * half + j, c = half - 1 - j, d = half + j;
        z[a] = -(folded[j] * window[a]);
        z[b] = -(folded[j] * window[b]);
        z[c] = folded[slots - 1 - j] * window[c];
        z[d] = -(folded[slots - 1 - j] * window[d]);
    }
}

[[gnu::always_inline]] inline void inverseShort(const V (&X)[slots], V (&z)[2 * slots]) {
    constexpr int half = shortLines / 2;
    for (V& sample : z)
        sample = V{};
    for (int w = 0; w < 3; ++w) {
        V* to = z + shortLines * (w + 1);
        V lineOf[shortLines], folded[shortLines];
        for (int k = 0; k < shortLines; ++k)
            lineOf[k] = X[3 * k + w];
        dct4(lineOf, folded);
        for (int j = 0; j < half; ++j) {
            const int a = 3 * half - 1 - j, b = 3 * half + j, c = half - 1 - j, d = half + j;
            to[a] -= folded[j] * windows.brief[a];
            to[b] -= folded[j] * windows.brief[b];
            to[c] += folded[shortLines - 1 - j] * windows.brief[c];
            to[d] -= folded[shortLines - 1 - j] * windows.brief[d];
        }
    }
}

[[gnu::always_inline]] inline void inverseOf(int blockType, const V (&X)[slots], V (&z)[2 * slots]) {
    if (blockType == shortBlock)
        inverseShort(X, z);
    else
        inverseLong(X, windows.full[blockType], z);
}

/** Line i of each sub-band of a group. */
template <class U>
[[gnu::always_inline]] inline void loadLines(const float* spectrum, int band, U (&X)[slots]) {
    for (int i = 0; i < slots; ++i) {
        if constexpr (lanesIn<U> == 1)
            X[i] = spectrum[slots * band + i];
        else
            for (int lane = 0; lane < maxLanes; ++lane)
                X[i][lane] = spectrum[slots * (band + lane) + i];
    }
}

/** Adds the overlap, undoes the frequency inversion and keeps the second half. */
[[gnu::always_inline]] inline void overlapAdd(const V (&z)[2 * slots], Zor32s* overlap, Zor32s* dst,
                                              int band) {
    const V sign = load<V>(inversion.sign + band);
    for (int slot = 0; slot < slots; ++slot) {
        const int at = slot * subbands + band;
        const V sum = z[slot] + loadInts<V>(overlap + at);
        storeRounded(dst + at, slot % 2 ? sum * sign : sum);
        storeRounded(overlap + at, z[slots + slot]);
    }
}

void inverse(const Zor32s* src, Zor32s* overlap, Zor32s* dst, int bound, int bands, int overlapBands,
             int blockType, bool mixed) {
    alignas(32) float spectrum[lines];
    const auto inGroupsOf = [&](int lanes) {
        return (std::max(bands, overlapBands) + lanes - 1) / lanes * lanes;
    };
    const int active = inGroupsOf(maxLanes);
    // All paths leave the state of the widest, also where it counts as zero.
    const int cleared = inGroupsOf(widestLanes(CodePath::avx2));
    for (int i = 0; i < bound; ++i)
        spectrum[i] = static_cast<float>(src[i]);
    std::fill(spectrum + bound, spectrum + slots * active, 0.f);
    aliasButterflies<-1>(spectrum, std::min(bands - 1, aliasBoundaries(blockType, mixed)));
    for (int slot = 0; slot < slots; ++slot) {
        std::fill(overlap + slot * subbands + overlapBands, overlap + slot * subbands + cleared, 0);
        std::fill(dst + slot * subbands + active, dst + (slot + 1) * subbands, 0);
    }
    for (int band = 0; band < active; band += maxLanes) {
        V X[slots], z[2 * slots];
        loadLines(spectrum, band, X);
        inverseOf(blockType, X, z);
        if (mixed && band < 2) {
            V low[2 * slots];
            inverseOf(0, X, low);
            keepLowSubbands(z, low);
        }
        overlapAdd(z, overlap, dst, band);
    }
}

} // namespace
} // namespace zor::mp3

template <>
const zor::mp3::MdctKernels& zor::kernelTable<zor::mp3::MdctKernels, ZOR_PATH>() {
    static constexpr mp3::MdctKernels table{mp3::forward, mp3::inverse};
    return table;
}
