/** \file
 * What the engine's precise mode makes of its slices. A slice is one short stretch of time: the reference, n
 * calls, 2n calls, the reference again.
 */
#ifndef BXSLICES_H
#define BXSLICES_H

#include "timing/bxstatistics.h"

#include <vector>

/** A figure of the precise mode. Core clocks are those in which the processor adds, one addition each. */
struct bxPreciseFigure {
    double clocks = 0;            ///< core clocks per call: the median of the slices
    double low = 0;               ///< its 95 % interval, from
    double high = 0;              ///< to
    double coreClocksPerTick = 1; ///< core clocks for one count of the time-stamp counter
    int slices = 0;               ///< that the figure is made of
    int dropped = 0;              ///< reference moved, calls interrupted, core shared
    double throughput = 0;        ///< independent additions in a core clock, beside the calls
    double lost = 0;              ///< share of the throughput that others took, 0 for none
    bool reached = false;         ///< the core's own, the interval inside the requested accuracy
};

/** One slice, in counts of the time-stamp counter. */
struct bxSlice {
    double perCall = 0;         ///< clocks of 2n calls minus those of n calls, by n
    double referenceBefore = 0; ///< one addition, by the same difference, before the calls
    double referenceAfter = 0;  ///< and behind them
    double disagreement = 0;    ///< of n and of 2n calls about the time of n, by the length of a slice
    double throughput = 1;      ///< independent additions in a core clock, behind the calls
};

/**
 * What the core does in a clock when it works for this thread alone. Another thread on the same core takes
 * its share of the clocks, which no chain of dependent additions notices: on a virtual machine with busy
 * neighbours 2 to 3.6 independent additions were left of 3.94, the chain was slower by 1 %, and functions
 * took from 0.86 to 2.3 times their time.
 */
class bxOwnCore {
  public:
    /** How far a figure may be off that was measured beside company, relative: what it costs a function does
     * not follow from what it took of the throughput. */
    static constexpr double costOfCompany = 0.25;
    /** The most that two undisturbed slices in a row have shown; one may be wrong. 0 before. */
    double throughput() const { return m_throughput; }
    void saw(const bxSlice& slice);
    /** Part of the usual patience that the next series should have: each one that waited in vain halves it.
     */
    double patience() const { return m_patience; }
    void seriesEnded(const bxPreciseFigure& figure) { m_patience = figure.lost > 0 ? m_patience / 2 : 1; }

  private:
    double m_throughput = 0;
    double m_last = 0;
    double m_patience = 1;
};

/** The slices of one combination of parameter values. */
class bxSliceSeries {
  public:
    /** Too few say nothing of their spread: the interval of 8 values is nearly their range. */
    static constexpr int fewest = 8;
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
     * Confidence of the interval. A series that ends when its interval is narrow enough ends by preference
     * where it is narrow by chance: of simulated series (normal, and one slice in ten disturbed) 0.95 held
     * the truth in 91.7 to 95.5 %, 0.97 in 94.8 to 97.1 %, whatever the accuracy.
     */
    static constexpr double confidence = 0.97;

    /**
     * Neighbouring slices that count as one in the interval, once there are enough of them: what disturbs a
     * slice, another user of the core above all, often disturbs the next one too. On a busy virtual machine
     * 98 % intervals of 90 single slices held the cost of additions in 84.6 %, those of fours in 88.6 %.
     */
    static constexpr int batch = 4;

    /** Slices at which to look at the figure next; to look at each would make the narrow ones by chance more.
     */
    static int nextLook(int count) { return count + 1 + count * 3 / 20; }

    void add(const bxSlice& slice) { m_slices.push_back(slice); }
    /** Slices added, those dropped among them. */
    int count() const { return static_cast<int>(m_slices.size()); }
    /**
     * There are enough for an interval, or as many were dropped as makes it hopeless to wait for more.
     * \param full  throughput of the core when it is not shared, 0 if that is not known
     */
    bool mayEnd(double full = 0) const;
    /** The last slice is one of a shared core. */
    bool endsShared(double full) const;
    /**
     * The figure of what was added so far. Where too few slices are of the core alone, those of the shared
     * core count too; where there are none at all, the dropped ones. The interval is that of all slices while
     * few were kept: it is wide then, as it should be.
     */
    bxPreciseFigure figure(double accuracy, double full = 0) const;

  private:
    std::vector<bxSlice> m_slices;
};

#endif
