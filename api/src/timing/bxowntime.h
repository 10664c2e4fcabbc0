/** \file
 * The time in which the thread wanted to run, and others did.
 */
#ifndef BXOWNTIME_H
#define BXOWNTIME_H

/**
 * Tells the time in which the system let others run instead of this thread: what the scheduler counts as its
 * delay. What the thread waits for by itself, for other threads of its own or for a device, is no such time.
 */
class bxOwnTime {
  public:
    bxOwnTime();
    ~bxOwnTime();
    bxOwnTime(const bxOwnTime&) = delete;
    bxOwnTime& operator=(const bxOwnTime&) = delete;

    /**
     * Share of the time since the last call, or since the construction, in which others ran; 0 where the
     * system does not tell. The reading takes a microsecond or two.
     */
    double lap();

  private:
    double delay() const;

    int m_file;
    double m_wall = 0; /**< nanoseconds */
    double m_delay = 0;
};

#endif
