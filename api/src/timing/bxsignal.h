/** \file
 * Faults in tested functions: one handler, which jumps back to the frame that armed it.
 *
 * Use, in the frame that is to survive the fault:
 *
 *     bxFaultGuard guard;
 *     if (sigsetjmp(guard.buffer(), 1) != 0)
 *         guard.raise(); // puts the floating-point state right and throws bxException(tsSignal::getInfo())
 *     ... call what may fault ...
 *
 * `sigsetjmp` stands in the caller because its frame must be alive at the jump. Guards nest: the innermost
 * catches, and its end gives the buffer back to the outer one. A fault disarms its guard, so that a second
 * fault on the way out (a broken heap) goes to nobody instead of round in circles. Locals that change between
 * `sigsetjmp` and the fault and are read after it must be volatile. Destructors of the frames jumped over do
 * not run. Without an armed guard the fault ends the process by its own signal. The time limit (bxwatchdog.h)
 * and a call of exit (bxexit.h) come back the same way.
 */
#ifndef BXSIGNAL_H
#define BXSIGNAL_H

#include <setjmp.h>
#include <signal.h>

/** The fault handler. It runs on a stack of its own and stays deliverable after a jump. */
class tsSignal {
  public:
    /** Installs the handler for SIGFPE, SIGILL, SIGSEGV, SIGBUS and SIGABRT. */
    tsSignal();

    /** What the last signal means, for a message. */
    static const char* getInfo();
    /** The last signal number. */
    static int code() { return m_code; }
    /** Stores the signal and jumps back to `m_jmpbuf` with -1; without an armed guard ends the process. */
    static void sig_fpe(int sig);
    /** Jumps back to the armed `m_jmpbuf` for a reason that is no signal; the text must outlive the jump. */
    [[noreturn]] static void leave(const char* reason);

    static volatile sig_atomic_t m_code;
    /** Whether `m_jmpbuf` leads into a living frame. */
    static volatile sig_atomic_t m_armed;
    static sigjmp_buf m_jmpbuf;
};

/** Access for the global below. */
tsSignal& bxSignal();

/** The handler, installed during static initialisation of whoever includes this header. */
inline tsSignal& _g_signal = bxSignal();

/** Keeps the jump that was armed before, and restores it at the end of its scope. */
class bxFaultGuard {
  public:
    bxFaultGuard();
    ~bxFaultGuard();
    bxFaultGuard(const bxFaultGuard&) = delete;
    bxFaultGuard& operator=(const bxFaultGuard&) = delete;

    /** Arms; for use in `sigsetjmp(guard.buffer(), 1)` only. */
    sigjmp_buf& buffer() {
        tsSignal::m_armed = 1;
        return tsSignal::m_jmpbuf;
    }

    /** After a jump: restores the floating-point state and the priority, and throws the fault or reason. */
    [[noreturn]] static void raise();

  private:
    sigjmp_buf m_outerBuffer;
    sig_atomic_t m_outerArmed;
};

/** In a handler: throws the exception that is being handled as a bxException with its text. */
[[noreturn]] void bxRethrow();

/** Runs what may fault or throw; either comes back as bxException. */
template <class Body>
auto bxGuarded(Body body) {
    bxFaultGuard guard;
    if (sigsetjmp(guard.buffer(), 1) != 0)
        guard.raise();
    try {
        return body();
    } catch (...) {
        bxRethrow();
    }
}

#endif
