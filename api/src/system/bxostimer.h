/** \file
 * Timer of the operating system, against which the processor's clock is measured.
 */
#ifndef BXOSTIMER_H
#define BXOSTIMER_H

/**
 * The real-time clock device; opened only by root, since only root may set its interrupt rate. One that
 * refuses what is asked of it is closed; the program goes on without it.
 */
class LinuxRTClock {
  public:
    /** Interrupts per second that the device is asked for. */
    static constexpr int INT_PER_SEC = 8192;

    LinuxRTClock();
    ~LinuxRTClock();
    LinuxRTClock(const LinuxRTClock&) = delete;
    LinuxRTClock& operator=(const LinuxRTClock&) = delete;

    bool isOpen() const { return m_fd != -1; }
    /** Enables the periodic interrupts of an open device, which is closed again where it refuses. */
    void use(int fd);
    /** Closes the device. \param problem why; for a message */
    void drop(const char* problem);
    /** Why the device was closed, empty where it is in use or there is none. */
    const char* problem() const { return m_problem; }
    /**
     * Interrupts since the previous call, waiting for the next one; 0 while they are not enabled. A device
     * from which none comes is closed.
     */
    long long waitInterrupts();

    int m_fd = -1;             /**< descriptor of "/dev/rtc", -1 while not open */
    bool m_interrupts = false; /**< periodic interrupts are enabled */

  private:
    const char* m_problem = "";
};

/** Access for the global below. */
LinuxRTClock& bxRTClock();

/** The one clock device, constructed before its first use in any unit. */
inline LinuxRTClock& g_rtc = bxRTClock();

/** Two readings of processor time (or of the clock device for root) and the time between them. */
class OSTimer {
  public:
    void start() { GetCounter(&m_start); }
    void stop() { GetCounter(&m_stop); }

    /** Reads the device where there is one, else the processor time of the process. */
    static void GetCounter(long long* counter);
    /** Counts per second. */
    static long long getOSFreq();

    /** Time between start and stop in seconds, in single precision. */
    float getSec() const;
    /** The same in microseconds. */
    float getUSec() const { return getSec() * 1000000.0F; }

    /** Whether another clock that passed `seconds` meanwhile differs by at most 1 % and one count. */
    bool agreesWith(double seconds) const;

  private:
    long long m_start = 0;
    long long m_stop = 0;
};

#endif
