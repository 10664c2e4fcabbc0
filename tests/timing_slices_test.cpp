#include "timing/bxslices.h"
#include "timing_simulated.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
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
    constexpr bxAloneCore full{4, 0.006};
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
    EXPECT_FALSE(series.endsShared({})) << "nothing is known of the core";
    figure = series.figure(0.05, full);
    EXPECT_DOUBLE_EQ(figure.clocks, 130);
    EXPECT_EQ(figure.slices, 3);
    EXPECT_FALSE(figure.known || figure.reached);
    EXPECT_NEAR(figure.lost, 1 - 2.2 / 4, 1e-9); // the median of the slices
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

TEST(SliceSeries, TheTimeOfOthersIsTakenOffALongCall) {
    bxSliceSeries series;
    const auto add = [&](double perCall, double away) {
        bxSlice one = slice(perCall, 1);
        one.away = away;
        series.add(one);
    };
    add(2000, 0.5);
    EXPECT_TRUE(series.endsShared({}));
    EXPECT_TRUE(series.allDisturbed());
    add(4100, 0.75);
    bxPreciseFigure figure = series.figure(0.05);
    EXPECT_DOUBLE_EQ(figure.clocks, 1012.5);
    EXPECT_DOUBLE_EQ(figure.lost, 0.625);
    EXPECT_FALSE(figure.known || figure.reached);
    EXPECT_EQ(figure.slices, 0);
    add(998, 0.001);
    EXPECT_FALSE(series.endsShared({}));
    EXPECT_FALSE(series.allDisturbed());
    figure = series.figure(0.05);
    EXPECT_NEAR(figure.clocks, 997, 0.01);
    EXPECT_EQ(figure.slices, 1);
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

/** Shows a core slices, each with a reading of its own. */
void show(bxOwnCore& core, int slices, const std::function<double(int)>& reading) {
    for (int i = 0; i < slices; ++i)
        core.saw({100, 1, 1, 0, reading(i)});
}

TEST(OwnCore, LearnsWhatIsNoiseFromItsQuietestStretch) {
    std::minstd_rand random;
    std::normal_distribution<double> normal;
    const auto readings = [&](double noise) {
        return [&, noise](int) { return 4 * (1 + noise * normal(random)); };
    };
    bxOwnCore core;
    EXPECT_EQ(core.alone().mostLoss, bxOwnCore::largestLoss) << "nothing is known";
    show(core, 100, readings(0.02));
    EXPECT_EQ(core.alone().mostLoss, bxOwnCore::largestLoss);
    show(core, 1000, readings(0.001));
    EXPECT_THAT(core.noise(), testing::AllOf(testing::Ge(0.0006), testing::Le(0.0012)));
    show(core, 1000, readings(0.02));
    EXPECT_DOUBLE_EQ(core.alone().mostLoss, bxOwnCore::lossByNoise * core.noise());

    bxOwnCore alone; // with the noise of the machine, next to no slice of it is taken for a shared one
    show(alone, 50000, readings(0.001));
    int shared = 0;
    for (int i = 0; i < 1000; ++i) {
        bxSliceSeries series;
        series.add({100, 1, 1, 0, readings(0.001)(0)});
        shared += series.endsShared(alone.alone());
    }
    EXPECT_LE(shared, 10);
    show(alone, 1000, [](int) { return 4; });
    EXPECT_EQ(alone.alone().mostLoss, bxOwnCore::leastLoss);
}

TEST(OwnCore, OfWhichLessIsLeftForGoodIsTakenForWhatItIs) {
    constexpr double pi = 3.14159265358979;
    std::minstd_rand random;
    std::normal_distribution<double> normal;
    const auto noisy = [&](double value) { return value * (1 + 0.001 * normal(random)); };
    constexpr int enough = bxOwnCore::steadyBlocks * bxOwnCore::blockSize;
    bxOwnCore company, slower;
    show(company, 500, [&](int) { return noisy(4); });
    show(slower, 500, [&](int) { return noisy(4); });
    show(company, 20 * enough, [&](int i) { return noisy(3) * (1 + 0.005 * std::sin(2 * pi * i / 50)); });
    EXPECT_GT(company.throughput(), 3.9) << "changes by a per cent in 25 slices";
    show(slower, enough - bxOwnCore::blockSize, [&](int) { return noisy(3); });
    EXPECT_GT(slower.throughput(), 3.9) << "not yet";
    show(slower, 4 * enough, [&](int) { return noisy(3); });
    EXPECT_NEAR(slower.throughput(), 3, 0.02);
}

// Whatever the accuracy that ends a series, the interval holds the truth as often as it says: in 93 to 98 %
// of the series, with neighbours that depend on each other too.

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
    constexpr int series = 1500; // so that one standard error is 0.6 %
    constexpr int most = 93;     // as many as the time allows of short calls
    for (const Simulated::Kind& kind : Simulated::kinds)
        for (const double accuracy : Simulated::accuracies) {
            Simulated simulated(kind);
            int held = 0;
            for (int i = 0; i < series; ++i) {
                const bxPreciseFigure figure = simulated.series(accuracy, most);
                held += figure.low <= Simulated::truth && Simulated::truth <= figure.high;
            }
            EXPECT_GE(100.0 * held / series, 93) << kind.name << " to " << accuracy;
            EXPECT_LE(100.0 * held / series, 98.5) << kind.name << " to " << accuracy;
        }
}

} // namespace
