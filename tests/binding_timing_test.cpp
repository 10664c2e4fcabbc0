// The generated timing functions, the status check and the base of library tests.
#include "zorcore.h"

#include "data/bxalloc.h"
#include "kv.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

/** Statuses that the function under test returns, one after the other, the last again and again. */
std::vector<int> s_script;
std::size_t s_calls = 0;
int s_inits = 0;

int scripted() {
    const std::size_t call = s_calls++;
    return s_script.empty() ? 0 : s_script[std::min(call, s_script.size() - 1)];
}

int countInit() {
    ++s_inits;
    return 0;
}

struct Script {
    explicit Script(std::vector<int> statuses) {
        s_script = std::move(statuses);
        s_calls = 0;
        s_inits = 0;
    }
};

TEST(GeneratedTiming, LoopCallsOnceMoreThanAsked) {
    Capture capture(static_cast<OutputLevel>(7));
    long long clocks = -1;
    for (const int count : {0, 1, 5}) {
        Script script({0});
        EXPECT_EQ((kv::timeLoop<"zorsX", scripted, countInit>(count, &clocks)), OK);
        EXPECT_EQ(s_calls, static_cast<std::size_t>(count + 1));
        EXPECT_EQ(s_inits, count + 1);
        EXPECT_GE(clocks, 0);
    }
    Script script({-5, -5, 3});
    EXPECT_EQ((kv::timeLoop<"zorsX", scripted, nullptr>(2, &clocks)), FUNCWRN);
    EXPECT_NE(capture.text().find("status = 3 in zorsX: "), std::string::npos);
}

TEST(GeneratedTiming, StatisticCountsCompletedCalls) {
    Capture capture(static_cast<OutputLevel>(7));
    const struct {
        std::vector<int> statuses;
        int asked, counted;
        bxResult result;
    } cases[] = {{{0}, 0, 0, OK},
                 {{0}, 5, 5, OK},
                 {{-1}, 5, -1, FUNCFAIL},
                 {{0, -1}, 5, 0, FUNCFAIL},
                 {{0, 2, 0}, 5, 5, FUNCWRN},
                 {{0, 0, 0, -1}, 5, 2, FUNCFAIL}};
    for (const auto& c : cases) {
        Script script(c.statuses);
        int calls = c.asked;
        long long clocks = 0;
        EXPECT_EQ((kv::timeStat<"zorsX", scripted, nullptr>(&calls, &clocks)), c.result);
        EXPECT_EQ(calls, c.counted);
        EXPECT_GE(clocks, 0);
    }
    Script script({0});
    int calls = 0;
    long long clocks = 20000;
    kv::timeStat<"zorsX", scripted, countInit>(&calls, &clocks);
    EXPECT_GE(clocks, 20000);
    EXPECT_GT(calls, 0);
    EXPECT_EQ(s_inits, calls + 1);
}

const char* scriptedStatusText(ZorStatus) {
    return "a text";
}

TEST(Status, IsReportedAndGraded) {
    const auto saved = zor_GetStatusString;
    zor_GetStatusString = scriptedStatusText;
    const struct {
        int level, status;
        const char *name, *text;
        bxResult result, running;
        bool errorsOnly;
    } cases[] = {
        {7, 0, "f", "", OK, UNDEFINED, false},
        {7, -5, "f", "--ZOR ERROR. status = -5 in f: a text\n", FUNCFAIL, FUNCFAIL, false},
        {7, 3, "", "--ZOR WARNING. status = 3: a text\n", FUNCWRN, FUNCWRN, false},
        {1, 3, "f", "", FUNCWRN, OK, false},
        {1, -3, "f", "--ZOR ERROR. status = -3 in f: a text\n", FUNCFAIL, FUNCFAIL, false},
        {7, 3, "f", "", OK, UNDEFINED, true},
        {7, -3, "f", "--ZOR ERROR. status = -3 in f: a text\n", FUNCFAIL, FUNCFAIL, true},
    };
    for (const auto& c : cases) {
        Capture capture(static_cast<OutputLevel>(c.level));
        bxTest::m_currentResult = UNDEFINED;
        kvTest::m_checkErrorsOnly = c.errorsOnly;
        EXPECT_EQ(kvTest::checkStatus(c.status, c.name), c.result);
        EXPECT_EQ(capture.text(), c.text);
        EXPECT_EQ(bxTest::m_currentResult, c.running);
    }
    kvTest::m_checkErrorsOnly = false;
    zor_GetStatusString = saved;
}

