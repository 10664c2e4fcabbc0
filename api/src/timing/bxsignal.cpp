#include "timing/bxsignal.h"

#include "data/bxalloc.h"
#include "system/bxpriority.h"
#include "timing/bxcores.h"
#include "timing/bxexception.h"
#include "timing/bxexit.h"
#include "timing/bxfpwatch.h"

#include <array>
#include <cstring>
#include <exception>
#include <utility>

namespace {

/** Signals that a broken function raises. */
constexpr std::array faultSignals = {SIGFPE, SIGILL, SIGSEGV, SIGBUS, SIGABRT};

/** What stood in the place of the handler before. */
std::array<struct sigaction, faultSignals.size()> s_previous;

/** The handler's stack: the tested function may have used up its own. Holds the largest register state. */
alignas(64) std::array<char, 65536> s_stack;

/** Why the tested function was left; null for a signal. */
const char* s_reason = nullptr;

[[noreturn]] void jumpBack() {
    tsSignal::m_armed = 0;
    siglongjmp(tsSignal::m_jmpbuf, -1);
}

/** Puts back what handled the signal before, and raises it again to end the process by it. */
void passOn(int sig) {
    for (std::size_t i = 0; i < faultSignals.size(); ++i)
        if (faultSignals[i] == sig)
            sigaction(sig, &s_previous[i], nullptr);
    raise(sig); // blocked until the handler returns
}

} // namespace

volatile sig_atomic_t tsSignal::m_code = 0;
volatile sig_atomic_t tsSignal::m_armed = 0;
sigjmp_buf tsSignal::m_jmpbuf;

tsSignal::tsSignal() {
    stack_t stack{};
    stack.ss_sp = s_stack.data();
    stack.ss_size = s_stack.size();
    sigaltstack(&stack, nullptr);

    struct sigaction action {};
    action.sa_handler = sig_fpe;
    action.sa_flags = SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < faultSignals.size(); ++i)
        sigaction(faultSignals[i], &action, &s_previous[i]);
    bxCatchExit();
}

void tsSignal::sig_fpe(int sig) {
    m_code = sig;
    if (!m_armed) {
        passOn(sig);
        return;
    }
    s_reason = nullptr;
    jumpBack();
}

void tsSignal::leave(const char* reason) {
    s_reason = reason;
    jumpBack();
}

const char* tsSignal::getInfo() {
    switch (m_code) {
    case SIGFPE:
        return "FP error, such as overflow, division by zero, invalid operation.";
    case SIGILL:
        return "Illegal instruction.";
    case SIGSEGV:
        return "Illegal storage access.";
    default:
        return "Unknown exception";
    }
}

tsSignal& bxSignal() {
    static tsSignal handler;
    return handler;
}

bxFaultGuard::bxFaultGuard() : m_outerArmed(tsSignal::m_armed) {
    std::memcpy(&m_outerBuffer, &tsSignal::m_jmpbuf, sizeof m_outerBuffer);
    bxCatchExitOfThisProcess();
}

bxFaultGuard::~bxFaultGuard() {
    tsSignal::m_armed = 0; // never armed over a buffer half copied
    std::memcpy(&tsSignal::m_jmpbuf, &m_outerBuffer, sizeof m_outerBuffer);
    tsSignal::m_armed = m_outerArmed;
}

void bxFaultGuard::raise() {
    bxResetFpState();
    bxResetPriority();
    bxAllocatorLeft();
    bxPinnedCore::release();
    const char* const reason = std::exchange(s_reason, nullptr);
    throw bxException(reason ? reason : tsSignal::getInfo());
}

void bxRethrow() {
    bxResetFpState();
    try {
        std::rethrow_exception(std::current_exception());
    } catch (const bxException&) {
        throw;
    } catch (const std::exception& thrown) {
        throw bxException(bxString(thrown.what()));
    } catch (...) {
        throw bxException("Unknown exception");
    }
}
