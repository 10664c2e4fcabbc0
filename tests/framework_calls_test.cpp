/** \file
 * What single calls cost, beside the figures.
 */
#include "frameworksupport.h"

#include <gmock/gmock.h>

#include <regex>

namespace {

using FrameworkTest = FrameworkFixture;

TEST_F(FrameworkTest, SingleAndFirstCallsStandBesideTheFigure) {
    const struct {
        bxFuncCall call;
        int calls;
        bool cold;
        bxResult result;
        const char* comment;
    } cases[] = {
        {[] { return 0; }, 0, false, OK, "own"},
        {[] { return 0; }, 50, false, OK,
         "own calls=50 least=# median=# 99%=# 99.9%=# most=# interrupted=#( kept)?( upto=#)? hist=#"},
        {[] { return 0; }, 0, true, OK, "own( first=#)?"}, // next to nothing, cold too
        {nullptr, 50, true, OK, "own calls=\\?nocall first=\\?nocall"},
        {[] { return -1; }, 50, false, FUNCFAIL, "own calls=\\?status"},
    };
    bxTool::m_pCheckStatus = [](int status) { return status < 0 ? FUNCFAIL : OK; };
    for (const auto& c : cases) {
        ScriptedTest test;
        test.funcCall = c.call;
        g_tool.singleCalls = c.calls;
        g_tool.coldCalls = c.cold;
        test.onTiming = [&test] { return test.setTimingResult(100, "own"), OK; };
        Capture listing(outErr);
        EXPECT_EQ(test.run(), c.result) << c.comment;
        const std::string form = std::regex_replace(c.comment, std::regex("#"), "[0-9.e+]+");
        EXPECT_TRUE(std::regex_match(test.getComment().c_str(), std::regex(form)))
            << test.getComment().c_str();
    }
    bxTool::m_pCheckStatus = nullptr;
}

/** A chain of 6000 additions. */
int chain() {
    unsigned sum = 0;
    for (int i = 0; i < 600; ++i)
        asm volatile(".rept 10\n\tadd %0, %0\n\t.endr" : "+r"(sum) : : "cc");
    return 0;
}

TEST_F(FrameworkTest, SingleCallsAreInTheClocksOfTheFigure) {
    ScriptedTest test;
    test.funcCall = chain;
    g_tool.singleCalls = 200;
    const auto median = [&](double coreClocksPerTick) {
        test.onTiming = [&test, coreClocksPerTick] {
            test.tool.preciseFigure.coreClocksPerTick = coreClocksPerTick;
            return test.setTimingResult(100, "own"), OK;
        };
        Capture listing(outErr);
        test.run();
        const std::string comment = test.getComment().c_str();
        return std::atof(comment.c_str() + comment.find("median=") + 7);
    };
    EXPECT_NEAR(median(10) / median(1), 10, 4);
}

} // namespace
