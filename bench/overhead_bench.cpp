// What a run costs outside of the timed regions.
//
//     overhead_bench [largest number of combinations]
//
// Prints csv. "combinations": a trivial function in many combinations, one call each (Manual method), with
// listing and table to files, beside as many benchmarks of Google Benchmark of one iteration each, with its
// csv file; "start": from the start of the process to the first timed call; "suite": all tests of the
// reference library, Auto method, and the share of the time inside the timed regions. Each run is a process
// of its own.
#include "kv.h"
#include "session/bxsession.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

/** Seconds on a clock that all processes share. */
double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// ---- The trivial function ----

kvVector s_data;
bxStepIterator<int> s_number(1, "Number", "");

class TimTrivial : public kvTest {
  public:
    using kvTest::kvTest;
    bool canStart() override {
        regParm(s_number);
        return true;
    }
    bool initData() override {
        s_data.init(kv32f);
        return s_data.createVector(16, -1);
    }
    bool flushData() override {
        s_data.deleteVector();
        return true;
    }
};

int tcall_benchTrivial_32f() {
    return 0;
}
KV_REG(TimTrivial, benchTrivial_32f)

void peerTrivial(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(tcall_benchTrivial_32f());
}

// ---- Timed regions ----

/** Most tests that can be watched. */
constexpr std::size_t mostTests = 128;
std::array<bxFuncLoop, mostTests> s_loops;
double s_firstCall = 0; /**< moment of the first timed call */
long long s_ticks = 0;  /**< inside timed regions */

/** Stands in for the loop function of one test. */
template <std::size_t test>
bxResult watchedLoop(int count, long long* clocks) {
    if (s_firstCall == 0)
        s_firstCall = now();
    const bxResult r = s_loops[test](count, clocks);
    s_ticks += *clocks;
    return r;
}

template <std::size_t... test>
constexpr std::array<bxFuncLoop, mostTests> watchedLoops(std::index_sequence<test...>) {
    return {watchedLoop<test>...};
}

void watchAllTests() {
    constexpr auto watched = watchedLoops(std::make_index_sequence<mostTests>());
    std::size_t i = 0;
    for (bxTest* test : *pTestList)
        if (test->funcLoop && i < mostTests) {
            s_loops[i] = test->funcLoop;
            test->funcLoop = watched[i++];
        }
}

// ---- What the child processes do ----

int runSession(const fs::path& directory, const std::vector<std::string>& keys) {
    std::vector<std::string> words{"overhead_bench", "-B", "-LP", "-o", "-r", "-l" + directory.string()};
    words.insert(words.end(), keys.begin(), keys.end());
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    bxCpuTicker::m_freqMHz = 1000; // its measurement, of 40 ms, is not what is measured here
    return bxSession().run(static_cast<int>(pointers.size()), pointers.data());
}

int combinationsChild(const fs::path& directory, const std::string& n) {
    return runSession(directory, {"-fTrivial", "-dMethod=Manual", "-dNumLoops=1", "-dNumber=1 " + n + " +1"});
}

