#include "aac/windows.h"

#include <numbers>
#include <vector>

namespace zor::aac {

namespace {

constexpr double pi = std::numbers::pi;

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

void sample(double value, Zor32s& to) {
    to = fixed(value, 31);
}
void sample(double value, Zor32f& to) {
    to = static_cast<Zor32f>(value);
}

/** A rising half and its mirror image. */
template <class Sample>
struct Slope {
    std::vector<Sample> rise, fall;

    explicit Slope(const Curve& curve) : rise(curve.size()) {
        for (std::size_t i = 0; i < curve.size(); ++i)
            sample(curve[i], rise[i]);
        fall.assign(rise.rbegin(), rise.rend());
    }
};

/** The slopes of one window shape. */
template <class Sample>
struct Shape {
    Slope<Sample> longSlope, shortSlope, flatSlope;

    Shape(const Curve& longRise, const Curve& shortRise)
        : longSlope(longRise), shortSlope(shortRise), flatSlope(stopRise(shortRise)) {}
};

template <class Sample>
const Shape<Sample> shapes[2] = {{sineRise(frameLength), sineRise(shortLength)},
                                 {kaiserRise(frameLength, 4), kaiserRise(shortLength, 6)}};

} // namespace

template <class Sample>
WindowHalves<Sample> longWindow(const WindowChoice& choice) {
    const Shape<Sample>& before = shapes<Sample>[choice.prevShape];
    const Shape<Sample>& now = shapes<Sample>[choice.shape];
    const Slope<Sample>& left = choice.sequence == zorAacLongStop ? before.flatSlope : before.longSlope;
    const Slope<Sample>& right = choice.sequence == zorAacLongStart ? now.flatSlope : now.longSlope;
    return {left.rise.data(), right.fall.data()};
}

template <class Sample>
WindowHalves<Sample> shortWindow(int before, int shape) {
    return {shapes<Sample>[before].shortSlope.rise.data(), shapes<Sample>[shape].shortSlope.fall.data()};
}

template WindowHalves<Zor32s> longWindow(const WindowChoice&);
template WindowHalves<Zor32f> longWindow(const WindowChoice&);
template WindowHalves<Zor32s> shortWindow(int, int);
template WindowHalves<Zor32f> shortWindow(int, int);

} // namespace zor::aac
