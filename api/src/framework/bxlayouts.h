/** \file
 * A combination measured in several layouts of code, data and stack. Each further layout is a process of its
 * own, in which the program runs with the same words and writes nothing. Where the system randomises address
 * spaces, its code, heap and stack lie elsewhere; its blocks of data stand further by some cache lines, which
 * keeps what the settings of alignment ask for, and its stack is deeper. The processes walk through the
 * combinations together and measure one after the other, never two at a time.
 */
#ifndef BXLAYOUTS_H
#define BXLAYOUTS_H

#include "framework/bxlayoutspread.h"

#include <compare>
#include <cstdint>
#include <memory>
#include <sys/types.h>
#include <vector>

/** Where a run is: the same in all its processes. */
struct bxLayoutPlace {
    std::int32_t test = -1; /**< in the list of tests */
    std::int32_t row = -1;  /**< combination that the test came to measure */
    auto operator<=>(const bxLayoutPlace&) const = default;
};

/** A process beside this one, in another layout. */
class bxLayoutProcess {
  public:
    /** Starts it and waits until it has come to its first combination. */
    explicit bxLayoutProcess(int number);
    ~bxLayoutProcess();
    bxLayoutProcess(const bxLayoutProcess&) = delete;
    bxLayoutProcess& operator=(const bxLayoutProcess&) = delete;

    /** Clocks of a call at that combination, measured on that core; 0 where there is no figure. */
    double measure(bxLayoutPlace place, int core);
    /** Whether its code lies elsewhere. */
    bool codeMoved() const { return m_codeMoved; }

  private:
    bool order(bool measured, int core);
    bool hear();
    void lost(const bxString& why);

    int m_number;
    int m_socket = -1;
    pid_t m_process = -1;
    bxLayoutPlace m_place;
    double m_clocks = 0;
    bool m_codeMoved = false;
};

/** The layouts of a run, led by the process that writes. */
class bxLayouts {
  public:
    /**
     * The spread over `count` layouts, of which this process's own has given a figure already. Starts what
     * processes are missing. An interruption leaves out those that were not measured yet.
     * \param core  on which that figure was measured
     */
    static bxLayoutSpread measure(int count, bxLayoutPlace place, double own, int core);
    /** Ends the other processes. */
    static void end();
};

/** The other end: this process is one of those that are led. */
class bxLayoutFollower {
  public:
    /** Becomes one if the environment says so. To be called at the start of `main`. */
    static void start();
    /** Null in an ordinary process. */
    static bxLayoutFollower* present();
    ~bxLayoutFollower();
    bxLayoutFollower(const bxLayoutFollower&) = delete;
    bxLayoutFollower& operator=(const bxLayoutFollower&) = delete;

    /** Waits at a combination; false when it is to be passed over. Ends the process when nobody leads it. */
    bool arrive(bxLayoutPlace place);
    /** The figure of the combination. */
    void measured(double clocks) { m_clocks = clocks; }

    /** Bytes, a multiple of 64, by which a block of data stands further than the one before, and the first
     * one than without. */
    int displacement() const;
    /** Bytes of stack to leave unused below the calls. */
    std::size_t stackDepth() const;

  private:
    bxLayoutFollower(int number, int socket) : m_number(number), m_socket(socket) {}
    void report(bxLayoutPlace place);

    int m_number;
    int m_socket;
    double m_clocks = 0;
};

#endif
