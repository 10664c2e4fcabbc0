#include "statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

/** Modified Lentz evaluation of the continued fraction of the incomplete beta function (DLMF 8.17.22). */
double betaFraction(double a, double b, double x) {
    constexpr double tiny = 1e-300;
    constexpr int steps = 500;
    const auto kept = [](double v) { return std::abs(v) < tiny ? tiny : v; };
    double c = 1;
    double d = 1 / kept(1 - (a + b) * x / (a + 1));
    double fraction = d;
    for (int m = 1; m <= steps; ++m) {
        const double even = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
        d = 1 / kept(1 + even * d);
        c = kept(1 + even / c);
        fraction *= c * d;
        const double odd = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
        d = 1 / kept(1 + odd * d);
        c = kept(1 + odd / c);
        fraction *= c * d;
        if (std::abs(c * d - 1) < std::numeric_limits<double>::epsilon())
            break;
    }
    return fraction;
}

/** Regularised incomplete beta function I_x(a, b). */
double incompleteBeta(double a, double b, double x) {
    if (x <= 0 || x >= 1)
        return x <= 0 ? 0 : 1;
    const double front =
        std::exp(std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b) + a * std::log(x) + b * std::log1p(-x));
    // The fraction converges fast below the distribution's mean; the symmetry serves the other side.
    return x < (a + 1) / (a + b + 2) ? front * betaFraction(a, b, x) / a
                                     : 1 - front * betaFraction(b, a, 1 - x) / b;
}

} // namespace

Estimate lowerMean(std::span<const double> values) {
    std::vector<double> sorted(values.begin(), values.end());
    std::sort(sorted.begin(), sorted.end());
    const std::size_t n = sorted.size();
    const std::size_t half = std::max<std::size_t>(2, (n + 1) / 2);
    const auto last = sorted.begin() + static_cast<std::ptrdiff_t>(half);
    const auto kept = static_cast<double>(half);
    const double location = std::accumulate(sorted.begin(), last, 0.0) / kept;

    std::fill(last, sorted.end(), *(last - 1));
    const double mean = std::accumulate(sorted.begin(), sorted.end(), 0.0) / static_cast<double>(n);
    const double squares = std::accumulate(sorted.begin(), sorted.end(), 0.0, [&](double sum, double v) {
        return sum + (v - mean) * (v - mean);
    });
    return {location, std::sqrt(squares / (kept * (kept - 1))), kept - 1};
}

double studentCdf(double t, double freedom) {
    const double upper = std::isinf(freedom)
                             ? 0.5 * std::erfc(std::abs(t) / std::sqrt(2.0))
                             : 0.5 * incompleteBeta(freedom / 2, 0.5, freedom / (freedom + t * t));
    return t < 0 ? upper : 1 - upper;
}

double studentQuantile(double p, double freedom) {
    if (p < 0.5)
        return -studentQuantile(1 - p, freedom);
    double low = 0;
    double high = 1;
    while (studentCdf(high, freedom) < p && high < 1e12)
        high *= 2;
    for (int i = 0; i < 200 && high - low > 1e-12 * high; ++i) {
        const double middle = (low + high) / 2;
        (studentCdf(middle, freedom) < p ? low : high) = middle;
    }
    return (low + high) / 2;
}

Estimate difference(const Estimate& first, const Estimate& second) {
    const double a = first.error * first.error;
    const double b = second.error * second.error;
    const double spread = a * a / first.freedom + b * b / second.freedom; // 0 behind an infinite freedom
    const double freedom = spread > 0 ? (a + b) * (a + b) / spread : std::numeric_limits<double>::infinity();
    return {second.location - first.location, std::sqrt(a + b), freedom};
}

double pValue(const Estimate& difference) {
    if (difference.location == 0)
        return 1;
    if (difference.error == 0)
        return 0;
    return 2 * studentCdf(-std::abs(difference.location) / difference.error, difference.freedom);
}

double halfWidth(const Estimate& difference, double confidence) {
    return difference.error * studentQuantile(0.5 + confidence / 2, difference.freedom);
}

std::vector<double> adjustedP(std::span<const double> p) {
    std::vector<std::size_t> order(p.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return p[a] > p[b]; });
    std::vector<double> adjusted(p.size());
    double least = 1;
    for (std::size_t i = 0; i < order.size(); ++i) {
        const auto rank = static_cast<double>(order.size() - i); // 1 for the smallest p
        least = std::min(least, p[order[i]] * static_cast<double>(order.size()) / rank);
        adjusted[order[i]] = least;
    }
    return adjusted;
}

double geometricMean(std::span<const double> values) {
    if (values.empty())
        return 1;
    const double logs = std::accumulate(values.begin(), values.end(), 0.0,
                                        [](double sum, double v) { return sum + std::log(v); });
    return std::exp(logs / static_cast<double>(values.size()));
}
