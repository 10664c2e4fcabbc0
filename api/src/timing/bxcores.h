/** \file
 * The cores that the process runs on: what is known of each, and staying on one.
 */
#ifndef BXCORES_H
#define BXCORES_H

#include "timing/bxslices.h"

#include <map>
#include <sched.h>
#include <utility>

/** What the precise mode knows of each core, from all tests of this process. */
class bxCores {
  public:
    /**
     * The core of this moment. One that is of another kind than before, as in a virtual machine that was
     * moved, is not the same.
     */
    bxOwnCore& here() { return m_cores[{sched_getcpu(), kind()}]; }
    /** Cores asked for so far. */
    int count() const { return static_cast<int>(m_cores.size()); }

  private:
    /** Model of the processor and kind of core, as CPUID tells them. */
    static unsigned kind();

    std::map<std::pair<int, unsigned>, bxOwnCore> m_cores;
};

/** Moves the process to a core and keeps it there; false where the system does not allow it. */
bool bxMoveToCore(int core);

/**
 * Keeps the process on the core that it is on, for a scope. After a jump out of the scope (bxsignal.h) the
 * guard undoes it.
 */
class bxPinnedCore {
  public:
    bxPinnedCore();
    ~bxPinnedCore();
    bxPinnedCore(const bxPinnedCore&) = delete;
    bxPinnedCore& operator=(const bxPinnedCore&) = delete;

    /** The core; -1 where the system did not allow it. */
    int core() const { return m_core; }
    /** Lets the process go where it was allowed to before the outermost scope. */
    static void release();

  private:
    int m_core = -1;
    bool m_outermost = false;
};

#endif
