#include "data/bxalloc.h"
#include "output/bxtrace.h"
#include "testsupport.h"
#include "timing/bxfpwatch.h"
#include "timing/bxtool.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/** A function under test follows a script instead of the clock: what the measurements find, in clocks per
 * call; the last one is repeated. */
std::vector<double> s_figures;
/** The call counts that were asked for. */
std::vector<int> s_counts;
/** What a measurement does besides. */
std::function<bxResult(int count)> s_effect;

bxResult scriptedLoop(int count, long long* clocks) {
    const std::size_t i = std::min(s_counts.size(), s_figures.size() - 1);
    s_counts.push_back(count);
    *clocks = static_cast<long long>(s_figures[i] * count);
    return s_effect ? s_effect(count) : OK;
}

bxResult scriptedStat(int* calls, long long* clocks) {
    s_counts.push_back(*calls);
    *calls += 3; // more calls than asked for, to reach the clocks
    *clocks = static_cast<long long>(s_figures[0]) * *calls;
    return OK;
}

/** A fresh engine and a fresh script. */
class Engine : public testing::Test {
  protected:
    Engine() {
        bxInitCtrlStatus();
        bxTool::m_pCheckStatus = [](int status) { return status < 0 ? FUNCFAIL : status > 0 ? FUNCWRN : OK; };
    }
    ~Engine() override {
        s_effect = nullptr;
        s_figures.clear();
        s_counts.clear();
        bxTool::m_pCheckStatus = nullptr;
        bxInitCtrlStatus();
    }
    bxResult timeLoop(std::vector<double> figures) {
        s_figures = std::move(figures);
        s_counts.clear();
        return tool.timing(scriptedLoop, nullptr, nullptr, nullptr);
    }

    bxTool tool;
};

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

TEST_F(Engine, ManualLoopTimesOnce) {
    tool.setMethodLoop(0);
    EXPECT_EQ(timeLoop({17}), OK);
    EXPECT_THAT(s_counts, ElementsAre(1));
    EXPECT_STREQ(tool.info.c_str(), "nLps=1");
    EXPECT_DOUBLE_EQ(tool.funcClocks, 17);
    EXPECT_DOUBLE_EQ(tool.actualAccuracy, 0);
}

TEST_F(Engine, StatisticDividesByTheCallsCounted) {
    tool.setMethodStat(12, 10000);
    s_figures = {50};
    EXPECT_EQ(tool.timing(nullptr, scriptedStat, nullptr, nullptr), OK);
    EXPECT_THAT(s_counts, ElementsAre(12));
    EXPECT_STREQ(tool.info.c_str(), "nCalls=15");
    EXPECT_DOUBLE_EQ(tool.funcClocks, 50);
    tool.setMethodStat(-3, 0);
    tool.timing(nullptr, scriptedStat, nullptr, nullptr);
    EXPECT_DOUBLE_EQ(tool.funcClocks, 0) << "no calls counted";
}

TEST_F(Engine, MissingFunctionsTakeTheOtherMethodOrFail) {
    Capture capture(1);
    s_figures = {300};
    tool.setMethodStat(12, 10000);
    EXPECT_EQ(tool.timing(scriptedLoop, nullptr, nullptr, nullptr), OK);
    EXPECT_THAT(s_counts, ElementsAre(12));
    EXPECT_EQ(capture.text(), " ATTENTION! The test cannot execute Statistic timing.\n"
                              " Manual loop timing will be run instead.\n");
    tool.setMethodLoop(7);
    EXPECT_EQ(tool.timing(nullptr, scriptedStat, nullptr, nullptr), OK);
    EXPECT_EQ(s_counts.back(), 7);
    EXPECT_THAT(capture.text(), HasSubstr(" ATTENTION! The test cannot execute Manual loop timing.\n"
                                          " Statistic timing will be run instead.\n"));
    tool.setMethodAuto();
    EXPECT_EQ(tool.timing(nullptr, nullptr, nullptr, nullptr), FAIL);
    EXPECT_THAT(capture.text(),
                HasSubstr(" Internal test problem: The test cannot execute standard timing.\n"
                          " No one of funcLoop, funcStat or funcCall is registered in the test.\n"));
    EXPECT_EQ(tool.timing(nullptr, scriptedStat, nullptr, nullptr), FAIL);
    EXPECT_THAT(capture.text(), HasSubstr("BX internal error: file bxtoolmeasure.cpp, line "));
    tool.method = 9;
    EXPECT_EQ(tool.timing(scriptedLoop, nullptr, nullptr, nullptr), FAIL);
    EXPECT_THAT(capture.text(), HasSubstr("BX internal error: file bxtoolmethods.cpp, line "));
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

TEST_F(Engine, CallsRunUnderTheirTraceStepAndPriority) {
    std::string step;
    int niceValue = -1;
    s_effect = [&](int) {
        step = g_trace.getCurName().c_str();
        niceValue = getpriority(PRIO_PROCESS, 0);
        return OK;
    };
    const int before = getpriority(PRIO_PROCESS, 0);
    if (getuid() == 0)
        setpriority(PRIO_PROCESS, 0, 5);
    bxTool::m_priority = 3;
    timeLoop({300});
    bxTool::m_priority = 0;
    EXPECT_EQ(step, "zorFunctionCalls");
    EXPECT_TRUE(g_trace.empty());
    if (getuid() != 0)
        GTEST_SKIP() << "the priority needs root";
    EXPECT_EQ(niceValue, 10);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), 5);
    setpriority(PRIO_PROCESS, 0, before);
}

