#include "timing/bxexit.h"

#include "timing/bxsignal.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using ExitFunction = void (*)(int);

ExitFunction s_exit = nullptr;
ExitFunction s_quickExit = nullptr;
pid_t s_process = 0;
std::array<char, 64> s_text{};

/** Back into the test when its function is what calls. */
void leaveTest(const char* function, int status) {
    if (!tsSignal::m_armed || getpid() != s_process)
        return;
    std::snprintf(s_text.data(), s_text.size(), "The function called %s(%d).", function, status);
    tsSignal::leave(s_text.data());
}

[[noreturn]] void endProcess(int status) {
    for (;;)
        syscall(SYS_exit_group, status);
}

[[noreturn]] void endBy(ExitFunction function, int status) {
    if (function)
        function(status);
    endProcess(status);
}

} // namespace

void bxCatchExit() {
    if (s_exit)
        return;
    s_exit = reinterpret_cast<ExitFunction>(dlsym(RTLD_NEXT, "exit"));
    s_quickExit = reinterpret_cast<ExitFunction>(dlsym(RTLD_NEXT, "quick_exit"));
}

void bxCatchExitOfThisProcess() {
    s_process = getpid();
}

extern "C" {

void exit(int status) noexcept {
    leaveTest("exit", status);
    bxCatchExit();
    endBy(s_exit, status);
}

void quick_exit(int status) noexcept {
    leaveTest("quick_exit", status);
    bxCatchExit();
    endBy(s_quickExit, status);
}

void _exit(int status) {
    leaveTest("_exit", status);
    endProcess(status);
}

void _Exit(int status) noexcept {
    leaveTest("_Exit", status);
    endProcess(status);
}
}
