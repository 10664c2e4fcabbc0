/** \file
 * What the precise mode finds of a combination.
 */
#ifndef BXPRECISEFIGURE_H
#define BXPRECISEFIGURE_H

/** A figure of the precise mode. Core clocks are those in which the processor adds, one addition each. */
struct bxPreciseFigure {
    double clocks = 0;    /**< core clocks per call: the median of the slices */
    double low = 0;       /**< its 95 % interval, from */
    double high = 0;      /**< to */
    bool known = false;   /**< whether there is such an interval; otherwise low and high say nothing */
    bool settled = false; /**< slices enough for what each tells of the next */
    bool nothing = false; /**< the calls take no time: they compile to nothing */
    double coreClocksPerTick = 1; /**< core clocks for one count of the time-stamp counter */
    int slices = 0;               /**< that the figure is made of */
    int dropped = 0;              /**< reference moved, calls interrupted, core shared */
    double throughput = 0;        /**< independent additions in a core clock, beside the calls */
    double lost = 0;              /**< share of the throughput that others took, 0 for none */
    double multiplication = 3;    /**< additions that one multiplication takes */
    int core = -1;                /**< that the process was kept on, -1 for none */
    bool reached = false;         /**< the core's own, the interval inside the requested accuracy */

    /** Whether the precise mode came to slices at all, or to calls that are none. */
    bool measured() const { return nothing || slices + dropped > 0; }
    /** Whether an addition takes one clock here, as far as a second operation of known cost tells. */
    bool oneClockAdditions() const { return multiplication > 2.85 && multiplication < 3.15; }
    /** Half the interval, relative; nothing to go by where it is not known. */
    double accuracy() const { return (high - low) / 2 / clocks; }
};

#endif
