/** \file
 * The four methods of the engine: how often to call, and when to believe a figure.
 */
#include "output/bxostream.h"
#include "output/bxtable.h"
#include "system/bxclock.h"
#include "timing/bxcallwatch.h"
#include "timing/bxfpwatch.h"
#include "timing/bxinternalerror.h"
#include "timing/bxtool.h"
#include "timing/bxtooltext.h"
#include "timing/bxturns.h"

#include <algorithm>
#include <climits>
#include <vector>

namespace {

using bxToolText::traced;
using bxToolText::write;

/** A number of calls times a factor, as far as it can be counted. */
int multiplied(int calls, int factor) {
    return static_cast<int>(
        std::min(static_cast<long long>(calls) * factor, static_cast<long long>(INT_MAX)));
}

} // namespace

bxResult bxTool::timing(bxFuncLoop loop, bxFuncStat stat, bxFuncCall call, bxFuncInit init) {
    reset();
    m_flags.keep();
    if (!loop && !stat && !call) {
        g_ostrm << ERR
                << " Internal test problem: The test cannot execute standard timing.\n"
                   " No one of funcLoop, funcStat or funcCall is registered in the test.\n"
                << endMessageFlush;
        return FAIL;
    }
    funcLoop = loop;
    funcStat = stat;
    funcCall = call;
    initFunc = init;
    if (call && g_callWatch.clobbers()) {
        funcLoop = nullptr;
        funcStat = nullptr;
        funcCall = bxCallWatch::shield(call);
    }
    if (bxTurns::side()) {
        traced("timingInTurns", [this] { timingInTurns(); });
        return result;
    }
    if (precise && (funcLoop || funcCall)) {
        traced("preciseTiming", [this] { preciseTiming(); });
        return result;
    }
    if (precise)
        g_ostrm << ERR
                << " ATTENTION! The test cannot execute precise timing.\n"
                   " The method of the session will be run instead.\n"
                << endMessage;
    switch (method) {
    case methodLoop:
        return customLoopTiming();
    case methodStat:
        return statisticTiming();
    case methodBest:
        traced("iterativeTiming", [this] { bestTiming(bestStartLoops, bestMaxLoops, bestMinClocks); });
        return result;
    case methodAuto:
        traced("autoTiming", [this] {
            int start, max;
            long long minClocks;
            getAutoParameters(start, max, minClocks);
            bestTiming(autoStartLoops ? autoStartLoops : start, autoMaxLoops ? autoMaxLoops : max, minClocks);
        });
        return result;
    default:
        return result = bxInternalError();
    }
}

void bxTool::timingInTurns() {
    const auto sampler = [this](int calls) {
        double perCall = 0;
        if (funcLoop || funcCall)
            runTimFunc(calls, &perCall);
        else
            runTimFuncStat(0, &calls, &perCall);
        return bxIsFailure(result) ? 0 : perCall;
    };
    if (!bxTurns::side()->measure(sampler))
        updateResult(FAIL);
}

bxResult bxTool::customLoopTiming() {
    if (!funcLoop && !funcCall) {
        g_ostrm << ERR
                << " ATTENTION! The test cannot execute Manual loop timing.\n"
                   " Statistic timing will be run instead.\n"
                << endMessage;
        setMethodStat(manualLoops, 0);
        return timing(nullptr, funcStat, nullptr, initFunc);
    }
    traced("customLoopTiming", [this] {
        write(INFO, "    Manual method: \n", "        numLoops   = ", manualLoops, "\n");
        loops = manualLoops;
        traced("runTimFunc", [this] { runTimFunc(manualLoops, &funcClocks); });
        actualAccuracy = 0;
        info << bxTable::loops << manualLoops;
        write(INFO, "        funcClocks = ", funcClocks, "\n",
              "        result     = ", bxResultString(result), "\n");
    });
    return result;
}

bxResult bxTool::statisticTiming() {
    if (!funcStat && !funcCall) {
        g_ostrm << ERR
                << " ATTENTION! The test cannot execute Statistic timing.\n"
                   " Manual loop timing will be run instead.\n"
                << endMessage;
        setMethodLoop(statMinCalls);
        return timing(funcLoop, nullptr, nullptr, initFunc);
    }
    traced("statisticTiming", [this] {
        write(INFO, "    Statistical method:\n", "        minCalls   = ", statMinCalls, "\n",
              "        maxClocks  = ", clockStr(statMaxClocks), "\n");
        int calls = statMinCalls;
        traced("runTimFuncStat", [&] { runTimFuncStat(statMaxClocks, &calls, &funcClocks); });
        actualAccuracy = 0;
        info << bxTable::calls << calls;
        write(INFO, "        numCalls   = ", calls, "\n", "        funcClocks = ", funcClocks, "\n",
              "        result     = ", bxResultString(result), "\n");
    });
    return result;
}

void bxTool::bestTiming(int start, int max, long long minClocks) {
    avoidBadStatus = ibsMode;
    write(INFO, "    Auto method: start\n", "        minClocks  = ", clockStr(minClocks), "\n");
    if (!priorMeasurement(start, max, minClocks) || !iterate(max)) {
        write(INFO, "    Auto method: exit\n");
        return;
    }
    info << bxTable::loops << loops;
    if (actualAccuracy > accuracy) {
        info << " " << bxTable::accuracy << getAccuracyStr(actualAccuracy);
        if (result <= OK)
            result = ACCURWRN;
    }
    write(INFO, "    Auto method: stop\n");
}

