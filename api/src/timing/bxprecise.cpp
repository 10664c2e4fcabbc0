#include "timing/bxprecise.h"

#include "system/bxclock.h"
#include "timing/bxfiguretext.h"
#include "timing/bxfpwatch.h"
#include "timing/bxowntime.h"
#include "timing/bxreference.h"
#include "timing/bxtimingtext.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
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

/** The same beside a long call, of which there may be no other: of two moments in a row that agree; 0 where
 * there are none. */
double lastingReferenceTicks() {
    constexpr int tries = 20;
    double before = referenceTicks(0);
    for (int i = 0; i < tries; ++i) {
        const double now = referenceTicks(0);
        const bxSlice both{0, before, now};
        if (now > 0 && before > 0 && !bxSliceSeries::moved(both))
            return (before + now) / 2;
        before = now;
    }
    return 0;
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
    slice.throughput = throughput((slice.referenceBefore + slice.referenceAfter) / 2);
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
    double measureFirst();
    void measureSlices(int calls);
    void measureLongCalls();
    /** Adds the slice and lets the core learn from it. */
    void add(bxSlice& slice);
    /** Makes `count` calls; clocks per call. */
    double measure(int count);
    /** Takes the time in which others ran, since it was last asked, off what was spent; its share. */
    double takeOffOthers();
    /** Takes off all that was spent since `then`, if it was spent waiting. */
    void takeOffWaiting(double then);
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
    bxOwnTime m_ownTime;
    double m_least = std::numeric_limits<double>::max(); /**< counts of one call */
    double m_called = 0;                                 /**< counts of all calls, at least */
    double m_others = 0;                                 /**< counts while others ran instead */
    double m_waited = 0;                                 /**< counts spent for others to leave the core */
    double m_call = 0;                                   /**< counts of one call */
    unsigned long long m_lastLap = m_start;              /**< when it was last asked whether others ran */
    double m_firstAway = 0; /**< share of the first measurement in which they did */
    bool m_badStatus = false;
};

double PreciseTiming::spent() const {
    return std::max(m_called,
                    static_cast<double>(bxCpuTicker::toClocks(zor_get_cpu_counter() - m_start)) - m_others);
}

double PreciseTiming::measure(int count) {
    bxSample sample;
    traced("runTimFunc", [&] { sample = m_sampler(count); });
    m_badStatus = sample.badStatus;
    m_figures.add(sample, count);
    m_least = std::min(m_least, m_figures.funcClocks);
    m_called += m_least * (count + 1.0); // each measurement begins with an untimed call
    return m_figures.funcClocks;
}

bool PreciseTiming::waits() const {
    return m_series.endsShared(m_core.alone()) &&
           m_waited + m_others < m_settings.patience * m_core.patience();
}

double PreciseTiming::takeOffOthers() {
    const unsigned long long now = zor_get_cpu_counter();
    const double away = m_ownTime.lap();
    m_others += away * static_cast<double>(bxCpuTicker::toClocks(now - m_lastLap));
    m_lastLap = now;
    return away;
}

void PreciseTiming::takeOffWaiting(double then) {
    takeOffOthers();
    if (waits())
        m_waited += spent() - then;
}

void PreciseTiming::add(bxSlice& slice) {
    slice.throughput = throughput((slice.referenceBefore + slice.referenceAfter) / 2);
    m_series.add(slice);
    m_core.saw(slice);
}

/**
 * Clocks of one call, to begin with. Usually another call, which is not timed, goes before it. When the timed
 * one seems to have taken nearly all the time, something else may have struck it, and a short call would pass
 * for a long one: once more then, until two agree.
 */
double PreciseTiming::measureFirst() {
    constexpr int tries = 5;
    constexpr double struck = 0.75;
    double before = 0;
    for (int i = 1;; ++i) {
        const unsigned long long start = zor_get_cpu_counter();
        const double perCall = measure(1);
        const auto all = static_cast<double>(bxCpuTicker::toClocks(zor_get_cpu_counter() - start));
        m_firstAway = takeOffOthers();
        m_call = perCall * (1 - m_firstAway);
        const bool mayBeStruck = perCall > longCall && perCall > struck * all && perCall <= all;
        if (!mayBeStruck || (perCall > before / 2 && perCall < 2 * before) || i == tries)
            return perCall;
        before = perCall;
    }
}

/** Calls n of a slice: as many as take some time, but no more than leave the control status clean. */
int PreciseTiming::callsOfSlice() {
    int calls = 1;
    double perCall = measureFirst();
    for (;;) {
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
        // More calls do not take longer each; where they seem to, something else took the time.
        constexpr int tries = 5;
        const double fewer = perCall;
        for (int i = 0; i < tries && (i == 0 || perCall > 2 * fewer); ++i)
            perCall = measure(calls);
        m_call = perCall;
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
        takeOffWaiting(before);
        if (m_series.count() < next)
            continue;
        const bxPreciseFigure figure = m_series.figure(m_settings.accuracy, m_core.alone());
        if (figure.reached && figure.settled)
            return;
        next = bxSliceSeries::nextLook(m_series.count());
    } while (timeFor((3.0 * calls + 2) * m_call + referenceCost) ||
             (m_series.allDisturbed() && m_series.count() < bxSliceSeries::fewest));
}

void PreciseTiming::measureLongCalls() {
    m_figures.loops = 1;
    bxSlice slice;
    slice.perCall = m_figures.funcClocks;
    slice.away = m_firstAway;
    slice.referenceBefore = slice.referenceAfter = lastingReferenceTicks(); // none before the first call
    add(slice);
    takeOffOthers();
    while (timeFor(2 * m_call + referenceCost)) {
        const double before = spent();
        slice.perCall = measure(1);
        slice.away = takeOffOthers();
        if (bxIsFailure(m_figures.result))
            return;
        slice.referenceBefore = slice.referenceAfter;
        slice.referenceAfter = referenceTicks(0);
        if (bxSliceSeries::moved(slice)) // the clock of the core, or a moment that was disturbed
            slice.referenceAfter = lastingReferenceTicks();
        add(slice);
        takeOffWaiting(before);
    }
}

void PreciseTiming::judge() {
    const int core = m_figures.preciseFigure.core;
    bxPreciseFigure figure = m_series.figure(m_settings.accuracy, m_core.alone());
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
