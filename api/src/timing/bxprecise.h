/** \file
 * What the engine's precise mode makes of its slices. A slice is one short stretch of time: the reference, n
 * calls, 2n calls, the reference again.
 */
#ifndef BXPRECISE_H
#define BXPRECISE_H

#include "timing/bxstatistics.h"

#include <vector>

/** A figure of the precise mode. Core clocks are those in which the processor adds, one addition each. */
struct bxPreciseFigure {
    double clocks = 0;            ///< core clocks per call: the median of the slices
    double low = 0;               ///< its 95 % interval, from
    double high = 0;              ///< to
    double coreClocksPerTick = 1; ///< core clocks for one count of the time-stamp counter
    int slices = 0;               ///< that the figure is made of
    int dropped = 0;              ///< in which the reference moved or the calls were interrupted
    bool reached = false;         ///< the interval is inside the requested accuracy
};

/** One slice, in counts of the time-stamp counter. */
struct bxSlice {
    double perCall = 0;         ///< clocks of 2n calls minus those of n calls, by n
    double referenceBefore = 0; ///< one addition, by the same difference, before the calls
    double referenceAfter = 0;  ///< and behind them
    double disagreement = 0;    ///< of n and of 2n calls about the time of n, by the length of a slice
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

    void add(const bxSlice& slice);
    /** Slices added, those dropped among them. */
    int count() const { return m_count; }
    /** There are enough for an interval, or as many were dropped as makes it hopeless to wait for more. */
    bool mayEnd() const { return static_cast<int>(m_clocks.size()) >= fewest || m_count >= 4 * fewest; }
    /**
     * The figure of what was added so far; of the dropped slices where there is no other. The interval is
     * that of all slices while few were kept: it is wide then, as it should be.
     */
    bxPreciseFigure figure(double accuracy) const;

  private:
    int m_count = 0;
    std::vector<double> m_clocks, m_rates;               // of the slices kept
    std::vector<double> m_droppedClocks, m_droppedRates; // of the others
};

/**
 * Adds 64 times `blocks` times, each addition waiting for the one before.
 * \return counts of the time-stamp counter
 */
long long bxReferenceTicks(int blocks);

/** Additions in a block of the reference. */
inline constexpr int bxReferenceBlock = 64;

#endif
