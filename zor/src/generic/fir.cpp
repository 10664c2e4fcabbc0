// Block FIR filter with a delay line.
#include "common/arena.h"
#include "common/check.h"
#include "generic/kernel_tables.h"
#include "zors.h"

#include <algorithm>

using namespace zor;

struct ZorsFIRBlockState_32f {
    static constexpr StateTag expectedTag = stateTag('F', 'I', 'R', 'B');
    StateTag tag;
    int order;
    float* taps;
    float* line; /**< order - 1 past samples, then room for the first order - 1 of the block */

    static ZorsFIRBlockState_32f* place(Arena& arena, const float* taps, int order) {
        const auto count = static_cast<std::size_t>(order);
        auto* state = arena.take<ZorsFIRBlockState_32f>(1);
        float* ownTaps = arena.take<float>(count);
        float* line = arena.take<float>(2 * count);
        if (arena.measuring())
            return nullptr;
        std::copy_n(taps, count, ownTaps);
        std::fill_n(line, 2 * count, 0.0f);
        return new (state) ZorsFIRBlockState_32f{expectedTag, order, ownTaps, line};
    }
};

extern "C" {

ZorStatus zorsFIRBlockInitAlloc_32f(ZorsFIRBlockState_32f** state, const Zor32f* taps, int order) {
    if (anyNull(state, taps))
        return zorStsNullPtrErr;
    if (order < 1 || order > 65536)
        return zorStsSizeErr;
    *state = allocateState<ZorsFIRBlockState_32f>(taps, order);
    return *state ? zorStsNoErr : zorStsMemAllocErr;
}

ZorStatus zorsFIRBlockFree_32f(ZorsFIRBlockState_32f* state) {
    return freeState(state);
}

ZorStatus zorsFIRBlockOne_32f(const Zor32f* src, Zor32f* dst, int length, ZorsFIRBlockState_32f* state) {
    if (const ZorStatus status = checkVectors(length, src, dst, state))
        return status;
    if (const ZorStatus status = checkState(state))
        return status;
    const int past = state->order - 1, joined = std::min(past, length);
    const auto fir = kernels<FirKernels>().fir;
    std::copy_n(src, joined, state->line + past);
    fir(state->line + past, dst, joined, state->taps, state->order);
    if (length > past)
        fir(src + past, dst + past, length - past, state->taps, state->order);
    if (length >= past)
        std::copy_n(src + length - past, past, state->line);
    else
        std::copy(state->line + length, state->line + past + length, state->line);
    return zorStsNoErr;
}
}
