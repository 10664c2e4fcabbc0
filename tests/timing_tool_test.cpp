#include "timingsupport.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

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
    EXPECT_THAT(capture.text(), HasSubstr("BX internal error: file bxtool.cpp, line "));
    tool.method = 9;
    EXPECT_EQ(tool.timing(scriptedLoop, nullptr, nullptr, nullptr), FAIL);
    EXPECT_THAT(capture.text(), HasSubstr("BX internal error: file bxtool.cpp, line "));
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

bxResult countingTool(bxTool& tool, int count) {
    tool.clocks = 30LL * count;
    return OK;
}

bxResult figureTool(bxTool& tool, int) {
    tool.setFuncTicks(42.4);
    return DATAWRN;
}

TEST_F(Engine, ToolFunctionsTimeThemselves) {
    EXPECT_EQ(tool.timing(countingTool), OK);
    EXPECT_DOUBLE_EQ(tool.funcClocks, 30);
    EXPECT_STREQ(tool.info.c_str(), "nLps=4");
    for (const int method : {bxTool::methodAuto, bxTool::methodLoop, bxTool::methodIterative}) {
        tool.method = method;
        EXPECT_EQ(tool.timing(figureTool), DATAWRN) << method;
        EXPECT_DOUBLE_EQ(tool.funcClocks, 42.4) << method;
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
