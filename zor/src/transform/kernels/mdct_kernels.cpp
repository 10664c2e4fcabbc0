// Folding and unfolding of the MDCT, and the conversions of its 16-bit form.
#include "transform/mdct_kernels.h"

#include "common/simd.h"

namespace {

using zor::lanesIn;
using zor::load;
using zor::reversed;
using zor::store;

void fold(const float* from, float* to, int length) {
    const auto quarter = static_cast<std::size_t>(length / 4);
    const float *a = from, *b = from + quarter, *c = from + 2 * quarter, *d = from + 3 * quarter;
    zor::withLanesFor(length / 4, [&]<class V>(V) {
        for (std::size_t i = 0; i < quarter; i += lanesIn<V>) {
            const std::size_t mirrored = quarter - i - lanesIn<V>;
            store<V>(to + i, -reversed(load<V>(c + mirrored)) - load<V>(d + i));
            store<V>(to + quarter + i, load<V>(a + i) - reversed(load<V>(b + mirrored)));
        }
    });
}

void unfold(const float* from, float* to, int length) {
    const auto quarter = static_cast<std::size_t>(length / 4);
    zor::withLanesFor(length / 4, [&]<class V>(V) {
        for (std::size_t i = 0; i < quarter; i += lanesIn<V>) {
            const std::size_t mirrored = quarter - i - lanesIn<V>;
            const V low = load<V>(from + i), high = load<V>(from + quarter + i);
            store<V>(to + i, high);
            store<V>(to + quarter + mirrored, -reversed(high));
            store<V>(to + 2 * quarter + mirrored, -reversed(low));
            store<V>(to + 3 * quarter + i, -low);
        }
    });
}

void toFloat(const Zor16s* __restrict from, float* __restrict to, int length) {
    for (int i = 0; i < length; ++i)
        to[i] = from[i];
}

void toInt(const float* __restrict from, float factor, Zor16s* __restrict to, int length) {
    constexpr float lowest = -32768, highest = 32767;
    constexpr float toNearest =
        12582912; // 1.5 * 2^23: adding it leaves the integer nearest to the value, ties to even
    for (int i = 0; i < length; ++i) {
        float value = from[i] * factor;
        value = value < lowest ? lowest : value;
        value = value > highest ? highest : value;
        to[i] = static_cast<Zor16s>(static_cast<int>((value + toNearest) - toNearest));
    }
}

} // namespace

template <>
const zor::MdctKernels& zor::kernelTable<zor::MdctKernels, ZOR_PATH>() {
    static constexpr MdctKernels table{.fold = fold, .unfold = unfold, .toFloat = toFloat, .toInt = toInt};
    return table;
}
