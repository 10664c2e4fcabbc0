#include "aac/tns_kernels.h"

#include "aac/fixedpoint.h"

namespace zor::aac {
namespace {

/** The order is known to the compiler, which then keeps coefficients and past outputs in registers. */
template <int order>
void allPoleOf(const TnsPredictor& predictor, Zor32s* data, int length) {
    const int shift = predictor.shift;
    const Zor64u round = roundingBias(shift);
    Zor32s coef[order];
    Zor32s past[order];
    for (int k = 0; k < order; ++k) {
        coef[k] = predictor.coef[k];
        past[k] = data[-1 - k];
    }
    for (int n = 0; n < length; ++n) {
        // The newest output last: the sum over the others does not wait for it.
        auto sum = static_cast<Zor64s>(data[n]) << shift;
        for (int k = order - 1; k > 0; --k)
            sum -= product(coef[k], past[k]);
        sum -= product(coef[0], past[0]);
        const Zor32s out = narrow(sum, round, shift);
        for (int k = order - 1; k > 0; --k)
            past[k] = past[k - 1];
        past[0] = out;
        data[n] = out;
    }
}

void allPole(const TnsPredictor& predictor, Zor32s* data, int length) {
    using Filter = void (*)(const TnsPredictor&, Zor32s*, int);
    static constexpr Filter filters[tnsMaxOrder] = {
        allPoleOf<1>,  allPoleOf<2>,  allPoleOf<3>,  allPoleOf<4>,  allPoleOf<5>,
        allPoleOf<6>,  allPoleOf<7>,  allPoleOf<8>,  allPoleOf<9>,  allPoleOf<10>,
        allPoleOf<11>, allPoleOf<12>, allPoleOf<13>, allPoleOf<14>, allPoleOf<15>,
        allPoleOf<16>, allPoleOf<17>, allPoleOf<18>, allPoleOf<19>, allPoleOf<20>};
    filters[predictor.order - 1](predictor, data, length);
}

/** `count` outputs, whose sums stay in registers. */
template <int count>
inline void allZeroBlock(const TnsPredictor& predictor, const Zor32s* src, Zor32s* dst, Zor64u round) {
    Zor64s sum[count];
    for (int i = 0; i < count; ++i)
        sum[i] = static_cast<Zor64s>(static_cast<Zor64u>(static_cast<Zor64s>(src[i])) << predictor.shift);
    for (int k = 0; k < predictor.order; ++k) {
        const Zor32s coef = predictor.coef[k];
        for (int i = 0; i < count; ++i)
            sum[i] += product(coef, src[i - 1 - k]);
    }
    for (int i = 0; i < count; ++i)
        dst[i] = narrow(sum[i], round, predictor.shift);
}

void allZero(const TnsPredictor& predictor, const Zor32s* src, Zor32s* dst, int length) {
    constexpr int block = 16;
    const Zor64u round = roundingBias(predictor.shift);
    int n = 0;
    for (; n + block <= length; n += block)
        allZeroBlock<block>(predictor, src + n, dst + n, round);
    // Band widths are multiples of 4.
    for (; n < length; n += 4)
        allZeroBlock<4>(predictor, src + n, dst + n, round);
}

} // namespace
} // namespace zor::aac

template <>
const zor::aac::TnsKernels& zor::kernelTable<zor::aac::TnsKernels, ZOR_PATH>() {
    static constexpr aac::TnsKernels table{.allPole = aac::allPole, .allZero = aac::allZero};
    return table;
}