bool bxTool::priorMeasurement(int start, int& max, long long minClocks) {
    for (;;) {
        write(INFO, "    Prior Measurement: \n", "        numLoops   = ", start, "\n");
        const bxResult r = startIterations(start, minClocks);
        write(INFO, "        numClocks  = ", clocks, "\n", "        funcClocks = ", funcClocks, "\n",
              "        result     = ", bxResultString(r), "\n");
        if (r < ACCURFAIL)
            return true;
        if (r > ACCURFAIL || start > bxCpuTicker::getClockFactor()) {
            result = r;
            return false;
        }
        start = multiplied(start, 10);
        max = multiplied(max, 10);
    }
}

bxResult bxTool::startIterations(int start, long long minClocks) {
    loops = start;
    traced("runTimFunc", [&] { runTimFunc(start, &funcClocks); });
    if (bxIsFailure(result))
        return result;
    return start * funcClocks >= static_cast<double>(minClocks) ? OK : ACCURFAIL;
}

bool bxTool::iterate(int max) {
    constexpr double certain = 0.01; // two figures this close need no further measurement
    while (loops < max) {
        const int n = multiplied(loops, 4);
        write(INFO, "    Iteration Measurement: \n", "        startLoops = ", n, "\n",
              "        maxLoops   = ", max, "\n");
        const bxResult r = continueIterations(n, max);
        write(INFO, "        stopLoops  = ", loops, "\n", "        stopClocks = ", clocks, "\n",
              "        accuracy   = ", getAccuracyStr(actualAccuracy), "\n",
              "        funcClocks = ", funcClocks, "\n", "        result     = ", bxResultString(r), "\n");
        if (r == ACCURFAIL) {
            updateResult(ACCURFAIL);
            return false;
        }
        if (r == BADSTSWRN) {
            avoidBadControlStatus();
            return true;
        }
        if (actualAccuracy <= certain)
            return true;
        write(INFO, "    Simple Measurements: \n");
        if (repeatTiming(loops, 3) != ACCURWRN)
            return true;
    }
    return true;
}

bxResult bxTool::continueIterations(int n, int max) {
    double previous = funcClocks;
    for (loops = std::min(n, max);; loops *= 2) {
        traced("runTimFunc", [this] { runTimFunc(loops, &funcClocks); });
        if (funcClocks <= 0)
            return ACCURFAIL;
        actualAccuracy = computeAccuracy(funcClocks, previous);
        if (avoidBadStatus && bxBadCtrlStatus()) {
            loops >>= 1;
            funcClocks = previous;
            return BADSTSWRN;
        }
        if (actualAccuracy <= accuracy)
            return OK;
        if (loops > max / 2)
            return ACCURWRN;
        previous = funcClocks;
    }
}

bxResult bxTool::repeatTiming(int n, int count) {
    std::vector<double> figures;
    if (loops == n)
        figures.push_back(funcClocks);
    loops = n;
    while (static_cast<int>(figures.size()) < count) {
        double figure = 0;
        traced("runTimFunc", [&] { runTimFunc(n, &figure); });
        write(INFO, "        numLoops   = ", n, "\n", "        numClocks  = ", clocks, "\n",
              "        funcClocks = ", figure, "\n");
        figures.push_back(figure);
    }
    actualAccuracy = computeAccuracy(figures.data(), count);
    funcClocks = computeBest(figures.data(), count);
    const bool bad = avoidBadStatus && bxBadCtrlStatus();
    const bxResult r = bad ? BADSTSWRN : actualAccuracy > accuracy ? ACCURWRN : OK;
    write(INFO, "        accuracy   = ", getAccuracyStr(actualAccuracy), "\n",
          "        bestClocks = ", funcClocks, "\n", "        result     = ", bxResultString(r), "\n");
    if (bad)
        printBadStatus();
    return r;
}

void bxTool::avoidBadControlStatus() {
    const double limit = 2 * accuracy;
    if (avoidBadStatus && bxBadCtrlStatus())
        printBadStatus();
    write(WARN, "-- Attempting to avoid bad control status\n");
    write(INFO, "    Reduce loops to avoid bad ctrl status.\n", "    Simple Measurements: \n");
    bxClearCtrlStatus();
    m_flags.keep();
    const bool repeats = repeatTiming(loops, 6) == BADSTSWRN;
    if (!repeats && actualAccuracy <= limit) {
        write(WARN, "-- Attempt is successful\n");
        return;
    }
    write(INFO, "    Cannot avoid bad ctrl status\n");
    write(WARN,
          "-- Attempt fails: ", repeats ? "Bad control status repeats.\n" : "Accuracy is unsatisfactory.\n");
}

void bxTool::printBadStatus() {
    bool bad87, badSSX;
    bxBadCtrlStatus(bad87, badSSX);
    bxPrintCtrlStatus(bad87, badSSX);
}
