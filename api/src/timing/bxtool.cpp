/** \file
 * Settings, texts and figures of the engine; the methods are in bxtoolmethods.cpp, single measurements in
 * bxtoolmeasure.cpp.
 */
#include "timing/bxtool.h"

#include "system/bxclock.h"
#include "timing/bxfpwatch.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
#include <numeric>

int bxTool::m_priority = 0;
bxResult (*bxTool::m_pCheckStatus)(int status) = nullptr;

bxTool& bxSessionTool() {
    static bxTool tool;
    return tool;
}

void bxTool::reset() {
    result = UNDEFINED;
    funcClocks = 0;
    loops = 0;
    clocks = 0;
    actualAccuracy = 1.0;
    preciseFigure = {};
    info = "";
    funcLoop = nullptr;
    funcStat = nullptr;
    funcCall = nullptr;
    initFunc = nullptr;
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
    method = methodBest;
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
    if (method != methodBest)
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
    const double percent = 100 * a;
    std::array<char, 330> text; // the largest double has 309 digits
    std::snprintf(text.data(), text.size(), percent < 0.1 ? "%.2f%c" : "%.1f%c", percent, '%');
    return text.data();
}

bxString bxTool::clockStr(long long c) {
    bxString zeros;
    for (; c > INT_MAX; c /= 10)
        zeros += "0";
    return (bxString() << c) + zeros;
}

double bxTool::computeAccuracy(double a, double b) {
    return 2 * std::abs(a - b) / (a + b);
}

double bxTool::computeAccuracy(const double* figures, int count) {
    if (count <= 0)
        return 0;
    const double mean = std::accumulate(figures, figures + count, 0.0) / count;
    if (mean <= 0)
        return 1; // no clocks were counted: as inaccurate as can be, and no division that raises a flag
    double largest = 0;
    for (int i = 0; i < count; ++i)
        largest = std::max(largest, std::abs(figures[i] - mean));
    return largest / mean;
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
