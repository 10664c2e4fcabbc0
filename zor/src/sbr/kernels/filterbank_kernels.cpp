// SBR filter banks: window, transform and band lines, slot by slot.
#include "sbr/filterbank.h"
#include "transform/kernels/fft_passes.h"

#include <algorithm>

namespace {

using zor::Complex;
using zor::lanesIn;
using zor::load;
using zor::loadComplex;
using zor::OddFourierPlan;
using zor::reversed;
using zor::SbrAnalysis;
using zor::SbrSynthesis;
using zor::Split;
using zor::store;
using zor::storeComplex;
using V = zor::Lanes<zor::maxLanes>;

constexpr std::size_t lanes = lanesIn<V>;

/** The transform of 32 or 64 bands; its result stands in the plan's buffer. */
template <int bands>
[[gnu::always_inline]] inline void transform(const OddFourierPlan& plan) {
    zor::fixedTransform<8, bands / 8>(plan.fft, plan.data, plan.work);
}

template <class W>
Complex<W> reversed(Complex<W> a) {
    return {zor::reversed(a.re), zor::reversed(a.im)};
}

// Band lines: how the values of bands 2i and 2i + 1 are read and written in lanes.

struct SplitLine {
    float* re;
    float* im;
    void write(std::size_t band, Complex<V> even, Complex<V> odd) const {
        zor::storePairs(re + band, even.re, odd.re);
        zor::storePairs(im + band, even.im, odd.im);
    }
};

struct PairLine {
    float* pairs;
    void write(std::size_t band, Complex<V> even, Complex<V> odd) const {
        const V columns[4] = {even.re, even.im, odd.re, odd.im};
        zor::storeTransposed(pairs + 2 * band, columns);
    }
};

struct RealLine {
    float* re;
    void write(std::size_t band, Complex<V> even, Complex<V> odd) const {
        zor::storePairs(re + band, even.re, odd.re);
    }
};

struct ConstSplitLine {
    const float* re;
    const float* im;
    void read(std::size_t band, Complex<V>& even, Complex<V>& odd) const {
        zor::loadPairs(re + band, even.re, odd.re);
        zor::loadPairs(im + band, even.im, odd.im);
    }
};

struct ConstPairLine {
    const float* pairs;
    void read(std::size_t band, Complex<V>& even, Complex<V>& odd) const {
        V evenOddRe[2], evenOddIm[2];
        zor::loadPairs(pairs + 2 * band, evenOddRe[0], evenOddIm[0]);
        zor::loadPairs(pairs + 2 * (band + lanes), evenOddRe[1], evenOddIm[1]);
        zor::splitPairs(evenOddRe[0], evenOddRe[1], even.re, odd.re);
        zor::splitPairs(evenOddIm[0], evenOddIm[1], even.im, odd.im);
    }
};

struct ConstRealLine {
    const float* re;
    void read(std::size_t band, Complex<V>& even, Complex<V>& odd) const {
        zor::loadPairs(re + band, even.re, odd.re);
        even.im = odd.im = V{};
    }
};

/** Windows 320 samples, folds them to 64 values and writes the transform's input. */
void windowSlot(const SbrAnalysis& filter, const float* line) {
    constexpr std::size_t bands = zor::sbrAnalysisBands;
    for (std::size_t r = 0; r < bands; r += lanes) {
        V first{}, second{};
        for (std::size_t i = r; i < SbrAnalysis::windowLength; i += 2 * bands) {
            first += load<V>(filter.window + i + bands) * load<V>(line + i + bands);
            second += load<V>(filter.window + i) * load<V>(line + i);
        }
        const std::size_t n = bands - lanes - r;
        const Complex<V> z{zor::reversed(first), -zor::reversed(second)};
        storeComplex(filter.plan.data, n, z * loadComplex<V>(filter.plan.inner, n));
    }
}

template <class Line>
void writeBands(const OddFourierPlan& plan, const Line& line) {
    constexpr std::size_t bands = zor::sbrAnalysisBands;
    for (std::size_t i = 0; i < bands / 2; i += lanes) {
        const std::size_t mirrored = bands - lanes - i;
        const auto even = loadComplex<V>(plan.data, i) * loadComplex<V>(plan.outer, i);
        const auto odd = loadComplex<V>(plan.data, mirrored) * loadComplex<V>(plan.outer, mirrored);
        line.write(2 * i, Complex<V>{even.re, -even.im}, reversed(odd));
    }
}

/** Analyses `slots` slots; lineOf(slot) is where the bands of a slot go. */
template <class LineOf>
void analyse(SbrAnalysis& filter, const float* src, int slots, LineOf lineOf) {
    constexpr int bands = zor::sbrAnalysisBands, past = SbrAnalysis::past;
    const int joined = std::min(slots, SbrAnalysis::joinedSlots);
    std::copy_n(src, joined * bands, filter.line + past);
    for (int slot = 0; slot < slots; ++slot) {
        windowSlot(filter, slot < joined ? filter.line + slot * bands : src + slot * bands - past);
        transform<bands>(filter.plan);
        writeBands(filter.plan, lineOf(slot));
    }
    if (slots >= SbrAnalysis::joinedSlots)
        std::copy_n(src + slots * bands - past, past, filter.line);
    else
        std::copy_n(filter.line + slots * bands, past, filter.line);
}

template <std::size_t bands, class Line>
void readBands(const OddFourierPlan& plan, const Line& line) {
    for (std::size_t i = 0; i < bands / 2; i += lanes) {
        const std::size_t mirrored = bands - lanes - i;
        Complex<V> even, odd;
        line.read(2 * i, even, odd);
        storeComplex(plan.data, i, Complex<V>{even.re, -even.im} * loadComplex<V>(plan.outer, i));
        storeComplex(plan.data, mirrored, reversed(odd) * loadComplex<V>(plan.outer, mirrored));
    }
}

/** Overlaps the last ten slots of modulated values. */
template <std::size_t bands>
void overlap(const SbrSynthesis& filter, float* dst) {
    const float* slots[SbrSynthesis::ringSlots];
    for (int age = 0, slot = filter.newest; age < SbrSynthesis::ringSlots; ++age) {
        slots[age] = filter.ring + static_cast<std::size_t>(slot) * 2 * bands + (age % 2 ? bands : 0);
        slot = slot ? slot - 1 : SbrSynthesis::ringSlots - 1;
    }
    for (std::size_t k = 0; k < bands; k += lanes) {
        V sum{};
        for (std::size_t age = 0; age < SbrSynthesis::ringSlots; ++age)
            sum += load<V>(filter.window + age * bands + k) * load<V>(slots[age] + k);
        store(dst + k, sum);
    }
}

/** Modulates the values of one slot into the ring. */
template <std::size_t bands>
void modulate(SbrSynthesis& filter) {
    transform<bands>(filter.plan);
    filter.newest = filter.newest + 1 < SbrSynthesis::ringSlots ? filter.newest + 1 : 0;
    float* ring = filter.ring + static_cast<std::size_t>(filter.newest) * 2 * bands;
    for (std::size_t n = 0; n < bands; n += lanes)
        storeComplex(Split{ring, ring + bands}, n,
                     loadComplex<V>(filter.plan.data, n) * loadComplex<V>(filter.plan.inner, n));
}

template <std::size_t bands, class LineOf>
void synthesiseBands(SbrSynthesis& filter, float* dst, int slots, LineOf lineOf) {
    for (int slot = 0; slot < slots; ++slot, dst += bands) {
        readBands<bands>(filter.plan, lineOf(slot));
        modulate<bands>(filter);
        overlap<bands>(filter, dst);
    }
}

/** Synthesises `slots` slots; lineOf(slot) is where the bands of a slot come from. */
template <class LineOf>
void synthesise(SbrSynthesis& filter, float* dst, int slots, LineOf lineOf) {
    if (filter.plan.bands == 64)
        synthesiseBands<64>(filter, dst, slots, lineOf);
    else
        synthesiseBands<32>(filter, dst, slots, lineOf);
}

/** A line of pairs as plain floats, real part first. */
float* floats(Zor32fc* line) {
    return &line->re;
}
const float* floats(const Zor32fc* line) {
    return &line->re;
}

void analyseSplit(SbrAnalysis& filter, const float* src, zor::SplitLines<float> dst, int slots) {
    analyse(filter, src, slots, [&](int slot) { return SplitLine{dst.re[slot], dst.im[slot]}; });
}

void analysePairs(SbrAnalysis& filter, const float* src, Zor32fc* const* dst, int slots) {
    analyse(filter, src, slots, [&](int slot) { return PairLine{floats(dst[slot])}; });
}

void analyseReal(SbrAnalysis& filter, const float* src, float* const* dst, int slots) {
    analyse(filter, src, slots, [&](int slot) { return RealLine{dst[slot]}; });
}

void synthesiseSplit(SbrSynthesis& filter, zor::SplitLines<const float> src, float* dst, int slots) {
    synthesise(filter, dst, slots, [&](int slot) { return ConstSplitLine{src.re[slot], src.im[slot]}; });
}

void synthesisePairs(SbrSynthesis& filter, const Zor32fc* const* src, float* dst, int slots) {
    synthesise(filter, dst, slots, [&](int slot) { return ConstPairLine{floats(src[slot])}; });
}

void synthesiseReal(SbrSynthesis& filter, const float* const* src, float* dst, int slots) {
    synthesise(filter, dst, slots, [&](int slot) { return ConstRealLine{src[slot]}; });
}

} // namespace

template <>
const zor::SbrKernels& zor::kernelTable<zor::SbrKernels, ZOR_PATH>() {
    static constexpr SbrKernels table{.analyseSplit = analyseSplit,
                                      .analysePairs = analysePairs,
                                      .analyseReal = analyseReal,
                                      .synthesiseSplit = synthesiseSplit,
                                      .synthesisePairs = synthesisePairs,
                                      .synthesiseReal = synthesiseReal};
    return table;
}
