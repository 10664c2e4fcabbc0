/** \file
 * The 32-band polyphase bank: the window of ISO/IEC 11172-3 table B.3 around a 32-point cosine transform.
 *
 * The 64 values that the standard matrixes are those of a type II transform c[j] = sum of s[k] cos(pi/64
 * (2k+1) j): v[i] = c[16+i] for i below 17 (with c[32] = 0), -c[48-i] up to 48 and -c[i-48] from there. Float
 * synthesis spreads and keeps them, so that the window is a plain sum of products. Fixed-point synthesis
 * keeps the 32 of the transform in the caller's ring: each value of a row has two places in the output, which
 * mirror one another.
 */
#include "common/cosine.h"
#include "common/simd.h"
#include "mp3/convert.h"
#include "mp3/cosinematrix.h"
#include "mp3/kernel_tables.h"
#include "tables/mp3_pqmf_window.h"

namespace zor::mp3 {
namespace {

constexpr int rows = 16;
constexpr int half = subbands / 2;

/** The window's weights by the age of a row, in the order in which the row's values meet them. */
struct SynthesisWindow {
    float direct[rows][half];   /**< even age: c[16+t] to output t; odd: c[t] to output 16+t */
    float mirrored[rows][half]; /**< even age: c[16+t] to output 32-t; odd: c[t] to output 16-t */
    float toFirst[rows];        /**< odd age: c[16] to output 0 */
};

constexpr SynthesisWindow makeSynthesisWindow() {
    SynthesisWindow window{};
    for (int age = 0; age < rows; ++age) {
        const auto weight = [age](int output) {
            return static_cast<float>(tables::mp3_pqmf_window::d_x65536[32 * age + output]) / 65536.f;
        };
        const bool even = age % 2 == 0;
        for (int t = 0; t < half; ++t) {
            window.direct[age][t] = even ? weight(t) : -weight(half + t);
            window.mirrored[age][t] = t == 0 ? 0 : -weight((even ? subbands : half) - t);
        }
        window.toFirst[age] = even ? 0 : -weight(0);
    }
    return window;
}

alignas(32) constexpr SynthesisWindow synthesisWindow = makeSynthesisWindow();

/** The window as printed: weight j of a row of age a is at 32 a + j. */
alignas(32) constexpr auto synthesisTaps = [] {
    std::array<float, rows * subbands> taps{};
    for (std::size_t i = 0; i < taps.size(); ++i)
        taps[i] = static_cast<float>(tables::mp3_pqmf_window::d_x65536[i]) / 65536.f;
    return taps;
}();

struct AnalysisWindow {
    float c[512];
};

alignas(32) constexpr AnalysisWindow analysisWindow = [] {
    AnalysisWindow window{};
    for (int i = 0; i < 512; ++i)
        window.c[i] = static_cast<float>(tables::mp3_pqmf_window::d_x65536[i]) / (32 * 65536.f);
    return window;
}();

template <class V, class T>
[[gnu::always_inline]] inline V loadRow(const T* from) {
    if constexpr (std::is_same_v<T, float>) {
        return load<V>(from);
    } else if constexpr (std::is_same_v<T, Zor16s>) {
        typedef Zor16s Shorts __attribute__((vector_size(lanesIn<V> * sizeof(Zor16s))));
        Shorts shorts;
        std::memcpy(&shorts, from, sizeof shorts);
        return __builtin_convertvector(shorts, V);
    } else {
        return loadInts<V>(from);
    }
}

/** The windowed sum over the 16 rows of the ring, the newest at `row`. */
template <class T>
[[gnu::always_inline]] inline void windowRows(const T* ring, int row, float* dst) {
    using V = Lanes<maxLanes>;
    float direct[2][half],
        mirrored[2][half + 1]; // mirrored[.][half] meets output 0 of its half, where nothing is added
    for (int t = 0; t < half; t += maxLanes) {
        V sum[2][2]{};
        for (int age = 0; age < rows; age += 2) {
            const T* even = ring + ((row - age) & (rows - 1)) * subbands + half + t;
            const T* odd = ring + ((row - age - 1) & (rows - 1)) * subbands + t;
            const V a = loadRow<V>(even), b = loadRow<V>(odd);
            sum[0][0] += a * load<V>(synthesisWindow.direct[age] + t);
            sum[0][1] += a * load<V>(synthesisWindow.mirrored[age] + t);
            sum[1][0] += b * load<V>(synthesisWindow.direct[age + 1] + t);
            sum[1][1] += b * load<V>(synthesisWindow.mirrored[age + 1] + t);
        }
        for (int parity = 0; parity < 2; ++parity) {
            store(direct[parity] + t, sum[parity][0]);
            store(mirrored[parity] + t, sum[parity][1]);
        }
    }
    float first = direct[0][0];
    for (int age = 1; age < rows; age += 2)
        first += static_cast<float>(ring[((row - age) & (rows - 1)) * subbands + half]) *
                 synthesisWindow.toFirst[age];
    mirrored[1][half] = mirrored[0][half] = 0;
    for (int t = 0; t < half; t += maxLanes) {
        const int opposite = half + 1 - maxLanes - t;
        store<V>(dst + t, load<V>(direct[0] + t) + reversed(load<V>(mirrored[1] + opposite)));
        store<V>(dst + half + t, load<V>(direct[1] + t) + reversed(load<V>(mirrored[0] + opposite)));
    }
    dst[0] = first;
}

/** The matrixed values of one slot from its cosines. */
[[gnu::always_inline]] inline void spread(const float* cosines, float* values) {
    using V = Lanes<maxLanes>;
    for (int i = 0; i < half; i += maxLanes) {
        store<V>(values + i, load<V>(cosines + half + i));
        store<V>(values + 48 + i, -load<V>(cosines + i));
    }
    values[half] = 0;
    for (int i = 0; i < subbands; i += maxLanes)
        store<V>(values + half + 1 + i, -reversed(load<V>(cosines + subbands - maxLanes - i)));
}

float* matrixedRow(float* ring, int row) {
    return ring + (row & (matrixedRows - 1)) * matrixedValues;
}

/** The windowed sums of `count` slots that follow each other, the first one in row `row` of the ring. */
template <int count>
[[gnu::always_inline]] inline void windowSlots(const float* ring, int row, float* dst) {
    using V = Lanes<maxLanes>;
    const float* past[rows + count - 1]; // the oldest slot first
    for (int i = 0; i < rows + count - 1; ++i)
        past[i] = ring + ((row + i + 1 - rows) & (matrixedRows - 1)) * matrixedValues;
    for (int t = 0; t < subbands; t += maxLanes) {
        V sum[2][count]{};
        for (int age = rows - 2; age >= 0; age -= 2)
            for (int parity = 0; parity < 2; ++parity) {
                const V tap = load<V>(synthesisTaps.data() + (age + parity) * subbands + t);
                for (int slot = 0; slot < count; ++slot)
                    sum[parity][slot] +=
                        tap * load<V>(past[rows - 1 + slot - age - parity] + parity * subbands + t);
            }
        for (int slot = 0; slot < count; ++slot)
            store<V>(dst + slot * subbands + t, sum[0][slot] + sum[1][slot]);
    }
}

template <int count>
[[gnu::always_inline]] inline void synthesise(float* ring, int row, const float* src, float* dst) {
    float cosines[count * subbands];
    cosineTransforms<count>(src, cosines);
    for (int slot = 0; slot < count; ++slot)
        spread(cosines + slot * subbands, matrixedRow(ring, row + slot));
    windowSlots<count>(ring, row, dst);
}

void synthesis(float* ring, int row, const float* src, float* dst) {
    synthesise<1>(ring, row, src, dst);
}

void synthesisGranule(float* ring, int row, const float* src, float* dst) {
    for (int slot = 0; slot < slots; slot += slotsAtOnce)
        synthesise<slotsAtOnce>(ring, row + slot, src + slot * subbands, dst + slot * subbands);
}

void synthesisFixed(Zor32s* ring, int row, Zor16s* dst, int step) {
    using V = Lanes<maxLanes>;
    Zor32s* newest = ring + row * subbands;
    float samples[subbands], cosines[subbands];
    for (int k = 0; k < subbands; k += maxLanes)
        store(samples + k, loadInts<V>(newest + k));
    cosineTransforms<1>(samples, cosines);
    for (int k = 0; k < subbands; k += maxLanes)
        storeRounded(newest + k, load<V>(cosines + k));
    windowRows(ring, row, samples);
    const V toPcm = splat<V>(32768.f / (1 << fractionBits)), high = splat<V>(32767.f),
            low = splat<V>(-32768.f);
    Zor32s pcm[subbands];
    for (int i = 0; i < subbands; i += maxLanes) {
        V scaled = load<V>(samples + i) * toPcm;
        scaled = scaled < high ? scaled : high;
        storeRounded(pcm + i, scaled > low ? scaled : low);
    }
    for (int i = 0; i < subbands; ++i)
        dst[i * step] = static_cast<Zor16s>(pcm[i]);
}

/** The windowed sums of the places from `first` on. */
template <class V, class T>
[[gnu::always_inline]] inline V windowed(const T* history, int first) {
    V sum{};
    for (int j = first; j < 512; j += 64)
        sum += loadRow<V>(history + j) * load<V>(analysisWindow.c + j);
    return sum;
}

/** Window and fold: y[16+n] with its mirror image, y[16-n] up to n = 16, and -y[80-n] from there. Both are
 * summed where they are wanted, so that nothing is stored to be read again in another grouping. */
template <class T>
[[gnu::always_inline]] inline void foldWindowed(const T* history, float (&folded)[subbands + 1]) {
    using V = Lanes<maxLanes>;
    folded[0] = 0;
    for (int j = half; j < 512; j += 64)
        folded[0] += static_cast<float>(history[j]) * analysisWindow.c[j];
    for (int t = 0; t < half; t += maxLanes) {
        store<V>(folded + 1 + t,
                 windowed<V>(history, half + 1 + t) + reversed(windowed<V>(history, half - maxLanes - t)));
        store<V>(folded + 1 + half + t,
                 windowed<V>(history, subbands + 1 + t) - reversed(windowed<V>(history, 64 - maxLanes - t)));
    }
}

/** The same by way of all windowed sums: without vector conversions of short integers that costs less. */
template <class T>
[[gnu::always_inline]] inline void foldSums(const T* history, float (&folded)[subbands + 1]) {
    float y[64];
    for (int i = 0; i < 64; ++i)
        y[i] = static_cast<float>(history[i]) * analysisWindow.c[i];
    for (int j = 64; j < 512; j += 64)
        for (int i = 0; i < 64; ++i)
            y[i] += static_cast<float>(history[j + i]) * analysisWindow.c[j + i];
    folded[0] = y[16];
    for (int n = 1; n <= 16; ++n)
        folded[n] = y[16 + n] + y[16 - n];
    for (int n = 17; n < subbands; ++n)
        folded[n] = y[16 + n] - y[80 - n];
}

/** Window, fold to 32 values by the symmetry of the cosines, transform. */
template <class T>
[[gnu::always_inline]] inline void analyse(const T* history, float (&bands)[subbands]) {
    constexpr bool inVectors = maxLanes >= (std::is_same_v<T, float> ? 4 : 8);
    float folded[subbands + 1]; // the last one is of no use
    if constexpr (inVectors)
        foldWindowed(history, folded);
    else
        foldSums(history, folded);
    if constexpr (maxLanes > 1) {
        inverseTransform(folded, bands);
    } else {
        float inputs[subbands];
        std::memcpy(inputs, folded, sizeof inputs);
        dct3(inputs, bands);
    }
}

void analysis(const float* history, float* dst) {
    float bands[subbands];
    analyse(history, bands);
    std::memcpy(dst, bands, sizeof bands);
}

void analysisFixed(const Zor16s* history, Zor32s* dst) {
    using V = Lanes<maxLanes>;
    float bands[subbands];
    analyse(history, bands);
    const V fromPcm = splat<V>(static_cast<float>(1 << fractionBits) / 32768.f);
    for (int k = 0; k < subbands; k += maxLanes)
        storeRounded(dst + k, load<V>(bands + k) * fromPcm);
}

} // namespace
} // namespace zor::mp3

template <>
const zor::mp3::PqmfKernels& zor::kernelTable<zor::mp3::PqmfKernels, ZOR_PATH>() {
    static constexpr mp3::PqmfKernels table{mp3::synthesis, mp3::synthesisGranule, mp3::synthesisFixed,
                                            mp3::analysis, mp3::analysisFixed};
    return table;
}
