#include "methods.h"

#include "system/bxclock.h"
#include "timing/bxstatistics.h"
#include "timing/bxtool.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// ---- Which kernels a method takes ----

bool isOneOf(const Kernel& kernel, std::initializer_list<const char*> names) {
    return std::any_of(names.begin(), names.end(), [&](const char* name) { return kernel.name == name; });
}

bool every(const Kernel&) {
    return true;
}

/** Those on which it is tried what more time brings. */
bool ladder(const Kernel& kernel) {
    return isOneOf(kernel, {"add_0003", "add_0016", "add_0100", "add_1000", "zorsMDCTFwd_32f 256"});
}

/** For what takes a tenth of a second. */
bool some(const Kernel& kernel) {
    return (kernel.clocks >= 16 && kernel.name.starts_with("add")) ||
           isOneOf(kernel, {"add_0001", "add_0010", "zorsMDCTFwd_32f 256", "zorsMDCTFwd_32f 2048",
                            "zorsDecodeTNS_AAC_32s_I long 12"});
}

/** For what takes the better part of a second. */
bool few(const Kernel& kernel) {
    return isOneOf(kernel,
                   {"add_0010", "add_0016", "add_0017", "add_0100", "add_1000", "zorsMDCTFwd_32f 256"});
}

// ---- The engine ----

/** A timing by the engine, with the session's settings but for what `set` changes. */
template <class Set>
Figure engineFigure(const Kernel& kernel, Set set) {
    bxTest::initCtrlStatus();
    bxTool tool = g_tool;
    set(tool);
    tool.timing(kernel.test->funcLoop, kernel.test->funcStat, kernel.test->funcCall, kernel.test->initFunc);
    const bxPreciseFigure& precise = tool.preciseFigure;
    return {tool.funcClocks, tool.precise, precise.low, precise.high};
}

/** One method of the engine, which may be repeated for a time. */
template <class Set>
std::function<Figure(const Kernel&)> engine(Set set, double seconds = 0) {
    return [set, seconds](const Kernel& kernel) {
        const Clock::time_point start = Clock::now();
        Figure figure;
        std::vector<double> figures;
        do {
            figure = engineFigure(kernel, set);
            figures.push_back(figure.value);
        } while (secondsSince(start) < seconds);
        return figures.size() == 1 ? figure : Figure{bxMedian(figures), figure.coreClocks};
    };
}

void automatic(bxTool& tool) {
    tool.setMethodAuto();
}
void manual(bxTool& tool) {
    tool.setMethodLoop(10);
}
void statistic(bxTool& tool) {
    tool.setMethodStat(bxTool().statMinCalls, bxTool().statMaxClocks);
}
void precise(bxTool& tool) {
    tool.precise = true;
}
/** An accuracy that is never reached: the mode goes on until its limit of time, and waits for nobody. */
void preciseToTheLimit(bxTool& tool) {
    tool.precise = true;
    tool.patience = 0;
    tool.accuracy = 1e-9;
}

// ---- Google Benchmark ----

/** Keeps nanoseconds of processor time per call, one figure for each repetition. */
class FigureReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration)
                figures.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations) * 1e9);
    }
    std::vector<double> figures;
};

/** \param minSeconds 0: Google Benchmark's default, 0.5 s */
Figure peerFigure(const Kernel& kernel, double minSeconds, int repetitions) {
    benchmark::ClearRegisteredBenchmarks();
    benchmark::internal::Benchmark* const work =
        kernel.peer
            ? benchmark::RegisterBenchmark("call", kernel.peer)
            : benchmark::RegisterBenchmark("call", [call = kernel.test->funcCall](benchmark::State& state) {
                  for ([[maybe_unused]] auto _ : state)
                      benchmark::DoNotOptimize(call());
              });
    if (minSeconds > 0)
        work->MinTime(minSeconds);
    if (repetitions > 1)
        work->Repetitions(repetitions);
    FigureReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return {bxMedian(reporter.figures) * ticksPerNanosecond()};
}

std::function<Figure(const Kernel&)> peer(double minSeconds, int repetitions = 1) {
    return [=](const Kernel& kernel) { return peerFigure(kernel, minSeconds, repetitions); };
}

/** Google Benchmark with ten times what the Auto method takes for the kernel, at this moment. */
Figure peerWithTenTimesAuto(const Kernel& kernel) {
    std::array<double, 3> seconds;
    for (double& once : seconds) {
        const Clock::time_point start = Clock::now();
        engineFigure(kernel, automatic);
        once = secondsSince(start);
    }
    std::sort(seconds.begin(), seconds.end());
    return peerFigure(kernel, 10 * seconds[1], 1);
}

} // namespace

double ticksPerNanosecond() {
    static const double rate = [] {
        const Clock::time_point start = Clock::now();
        const unsigned long long ticks = zor_get_cpu_counter();
        while (secondsSince(start) < 0.5) {}
        const auto spent = static_cast<double>(zor_get_cpu_counter() - ticks);
        return spent / secondsSince(start) * 1e-9;
    }();
    return rate;
}

std::vector<Method> allMethods() {
    return {
        {"auto", engine(automatic), every},
        {"auto@1ms", engine(automatic, 1e-3), ladder},
        {"auto@10ms", engine(automatic, 10e-3), every},
        {"auto@100ms", engine(automatic, 100e-3), ladder},
        {"manual", engine(manual), every},
        {"manual@1ms", engine(manual, 1e-3), ladder},
        {"manual@10ms", engine(manual, 10e-3), every},
        {"manual@100ms", engine(manual, 100e-3), ladder},
        {"statistic", engine(statistic), every},
        {"statistic@1ms", engine(statistic, 1e-3), ladder},
        {"statistic@10ms", engine(statistic, 10e-3), every},
        {"statistic@100ms", engine(statistic, 100e-3), ladder},
        {"precise", engine(precise), every},
        {"precise@10ms", engine(preciseToTheLimit), every},
        {"precise@100ms", engine(preciseToTheLimit, 92e-3), ladder},
        {"gbench", peer(0), few, 4},
        {"gbench@10 x 10ms", peer(10e-3, 10), some, 2},
        {"gbench@0.01s", peer(10e-3), every},
        {"gbench@5ms", peer(5e-3), every},
        {"gbench@0.1ms", peer(0.1e-3), ladder},
        {"gbench@1ms", peer(1e-3), ladder},
        {"gbench@100ms", peer(100e-3), ladder},
        {"gbench@10 x auto", peerWithTenTimesAuto, every},
    };
}
