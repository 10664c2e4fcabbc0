#include "aac/tns_kernels.h"

#include "aac/fixedpoint.h"

#include <utility>

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

template <int order>
void allPoleOf(const TnsFloatPredictor& predictor, float* data, int length) {
    float coef[order], past[order];
    for (int k = 0; k < order; ++k) {
        coef[k] = predictor.coef[k];
        past[k] = data[-1 - k];
    }
    for (int n = 0; n < length; ++n) {
        float out = data[n];
        for (int k = order - 1; k >= 0; --k)
            out -= coef[k] * past[k];
        for (int k = order - 1; k > 0; --k)
            past[k] = past[k - 1];
        past[0] = data[n] = out;
    }
}

/** Calls the filter of the predictor's order. */
template <class Predictor, class Line, class Numbers>
void allPoleOfOrder(const Predictor& predictor, Line* data, int length, Numbers orders) {
    [&]<int... less1>(std::integer_sequence<int, less1...>) {
        using Filter = void (*)(const Predictor&, Line*, int);
        static constexpr Filter filters[] = {allPoleOf<less1 + 1>...};
        filters[predictor.order - 1](predictor, data, length);
    }
    (orders);
}

template <class Predictor, class Line>
void allPole(const Predictor& predictor, Line* data, int length) {
    allPoleOfOrder(predictor, data, length, std::make_integer_sequence<int, tnsMaxOrder>());
}

void allZeroFloat(const TnsFloatPredictor& predictor, const float* src, float* dst, int length) {
    for (int n = 0; n < length; ++n) {
        float sum = src[n];
        for (int k = predictor.order - 1; k >= 0; --k)
            sum += predictor.coef[k] * src[n - 1 - k];
        dst[n] = sum;
    }
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
    static constexpr aac::TnsKernels table{.allPole = aac::allPole<aac::TnsPredictor, Zor32s>,
                                           .allZero = aac::allZero,
                                           .allPoleFloat = aac::allPole<aac::TnsFloatPredictor, float>,
                                           .allZeroFloat = aac::allZeroFloat};
    return table;
}
