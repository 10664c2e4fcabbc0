#include "common/check.h"
#include "generic/kernel_tables.h"
#include "zors.h"

using namespace zor;

namespace {

template <class Sample, class List>
ZorStatus checkChannels(const Sample* together, List apart, int channels, int length) {
    if (anyNull(together, apart))
        return zorStsNullPtrErr;
    if (channels < 1 || length < 1)
        return zorStsSizeErr;
    return anyNullIn(apart, channels) ? zorStsNullPtrErr : zorStsNoErr;
}

template <class Sample>
ZorStatus deinterleave(const Sample* src, int channels, int length, Sample* const dst[]) {
    if (const ZorStatus status = checkChannels(src, dst, channels, length))
        return status;
    kernels<InterleaveKernels<Sample>>().deinterleave(src, channels, length, dst);
    return zorStsNoErr;
}

template <class Sample>
ZorStatus interleave(const Sample* const src[], int channels, int length, Sample* dst) {
    if (const ZorStatus status = checkChannels(dst, src, channels, length))
        return status;
    kernels<InterleaveKernels<Sample>>().interleave(src, channels, length, dst);
    return zorStsNoErr;
}

} // namespace

extern "C" {

ZorStatus zorsDeinterleave_16s(const Zor16s* src, int numChannels, int length, Zor16s* const dst[]) {
    return deinterleave(src, numChannels, length, dst);
}

ZorStatus zorsDeinterleave_32f(const Zor32f* src, int numChannels, int length, Zor32f* const dst[]) {
    return deinterleave(src, numChannels, length, dst);
}

ZorStatus zorsInterleave_16s(const Zor16s* const src[], int numChannels, int length, Zor16s* dst) {
    return interleave(src, numChannels, length, dst);
}

ZorStatus zorsInterleave_32f(const Zor32f* const src[], int numChannels, int length, Zor32f* dst) {
    return interleave(src, numChannels, length, dst);
}
}
