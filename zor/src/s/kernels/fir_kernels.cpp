// Block FIR: several vectors of outputs stay in registers while the taps pass.
#include "common/simd.h"
#include "s/skernels.h"

namespace {

using zor::lanesIn;

template <class V, int vectors>
inline void firBlock(const float* x, float* dst, const float* taps, int order) {
    V sum[vectors] = {};
    for (int k = 0; k < order; ++k) {
        const V tap = zor::splat<V>(taps[k]);
        for (int v = 0; v < vectors; ++v)
            sum[v] += tap * zor::load<V>(x + v * lanesIn<V> - k);
    }
    for (int v = 0; v < vectors; ++v)
        zor::store(dst + v * lanesIn<V>, sum[v]);
}

void fir(const float* x, float* dst, int len, const float* taps, int order) {
    using V = zor::Lanes<zor::maxLanes>;
    constexpr int block = 4 * lanesIn<V>;
    int i = 0;
    for (; i + block <= len; i += block)
        firBlock<V, 4>(x + i, dst + i, taps, order);
    for (; i < len; ++i)
        firBlock<float, 1>(x + i, dst + i, taps, order);
}

} // namespace

template <>
const zor::FirKernels& zor::kernelTable<zor::FirKernels, ZOR_PATH>() {
    static constexpr FirKernels table{.fir = fir};
    return table;
}
