// The public functions of the DTS synthesis filter.
#include "dts/filter.h"

#include "common/check.h"
#include "tables/dts_fir.h"
#include "zorac/dts.h"

#include <algorithm>

using namespace zor;

struct ZorsSynthesisFilterState_DTS_32f {
    static constexpr StateTag expectedTag = stateTag('D', 'T', 'S', 'f');
    StateTag tag;
    DtsSynthesis filter;
};

namespace {

constexpr double synthesisFactor = 64;

void placeFilter(DtsSynthesis& filter, Arena& arena) {
    constexpr std::size_t taps = DtsSynthesis::taps;
    placeDct4(filter.plan, DtsSynthesis::bands, synthesisFactor, arena);
    for (float*& window : filter.window)
        window = arena.take<float>(taps);
    filter.ring = arena.take<float>(2 * taps);
    filter.work = arena.take<float>(static_cast<std::size_t>(dct4WorkFloats(DtsSynthesis::bands)));
    filter.newest = 0;
    if (arena.measuring())
        return;
    for (std::size_t i = 0; i < taps; ++i) {
        filter.window[0][i] = static_cast<float>(tables::dts_fir::nonperfect[i]);
        filter.window[1][i] = static_cast<float>(tables::dts_fir::perfect[i]);
    }
    std::fill_n(filter.ring, 2 * taps, 0.0f);
}

ZorsSynthesisFilterState_DTS_32f* place(Arena& arena) {
    auto* memory = arena.take<ZorsSynthesisFilterState_DTS_32f>(1);
    ZorsSynthesisFilterState_DTS_32f state{};
    state.tag = ZorsSynthesisFilterState_DTS_32f::expectedTag;
    placeFilter(state.filter, arena);
    return arena.measuring() ? nullptr : new (memory) ZorsSynthesisFilterState_DTS_32f(state);
}

} // namespace

extern "C" {

ZorStatus zorsSynthesisFilterGetSize_DTS_32f(int* sizeByte) {
    if (!sizeByte)
        return zorStsNullPtrErr;
    Arena measure;
    place(measure);
    *sizeByte = static_cast<int>(measure.size());
    return zorStsNoErr;
}

ZorStatus zorsSynthesisFilterInit_DTS_32f(ZorsSynthesisFilterState_DTS_32f** state, Zor8u* memory) {
    if (anyNull(state, memory))
        return zorStsNullPtrErr;
    Arena arena(memory);
    *state = place(arena);
    return zorStsNoErr;
}

ZorStatus zorsSynthesisFilter_DTS_32f(const Zor32f* src, Zor32f* dst, ZorsSynthesisFilterState_DTS_32f* state,
                                      int mode) {
    if (anyNull(src, dst, state))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkState(state))
        return status;
    if (mode != 0 && mode != 1)
        return zorStsBadArgErr;
    kernels<DtsKernels>().synthesise(state->filter, src, dst, mode);
    return zorStsNoErr;
}
}
