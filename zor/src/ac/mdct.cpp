// The modified discrete cosine transform, forward and inverse.
#include "ac/mdctkernels.h"
#include "common/arena.h"
#include "common/check.h"
#include "common/dct.h"
#include "zorac.h"

#include <cmath>

using namespace zor;

namespace {

/** Tables of one transform; the three public types differ in their tag and scale only. */
template <StateTag kind>
struct MdctSpec {
    static constexpr StateTag expectedTag = kind;
    StateTag tag;
    int length;
    Dct4Plan plan;

    template <class Spec>
    static Spec* placeAs(Arena& arena, int length, double scale) {
        Spec* spec = arena.take<Spec>(1);
        Dct4Plan plan;
        placeDct4(plan, length / 2, scale, arena);
        if (arena.measuring())
            return nullptr;
        return new (spec) Spec{{kind, length, plan}};
    }
};

/** Floats of the work buffer behind the `length / 2` folded values. */
template <class Spec>
std::size_t workFloats(const Spec& spec) {
    return static_cast<std::size_t>(dct4WorkFloats(spec.length / 2));
}

/** The arrays of a call in the caller's buffer; `samples` is there for the 16-bit form alone. */
struct MdctBuffer {
    float* folded;
    float* work;
    float* samples;

    template <class Spec>
    static MdctBuffer place(Arena& arena, const Spec& spec, bool withSamples) {
        const auto length = static_cast<std::size_t>(spec.length);
        MdctBuffer buffer{arena.take<float>(length / 2), arena.take<float>(workFloats(spec)), nullptr};
        if (withSamples)
            buffer.samples = arena.take<float>(length);
        return buffer;
    }
};

template <class Spec>
ZorStatus initAlloc(Spec** spec, int len, double scale) {
    if (!spec)
        return zorStsNullPtrErr;
    if (len < 4 || len > 1 << 20 || len % 2 != 0 || !isDct4Size(len / 2))
        return zorStsSizeErr;
    *spec = allocateState<Spec>(len, scale);
    return *spec ? zorStsNoErr : zorStsMemAllocErr;
}

template <class Spec>
ZorStatus bufferSize(const Spec* spec, int* sizeByte, bool withSamples) {
    if (anyNull(spec, sizeByte))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkState(spec))
        return status;
    Arena measure;
    MdctBuffer::place(measure, *spec, withSamples);
    *sizeByte = static_cast<int>(measure.size());
    return zorStsNoErr;
}

template <class Spec, class Source, class Target>
ZorStatus check(const Source* src, const Target* dst, const Spec* spec, const Zor8u* buffer) {
    return anyNull(src, dst, spec, buffer) ? zorStsNullPtrErr : checkState(spec);
}

} // namespace

struct ZorsMDCTFwdSpec_32f : MdctSpec<stateTag('M', 'D', 'F', 'f')> {
    static ZorsMDCTFwdSpec_32f* place(Arena& arena, int length, double scale) {
        return placeAs<ZorsMDCTFwdSpec_32f>(arena, length, scale);
    }
};

struct ZorsMDCTInvSpec_32f : MdctSpec<stateTag('M', 'D', 'I', 'f')> {
    static ZorsMDCTInvSpec_32f* place(Arena& arena, int length, double scale) {
        return placeAs<ZorsMDCTInvSpec_32f>(arena, length, scale);
    }
};

struct ZorsMDCTFwdSpec_16s : MdctSpec<stateTag('M', 'D', 'F', 's')> {
    static ZorsMDCTFwdSpec_16s* place(Arena& arena, int length, double scale) {
        return placeAs<ZorsMDCTFwdSpec_16s>(arena, length, scale);
    }
};

