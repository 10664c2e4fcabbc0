#include "statistics.h"

#include <algorithm>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <limits>
#include <numeric>

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
    return boost::math::cdf(boost::math::students_t(freedom), t);
}

double studentQuantile(double p, double freedom) {
    return boost::math::quantile(boost::math::students_t(freedom), p);
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
