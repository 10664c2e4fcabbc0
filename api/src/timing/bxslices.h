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
    double perCall = 0;         ///< clocks of 2n calls minus those of n calls, by n
    double referenceBefore = 0; ///< one addition, by the same difference, before the calls
    double referenceAfter = 0;  ///< and behind them
    double disagreement = 0;    ///< of n and of 2n calls about the time of n, by the length of a slice
    double throughput = 1;      ///< independent additions in a core clock, behind the calls
};

/**
 * How far n and 2n calls disagree about the time of n, relative to it: what an interrupt in either of them
 * took. It is spread over twice as many calls in the longer measurement, but moves the difference as far.
 * \param once, twice  counts for one call, by n and by 2n calls \param least  counts to relate it to at least
 */
double bxDisagreement(double once, double twice, int n, double least);

/**
 * What a core does in a clock when it works for this thread alone. Another thread on the same core takes
 * its share of the clocks, which no chain of dependent additions notices: on a virtual machine with busy
 * neighbours 2 to 3.6 independent additions were left of 3.94, the chain was slower by 1 %, and functions
 * took from 0.86 to 2.3 times their time.
 */
class bxOwnCore {
  public:
    /**
     * Undisturbed slices in a row that show the same, within `sameness`, before a core that did more is
     * taken for one that does less now: a virtual machine that was moved, another mode of the processor.
     * Company is not as steady: within 20 slices its share changed by a per cent and more.
     */
    static constexpr int steady = 400;
    static constexpr double sameness = 0.002;

    /** The most that two undisturbed slices in a row have shown; one may be wrong. 0 before. */
    double throughput() const { return m_throughput; }
    void saw(const bxSlice& slice);
    /** Part of the usual patience that the next series should have: each one that waited in vain halves it.
     */
    double patience() const { return m_patience; }
    void seriesEnded(const bxPreciseFigure& figure) { m_patience = figure.lost > 0 ? m_patience / 2 : 1; }

    /** Additions that a multiplication takes on this core; 0 while nobody has measured it. */
    double multiplication = 0;

  private:
    double m_throughput = 0;
    double m_last = 0;
    double m_patience = 1;
    double m_low = 0, m_high = 0; ///< of the slices that show the same
    int m_same = 0;
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
     * A core that does less than alone by this share has company, and the slice is dropped. Even a neighbour
     * that takes next to nothing halves the queues of the core: beside a loss of 0.7 to 3 % functions took
     * from 0.87 to 1.28 times their time. Alone, medians of some slices were within 0.2 % of each other.
     */
    static constexpr double mostLoss = 0.006;

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
    /** The last slice is one of a shared core. */
    bool endsShared(double full) const;
    /**
     * The figure of what was added so far: of the slices that the core did alone, if there are any, else of
     * those that it shared, else of the dropped ones. Only the first have an interval.
     * \param full  throughput of the core when it is not shared, 0 if that is not known
     */
    bxPreciseFigure figure(double accuracy, double full = 0) const;

  private:
    std::vector<bxSlice> m_slices;
};

#endif