namespace {

constexpr double forwardScale = 2;

ZorStatus forward(const Zor32f* src, Zor32f* dst, const ZorsMDCTFwdSpec_32f* spec, Zor8u* memory) {
    if (const ZorStatus status = check(src, dst, spec, memory))
        return status;
    Arena arena(memory);
    const auto buffer = MdctBuffer::place(arena, *spec, false);
    kernels<MdctKernels>().fold(src, buffer.folded, spec->length);
    kernels<DctKernels>().dct4(spec->plan, buffer.folded, dst, buffer.work);
    return zorStsNoErr;
}

ZorStatus inverse(const Zor32f* src, Zor32f* dst, const ZorsMDCTInvSpec_32f* spec, Zor8u* memory) {
    if (const ZorStatus status = check(src, dst, spec, memory))
        return status;
    Arena arena(memory);
    const auto buffer = MdctBuffer::place(arena, *spec, false);
    kernels<DctKernels>().dct4(spec->plan, src, buffer.folded, buffer.work);
    kernels<MdctKernels>().unfold(buffer.folded, dst, spec->length);
    return zorStsNoErr;
}

} // namespace

extern "C" {

ZorStatus zorsMDCTFwdInitAlloc_32f(ZorsMDCTFwdSpec_32f** spec, int len) {
    return initAlloc(spec, len, forwardScale);
}
ZorStatus zorsMDCTInvInitAlloc_32f(ZorsMDCTInvSpec_32f** spec, int len) {
    return initAlloc(spec, len, 2.0 / len);
}
ZorStatus zorsMDCTFwdInitAlloc_16s(ZorsMDCTFwdSpec_16s** spec, int len) {
    return initAlloc(spec, len, forwardScale);
}

ZorStatus zorsMDCTFwdGetBufSize_32f(const ZorsMDCTFwdSpec_32f* spec, int* sizeByte) {
    return bufferSize(spec, sizeByte, false);
}
ZorStatus zorsMDCTInvGetBufSize_32f(const ZorsMDCTInvSpec_32f* spec, int* sizeByte) {
    return bufferSize(spec, sizeByte, false);
}
ZorStatus zorsMDCTFwdGetBufSize_16s(const ZorsMDCTFwdSpec_16s* spec, int* sizeByte) {
    return bufferSize(spec, sizeByte, true);
}

ZorStatus zorsMDCTFwdFree_32f(ZorsMDCTFwdSpec_32f* spec) {
    return freeState(spec);
}
ZorStatus zorsMDCTInvFree_32f(ZorsMDCTInvSpec_32f* spec) {
    return freeState(spec);
}
ZorStatus zorsMDCTFwdFree_16s(ZorsMDCTFwdSpec_16s* spec) {
    return freeState(spec);
}

ZorStatus zorsMDCTFwd_32f(const Zor32f* src, Zor32f* dst, const ZorsMDCTFwdSpec_32f* spec, Zor8u* buffer) {
    return forward(src, dst, spec, buffer);
}
ZorStatus zorsMDCTFwd_32f_I(Zor32f* srcDst, const ZorsMDCTFwdSpec_32f* spec, Zor8u* buffer) {
    return forward(srcDst, srcDst, spec, buffer);
}
ZorStatus zorsMDCTInv_32f(const Zor32f* src, Zor32f* dst, const ZorsMDCTInvSpec_32f* spec, Zor8u* buffer) {
    return inverse(src, dst, spec, buffer);
}
ZorStatus zorsMDCTInv_32f_I(Zor32f* srcDst, const ZorsMDCTInvSpec_32f* spec, Zor8u* buffer) {
    return inverse(srcDst, srcDst, spec, buffer);
}

ZorStatus zorsMDCTFwd_16s_Sfs(const Zor16s* src, Zor16s* dst, const ZorsMDCTFwdSpec_16s* spec,
                              int scaleFactor, Zor8u* memory) {
    if (const ZorStatus status = check(src, dst, spec, memory))
        return status;
    if (scaleFactor < -31 || scaleFactor > 31)
        return zorStsScaleRangeErr;
    Arena arena(memory);
    const auto buffer = MdctBuffer::place(arena, *spec, true);
    const auto& mdct = kernels<MdctKernels>();
    mdct.toFloat(src, buffer.samples, spec->length);
    mdct.fold(buffer.samples, buffer.folded, spec->length);
    kernels<DctKernels>().dct4(spec->plan, buffer.folded, buffer.folded, buffer.work);
    mdct.toInt(buffer.folded, std::ldexp(1.0f, -scaleFactor), dst, spec->length / 2);
    return zorStsNoErr;
}
}
