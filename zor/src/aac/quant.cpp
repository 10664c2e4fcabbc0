// Inverse quantisation of AAC, ISO/IEC 14496-3 4.6.1 and 4.6.2.
#include "aac/bands.h"
#include "aac/quarterpower.h"
#include "aac/spectrum_kernels.h"
#include "common/check.h"
#include "zorac/aacfloat.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zor::aac {

namespace {

constexpr int scaleFactorOffset = 100;
constexpr int maxBands = 51;

/** q^(4/3) of all magnitudes. */
struct PowerTable {
    std::array<float, largestQuantised + 1> power{};

    PowerTable() {
        for (int q = 0; q <= largestQuantised; ++q)
            power[static_cast<std::size_t>(q)] = static_cast<float>(q * std::cbrt(static_cast<double>(q)));
    }
};

const PowerTable powers;

/** Factors of the bands of a group; 0 for bands without coded lines. */
void gainsOf(const Zor16s* scaleFactor, const Zor8u* sfbCb, int maxSfb, float* gains) {
    for (int band = 0; band < maxSfb; ++band) {
        const bool coded = sfbCb[band] != 0 && sfbCb[band] < zorAacNoiseBook;
        gains[band] = coded ? static_cast<float>(quarterPower(scaleFactor[band] - scaleFactorOffset)) : 0;
    }
}

} // namespace

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsQuantInv_AAC_32s_I(Zor32s* srcDst, const Zor16s* scaleFactor, const Zor8u* sfbCb,
                                            int numWinGrp, const int* winGrpLen, int maxSfb,
                                            int samplingRateIndex, int winLen) {
    if (anyNull(srcDst, scaleFactor, sfbCb))
        return zorStsNullPtrErr;
    Grouping groups;
    if (const ZorStatus status = grouping(numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen, groups);
        status != zorStsNoErr)
        return status;
    const QuantKernels& kernel = kernels<QuantKernels>();
    float gains[maxBands];
    for (const int windows : groups.groupLen) {
        gainsOf(scaleFactor, sfbCb, maxSfb, gains);
        scaleFactor += maxSfb;
        sfbCb += maxSfb;
        kernel.dequantise(srcDst, {groups.bands.offset, maxSfb, windows}, gains, powers.power.data());
        std::fill(srcDst + groups.bands.offset[maxSfb] * windows, srcDst + winLen * windows, 0);
        srcDst += winLen * windows;
    }
    return zorStsNoErr;
}

extern "C" ZorStatus zorsQuantInv_AAC_32s32f(const Zor32s* src, Zor32f* dst, const Zor16s* scaleFactor,
                                             const Zor8u* sfbCb, int numWinGrp, const int* winGrpLen,
                                             int maxSfb, int samplingRateIndex, int winLen) {
    if (anyNull(src, dst, scaleFactor, sfbCb))
        return zorStsNullPtrErr;
    Grouping groups;
    if (const ZorStatus status = grouping(numWinGrp, winGrpLen, maxSfb, samplingRateIndex, winLen, groups);
        status != zorStsNoErr)
        return status;
    const QuantKernels& kernel = kernels<QuantKernels>();
    float gains[maxBands];
    const int top = groups.bands.offset[maxSfb];
    for (const int windows : groups.groupLen) {
        gainsOf(scaleFactor, sfbCb, maxSfb, gains);
        kernel.dequantiseToFloat(src, dst, {groups.bands.offset, maxSfb, windows}, gains, powers.power.data(),
                                 winLen);
        for (int w = 0; w < windows; ++w, dst += winLen)
            std::fill(dst + top, dst + winLen, 0.0F);
        scaleFactor += maxSfb;
        sfbCb += maxSfb;
        src += windows * winLen;
    }
    return zorStsNoErr;
}
