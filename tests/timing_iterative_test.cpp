#include "timingsupport.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct AutoCase {
    const char* what;
    std::vector<double> figures;
    std::vector<int> counts;
    double funcClocks;
    bxResult result;
    const char* info;
};

TEST_F(Engine, AutoStopsWhereTwoFiguresAgree) {
    const AutoCase cases[] = {
        {"first two agree within 1 %", {300}, {1, 4}, 300, OK, "nLps=4"},
        {"calls are doubled from four times the prior count",
         {300, 400, 600, 601},
         {1, 4, 8, 16},
         601,
         OK,
         "nLps=16"},
        {"within 5 but not 1 %: three figures, the last one used again, the smallest taken",
         {300, 310, 305, 308},
         {1, 4, 4, 4},
         305,
         OK,
         "nLps=4"},
        {"just above 1 %", {300, 305, 306, 307}, {1, 4, 4, 4}, 305, OK, "nLps=4"},
        {"10 clocks are enough", {10}, {1, 4}, 10, OK, "nLps=4"},
        {"three figures that disagree: on from four times as many calls",
         {300, 310, 200, 300, 201},
         {1, 4, 4, 4, 16},
         201,
         OK,
         "nLps=16"},
        {"no clocks at first", {0, 300}, {1, 1, 4}, 300, OK, "nLps=4"},
        {"below 10 clocks for one call: ten calls", {5}, {1, 10, 40}, 5, OK, "nLps=40"},
        {"no clocks at all", {0}, {1, 1, 10, 10}, 0, ACCURFAIL, ""},
        {"clocks lost on the way", {300, 0}, {1, 4, 4}, 0, ACCURFAIL, ""},
    };
    for (const AutoCase& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(timeLoop(c.figures), c.result);
        EXPECT_EQ(s_counts, c.counts);
        EXPECT_DOUBLE_EQ(tool.funcClocks, c.funcClocks);
        EXPECT_STREQ(tool.info.c_str(), c.info);
    }
}

TEST_F(Engine, AutoGivesUpAtTheMostCalls) {
    std::vector<double> restless;
    for (int i = 0; i < 12; ++i)
        restless.push_back(i % 2 ? 200 : 100);
    // Ten doublings reach 2048; the first of the three figures there is the 200 of the last doubling.
    restless.insert(restless.end(), {100, 100});
    EXPECT_EQ(timeLoop(restless), ACCURWRN);
    EXPECT_THAT(s_counts, ElementsAre(1, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 2048, 2048));
    EXPECT_STREQ(tool.info.c_str(), "nLps=2048 acc=50.0%"); // 100, 200 and 100: the mean is 133
    EXPECT_DOUBLE_EQ(tool.funcClocks, 100);
}

TEST_F(Engine, ExactlyTheAccuracyIsReached) {
    tool.accuracy = 0;
    EXPECT_EQ(timeLoop({300}), OK);
    EXPECT_STREQ(tool.info.c_str(), "nLps=4");
}

TEST_F(Engine, HugeAccuracyAcceptsEverything) {
    tool.accuracy = 500;
    EXPECT_EQ(timeLoop({100, 5000, 100, 900}), OK);
    EXPECT_THAT(s_counts, ElementsAre(1, 4, 4, 4));
    EXPECT_DOUBLE_EQ(tool.funcClocks, 100);
}

TEST_F(Engine, LoopFactorScalesTheAutoMethod) {
    tool.setLoopFactor(-2);
    timeLoop({100});
    EXPECT_THAT(s_counts, ElementsAre(4, 16));
    tool.setLoopFactor(9); // at most 4 calls, and no other prior count
    EXPECT_EQ(timeLoop({100, 200, 300, 400}), ACCURWRN);
    EXPECT_THAT(s_counts, ElementsAre(1, 4, 4, 4));
    timeLoop({5, 5, 50}); // ten calls, so at most 40
    EXPECT_THAT(s_counts, ElementsAre(1, 10, 40, 40, 40));
    tool.setLoopFactor(0);
    timeLoop({100, 200, 100, 100});
    EXPECT_THAT(s_counts, ElementsAre(1, 4, 8, 16));
}

TEST_F(Engine, FailureEndsTheSearchAtOnce) {
    s_effect = [](int) { return FUNCFAIL; };
    EXPECT_EQ(timeLoop({300}), FUNCFAIL);
    EXPECT_THAT(s_counts, ElementsAre(1));
    s_effect = [](int) { return FUNCWRN; };
    EXPECT_EQ(timeLoop({300}), FUNCWRN);
    EXPECT_THAT(s_counts, ElementsAre(1, 4));
    tool.setMethodBest(1, 4, 1);
    EXPECT_EQ(timeLoop({100, 200, 300, 400}), FUNCWRN) << "the poor accuracy is the lesser warning";
}

