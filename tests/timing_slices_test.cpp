#include "timing/bxslices.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>

namespace {

TEST(Statistics, MedianIsTheMiddleOfTheValues) {
    EXPECT_EQ(bxMedian({}), 0);
    EXPECT_EQ(bxMedian({7}), 7);
    EXPECT_EQ(bxMedian({3, 1, 2}), 2);
    EXPECT_EQ(bxMedian({4, 1, 1000, 2}), 3);
}

struct IntervalCase {
    int values; // 1, 2, ... in a mixed order
    double confidence;
    double low, high;
};

// Worked by hand: of n coins at most k - 1 show heads with probability t(k); ranks k and n + 1 - k hold the
// median with 1 - 2 t(k).
TEST(Statistics, IntervalOfTheMedianInterpolatesBetweenOrderStatistics) {
    const IntervalCase cases[] = {
        {1, 0.95, 1, 1},
        {5, 0.95, 1, 5}, // 1 - 2/32 = 93.75 % is all that there is
        // 1 - 2/256 = 99.22 %, 1 - 18/256 = 92.97 %: share 0.675, weight 7 * 0.675 / (1 + 6 * 0.675) =
        // 0.93564
        {8, 0.95, 1.93564, 7.06436},
        // exactly the confidence of rank 2: 1 - 18/256
        {8, 0.9296875, 2, 7},
        // 1 - 2 * 56/1024 = 89.06 % (rank 3), 1 - 2 * 11/1024 = 97.85 % (rank 2): share 0.32444, weight
        // 8 * 0.32444 / (2 + 6 * 0.32444) = 0.65765
        {10, 0.95, 2.65765, 8.34235},
        // an even number at a low confidence ends at the two values in the middle
        {4, 0.01, 2.48675, 2.51325},
    };
    for (const IntervalCase& c : cases) {
        std::vector<double> values;
        for (int i = 1; i <= c.values; ++i)
            values.insert(i % 2 ? values.end() : values.begin(), i);
        const bxInterval interval = bxMedianInterval(values, c.confidence);
        EXPECT_NEAR(interval.low, c.low, 1e-4) << c.values << " values at " << c.confidence;
        EXPECT_NEAR(interval.high, c.high, 1e-4) << c.values << " values at " << c.confidence;
    }
    EXPECT_EQ(bxMedianInterval({}).high, 0);
}

TEST(Statistics, NeighboursAreAsCorrelatedAsTheirRanks) {
    std::vector<double> rising, alternating;
    for (int i = 0; i < 20; ++i) {
        rising.push_back(i * i);
        alternating.push_back(i % 2 ? i : -i);
    }
    EXPECT_EQ(bxNeighbourCorrelation(rising), 0.97);
    EXPECT_EQ(bxNeighbourCorrelation(alternating), 0);
    EXPECT_EQ(bxNeighbourCorrelation({7, 7, 7, 7, 7}), 0);
}

TEST(Statistics, ACorrelatedMedianIsWorthFewerValues) {
    EXPECT_EQ(bxCorrelationTime(0, 50), 1);
    EXPECT_NEAR(bxCorrelationTime(0.5, 2), 1 + 1 / 3.0, 1e-12); // 4/pi * pi/6 * 1/2
    EXPECT_NEAR(bxCorrelationTime(0.5, 3), 1 + 4 / 9.0 + 0.10724, 1e-5);
    EXPECT_EQ(bxWidening(1, 16), 1);
    EXPECT_DOUBLE_EQ(bxWidening(3, 16), 2); // sqrt(3 / (1 - 2 * 2 / 16))
}

/** A slice of a function of `clocks`, at `rate` core clocks a count, whose reference moves by `movement`,
 * relative. */
bxSlice slice(double clocks, double rate, double movement = 0) {
    return {clocks / rate, (1 - movement / 2) / rate, (1 + movement / 2) / rate};
}

TEST(SliceSeries, GivesTheMedianInCoreClocks) {
    bxSliceSeries series;
    for (int i = 0; i < 9; ++i)
        series.add(slice(100 + i * 4 % 9, 1.5 + 0.1 * i)); // a drifting clock does not touch the figure
    series.add(slice(500, 1.5, 0.2));
    const bxPreciseFigure figure = series.figure(0.05);
    EXPECT_DOUBLE_EQ(figure.clocks, 104);
    EXPECT_DOUBLE_EQ(figure.coreClocksPerTick, 1.9);
    EXPECT_EQ(figure.slices, 9);
    EXPECT_EQ(figure.dropped, 1);
    EXPECT_TRUE(figure.known);
    EXPECT_TRUE(figure.reached);
    EXPECT_FALSE(series.figure(0.01).reached);
    EXPECT_LT(figure.low, 102);
    EXPECT_GT(figure.high, 106);
    EXPECT_FALSE(figure.settled) << "nine slices show too little of each other";
}

TEST(SliceSeries, NeighboursThatErrAlikeDoNotMakeItSure) {
    bxSliceSeries alone, alike; // the same values, one by one and in fours
    for (int i = 0; i < 64; ++i) {
        alone.add(slice(100 + i * 7 % 16, 1));
        alike.add(slice(100 + i / 4, 1));
    }
    const bxPreciseFigure sure = alone.figure(0.05), unsure = alike.figure(0.05);
    EXPECT_DOUBLE_EQ(sure.clocks, unsure.clocks);
    EXPECT_GT(unsure.high - unsure.low, 2 * (sure.high - sure.low));
    EXPECT_TRUE(sure.settled);
    EXPECT_FALSE(unsure.settled);
}

TEST(SliceSeries, AnInterruptMovesTheDifferenceAsFarInEither) {
    constexpr double call = 100, interrupt = 3000, length = 32'000;
    constexpr int n = 320;
    const double inOnce = bxDisagreement(call + interrupt / n, call, n, length);
    const double inTwice = bxDisagreement(call, call + interrupt / (2 * n), n, length);
    EXPECT_NEAR(inOnce * length, interrupt, 1e-6);
    EXPECT_NEAR(inTwice * (length + interrupt), interrupt, 1e-6); // by the length that the slice then has
    EXPECT_EQ(bxDisagreement(call, call, n, length), 0);
}

TEST(SliceSeries, CleanSlicesAreTheFigureHoweverFew) {
    constexpr double full = 4;
    bxSliceSeries series;
    EXPECT_EQ(series.figure(0.5, full).clocks, 0);
    series.add({100, 0, 0}); // a counter that stands still
    EXPECT_EQ(series.figure(0.5, full).clocks, 0);
    for (int i = 0; i < 20; ++i)
        series.add(slice(150, 1, 0.006));
    bxPreciseFigure figure = series.figure(0.05, full);
    EXPECT_DOUBLE_EQ(figure.clocks, 150) << "there is nothing else";
    EXPECT_EQ(figure.slices, 0);
    EXPECT_EQ(figure.dropped, 21);
    EXPECT_FALSE(figure.known || figure.reached);
    for (const double throughput : {2.2, 2.0, 3.96})
        series.add({130, 1, 1, 0, throughput});
    EXPECT_TRUE(series.endsShared(full));
    EXPECT_FALSE(series.endsShared(0)) << "nothing is known of the core";
    figure = series.figure(0.05, full);
    EXPECT_DOUBLE_EQ(figure.clocks, 130);
    EXPECT_EQ(figure.slices, 3);
    EXPECT_FALSE(figure.known || figure.reached);
    EXPECT_NEAR(figure.lost, 1 - 2.2 / full, 1e-9); // the median of the slices
    for (int i = 1; i <= bxSliceSeries::fewestForInterval; ++i) {
        series.add({90, 1, 1, 0.06, 4}); // an interrupt struck
        series.add({100, 1, 1, 0.04, 3.98});
        EXPECT_FALSE(series.endsShared(full));
        figure = series.figure(0.05, full);
        const bool enough = i == bxSliceSeries::fewestForInterval;
        EXPECT_DOUBLE_EQ(figure.clocks, 100) << i;
        EXPECT_EQ(figure.slices, i);
        EXPECT_EQ(figure.known, enough) << i;
        EXPECT_EQ(figure.reached, enough) << i;
        EXPECT_EQ(figure.lost > 0, !enough) << i;
    }
}

TEST(OwnCore, KnowsTheMostThatTwoUndisturbedSlicesShow) {
    bxOwnCore core;
    const auto saw = [&](double throughput, double reference = 1, double disagreement = 0) {
        core.saw({100, reference, reference, disagreement, throughput});
        return core.throughput();
    };
    EXPECT_EQ(saw(2), 0);
    EXPECT_EQ(saw(2.1), 2);
    EXPECT_EQ(saw(9), 2.1); // once: a wrong one
    EXPECT_EQ(saw(3.9), 3.9);
    EXPECT_EQ(saw(4), 3.9);
    EXPECT_EQ(saw(8, 1, 0.2), 3.9);
    EXPECT_EQ(saw(8, 0), 3.9);
    EXPECT_EQ(saw(2), 3.9);
    EXPECT_EQ(saw(2), 3.9);
    bxPreciseFigure shared;
    shared.lost = 0.4;
    core.seriesEnded(shared);
    core.seriesEnded(shared);
    EXPECT_EQ(core.patience(), 0.25);
    core.seriesEnded({});
    EXPECT_EQ(core.patience(), 1);
}

TEST(OwnCore, OfWhichLessIsLeftForGoodIsTakenForWhatItIs) {
    bxOwnCore company, slower;
    for (int i = 0; i < 10; ++i) {
        company.saw({100, 1, 1, 0, 4});
        slower.saw({100, 1, 1, 0, 4});
    }
    for (int i = 0; i < bxOwnCore::steady; ++i) {
        EXPECT_EQ(slower.throughput(), 4) << i;
        company.saw({100, 1, 1, 0, 2.97 + 0.001 * (i % 20)}); // steady, but not as a core alone is
        slower.saw({100, 1, 1, 0, 2.97 + 0.001 * (i % 3)});
    }
    EXPECT_EQ(company.throughput(), 4);
    EXPECT_DOUBLE_EQ(slower.throughput(), 2.97);
}

// Whatever the accuracy that ends a series, the interval holds the truth as often as it says: in 93 to 98 %
// of the series, with neighbours that depend on each other too.

/** Values around 1000, each with a deviation of 1 but for what disturbs it. */
class Simulated {
  public:
    struct Kind {
        const char* name;
        double correlation; ///< of neighbours, of an autoregressive series of the first order
        double disturbed;   ///< share of the slices that err 20 times as much
        double burst;       ///< slices that a disturbance, the same for all of them, lasts
    };

