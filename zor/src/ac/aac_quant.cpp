// Inverse quantisation of AAC, ISO/IEC 14496-3 4.6.1 and 4.6.2.
#include "ac/aac_bands.h"
#include "ac/aac_kernels.h"
#include "ac/quarterpower.h"
#include "common/check.h"
#include "zorac.h"

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

} // namespace

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsQuantInv_AAC_32s_I(Zor32s* pSrcDst, const Zor16s* pScaleFactor, const Zor8u* pSfbCb,
                                            int numWinGrp, const int* pWinGrpLen, int maxSfb,
                                            int samplingRateIndex, int winLen) {
    if (anyNull(pSrcDst, pScaleFactor, pSfbCb))
        return zorStsNullPtrErr;
    Grouping groups;
    if (const ZorStatus status = grouping(numWinGrp, pWinGrpLen, maxSfb, samplingRateIndex, winLen, groups);
        status != zorStsNoErr)
        return status;
    const AacKernels& kernel = kernels<AacKernels>();
    float gains[maxBands];
    for (const int windows : groups.groupLen) {
        for (int band = 0; band < maxSfb; ++band, ++pScaleFactor, ++pSfbCb) {
            const bool coded = *pSfbCb != 0 && *pSfbCb < zorAacNoiseBook;
            gains[band] = coded ? static_cast<float>(quarterPower(*pScaleFactor - scaleFactorOffset)) : 0;
        }
        kernel.dequantise(pSrcDst, {groups.bands.offset, maxSfb, windows}, gains, powers.power.data());
        std::fill(pSrcDst + groups.bands.offset[maxSfb] * windows, pSrcDst + winLen * windows, 0);
        pSrcDst += winLen * windows;
    }
    return zorStsNoErr;
}