TEST_F(Engine, TimingStartsAfresh) {
    timeLoop({300, 303});
    tool.timing(scriptedLoop, nullptr, nullptr, nullptr);
    tool.funcCall = [] { return 0; };
    tool.reset();
    EXPECT_EQ(tool.result, UNDEFINED);
    EXPECT_DOUBLE_EQ(tool.actualAccuracy, 1);
    EXPECT_EQ(tool.loops, 0);
    EXPECT_EQ(tool.clocks, 0);
    EXPECT_STREQ(tool.info.c_str(), "");
    EXPECT_TRUE(!tool.funcLoop && !tool.funcStat && !tool.funcCall && !tool.initFunc);
}

/** Leaves the x87 "invalid operation" flag behind. */
void raiseInvalid87() {
    __asm__ volatile("fld1; fchs; fsqrt; fstp %%st(0)" : : : "st");
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

// The engine's own loops around a call function.

int s_calls, s_inits, s_resets;
std::vector<int> s_statuses; // of the calls in order; 0 after the last

int call() {
    const auto i = static_cast<std::size_t>(s_calls++);
    return i < s_statuses.size() ? s_statuses[i] : 0;
}

int init() {
    ++s_inits;
    return 0;
}

/** Counts how often its data is restored. */
struct RestoreCounter : bxObject {
    bool setReservedCopy() override { return ++s_resets, true; }
};

struct CallCase {
    const char* what;
    std::vector<int> statuses;
    int calls;
    bxResult result;
};

TEST_F(Engine, CallLoopKeepsStatusesAndStopsAtErrors) {
    const CallCase cases[] = {
        {"clean", {}, 6, OK},
        {"a warning is kept", {0, 0, 2}, 6, FUNCWRN},
        {"an error of the untimed call", {-1}, 1, FUNCFAIL},
        {"an error in the loop ends it", {0, 0, -1}, 3, FUNCFAIL},
    };
    tool.setMethodLoop(5);
    for (const CallCase& c : cases) {
        SCOPED_TRACE(c.what);
        s_calls = s_inits = 0;
        s_statuses = c.statuses;
        EXPECT_EQ(tool.timing(nullptr, nullptr, call, init), c.result);
        EXPECT_EQ(s_calls, c.calls);
        EXPECT_EQ(s_inits, c.calls);
    }
}

TEST_F(Engine, CallStatisticCallsTwiceAndTimesOnce) {
    s_statuses.clear();
    s_calls = s_inits = 0;
    tool.setMethodStat(4, 0);
    EXPECT_EQ(tool.timing(nullptr, nullptr, call, init), OK);
    EXPECT_EQ(s_calls, 1 + 2 * 4);
    EXPECT_EQ(s_inits, 1 + 4);
    EXPECT_STREQ(tool.info.c_str(), "nCalls=4");
    s_calls = 0;
    s_statuses = {0, 0, 0, 0, -1}; // the second call of the second pair
    EXPECT_EQ(tool.timing(nullptr, nullptr, call, nullptr), FUNCFAIL);
    EXPECT_EQ(s_calls, 5);
    EXPECT_STREQ(tool.info.c_str(), "nCalls=2");
}

TEST_F(Engine, IbsModePreparesEveryMeasurement) {
    s_figures = {300};
    for (bool ibs : {false, true}) {
        tool.ibsMode = ibs;
        s_inits = 0;
        s_counts.clear();
        tool.timing(scriptedLoop, nullptr, nullptr, init);
        EXPECT_EQ(s_inits, ibs ? 2 : 0);
    }
}

TEST_F(Engine, CallStatisticReachesItsClocks) {
    s_statuses.clear();
    constexpr int clocks = 2'000'000; // more than an interrupt or the translation by an emulator takes
    tool.setMethodStat(1, clocks);
    tool.timing(nullptr, nullptr, call, nullptr);
    EXPECT_GE(tool.clocks, clocks);
    EXPECT_STRNE(tool.info.c_str(), "nCalls=1");
}

TEST_F(Engine, DataIsRestoredBeforeEveryTimedCall) {
    RestoreCounter owner;
    void* const block = bxMalloc(16, 0, 0, &owner);
    tool.includeDataSet = true;
    s_statuses.clear();
    s_calls = s_resets = 0;
    tool.setMethodLoop(5);
    EXPECT_EQ(tool.timing(scriptedLoop, nullptr, call, nullptr), OK);
    EXPECT_EQ(s_calls, 6);
    EXPECT_EQ(s_resets, 5);
    s_resets = 0;
    tool.setMethodStat(3, 0);
    tool.timing(nullptr, scriptedStat, call, nullptr);
    EXPECT_EQ(s_resets, 3);
    EXPECT_TRUE(s_counts.empty()) << "the test's own timing functions cannot restore";
    s_figures = {300};
    tool.setMethodLoop(5);
    EXPECT_EQ(tool.timing(scriptedLoop, nullptr, nullptr, nullptr), UNDEFINED);
    bxFree(block);
}

bxResult countingTool(bxTool& tool, int count) {
    tool.clocks = 30LL * count;
    return OK;
}

bxResult figureTool(bxTool& tool, int) {
    tool.setFuncTicks(42);
    return DATAWRN;
}

TEST_F(Engine, ToolFunctionsTimeThemselves) {
    EXPECT_EQ(tool.timing(countingTool), OK);
    EXPECT_DOUBLE_EQ(tool.funcClocks, 30);
    EXPECT_STREQ(tool.info.c_str(), "nLps=4");
    for (const int method : {bxTool::methodAuto, bxTool::methodLoop, bxTool::methodBest}) {
        tool.method = method;
        EXPECT_EQ(tool.timing(figureTool), DATAWRN) << method;
        EXPECT_DOUBLE_EQ(tool.funcClocks, 42) << method;
    }
}

TEST_F(Engine, MethodsAnswerForThemselvesOnly) {
    int a = -1, b = -1;
    long long c = -1;
    EXPECT_TRUE(tool.getMethodAuto());
    EXPECT_FALSE(tool.getMethodLoop(a) || tool.getMethodStat(a, c) || tool.getMethodBest(a, b, c));
    EXPECT_EQ(a, -1);
    tool.setMethodStat(3, 4);
    EXPECT_TRUE(tool.getMethodStat(a, c));
    EXPECT_EQ(a, 3);
    EXPECT_EQ(c, 4);
    tool.setMethodBest(0, 50, 7);
    EXPECT_TRUE(tool.getMethodBest(a, b, c));
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 50);
    EXPECT_EQ(c, 7);
    EXPECT_FALSE(tool.getMethodAuto());
}

TEST(EngineText, ClocksAndAccuracies) {
    const std::pair<long long, const char*> clocks[] = {{12345, "12345"},
                                                        {2147483647, "2147483647"},
                                                        {2147483648, "2147483640"},
                                                        {12345678901, "12345678900"},
                                                        {30000000000, "30000000000"},
                                                        {-5, "-5"}};
    for (const auto& [value, text] : clocks)
        EXPECT_STREQ(bxTool::clockStr(value).c_str(), text);
    const std::pair<double, const char*> accuracies[] = {
        {0.05, "5.0%"}, {0.0009, "0.09%"}, {0.0004, "0.04%"}, {0.0011, "0.1%"}, {500, "50000.0%"}};
    for (const auto& [value, text] : accuracies)
        EXPECT_STREQ(bxTool::getAccuracyStr(value).c_str(), text);
}

} // namespace
