#include "framework/bxlayouts.h"

#include "framework/bxinterrupt.h"
#include "output/bxdiscard.h"
#include "output/bxostream.h"
#include "system/bxclock.h"
#include "timing/bxcores.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <string>
#include <sys/auxv.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char variable[] = "BENCHEX_LAYOUT";

/** What a follower tells when it arrives at a combination, and when it ends. */
struct Report {
    bxLayoutPlace place;
    double clocks; /**< of the combination before */
    std::uint64_t codeAddress;
};

/** What it is told there. */
struct Order {
    std::int32_t measure;
    std::int32_t core;
};

/** Behind the last combination. */
constexpr bxLayoutPlace theEnd{INT_MAX, 0};

/** Moves with the program or with its shared objects. */
std::uint64_t codeAddress() {
    constexpr std::uint64_t factor = 31;
    return factor * getauxval(AT_ENTRY) + getauxval(AT_BASE);
}

template <class Message>
bool sent(int socket, const Message& message) {
    ssize_t n = -1;
    do
        n = send(socket, &message, sizeof message, MSG_NOSIGNAL);
    while (n < 0 && errno == EINTR);
    return n == static_cast<ssize_t>(sizeof message);
}

template <class Message>
bool received(int socket, Message& message) {
    ssize_t n = -1;
    do
        n = recv(socket, &message, sizeof message, 0);
    while (n < 0 && errno == EINTR);
    return n == static_cast<ssize_t>(sizeof message);
}

/** Starts this program with its own words. \return 0 or the error */
int startAgain(const std::string& setting, pid_t& process) {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::string words(std::istreambuf_iterator<char>(file), {});
    std::vector<char*> arguments;
    for (std::size_t at = 0; at < words.size(); at += std::strlen(&words[at]) + 1)
        arguments.push_back(&words[at]);
    arguments.push_back(nullptr);
    std::string own = std::string(variable) + "=" + setting;
    std::vector<char*> environment;
    for (char** entry = environ; *entry != nullptr; ++entry)
        environment.push_back(*entry);
    environment.push_back(own.data());
    environment.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    if (const int error = posix_spawn_file_actions_init(&actions))
        return error;
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, standard, "/dev/null", O_RDWR, 0);
    const int error =
        posix_spawn(&process, "/proc/self/exe", &actions, nullptr, arguments.data(), environment.data());
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

bxString howItEnded(int status) {
    if (WIFSIGNALED(status))
        return bxString("has ended by signal ") << WTERMSIG(status);
    return bxString("has ended with status ") << WEXITSTATUS(status);
}

std::unique_ptr<bxLayoutFollower> s_follower;

/** Those that this process leads. */
std::vector<std::unique_ptr<bxLayoutProcess>> s_processes;

} // namespace

// ---- Leading ----

bxLayoutProcess::bxLayoutProcess(int number) : m_number(number) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        lost(bxString("cannot be started: ") << std::strerror(errno));
        return;
    }
    m_socket = ends[0];
    fcntl(ends[1], F_SETFD, 0);
    const int error = startAgain(std::to_string(number) + " " + std::to_string(ends[1]), m_process);
    close(ends[1]);
    if (error != 0) {
        m_process = -1;
        lost(bxString("cannot be started: ") << std::strerror(error));
    } else {
        hear();
    }
}

bxLayoutProcess::~bxLayoutProcess() {
    if (m_socket >= 0)
        close(m_socket);
    if (m_process >= 0)
        waitpid(m_process, nullptr, 0);
}

/** No figure comes from it any more. */
void bxLayoutProcess::lost(const bxString& why) {
    if (!bxInterrupted()) // else it ended as it was told to
        g_ostrm << ERR << "-- Layout " << m_number + 1 << ": the process " << why << "\n" << endMessage;
    if (m_socket >= 0)
        close(m_socket);
    m_socket = -1;
    m_place = theEnd;
    m_clocks = 0;
}

bool bxLayoutProcess::hear() {
    Report report{};
    if (!received(m_socket, report)) {
        int status = 0;
        waitpid(m_process, &status, 0);
        m_process = -1;
        lost(howItEnded(status));
        return false;
    }
    m_place = report.place;
    m_clocks = report.clocks;
    m_codeMoved = report.codeAddress != codeAddress();
    return true;
}

bool bxLayoutProcess::order(bool measured, int core) {
    sent(m_socket, Order{measured, core});
    return hear();
}

double bxLayoutProcess::measure(bxLayoutPlace place, int core) {
    while (m_place < place) // what this process had no figure of
        if (!order(false, core))
            return 0;
    return m_place == place && order(true, core) ? m_clocks : 0;
}

bxLayoutSpread bxLayouts::measure(int count, bxLayoutPlace place, double own, int core) {
    bxLayoutSpread spread;
    spread.asked = count;
    spread.clocks.push_back(own);
    for (auto i = s_processes.size(); i + 1 < static_cast<std::size_t>(count) && !bxInterrupted(); ++i)
        s_processes.push_back(std::make_unique<bxLayoutProcess>(static_cast<int>(i) + 1));
    for (const auto& process : s_processes) {
        if (bxInterrupted())
            break;
        const double clocks = process->measure(place, core);
        if (clocks > 0)
            spread.clocks.push_back(clocks);
        spread.codeMoved = spread.codeMoved || process->codeMoved();
    }
    return spread;
}

void bxLayouts::end() {
    s_processes.clear();
}

// ---- Following ----

void bxLayoutFollower::start() {
    const char* const words = std::getenv(variable);
    int number = 0;
    int socket = -1;
    if (!words || std::sscanf(words, "%d %d", &number, &socket) != 2)
        return;
    s_follower.reset(new bxLayoutFollower(number, socket)); // NOLINT: the constructor is private
    g_discardOutput = true;
    bxCpuTicker::m_freqMHz = 1000; // its figures are clocks
}

bxLayoutFollower* bxLayoutFollower::present() {
    return s_follower.get();
}

bxLayoutFollower::~bxLayoutFollower() {
    report(theEnd);
}

void bxLayoutFollower::report(bxLayoutPlace place) {
    sent(m_socket, Report{place, m_clocks, codeAddress()});
    m_clocks = 0;
}

bool bxLayoutFollower::arrive(bxLayoutPlace place) {
    report(place);
    Order order{};
    if (!received(m_socket, order))
        for (;;)
            syscall(SYS_exit_group, 0); // past what catches a call of exit
    bxMoveToCore(order.core);
    return order.measure != 0;
}

int bxLayoutFollower::displacement() const {
    constexpr int lineSize = 64;
    constexpr int step = 23; // lines: any few layouts lie all over a page
    constexpr int linesOfPage = 64;
    return lineSize * (m_number * step % linesOfPage);
}

std::size_t bxLayoutFollower::stackDepth() const {
    constexpr std::size_t step = 1040; // bytes: another line and another place in it for each
    return static_cast<std::size_t>(m_number) * step;
}
