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
    /** Frequency in MHz, 0 until first asked for, negative where it is not known; a value from outside
     * stands.
     */
    static int m_freqMHz;

    /** Processor clocks per count of the counter; every count is multiplied by it before use. */
    static constexpr int getClockFactor() { return 1; }

    /** Clocks of a difference of two readings: the one place where the factor counts. */
    static constexpr long long toClocks(unsigned long long ticks) {
        return static_cast<long long>(ticks) * getClockFactor();
    }

    /** Frequency in whole MHz, 0 where it is not known; the first call measures it. */
    static int getFreq();

    /**
     * The same with all its digits, for microseconds and MFlops: by the whole run so far, 0 where it is not
     * known.
     */
    static double getMHz();
};

/**
 * Measures the frequency of the counter against the system's monotonic raw clock, once, for 40 ms where
 * nothing is in doubt. The real-time clock device, where it is open, is only compared; one that differs by
 * more than 1 % is closed, with a message.
 * \return MHz, 0 without a time-stamp counter or where the windows of the measurement do not agree.
 */
int estimateCpuFreqMHz();

/**
 * Takes a measured frequency for a nominal one if they differ by less than 3 %.
 * \param measuredMHz above 0
 * \return the nearest of `knownCpuMHz` (the lower of two equally near), or the measured one.
 */
int bxSnapCpuMHz(int measuredMHz);

/** The nominal frequency within 1 % of the measured one; 0 where there is none. */
int bxNominalCpuMHz(int measuredMHz);

#endif
