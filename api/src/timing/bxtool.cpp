/** \file
 * Settings of the engine, and which method times.
 */
#include "timing/bxtool.h"

#include "output/bxostream.h"
#include "output/bxtable.h"
#include "system/bxclock.h"
#include "timing/bxcallwatch.h"
#include "timing/bxcores.h"
#include "timing/bxfiguretext.h"
#include "timing/bxfpwatch.h"
#include "timing/bxinternalerror.h"
#include "timing/bxiterative.h"
#include "timing/bxmanualloop.h"
#include "timing/bxprecise.h"
#include "timing/bxsampler.h"
#include "timing/bxstatistic.h"
#include "timing/bxstatistics.h"
#include "timing/bxtimingtext.h"
#include "timing/bxturns.h"

#include <algorithm>
#include <climits>

int bxTool::m_priority = 0;
bxStatusCheck bxTool::m_pCheckStatus = nullptr;
bxCores bxTool::m_cores;

bxTool& bxSessionTool() {
    static bxTool tool;
    return tool;
}

void bxTool::reset() {
    static_cast<bxTimingFigures&>(*this) = {};
    static_cast<bxTimingFunctions&>(*this) = {};
    info = "";
}

void bxTool::setMethodLoop(int n) {
    method = methodLoop;
    manualLoops = std::max(n, 1);
}

void bxTool::setMethodStat(int calls, long long clocksToReach) {
    method = methodStat;
    statMinCalls = calls;
    statMaxClocks = clocksToReach;
}

void bxTool::setMethodBest(int n, int max, long long minClocks) {
    method = methodIterative;
    bestStartLoops = std::max(n, 1);
    bestMaxLoops = std::max(static_cast<int>(std::min(8LL * n, static_cast<long long>(INT_MAX))), max);
    bestMinClocks = minClocks;
}

bool bxTool::getMethodLoop(int& n) const {
    if (method != methodLoop)
        return false;
    n = manualLoops;
    return true;
}

bool bxTool::getMethodStat(int& calls, long long& clocksToReach) const {
    if (method != methodStat)
        return false;
    calls = statMinCalls;
    clocksToReach = statMaxClocks;
    return true;
}

bool bxTool::getMethodBest(int& n, int& max, long long& minClocks) const {
    if (method != methodIterative)
        return false;
    n = bestStartLoops;
    max = bestMaxLoops;
    minClocks = bestMinClocks;
    return true;
}

void bxTool::getAutoParameters(int& start, int& max, long long& minClocks) {
    start = 1;
    max = 2048;
    minClocks = 10LL * bxCpuTicker::getClockFactor();
}

void bxTool::setLoopFactor(int f) {
    int start, max;
    long long minClocks;
    getAutoParameters(start, max, minClocks);
    // Not further left than keeps 2048 calls below 2 to the 31.
    const auto scale = [f](int n) { return f > 0 ? n >> std::min(f, 31) : n << std::min(-f, 19); };
    autoStartLoops = f == 0 ? 0 : scale(start);
    autoMaxLoops = f == 0 ? 0 : scale(max);
}

bxString bxTool::getAccuracyStr(double a) {
    return bxAccuracyText(a);
}

bxString bxTool::clockStr(long long c) {
    return bxClocksText(c);
}

double bxTool::computeAccuracy(double a, double b) {
    return bxDifference(a, b);
}

double bxTool::computeAccuracy(const double* figures, int count) {
    return bxLargestDeviation({figures, figures + count});
}

double bxTool::computeBest(const double* figures, int count) {
    return *std::min_element(figures, figures + count);
}

void bxTool::ctrlStart() {
    g_ctrl87.start();
}

void bxTool::ctrlStop() {
    g_ctrl87.stop();
    g_ssx.stop();
}

bxIterativeLimits bxTool::iterativeLimits() const {
    if (method == methodIterative)
        return {bestStartLoops, bestMaxLoops, bestMinClocks};
    bxIterativeLimits limits{};
    getAutoParameters(limits.start, limits.most, limits.minClocks);
    if (autoStartLoops)
        limits.start = autoStartLoops;
    if (autoMaxLoops)
        limits.most = autoMaxLoops;
    return limits;
}