int peerChild(const fs::path& directory, const std::string& n) {
    std::string words[] = {"overhead_bench", "--benchmark_out=" + (directory / "peer.csv").string(),
                           "--benchmark_out_format=csv"};
    char* pointers[] = {words[0].data(), words[1].data(), words[2].data()};
    int count = 3;
    benchmark::Initialize(&count, pointers);
    for (int i = 0; i < std::atoi(n.c_str()); ++i)
        benchmark::RegisterBenchmark(("trivial/" + std::to_string(i)).c_str(), peerTrivial)->Iterations(1);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

/** \param start when the parent started this process */
int suiteChild(const fs::path& directory, const std::string& start) {
    watchAllTests();
    const double entered = now();
    const unsigned long long firstTick = zor_get_cpu_counter();
    const int status = runSession(directory, {"-f-Trivial"});
    const double wall = now() - entered;
    const double ticksPerSecond = static_cast<double>(zor_get_cpu_counter() - firstTick) / wall;
    std::ofstream(directory / "suite") << s_firstCall - std::atof(start.c_str()) << ' ' << wall << ' '
                                       << static_cast<double>(s_ticks) / ticksPerSecond;
    return status;
}

using Child = int (*)(const fs::path& directory, const std::string& argument);
constexpr std::pair<const char*, Child> children[] = {
    {"benchex", combinationsChild}, {"gbench", peerChild}, {"suite", suiteChild}};

// ---- The parent ----

struct Cost {
    double wall = 0; /**< seconds */
    double cpu = 0;  /**< seconds */
    double peak = 0; /**< megabytes of memory */
};

double seconds(const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
}

/** Runs this program again, as one of the children. */
Cost run(const std::string& child, const fs::path& directory, const std::string& argument) {
    const double start = now();
    const pid_t process = fork();
    if (process == 0) {
        std::freopen("/dev/null", "w", stdout);
        std::freopen("/dev/null", "w", stderr);
        const std::string last = argument.empty() ? std::to_string(start) : argument;
        execl("/proc/self/exe", "overhead_bench", child.c_str(), directory.c_str(), last.c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(process, &status, 0, &usage);
    if (status != 0) {
        std::fprintf(stderr, "%s %s failed\n", child.c_str(), argument.c_str());
        std::exit(1);
    }
    return {now() - start, seconds(usage.ru_utime) + seconds(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss) / 1024};
}

void measureCombinations(const fs::path& directory, const char* tool, int n) {
    const Cost cost = run(tool, directory, std::to_string(n));
    std::printf("combinations,%s,%d,%.0f,%.0f,%.2f\n", tool, n, cost.wall * 1e6, cost.cpu * 1e6, cost.peak);
    std::fflush(stdout);
}

void measureSuite(const fs::path& directory) {
    const Cost cost = run("suite", directory, "");
    double start = 0, wall = 0, timed = 0;
    std::ifstream(directory / "suite") >> start >> wall >> timed;
    std::printf("start,benchex,1,%.0f,,\n", start * 1e6);
    std::printf("suite,benchex,1,%.0f,%.0f,%.2f\n", wall * 1e6, cost.cpu * 1e6, cost.peak);
    std::printf("suite inside timed regions,benchex,1,%.0f,,\n", timed * 1e6);
    std::fflush(stdout);
}

void measureAll(const fs::path& directory, int mostCombinations) {
    constexpr int repetitions = 9;
    std::printf("what,tool,n,wall us,cpu us,peak MB\n");
    std::fflush(stdout);
    // First, while the system has no large files to write out: that disturbs calls, and Auto goes on for
    // longer.
    for (int i = 0; i < repetitions; ++i)
        measureSuite(directory);
    // From 1 on: what is the same for any number is the start of the process. All numbers in turn, so that a
    // slow minute of the machine does not fall on one of them.
    for (int i = 0; i < repetitions; ++i)
        for (const int n : {1, 1000, 3000, 10'000, 30'000, 100'000})
            if (n <= mostCombinations)
                measureCombinations(directory, "benchex", n);
    // It takes the square of their number: 10,000 were seen to take a minute.
    for (int i = 0; i < 3; ++i)
        for (const int n : {1, 1000, 2000, 4000})
            if (n <= mostCombinations && (n <= 1000 || i == 0))
                measureCombinations(directory, "gbench", n);
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 4)
        for (const auto& [name, child] : children)
            if (std::string(argv[1]) == name)
                return child(argv[2], argv[3]);
    const fs::path directory = fs::temp_directory_path() / ("overhead_bench." + std::to_string(getpid()));
    fs::create_directories(directory);
    measureAll(directory, argc > 1 ? std::atoi(argv[1]) : 100'000);
    fs::remove_all(directory);
    return 0;
}
