/** \file
 * The counts of instructions that stand beside the figures.
 */
#include "frameworksupport.h"

#include <regex>
#include <unistd.h>

namespace {

using FrameworkTest = FrameworkFixture;

/** Calls since a test began: what the function executes depends on it. */
int s_calls = 0;

TEST_F(FrameworkTest, InstructionsStandBesideTheFigure) {
    const auto branches = [] { return ++s_calls % 2 ? s_calls * 7 : 0; };
    const auto kernel = [] { return static_cast<int>(getppid() * 0); };
    struct Case {
        const char* what;
        bxFuncCall call;
        int most;
        const char* comment;
    };
    for (const Case& c : {Case{"counted", branches, 1000, "own instr=# code=#"},
                          {"too long", branches, 2, "own instr>2"},
                          {"stopped", kernel, 1000, "own instr=?syscall"},
                          {"no such function", nullptr, 1000, "own instr=?nocall"}}) {
        SCOPED_TRACE(c.what);
        ScriptedTest test;
        test.funcCall = c.call;
        g_tool.countInstructions = true;
        g_tool.mostInstructions = c.most;
        test.onTiming = [&test] { return test.setTimingResult(100, "own"), OK; };
        std::string comment;
        Capture listing(outErr);
        for (int run = 0; run < 2; ++run) { // as often as it is called before, the count is the same
            s_calls = 0;
            EXPECT_EQ(test.run(), OK);
            EXPECT_TRUE(comment.empty() || comment == test.getComment().c_str());
            comment = test.getComment().c_str();
        }
        EXPECT_EQ(std::regex_replace(comment, std::regex("(instr|code)=[0-9a-f]+"), "$1=#"), c.comment);
    }

    ScriptedTest test;
    test.funcCall = branches;
    test.onTiming = [&test] {
        test.setTimingResult(100, "own");
        test.tool.preciseFigure.clocks = 0.5;
        return OK;
    };
    Capture listing(outErr);
    g_tool.mostInstructions = 1000;
    test.run();
    const std::string comment = test.getComment().c_str();
    const double instructions = std::atof(comment.c_str() + comment.find("instr=") + 6);
    EXPECT_NEAR(std::atof(comment.c_str() + comment.find("ipc=") + 4), 2 * instructions, 1) << comment;
}

} // namespace
