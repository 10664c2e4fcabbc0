// M/S and intensity stereo, perceptual noise substitution and the order of lines in AAC.
#include "aac/bands.h"
#include "aac/quarterpower.h"
#include "aac/spectrum_kernels.h"
#include "common/check.h"
#include "zorac/aacfloat.h"

#include <algorithm>

namespace zor::aac {

namespace {

constexpr int maxBands = 51;

bool isCoded(Zor8u book) {
    return book < zorAacNoiseBook;
}

/** Calls visit(window, group) for every window, which is numbered through the frame. */
template <class Visit>
void forEachWindow(const Grouping& groups, Visit visit) {
    int window = 0;
    for (std::size_t group = 0; group < groups.groupLen.size(); ++group)
        for (const int end = window + groups.groupLen[group]; window < end; ++window)
            visit(window, static_cast<int>(group));
}

/**
 * A state of the generator for the noise of a second channel in a band where the first one has none to
 * repeat: far from those that the channels come by, another one in each band.
 */
Zor32u apart(Zor32u state, int band) {
    return (state ^ (0x9E3779B9U * static_cast<Zor32u>(band + 1))) * 0x85EBCA6BU;
}

/** The arguments that describe the windows of a frame, as a call was given them. */
struct WindowCall {
    int numWinGrp;
    const int* winGrpLen;
    int maxSfb, samplingRateIndex, winLen;

    ZorStatus check(Grouping& groups) const {
        return grouping(numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen, groups);
    }
};

ZorStatus checkMask(int msMaskPresent, const Zor8u* msUsed) {
    if (msMaskPresent < 0 || msMaskPresent > 2)
        return zorStsBadArgErr;
    return msMaskPresent == 1 && msUsed == nullptr ? zorStsNullPtrErr : zorStsNoErr;
}

template <class Line>
ZorStatus midSide(Line* srcDstL, Line* srcDstR, int msMaskPresent, const Zor8u* msUsed, const Zor8u* sfbCbL,
                  const Zor8u* sfbCbR, const WindowCall& call) {
    if (anyNull(srcDstL, srcDstR, sfbCbL, sfbCbR))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkMask(msMaskPresent, msUsed); status != zorStsNoErr)
        return status;
    Grouping groups;
    if (const ZorStatus status = call.check(groups); status != zorStsNoErr)
        return status;
    if (msMaskPresent == 0)
        return zorStsNoErr;
    const LineKernels<Line>& kernel = kernels<LineKernels<Line>>();
    forEachWindow(groups, [&](int window, int group) {
        const int table = group * call.maxSfb;
        const auto use = [&](int band) {
            const int i = table + band;
            return isCoded(sfbCbL[i]) && isCoded(sfbCbR[i]) && (msMaskPresent == 2 || msUsed[i] != 0);
        };
        forEachRun(call.maxSfb, use, [&](int first, int end) {
            const int line = window * call.winLen + groups.bands.offset[first];
            kernel.midSide(srcDstL + line, srcDstR + line,
                           groups.bands.offset[end] - groups.bands.offset[first]);
        });
    });
    return zorStsNoErr;
}

template <class Line>
ZorStatus intensity(const Line* srcL, Line* dstR, const Zor16s* scaleFactor, int msMaskPresent,
                    const Zor8u* msUsed, const Zor8u* sfbCb, const WindowCall& call) {
    if (anyNull(srcL, dstR, scaleFactor, sfbCb))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkMask(msMaskPresent, msUsed); status != zorStsNoErr)
        return status;
    Grouping groups;
    if (const ZorStatus status = call.check(groups); status != zorStsNoErr)
        return status;
    const LineKernels<Line>& kernel = kernels<LineKernels<Line>>();
    double gains[maxBands];
    int gainsOf = -1; // the group whose gains these are
    forEachWindow(groups, [&](int window, int group) {
        if (group != gainsOf) {
            for (int band = 0, i = group * call.maxSfb; band < call.maxSfb; ++band, ++i) {
                const bool isIntensity =
                    sfbCb[i] == zorAacIntensityInPhase || sfbCb[i] == zorAacIntensityOutOfPhase;
                const bool turned = msMaskPresent == 1 && msUsed[i] != 0;
                const bool negative = (sfbCb[i] == zorAacIntensityOutOfPhase) != turned;
                gains[band] = isIntensity ? (negative ? -1 : 1) * quarterPower(-scaleFactor[i]) : 0;
            }
            gainsOf = group;
        }
        kernel.intensity(srcL + window * call.winLen, dstR + window * call.winLen,
                         {groups.bands.offset, call.maxSfb, 1}, gains);
    });
    return zorStsNoErr;
}

