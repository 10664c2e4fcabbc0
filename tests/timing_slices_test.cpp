#include "timing/bxslices.h"

#include <gmock/gmock.h>

#include <random>
#include <vector>

namespace {

TEST(Statistics, MedianIsTheMiddleOfTheValues) {
    EXPECT_EQ(bxMedian({}), 0);
    EXPECT_EQ(bxMedian({7}), 7);
    EXPECT_EQ(bxMedian({3, 1, 2}), 2);
    EXPECT_EQ(bxMedian({4, 1, 1000, 2}), 3);
}

TEST(Statistics, BatchesAreOfNeighbours) {
    EXPECT_EQ(bxBatchMedians({1, 2, 9, 7, 5, 3, 4, 4}, 3), (std::vector<double>{2, 5}));
    EXPECT_EQ(bxBatchMedians({8, 6}, 1), (std::vector<double>{8, 6}));
    EXPECT_TRUE(bxBatchMedians({1}, 2).empty());
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

/** A slice of a function of `clocks`, at `rate` core clocks a count, whose reference moves by `movement`,
 * relative. */
bxSlice slice(double clocks, double rate, double movement = 0) {
    return {clocks / rate, (1 - movement / 2) / rate, (1 + movement / 2) / rate};
}

TEST(SliceSeries, GivesTheMedianInCoreClocks) {
    bxSliceSeries series;
    for (int i = 0; i < 9; ++i)
        series.add(slice(100 + i, 1.5 + 0.1 * i)); // a drifting clock does not touch the figure
    series.add(slice(500, 1.5, 0.2));
    const bxPreciseFigure figure = series.figure(0.05);
    EXPECT_DOUBLE_EQ(figure.clocks, 104);
    EXPECT_DOUBLE_EQ(figure.coreClocksPerTick, 1.9);
    EXPECT_EQ(figure.slices, 9);
    EXPECT_EQ(figure.dropped, 1);
    EXPECT_TRUE(figure.reached);
    EXPECT_FALSE(series.figure(0.01).reached);
    EXPECT_LT(figure.low, 102);
    EXPECT_GT(figure.high, 106);
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
}

TEST(SliceSeries, LeavesOutSlicesWhoseCallsWereInterrupted) {
    bxSliceSeries series;
    for (int i = 0; i < bxSliceSeries::fewest; ++i) {
        series.add({100, 1, 1, 0.04}); // the fixed cost of short loops
        for (const double clocks : {150, 50, 150})
            series.add({clocks, 1, 1, 0.06});
        const bxPreciseFigure figure = series.figure(0.05);
        EXPECT_DOUBLE_EQ(figure.clocks, 100);
        EXPECT_EQ(figure.slices, i + 1);
        EXPECT_EQ(figure.dropped, 3 * (i + 1));
        // Of so few that one can be wrong, the interval does not pretend to know.
        const bool sure = figure.slices >= bxSliceSeries::fewest;
        EXPECT_EQ(figure.reached, sure) << i;
        EXPECT_EQ(figure.high > 100, !sure) << i;
    }
}

TEST(SliceSeries, IsNotSureOfFewOrOnlyDisturbedSlices) {
    bxSliceSeries series;
    EXPECT_EQ(series.figure(0.5).clocks, 0);
    series.add({100, 0, 0}); // a counter that stands still
    EXPECT_EQ(series.figure(0.5).clocks, 0);
    for (int i = 0; i < 20; ++i)
        series.add(slice(100, 1, 0.006));
    const bxPreciseFigure disturbed = series.figure(0.05);
    EXPECT_DOUBLE_EQ(disturbed.clocks, 100);
    EXPECT_EQ(disturbed.slices, 0);
    EXPECT_EQ(disturbed.dropped, 21);
    EXPECT_FALSE(disturbed.reached);
    for (int i = 0; i < bxSliceSeries::fewest; ++i) {
        EXPECT_FALSE(series.figure(0.05).reached) << i;
        EXPECT_FALSE(series.mayEnd()) << i;
        series.add(slice(90, 1, 0.004));
    }
    EXPECT_TRUE(series.figure(0.05).reached);
    EXPECT_TRUE(series.mayEnd());
    EXPECT_DOUBLE_EQ(series.figure(0.05).clocks, 90);
    bxSliceSeries hopeless;
    while (!hopeless.mayEnd() && hopeless.count() < 1000)
        hopeless.add(slice(100, 1, 0.1));
    EXPECT_EQ(hopeless.count(), 4 * bxSliceSeries::fewest);
}

TEST(SliceSeries, LeavesOutSlicesOfASharedCore) {
    constexpr double full = 4;
    bxSliceSeries series;
    for (int i = 1; i <= bxSliceSeries::fewest; ++i) {
        for (const double throughput : {2.2, 2.0, 3.96}) {
            series.add({130, 1, 1, 0, throughput});
            EXPECT_TRUE(series.endsShared(full));
        }
        series.add({100, 1, 1, 0, 3.98});
        EXPECT_FALSE(series.endsShared(full));
        EXPECT_FALSE(series.endsShared(0));
        const bxPreciseFigure figure = series.figure(0.05, full);
        const bool enough = i == bxSliceSeries::fewest;
        EXPECT_DOUBLE_EQ(figure.clocks, enough ? 100 : 130) << i;
        EXPECT_EQ(figure.slices, enough ? i : 4 * i);
        EXPECT_EQ(figure.dropped, enough ? 3 * i : 0);
        EXPECT_EQ(figure.reached, enough);
        if (i > 1) {
            EXPECT_NEAR(figure.lost, enough ? 0 : 1 - 3.08 / full, 1e-9) << i; // the median of the slices
        }
    }
    EXPECT_DOUBLE_EQ(series.figure(0.5).clocks, 130); // nothing is known of the core
    bxSliceSeries shared;
    for (int i = 0; i < bxSliceSeries::fewest; ++i)
        shared.add({130, 1, 1, 0, 2});
    EXPECT_FALSE(shared.figure(0.05, full).reached);
    EXPECT_FALSE(shared.mayEnd(full));
    EXPECT_TRUE(shared.mayEnd());
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

// Whatever the accuracy that ends a series, the interval holds the truth as often as it says.
TEST(SliceSeries, IntervalHoldsTheTruthThoughItDecidesWhenToStop) {
    constexpr int series = 2000;
    for (const double accuracy : {0.0002, 0.0005, 0.001, 0.002}) {
        std::mt19937 random(4711);
        std::normal_distribution<double> noise(1000, 1);
        std::bernoulli_distribution disturbed(0.1);
        int held = 0;
        for (int i = 0; i < series; ++i) {
            bxSliceSeries slices;
            int next = bxSliceSeries::fewest;
            for (bool done = false; !done;) {
                const double clocks = noise(random);
                slices.add(slice(disturbed(random) ? clocks + 20 * (noise(random) - 1000) : clocks, 1.75));
                done = slices.count() == 85 || (slices.count() == next && slices.figure(accuracy).reached);
                if (slices.count() == next)
                    next = bxSliceSeries::nextLook(next);
            }
            const bxPreciseFigure figure = slices.figure(accuracy);
            held += figure.low <= 1000 && 1000 <= figure.high;
        }
        EXPECT_GE(held, 0.93 * series) << accuracy;
        EXPECT_LE(held, 0.985 * series) << accuracy;
    }
}

} // namespace
