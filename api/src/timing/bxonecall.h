/** \file
 * One call between two reads of the counter, and whether it was interrupted.
 */
#ifndef BXONECALL_H
#define BXONECALL_H

#include "system/bxclock.h"
#include "timing/bxtiming.h"

/** What one call took. */
struct bxOneCall {
    long long ticks = 0;      /**< counts, with the cost of the reads */
    int status = 0;           /**< of the function */
    bool interrupted = false; /**< the processor entered the system and came back */
};

/**
 * A mark that does not survive an interrupt: on its way back to a program, the processor clears a data
 * segment register that holds a null selector other than 0. A register is taken that nothing here uses; a
 * switch to another process puts the mark back, before the processor clears it all the same. Emulators, and
 * processors that return in another way, leave it: then nothing is known.
 */
class bxInterruptMark {
  public:
    bxInterruptMark() { put(mark); }
    ~bxInterruptMark() { put(0); }
    bxInterruptMark(const bxInterruptMark&) = delete;
    bxInterruptMark& operator=(const bxInterruptMark&) = delete;

    static bool gone() {
        unsigned selector = 0;
#if defined(__x86_64__)
        asm volatile("mov %%es, %0" : "=r"(selector));
#else
        asm volatile("mov %%fs, %0" : "=r"(selector));
#endif
        return (selector & 0xFFFFU) != mark;
    }

  private:
    static constexpr unsigned mark = 3;

    static void put(unsigned selector) {
#if defined(__x86_64__)
        asm volatile("mov %0, %%es" : : "r"(selector));
#else
        asm volatile("mov %0, %%fs" : : "r"(selector));
#endif
    }
};

/**
 * Reads the counter when everything before is done, and before anything behind begins: over a single call the
 * overlap that a plain read allows would be a part of the figure. Processors without the instruction do not
 * overlap as far.
 */
[[gnu::always_inline]] inline unsigned long long bxOrderedCounter(bool ordered) {
    if (ordered)
        asm volatile("lfence" : : : "memory");
    const unsigned long long counter = zor_get_cpu_counter();
    if (ordered)
        asm volatile("lfence" : : : "memory");
    return counter;
}

/** Calls the function once. \param ordered  the processor has SSE2 */
[[gnu::noinline]] bxOneCall bxCallOnce(bxFuncCall call, bool ordered);

/** A call that does nothing, for the cost of the reads and of the call. */
int bxCallNothing();

#endif
