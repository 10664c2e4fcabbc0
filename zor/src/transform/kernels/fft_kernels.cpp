// The complex transform of any length.
#include "transform/kernels/fft_passes.h"

namespace {

using zor::FftPass;
using zor::FftPlan;
using zor::Split;

template <int radix>
void runPass(const FftPass& pass, Split from, Split to) {
    constexpr auto points = std::make_index_sequence<radix>();
    if (pass.blocks == 1)
        zor::withLanesFor(pass.stride, [&]<class V>(V) { zor::lastPass<radix, V>(pass, from, to, points); });
    else if (pass.stride == 1)
        zor::withLanesFor(pass.blocks, [&]<class V>(V) { zor::firstPass<radix, V>(pass, from, to, points); });
    else
        zor::withLanesFor(pass.stride, [&]<class V>(V) { zor::laterPass<radix, V>(pass, from, to, points); });
}

Split transform(const FftPlan& plan, Split data, Split work) {
    using Run = void (*)(const FftPass&, Split, Split);
    static constexpr Run run[] = {nullptr,    nullptr, runPass<2>, runPass<3>, runPass<4>,
                                  runPass<5>, nullptr, nullptr,    runPass<8>};
    for (int i = 0; i < plan.passes; ++i) {
        run[plan.pass[i].radix](plan.pass[i], data, work);
        std::swap(data, work);
    }
    return data;
}

} // namespace

template <>
const zor::FftKernels& zor::kernelTable<zor::FftKernels, ZOR_PATH>() {
    static constexpr FftKernels table{.transform = transform};
    return table;
}
