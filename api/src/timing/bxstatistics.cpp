#include "timing/bxstatistics.h"

#include <algorithm>
#include <cmath>
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

std::vector<double> bxBatchMedians(const std::vector<double>& values, int size) {
    std::vector<double> medians;
    for (auto begin = values.begin(); values.end() - begin >= size; begin += size)
        medians.push_back(bxMedian({begin, begin + size}));
    return medians;
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
