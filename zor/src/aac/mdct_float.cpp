// The MDCT of AAC in floating point, ISO/IEC 14496-3 4.6.11 and 4.B.11.
#include "aac/mdct_float_kernels.h"
#include "aac/windows.h"
#include "common/check.h"
#include "transform/dct.h"
#include "zorac/aacfloat.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace zor::aac {

namespace {

/** A cosine transform of one length with tables of its own. */
class Transform {
  public:
    Transform(int length, double scale) {
        Arena measure;
        placeDct4(m_plan, length, scale, measure);
        m_memory.resize(measure.size());
        Arena arena(m_memory.data());
        placeDct4(m_plan, length, scale, arena);
    }

    void operator()(const float* from, float* to) const {
        alignas(64) float work[dct4WorkFloats(frameLength)];
        kernels<DctKernels>().dct4(m_plan, from, to, work);
    }

  private:
    std::vector<std::byte> m_memory;
    Dct4Plan m_plan{};
};

/** Both directions of one length; the inverse makes up for the forward one and for the overlap. */
struct Pair {
    explicit Pair(int length) : forward(length, 2), inverse(length, 1.0 / length) {}
    Transform forward, inverse;
};

const Pair longPair(frameLength), shortPair(shortLength);

/** The window of the n-th short block. */
WindowHalves<float> shortWindowOf(const WindowChoice& choice, int n) {
    return shortWindow<float>(n == 0 ? choice.prevShape : choice.shape, choice.shape);
}

void forwardBlock(const Pair& pair, const float* samples, float* lines, WindowHalves<float> window,
                  int length) {
    alignas(64) float folded[frameLength];
    kernels<AacFloatMdctKernels>().foldWindowed(samples, samples + length, window.rise, window.fall, folded,
                                                length);
    pair.forward(folded, lines);
}

void inverseShort(const float* lines, float* samples, float* overlap, const WindowChoice& choice) {
    alignas(64) float sum[2 * frameLength];
    alignas(64) float values[shortLength];
    std::fill_n(std::copy_n(overlap, frameLength, sum), frameLength, 0.0F);
    for (int w = 0; w < shortWindows; ++w) {
        shortPair.inverse(lines + w * shortLength, values);
        const WindowHalves<float> window = shortWindowOf(choice, w);
        kernels<AacFloatMdctKernels>().addUnfolded(values, window.rise, window.fall,
                                                   sum + flatLength + w * shortLength, shortLength);
    }
    std::copy_n(sum, frameLength, samples);
    std::copy_n(sum + frameLength, frameLength, overlap);
}

} // namespace

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsMDCTFwd_AAC_32f(const Zor32f* src, Zor32f* dst, int winSequence, int winShape,
                                         int prevWinShape) {
    if (anyNull(src, dst))
        return zorStsNullPtrErr;
    const WindowChoice choice{winSequence, winShape, prevWinShape};
    if (!choice.valid())
        return zorStsBadArgErr;
    if (!choice.isShort()) {
        forwardBlock(longPair, src, dst, longWindow<float>(choice), frameLength);
        return zorStsNoErr;
    }
    for (int w = 0; w < shortWindows; ++w)
        forwardBlock(shortPair, src + flatLength + w * shortLength, dst + w * shortLength,
                     shortWindowOf(choice, w), shortLength);
    return zorStsNoErr;
}

extern "C" ZorStatus zorsMDCTInv_AAC_32f(const Zor32f* src, Zor32f* dst, Zor32f* srcDstOverlap,
                                         int winSequence, int winShape, int prevWinShape) {
    if (anyNull(src, dst, srcDstOverlap))
        return zorStsNullPtrErr;
    const WindowChoice choice{winSequence, winShape, prevWinShape};
    if (!choice.valid())
        return zorStsBadArgErr;
    if (choice.isShort()) {
        inverseShort(src, dst, srcDstOverlap, choice);
        return zorStsNoErr;
    }
    alignas(64) float values[frameLength];
    longPair.inverse(src, values);
    const WindowHalves<float> window = longWindow<float>(choice);
    kernels<AacFloatMdctKernels>().overlapUnfolded(values, window.rise, window.fall, srcDstOverlap, dst,
                                                   frameLength);
    return zorStsNoErr;
}
