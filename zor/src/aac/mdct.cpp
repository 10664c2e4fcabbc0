// The MDCT of AAC, ISO/IEC 14496-3 4.6.11 and 4.B.11, in fixed point with a common exponent per block.
#include "aac/mdct.h"

#include "aac/mdct_kernels.h"
#include "common/check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace zor::aac {

namespace {

constexpr double pi = std::numbers::pi;
/** The rotations of a DCT-IV and the plan that points to them. */
class PlanData {
  public:
    explicit PlanData(int length) {
        const int points = length / 2;
        m_plan.length = length;
        m_plan.ends = rotations(points, 31, [=](int n) { return pi * (n + 0.125) / length; });
        int rest = points;
        for (; rest >= 4; rest /= 4, ++m_plan.stages) {
            // The second stage works on four copies of each rotation.
            const int copies = m_plan.stages == 1 ? 4 : 1;
            for (int part = 1; part <= 3; ++part)
                m_plan.stage[m_plan.stages][part - 1] = rotations(
                    rest / 4 * copies, 30, [=](int n) { return 2 * pi * part * (n / copies) / rest; });
        }
        m_plan.radix2 = rest == 2;
    }

    [[nodiscard]] const Dct4Plan& plan() const { return m_plan; }

  private:
    /** exp(-i angle(n)) for n below count. */
    template <class Angle>
    Rotations rotations(int count, int bits, Angle angle) {
        std::vector<Zor32s> re, im;
        for (int n = 0; n < count; ++n) {
            re.push_back(fixed(std::cos(angle(n)), bits));
            im.push_back(fixed(-std::sin(angle(n)), bits));
        }
        m_values.push_back(std::move(re));
        m_values.push_back(std::move(im));
        return {m_values[m_values.size() - 2].data(), m_values.back().data()};
    }

    std::vector<std::vector<Zor32s>> m_values;
    Dct4Plan m_plan{};
};

const PlanData longPlan(frameLength);
const PlanData shortPlan(shortLength);

const Dct4Plan& planOf(int length) {
    return (length == frameLength ? longPlan : shortPlan).plan();
}

/** The binary logarithm of the points of the Fourier transform. */
int logPoints(int length) {
    return length == frameLength ? 9 : 6;
}

/** From lines to values to be unfolded, with overlapBits behind the binary point. */
void inverseDct4(const Zor32s* lines, Zor32s* values, int length, Zor32s* work) {
    const AacMdctKernels& kernel = kernels<AacMdctKernels>();
    const int norm = 28 - kernel.bitsOf(lines, length);
    kernel.dct4(planOf(length), lines, norm, values, 32 - overlapBits + norm, work);
}

void inverseLong(const Zor32s* lines, Zor16s* samples, Zor32s* overlap, const WindowChoice& choice,
                 Zor32s* work) {
    alignas(64) Zor32s values[frameLength];
    inverseDct4(lines, values, frameLength, work);
    const WindowHalves<Zor32s> window = longWindow<Zor32s>(choice);
    kernels<AacMdctKernels>().overlapUnfolded(values, window.rise, window.fall, overlap, samples,
                                              frameLength);
}

void inverseShort(const Zor32s* lines, Zor16s* samples, Zor32s* overlap, const WindowChoice& choice,
                  Zor32s* work) {
    alignas(64) Zor32s values[shortLength];
    alignas(64) Zor32s sum[2 * frameLength];
    const AacMdctKernels& kernel = kernels<AacMdctKernels>();
    std::copy_n(overlap, frameLength, sum);
    std::fill_n(sum + frameLength, frameLength, 0);
    for (int w = 0; w < shortWindows; ++w) {
        inverseDct4(lines + w * shortLength, values, shortLength, work);
        const WindowHalves<Zor32s> window =
            shortWindow<Zor32s>(w == 0 ? choice.prevShape : choice.shape, choice.shape);
        kernel.addUnfolded(values, window.rise, window.fall, sum + flatLength + w * shortLength, shortLength);
    }
    kernel.toSamples(sum, samples, frameLength);
    std::copy_n(sum + frameLength, frameLength, overlap);
}

} // namespace

void forwardMdct(const Zor32s* first, const Zor32s* second, WindowHalves<Zor32s> window, Zor32s* lines,
                 int length, Zor32s* work) {
    const AacMdctKernels& kernel = kernels<AacMdctKernels>();
    const int norm = 27 - std::max(kernel.bitsOf(first, length), kernel.bitsOf(second, length));
    kernel.foldWindowed(first, second, window.rise, window.fall, lines, length, norm);
    kernel.dct4(planOf(length), lines, 0, lines, 30 - logPoints(length) + norm, work);
}

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsMDCTFwd_AAC_32s(const Zor32s* src, Zor32s* dst, Zor32s* srcDstOverlap,
                                         int winSequence, int winShape, int prevWinShape, Zor32s* buffer) {
    if (anyNull(src, dst, srcDstOverlap, buffer))
        return zorStsNullPtrErr;
    const WindowChoice choice{winSequence, winShape, prevWinShape};
    if (!choice.valid())
        return zorStsBadArgErr;
    const int length = choice.isShort() ? shortLength : frameLength;
    const WindowHalves window =
        choice.isShort() ? shortWindow<Zor32s>(prevWinShape, winShape) : longWindow<Zor32s>(choice);
    forwardMdct(srcDstOverlap, src, window, dst, length, buffer);
    std::copy_n(src, length, srcDstOverlap);
    return zorStsNoErr;
}

extern "C" ZorStatus zorsMDCTInv_AAC_32s16s(const Zor32s* src, Zor16s* dst, Zor32s* srcDstOverlap,
                                            int winSequence, int winShape, int prevWinShape, Zor32s* buffer) {
    if (anyNull(src, dst, srcDstOverlap, buffer))
        return zorStsNullPtrErr;
    const WindowChoice choice{winSequence, winShape, prevWinShape};
    if (!choice.valid())
        return zorStsBadArgErr;
    if (choice.isShort())
        inverseShort(src, dst, srcDstOverlap, choice, buffer);
    else
        inverseLong(src, dst, srcDstOverlap, choice, buffer);
    return zorStsNoErr;
}
