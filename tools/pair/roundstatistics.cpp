#include "roundstatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

/** Probabilities of the sums of signed ranks 0 to n (n + 1) / 2 when each sign is a toss of a coin. */
std::vector<double> signedRankProbabilities(std::size_t n) {
    std::vector<double> p(n * (n + 1) / 2 + 1, 0);
    p[0] = 1;
    std::size_t largest = 0;
    for (std::size_t rank = 1; rank <= n; ++rank) {
        largest += rank;
        for (std::size_t sum = largest + 1; sum-- > 0;)
            p[sum] = (p[sum] + (sum >= rank ? p[sum - rank] : 0)) / 2;
    }
    return p;
}

/** How many of the smallest means of pairs lie outside the interval on each side: the largest number whose
 * probability is at most alpha / 2. 0 where there is none. */
std::size_t outside(std::size_t n, double alpha) {
    const std::vector<double> p = signedRankProbabilities(n);
    double tail = 0;
    std::size_t count = 0;
    while (count < p.size() && (tail += p[count]) <= alpha / 2)
        ++count;
    return count;
}

} // namespace

std::optional<double> ratioOfRound(std::span<const double> first, std::span<const double> second,
                                   bool firstIsBefore) {
    constexpr std::size_t fewest = 3; // with the one that warms up
    const std::size_t turns = std::min(first.size(), second.size());
    if (turns < fewest)
        return std::nullopt;
    std::vector<double> logs;
    for (std::size_t i = 1; i < turns; ++i) {
        logs.push_back(std::log(second[i] / first[i]));
        if (i + 1 < turns)
            logs.push_back(std::log(second[i] / first[i + 1]));
    }
    const double middle = median(logs);
    return firstIsBefore ? middle : -middle;
}

Centre signedRankCentre(std::span<const double> values, double alpha) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    if (values.empty())
        return {0, -infinite, infinite};
    std::vector<double> means;
    means.reserve(values.size() * (values.size() + 1) / 2);
    for (std::size_t i = 0; i < values.size(); ++i)
        for (std::size_t j = i; j < values.size(); ++j)
            means.push_back((values[i] + values[j]) / 2);
    const std::size_t left = outside(values.size(), alpha);
    Centre result{median(means), -infinite, infinite};
    std::sort(means.begin(), means.end());
    if (left > 0) {
        result.low = means[left - 1];
        result.high = means[means.size() - left];
    }
    return result;
}

int Looks::next(int rounds) {
    int look = fewest;
    while (look <= rounds)
        look += (look + 3) / 4;
    return look;
}

double Looks::alphaAt(int rounds) const {
    int look = 0;
    const auto spent = [&] { return m_alpha / ((look + 1.0) * (look + 2.0)); };
    const auto reachable = [&](int at) { return std::ldexp(1, 1 - at) <= spent(); };
    for (int at = fewest; at < rounds; at = next(at))
        look += reachable(at);
    return reachable(rounds) ? spent() : 0;
}

Judgement judgeRounds(std::span<const double> rounds, double alpha, double threshold, PairVerdict before) {
    constexpr double intervalAlpha = 0.05;
    Judgement judgement;
    judgement.centre = signedRankCentre(rounds, intervalAlpha);
    const Centre& interval = judgement.centre;
    const double limit = std::log1p(threshold);
    if ((before == PairVerdict::slower && interval.low > 0) ||
        (before == PairVerdict::faster && interval.high < 0))
        judgement.verdict = before;
    if (alpha > 0) {
        const Centre sure = signedRankCentre(rounds, alpha);
        if (sure.low > 0)
            judgement.verdict = PairVerdict::slower;
        else if (sure.high < 0)
            judgement.verdict = PairVerdict::faster;
    }
    if (interval.low >= -limit && interval.high <= limit)
        judgement.verdict = PairVerdict::same;
    const double half = (interval.high - interval.low) / 2;
    judgement.decided = judgement.verdict != PairVerdict::cannotTell &&
                        half <= std::max(limit, std::abs(interval.centre) / 10);
    return judgement;
}
