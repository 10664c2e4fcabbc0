/** \file
 * What the precise mode makes of its slices. A slice is one short stretch of time: the reference, n calls, 2n
 * calls, the reference again; for long calls one call between two references.
 */
#ifndef BXSLICES_H
#define BXSLICES_H

#include "timing/bxprecisefigure.h"
#include "timing/bxstatistics.h"

#include <vector>

/** One slice, in counts of the time-stamp counter. */
struct bxSlice {
    double perCall = 0;         /**< clocks of 2n calls minus those of n calls, by n */
    double referenceBefore = 0; /**< one addition, by the same difference, before the calls */
    double referenceAfter = 0;  /**< and behind them */
    double disagreement = 0;    /**< of n and of 2n calls about the time of n, by the length of a slice */
    double throughput = 1;      /**< independent additions in a core clock, behind the calls */
    double away = 0; /**< share of the time of a long call, and of the one before it, in which others ran */
};

/**
 * How far n and 2n calls disagree about the time of n, relative to it: what an interrupt in either of them
 * took. It is spread over twice as many calls in the longer measurement, but moves the difference as far.
 * \param once, twice  counts for one call, by n and by 2n calls \param least  counts to relate it to at least
 */
double bxDisagreement(double once, double twice, int n, double least);

/** A core that works for one thread alone. */
struct bxAloneCore {
    double throughput = 0; /**< independent additions in a clock; 0 where that is not known */
    /** One that does less by this share has company. */
    double mostLoss = 0;
};

/**
 * What a core does in a clock when it works for this thread alone. Another thread on the same core takes
 * its share of the clocks, which no chain of dependent additions notices: on a virtual machine with busy
 * neighbours 2 to 3.6 independent additions were left of 3.94, the chain was slower by 1 %, and functions
 * took from 0.86 to 2.3 times their time. Beside a loss of 0.7 to 3 % they took from 0.87 to 1.28 times:
 * a neighbour that takes next to nothing halves the queues of the core. So all counts that can be told from
 * the noise of the readings, which is that of the machine's counter and clock, and is learnt from them.
 */
class bxOwnCore {
  public:
    /** Undisturbed slices whose readings show the noise, by the quarter of their steps that are least:
     * company that comes and goes makes some of them larger. The quietest such stretch counts, which shows
     * some three quarters of what is usual. */
    static constexpr int stretch = 256;
    /**
     * Loss that is company's, as a multiple of the noise. What is taken for the whole is the best of many
     * slices, by two standard deviations above the mean; one slice in a thousand of a core alone is by three
     * below it. Five, of three quarters to all of the noise.
     */
    static constexpr double lossByNoise = 6;
    /** Bounds of that loss. A clock that moves by half a per cent in a slice is tolerated, so less than a
     * part of this says nothing; the upper one holds where the noise is not known yet: beside a loss of a per
     * cent functions were seen to take up to 1.28 times their time. */
    static constexpr double leastLoss = 0.002, largestLoss = 0.01;
    /**
     * Means of `blockSize` undisturbed slices, so many in a row, that show the same before a core that did
     * more is taken for one that does less now: a virtual machine that was moved, another mode of the
     * processor. The range of 20 such means of a core alone is below 6 of their standard deviations in 98 %
     * of cases; company is not as steady: within 20 slices its share changed by a per cent and more.
     */
    static constexpr int steadyBlocks = 20, blockSize = 20;
    static constexpr double samenessByNoise = 8; /**< of a mean; 6, of three quarters of the noise */

    /** The most that two undisturbed slices in a row have shown; one may be wrong. 0 before. */
    double throughput() const { return m_throughput; }
    /** Standard deviation of a reading of the throughput, relative; 1 before the first stretch. */
    double noise() const { return m_noise; }
    bxAloneCore alone() const;
    void saw(const bxSlice& slice);
    /** Part of the usual patience that the next series should have: each one that waited in vain halves it.
     */
    double patience() const { return m_patience; }
    void seriesEnded(const bxPreciseFigure& figure) { m_patience = figure.lost > 0 ? m_patience / 2 : 1; }

    /** Additions that a multiplication takes on this core; 0 while nobody has measured it. */
    double multiplication = 0;

  private:
    void learnNoise(double now);
    void learnSteady(double now);

    double m_throughput = 0;
    double m_last = 0;
    double m_noise = 1;
    double m_patience = 1;
    std::vector<double> m_steps;  /**< from each slice of a stretch to the next */
    double m_sum = 0;             /**< of a block */
    double m_low = 0, m_high = 0; /**< means of blocks that show the same */
    int m_inBlock = 0, m_blocks = 0;
};

/** The slices of one combination of parameter values. */
class bxSliceSeries {
  public:
    /** Slices before the figure is looked at. */
    static constexpr int fewest = 16;
    /** Fewer have no interval of 95 %: the range of 5 values holds the median with 93.75 %. */
    static constexpr int fewestForInterval = 6;
    /**
     * The two references of a slice differ by less than this, relative, or the slice is dropped. They take
     * some 32,000 counts; a counter that moves in steps of 21 makes 0.1 % of it, a change of frequency some
     * per cent.
     */
    static constexpr double mostMovement = 0.005;

    /**
     * n and 2n calls agree about the time of n better than this or the slice is dropped: one of them was
     * interrupted. Their fixed cost makes less than 1 %, an interrupt of a microsecond 5 %. On a busy virtual
     * machine interrupts of 20 microseconds struck every second slice.
     */
    static constexpr double mostDisagreement = 0.05;

    /**
     * The thread ran for all but this share of the time of a long call, or its slice is dropped. What is
     * within it, some interrupts and a look of the scheduler, is part of the call.
     */
    static constexpr double mostAway = 0.005;

    /**
     * Confidence of the interval before it is widened by what the slices tell of each other. A series that
     * ends when its interval is narrow enough ends by preference where it is narrow by chance; this one held
     * the truth in 94 to 98 % of simulated series (tests/timing_slices_test.cpp), whatever the accuracy.
     */
    static constexpr double confidence = 0.965;

    /**
     * Slices that a series needs before it may end, as a multiple of those that tell as much as one. What
     * disturbs a slice often disturbs the next one too, and few slices do not show how much: with 8 slices
     * of which neighbours were correlated by 0.9, the interval held the truth in 41 %.
     */
    static constexpr double settledAt = 20;

    /** Slices at which to look at the figure next; to look at each would make the narrow ones by chance more.
     */
    static int nextLook(int count) { return count + 1 + count * 3 / 20; }

    void add(const bxSlice& slice) { m_slices.push_back(slice); }
    /** Slices added, those dropped among them. */
    int count() const { return static_cast<int>(m_slices.size()); }
    /** The last slice is one of a shared core, or of one on which others ran instead. */
    bool endsShared(const bxAloneCore& core) const;
    /** Whether all slices so far were disturbed. */
    bool allDisturbed() const;
    /** Whether the references of a slice are too far apart. */
    static bool moved(const bxSlice& slice);
    /**
     * The figure of what was added so far: of the slices that the core did alone, if there are any, else of
     * those that it shared, else of the dropped ones. Only the first have an interval. From long calls during
     * which others ran, that time is taken off.
     */
    bxPreciseFigure figure(double accuracy, const bxAloneCore& core = {}) const;

  private:
    std::vector<bxSlice> m_slices;
};

#endif
