#include "testsupport.h"
#include "timing/bxfpwatch.h"
#include "timing/bxtool.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

using testing::DoubleNear;
using testing::HasSubstr;
using testing::StartsWith;

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

TEST(Reference, TakesTimeInProportionToItsAdditions) {
    const auto fastest = [](int blocks) {
        long long ticks = bxReferenceTicks(blocks);
        for (int i = 0; i < 50; ++i)
            ticks = std::min(ticks, bxReferenceTicks(blocks));
        return static_cast<double>(ticks);
    };
    const double once = fastest(2000);
    EXPECT_GT(once, 2000 * bxReferenceBlock / 8.0); // no processor runs at eight times its counter
    EXPECT_NEAR(fastest(4000) / once, 2, 0.5);
}

// The precise mode, with a function that follows a script instead of the clock.

constexpr double fixedCost = 400;
double s_clocks;
double s_noise;
std::vector<int> s_counts;
bxResult s_status;

bxResult scriptedLoop(int count, long long* clocks) {
    static std::minstd_rand random;
    s_counts.push_back(count);
    const double noise = s_noise * (static_cast<double>(random() % 2001) / 1000 - 1);
    *clocks = std::llround(s_clocks > 0 ? fixedCost + s_clocks * count * (1 + noise) : 0);
    return s_status;
}

bxResult scriptedStat(int* calls, long long* clocks) {
    *clocks = 50LL * *calls;
    return OK;
}

int preparesNothing() {
    return 0;
}

/** Raises a bad flag once more than eight calls were made on the same data. */
bxResult flagAfterEightCalls(int count, long long* clocks) {
    const bxResult r = scriptedLoop(count, clocks);
    if (count > 8) {
        volatile double zero = 0;
        volatile double raised = 1 / zero;
        static_cast<void>(raised);
    }
    return r;
}

/** So little that the calls of a slice, to take some time, cannot be counted. */
bxResult nearlyNothing(int count, long long* clocks) {
    *clocks = 1 + count / (1 << 22);
    return OK;
}

bxResult sameFigure(bxTool& tool, int) {
    tool.setFuncTicks(42);
    return OK;
}

class Precise : public testing::Test {
  protected:
    Precise() {
        bxInitCtrlStatus();
        tool.precise = true;
        s_counts.clear();
        s_clocks = 1000;
        s_noise = 0;
        s_status = OK;
        tool.patience = 0;
        bxTool::m_ownCore = {};
    }
    ~Precise() override {
        bxInitCtrlStatus();
        bxTool::m_ownCore = {};
    }
    bxResult time() { return tool.timing(scriptedLoop, nullptr, nullptr, nullptr); }

    bxTool tool;
};

