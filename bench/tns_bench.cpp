// The TNS calls of the suite measured by Benchex and by Google Benchmark in one process, combination by
// combination, and the spread of Benchex's figure over repeated measurements. Clocks are ticks of the
// time-stamp counter; Google Benchmark's nanoseconds are converted by the counter's rate, measured here.
#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "output/bxostream.h"
#include "system/bxclock.h"
#include "system/bxenvironment.h"
#include "timing/bxfpwatch.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/** Counter ticks per nanosecond. */
double counterRate() {
    const auto start = Clock::now();
    const auto ticks = zor_get_cpu_counter();
    while (Clock::now() - start < std::chrono::milliseconds(200)) {}
    const auto spent = static_cast<double>(zor_get_cpu_counter() - ticks);
    return spent / std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

/** Keeps the figure of the one benchmark that is run at a time. */
class FigureReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        nanoseconds = runs.front().real_accumulated_time / static_cast<double>(runs.front().iterations) * 1e9;
    }
    double nanoseconds = 0;
};

/** Nanoseconds per call by Google Benchmark, with its defaults. */
double peerNanoseconds(int (*call)()) {
    benchmark::ClearRegisteredBenchmarks();
    benchmark::RegisterBenchmark("call", [call](benchmark::State& state) {
        for (auto _ : state) {
            benchmark::DoNotOptimize(call());
        }
    });
    FigureReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.nanoseconds;
}

double benchexClocks(const bxTest& test) {
    bxTest::initCtrlStatus();
    bxTool tool = g_tool;
    tool.timing(test.funcLoop, test.funcStat, test.funcCall, test.initFunc);
    return tool.funcClocks;
}

void compareTest(bxTest& test, double rate) {
    test.beginTest();
    test.canStart();
    while (test.canContinue()) {
        test.firstIteration = false;
        bxTest::m_vectorNum = bxTest::m_vectorShift = 0;
        if (!test.initData()) {
            continue;
        }
        std::vector<double> figures(5);
        std::generate(figures.begin(), figures.end(), [&] { return benchexClocks(test); });
        const double peer = peerNanoseconds(test.funcCall) * rate;
        std::sort(figures.begin(), figures.end());
        std::string values;
        for (const bxParameter* parm : test.parms) {
            values += std::string(" ") + parm->valueString().c_str();
        }
        std::printf("%-28s%-12s %10.0f %10.0f %8.3f %9.2f%%\n", test.name.c_str(), values.c_str(), figures[2],
                    peer, figures[2] / peer, 100 * (figures[4] - figures[0]) / figures[2]);
        std::fflush(stdout);
        test.flushData();
    }
    test.flushStart();
    test.endTest();
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    setZorEnvironment();
    zor_Init();
    const double rate = counterRate();
    std::printf("counter: %.3f ticks per ns\n", rate);
    std::printf("%-28s%-12s %10s %10s %8s %10s\n", "function", " parameters", "benchex", "peer", "ratio",
                "spread of 5");
    for (bxTest* test : *pTestList) {
        if (test->name.find("TNS") >= 0) {
            compareTest(*test, rate);
        }
    }
    return 0;
}
