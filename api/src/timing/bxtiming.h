/** \file
 * What goes into a timing, settings and functions, and what comes out of it, figures. In between stands a
 * sampler: all that a method sees of the function under test.
 */
#ifndef BXTIMING_H
#define BXTIMING_H

#include "foundation/bxstring.h"
#include "timing/bxprecisefigure.h"
#include "timing/bxresult.h"

#include <cmath>
#include <functional>

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
/** Grades a library status. */
using bxStatusCheck = bxResult (*)(int status);

/** How to time. */
struct bxTimingSettings {
    enum Method { methodAuto, methodLoop, methodStat, methodIterative };

    double accuracy = 0.05; /**< asked for, relative */
    int method = methodAuto;
    int manualLoops = 10;            /**< Manual loop: calls, at least 1 */
    int bestStartLoops = 1;          /**< Iterative: calls of the prior measurement */
    int bestMaxLoops = 2048;         /**< Iterative: most calls */
    bool includeDataSet = false;     /**< restore the test data before every call and count that time */
    long long bestMinClocks = 100;   /**< Iterative: clocks that the prior measurement must reach */
    int statMinCalls = 12;           /**< Statistic: fewest calls */
    long long statMaxClocks = 10000; /**< Statistic: clocks that the timed calls must reach */
    bool ibsMode = false;        /**< call `initFunc` before every measurement, avoid bad control status */
    bool avoidBadStatus = false; /**< copy of `ibsMode` during an Auto or Iterative timing */
    int autoStartLoops = 0;      /**< Auto: other than the usual calls of the prior measurement, 0 for none */
    int autoMaxLoops = 0;        /**< Auto: other than the usual most calls, 0 for none */
    bool precise = false;    /**< measure by differences against a chain of additions, whatever the method */
    double budget = 20e6;    /**< precise: clocks of a combination, and three calls (10 ms at 2 GHz) */
    double patience = 200e6; /**< precise: clocks more to wait for others to leave the core (0.1 s) */
    bool countInstructions = false; /**< of a call, step by step, beside the timing */
    int mostInstructions = 200'000; /**< steps after which the counting is given up */
    bxString stepsFile;             /**< takes what each counted call did, step by step; empty for none */
    int singleCalls = 0;            /**< to be timed one by one, behind the timing; 0 for none */
    bool coldCalls = false;         /**< time calls with empty caches, behind the timing */
};

/** The functions of a test, null where it has none. */
struct bxTimingFunctions {
    bxFuncLoop funcLoop = nullptr;
    bxFuncStat funcStat = nullptr;
    bxFuncCall funcCall = nullptr;
    bxFuncInit initFunc = nullptr;
};

/** Clocks and status of one measurement, together. */
struct bxSample {
    double clocks = 0; /**< of all calls; 0 when nothing could be counted, twice */
    bxResult result =
        UNDEFINED;          /**< of the calls' status; UNDEFINED where the function cannot be called so */
    bool badStatus = false; /**< bad floating-point flags were collected, by this one or an earlier one */
};

/** Makes `count` calls. */
using bxLoopSampler = std::function<bxSample(int count)>;
/** Makes at least `calls` calls that take at least so many clocks; says how many it made. */
using bxStatSampler = std::function<bxSample(int& calls, long long clocks)>;

/** What a timing found. */
struct bxTimingFigures {
    bxResult result = UNDEFINED;   /**< worst result */
    double funcClocks = 0;         /**< clocks per call */
    int loops = 0;                 /**< calls of the last loop measurement */
    int countedCalls = 0;          /**< Statistic: calls */
    bool found = false;            /**< the method came to its end */
    long long clocks = 0;          /**< all clocks of the last measurement */
    double actualAccuracy = 1.0;   /**< reached, relative */
    bxPreciseFigure preciseFigure; /**< what the precise mode found; `funcClocks` are core clocks then */

    /** Takes the figure of one measurement. */
    void add(const bxSample& sample, int count) {
        clocks = std::llround(sample.clocks);
        funcClocks = count == 0 ? 0 : sample.clocks / count;
        raise(sample.result);
    }
    /** Raises `result`. */
    void raise(bxResult r) {
        if (r > result)
            result = r;
    }
};

#endif
