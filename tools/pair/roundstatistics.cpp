#include "roundstatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <utility>

namespace {

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

/** What the value with this rank among n counts. Capped, ranks in the upper half count alike, so that one or
 * two rounds far on the other side do not outweigh all the rest. */
std::size_t scoreOf(std::size_t rank, std::size_t n, bool capped) {
    return capped ? std::min(rank, n / 2 + 1) : rank;
}

/** Probabilities that the sum of signed scores is at most 0, 1, ... their sum when each sign is a toss of a
 * coin. */
std::vector<double> signedRankTail(std::size_t n, bool capped) {
    std::vector<double> p(1, 1);
    for (std::size_t rank = 1; rank <= n; ++rank) {
        const std::size_t score = scoreOf(rank, n, capped);
        p.resize(p.size() + score, 0);
        for (std::size_t sum = p.size(); sum-- > 0;)
            p[sum] = (p[sum] + (sum >= score ? p[sum - score] : 0)) / 2;
    }
    std::partial_sum(p.begin(), p.end(), p.begin());
    return p;
}

/** Those that are kept for later are few: numbers of rounds. */
const std::vector<double>& tailOf(std::size_t n, bool capped) {
    static std::map<std::pair<std::size_t, bool>, std::vector<double>> tails;
    const auto [tail, isNew] = tails.try_emplace({n, capped});
    if (isNew)
        tail->second = signedRankTail(n, capped);
    return tail->second;
}

/** The values that lie near enough to a middle, less the middle. */
std::vector<double> nearTo(double middle, std::span<const double> values, double reach) {
    std::vector<double> near, distances;
    for (const double value : values) {
        near.push_back(value - middle);
        distances.push_back(std::abs(value - middle));
    }
    const double most = reach * median(distances);
    std::erase_if(near, [most](double value) { return std::abs(value) > most; });
    return near;
}

/** Twice the probability that values which lie symmetrically about the middle lie as far to one side. */
double probabilityOf(double middle, std::span<const double> values, FarValues far) {
    std::vector<double> near = nearTo(middle, values, far.reach);
    std::sort(near.begin(), near.end(), [](double a, double b) { return std::abs(a) < std::abs(b); });
    std::size_t below = 0;
    for (std::size_t i = 0; i < near.size(); ++i)
        below += near[i] < 0 ? scoreOf(i + 1, near.size(), far.capped) : 0;
    const std::vector<double>& tail = tailOf(near.size(), far.capped);
    return std::min(1.0, 2 * tail[std::min(below, tail.size() - 1 - below)]);
}

/** The end of what is not refused from a centre on, with steps that grow: beyond the end the test may refuse
 * nothing again, where what was left out comes into reach. */
double endFrom(double centre, double step, std::span<const double> values, double alpha, FarValues far) {
    constexpr int halvings = 50;
    const auto refused = [&](double middle) { return probabilityOf(middle, values, far) <= alpha; };
    double inner = centre, outer = centre + step;
    for (; !refused(outer); step *= 2, outer += step)
        inner = outer;
    for (int i = 0; i < halvings; ++i) {
        const double middle = inner + (outer - inner) / 2;
        (refused(middle) ? outer : inner) = middle;
    }
    return inner;
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

Centre signedRankCentre(std::span<const double> values, double alpha, FarValues far) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    if (values.empty())
        return {0, -infinite, infinite};
    std::vector<double> copy(values.begin(), values.end());
    const double middle = median(copy);
    const std::vector<double> near = nearTo(middle, values, far.reach);
    std::vector<double> means;
    means.reserve(near.size() * (near.size() + 1) / 2);
    for (std::size_t i = 0; i < near.size(); ++i)
        for (std::size_t j = i; j < near.size(); ++j)
            means.push_back((near[i] + near[j]) / 2);
    Centre result{middle + median(means), -infinite, infinite};
    if (tailOf(values.size(), far.capped).front() * 2 <= alpha) { // all of them on one side of it
        constexpr double smallest = 1e-12;
        std::vector<double> distances;
        for (const double value : near)
            distances.push_back(std::abs(value));
        const double step = std::max(median(distances) / 8, smallest);
        result.low = endFrom(result.centre, -step, values, alpha, far);
        result.high = endFrom(result.centre, step, values, alpha, far);
    }
    return result;
}

PairVerdict sideOfZero(std::span<const double> values, double alpha) {
    if (values.empty() || probabilityOf(0, values, usually) > alpha)
        return PairVerdict::cannotTell;
    std::vector<double> near = nearTo(0, values, usually.reach);
    return median(near) > 0 ? PairVerdict::slower : PairVerdict::faster;
}

int Looks::next(int rounds) {
    int look = fewest;
    while (look <= rounds)
        look += look / 2;
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
    if (const PairVerdict sure = sideOfZero(rounds, alpha); sure != PairVerdict::cannotTell)
        judgement.verdict = sure;
    if (interval.low >= -limit && interval.high <= limit)
        judgement.verdict = PairVerdict::same;
    const double half = (interval.high - interval.low) / 2;
    judgement.decided = judgement.verdict != PairVerdict::cannotTell &&
                        half <= std::max(limit, std::abs(interval.centre) / 10);
    return judgement;
}
