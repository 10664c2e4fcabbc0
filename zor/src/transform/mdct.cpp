// The modified discrete cosine transform, forward and inverse.
#include "common/arena.h"
#include "common/check.h"
#include "transform/dct.h"
#include "transform/mdct_kernels.h"
#include "zorac/transform.h"

#include <cmath>

using namespace zor;

namespace {

/** Tables of one transform; the three public types differ in their tag and scale only. */
template <StateTag kind>
struct MdctState {
    static constexpr StateTag expectedTag = kind;
    StateTag tag;
    int length;
    Dct4Plan plan;

    template <class State>
    static State* placeAs(Arena& arena, int length, double scale) {
        State* state = arena.take<State>(1);
        Dct4Plan plan;
        placeDct4(plan, length / 2, scale, arena);
        if (arena.measuring())
            return nullptr;
        return new (state) State{{kind, length, plan}};
    }
};

/** Floats of the work buffer behind the `length / 2` folded values. */
template <class State>
std::size_t workFloats(const State& state) {
    return static_cast<std::size_t>(dct4WorkFloats(state.length / 2));
}

/** The arrays of a call in the caller's buffer; `samples` is there for the 16-bit form alone. */
struct MdctBuffer {
    float* folded;
    float* work;
    float* samples;

    template <class State>
    static MdctBuffer place(Arena& arena, const State& state, bool withSamples) {
        const auto length = static_cast<std::size_t>(state.length);
        MdctBuffer buffer{arena.take<float>(length / 2), arena.take<float>(workFloats(state)), nullptr};
        if (withSamples)
            buffer.samples = arena.take<float>(length);
        return buffer;
    }
};

template <class State>
ZorStatus initAlloc(State** state, int length, double scale) {
    if (!state)
        return zorStsNullPtrErr;
    if (length < 4 || length > 1 << 20 || length % 2 != 0 || !isDct4Size(length / 2))
        return zorStsSizeErr;
    *state = allocateState<State>(length, scale);
    return *state ? zorStsNoErr : zorStsMemAllocErr;
}

template <class State>
ZorStatus bufferSize(const State* state, int* sizeByte, bool withSamples) {
    if (anyNull(state, sizeByte))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkState(state))
        return status;
    Arena measure;
    MdctBuffer::place(measure, *state, withSamples);
    *sizeByte = static_cast<int>(measure.size());
    return zorStsNoErr;
}

template <class State, class Source, class Target>
ZorStatus check(const Source* src, const Target* dst, const State* state, const Zor8u* buffer) {
    return anyNull(src, dst, state, buffer) ? zorStsNullPtrErr : checkState(state);
}

} // namespace

struct ZorsMDCTFwdState_32f : MdctState<stateTag('M', 'D', 'F', 'f')> {
    static ZorsMDCTFwdState_32f* place(Arena& arena, int length, double scale) {
        return placeAs<ZorsMDCTFwdState_32f>(arena, length, scale);
    }
};

struct ZorsMDCTInvState_32f : MdctState<stateTag('M', 'D', 'I', 'f')> {
    static ZorsMDCTInvState_32f* place(Arena& arena, int length, double scale) {
        return placeAs<ZorsMDCTInvState_32f>(arena, length, scale);
    }
};

struct ZorsMDCTFwdState_16s : MdctState<stateTag('M', 'D', 'F', 's')> {
    static ZorsMDCTFwdState_16s* place(Arena& arena, int length, double scale) {
        return placeAs<ZorsMDCTFwdState_16s>(arena, length, scale);
    }
};