TEST_F(Engine, IterativeObeysItsOwnLimits) {
    tool.setMethodBest(100, 50, 100);
    EXPECT_EQ(tool.bestMaxLoops, 800);
    EXPECT_EQ(timeLoop({100, 200, 100, 190, 100}), ACCURWRN);
    EXPECT_THAT(s_counts, ElementsAre(100, 400, 800, 800, 800));
    tool.setMethodBest(100, 50, 100000);
    EXPECT_EQ(timeLoop({100}), ACCURFAIL) << "more than one call is not tried again with ten times as many";
    EXPECT_THAT(s_counts, ElementsAre(100));
    tool.setMethodBest(4, 2000000000, 1);
    timeLoop({100, 200});
    EXPECT_THAT(s_counts, ElementsAre(4, 16, 32));
}

TEST_F(Engine, InfoListsTheCourse) {
    Capture capture(15);
    timeLoop({300, 310, 305, 308});
    EXPECT_EQ(capture.text(), "    Auto method: start\n"
                              "        minClocks  = 10\n"
                              "    Prior Measurement: \n"
                              "        numLoops   = 1\n"
                              "        numClocks  = 300\n"
                              "        funcClocks = 300\n"
                              "        result     = successfully\n"
                              "    Iteration Measurement: \n"
                              "        startLoops = 4\n"
                              "        maxLoops   = 2048\n"
                              "        stopLoops  = 4\n"
                              "        stopClocks = 1240\n"
                              "        accuracy   = 3.3%\n"
                              "        funcClocks = 310\n"
                              "        result     = successfully\n"
                              "    Simple Measurements: \n"
                              "        numLoops   = 4\n"
                              "        numClocks  = 1220\n"
                              "        funcClocks = 305\n"
                              "        numLoops   = 4\n"
                              "        numClocks  = 1232\n"
                              "        funcClocks = 308\n"
                              "        accuracy   = 0.9%\n"
                              "        bestClocks = 305\n"
                              "        result     = successfully\n"
                              "    Auto method: stop\n");
}

struct BadStatusCase {
    const char* what;
    std::vector<double> figures; // 1, 4, 8 calls, then what follows the halving
    int badMeasurements;         // from the measurement of 8 calls on
    const char* message;
};

TEST_F(Engine, BadStatusIsAvoidedWithFewerCalls) {
    const BadStatusCase cases[] = {
        {"clean again", {300, 400, 500, 401}, 1, "-- Attempt is successful\n"},
        {"bad again", {300, 400, 500, 401}, 2, "-- Attempt fails: Bad control status repeats.\n"},
        {"within twice the accuracy", {300, 400, 500, 430}, 1, "-- Attempt is successful\n"},
        {"restless", {300, 400, 500, 900}, 1, "-- Attempt fails: Accuracy is unsatisfactory.\n"},
    };
    for (const BadStatusCase& c : cases) {
        SCOPED_TRACE(c.what);
        bxInitCtrlStatus();
        tool.ibsMode = true;
        tool.accuracy = 0.05;
        s_effect = [&](int) {
            const int measurement = static_cast<int>(s_counts.size());
            if (measurement >= 3 && measurement < 3 + c.badMeasurements)
                raiseInvalid87();
            return OK;
        };
        Capture capture(3);
        timeLoop(c.figures);
        EXPECT_THAT(s_counts, ElementsAre(1, 4, 8, 4, 4, 4, 4, 4)) << "six figures, the first known";
        EXPECT_THAT(capture.text(), HasSubstr("-- Status    87: ?Invalid \n"
                                              "-- Attempting to avoid bad control status\n"));
        EXPECT_THAT(capture.text(), HasSubstr(c.message));
        EXPECT_DOUBLE_EQ(tool.funcClocks, 400);
    }
}

TEST_F(Engine, BadStatusIsLeftAloneOutsideIbsMode) {
    raiseInvalid87(); // by somebody else, before
    timeLoop({300});
    EXPECT_FALSE(bxBadCtrlStatus());
    s_effect = [](int) {
        raiseInvalid87();
        return OK;
    };
    timeLoop({300});
    EXPECT_THAT(s_counts, ElementsAre(1, 4));
    bool bad87, badSSX;
    EXPECT_TRUE(bxBadCtrlStatus(bad87, badSSX));
    EXPECT_TRUE(bad87);
    EXPECT_FALSE(badSSX);
}

} // namespace
