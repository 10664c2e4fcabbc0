/** \file
 * The timing engine: how often to call a function, and what one call costs.
 */
#ifndef BXTOOL_H
#define BXTOOL_H

#include "timing/bxtiming.h"

class bxCores;
struct bxIterativeLimits;

/**
 * Measures the clocks per call of a function by one of four methods, until two measurements agree within the
 * accuracy asked for. Settings stay over timings, `reset` starts a new one; tests work with a copy of
 * `g_tool`. Its fields are those of three plain structures, since sources use them under these names.
 */
class bxTool : public bxTimingSettings, public bxTimingFigures, public bxTimingFunctions {
  public:
    /** How often the function was called, and a missed accuracy; tests may write their own. The framework
     * completes it to the text of the comment column. */
    bxString info;

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
        found = false; // by a method
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

    /** An accuracy in per cent, with two places below 0.1 %. */
    static bxString getAccuracyStr(double a);
    /** Clocks in decimal, with zeros for the digits beyond 31 bits. */
    static bxString clockStr(long long c);
    /** The difference of two figures relative to their mean. */
    static double computeAccuracy(double a, double b);
    /** The largest difference from the mean, relative to it. */
    static double computeAccuracy(const double* figures, int count);
    /** The smallest of one or more figures. */
    static double computeBest(const double* figures, int count);

    /** Bracket of a measurement for the floating-point watch. */
    static void ctrlStart();
    static void ctrlStop();
    void updateResult(bxResult r) { raise(r); }

  private:
    bxResult timeBy(const bxLoopSampler& loop, const bxStatSampler& stat);
    bxResult timeInTurns(const bxLoopSampler& loop, const bxStatSampler& stat);
    void replaceMethod(bool hasLoop, bool hasStat);
    bxString callsText() const;
    bxIterativeLimits iterativeLimits() const;

    bool m_figureReported = false; /**< by `setFuncTicks`, since a function that times itself was called */
};

/** Access for the global below. */
bxTool& bxSessionTool();

/** The session's engine, usable from any static initialiser. */
inline bxTool& g_tool = bxSessionTool();

#endif
