#include "changepoint.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace {

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

/** A level with what the figures around it cost, in units of the noise. */
struct Fit {
    double at = 0;
    double cost = 0;
};

/** The level of some figures: from their median on, the mean of those within the bound, while it moves. */
Fit fit(std::span<const double> figures, double bound) {
    constexpr int mostMoves = 8;
    Fit level{medianOf({figures.begin(), figures.end()}), 0};
    for (int i = 0; i < mostMoves; ++i) {
        double sum = 0;
        int count = 0;
        for (const double figure : figures) {
            if (std::abs(figure - level.at) < bound) {
                sum += figure;
                ++count;
            }
        }
        if (count == 0 || sum / count == level.at)
            break;
        level.at = sum / count;
    }
    for (const double figure : figures) {
        const double distance = std::min(std::abs(figure - level.at), bound);
        level.cost += distance * distance;
    }
    return level;
}

/** First figures of the best levels, in order; the first is figure 0. */
std::vector<std::size_t> bestBegins(std::span<const double> figures, const StepRules& rules) {
    constexpr double never = std::numeric_limits<double>::infinity();
    const std::size_t n = figures.size();
    std::vector<double> least(n + 1, never); // for the figures before each place, a penalty for each level
    std::vector<std::size_t> previous(n + 1, 0);
    std::vector<std::size_t> candidates{0};
    std::vector<double> costs;
    least[0] = 0;
    for (std::size_t end = rules.shortest; end <= n; ++end) {
        if (end >= 2 * rules.shortest)
            candidates.push_back(end - rules.shortest);
        costs.clear();
        for (const std::size_t begin : candidates) {
            costs.push_back(least[begin] + fit(figures.subspan(begin, end - begin), rules.outlier).cost);
            if (costs.back() + rules.penalty < least[end]) {
                least[end] = costs.back() + rules.penalty;
                previous[end] = begin;
            }
        }
        // A level from a beginning that costs more than all levels up to here is never best once a level from
        // here can be: costs only grow. Until then the others cost `shortest` bounds more at most.
        const double hope = least[end] + static_cast<double>(rules.shortest) * rules.outlier * rules.outlier;
        std::size_t i = 0;
        std::erase_if(candidates, [&](std::size_t) { return costs[i++] > hope; });
    }
    std::vector<std::size_t> begins;
    for (std::size_t end = n; end > 0; end = previous[end])
        begins.push_back(previous[end]);
    std::reverse(begins.begin(), begins.end());
    return begins;
}

/** Levels of figures without noise; small changes count together. */
std::vector<Level> provenLevels(std::span<const double> figures, double least) {
    std::vector<Level> levels{{0, figures.front()}};
    for (std::size_t i = 1; i < figures.size(); ++i)
        if (std::abs(figures[i] - levels.back().at) >= least)
            levels.push_back({i, figures[i]});
    return levels;
}

} // namespace

double noiseOf(std::span<const double> figures) {
    constexpr double normal = 1.4826 / 1.4142135623730951; // median distance of two normal values
    double noise = 0;
    for (const std::size_t apart : {1U, 2U, 5U}) {
        if (apart > 1 && figures.size() < 5 * apart)
            break; // one step would be in most of the differences
        std::vector<double> differences;
        for (std::size_t i = apart; i < figures.size(); ++i)
            differences.push_back(std::abs(figures[i] - figures[i - apart]));
        if (!differences.empty())
            noise = std::max(noise, normal * medianOf(std::move(differences)));
    }
    return noise;
}

std::vector<Level> findLevels(std::span<const double> figures, const StepRules& rules) {
    if (figures.empty())
        return {};
    if (rules.proven)
        return provenLevels(figures, rules.least);
    const double noise = std::max(noiseOf(figures), rules.leastNoise);
    std::vector<double> scaled;
    std::transform(figures.begin(), figures.end(), std::back_inserter(scaled),
                   [&](double figure) { return figure / noise; });
    std::vector<std::size_t> begins{0};
    if (figures.size() >= 2 * rules.shortest)
        begins = bestBegins(scaled, rules);
    while (true) {
        std::vector<Level> levels;
        for (std::size_t i = 0; i < begins.size(); ++i) {
            const std::size_t end = i + 1 < begins.size() ? begins[i + 1] : figures.size();
            const auto part = std::span(scaled).subspan(begins[i], end - begins[i]);
            levels.push_back({begins[i], fit(part, rules.outlier).at * noise});
        }
        // The smallest step goes first: what it told apart is one level from then on.
        std::size_t smallest = 0;
        double size = rules.least;
        for (std::size_t i = 1; i < levels.size(); ++i) {
            if (std::abs(levels[i].at - levels[i - 1].at) < size) {
                size = std::abs(levels[i].at - levels[i - 1].at);
                smallest = i;
            }
        }
        if (smallest == 0)
            return levels;
        begins.erase(begins.begin() + static_cast<std::ptrdiff_t>(smallest));
    }
}
