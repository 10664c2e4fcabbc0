/** \file
 * Functions under test that follow a script, for the tests of the methods.
 */
#ifndef TIMINGSUPPORT_H
#define TIMINGSUPPORT_H

#include "testsupport.h"
#include "timing/bxfpwatch.h"
#include "timing/bxtool.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

/** A function under test follows a script instead of the clock: what the measurements find, in clocks per
 * call; the last one is repeated. */
inline std::vector<double> s_figures;
/** The call counts that were asked for. */
inline std::vector<int> s_counts;
/** What a measurement does besides. */
inline std::function<bxResult(int count)> s_effect;

inline bxResult scriptedLoop(int count, long long* clocks) {
    const std::size_t i = std::min(s_counts.size(), s_figures.size() - 1);
    s_counts.push_back(count);
    *clocks = static_cast<long long>(s_figures[i] * count);
    return s_effect ? s_effect(count) : OK;
}

inline bxResult scriptedStat(int* calls, long long* clocks) {
    s_counts.push_back(*calls);
    *calls += 3; // more calls than asked for, to reach the clocks
    *clocks = static_cast<long long>(s_figures[0]) * *calls;
    return OK;
}

inline int s_calls, s_inits;
inline std::vector<int> s_statuses; // of the calls in order; 0 after the last

inline int call() {
    const auto i = static_cast<std::size_t>(s_calls++);
    return i < s_statuses.size() ? s_statuses[i] : 0;
}

inline int init() {
    ++s_inits;
    return 0;
}

/** Leaves the x87 "invalid operation" flag behind. */
inline void raiseInvalid87() {
    __asm__ volatile("fld1; fchs; fsqrt; fstp %%st(0)" : : : "st");
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

#endif
