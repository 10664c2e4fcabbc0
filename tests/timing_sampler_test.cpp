#include "data/bxalloc.h"
#include "output/bxtrace.h"
#include "timing/bxcallscope.h"
#include "timing/bxcallwatch.h"
#include "timing/bxsampler.h"
#include "timingsupport.h"

#include <sys/resource.h>
#include <unistd.h>

namespace {

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

TEST_F(Engine, AScopeChargesCallsWithTheirOwnFlagsOnly) {
    constexpr unsigned int invalidSSX = 1, overflowSSX = 8;
    bx_set_ssx(invalidSSX, invalidSSX); // by the caller
    raiseInvalid87();
    { const bxCallScope scope(bxCallScope::measured); }
    EXPECT_FALSE(bxBadCtrlStatus());
    {
        const bxCallScope scope(bxCallScope::measured);
        bx_set_ssx(overflowSSX, overflowSSX);
        bx_set_cw_fpu(0xC3F, 0xF3F);
    }
    EXPECT_STREQ(g_ssx.strExceptionState().c_str(), "?Overflow ");
    EXPECT_STREQ(g_ctrl87.strSW().c_str(), "Ok");
    EXPECT_TRUE(g_callWatch.bad());
    EXPECT_EQ(bx_set_cw_fpu(0, 0) & 0xF3FU, 0x23BU) << "put back";
    g_callWatch.init();
}

TEST_F(Engine, SomebodyMayLookOnBetweenMeasurements) {
    int looks = 0;
    bxCallSampler::m_between = [&looks] { ++looks; };
    timeLoop({300, 400, 500, 501});
    bxCallSampler::m_between = nullptr;
    EXPECT_EQ(looks, static_cast<int>(s_counts.size()));
}

int s_resets;

/** Counts how often its data is restored. */
struct RestoreCounter : bxObject {
    bool setReservedCopy() override { return ++s_resets, true; }
};

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

} // namespace
