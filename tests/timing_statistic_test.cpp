#include "timingsupport.h"

using testing::ElementsAre;

namespace {

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

TEST_F(Engine, CallStatisticReachesItsClocks) {
    s_statuses.clear();
    constexpr int clocks = 2'000'000; // more than an interrupt or the translation by an emulator takes
    tool.setMethodStat(1, clocks);
    tool.timing(nullptr, nullptr, call, nullptr);
    EXPECT_GE(tool.clocks, clocks);
    EXPECT_STRNE(tool.info.c_str(), "nCalls=1");
}

} // namespace