template <class Line>
ZorStatus substituteNoise(Line* srcDst, const Zor16s* scaleFactor, const Zor8u* sfbCb, Zor32u* randomState,
                          Zor32s* bandState, int second, const Zor8u* msUsed, const WindowCall& call) {
    if (anyNull(srcDst, scaleFactor, sfbCb, randomState, bandState) || (second == 1 && msUsed == nullptr))
        return zorStsNullPtrErr;
    if (second < 0 || second > 1)
        return zorStsBadArgErr;
    Grouping groups;
    if (const ZorStatus status = call.check(groups); status != zorStsNoErr)
        return status;
    const LineKernels<Line>& kernel = kernels<LineKernels<Line>>();
    Zor32u state = *randomState;
    Line* window = srcDst;
    int i = 0;
    for (const int windows : groups.groupLen) {
        for (int band = 0; band < call.maxSfb; ++band, ++i) {
            const bool noisy = sfbCb[i] == zorAacNoiseBook;
            if (second == 0)
                bandState[i] = static_cast<Zor32s>(noisy ? state : apart(state, i));
            if (!noisy)
                continue;
            const bool repeats = second == 1 && msUsed[i] != 0;
            Zor32u noiseState = repeats ? static_cast<Zor32u>(bandState[i]) : state;
            const int first = groups.bands.offset[band];
            const int width = groups.bands.offset[band + 1] - first;
            const double root = quarterPower(scaleFactor[i]);
            for (int w = 0; w < windows; ++w)
                noiseState = kernel.noise(window + w * call.winLen + first, width, noiseState, root);
            if (!repeats)
                state = noiseState;
        }
        window += windows * call.winLen;
    }
    *randomState = state;
    return zorStsNoErr;
}

} // namespace

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsDecodeMsStereo_AAC_32s_I(Zor32s* srcDstL, Zor32s* srcDstR, int msMaskPresent,
                                                  const Zor8u* msUsed, const Zor8u* sfbCb, int numWinGrp,
                                                  const int* winGrpLen, int maxSfb, int samplingRateIndex,
                                                  int winLen) {
    return midSide(srcDstL, srcDstR, msMaskPresent, msUsed, sfbCb, sfbCb,
                   {numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen});
}

extern "C" ZorStatus zorsDecodeMsStereoPair_AAC_32s_I(Zor32s* srcDstL, Zor32s* srcDstR, int msMaskPresent,
                                                      const Zor8u* msUsed, const Zor8u* sfbCbL,
                                                      const Zor8u* sfbCbR, int numWinGrp,
                                                      const int* winGrpLen, int maxSfb, int samplingRateIndex,
                                                      int winLen) {
    return midSide(srcDstL, srcDstR, msMaskPresent, msUsed, sfbCbL, sfbCbR,
                   {numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen});
}

extern "C" ZorStatus zorsDecodeMsStereo_AAC_32f_I(Zor32f* srcDstL, Zor32f* srcDstR, int msMaskPresent,
                                                  const Zor8u* msUsed, const Zor8u* sfbCbL,
                                                  const Zor8u* sfbCbR, int numWinGrp, const int* winGrpLen,
                                                  int maxSfb, int samplingRateIndex, int winLen) {
    return midSide(srcDstL, srcDstR, msMaskPresent, msUsed, sfbCbL, sfbCbR,
                   {numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen});
}

extern "C" ZorStatus zorsDecodeIsStereo_AAC_32s(const Zor32s* srcL, Zor32s* dstR, const Zor16s* scaleFactor,
                                                int msMaskPresent, const Zor8u* msUsed, const Zor8u* sfbCb,
                                                int numWinGrp, const int* winGrpLen, int maxSfb,
                                                int samplingRateIndex, int winLen) {
    return intensity(srcL, dstR, scaleFactor, msMaskPresent, msUsed, sfbCb,
                     {numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen});
}

extern "C" ZorStatus zorsDecodeIsStereo_AAC_32f(const Zor32f* srcL, Zor32f* dstR, const Zor16s* scaleFactor,
                                                int msMaskPresent, const Zor8u* msUsed, const Zor8u* sfbCb,
                                                int numWinGrp, const int* winGrpLen, int maxSfb,
                                                int samplingRateIndex, int winLen) {
    return intensity(srcL, dstR, scaleFactor, msMaskPresent, msUsed, sfbCb,
                     {numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen});
}

extern "C" ZorStatus zorsDecodePNS_AAC_32s(Zor32s* srcDst, const Zor16s* scaleFactor, const Zor8u* sfbCb,
                                           Zor32u* randomState, Zor32s* bandState, int second,
                                           const Zor8u* msUsed, int numWinGrp, const int* winGrpLen,
                                           int maxSfb, int samplingRateIndex, int winLen) {
    return substituteNoise(srcDst, scaleFactor, sfbCb, randomState, bandState, second, msUsed,
                           {numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen});
}

extern "C" ZorStatus zorsDecodePNS_AAC_32f(Zor32f* srcDst, const Zor16s* scaleFactor, const Zor8u* sfbCb,
                                           Zor32u* randomState, Zor32s* bandState, int second,
                                           const Zor8u* msUsed, int numWinGrp, const int* winGrpLen,
                                           int maxSfb, int samplingRateIndex, int winLen) {
    return substituteNoise(srcDst, scaleFactor, sfbCb, randomState, bandState, second, msUsed,
                           {numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen});
}

extern "C" ZorStatus zorsDeinterleaveSpectrum_AAC_32s(const Zor32s* src, Zor32s* dst, int numWinGrp,
                                                      const int* winGrpLen, int maxSfb, int samplingRateIndex,
                                                      int winLen) {
    if (anyNull(src, dst))
        return zorStsNullPtrErr;
    Grouping groups;
    if (const ZorStatus status = grouping(numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen, groups);
        status != zorStsNoErr)
        return status;
    const std::uint16_t* offset = groups.bands.offset;
    for (const int windows : groups.groupLen) {
        const Zor32s* source = src;
        for (int band = 0; band < maxSfb && windows > 1; ++band)
            for (int w = 0; w < windows; ++w) {
                const int width = offset[band + 1] - offset[band];
                std::copy_n(source, width, dst + w * winLen + offset[band]);
                source += width;
            }
        if (windows == 1)
            std::copy_n(source, offset[maxSfb], dst);
        for (int w = 0; w < windows; ++w)
            std::fill(dst + w * winLen + offset[maxSfb], dst + (w + 1) * winLen, 0);
        src += windows * winLen;
        dst += windows * winLen;
    }
    return zorStsNoErr;
}
