// What the steps of a history are worth on recorded noise: false alarms, and steps put into it that are
// found.
//
//     history_bench [--rows] [--runs R] [--first N] DIR
//
// DIR holds recordings of one unchanged build, as a history would (record.sh makes them); R of them in a row
// are taken for the runs of one build. Each series of them is searched for steps as it is, and with a step of
// 3 % put into the last five, ten and twenty of them: as much as a nightly job knows five, ten and twenty
// builds later.
#include "history.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

namespace {

/** Values of the series, without the builds that have none. */
std::vector<double> valuesOf(const Series& series) {
    std::vector<double> values;
    for (const auto& value : series.values)
        if (value)
            values.push_back(*value);
    return values;
}

/** Makes one build of so many recordings in a row; what is left over goes. */
void joinRuns(std::vector<HistoryBuild>& builds, std::size_t runs) {
    std::vector<HistoryBuild> joined;
    for (std::size_t i = 0; i + runs <= builds.size(); i += runs) {
        joined.push_back(std::move(builds[i]));
        for (std::size_t run = 1; run < runs; ++run) {
            const std::vector<HistoryFigure>& more = builds[i + run].figures;
            joined.back().figures.insert(joined.back().figures.end(), more.begin(), more.end());
        }
    }
    builds = std::move(joined);
}

struct Counts {
    int series = 0, alarms = 0;
    std::array<int, 3> tried{}, found{};
};

constexpr std::array<std::size_t, 3> builds{5, 10, 20};

/** A step at the place where it is, to two builds, of its size, to a half of it. */
bool isFound(const std::vector<Level>& levels, std::size_t place, double size) {
    for (std::size_t i = 1; i < levels.size(); ++i) {
        const double error = std::abs(levels[i].at - levels[i - 1].at - size);
        if (levels[i].begin + 2 >= place && levels[i].begin <= place + 2 && error < size / 2)
            return true;
    }
    return false;
}

Counts judge(const std::vector<std::vector<double>>& all, const StepRules& rules, double step) {
    constexpr std::size_t stride = 10; // ends of the series that a step is put before
    Counts counts;
    for (const std::vector<double>& values : all) {
        ++counts.series;
        counts.alarms += findLevels(values, rules).size() > 1;
        for (std::size_t i = 0; i < builds.size(); ++i) {
            for (std::size_t end = 20 + builds[i]; end <= values.size(); end += stride) {
                std::vector<double> stepped(values.begin(),
                                            values.begin() + static_cast<std::ptrdiff_t>(end));
                for (std::size_t at = end - builds[i]; at < end; ++at)
                    stepped[at] += step;
                ++counts.tried[i];
                counts.found[i] += isFound(findLevels(stepped, rules), end - builds[i], step);
            }
        }
    }
    return counts;
}

} // namespace

int main(int argc, char** argv) try {
    SeriesOf what = SeriesOf::functions;
    std::size_t first = 0;
    std::size_t runs = 1;
    std::string directory;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--rows")
            what = SeriesOf::rows;
        else if (word == "--first" && i + 1 < argc)
            first = std::stoul(argv[++i]);
        else if (word == "--runs" && i + 1 < argc)
            runs = std::max(1UL, std::stoul(argv[++i]));
        else
            directory = word;
    }
    BuildList list = readBuilds({directory}, false);
    joinRuns(list.builds, runs);
    if (first > 0 && first < list.builds.size())
        list.builds.resize(first);
    std::vector<std::vector<double>> all;
    std::vector<double> noises;
    std::size_t values = 0;
    for (const Series& series : makeHistory(list.builds, what).series) {
        all.push_back(valuesOf(series));
        if (all.back().size() < 2 * StepRules{}.shortest) {
            all.pop_back();
            continue;
        }
        values += all.back().size();
        noises.push_back(noiseOf(all.back()));
    }
    if (all.empty())
        return std::puts("no series of ten figures"), 2;
    std::sort(noises.begin(), noises.end());
    std::printf(
        "%zu series of %zu builds (%.0f with a value), noise %.2f %% in the middle, %.2f %% at most\n",
        all.size(), list.builds.size(), static_cast<double>(values) / static_cast<double>(all.size()),
        100 * noises[noises.size() / 2], 100 * noises.back());
    std::puts("penalty  bound  false alarms  3 % found 5, 10, 20 builds later");
    for (const double penalty : {15., 20., 25., 30., 40., 50.}) {
        for (const double bound : {3., 4., 5.}) {
            StepRules rules;
            rules.penalty = penalty;
            rules.outlier = bound;
            const Counts counts = judge(all, rules, std::log(1.03));
            std::printf("%7.0f  %5.0f  %5d of %4d ", penalty, bound, counts.alarms, counts.series);
            for (std::size_t i = 0; i < builds.size(); ++i)
                std::printf("  %5.1f %% of %d", 100. * counts.found[i] / std::max(1, counts.tried[i]),
                            counts.tried[i]);
            std::puts("");
        }
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "history_bench: %s\n", error.what());
    return 2;
}
