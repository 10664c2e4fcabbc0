/** \file
 * What a faulting test does to itself, and what it leaves behind for the next.
 */
#include "frameworksupport.h"
#include "timing/bxwatchdog.h"

namespace {

using FrameworkFaults = FrameworkFixture;

int* volatile s_nowhere = nullptr;

/** Faults are what these cases are about: no sanitizer has to tell. */
__attribute__((no_sanitize("undefined"))) bool fault() {
    *s_nowhere = 1;
    return true;
}

bxResult storeToNull(int, long long*) {
    fault();
    return OK;
}

bxResult badValue(int, long long*) {
    throw bxException(bxString("Invalid value of Len = x"));
}

struct Fault {
    bxFuncLoop function;
    const char* message;
};

TEST_F(FrameworkFaults, AFaultEndsItsTestAndNoOther) {
    const Fault faults[] = {
        {storeToNull, "--ZOR. Signal: Illegal storage access. in zorFunctionCalls\n"},
        {badValue, "--ZOR. Exception: Invalid value of Len = x in zorFunctionCalls\n"},
    };
    for (const Fault& fault : faults) {
        Suite suite;
        ScriptedTest& broken = suite.add("zorsBroken");
        broken.funcLoop = fault.function;
        suite.add("zorsNext");
        Capture listing(outWarn);
        TableCapture table;
        TableCapture summary(g_ustrm);
        bxConditions all;
        EXPECT_TRUE(suite.list.runTests(all));
        EXPECT_EQ(suite.list.numResults[EXCPTFAIL], 1);
        EXPECT_EQ(suite.list.numResults[OK], 1);
        EXPECT_EQ(unframed(listing.text()), fault.message);
        EXPECT_EQ(broken.flushed, 1) << "data are freed though the loop did not come to it";
        EXPECT_EQ(broken.stopped, 0);
        EXPECT_EQ(table.text(), "zorsNext,-,-,nLps=1,1000,e,1,-\n");
        EXPECT_NE(summary.text().find(",EXCPTFAIL,"), std::string::npos);
        EXPECT_EQ(g_ostrm.outLevel(), outWarn) << "the level of the timing does not stay";
    }
}

TEST_F(FrameworkFaults, AFaultInAnyStepIsNamed) {
    struct Case {
        std::function<void(ScriptedTest&)> arrange;
        const char* step;
        int flushed;
    };
    for (const Case& c :
         {Case{[](ScriptedTest& t) { t.onCanStart = fault; }, "canStart", 0},
          Case{[](ScriptedTest& t) { t.onInit = fault; }, "initData", 1},
          Case{[](ScriptedTest& t) { t.onFlush = fault; }, "flushData", 0},
          Case{[](ScriptedTest& t) { t.onTiming = [] { return fault(), OK; }; }, "runTiming", 1}}) {
        ScriptedTest test;
        c.arrange(test);
        Capture listing(outErr);
        EXPECT_EQ(test.run(), EXCPTFAIL);
        EXPECT_EQ(unframed(listing.text()),
                  std::string("--ZOR. Signal: Illegal storage access. in ") + c.step + "\n");
        EXPECT_EQ(test.flushed, c.flushed) << "in " << c.step;
    }
}

TEST_F(FrameworkFaults, AFaultInANameLineLeavesTheTablesApart) {
    class Nameless : public ScriptedTest {
      public:
        void parmsNameToCstrm() override { fault(); }
    };
    Nameless broken;
    ScriptedTest next;
    Capture listing(outErr);
    TableCapture results;
    TableCapture names(g_qstrm);
    bxSessionModes::m_nameMode = bxSessionModes::nameInOwnTable;
    EXPECT_EQ(broken.run(), EXCPTFAIL);
    bxSessionModes::m_nameMode = 0;
    EXPECT_EQ(unframed(listing.text()), "--ZOR. Signal: Illegal storage access. in parmsNameToCstrm\n");
    EXPECT_EQ(next.run(), OK);
    EXPECT_EQ(results.text(), "zorsScripted_32f,-,-,nLps=1,1000,e,1,-\n");
    EXPECT_EQ(names.text(), "");
}

TEST_F(FrameworkFaults, AFaultInTheEndOfATestCostsThatTestOnly) {
    class Endless : public ScriptedTest {
      public:
        using ScriptedTest::ScriptedTest;
        std::function<void()> onEnd;
        void endTest() override { onEnd(); }
    };
    for (const auto& [onEnd, message] :
         {std::pair<std::function<void()>, const char*>{
              fault, "--ZOR. Signal: Illegal storage access. in endTest\n"},
          {[] { throw std::runtime_error("no end"); }, "--ZOR. Exception: no end in endTest\n"}}) {
        Suite suite;
        Endless broken("zorsBroken");
        broken.onEnd = onEnd;
        suite.list.push_back(&broken);
        suite.add("zorsNext");
        Capture listing(outErr);
        TableCapture summary(g_ustrm);
        bxConditions all;
        EXPECT_TRUE(suite.list.runTests(all));
        EXPECT_EQ(suite.list.numResults[EXCPTFAIL], 1);
        EXPECT_EQ(suite.list.numResults[OK], 1);
        EXPECT_NE(listing.text().find(message), std::string::npos) << listing.text();
        EXPECT_NE(listing.text().find("| -EXCPTFAIL  zorsBroken"), std::string::npos);
        EXPECT_NE(summary.text().find("zorsBroken,Timing,-,-,-,-,TimScripted,0,p_scripted.cpp,EXCPTFAIL,"),
                  std::string::npos);
    }
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitizedHeap = true;
#elif defined(__has_feature)
constexpr bool sanitizedHeap = __has_feature(address_sanitizer);
#else
constexpr bool sanitizedHeap = false;
#endif

TEST_F(FrameworkFaults, AFaultInTheAllocatorLeavesTheTimeLimitAlive) {
    if (sanitizedHeap)
        GTEST_SKIP() << "the sanitizer's heap has other heads";
    ScriptedTest broken;
    void* const block = bxMalloc(64, 0, 0, nullptr);
    void*& start = *reinterpret_cast<void**>(static_cast<char*>(block) - 128);
    void* const sound = std::exchange(start, static_cast<char*>(start) + 8); // the heap refuses to free it
    broken.onTiming = [block] { return bxFree(block), OK; };
    Capture listing(outNone);
    EXPECT_EQ(broken.run(), EXCPTFAIL);
    EXPECT_FALSE(bxAllocatorBusy()) << "a later test that never returns would not be stopped";
    start = sound;
}

TEST_F(FrameworkFaults, AFaultLeavesStreamsAsTheyWere) {
    ScriptedTest broken;
    broken.onTiming = [] {
        g_ostrm << DATA; // a message, a row and a step that nobody ends
        g_cstrm << "junk";
        g_trace.traceIn("dump");
        fault();
        return OK;
    };
    const int openMessages = g_ostrm.openMessages();
    Capture listing(outErr);
    EXPECT_EQ(broken.run(), EXCPTFAIL);
    EXPECT_NE(listing.text().find(" in dump\n"), std::string::npos);
    EXPECT_EQ(g_ostrm.openMessages(), openMessages);
    ScriptedTest next;
    TableCapture table;
    EXPECT_EQ(next.run(), OK);
    EXPECT_EQ(table.text(), "zorsScripted_32f,-,-,nLps=1,1000,e,1,-\n");
    EXPECT_TRUE(g_trace.empty());
    EXPECT_TRUE(g_trace.indent().empty());
}

TEST_F(FrameworkFaults, AFaultBeforeTheTitleGetsItsTitleAndItsRow) {
    ScriptedTest test;
    test.onBegin = [] { fault(); };
    Capture listing(outErr);
    TableCapture summary(g_ustrm);
    EXPECT_EQ(test.run(), EXCPTFAIL);
    EXPECT_EQ(listing.text().find("| Function  : zorsScripted_32f"), 0U);
    EXPECT_EQ(unframed(listing.text()), "--ZOR. Signal: Illegal storage access. in beginTest\n");
    EXPECT_EQ(summary.text().find("zorsScripted_32f,Timing,-,-,-,-,TimScripted,"), 0U);
}

TEST_F(FrameworkFaults, RowsHeldBackBeforeAFaultAreWritten) {
    bxIterator<int> a(0, "A", "");
    a.add(1);
    a.add(2);
    a.addDeprecated(1, "old");
    a.setNeedsInput(false);
    ScriptedTest test;
    test.onCanStart = [&] { return test.regParm(a) != nullptr; };
    test.onInit = [&] { return a.value() == 1 || fault(); };
    TableCapture table;
    Capture listing(outErr);
    EXPECT_EQ(test.run(), EXCPTFAIL);
    EXPECT_EQ(table.text(),
              "zorsScripted_32f,1,-,nLps=1,1000,e,1,-\nzorsScripted_32f,old,-,deprecated,1000,e,1,-\n");
}

// A unit may build a table once and keep it for all its tests, whatever becomes of the first of them.
TEST_F(FrameworkFaults, WhatATestKeepsStays) {
    const long long mark = bxMallocMark();
    for (const bxFuncLoop function : {bxFuncLoop{ScriptedTest::loop}, bxFuncLoop{storeToNull}}) {
        void* table = nullptr;
        void* data = nullptr;
        Capture listing(outErr);
        ScriptedTest first, second;
        first.onCanStart =
            second.onCanStart = [&] { return (table = table ? table : bxTest::allocate(100, 0)) != nullptr; };
        first.onInit = second.onInit = [&] { return (data = bxTest::allocate(100, 0)) != nullptr; };
        first.onFlush = second.onFlush = [&] { bxTest::deallocate(data); };
        first.funcLoop = function;
        first.run();
        second.run();
        EXPECT_TRUE(bxMallocInfo(table, nullptr, nullptr));
        EXPECT_FALSE(bxMallocInfo(data, nullptr, nullptr));
    }
    EXPECT_EQ(bxFreeSince(mark), 2);
}

TEST_F(FrameworkFaults, DataInRuinsAreFreedForTheTest) {
    ScriptedTest test;
    test.onInit = [&] { return bxTest::allocate(100, 0) && fault(); };
    test.onFlush = [&] { fault(); };
    const long long before = bxAllocatedSize();
    Capture listing(outErr);
    EXPECT_EQ(test.run(), EXCPTFAIL);
    EXPECT_EQ(bxAllocatedSize(), before);
}

// A combination without data is passed over; the result of its test tells.
TEST_F(FrameworkFaults, MissingDataShowInTheResult) {
    bxIterator<int> a(1, "A", "");
    a.add(1);
    a.add(-1);
    a.setNeedsInput(false);
    ScriptedTest test;
    test.onCanStart = [&] { return test.regParm(a) != nullptr; };
    void* data = nullptr;
    const auto allocate = [&] { return (data = bxTest::allocate(a.value(), 0)) != nullptr; };
    test.onFlush = [&] { bxTest::deallocate(data); };
    Capture listing(outWarn);
    test.onInit = allocate;
    EXPECT_EQ(test.run(), DATAWRN);
    test.onInit = [&] { return a.value() > 0 && allocate(); };
    EXPECT_EQ(test.run(), OK) << "what the test itself passes over is no fault";
    test.onInit = [&] { return a.value() < 0 && allocate(); };
    EXPECT_EQ(test.run(), DATAFAIL) << "nothing was measured";
}

TEST_F(FrameworkFaults, DataThatAreNeverBuiltAreLeftAtTheTimeLimit) {
    bxSetTimeLimit(1);
    volatile bool forever = true;
    const auto inTheTest = [&] {
        while (forever) {}
        return true;
    };
    const auto inTheAllocator = [&] {
        while (forever)
            bxTest::deallocate(bxTest::allocate(16, 0));
        return true;
    };
    for (const std::function<bool()>& endless : {std::function<bool()>(inTheTest), {inTheAllocator}}) {
        ScriptedTest test;
        test.onInit = endless;
        Capture listing(outErr);
        EXPECT_EQ(test.run(), EXCPTFAIL);
        EXPECT_NE(listing.text().find("--ZOR. Signal: Time limit of 1 s exceeded. in initData\n"),
                  std::string::npos);
    }
    bxSetTimeLimit(0);
}

TEST_F(FrameworkFaults, FloatingPointStateIsPutBack) {
    ScriptedTest test;
    unsigned int mxcsr = 0;
    test.onTiming = [&] {
        bx_set_ssx(0x6000, 0x6000); // rounding toward zero
        bx_set_cw_fpu(0xC00, 0xC00);
        return OK;
    };
    test.onFlush = [&] { mxcsr = bx_get_ssx(); };
    test.run();
    EXPECT_EQ(mxcsr & 0x6000, 0U) << "the next data are built with rounding to nearest";
    EXPECT_EQ(bx_set_cw_fpu(0, 0) & 0xC00, 0U);
}

} // namespace
