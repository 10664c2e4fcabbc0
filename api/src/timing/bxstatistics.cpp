#include "timing/bxstatistics.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

double bxDifference(double a, double b) {
    return 2 * std::abs(a - b) / (a + b);
}

double bxLargestDeviation(const std::vector<double>& values) {
    if (values.empty())
        return 0;
    const double mean =
        std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
    if (mean <= 0)
        return 1; // no clocks were counted: as inaccurate as can be, and no division that raises a flag
    double largest = 0;
    for (const double value : values)
        largest = std::max(largest, std::abs(value - mean));
    return largest / mean;
}

double bxMedian(std::vector<double> values) {
    if (values.empty())
        return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return (*std::max_element(values.begin(), middle) + *middle) / 2;
}

namespace {

/** Ranks from -(n - 1) / 2 to (n - 1) / 2; equal values have the mean of theirs. */
std::vector<double> centredRanks(const std::vector<double>& values) {
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> ranks;
    for (const double value : values) {
        const auto [first, behind] = std::equal_range(sorted.begin(), sorted.end(), value);
        const auto last = behind - 1;
        ranks.push_back(static_cast<double>((first - sorted.begin()) + (last - sorted.begin())) / 2 -
                        (static_cast<double>(values.size()) - 1) / 2);
    }
    return ranks;
}

} // namespace

double bxNeighbourCorrelation(const std::vector<double>& values) {
    const std::vector<double> ranks = centredRanks(values);
    const double squares = std::inner_product(ranks.begin(), ranks.end(), ranks.begin(), 0.0);
    if (squares == 0)
        return 0;
    const auto n = static_cast<double>(values.size());
    const double products = std::inner_product(ranks.begin() + 1, ranks.end(), ranks.begin(), 0.0);
    const double ofRanks = std::clamp(products / squares * n / (n - 1), -1.0, 1.0);
    const double r = 2 * std::sin(std::numbers::pi / 6 * ofRanks);
    const double error = std::sqrt(std::max(1 - r * r, 0.05) / n);
    return std::clamp((n * r + 1) / (n - 3) + error, 0.0, 0.97);
}

double bxCorrelationTime(double correlation, int count) {
    double time = 1;
    double power = correlation;
    for (int lag = 1; lag < count && power > 1e-4; ++lag, power *= correlation)
        time += 4 / std::numbers::pi * std::asin(power) * (1 - static_cast<double>(lag) / count);
    return time;
}

double bxWidening(double correlationTime, int count) {
    return std::sqrt(correlationTime / std::max(1 - 2 * (correlationTime - 1) / count, 0.2));
}

bxInterval bxMedianInterval(std::vector<double> values, double confidence) {
    if (values.empty())
        return {};
    std::sort(values.begin(), values.end());
    const auto n = static_cast<int>(values.size());
    const auto value = [&](int rank) { return values[static_cast<std::size_t>(rank - 1)]; };

    // The values of rank k and n + 1 - k enclose the median with 1 - 2 P(at most k - 1 of n coins show
    // heads).
    double coins = std::ldexp(1.0, -n);
    double tail = coins;
    double outer = 1 - 2 * tail;
    if (outer <= confidence)
        return {value(1), value(n)};
    int k = 1;
    double inner = outer;
    for (; k <= n / 2; ++k) {
        coins *= static_cast<double>(n + 1 - k) / k;
        tail += coins;
        inner = 1 - 2 * tail;
        if (inner <= confidence)
            break;
        outer = inner;
    }
    const double share = (outer - confidence) / (outer - inner);
    const double weight = (n - k) * share / (k + (n - 2 * k) * share);
    return {std::lerp(value(k), value(k + 1), weight), std::lerp(value(n + 1 - k), value(n - k), weight)};
}
