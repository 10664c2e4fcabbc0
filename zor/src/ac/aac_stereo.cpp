// M/S and intensity stereo, perceptual noise substitution and the order of lines in AAC.
#include "ac/aac_bands.h"
#include "ac/aac_kernels.h"
#include "ac/quarterpower.h"
#include "common/check.h"
#include "zorac.h"

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

ZorStatus checkMask(int msMaskPresent, const Zor8u* msUsed) {
    if (msMaskPresent < 0 || msMaskPresent > 2)
        return zorStsBadArgErr;
    return msMaskPresent == 1 && msUsed == nullptr ? zorStsNullPtrErr : zorStsNoErr;
}

} // namespace

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsDecodeMsStereo_AAC_32s_I(Zor32s* pSrcDstL, Zor32s* pSrcDstR, int msMaskPresent,
                                                  const Zor8u* pMsUsed, const Zor8u* pSfbCb, int numWinGrp,
                                                  const int* pWinGrpLen, int maxSfb, int samplingRateIndex,
                                                  int winLen) {
    if (anyNull(pSrcDstL, pSrcDstR, pSfbCb))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkMask(msMaskPresent, pMsUsed); status != zorStsNoErr)
        return status;
    Grouping groups;
    if (const ZorStatus status = grouping(numWinGrp, pWinGrpLen, maxSfb, samplingRateIndex, winLen, groups);
        status != zorStsNoErr)
        return status;
    if (msMaskPresent == 0)
        return zorStsNoErr;
    const AacKernels& kernel = kernels<AacKernels>();
    forEachWindow(groups, [&](int window, int group) {
        const int table = group * maxSfb;
        const auto use = [&](int band) {
            return isCoded(pSfbCb[table + band]) && (msMaskPresent == 2 || pMsUsed[table + band] != 0);
        };
        forEachRun(maxSfb, use, [&](int first, int end) {
            const int line = window * winLen + groups.bands.offset[first];
            kernel.midSide(pSrcDstL + line, pSrcDstR + line,
                           groups.bands.offset[end] - groups.bands.offset[first]);
        });
    });
    return zorStsNoErr;
}

extern "C" ZorStatus zorsDecodeIsStereo_AAC_32s(const Zor32s* pSrcL, Zor32s* pDstR,
                                                const Zor16s* pScaleFactor, int msMaskPresent,
                                                const Zor8u* pMsUsed, const Zor8u* pSfbCb, int numWinGrp,
                                                const int* pWinGrpLen, int maxSfb, int samplingRateIndex,
                                                int winLen) {
    if (anyNull(pSrcL, pDstR, pScaleFactor, pSfbCb))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkMask(msMaskPresent, pMsUsed); status != zorStsNoErr)
        return status;
    Grouping groups;
    if (const ZorStatus status = grouping(numWinGrp, pWinGrpLen, maxSfb, samplingRateIndex, winLen, groups);
        status != zorStsNoErr)
        return status;
    const AacKernels& kernel = kernels<AacKernels>();
    double gains[maxBands];
    int gainsOf = -1; // the group whose gains these are
    forEachWindow(groups, [&](int window, int group) {
        if (group != gainsOf) {
            for (int band = 0, i = group * maxSfb; band < maxSfb; ++band, ++i) {
                const bool intensity =
                    pSfbCb[i] == zorAacIntensityInPhase || pSfbCb[i] == zorAacIntensityOutOfPhase;
                const bool turned = msMaskPresent == 1 && pMsUsed[i] != 0;
                const bool negative = (pSfbCb[i] == zorAacIntensityOutOfPhase) != turned;
                gains[band] = intensity ? (negative ? -1 : 1) * quarterPower(-pScaleFactor[i]) : 0;
            }
            gainsOf = group;
        }
        kernel.intensity(pSrcL + window * winLen, pDstR + window * winLen, {groups.bands.offset, maxSfb, 1},
                         gains);
    });
    return zorStsNoErr;
}

extern "C" ZorStatus zorsDecodePNS_AAC_32s(Zor32s* pSrcDst, const Zor16s* pScaleFactor, const Zor8u* pSfbCb,
                                           Zor32u* pRandomState, Zor32s* pBandState, int second,
                                           const Zor8u* pMsUsed, int numWinGrp, const int* pWinGrpLen,
                                           int maxSfb, int samplingRateIndex, int winLen) {
    if (anyNull(pSrcDst, pScaleFactor, pSfbCb, pRandomState, pBandState) ||
        (second == 1 && pMsUsed == nullptr))
        return zorStsNullPtrErr;
    if (second < 0 || second > 1)
        return zorStsBadArgErr;
    Grouping groups;
    if (const ZorStatus status = grouping(numWinGrp, pWinGrpLen, maxSfb, samplingRateIndex, winLen, groups);
        status != zorStsNoErr)
        return status;
    const AacKernels& kernel = kernels<AacKernels>();
    Zor32u state = *pRandomState;
    Zor32s* window = pSrcDst;
    for (int group = 0, i = 0; group < numWinGrp; window += pWinGrpLen[group++] * winLen)
        for (int band = 0; band < maxSfb; ++band, ++i) {
            if (pSfbCb[i] != zorAacNoiseBook)
                continue;
            const bool repeats = second == 1 && pMsUsed[i] != 0;
            if (second == 0)
                pBandState[i] = static_cast<Zor32s>(state);
            Zor32u bandState = repeats ? static_cast<Zor32u>(pBandState[i]) : state;
            const int first = groups.bands.offset[band];
            const int width = groups.bands.offset[band + 1] - first;
            const double root = quarterPower(pScaleFactor[i]);
            for (int w = 0; w < pWinGrpLen[group]; ++w)
                bandState = kernel.noise(window + w * winLen + first, width, bandState, root);
            if (!repeats)
                state = bandState;
        }
    *pRandomState = state;
    return zorStsNoErr;
}

extern "C" ZorStatus zorsDeinterleaveSpectrum_AAC_32s(const Zor32s* pSrc, Zor32s* pDst, int numWinGrp,
                                                      const int* pWinGrpLen, int maxSfb,
                                                      int samplingRateIndex, int winLen) {
    if (anyNull(pSrc, pDst))
        return zorStsNullPtrErr;
    Grouping groups;
    if (const ZorStatus status = grouping(numWinGrp, pWinGrpLen, maxSfb, samplingRateIndex, winLen, groups);
        status != zorStsNoErr)
        return status;
    const std::uint16_t* offset = groups.bands.offset;
    for (const int windows : groups.groupLen) {
        const Zor32s* source = pSrc;
        for (int band = 0; band < maxSfb && windows > 1; ++band)
            for (int w = 0; w < windows; ++w) {
                const int width = offset[band + 1] - offset[band];
                std::copy_n(source, width, pDst + w * winLen + offset[band]);
                source += width;
            }
        if (windows == 1)
            std::copy_n(source, offset[maxSfb], pDst);
        for (int w = 0; w < windows; ++w)
            std::fill(pDst + w * winLen + offset[maxSfb], pDst + (w + 1) * winLen, 0);
        pSrc += windows * winLen;
        pDst += windows * winLen;
    }
    return zorStsNoErr;
}
