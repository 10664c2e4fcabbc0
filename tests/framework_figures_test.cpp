/** \file
 * Figures of a measurement and their texts.
 */
#include "framework/bxcomment.h"
#include "framework/bxlayoutspread.h"
#include "framework/bxtestcalls.h"
#include "frameworksupport.h"
#include "timing/bxinstructions.h"

#include <cmath>

namespace {

using FiguresTest = FrameworkFixture;

TEST_F(FiguresTest, FormatsClocks) {
    struct Case {
        double value;
        const char* text;
    };
    ScriptedTest test;
    for (const Case& c : {Case{1234.6, "1235"},
                          {12.345, "12.3"},
                          {1.2345, "1.23"},
                          {0.00005, "5.000e-05"},
                          {20000000, "2.000e+07"},
                          {0, ""},
                          {-1, ""},
                          {std::nan(""), ""},
                          {100, "100"},
                          {99.96, "100.0"},
                          {10, "10.0"},
                          {1, "1.00"},
                          {0.1, "0.100"},
                          {0.01, "0.0100"},
                          {0.001, "0.00100"},
                          {0.0005, "0.000500"},
                          {0.0001, "0.000100"},
                          {10000000, "10000000"}})
        EXPECT_STREQ(test.formatClocks(c.value).c_str(), c.text) << c.value;
}

TEST_F(FiguresTest, FillsTextsToAWidth) {
    struct Case {
        const char* text;
        int width;
        const char* filled;
    };
    for (const Case& c :
         {Case{"ab", 5, "   ab"}, {"ab", -5, "ab   "}, {"ab", 1, "ab"}, {"ab", 0, "ab"}, {"", 2, "  "}})
        EXPECT_STREQ(bxTest::sFormat(c.text, c.width).c_str(), c.filled);
    EXPECT_STREQ(bxTest::sFormat(-7, 4).c_str(), "  -7");
    EXPECT_STREQ(bxTest::sFormat(2.0, -3).c_str(), "2  ");
    EXPECT_STREQ(bxTest::sFormat(12345678901LL, 12).c_str(), " 12345678901");
}

TEST_F(FiguresTest, FiguresOfAMeasurement) {
    ScriptedTest test;
    test.tool.funcClocks = 4096;
    test.flops = 2048;
    test.divisor = 1024;
    EXPECT_EQ(test.performance(true), 500);
    EXPECT_EQ(test.performance(false), 4);
    EXPECT_STREQ(test.perfString(true).c_str(), "500");
    EXPECT_STREQ(bxTest::usecString(test.tool).c_str(), "4.1");
    test.flops = 0;
    EXPECT_STREQ(test.perfString(true).c_str(), "") << "no float function";

    test.flops = 2048;
    bxCpuTicker::m_freqMHz = -1;
    EXPECT_STREQ(test.perfString(true).c_str(), "-") << "the frequency is not known";
    EXPECT_STREQ(bxTest::usecString(test.tool).c_str(), "-");
    EXPECT_STREQ(test.perfString(false).c_str(), "4.00");
    bxCpuTicker::m_freqMHz = 1000;

    // Where the x87 traps a division by zero, none may happen.
    test.tool.funcClocks = 0;
    test.flops = 2048;
    EXPECT_STREQ(test.perfString(true).c_str(), "");
    EXPECT_STREQ(test.perfString(false).c_str(), "");
    test.divisor = 0;
    EXPECT_EQ(test.performance(false), 0);
    bxCpuTicker::m_freqMHz = 1;
    test.setTimingResult(7, "own");
    EXPECT_STREQ(bxTest::usecString(test.tool).c_str(), "7");
    EXPECT_STREQ(test.getComment().c_str(), "own");
}

TEST_F(FiguresTest, ResultLine) {
    ScriptedTest test;
    test.divisor = 64;
    test.tool.funcClocks = 640;
    test.tool.actualAccuracy = 0.008;
    test.tool.info = "nLps=512";
    test.tool.method = bxTool::methodAuto;
    EXPECT_STREQ(test.testResultString().c_str(),
                 "  acc=0.8%   nLps=512    perf=      640/       64=     10.0 clocks");
    test.tool.method = bxTool::methodStat;
    EXPECT_STREQ(test.testResultString().c_str(), "  nLps=512    perf=      640/       64=     10.0 clocks");
}

// What companion programs read in the comment column.
TEST_F(FiguresTest, CommentOfLayouts) {
    const struct {
        bxLayoutSpread spread;
        const char* text;
    } cases[] = {
        {{}, ""},
        {{1, {100}, true}, ""},
        {{3, {100, 125, 101}, true}, "layouts=3 between=100..125 middle=101 spread=24.8%"},
        {{4, {0.5, 0.5}, false}, "layouts=2/4 between=0.5..0.5 middle=0.5 spread=0.00% code=fixed"},
        {{5, {100}, true}, "layouts=1/5"},
    };
    for (const auto& c : cases)
        EXPECT_STREQ(c.spread.text().c_str(), c.text);
}

TEST_F(FiguresTest, CommentOfThePreciseMode) {
    bxPreciseFigure clean;
    clean.clocks = 123.456789;
    clean.low = 123.4;
    clean.high = 123.5;
    clean.known = clean.reached = true;
    clean.coreClocksPerTick = 1.25;
    clean.slices = 16;
    clean.dropped = 2;
    clean.throughput = 3.93;
    bxPreciseFigure missed = clean, shared = clean, nothing;
    missed.reached = false;
    missed.core = 1;
    missed.multiplication = 6;
    shared.known = shared.reached = false;
    shared.lost = 0.125;
    nothing.nothing = nothing.reached = true;
    const struct {
        bxPreciseFigure figure;
        const char* comment;
    } cases[] = {
        {clean, "nLps=7 slices=16 dropped=2 clocks=123.457 95%=123.4..123.5 core/counter=1.25000 "
                "adds/clock=3.930 instr=120 code=0000001f ipc=0.972"},
        {missed, "nLps=7 slices=16 dropped=2 clocks=123.457 95%=123.4..123.5 core/counter=1.25000 "
                 "adds/clock=3.930 core=1 imul/add=6.00 acc=2.0% instr=120 code=0000001f ipc=0.972"},
        {shared, "nLps=7 slices=16 dropped=2 clocks=123.457 95%=unknown core/counter=1.25000 "
                 "adds/clock=3.930 shared=12.5% instr=120 code=0000001f ipc=0.972"},
        {nothing, "nLps=7 calls take no time instr=120 code=0000001f"},
        {{}, "nLps=7 instr=120 code=0000001f"},
    };
    bxInstructionCount count;
    count.instructions = count.steps = 120;
    count.digest = 0x1f;
    for (const auto& c : cases) {
        bxTool tool;
        tool.found = true;
        tool.actualAccuracy = 0.02;
        tool.preciseFigure = c.figure;
        tool.info = "nLps=7";
        bxCompleteComment(tool, count, {}, {});
        EXPECT_STREQ(tool.info.c_str(), c.comment);
    }
}

TEST_F(FiguresTest, RegistrationText) {
    enum Function { loop = 1, stat = 2, own = 4, call = 8, init = 16 };
    struct Case {
        int functions;
        int method;
        bool restore;
        const char* text;
        bool precise = false;
    };
    const Case cases[] = {
        {0, 0, false, " without any function to call.\n No standard timing method is available"},
        {loop | stat | call, 0, false,
         " with loopMethod, statMethod, funcCall.\n   loopMethod is called for measuring."},
        {loop | stat, 2, false, " with loopMethod, statMethod.\n   statMethod is called for measuring."},
        {loop, 2, false, " with loopMethod.\n   loopMethod is called for measuring."},
        {loop | stat, 2, false, " with loopMethod, statMethod.\n   loopMethod is called for measuring.",
         true},
        {stat | call, 0, false, " with statMethod, funcCall.\n   funcCall is called for measuring.", true},
        {stat, 0, false, " with statMethod.\n   statMethod is called for measuring.", true},
        {stat, 1, false, " with statMethod.\n   statMethod is called for measuring."},
        {call | init, 3, false, " with funcCall, funcInit.\n   funcCall is called for measuring."},
        {loop | call, 0, true,
         " with loopMethod, funcCall.\n   funcCall with Set&Use is called for measuring."},
        {own | call, 0, true, " with oldMethod, funcCall.\n   oldMethod is called for measuring."},
    };
    for (const Case& c : cases) {
        ScriptedTest test("f", "Tim//KV_REG_I");
        test.funcLoop = c.functions & loop ? &ScriptedTest::loop : nullptr;
        test.funcStat = c.functions & stat ? &ScriptedTest::stat : nullptr;
        test.funcTool = c.functions & own ? [](bxTool&, int) { return OK; } : bxFuncTool();
        test.funcCall = c.functions & call ? &ScriptedTest::call : nullptr;
        test.initFunc = c.functions & init ? &ScriptedTest::call : nullptr;
        test.tool.method = c.method;
        test.tool.includeDataSet = c.restore;
        test.tool.precise = c.precise;
        EXPECT_EQ(std::string(test.regInfo().c_str()),
                  std::string("   Test has been registered by KV_REG_I macro") + c.text);
    }
    EXPECT_EQ(ScriptedTest("f", "Tim").regInfo().find(" by "), -1);
}

} // namespace
