// Block FIR: several vectors of outputs stay in registers while the taps pass.
#include "common/simd.h"
#include "generic/kernel_tables.h"

namespace {

using zor::lanesIn;

template <class V>
inline void firOne(const float* x, float* dst, const float* taps, int order) {
    V sum{};
    for (int k = 0; k < order; ++k)
        sum += zor::splat<V>(taps[k]) * zor::load<V>(x - k);
    zor::store(dst, sum);
}

/** Four vectors at once. */
template <class V>
inline void firFour(const float* x, float* dst, const float* taps, int order) {
    V sum0{}, sum1{}, sum2{}, sum3{};
    for (int k = 0; k < order; ++k) {
        const V tap = zor::splat<V>(taps[k]);
        sum0 += tap * zor::load<V>(x - k);
        sum1 += tap * zor::load<V>(x + lanesIn<V> - k);
        sum2 += tap * zor::load<V>(x + 2 * lanesIn<V> - k);
        sum3 += tap * zor::load<V>(x + 3 * lanesIn<V> - k);
    }
    zor::store(dst, sum0);
    zor::store(dst + lanesIn<V>, sum1);
    zor::store(dst + 2 * lanesIn<V>, sum2);
    zor::store(dst + 3 * lanesIn<V>, sum3);
}

void fir(const float* x, float* dst, int length, const float* taps, int order) {
    using V = zor::Lanes<zor::maxLanes>;
    constexpr int block = 4 * lanesIn<V>;
    int i = 0;
    for (; i + block <= length; i += block)
        firFour<V>(x + i, dst + i, taps, order);
    for (; i < length; ++i)
        firOne<float>(x + i, dst + i, taps, order);
}

} // namespace

template <>
const zor::FirKernels& zor::kernelTable<zor::FirKernels, ZOR_PATH>() {
    static constexpr FirKernels table{.fir = fir};
    return table;
}
