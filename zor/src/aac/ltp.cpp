// Long-term prediction of AAC, ISO/IEC 14496-3 4.6.7.
#include "aac/mdct.h"
#include "aac/spectrum_kernels.h"
#include "common/check.h"
#include "tables/aac_ltp_coef.h"
#include "zorac/aacfloat.h"

#include <algorithm>
#include <cmath>

namespace zor::aac {

namespace {

constexpr int maxLag = 2047;
constexpr int maxLongBands = 40;
constexpr int maxShortBands = 8;

/** The frame's samples as the past predicts them: the signal `lag` samples before, times a gain. */
void predict(const Zor32s* frame, int lag, int coefIndex, Zor32s* samples) {
    constexpr int bits = 30;
    const auto gain =
        static_cast<Zor64s>(std::llrint(std::ldexp(tables::aac_ltp_coef::coef[coefIndex], bits)));
    for (int i = 0; i < 2 * frameLength; ++i) {
        const Zor64s value = (gain * frame[i - lag] + (Zor64s{1} << (bits - 1))) >> bits;
        samples[i] = static_cast<Zor32s>(std::clamp<Zor64s>(value, -0x7FFFFFFFLL - 1, 0x7FFFFFFF));
    }
}

/** Adds the predicted lines in the bands in use. */
template <class Line>
ZorStatus reconstruct(const Line* src, Line* srcDst, const Zor8u* ltpFlag, int winSequence, int maxSfb,
                      int samplingRateIndex) {
    if (anyNull(src, srcDst, ltpFlag))
        return zorStsNullPtrErr;
    if (winSequence < zorAacOnlyLong || winSequence > zorAacLongStop || samplingRateIndex < 0 ||
        samplingRateIndex >= samplingRates)
        return zorStsBadArgErr;
    const bool isShort = winSequence == zorAacEightShort;
    const int winLen = isShort ? shortLength : frameLength;
    const Bands layout = bands(samplingRateIndex, winLen);
    if (maxSfb < 0 || maxSfb > layout.count)
        return zorStsSizeErr;
    if (ltpFlag[0] == 0)
        return zorStsNoErr;
    const LineKernels<Line>& kernel = kernels<LineKernels<Line>>();
    const int bandCount = std::min(maxSfb, isShort ? maxShortBands : maxLongBands);
    for (int window = 0; window < frameLength; window += winLen)
        forEachRun(
            bandCount, [&](int band) { return ltpFlag[band + 1] != 0; },
            [&](int first, int end) {
                const int line = window + layout.offset[first];
                kernel.addTo(src + line, srcDst + line, layout.offset[end] - layout.offset[first]);
            });
    return zorStsNoErr;
}

} // namespace

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsLongTermPredict_AAC_32s(const Zor32s* src, Zor32s* dst, int lag, int coefIndex,
                                                 int winSequence, int winShape, int prevWinShape) {
    if (anyNull(src, dst))
        return zorStsNullPtrErr;
    const WindowChoice choice{winSequence, winShape, prevWinShape};
    if (!choice.valid() || lag < 0 || lag > maxLag || coefIndex < 0 ||
        coefIndex >= tables::aac_ltp_coef::rows)
        return zorStsBadArgErr;
    alignas(64) Zor32s samples[2 * frameLength];
    alignas(64) Zor32s work[2 * frameLength];
    predict(src + 2 * frameLength, lag, coefIndex, samples);
    if (!choice.isShort()) {
        forwardMdct(samples, samples + frameLength, longWindow<Zor32s>(choice), dst, frameLength, work);
        return zorStsNoErr;
    }
    const Zor32s* first = samples + (frameLength - shortLength) / 2;
    for (int w = 0; w < shortWindows; ++w, first += shortLength)
        forwardMdct(first, first + shortLength,
                    shortWindow<Zor32s>(w == 0 ? prevWinShape : winShape, winShape), dst + w * shortLength,
                    shortLength, work);
    return zorStsNoErr;
}

extern "C" ZorStatus zorsLongTermReconstruct_AAC_32s(const Zor32s* src, Zor32s* srcDst, const Zor8u* ltpFlag,
                                                     int winSequence, int maxSfb, int samplingRateIndex) {
    return reconstruct(src, srcDst, ltpFlag, winSequence, maxSfb, samplingRateIndex);
}

extern "C" ZorStatus zorsLongTermPredict_AAC_32f(const Zor32f* src, Zor32f* dst, int lag, int coefIndex,
                                                 int winSequence, int winShape, int prevWinShape) {
    if (anyNull(src, dst))
        return zorStsNullPtrErr;
    if (lag < 0 || lag > maxLag || coefIndex < 0 || coefIndex >= tables::aac_ltp_coef::rows)
        return zorStsBadArgErr;
    const auto gain = static_cast<float>(tables::aac_ltp_coef::coef[coefIndex]);
    alignas(64) Zor32f samples[2 * frameLength];
    for (int i = 0; i < 2 * frameLength; ++i)
        samples[i] = gain * src[2 * frameLength + i - lag];
    return zorsMDCTFwd_AAC_32f(samples, dst, winSequence, winShape, prevWinShape);
}

extern "C" ZorStatus zorsLongTermReconstruct_AAC_32f(const Zor32f* src, Zor32f* srcDst, const Zor8u* ltpFlag,
                                                     int winSequence, int maxSfb, int samplingRateIndex) {
    return reconstruct(src, srcDst, ltpFlag, winSequence, maxSfb, samplingRateIndex);
}
