/** \file
 * Processes of the two sides.
 */
#ifndef PAIR_SIDEPROCESS_H
#define PAIR_SIDEPROCESS_H

#include "sideplan.h"
#include "sides.h"

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>

/** What both processes of a round have alike, and the next round has differently. */
struct Placement {
    int heapOffset = 0;  /**< bytes */
    int stackOffset = 0; /**< bytes */
};

/** What a side inherits. */
struct SideChannels {
    int plan = -1, log = -1, tokenIn = -1, tokenOut = -1;
    int listing = -1; /**< takes standard output and errors */
};

/** A process of a side; killed with its owner if it still runs. */
class SideProcess {
  public:
    /**
     * Starts a side in a session of its own, with precedence where that is granted, and a stack that begins
     * where that of the other side does. \throws PairError  where no process can be had
     */
    SideProcess(const Sides& sides, int side, const SideChannels& channels, const Placement& placement);
    ~SideProcess() { kill(); }
    SideProcess(const SideProcess&) = delete;
    SideProcess& operator=(const SideProcess&) = delete;

    /** Takes notice of an end; whether the process still runs. */
    bool running();
    void kill();
    /** "ended with status 3", "ended by signal 9 (Killed)"; empty while it runs. */
    std::string ending() const;
    /** Seconds of processor time; once it has ended. */
    double processorTime() const { return m_processorTime; }

  private:
    bool collect(int options);

    pid_t m_id = -1;
    std::optional<int> m_status;
    double m_processorTime = 0;
};

/** Whether the system lets address spaces be alike; tried once. */
bool canFixAddresses();

/** Ends the waits below; set by the handler of Ctrl-C. */
bool interrupted();
/** Handles SIGINT and SIGTERM as `interrupted` from now on; the second one ends the program. */
void catchInterrupts();

using Moment = std::chrono::steady_clock::time_point;

/**
 * Waits for the ends of some processes. Kills them when `mayGoOn` says no, which it is asked some times in a
 * second, and when the user interrupts.
 */
template <class Processes, class Test>
void waitFor(Processes& processes, Test mayGoOn);

/** Waits a moment, or less if a child process ends. */
void waitForChild(std::chrono::milliseconds longest);

template <class Processes, class Test>
void waitFor(Processes& processes, Test mayGoOn) {
    for (;;) {
        bool any = false;
        for (auto& process : processes)
            any |= process->running();
        if (!any)
            return;
        if (interrupted() || !mayGoOn()) {
            for (auto& process : processes)
                process->kill();
            return;
        }
        waitForChild(std::chrono::milliseconds(100));
    }
}

#endif