    explicit Simulated(const Kind& kind) : m_kind(kind) { m_state = m_normal(m_random); }

    void next() { m_state = m_normal(m_random); }

    double operator()() {
        const double rho = m_kind.correlation;
        const double noise = m_normal(m_random);
        m_state = rho * m_state + std::sqrt(1 - rho * rho) * noise;
        if (m_kind.burst == 0)
            return 1000 + (m_uniform(m_random) < m_kind.disturbed ? 20 * m_state : m_state);
        const double leaves = 1 / m_kind.burst, comes = leaves * m_kind.disturbed / (1 - m_kind.disturbed);
        if (m_uniform(m_random) < (m_inBurst ? leaves : comes)) {
            m_inBurst = !m_inBurst;
            m_offset = 10 * m_normal(m_random);
        }
        return 1000 + m_state + (m_inBurst ? m_offset : 0);
    }

  private:
    Kind m_kind;
    std::mt19937 m_random{4711}; // NOLINT: the same in every run
    std::normal_distribution<double> m_normal;
    std::uniform_real_distribution<double> m_uniform;
    double m_state = 0, m_offset = 0;
    bool m_inBurst = false;
};

TEST(Statistics, TheCorrelationIsThatOfTheValues) {
    constexpr int values = 4000;
    for (const double correlation : {0.3, 0.5, 0.9}) {
        Simulated value({"", correlation, 0, 0});
        std::vector<double> series(values);
        std::generate(series.begin(), series.end(), std::ref(value));
        EXPECT_NEAR(bxNeighbourCorrelation(series), correlation + 1 / std::sqrt(values), 0.05);
    }
}

TEST(SliceSeries, IntervalHoldsTheTruthOfDependentSlicesToo) {
    const Simulated::Kind kinds[] = {
        {"independent", 0, 0, 0},      {"neighbours 0.5", 0.5, 0, 0},       {"neighbours 0.7", 0.7, 0, 0},
        {"neighbours 0.9", 0.9, 0, 0}, {"one in ten disturbed", 0, 0.1, 0}, {"bursts of five", 0, 0.1, 5}};
    constexpr int series = 1500;
    constexpr int most = 93; // as many as the time allows of short calls
    for (const Simulated::Kind& kind : kinds) {
        std::printf("%-20s", kind.name);
        for (const double accuracy : {0.05, 0.001, 0.0005, 0.0002}) {
            Simulated value(kind);
            int held = 0;
            long slices = 0;
            for (int i = 0; i < series; ++i) {
                value.next();
                bxSliceSeries one;
                bxPreciseFigure figure;
                for (int next = bxSliceSeries::fewest;
                     one.count() < most && !(figure.reached && figure.settled);) {
                    one.add(slice(value(), 1.75));
                    if (one.count() < next && one.count() < most)
                        continue;
                    figure = one.figure(accuracy);
                    next = bxSliceSeries::nextLook(one.count());
                }
                held += figure.low <= 1000 && 1000 <= figure.high;
                slices += one.count();
            }
            const double cover = 100.0 * held / series;
            EXPECT_GE(cover, 93) << kind.name << " to " << accuracy;
            EXPECT_LE(cover, 98.5) << kind.name << " to " << accuracy;
            std::printf("  %4.1f %% of %2ld", cover, slices / series);
        }
        std::printf("\n");
    }
}

} // namespace
