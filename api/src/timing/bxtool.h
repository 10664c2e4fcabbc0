/** \file
 * The timing engine: how often to call a function, and what one call costs.
 */
#ifndef BXTOOL_H
#define BXTOOL_H

#include "timing/bxcores.h"
#include "timing/bxfiguretext.h"
#include "timing/bxiterative.h"
#include "timing/bxsampler.h"
#include "timing/bxstatistics.h"

#include <algorithm>

/**
 * Measures the clocks per call of a function by one of four methods, until two measurements agree within the
 * accuracy asked for. Settings stay over timings, `reset` starts a new one; tests work with a copy of
 * `g_tool`. Its fields are those of three plain structures, since sources use them under these names.
 */
class bxTool : public bxTimingSettings, public bxTimingFigures, public bxTimingFunctions {
  public:
    bxString info; ///< how the figure was obtained, for the comment column; tests may write their own

    /** Process priority around every measurement, as `bxSetPriority` takes it. */
    static int m_priority;
    /** What the precise mode knows of the cores, from all tests of this process. */
    static bxCores m_cores;
    /** The library's status check, null where no library is bound. */
    static bxStatusCheck m_pCheckStatus;

    bxTool() = default;
    bxTool(const bxTool&) = default;
    bxTool& operator=(const bxTool&) = default;
    virtual ~bxTool() = default;

    /** Forgets the figures and functions of the last timing; settings stay. */
    void reset();

    void setMethodAuto() { method = methodAuto; }
    /** Manual loop of n calls, at least 1. */
    void setMethodLoop(int n);
    void setMethodStat(int calls, long long clocks);
    /** Iterative; the most calls are at least 8 times the n of the prior measurement. */
    void setMethodBest(int n, int max, long long minClocks);

    /** \name The method in force: false, with the arguments untouched, when it is another one */
    /** @{ */
    bool getMethodAuto() const { return method == methodAuto; }
    bool getMethodLoop(int& n) const;
    bool getMethodStat(int& calls, long long& clocks) const;
    bool getMethodBest(int& n, int& max, long long& minClocks) const;
    /** @} */

    /** Calls of the prior measurement, most calls and clocks to reach of the Auto method. */
    static void getAutoParameters(int& start, int& max, long long& minClocks);
    /** Divides (f > 0) or multiplies (f < 0) the call counts of the Auto method by 2 to the |f|; 0 undoes it.
     */
    void setLoopFactor(int f);
    /** Clocks per call as the time-stamp counter counts them, which is what time is made of. */
    double counterClocks() const { return funcClocks / preciseFigure.coreClocksPerTick; }

    /** A figure that the test computed itself. */
    void setFuncTicks(double clocksPerCall) {
        funcClocks = clocksPerCall;
        m_figureReported = true;
    }

    /** Times a function that times itself. */
    bxResult timing(bxFuncTool funcTool);
    /**
     * Times by what there is of the functions; see the methods. A function of which `g_callWatch` knows that
     * it does not preserve its caller's registers is timed by `call` alone, through a call that puts them
     * back.
     */
    bxResult timing(bxFuncLoop loop, bxFuncStat stat, bxFuncCall call, bxFuncInit init);

    static bxString getAccuracyStr(double a) { return bxAccuracyText(a); }
    static bxString clockStr(long long c) { return bxClocksText(c); }
    static double computeAccuracy(double a, double b) { return bxDifference(a, b); }
    static double computeAccuracy(const double* figures, int count) {
        return bxLargestDeviation({figures, figures + count});
    }
    /** The smallest of one or more figures. */
    static double computeBest(const double* figures, int count) {
        return *std::min_element(figures, figures + count);
    }

    /** Bracket of a measurement for the floating-point watch. */
    static void ctrlStart();
    static void ctrlStop();
    void updateResult(bxResult r) { raise(r); }

  private:
    bxResult timeBy(const bxLoopSampler& loop, const bxStatSampler& stat);
    bxResult timeInTurns(const bxLoopSampler& loop, const bxStatSampler& stat);
    void replaceMethod(bool hasLoop, bool hasStat);
    bxIterativeLimits iterativeLimits() const;

    bool m_figureReported = false; ///< by `setFuncTicks`, since a function that times itself was called
};

/** Access for the global below. */
bxTool& bxSessionTool();

/** The session's engine, usable from any static initialiser. */
inline bxTool& g_tool = bxSessionTool();

#endif
