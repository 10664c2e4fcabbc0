#include "sideprocess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <numeric>
#include <string_view>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

volatile std::sig_atomic_t s_interrupted = 0;

void interrupt(int signal) {
    if (s_interrupted) {
        std::signal(signal, SIG_DFL);
        raise(signal);
    }
    s_interrupted = 1;
}

/** Words of a process: its arguments and its environment. */
struct Words {
    std::vector<std::string> arguments;
    std::vector<std::string> environment;

    std::size_t bytes() const {
        const auto add = [](std::size_t sum, const std::string& word) { return sum + word.size() + 1; };
        return std::accumulate(environment.begin(), environment.end(),
                               std::accumulate(arguments.begin(), arguments.end(), arguments[0].size(), add),
                               add);
    }
    std::size_t count() const { return arguments.size() + environment.size(); }
};

std::string nameOf(const std::string& setting) {
    return setting.substr(0, setting.find('=') + 1);
}

void set(std::vector<std::string>& environment, const std::string& setting) {
    std::erase_if(environment, [&](const std::string& word) { return word.starts_with(nameOf(setting)); });
    environment.push_back(setting);
}

Words wordsOf(const Side& side) {
    Words words;
    words.arguments.push_back(side.program.string());
    words.arguments.emplace_back("-B");
    words.arguments.insert(words.arguments.end(), side.keys.begin(), side.keys.end());
    for (char** word = environ; *word; ++word)
        words.environment.emplace_back(*word);
    for (const std::string& setting : side.environment)
        set(words.environment, setting);
    if (!side.libraries.empty()) {
        const char* const others = std::getenv("LD_LIBRARY_PATH");
        set(words.environment, "LD_LIBRARY_PATH=" + side.libraries.string() +
                                   (others && *others ? std::string(":") + others : ""));
    }
    return words;
}

/** As many words and bytes as the other side's, so that both stacks begin at one address; and `offset` more.
 */
Words levelled(const Sides& sides, int side, int offset) {
    Words words = wordsOf(sides[static_cast<std::size_t>(side)]);
    const Words other = wordsOf(sides[static_cast<std::size_t>(1 - side)]);
    const std::size_t count = std::max(words.count(), other.count());
    const auto bytesOf = [count](const Words& w) { return w.bytes() + 2 * (count - w.count()); };
    const std::size_t bytes = std::max(bytesOf(words), bytesOf(other)) - bytesOf(words);
    while (words.count() < count)
        words.environment.emplace_back("_");
    words.environment.push_back("BENCHEX_STACK=" +
                                std::string(bytes + static_cast<std::size_t>(offset), '.'));
    return words;
}

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    for (std::string& word : words)
        result.push_back(word.data());
    result.push_back(nullptr);
    return result;
}

void inherit(int descriptor) {
    if (descriptor >= 0)
        fcntl(descriptor, F_SETFD, 0);
}

/** The highest ordinary priority, where the system grants it (to root): among the processes of a session, and
 * of this session among the others, where Linux schedules sessions as groups. */
void takePrecedence() {
    setpriority(PRIO_PROCESS, 0, PRIO_MIN);
    const int group = open("/proc/self/autogroup", O_WRONLY | O_CLOEXEC);
    constexpr std::string_view most = "-20";
    const auto written = write(group, most.data(), most.size());
    static_cast<void>(written); // without it the side is one of many
    close(group);
}

/** Between fork and exec: system calls only. */
[[noreturn]] void becomeSide(const SideChannels& channels, char* const* arguments, char* const* environment) {
    setsid();
    takePrecedence();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int fixed = personality(0xffffffff);
    if (fixed != -1)
        personality(static_cast<unsigned long>(fixed) | ADDR_NO_RANDOMIZE);
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(channels.listing, STDOUT_FILENO);
    dup2(channels.listing, STDERR_FILENO);
    for (const int descriptor : {channels.plan, channels.log, channels.tokenIn, channels.tokenOut})
        inherit(descriptor);
    execve(arguments[0], arguments, environment);
    _exit(127);
}

} // namespace

SideProcess::SideProcess(const Sides& sides, int side, const SideChannels& channels,
                         const Placement& placement) {
    Words words = levelled(sides, side, placement.stackOffset);
    // Numbers of a fixed width: the sides' words have the same length.
    char descriptors[80];
    std::snprintf(descriptors, sizeof descriptors, "%s=%d %6d %6d %6d %6d", bxTurnsForm::variable, side,
                  channels.plan, channels.log, channels.tokenIn, channels.tokenOut);
    words.environment.emplace_back(descriptors);
    const auto arguments = pointers(words.arguments);
    const auto environment = pointers(words.environment);
    m_id = fork();
    if (m_id == 0)
        becomeSide(channels, arguments.data(), environment.data());
    if (m_id < 0)
        throw PairError(std::string("no process can be started: ") + std::strerror(errno));
}

bool SideProcess::collect(int options) {
    int status = 0;
    rusage used{};
    pid_t got = 0;
    while ((got = wait4(m_id, &status, options, &used)) < 0 && errno == EINTR) {}
    if (got != m_id)
        return got == 0;
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    m_status = status;
    m_processorTime = seconds(used.ru_utime) + seconds(used.ru_stime);
    return false;
}

bool SideProcess::running() {
    return !m_status && collect(WNOHANG);
}

void SideProcess::kill() {
    if (!running())
        return;
    ::kill(-m_id, SIGKILL);
    ::kill(m_id, SIGKILL);
    collect(0);
}

std::string SideProcess::ending() const {
    if (!m_status)
        return "";
    if (WIFSIGNALED(*m_status))
        return "ended by signal " + std::to_string(WTERMSIG(*m_status)) + " (" +
               strsignal(WTERMSIG(*m_status)) + ")";
    if (WEXITSTATUS(*m_status) == 127)
        return "could not be started";
    return "ended with status " + std::to_string(WEXITSTATUS(*m_status));
}

bool canFixAddresses() {
    static const bool can = [] {
        const int now = personality(0xffffffff);
        const bool changed =
            now != -1 && personality(static_cast<unsigned long>(now) | ADDR_NO_RANDOMIZE) != -1;
        if (changed)
            personality(static_cast<unsigned long>(now));
        return changed;
    }();
    return can;
}

bool interrupted() {
    return s_interrupted != 0;
}

void catchInterrupts() {
    struct sigaction action {};
    action.sa_handler = interrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // Blocked, so that waitForChild can wait for it.
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    sigprocmask(SIG_BLOCK, &child, nullptr);
}

void waitForChild(std::chrono::milliseconds longest) {
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    const timespec limit{.tv_sec = static_cast<time_t>(longest.count() / 1000),
                         .tv_nsec = static_cast<long>(longest.count() % 1000 * 1'000'000)};
    sigtimedwait(&child, nullptr, &limit);
}
