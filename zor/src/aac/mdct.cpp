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
constexpr int flatLength =
    (frameLength - shortLength) / 2; ///< lines of a start or stop window beside its slope

Zor32s fixed(double value, int bits) {
    return static_cast<Zor32s>(std::llrint(std::min(std::ldexp(value, bits), 2147483647.0)));
}

// ---- Windows

using Curve = std::vector<double>;

Curve sineRise(int length) {
    Curve curve;
    for (int n = 0; n < length; ++n)
        curve.push_back(std::sin(pi / (2 * length) * (n + 0.5)));
    return curve;
}

/** The modified Bessel function of order 0. */
double bessel0(double x) {
    double term = 1, sum = 1;
    for (int k = 1; term > sum * 1e-17; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

/** The rising half of a Kaiser-Bessel derived window: the root of the running sum of a Kaiser window. */
Curve kaiserRise(int length, double alpha) {
    Curve sums;
    double sum = 0;
    for (int n = 0; n <= length; ++n) {
        const double position = 2.0 * n / length - 1;
        sums.push_back(sum += bessel0(pi * alpha * std::sqrt(1 - position * position)));
    }
    Curve curve;
    for (int n = 0; n < length; ++n)
        curve.push_back(std::sqrt(sums[static_cast<std::size_t>(n)] / sum));
    return curve;
}

/** The rising half of a stop window: zeros, the short slope, ones. */
Curve stopRise(const Curve& slope) {
    Curve curve(flatLength);
    curve.insert(curve.end(), slope.begin(), slope.end());
    curve.resize(frameLength, 1.0);
    return curve;
}

/** A rising half and its mirror image. */
struct Slope {
    std::vector<Zor32s> rise, fall;

    explicit Slope(const Curve& curve) {
        for (const double value : curve)
            rise.push_back(fixed(value, 31));
        fall.assign(rise.rbegin(), rise.rend());
    }
};

/** The slopes of one window shape. */
struct Shape {
    Slope longSlope, shortSlope, flatSlope;

    Shape(const Curve& longRise, const Curve& shortRise)
        : longSlope(longRise), shortSlope(shortRise), flatSlope(stopRise(shortRise)) {}
};

const Shape shapes[2] = {{sineRise(frameLength), sineRise(shortLength)},
                         {kaiserRise(frameLength, 4), kaiserRise(shortLength, 6)}};

// ---- Transforms

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
    const WindowHalves window = longWindow(choice);
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
        const WindowHalves window = shortWindow(w == 0 ? choice.prevShape : choice.shape, choice.shape);
        kernel.addUnfolded(values, window.rise, window.fall, sum + flatLength + w * shortLength, shortLength);
    }
    kernel.toSamples(sum, samples, frameLength);
    std::copy_n(sum + frameLength, frameLength, overlap);
}

} // namespace

WindowHalves longWindow(const WindowChoice& choice) {
    const Shape& before = shapes[choice.prevShape];
    const Shape& now = shapes[choice.shape];
    const Slope& left = choice.sequence == zorAacLongStop ? before.flatSlope : before.longSlope;
    const Slope& right = choice.sequence == zorAacLongStart ? now.flatSlope : now.longSlope;
    return {left.rise.data(), right.fall.data()};
}

WindowHalves shortWindow(int before, int shape) {
    return {shapes[before].shortSlope.rise.data(), shapes[shape].shortSlope.fall.data()};
}

void forwardMdct(const Zor32s* first, const Zor32s* second, WindowHalves window, Zor32s* lines, int length,
                 Zor32s* work) {
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
    const WindowHalves window = choice.isShort() ? shortWindow(prevWinShape, winShape) : longWindow(choice);
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
