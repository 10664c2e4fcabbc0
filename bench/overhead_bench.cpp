// What the harness spends outside the timed regions: a trivial function in many combinations, Manual method
// with one loop, listing at PERF and table to files. Prints the time per combination and the memory, for
// growing numbers of combinations.
#include "kv.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

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

int tcall_zorsTrivial_32f() {
    return 0;
}

KV_REG(TimTrivial, zorsTrivial_32f)

/** Runs a whole session in a child process; seconds and peak memory of it. */
void measure(int combinations, const std::string& directory) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        std::freopen("/dev/null", "w", stdout);
        const std::string range = "-dNumber=1 " + std::to_string(combinations) + " +1";
        std::string keys[] = {"overhead_bench",  "-B",           "-fTrivial", "-LP",           "-o", "-r",
                              "-dMethod=Manual", "-dNumLoops=1", range,       "-l" + directory};
        char* words[std::size(keys)];
        for (std::size_t i = 0; i < std::size(keys); ++i) {
            words[i] = keys[i].data();
        }
        bxCpuTicker::m_freqMHz = 1000; // the frequency is not what is measured here
        bxSession session;
        _exit(session.run(static_cast<int>(std::size(keys)), words));
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const double wall =
        std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
    const auto cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e6 +
                     static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
    std::printf("%12d %14.2f %14.2f %12.1f  %s\n", combinations, wall / combinations, cpu / combinations,
                static_cast<double>(usage.ru_maxrss) / 1024, status == 0 ? "ok" : "FAILED");
    std::fflush(stdout);
}

} // namespace

int main() {
    char directory[] = "/tmp/overheadXXXXXX";
    if (mkdtemp(directory) == nullptr) {
        return 1;
    }
    std::printf("%12s %14s %14s %12s\n", "combinations", "wall us/each", "cpu us/each", "peak MB");
    for (const int combinations : {1000, 10000, 100000}) {
        measure(combinations, directory);
    }
    return std::system((std::string("rm -r ") + directory).c_str()) == 0 ? 0 : 1;
}
