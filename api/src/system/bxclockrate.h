/** \file
 * How fast the time-stamp counter runs, by the system's monotonic raw clock.
 */
#ifndef BXCLOCKRATE_H
#define BXCLOCKRATE_H

#include <functional>

/** The counter and the clock at one moment. */
struct bxClockReading {
    long long ticks = 0; /**< of the time-stamp counter, in the middle of the bracket around the clock */
    long long nanoseconds = 0; /**< of the clock */
};

/**
 * Reads both. The clock is read between two reads of the counter, several times, and the narrowest such
 * bracket is taken: whatever interrupts the process makes a bracket wider, not the reading wrong.
 */
bxClockReading bxReadClocks();

/**
 * Rate of the counter. It is measured over windows of time that have to agree, once, and made better by all
 * time that passes afterwards. Processor time plays no part: other work of the machine only makes a window
 * longer.
 */
class bxClockRate {
  public:
    /** Shortest window in nanoseconds: a bracket of 100 ns at both ends is 0.002 % of it. */
    static constexpr long long window = 10'000'000;
    /** Windows in a row that have to agree. */
    static constexpr int windows = 4;
    /** Windows to try; without agreement the rate is not known. */
    static constexpr int mostWindows = 20;
    /** How far windows may differ, relative. */
    static constexpr double agreement = 0.001;

    using Source = std::function<bxClockReading()>;

    /** Measures, which takes `windows` windows where they agree. */
    explicit bxClockRate(Source source = bxReadClocks);

    /**
     * Counts in a microsecond, 0 where windows do not agree. Each call takes in the time since the last one.
     * Where that does not agree (the machine was moved, or slept), the rate is measured anew.
     */
    double mhz();

  private:
    double measure();

    Source m_source;
    bxClockReading m_first, m_last; /**< the time that the rate is made of */
    double m_mhz = 0;
};

/**
 * Measures the rate of the counter. A real-time clock device in use is compared with the clock meanwhile, and
 * closed where it differs by more than 1 %.
 */
bxClockRate bxMeasureClockRate();

#endif
