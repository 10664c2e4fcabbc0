/** \file
 * The timing engine: how often to call a function, and what one call costs.
 */
#ifndef BXTOOL_H
#define BXTOOL_H

#include "foundation/bxstring.h"
#include "timing/bxfpwatch.h"
#include "timing/bxprecise.h"
#include "timing/bxresult.h"

class bxTool;

/** Calls the function `count` times and stores the clocks spent. */
using bxFuncLoop = bxResult (*)(int count, long long* clocks);
/**
 * Times call by call. In: fewest calls, clocks to reach; out: calls counted, their clocks.
 */
using bxFuncStat = bxResult (*)(int* calls, long long* clocks);
/** Calls the function once; returns the library status. */
using bxFuncCall = int (*)();
/** Prepares the data of one call. */
using bxFuncInit = int (*)();
/** Times `count` calls by itself and leaves the clocks in the engine. */
using bxFuncTool = bxResult (*)(bxTool& tool, int count);

/**
 * Measures the clocks per call of a function by one of four methods, until two measurements agree within the
 * accuracy asked for. Settings stay over timings, `reset` starts a new one; tests work with a copy of
 * `g_tool`.
 */
class bxTool {
  public:
    enum Method { methodAuto, methodLoop, methodStat, methodBest };

    /** \name Figures and settings */
    /** @{ */
    bxResult result = UNDEFINED; ///< worst result of the current timing
    double funcClocks = 0;       ///< clocks per call
    int loops = 0;               ///< calls of the last loop measurement
    double accuracy = 0.05;      ///< asked for, relative
    int method = methodAuto;
    int manualLoops = 10;            ///< Manual loop: calls, at least 1
    int bestStartLoops = 1;          ///< Iterative: calls of the prior measurement
    int bestMaxLoops = 2048;         ///< Iterative: most calls
    bool includeDataSet = false;     ///< restore the test data before every call and count that time
    long long bestMinClocks = 100;   ///< Iterative: clocks that the prior measurement must reach
    int statMinCalls = 12;           ///< Statistic: fewest calls
    long long statMaxClocks = 10000; ///< Statistic: clocks that the timed calls must reach
    bool ibsMode = false;            ///< call `initFunc` before every measurement, avoid bad control status
    bool avoidBadStatus = false;     ///< copy of `ibsMode` during an Auto or Iterative timing
    bxString info;                   ///< how the figure was obtained, for the comment column
    long long clocks = 0;            ///< all clocks of the last measurement
    double actualAccuracy = 1.0;     ///< reached, relative
    int autoStartLoops = 0;  ///< Auto: other than the usual calls of the prior measurement, 0 for none
    int autoMaxLoops = 0;    ///< Auto: other than the usual most calls, 0 for none
    bool precise = false;    ///< measure by differences against a chain of additions, whatever the method
    double patience = 200e6; ///< precise: clocks to wait for others to leave the core (0.1 s at 2 GHz)
    bxPreciseFigure preciseFigure; ///< what the precise mode found; `funcClocks` are core clocks then
    /** @} */

    /** \name Functions of the current test, null where the test has none */
    /** @{ */
    bxFuncLoop funcLoop = nullptr;
    bxFuncStat funcStat = nullptr;
    bxFuncCall funcCall = nullptr;
    bxFuncInit initFunc = nullptr;
    /** @} */

    /** Process priority around every measurement, as `bxSetPriority` takes it. */
    static int m_priority;
    /** What the precise mode knows of the core, from all tests of this process. */
    static bxOwnCore m_ownCore;
    /** The library's status check, null where no library is bound. */
    static bxResult (*m_pCheckStatus)(int status);

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

    /** Times a function that times itself. Not reentrant. */
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

    /** Difference of two figures relative to their mean. */
    static double computeAccuracy(double a, double b);
    /** Largest difference from the mean, relative to it; 0 for no figures. */
    static double computeAccuracy(const double* figures, int count);
    /** The smallest of one or more figures. */
    static double computeBest(const double* figures, int count);

    /** Bracket of a measurement for the floating-point watch. */
    static void ctrlStart();
    static void ctrlStop();
    /** Raises `result`. */
    void updateResult(bxResult r) {
        if (r > result)
            result = r;
    }

  private:
    /** \name Methods; those returning bool are false when the timing has to be given up */
    /** @{ */
    bxResult customLoopTiming();
    bxResult statisticTiming();
    void bestTiming(int start, int max, long long minClocks);
    bool priorMeasurement(int start, int& max, long long minClocks);
    bxResult startIterations(int start, long long minClocks);
    bool iterate(int max);
    bxResult continueIterations(int n, int max);
    bxResult repeatTiming(int n, int count);
    void preciseTiming();
    /** As one side of a comparison, whatever the method. */
    void timingInTurns();
    int callsOfSlice();
    bxSliceSeries measureSlices(int calls);
    bool statusIsBadAndAvoidable() const;
    void avoidBadControlStatus();
    static void printBadStatus();
    /** @} */

    /** \name One measurement: clocks per call into `perCall`, all clocks into `clocks` */
    /** @{ */
    void runTimFunc(int count, double* perCall);
    bxResult measureLoop(int count);
    void runTimFuncStat(long long minClocks, int* calls, double* perCall);
    bxResult measureStat(int* calls);
    int untimedCall();
    bxResult timCall_Loop(int count, long long* total, bool restoreData);
    bxResult timCall_Stat(int* calls, long long* total, bool restoreData);
    /** @} */

    static bxResult callFuncTool(int count, long long* total);

    bxKeptFlags m_flags;
    bool m_figureReported = false; ///< by `setFuncTicks`, since a function that times itself was called
};

/** Access for the global below. */
bxTool& bxSessionTool();

/** The session's engine, usable from any static initialiser. */
inline bxTool& g_tool = bxSessionTool();

#endif
