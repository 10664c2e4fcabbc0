/** \file
 * One measurement: the calls between two readings of the counter, and what is done around them.
 */
#include "data/bxalloc.h"
#include "output/bxtrace.h"
#include "system/bxclock.h"
#include "system/bxpriority.h"
#include "timing/bxcallwatch.h"
#include "timing/bxinternalerror.h"
#include "timing/bxtool.h"
#include "timing/bxwatchdog.h"

#include <cmath>

namespace {

/** The priority of the measurements for a scope; after a fault the guard of the test restores it. */
class PriorityScope {
  public:
    PriorityScope() { bxSetPriority(bxTool::m_priority); }
    ~PriorityScope() { bxResetPriority(); }
    PriorityScope(const PriorityScope&) = delete;
    PriorityScope& operator=(const PriorityScope&) = delete;
};

/** The result of a library status; OK where no library is bound. */
bxResult checkedStatus(int status) {
    return bxTool::m_pCheckStatus ? bxTool::m_pCheckStatus(status) : OK;
}

/** Runs calls under the trace step that a fault message names, within the time limit. */
template <class Calls>
auto tracedCalls(const char* step, Calls calls) {
    g_trace.traceIn(step);
    bxEnterCalls();
    const auto r = calls();
    bxLeaveCalls();
    g_trace.traceOut(step);
    return r;
}

/** Runs the calls of a measurement. */
template <class Calls>
bxResult zorFunctionCalls(Calls calls) {
    g_callWatch.start();
    const bxResult r = tracedCalls("zorFunctionCalls", calls);
    g_callWatch.stop();
    return r;
}

/** Runs the calls of a measurement inside the floating-point watch and with the measuring priority. */
template <class Calls>
bxResult watchedCalls(const bxTool& tool, Calls calls) {
    if (tool.ibsMode && tool.initFunc)
        tracedCalls("initFunc call", tool.initFunc);
    bxTool::ctrlStart();
    g_callWatch.start();
    const bxResult r = tracedCalls("zorFunctionCalls", [&] {
        const PriorityScope priority;
        return calls();
    });
    bxTool::ctrlStop(); // first: putting the control words back clears the flags
    g_callWatch.stop();
    return r;
}

/** The pair behind a timing function of the whole engine. */
bxFuncTool s_funcTool = nullptr;
bxTool* s_tool = nullptr;

} // namespace

/** Lets a timing function of the whole engine stand as a loop function. */
bxResult bxTool::callFuncTool(int count, long long* total) {
    s_tool->m_figureReported = false;
    const bxResult r = s_funcTool(*s_tool, count);
    *total = s_tool->clocks * bxCpuTicker::getClockFactor();
    if (*total == 0 && s_tool->m_figureReported)
        *total = std::llround(s_tool->funcClocks * count);
    return r;
}

bxResult bxTool::timing(bxFuncTool funcTool) {
    s_funcTool = funcTool;
    s_tool = this;
    return timing(callFuncTool, nullptr, nullptr, nullptr);
}

void bxTool::runTimFunc(int count, double* perCall) {
    constexpr int attempts = 2; // no clocks at all are worth another try
    for (int i = 0; i < attempts; ++i) {
        clocks = 0;
        if (includeDataSet && !funcCall) {
            result = UNDEFINED;
            return;
        }
        m_flags.putBack();
        updateResult(measureLoop(count));
        m_flags.keep();
        if (bxIsFailure(result) || clocks > 0)
            break;
    }
    *perCall = static_cast<double>(clocks) / count;
}

bxResult bxTool::measureLoop(int count) {
    if (includeDataSet)
        return zorFunctionCalls([&] { return timCall_Loop(count, &clocks, true); });
    return watchedCalls(*this, [&] {
        if (funcLoop)
            return funcLoop(count, &clocks);
        if (funcCall)
            return timCall_Loop(count, &clocks, false);
        return bxInternalError();
    });
}

void bxTool::runTimFuncStat(long long minClocks, int* calls, double* perCall) {
    if (includeDataSet && !funcCall) {
        result = UNDEFINED;
        return;
    }
    clocks = minClocks;
    m_flags.putBack();
    const bxResult r = measureStat(calls);
    m_flags.keep();
    *perCall = *calls == 0 ? 0.0 : static_cast<double>(clocks) / *calls;
    updateResult(r);
}

bxResult bxTool::measureStat(int* calls) {
    if (includeDataSet)
        return zorFunctionCalls([&] { return timCall_Stat(calls, &clocks, true); });
    return watchedCalls(*this, [&] {
        if (funcStat)
            return funcStat(calls, &clocks);
        if (funcCall)
            return timCall_Stat(calls, &clocks, false);
        return bxInternalError();
    });
}

/** The call before those that are timed, which shows whether they can be made directly. */
int bxTool::untimedCall() {
    const int status = g_callWatch.call(funcCall);
    if (g_callWatch.clobbers())
        funcCall = bxCallWatch::shield(funcCall);
    return status;
}

bxResult bxTool::timCall_Loop(int count, long long* total, bool restoreData) {
    if (!funcCall)
        return bxInternalError();
    if (initFunc)
        initFunc();
    int status = untimedCall();
    if (m_pCheckStatus && status < 0)
        return m_pCheckStatus(status);
    const unsigned long long first = zor_get_cpu_counter();
    for (int i = 0; i < count; ++i) {
        if (initFunc)
            initFunc();
        if (restoreData)
            bxResetAllVectors();
        const int called = funcCall();
        if (called != 0)
            status = called;
        if (called < 0)
            break;
    }
    const unsigned long long last = zor_get_cpu_counter();
    *total = static_cast<long long>(last - first) * bxCpuTicker::getClockFactor();
    return checkedStatus(status);
}

bxResult bxTool::timCall_Stat(int* calls, long long* total, bool restoreData) {
    if (!funcCall)
        return bxInternalError();
    if (initFunc)
        initFunc();
    int status = untimedCall();
    if (m_pCheckStatus && status < 0)
        return m_pCheckStatus(status);
    int counted = 0;
    long long sum = 0;
    while (counted < *calls || sum * bxCpuTicker::getClockFactor() < *total) {
        if (initFunc)
            initFunc();
        const unsigned long long first = zor_get_cpu_counter();
        if (restoreData)
            bxResetAllVectors();
        status = funcCall();
        const unsigned long long last = zor_get_cpu_counter();
        sum += static_cast<long long>(last - first);
        ++counted;
        // A second call, untimed, shows what the function makes of data that it has changed itself.
        const int again = funcCall();
        if (again != 0)
            status = again;
        if (again < 0)
            break;
    }
    *calls = counted;
    *total = sum * bxCpuTicker::getClockFactor();
    return checkedStatus(status);
}