bxResult warnThreeTimes(int, long long* clocks) {
    for (int i = 0; i < 3; ++i)
        kvTest::checkStatus(i < 2 ? 3 : 4, "f");
    *clocks = 1000;
    return kvTest::checkStatus(3, "g");
}

TEST(Status, ARepeatedWarningIsCounted) {
    const auto saved = zor_GetStatusString;
    zor_GetStatusString = scriptedStatusText;
    kvTest test(scripted, nullptr, warnThreeTimes, nullptr, "zorsX", "p", "T");
    test.tool.method = bxTool::methodLoop;
    for (int measurement = 0; measurement < 2; ++measurement) {
        Capture capture(static_cast<OutputLevel>(7));
        EXPECT_EQ(test.runTiming(), FUNCWRN);
        EXPECT_EQ(capture.text(), "--ZOR WARNING. status = 3 in f: a text\n"
                                  "--ZOR WARNING. status = 4 in f: a text\n"
                                  "--ZOR WARNING. status = 3 in g: a text\n"
                                  "--ZOR WARNING. status = 3 in f: 2 times\n");
    }
    zor_GetStatusString = saved;
}

TEST(LibraryTest, WritesThreeFunctionCellsAndKnowsFloat) {
    struct FlopTest : kvTest {
        using kvTest::kvTest;
        double getFlops() override { return 10; }
    };
    TableCapture table;
    FlopTest test(scripted, nullptr, kv::timeLoop<"zorsPow34_32f16s", scripted, nullptr>, nullptr,
                  "zorsPow34_32f16s", "dir/p_x.cpp", "FlopTest//BX_REG");
    test.funcToCstrm();
    g_cstrm << "\n";
    EXPECT_EQ(table.text(), "zorsPow34,32f16s,-\n");
    EXPECT_TRUE(test.isFloatFunction());
    EXPECT_NE(test.regInfo().find("by KV_REG macro", 0), -1);
    FlopTest fixed(scripted, nullptr, nullptr, nullptr, "zorsMDCTFwd_AAC_32s", "p", "FlopTest");
    EXPECT_FALSE(fixed.isFloatFunction());
}

TEST(LibraryTest, DumpsItsDataOnlyWhenAsked) {
    kvTest test(scripted, nullptr, nullptr, nullptr, "zorsX_8u", "p", "T");
    kvVector vector(kv8u);
    ASSERT_TRUE(vector.createVector(2, 0));
    kvVector hidden(kv8u);
    ASSERT_TRUE(hidden.createVector(2, 0, MEM_OBJECT_IS_SUBOBJECT));
    void* buffer = bxTest::allocate(3, 0);
    ASSERT_NE(buffer, nullptr);
    std::fill_n(static_cast<unsigned char*>(buffer), 3, static_cast<unsigned char>(0xAB));
    {
        Capture capture(static_cast<OutputLevel>(7));
        EXPECT_EQ(test.printAllMemoryBlocks("before"), 0);
        EXPECT_EQ(capture.text(), "");
    }
    Capture capture(static_cast<OutputLevel>(71));
    EXPECT_EQ(test.printAllMemoryBlocks("before"), 2);
    EXPECT_EQ(capture.text(), "======== OBJECTS OUTPUT START === before === OBJECTS OUTPUT START ========\n"
                              "======== Object 1: Vector 8u len=2\n"
                              "   2   2\n"
                              "\n"
                              "======== Object 2: MemoryBlock size=3\n"
                              " AB AB AB\n"
                              "\n"
                              "======== OBJECTS OUTPUT END === before === OBJECTS OUTPUT END ========\n");
    bxTest::deallocate(buffer);
}

} // namespace
