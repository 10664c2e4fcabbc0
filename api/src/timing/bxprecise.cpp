#include "timing/bxprecise.h"

#include "system/bxclock.h"
#include "timing/bxfiguretext.h"
#include "timing/bxfpwatch.h"
#include "timing/bxreference.h"
#include "timing/bxtimingtext.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

using bxTimingText::traced;
using bxTimingText::write;

namespace {

/** Counts that n calls of a slice should take: a step of the counter (21 counts on some machines) is 0.07 %
 * of it. */
constexpr double sliceTicks = 32'000;
/** Most calls of a slice, for functions that take less than a count. */
constexpr int mostCalls = 1 << 22;
/** A call that takes longer needs no difference: the reads of the counter are 0.04 % of it or less, and more
 * of such calls fit into the time. */
constexpr double longCall = 250'000;

/** Blocks of additions that take about as long as the calls of a slice should. */
constexpr int referenceBlocks = 768;
/** What the additions around a slice take, some of them slower. */
constexpr double referenceCost = 5 * sliceTicks;

/** Steps by which the slices' lengths differ, so that the counter's steps do not fall on the same place in
 * each. */
constexpr int lengths = 16;

/** The length of a slice: from `base` to nearly one and a half times as much. */
int stretched(int base, int slice) {
    return base + static_cast<int>(static_cast<long long>(base) * (slice * 7 % lengths) / (2 * lengths));
}

/** Counts of one operation of a chain, by the difference of one twice as long. */
double ticksOfOne(long long (*chain)(int blocks), int blocks) {
    const long long once = chain(blocks);
    const long long twice = chain(2 * blocks);
    return static_cast<double>(twice - once) / blocks / bxReferenceBlock;
}

/** Counts of one addition. */
double referenceTicks(int slice) {
    return ticksOfOne(bxReferenceTicks, stretched(referenceBlocks, slice));
}

/** Blocks of independent additions: a step of the counter is 0.1 % of their time. */
constexpr int throughputBlocks = 2048;

/** Independent additions in a core clock. \param addition  counts of one addition */
double throughput(double addition) {
    return addition * throughputBlocks * bxReferenceBlock /
           static_cast<double>(std::max(bxThroughputTicks(throughputBlocks), 1LL));
}

/** What can be seen of the core without calls. */
bxSlice emptySlice() {
    bxSlice slice;
    slice.referenceBefore = referenceTicks(0);
    slice.referenceAfter = referenceTicks(0);
    slice.throughput = throughput(slice.referenceAfter);
    return slice;
}

/** Additions that a multiplication takes: the median of some tries, since others may interrupt. */
double multiplication() {
    std::vector<double> tries;
    for (int i = 0; i < 5; ++i)
        tries.push_back(ticksOfOne(bxMultiplicationTicks, referenceBlocks / 3) / referenceTicks(0));
    return bxMedian(tries);
}

/** Looks at the core now and then, 10 ms apart: others that use it during the first combination may be gone
 * in between. */
void meet(bxOwnCore& core, int looks) {
    for (int look = 0; look < looks; ++look) {
        core.saw(emptySlice());
        core.saw(emptySlice());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

/** One combination of parameter values. */
class PreciseTiming {
  public:
    PreciseTiming(const bxTimingSettings& settings, const bxLoopSampler& sampler, bxOwnCore& core)
        : m_settings(settings), m_sampler(sampler), m_core(core) {}

    bxTimingFigures run(int onCore);

  private:
    int callsOfSlice();
    void measureSlices(int calls);
    void measureLongCalls();
    /** Adds the slice and lets the core learn from it. */
    void add(bxSlice& slice);
    /** Makes `count` calls; clocks per call. */
    double measure(int count);
    /** Time that was spent, and time for so many calls, is within what was asked for. */
    bool timeFor(double ticks) const { return spent() - m_waited + ticks <= m_settings.budget + 3 * m_call; }
    double spent() const;
    /** Slices of a shared core are waited for others to leave. */
    bool waits() const;
    void judge();

    const bxTimingSettings& m_settings;
    const bxLoopSampler& m_sampler;
    bxOwnCore& m_core;
    bxTimingFigures m_figures;
    bxSliceSeries m_series;
    const unsigned long long m_start = zor_get_cpu_counter();
    double m_called = 0; ///< counts of all calls
    double m_waited = 0; ///< of it, for others to leave the core
    double m_call = 0;   ///< counts of one call
    bool m_badStatus = false;
};

double PreciseTiming::spent() const {
    return std::max(m_called, static_cast<double>(bxCpuTicker::toClocks(zor_get_cpu_counter() - m_start)));
}

double PreciseTiming::measure(int count) {
    bxSample sample;
    traced("runTimFunc", [&] { sample = m_sampler(count); });
    m_badStatus = sample.badStatus;
    m_figures.add(sample, count);
    m_called += m_figures.funcClocks * (count + 1.0); // each measurement begins with an untimed call
    return m_figures.funcClocks;
}

bool PreciseTiming::waits() const {
    return m_series.endsShared(m_core.throughput()) && m_waited < m_settings.patience * m_core.patience();
}

void PreciseTiming::add(bxSlice& slice) {
    slice.throughput = throughput(slice.referenceAfter);
    m_series.add(slice);
    m_core.saw(slice);
}

/** Calls n of a slice: as many as take some time, but no more than leave the control status clean. */
int PreciseTiming::callsOfSlice() {
    int calls = 1;
    for (;;) {
        const double perCall = measure(calls);
        m_call = perCall;
        if (bxIsFailure(m_figures.result))
            return calls;
        if (m_settings.ibsMode && m_badStatus && calls > 1) {
            bxClearCtrlStatus();
            return std::max(calls / 4, 1); // 2n calls and the stretch of the slices stay below what was bad
        }
        const double wanted = perCall > 0 ? sliceTicks / perCall : mostCalls;
        if (wanted <= 2.0 * calls || calls == mostCalls)
            return static_cast<int>(std::clamp(wanted + 0.5, 1.0, static_cast<double>(mostCalls)));
        // Few calls are mostly their fixed cost: not more than ten times as many at once.
        calls = static_cast<int>(std::min({wanted, 10.0 * calls, static_cast<double>(mostCalls)}));
    }
}

void PreciseTiming::measureSlices(int calls) {
    bxSlice slice;
    int next = bxSliceSeries::fewest;
    slice.referenceAfter = referenceTicks(0);
    do {
        const double before = spent();
        const int i = m_series.count();
        const int n = m_figures.loops = stretched(calls, i);
        // The order changes from slice to slice, so that a drift makes the difference too large as often as
        // too small.
        const double first = measure(i % 2 ? 2 * n : n), second = measure(i % 2 ? n : 2 * n);
        const double once = i % 2 ? second : first, twice = i % 2 ? first : second;
        if (bxIsFailure(m_figures.result))
            return;
        slice.perCall = 2 * twice - once;
        slice.disagreement = bxDisagreement(once, twice, n, sliceTicks);
        slice.referenceBefore = slice.referenceAfter;
        slice.referenceAfter = referenceTicks(i + 1);
        add(slice);
        if (waits())
            m_waited += spent() - before;
        if (m_series.count() < next)
            continue;
        const bxPreciseFigure figure = m_series.figure(m_settings.accuracy, m_core.throughput());
        if (figure.reached && figure.settled)
            return;
        next = bxSliceSeries::nextLook(m_series.count());
    } while (timeFor((3.0 * calls + 2) * m_call + referenceCost));
}

void PreciseTiming::measureLongCalls() {
    m_figures.loops = 1;
    bxSlice slice;
    slice.perCall = m_call;
    slice.referenceBefore = slice.referenceAfter = referenceTicks(0); // none before the first call
    add(slice);
    while (timeFor(2 * m_call + referenceCost)) {
        const double before = spent();
        slice.perCall = measure(1);
        if (bxIsFailure(m_figures.result))
            return;
        slice.referenceBefore = slice.referenceAfter;
        slice.referenceAfter = referenceTicks(0);
        add(slice);
        if (waits())
            m_waited += spent() - before;
    }
}

void PreciseTiming::judge() {
    const int core = m_figures.preciseFigure.core;
    bxPreciseFigure figure = m_series.figure(m_settings.accuracy, m_core.throughput());
    figure.core = core;
    figure.multiplication = m_core.multiplication;
    m_figures.preciseFigure = figure;
    m_core.seriesEnded(figure);
    m_figures.funcClocks = figure.clocks;
    if (!(figure.clocks > 0)) {
        m_figures.raise(ACCURFAIL);
        return;
    }
    m_figures.found = true;
    m_figures.actualAccuracy = figure.known ? figure.accuracy() : 1;
    if (!figure.reached && m_figures.result <= OK)
        m_figures.result = ACCURWRN;
}

bxTimingFigures PreciseTiming::run(int onCore) {
    write(INFO, "    Precise mode: start\n");
    m_figures.preciseFigure.core = onCore;
    if (m_core.multiplication == 0)
        m_core.multiplication = multiplication();
    const int calls = callsOfSlice();
    if (bxIsFailure(m_figures.result))
        return m_figures;
    if (calls == mostCalls && m_figures.clocks > 0 &&
        static_cast<double>(m_figures.clocks) < sliceTicks / 4) {
        m_figures.found = m_figures.preciseFigure.nothing = m_figures.preciseFigure.reached = true;
        m_figures.loops = calls;
        m_figures.actualAccuracy = m_figures.funcClocks = 0;
    } else {
        if (m_call > longCall)
            measureLongCalls();
        else
            measureSlices(calls);
        if (bxIsFailure(m_figures.result))
            return m_figures;
        judge();
    }
    write(INFO, "        accuracy   = ", bxReachedText(m_figures), "\n",
          "        funcClocks = ", m_figures.funcClocks, "\n",
          "        result     = ", bxResultString(m_figures.result), "\n", "    Precise mode: stop\n");
    return m_figures;
}

} // namespace

bxTimingFigures bxTimePrecisely(const bxTimingSettings& settings, const bxLoopSampler& sampler,
                                bxCores& cores) {
    const bxPinnedCore pinned;
    bxOwnCore& core = cores.here();
    if (settings.patience > 0 && core.throughput() == 0)
        meet(core, cores.count() == 1 ? 32 : 4); // a process may get to see many cores
    return PreciseTiming(settings, sampler, core).run(pinned.core());
}
