#include "framework/bxinterrupt.h"

#include <csignal>

namespace {

volatile sig_atomic_t s_signal = 0;

void interrupt(int sig) {
    if (!s_signal) {
        s_signal = sig;
    } else if (sig != SIGHUP) {
        std::signal(sig, SIG_DFL);
        raise(sig); // blocked until the handler returns
    }
}

} // namespace

bxInterruptScope::bxInterruptScope() {
    s_signal = 0;
    struct sigaction action {};
    action.sa_handler = interrupt;
    action.sa_flags = SA_ONSTACK | SA_RESTART; // output under way is not cut short
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < signals.size(); ++i) {
        sigaction(signals[i], nullptr, &m_previous[i]);
        if (m_previous[i].sa_handler != SIG_IGN)
            sigaction(signals[i], &action, nullptr);
    }
}

bxInterruptScope::~bxInterruptScope() {
    for (std::size_t i = 0; i < signals.size(); ++i)
        sigaction(signals[i], &m_previous[i], nullptr);
    s_signal = 0;
}

bool bxInterrupted() {
    return s_signal != 0;
}

void bxInterruptReads(bool on) {
    for (const int sig : bxInterruptScope::signals) {
        struct sigaction action {};
        sigaction(sig, nullptr, &action);
        action.sa_flags = on ? action.sa_flags & ~SA_RESTART : action.sa_flags | SA_RESTART;
        if (action.sa_handler == interrupt)
            sigaction(sig, &action, nullptr);
    }
}

const char* bxInterruptName() {
    return s_signal == SIGINT ? "SIGINT" : s_signal == SIGTERM ? "SIGTERM" : "SIGHUP";
}
