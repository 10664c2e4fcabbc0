/** \file
 * Ctrl-C and its relatives: a run that is interrupted ends in order.
 */
#ifndef BXINTERRUPT_H
#define BXINTERRUPT_H

#include <array>
#include <csignal>

/**
 * While it lives, the first SIGINT, SIGTERM or SIGHUP only asks the run to stop after the current
 * measurement. A second SIGINT or SIGTERM ends the process at once; a second SIGHUP, which a shell may send
 * to a job whose terminal is gone already, does nothing. A signal that was ignored before stays ignored.
 */
class bxInterruptScope {
  public:
    bxInterruptScope();
    ~bxInterruptScope();
    bxInterruptScope(const bxInterruptScope&) = delete;
    bxInterruptScope& operator=(const bxInterruptScope&) = delete;

    static constexpr std::array signals = {SIGINT, SIGTERM, SIGHUP};

  private:
    std::array<struct sigaction, signals.size()> m_previous{};
};

/** Whether the present run was asked to stop. */
bool bxInterrupted();
/** While on, a signal ends a read that waits, such as that of an answer on the console. */
void bxInterruptReads(bool on);
/** Name of the signal that asked. */
const char* bxInterruptName();

#endif
