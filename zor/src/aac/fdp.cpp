// The public functions of frequency-domain prediction.
#include "aac/fdp.h"

#include "common/arena.h"
#include "common/check.h"
#include "zorac/aac.h"

#include <algorithm>

using namespace zor;

struct ZorsFDPState_32f {
    static constexpr StateTag expectedTag = stateTag('F', 'D', 'P', 'f');
    StateTag tag;
    int length;
    FdpPredictors predictors;

    static ZorsFDPState_32f* place(Arena& arena, int length) {
        auto* memory = arena.take<ZorsFDPState_32f>(1);
        const auto array = [&] { return arena.take<float>(static_cast<std::size_t>(length)); };
        const FdpPredictors predictors{array(), array(), array(), array(), array(), array()};
        if (arena.measuring())
            return nullptr;
        auto* state = new (memory) ZorsFDPState_32f{expectedTag, length, predictors};
        state->reset(0, 1);
        return state;
    }

    void reset(int first, int step) const {
        if (step == 1)
            return resetFrom(first);
        for (long long line = first; line < length; line += step)
            predictors.reset(static_cast<int>(line));
    }

  private:
    /** All lines from the first on, array by array: line by line, stores of single floats are the limit. */
    void resetFrom(int first) const {
        const FdpPredictors& p = predictors;
        for (float* const array : {p.delay0, p.delay1, p.correlation0, p.correlation1})
            std::fill(array + first, array + length, 0.0f);
        std::fill(p.energy0 + first, p.energy0 + length, 1.0f);
        std::copy(p.energy0 + first, p.energy0 + length, p.energy1 + first);
    }
};

namespace {

bool areBandOffsets(const int* offset, int numBands, int length) {
    for (int band = 0; band < numBands; ++band)
        if (offset[band + 1] < offset[band])
            return false;
    return offset[0] >= 0 && offset[numBands] <= length;
}

template <class Source>
ZorStatus check(const Source* spectrum, const int* bandOffset, const Zor8u* predictionUsed, int numBands,
                const ZorsFDPState_32f* state) {
    if (anyNull(spectrum, bandOffset, predictionUsed, state))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkState(state))
        return status;
    if (numBands < 1)
        return zorStsSizeErr;
    return areBandOffsets(bandOffset, numBands, state->length) ? zorStsNoErr : zorStsBadArgErr;
}

/** Calls run(begin, end, predict) for the lines before the first band, the bands, and the lines behind the
 * last. */
template <class Run>
void forAllLines(const int* bandOffset, const Zor8u* predictionUsed, int numBands, int length, Run run) {
    run(0, bandOffset[0], false);
    for (int band = 0; band < numBands; ++band)
        run(bandOffset[band], bandOffset[band + 1], predictionUsed[band] != 0);
    run(bandOffset[numBands], length, false);
}

} // namespace

extern "C" {

ZorStatus zorsFDPInitAlloc_32f(ZorsFDPState_32f** state, int length) {
    if (!state)
        return zorStsNullPtrErr;
    if (length < 1 || length > 1 << 24)
        return zorStsSizeErr;
    *state = allocateState<ZorsFDPState_32f>(length);
    return *state ? zorStsNoErr : zorStsMemAllocErr;
}

ZorStatus zorsFDPFree_32f(ZorsFDPState_32f* state) {
    return freeState(state);
}

ZorStatus zorsFDPReset_32f(ZorsFDPState_32f* state) {
    if (const ZorStatus status = checkState(state))
        return status;
    state->reset(0, 1);
    return zorStsNoErr;
}

ZorStatus zorsFDPResetGroup_32f(int groupNumber, int step, ZorsFDPState_32f* state) {
    if (const ZorStatus status = checkState(state))
        return status;
    if (groupNumber < 1 || groupNumber > state->length || step < 1 || step > state->length)
        return zorStsBadArgErr;
    state->reset(groupNumber - 1, step);
    return zorStsNoErr;
}

ZorStatus zorsFDPFwd_32f(const Zor32f* src, Zor32f* dst, const int* bandOffset, const Zor8u* predictionUsed,
                         int numBands, ZorsFDPState_32f* state) {
    if (!dst)
        return zorStsNullPtrErr;
    if (const ZorStatus status = check(src, bandOffset, predictionUsed, numBands, state))
        return status;
    const auto forward = kernels<FdpKernels>().forward;
    forAllLines(bandOffset, predictionUsed, numBands, state->length, [&](int begin, int end, bool predict) {
        forward(state->predictors, src, dst, begin, end, predict);
    });
    return zorStsNoErr;
}

ZorStatus zorsFDPInv_32f_I(Zor32f* srcDst, const int* bandOffset, const Zor8u* predictionUsed, int numBands,
                           ZorsFDPState_32f* state) {
    if (const ZorStatus status = check(srcDst, bandOffset, predictionUsed, numBands, state))
        return status;
    const auto inverse = kernels<FdpKernels>().inverse;
    forAllLines(bandOffset, predictionUsed, numBands, state->length, [&](int begin, int end, bool predict) {
        inverse(state->predictors, srcDst, begin, end, predict);
    });
    return zorStsNoErr;
}
}