TEST_F(Precise, FixedCostOfAMeasurementDropsOut) {
    struct Case {
        double clocks;
        int fewestCalls, mostCalls; // of a slice
    };
    const Case cases[] = {{0.25, 100'000, 400'000}, {10, 2000, 10'000}, {1000, 30, 96}, {1e6, 1, 2}};
    for (const Case& c : cases) {
        s_clocks = c.clocks;
        s_counts.clear();
        EXPECT_LE(time(), ACCURWRN) << c.clocks; // on a busy machine nearly all slices may be dropped
        EXPECT_NEAR(tool.counterClocks() / c.clocks, 1, 0.02) << c.clocks; // the scale is really measured
        EXPECT_LE(tool.preciseFigure.low, tool.funcClocks);
        EXPECT_GE(tool.preciseFigure.high, tool.funcClocks);
        EXPECT_GE(tool.preciseFigure.slices + tool.preciseFigure.dropped, bxSliceSeries::fewest);
        EXPECT_GE(tool.loops, c.fewestCalls) << c.clocks;
        EXPECT_LE(tool.loops, c.mostCalls) << c.clocks;
        const std::string info = tool.info.c_str();
        EXPECT_THAT(info, StartsWith("nLps="));
        EXPECT_THAT(info, HasSubstr("core/counter="));
        EXPECT_EQ(info.find(','), std::string::npos); // it stands in a csv cell
    }
}

TEST_F(Precise, CallsStandInPairsOfOneAndTwoInChangingOrder) {
    time();
    ASSERT_GE(s_counts.size(), 2U * bxSliceSeries::fewest);
    const auto pairs = s_counts.end() - 2 * bxSliceSeries::fewest;
    int ascending = 0;
    for (int i = 0; i < bxSliceSeries::fewest; ++i) {
        const int first = pairs[2 * i], second = pairs[2 * i + 1];
        EXPECT_EQ(std::max(first, second), 2 * std::min(first, second));
        ascending += first < second;
    }
    EXPECT_EQ(ascending, bxSliceSeries::fewest / 2);
}

TEST_F(Precise, SaysWhenTheAccuracyWasNotReached) {
    s_noise = 0.3;
    tool.accuracy = 0.001;
    EXPECT_EQ(time(), ACCURWRN);
    EXPECT_GT(tool.actualAccuracy, 0.001);
    EXPECT_FALSE(tool.preciseFigure.reached);
    const bxString reached = bxTool::getAccuracyStr(tool.actualAccuracy);
    EXPECT_THAT(std::string(tool.info.c_str()), testing::EndsWith(std::string(" acc=") + reached.c_str()));
    EXPECT_THAT(tool.counterClocks(), DoubleNear(1000, 400));
    // The limit of one combination: 20 million counts, of which a slice takes some 215,000, two measurements
    // each.
    EXPECT_THAT(s_counts.size(), testing::AllOf(testing::Gt(150U), testing::Lt(230U)));

    s_clocks = 0;
    EXPECT_EQ(time(), ACCURFAIL);
}

TEST_F(Precise, WaitsForOthersToLeaveTheCoreAndSaysWhatTheyTook) {
    const auto slicesWithPatience = [&](double patience) {
        for (int i = 0; i < 2; ++i)
            bxTool::m_ownCore.saw({100, 1, 1, 0, 1e6}); // no core does as much: this one seems shared
        tool.patience = patience;
        s_counts.clear();
        EXPECT_EQ(time(), ACCURWRN);
        EXPECT_GT(tool.actualAccuracy, 0.9);
        EXPECT_THAT(tool.info.c_str(), HasSubstr(" shared=100.0% acc=100.0%"));
        EXPECT_THAT(tool.counterClocks(), DoubleNear(1000, 400));
        return static_cast<double>(s_counts.size());
    };
    const double without = slicesWithPatience(0);
    bxTool::m_ownCore = {};
    const double first = slicesWithPatience(40e6), second = slicesWithPatience(40e6);
    EXPECT_NEAR(first / without, 3, 0.5); // the limit is 20 million
    EXPECT_NEAR(second / without, 2, 0.4);
}

TEST_F(Precise, EndsAtTheFirstFailureOfTheFunction) {
    s_status = FUNCFAIL;
    EXPECT_EQ(time(), FUNCFAIL);
    EXPECT_EQ(s_counts.size(), 1U);
}

TEST_F(Precise, LeavesTheControlStatusCleanWhereItIsToBeAvoided) {
    tool.ibsMode = true;
    EXPECT_LE(tool.timing(flagAfterEightCalls, nullptr, nullptr, preparesNothing), ACCURWRN); // not BADSTSWRN
    EXPECT_LE(tool.loops, 3);
    EXPECT_FALSE(bxBadCtrlStatus());
    tool.ibsMode = false;
    tool.timing(flagAfterEightCalls, nullptr, nullptr, nullptr);
    EXPECT_GT(tool.loops, 8);
}

TEST_F(Precise, OwnArithmeticRaisesNoFlagOfTheFunction) {
    for (int i = 0; i < 2; ++i) {
        bx_set_ssx(0, 0x3F);
        bx_set_ssx(1, 1); // by the data of the test, before: counts
        tool.timing(nearlyNothing, nullptr, nullptr, nullptr);
        EXPECT_EQ(g_ssx.get() & 0x1F, 1);
        EXPECT_THAT(g_ssx.strExceptionState().c_str(), StartsWith("?Invalid "));
        bxInitCtrlStatus();
        tool.timing(nearlyNothing, nullptr, nullptr, nullptr);
        EXPECT_EQ(g_ssx.get() & 0x1F, 0);
    }
}

TEST_F(Precise, TakesAFigureThatTheTestReports) {
    EXPECT_LE(tool.timing(sameFigure), ACCURWRN);
    EXPECT_THAT(tool.counterClocks(), DoubleNear(42, 1));
}

TEST_F(Precise, TimesAsTheSessionDoesWhereNoLoopIsRegistered) {
    Capture capture(outErr);
    tool.setMethodStat(20, 0);
    EXPECT_EQ(tool.timing(nullptr, scriptedStat, nullptr, nullptr), OK);
    EXPECT_EQ(tool.funcClocks, 50);
    EXPECT_EQ(tool.counterClocks(), 50);
    EXPECT_THAT(tool.info.c_str(), StartsWith("nCalls=20"));
    EXPECT_THAT(capture.text(), HasSubstr("ATTENTION! The test cannot execute precise timing."));
}

TEST_F(Precise, ForgetsItsFigureAtTheNextTiming) {
    time();
    EXPECT_NE(tool.preciseFigure.coreClocksPerTick, 1);
    tool.precise = false;
    time();
    EXPECT_EQ(tool.preciseFigure.slices, 0);
    EXPECT_EQ(tool.counterClocks(), tool.funcClocks);
}

} // namespace
