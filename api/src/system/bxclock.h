/** \file
 * The clock of all measurements, and what it takes to turn clocks into seconds.
 */
#ifndef BXCLOCK_H
#define BXCLOCK_H

/** The time-stamp counter: one RDTSC, inline, without a serialising instruction. */
[[gnu::always_inline]] inline unsigned long long zor_get_cpu_counter() {
    return __builtin_ia32_rdtsc();
}

/** The clock counter of the measurements against real time. */
class bxCpuTicker {
  public:
    /** Frequency in MHz, 0 until first asked for. */
    static int m_freqMHz;

    /** Processor clocks per count of the counter; every count is multiplied by it before use. */
    static constexpr int getClockFactor() { return 1; }

    /** Frequency in MHz; the first call estimates it, which takes up to two seconds. */
    static int getFreq();
};

/**
 * Estimates the frequency of the counter by waiting for the clock on the wall.
 * \return MHz, 0 without a time-stamp counter.
 */
int estimateCpuFreqMHz();

/**
 * Takes a measured frequency for a nominal one if they differ by less than 3 %.
 * \param measuredMHz above 0
 * \return the nearest of `knownCpuMHz` (the lower of two equally near), or the measured one.
 */
int bxSnapCpuMHz(int measuredMHz);

#endif
