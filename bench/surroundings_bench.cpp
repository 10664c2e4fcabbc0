// What the precise mode and the frequency are worth beside other work, as root and as another user: chains of
// known cost, from one clock to a second.
//
//     surroundings_bench <figures of a chain> <file.csv>
//
// Each of the surroundings is a process of its own, which knows nothing of the cores before. In each, as many
// fresh processes as figures measure the frequency; what it is by the whole run stands in the last row.
#include "chains.h"
#include "kv.h"
#include "system/bxclock.h"
#include "system/bxclockrate.h"
#include "system/bxenvironment.h"
#include "timing/bxcores.h"
#include "timing/bxfpwatch.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <grp.h>
#include <random>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// ---- Chains ----

/** One after the other as if they were one: the loop's own instructions fit beside them. */
template <long long clocks>
int call() {
    constexpr int part = 1000;
    if constexpr (clocks <= part)
        return chain<Link::addition, static_cast<int>(clocks)>();
    for (long long i = 0; i < clocks / part; ++i)
        chain<Link::addition, part>();
    return 0;
}

/** "add_3000000000" */
template <long long clocks>
constexpr auto nameOf() {
    char text[] = "add_0000000000";
    for (auto [i, rest] = std::pair(sizeof text - 2, clocks); rest > 0; rest /= 10)
        text[i--] = static_cast<char>('0' + rest % 10);
    return kv::FunctionName(text);
}

struct Chain {
    const bxTest* test;
    double clocks;
};

template <long long... clocks>
std::vector<Chain> chainsOf(std::integer_sequence<long long, clocks...>) {
    std::vector<Chain> chains;
    const auto add = [&](double cost) { chains.push_back({*std::prev(pTestList->end()), cost}); };
    ((kv::registerTest<kvTest, nameOf<clocks>(), call<clocks>>(__FILE__, "kvTest//KV_REG"), add(clocks)),
     ...);
    return chains;
}

using Costs = std::integer_sequence<long long, 1, 2, 3, 5, 10, 16, 17, 100, 1000, 10'000, 100'000, 1'000'000,
                                    10'000'000, 100'000'000, 3'000'000'000>;

/** Fewer figures of calls that take long: a call of a second is made twice for each. */
int figuresOf(double clocks, int figures) {
    if (clocks >= 1e9)
        return std::min(figures, 2);
    return clocks >= 1e8 ? std::max(figures / 4, 1) : figures;
}

// ---- Company ----

/** What other processes do: so many on each core, busy for a time, idle for a time; busy forever without. */
struct Company {
    int onEachCore;
    double longest; /**< seconds, drawn from a twentieth of it on */
};

void keepBusy(const Company& company, int core) {
    bxMoveToCore(core);
    std::minstd_rand random(static_cast<unsigned>(getpid()));
    std::uniform_real_distribution<double> seconds(company.longest / 20, company.longest);
    for (;;) {
        const auto end = Clock::now() + std::chrono::duration<double>(seconds(random));
        while (company.longest == 0 || Clock::now() < end) {}
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds(random)));
    }
}

/** Runs `work` in a process that ends with this one. */
template <class Work>
pid_t start(Work work) {
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent)
            work();
        _exit(0);
    }
    return process;
}

bool succeeded(pid_t process) {
    int status = 0;
    return waitpid(process, &status, 0) == process && status == 0;
}

/** The busy processes, for a scope. */
class Neighbours {
  public:
    explicit Neighbours(const Company& company) {
        for (long core = 0; core < sysconf(_SC_NPROCESSORS_ONLN); ++core)
            for (int i = 0; i < company.onEachCore; ++i)
                m_processes.push_back(start([=] { keepBusy(company, static_cast<int>(core)); }));
    }
    ~Neighbours() {
        for (const pid_t process : m_processes) {
            kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
        }
    }
    Neighbours(const Neighbours&) = delete;
    Neighbours& operator=(const Neighbours&) = delete;

  private:
    std::vector<pid_t> m_processes;
};

struct Surroundings {
    const char* name;
    bool root;
    Company company;
};
constexpr Surroundings surroundings[] = {
    {"alone", true, {0, 0}},
    {"not root", false, {0, 0}},
    {"not root, a busy loop on each core", false, {1, 0}},
    {"not root, four busy loops on each core", false, {4, 0}},
    {"not root, one on each core that comes and goes", false, {1, 0.5}},
};

void becomeNobody() {
    constexpr unsigned nobody = 65534;
    if (getuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0))
        _exit(1);
}

// ---- Measuring ----

double microsecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

void measure(std::FILE* table, const char* where, const Chain& chain) {
    bxTest::initCtrlStatus();
    bxTool tool = g_tool;
    tool.precise = true;
    const Clock::time_point begin = Clock::now();
    const bxResult result = tool.timing(chain.test->funcLoop, nullptr, nullptr, nullptr);
    const double wall = microsecondsSince(begin);
    const bxPreciseFigure& figure = tool.preciseFigure;
    std::fprintf(table, "figure,\"%s\",%.0f,%.8g,%.8g,%.8g,%d,%d,%d,%.4f,%s,%.0f\n", where, chain.clocks,
                 figure.clocks, figure.low, figure.high, figure.known, figure.slices, figure.dropped,
                 figure.lost, bxResultName(result), wall);
}

void measureFrequency(std::FILE* table, const char* where) {
    const Clock::time_point begin = Clock::now();
    const double mhz = bxCpuTicker::getMHz();
    std::fprintf(table, "frequency,\"%s\",,%.6f,,,,,,,,%.0f\n", where, mhz, microsecondsSince(begin));
}

bool measureAll(std::FILE* table, const Surroundings& where, const std::vector<Chain>& chains, int figures) {
    const Neighbours neighbours(where.company);
    const auto asUser = [&](auto work) {
        std::fflush(table);
        return succeeded(start([&] {
            if (!where.root)
                becomeNobody();
            work();
            std::fflush(table);
        }));
    };
    bool well = true;
    for (int i = 0; i < figures; ++i)
        well = asUser([&] { measureFrequency(table, where.name); }) && well;
    return asUser([&] {
               for (int i = 0; i < figures; ++i)
                   for (const Chain& chain : chains)
                       if (i < figuresOf(chain.clocks, figures))
                           measure(table, where.name, chain);
           }) &&
           well;
}

} // namespace

int main(int argc, char** argv) {
    const int figures = argc == 3 ? std::atoi(argv[1]) : 0;
    std::FILE* const table = figures > 0 ? std::fopen(argv[2], "w") : nullptr;
    if (!table) {
        std::fprintf(stderr, "usage: surroundings_bench <figures of a chain> <file.csv>\n");
        return 2;
    }
    setZorEnvironment();
    zor_Init();
    const std::vector<Chain> chains = chainsOf(Costs());
    std::fprintf(table,
                 "what,surroundings,clocks,figure,low,high,known,slices,dropped,lost,result,wall us\n");
    const bxClockReading first = bxReadClocks();
    bool well = true;
    for (const Surroundings& where : surroundings)
        well = measureAll(table, where, chains, figures) && well;
    const bxClockReading last = bxReadClocks();
    std::fprintf(table, "frequency,the whole run,,%.6f,,,,,,,,%.0f\n",
                 1e3 * static_cast<double>(last.ticks - first.ticks) /
                     static_cast<double>(last.nanoseconds - first.nanoseconds),
                 1e-3 * static_cast<double>(last.nanoseconds - first.nanoseconds));
    return std::fclose(table) == 0 && well ? 0 : 1;
}