bxResult bxTool::timing(bxFuncTool funcTool) {
    reset();
    bxCallSampler sampler(*this, *this, m_priority, m_pCheckStatus);
    return timeBy(
        [&](int count) {
            if (includeDataSet)
                return bxSample(); // nobody knows before which calls
            return sampler.loopOf([&](double& total) {
                clocks = 0;
                m_figureReported = false;
                const bxResult r = funcTool(*this, count);
                const bool figureOnly = clocks == 0 && m_figureReported;
                total =
                    figureOnly
                        ? funcClocks * count
                        : static_cast<double>(bxCpuTicker::toClocks(static_cast<unsigned long long>(clocks)));
                return r;
            });
        },
        {});
}

bxResult bxTool::timing(bxFuncLoop loop, bxFuncStat stat, bxFuncCall call, bxFuncInit init) {
    reset();
    if (!loop && !stat && !call) {
        g_ostrm << ERR
                << " Internal test problem: The test cannot execute standard timing.\n"
                   " No one of funcLoop, funcStat or funcCall is registered in the test.\n"
                << endMessageFlush;
        return FAIL;
    }
    static_cast<bxTimingFunctions&>(*this) = {loop, stat, call, init};
    if (call && g_callWatch.clobbers())
        static_cast<bxTimingFunctions&>(*this) = {nullptr, nullptr, bxCallWatch::shield(call), init};
    bxCallSampler sampler(*this, *this, m_priority, m_pCheckStatus);
    bxLoopSampler loopSampler;
    bxStatSampler statSampler;
    if (funcLoop || funcCall)
        loopSampler = [&](int count) { return sampler.loop(count); };
    if (funcStat || funcCall)
        statSampler = [&](int& calls, long long total) { return sampler.stat(calls, total); };
    return timeBy(loopSampler, statSampler);
}

/** Another method where the one in force needs a function that the test does not have. */
void bxTool::replaceMethod(bool hasLoop, bool hasStat) {
    if (method == methodLoop && !hasLoop) {
        g_ostrm << ERR
                << " ATTENTION! The test cannot execute Manual loop timing.\n"
                   " Statistic timing will be run instead.\n"
                << endMessage;
        setMethodStat(manualLoops, 0);
    } else if (method == methodStat && !hasStat) {
        g_ostrm << ERR
                << " ATTENTION! The test cannot execute Statistic timing.\n"
                   " Manual loop timing will be run instead.\n"
                << endMessage;
        setMethodLoop(statMinCalls);
    }
}

/** As one side of a comparison, whatever the method. */
bxResult bxTool::timeInTurns(const bxLoopSampler& loop, const bxStatSampler& stat) {
    bxTimingText::traced("timingInTurns", [&] {
        const auto sampler = [&](int count) {
            const bxSample sample = loop ? loop(count) : stat(count, 0);
            add(sample, count);
            return bxIsFailure(result) ? 0 : funcClocks;
        };
        if (!bxTurns::side()->measure(sampler))
            raise(FAIL);
    });
    return result;
}

/** Written here, not where the comment is composed, because sources that call the engine directly read it. */
bxString bxTool::callsText() const {
    const bool precisely = preciseFigure.measured();
    bxString text;
    if (!precisely && method == methodStat)
        text << bxTable::calls << countedCalls;
    else
        text << bxTable::loops << loops;
    if (!precisely && actualAccuracy > accuracy)
        text << " " << bxTable::accuracy << bxAccuracyText(actualAccuracy);
    return text;
}

/** \param loop, stat  empty where the test has nothing for them */
bxResult bxTool::timeBy(const bxLoopSampler& loop, const bxStatSampler& stat) {
    const auto by = [this](const char* step, auto time) {
        bxTimingText::traced(step, [&] { static_cast<bxTimingFigures&>(*this) = time(); });
        if (found)
            info = callsText();
        return result;
    };
    if (bxTurns::side())
        return timeInTurns(loop, stat);
    if (precise && loop)
        return by("preciseTiming", [&] { return bxTimePrecisely(*this, loop, m_cores); });
    if (precise)
        g_ostrm << ERR
                << " ATTENTION! The test cannot execute precise timing.\n"
                   " The method of the session will be run instead.\n"
                << endMessage;
    replaceMethod(loop != nullptr, stat != nullptr);
    switch (method) {
    case methodLoop:
        return by("customLoopTiming", [&] { return bxTimeManually(*this, loop); });
    case methodStat:
        return by("statisticTiming", [&] { return bxTimeCallByCall(*this, stat); });
    case methodAuto:
    case methodIterative:
        if (!loop)
            return result = bxInternalError();
        avoidBadStatus = ibsMode;
        return by(method == methodAuto ? "autoTiming" : "iterativeTiming",
                  [&] { return bxTimeIteratively(*this, iterativeLimits(), loop); });
    default:
        return result = bxInternalError();
    }
}