namespace {

constexpr double forwardScale = 2;

ZorStatus forward(const Zor32f* src, Zor32f* dst, const ZorsMDCTFwdState_32f* state, Zor8u* memory) {
    if (const ZorStatus status = check(src, dst, state, memory))
        return status;
    Arena arena(memory);
    const auto buffer = MdctBuffer::place(arena, *state, false);
    kernels<MdctKernels>().fold(src, buffer.folded, state->length);
    kernels<DctKernels>().dct4(state->plan, buffer.folded, dst, buffer.work);
    return zorStsNoErr;
}

ZorStatus inverse(const Zor32f* src, Zor32f* dst, const ZorsMDCTInvState_32f* state, Zor8u* memory) {
    if (const ZorStatus status = check(src, dst, state, memory))
        return status;
    Arena arena(memory);
    const auto buffer = MdctBuffer::place(arena, *state, false);
    kernels<DctKernels>().dct4(state->plan, src, buffer.folded, buffer.work);
    kernels<MdctKernels>().unfold(buffer.folded, dst, state->length);
    return zorStsNoErr;
}

} // namespace

extern "C" {

ZorStatus zorsMDCTFwdInitAlloc_32f(ZorsMDCTFwdState_32f** state, int length) {
    return initAlloc(state, length, forwardScale);
}
ZorStatus zorsMDCTInvInitAlloc_32f(ZorsMDCTInvState_32f** state, int length) {
    return initAlloc(state, length, 2.0 / length);
}
ZorStatus zorsMDCTFwdInitAlloc_16s(ZorsMDCTFwdState_16s** state, int length) {
    return initAlloc(state, length, forwardScale);
}

ZorStatus zorsMDCTFwdGetBufSize_32f(const ZorsMDCTFwdState_32f* state, int* sizeByte) {
    return bufferSize(state, sizeByte, false);
}
ZorStatus zorsMDCTInvGetBufSize_32f(const ZorsMDCTInvState_32f* state, int* sizeByte) {
    return bufferSize(state, sizeByte, false);
}
ZorStatus zorsMDCTFwdGetBufSize_16s(const ZorsMDCTFwdState_16s* state, int* sizeByte) {
    return bufferSize(state, sizeByte, true);
}

ZorStatus zorsMDCTFwdFree_32f(ZorsMDCTFwdState_32f* state) {
    return freeState(state);
}
ZorStatus zorsMDCTInvFree_32f(ZorsMDCTInvState_32f* state) {
    return freeState(state);
}
ZorStatus zorsMDCTFwdFree_16s(ZorsMDCTFwdState_16s* state) {
    return freeState(state);
}

ZorStatus zorsMDCTFwd_32f(const Zor32f* src, Zor32f* dst, const ZorsMDCTFwdState_32f* state, Zor8u* buffer) {
    return forward(src, dst, state, buffer);
}
ZorStatus zorsMDCTFwd_32f_I(Zor32f* srcDst, const ZorsMDCTFwdState_32f* state, Zor8u* buffer) {
    return forward(srcDst, srcDst, state, buffer);
}
ZorStatus zorsMDCTInv_32f(const Zor32f* src, Zor32f* dst, const ZorsMDCTInvState_32f* state, Zor8u* buffer) {
    return inverse(src, dst, state, buffer);
}
ZorStatus zorsMDCTInv_32f_I(Zor32f* srcDst, const ZorsMDCTInvState_32f* state, Zor8u* buffer) {
    return inverse(srcDst, srcDst, state, buffer);
}

ZorStatus zorsMDCTFwd_16s_Sfs(const Zor16s* src, Zor16s* dst, const ZorsMDCTFwdState_16s* state,
                              int scaleFactor, Zor8u* memory) {
    if (const ZorStatus status = check(src, dst, state, memory))
        return status;
    if (scaleFactor < -31 || scaleFactor > 31)
        return zorStsScaleRangeErr;
    Arena arena(memory);
    const auto buffer = MdctBuffer::place(arena, *state, true);
    const auto& mdct = kernels<MdctKernels>();
    mdct.toFloat(src, buffer.samples, state->length);
    mdct.fold(buffer.samples, buffer.folded, state->length);
    kernels<DctKernels>().dct4(state->plan, buffer.folded, buffer.folded, buffer.work);
    mdct.toInt(buffer.folded, std::ldexp(1.0f, -scaleFactor), dst, state->length / 2);
    return zorStsNoErr;
}
}
