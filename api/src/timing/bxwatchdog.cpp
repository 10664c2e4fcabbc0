#include "timing/bxwatchdog.h"

#include "data/bxalloc.h"
#include "timing/bxexception.h"
#include "timing/bxsignal.h"

#include <array>
#include <cstdio>
#include <sys/time.h>

namespace {

int s_limit = 0;
volatile sig_atomic_t s_inCalls = 0;
volatile sig_atomic_t s_expired = 0;
std::array<char, 64> s_text{};

void expire(int) {
    s_expired = 1;
    if (s_inCalls && !bxAllocatorBusy() && tsSignal::m_armed)
        tsSignal::leave(s_text.data());
}

/** The harness's own reads and writes go on after the signal. */
void installHandler() {
    struct sigaction action {};
    action.sa_handler = expire;
    action.sa_flags = SA_ONSTACK | SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGALRM, &action, nullptr);
}

/** Once over, the time is over again and again: the first signal may come where nothing can be left. */
void setTimer(int seconds) {
    constexpr int again = 20000; // microseconds
    const itimerval timer{.it_interval = {.tv_sec = 0, .tv_usec = seconds > 0 ? again : 0},
                          .it_value = {.tv_sec = seconds, .tv_usec = 0}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

int bxGetTimeLimit() {
    return s_limit;
}

void bxSetTimeLimit(int seconds) {
    s_limit = seconds > 0 ? seconds : 0;
}

void bxStartWatchdog() {
    s_expired = 0;
    if (s_limit == 0)
        return;
    std::snprintf(s_text.data(), s_text.size(), "Time limit of %d s exceeded.", s_limit);
    installHandler();
    setTimer(s_limit);
}

void bxStopWatchdog() {
    if (s_limit != 0)
        setTimer(0);
    s_inCalls = 0;
    s_expired = 0;
}

void bxEnterCalls() {
    s_inCalls = 1; // first, so that no moment is left in which the signal would go unnoticed
    if (s_expired) {
        s_inCalls = 0;
        throw bxException(static_cast<const char*>(s_text.data()));
    }
}

void bxLeaveCalls() {
    s_inCalls = 0;
}
