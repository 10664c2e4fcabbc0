// The lattice predictor of ISO/IEC 13818-7, all lines of a band in lanes.
#include "aac/fdp.h"
#include "common/simd.h"

#include <bit>

namespace {

using zor::Bits;
using zor::FdpPredictors;
using zor::lanesIn;
using zor::load;
using zor::splat;
using zor::store;

/** Attenuation of the lattice (a and b of the standard) and forgetting factor of its statistics (alpha). */
constexpr float attenuation = 0.953125f, forgetting = 0.90625f;

constexpr int leadingHalf = -0x10000;

/** The leading 16 bits, as the state is kept. */
template <class V>
[[gnu::always_inline]] inline V cut(V value) {
    return std::bit_cast<V>(std::bit_cast<Bits<V>>(value) & leadingHalf);
}

/** Rounded to 16 bits, halves away from zero, as the predicted value is. */
template <class V>
[[gnu::always_inline]] inline V roundedAway(V value) {
    return std::bit_cast<V>((std::bit_cast<Bits<V>>(value) + 0x8000) & leadingHalf);
}

/** Rounded to 16 bits, halves to even, as b / energy is. */
template <class V>
[[gnu::always_inline]] inline V roundedEven(V value) {
    const auto bits = std::bit_cast<Bits<V>>(value);
    return std::bit_cast<V>((bits + 0x7fff + ((bits >> 16) & 1)) & leadingHalf);
}

/** Reflection coefficient of a stage; energies up to 1 give none. */
template <class V>
[[gnu::always_inline]] inline V reflection(V correlation, V energy) {
    const V one = splat<V>(1);
    const V factor = roundedEven(splat<V>(attenuation) / (energy > one ? energy : one));
    return energy > one ? correlation * factor : V{};
}

struct ForwardLines {
    const float* src;
    float* dst;

    /** Writes the coded value and returns the reconstructed one, which both directions compute alike. */
    template <class V>
    [[gnu::always_inline]] V step(int i, V predicted) const {
        const V error = load<V>(src + i) - predicted;
        store(dst + i, error);
        return error + predicted;
    }
};

struct InverseLines {
    float* srcDst;

    template <class V>
    [[gnu::always_inline]] V step(int i, V predicted) const {
        const V value = load<V>(srcDst + i) + predicted;
        store(srcDst + i, value);
        return value;
    }
};

/** One frame of the lines in the lanes from line i on. */
template <class V, class Lines>
[[gnu::always_inline]] inline void adapt(const FdpPredictors& p, Lines lines, int i, bool predict) {
    const V r0 = load<V>(p.delay0 + i), r1 = load<V>(p.delay1 + i);
    const V correlation0 = load<V>(p.correlation0 + i), correlation1 = load<V>(p.correlation1 + i);
    const V energy0 = load<V>(p.energy0 + i), energy1 = load<V>(p.energy1 + i);
    const V k0 = reflection(correlation0, energy0), k1 = reflection(correlation1, energy1);
    const V e0 = lines.template step<V>(i, predict ? roundedAway(k0 * r0 + k1 * r1) : V{});
    const V e1 = e0 - k0 * r0;
    store<V>(p.delay1 + i, cut(attenuation * (r0 - k0 * e0)));
    store<V>(p.delay0 + i, cut(attenuation * e0));
    store<V>(p.correlation0 + i, cut(forgetting * correlation0 + r0 * e0));
    store<V>(p.correlation1 + i, cut(forgetting * correlation1 + r1 * e1));
    store<V>(p.energy0 + i, cut(forgetting * energy0 + 0.5f * (r0 * r0 + e0 * e0)));
    store<V>(p.energy1 + i, cut(forgetting * energy1 + 0.5f * (r1 * r1 + e1 * e1)));
}

template <class Lines>
void run(const FdpPredictors& predictors, Lines lines, int begin, int end, bool predict) {
    using V = zor::Lanes<zor::maxLanes>;
    int i = begin;
    for (; i + lanesIn<V> <= end; i += lanesIn<V>)
        adapt<V>(predictors, lines, i, predict);
    for (; i < end; ++i)
        adapt<float>(predictors, lines, i, predict);
}

void forward(const FdpPredictors& predictors, const float* src, float* dst, int begin, int end,
             bool predict) {
    run(predictors, ForwardLines{src, dst}, begin, end, predict);
}

void inverse(const FdpPredictors& predictors, float* srcDst, int begin, int end, bool predict) {
    run(predictors, InverseLines{srcDst}, begin, end, predict);
}

} // namespace

template <>
const zor::FdpKernels& zor::kernelTable<zor::FdpKernels, ZOR_PATH>() {
    static constexpr FdpKernels table{.forward = forward, .inverse = inverse};
    return table;
}
