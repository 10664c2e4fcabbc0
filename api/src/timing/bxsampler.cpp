#include "timing/bxsampler.h"

#include "data/bxalloc.h"
#include "system/bxclock.h"
#include "timing/bxcallwatch.h"
#include "timing/bxfpwatch.h"
#include "timing/bxinternalerror.h"
#include "timing/bxtimingtext.h"
#include "timing/bxwatchdog.h"

#include <algorithm>

using bxTimingText::traced;

bxCallSampler::bxCallSampler(const bxTimingSettings& settings, bxTimingFunctions& functions, int priority,
                             bxStatusCheck check)
    : m_settings(settings), m_functions(functions), m_priority(priority), m_check(check) {
    g_ssx.stop(); // flags of the test's own data are the test's
}

bxSample bxCallSampler::once(const Calls& calls, bxCallScope::Extent extent) {
    if (extent == bxCallScope::measured && m_settings.ibsMode && m_functions.initFunc)
        traced("initFunc call", [this] {
            bxEnterCalls();
            m_functions.initFunc();
            bxLeaveCalls();
        });
    bxSample sample;
    traced("zorFunctionCalls", [&] {
        const bxCallScope scope(extent, m_priority);
        sample.result = calls(sample.clocks);
    });
    sample.badStatus = bxBadCtrlStatus();
    if (m_between)
        m_between();
    return sample;
}

bxSample bxCallSampler::loopOf(const Calls& calls, bxCallScope::Extent extent) {
    bxSample sample = once(calls, extent);
    if (sample.clocks > 0 || bxIsFailure(sample.result))
        return sample;
    const bxResult before = sample.result;
    sample = once(calls, extent);
    sample.result = std::max(sample.result, before);
    return sample;
}

bxSample bxCallSampler::loop(int count) {
    if (m_settings.includeDataSet) {
        if (!m_functions.funcCall)
            return {};
        return loopOf([&](double& clocks) { return loopOfCalls(count, clocks, true); }, bxCallScope::called);
    }
    if (!m_functions.funcLoop)
        return loopOf([&](double& clocks) { return loopOfCalls(count, clocks, false); });
    return loopOf([&](double& clocks) {
        long long counted = 0;
        const bxResult r = m_functions.funcLoop(count, &counted);
        clocks = static_cast<double>(counted);
        return r;
    });
}

bxSample bxCallSampler::stat(int& calls, long long clocksToReach) {
    if (m_settings.includeDataSet) {
        if (!m_functions.funcCall)
            return {};
        return once([&](double& clocks) { return timedCalls(calls, clocksToReach, clocks, true); },
                    bxCallScope::called);
    }
    if (!m_functions.funcStat)
        return once([&](double& clocks) { return timedCalls(calls, clocksToReach, clocks, false); });
    return once([&](double& clocks) {
        long long counted = clocksToReach;
        const bxResult r = m_functions.funcStat(&calls, &counted);
        clocks = static_cast<double>(counted);
        return r;
    });
}

/** The call before those that are timed, which shows whether they can be made directly. */
int bxCallSampler::untimedCall() {
    if (m_functions.initFunc)
        m_functions.initFunc();
    const int status = g_callWatch.call(m_functions.funcCall);
    if (g_callWatch.clobbers())
        m_functions.funcCall = bxCallWatch::shield(m_functions.funcCall);
    return status;
}

bxResult bxCallSampler::loopOfCalls(int count, double& clocks, bool restoreData) {
    if (!m_functions.funcCall)
        return bxInternalError();
    int status = untimedCall();
    if (m_check && status < 0)
        return m_check(status);
    const bxFuncInit init = m_functions.initFunc;
    const bxFuncCall call = m_functions.funcCall;
    const unsigned long long first = zor_get_cpu_counter();
    for (int i = 0; i < count; ++i) {
        if (init)
            init();
        if (restoreData)
            bxResetAllVectors();
        const int called = call();
        if (called != 0)
            status = called;
        if (called < 0)
            break;
    }
    const unsigned long long last = zor_get_cpu_counter();
    clocks = static_cast<double>(bxCpuTicker::toClocks(last - first));
    return graded(status);
}

bxResult bxCallSampler::timedCalls(int& calls, long long clocksToReach, double& clocks, bool restoreData) {
    if (!m_functions.funcCall)
        return bxInternalError();
    int status = untimedCall();
    if (m_check && status < 0)
        return m_check(status);
    int counted = 0;
    long long sum = 0;
    while (counted < calls || sum < clocksToReach) {
        if (m_functions.initFunc)
            m_functions.initFunc();
        const unsigned long long first = zor_get_cpu_counter();
        if (restoreData)
            bxResetAllVectors();
        status = m_functions.funcCall();
        const unsigned long long last = zor_get_cpu_counter();
        sum += bxCpuTicker::toClocks(last - first);
        ++counted;
        // A second call, untimed, shows what the function makes of data that it has changed itself.
        const int again = m_functions.funcCall();
        if (again != 0)
            status = again;
        if (again < 0)
            break;
    }
    calls = counted;
    clocks = static_cast<double>(sum);
    return graded(status);
}
