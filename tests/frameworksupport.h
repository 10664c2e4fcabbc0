/** \file
 * A test whose steps are given by the case at hand.
 */
#ifndef FRAMEWORKSUPPORT_H
#define FRAMEWORKSUPPORT_H

#include "bx.h"
#include "framework/bxrun.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

/** Times by a fixed figure; the other steps do what the case says, or what the base does. */
class ScriptedTest : public bxTest {
  public:
    explicit ScriptedTest(const char* function = "zorsScripted_32f", const char* text = "TimScripted//KV_REG")
        : bxTest(call, nullptr, loop, stat, function, "suite/p_scripted.cpp", text) {}

    static inline long long s_clocks = 1000; /**< per call */
    static inline bxResult s_status = OK;

    std::function<void()> onBegin;
    std::function<bool()> onCanStart;
    std::function<bool()> onInit;
    std::function<bxResult()> onTiming;
    std::function<void()> onFlush;
    double flops = -1;
    double divisor = 1;
    int flushed = 0;
    int stopped = 0;

    void beginTest() override {
        bxTest::beginTest();
        if (onBegin)
            onBegin();
    }
    bool canStart() override { return onCanStart ? onCanStart() : true; }
    void flushStart() override { ++stopped; }
    bool initData() override { return onInit ? onInit() : true; }
    bool flushData() override {
        if (onFlush)
            onFlush();
        return ++flushed != 0;
    }
    bxResult runTiming() override { return onTiming ? onTiming() : bxTest::runTiming(); }
    double getFlops() override { return flops; }
    double getDivisor() override { return divisor; }
    bxString getUnit() override { return "e"; }

    static int call() { return 0; }
    static bxResult loop(int count, long long* clocks) {
        *clocks = count * s_clocks;
        return s_status;
    }
    static bxResult stat(int* calls, long long* clocks) {
        *clocks = *calls * s_clocks;
        return s_status;
    }
};

/** Tests of one list; the list does not own them. */
class Suite {
  public:
    ScriptedTest& add(const char* function, const char* text = "TimScripted//KV_REG") {
        m_tests.push_back(std::make_unique<ScriptedTest>(function, text));
        list.push_back(m_tests.back().get());
        return *m_tests.back();
    }
    /** Function names of the tests that have been measured, in list order. */
    std::string measured() const {
        return joined([](const ScriptedTest& test) { return test.stopped != 0; });
    }
    std::string names() const {
        return joined([](const ScriptedTest&) { return true; });
    }

    bxTestList list;

  private:
    std::string joined(bool (*wanted)(const ScriptedTest&)) const {
        bxString names;
        for (const bxTest* test : list)
            if (wanted(static_cast<const ScriptedTest&>(*test)))
                names << (names.empty() ? "" : " ") << test->name;
        return std::string(names.view());
    }

    std::vector<std::unique_ptr<ScriptedTest>> m_tests;
};

/** Session-wide state as at the start of a run: Manual loop of one call, 1000 MHz. */
class FrameworkFixture : public ::testing::Test {
  protected:
    void SetUp() override {
        g_tool = bxTool();
        g_tool.setMethodLoop(1);
        bxCpuTicker::m_freqMHz = 1000;
        g_run.parameterColumns = 3;
        g_run.resultColumns = 5;
        ScriptedTest::s_clocks = 1000;
        ScriptedTest::s_status = OK;
    }
    void TearDown() override { g_tool = bxTool(); }

  private:
    const bxRunScope m_run; // each case has a run of its own
};

/** The lines of a text that are framed, or those that are not. */
inline std::string linesOf(const std::string& text, bool framed) {
    std::string lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        if ((text[at] == '|' || text[at] == '+') == framed)
            lines.append(text, at, end - at);
        at = end;
    }
    return lines;
}
inline std::string framedLines(const std::string& text) {
    return linesOf(text, true);
}
inline std::string unframed(const std::string& text) {
    return linesOf(text, false);
}

#endif
