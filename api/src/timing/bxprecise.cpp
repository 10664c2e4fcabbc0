#include "timing/bxprecise.h"

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
/** A combination whose slices took this many counts (10 ms at 2 GHz) ends, sure enough or not, once it may.
 */
constexpr double mostTicks = 20e6;

/** Blocks of additions that take about as long as the calls of a slice should. */
constexpr int referenceBlocks = 768;

/** Steps by which the slices' lengths differ, so that the counter's steps do not fall on the same place in
 * each. */
constexpr int lengths = 16;

/** The length of a slice: from `base` to nearly one and a half times as much. */
int stretched(int base, int slice) {
    return base + static_cast<int>(static_cast<long long>(base) * (slice * 7 % lengths) / (2 * lengths));
}

/** Counts of one addition. */
double referenceTicks(int slice) {
    const int blocks = stretched(referenceBlocks, slice);
    const long long once = bxReferenceTicks(blocks);
    const long long twice = bxReferenceTicks(2 * blocks);
    return static_cast<double>(twice - once) / blocks / bxReferenceBlock;
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

/** Looks at the core now and then for a third of a second: others that use it during the first combination
 * may be gone in between. */
void meet(bxOwnCore& core) {
    for (int look = 0; look < 32; ++look) {
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

    bxTimingFigures run();

  private:
    int callsOfSlice();
    bxSliceSeries measureSlices(int calls);
    /** Makes `count` calls; clocks per call. */
    double measure(int count);
    bool statusIsBadAndAvoidable() const { return m_settings.ibsMode && m_badStatus; }

    const bxTimingSettings& m_settings;
    const bxLoopSampler& m_sampler;
    bxOwnCore& m_core;
    bxTimingFigures m_figures;
    bool m_badStatus = false;
};

double PreciseTiming::measure(int count) {
    bxSample sample;
    traced("runTimFunc", [&] { sample = m_sampler(count); });
    m_badStatus = sample.badStatus;
    m_figures.add(sample, count);
    return m_figures.funcClocks;
}

bxTimingFigures PreciseTiming::run() {
    write(INFO, "    Precise mode: start\n");
    if (m_settings.patience > 0 && m_core.throughput() == 0)
        meet(m_core);
    const int calls = callsOfSlice();
    if (bxIsFailure(m_figures.result))
        return m_figures;
    const bxSliceSeries series = measureSlices(calls);
    if (bxIsFailure(m_figures.result))
        return m_figures;
    const bxPreciseFigure figure = series.figure(m_settings.accuracy, m_core.throughput());
    m_figures.preciseFigure = figure;
    m_core.seriesEnded(figure);
    m_figures.funcClocks = figure.clocks;
    if (!(figure.clocks > 0)) {
        m_figures.raise(ACCURFAIL);
        return m_figures;
    }
    m_figures.found = true;
    m_figures.actualAccuracy = (figure.high - figure.low) / 2 / figure.clocks;
    if (figure.lost > 0)
        m_figures.actualAccuracy =
            std::max({m_figures.actualAccuracy, figure.lost, bxOwnCore::costOfCompany});
    if (!figure.reached && m_figures.result <= OK)
        m_figures.result = ACCURWRN;
    write(INFO, "        accuracy   = ", bxAccuracyText(m_figures.actualAccuracy), "\n",
          "        funcClocks = ", m_figures.funcClocks, "\n",
          "        result     = ", bxResultString(m_figures.result), "\n", "    Precise mode: stop\n");
    return m_figures;
}

/** Calls n of a slice: as many as take some time, but no more than leave the control status clean. */
int PreciseTiming::callsOfSlice() {
    int calls = 1;
    for (;;) {
        const double perCall = measure(calls);
        if (bxIsFailure(m_figures.result))
            return calls;
        if (statusIsBadAndAvoidable() && calls > 1) {
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

bxSliceSeries PreciseTiming::measureSlices(int calls) {
    bxSliceSeries series;
    bxSlice slice;
    double ticks = 0, waited = 0;
    const double longestWait = m_settings.patience * m_core.patience();
    int next = bxSliceSeries::fewest;
    slice.referenceAfter = referenceTicks(0);
    for (;;) {
        const int i = series.count();
        const int n = m_figures.loops = stretched(calls, i);
        // The order changes from slice to slice, so that a drift makes the difference too large as often as
        // too small.
        const double first = measure(i % 2 ? 2 * n : n), second = measure(i % 2 ? n : 2 * n);
        const double once = i % 2 ? second : first, twice = i % 2 ? first : second;
        if (bxIsFailure(m_figures.result))
            return series;
        slice.perCall = 2 * twice - once;
        slice.disagreement = n * std::abs(twice - once) / std::max(sliceTicks, n * std::abs(slice.perCall));
        slice.referenceBefore = slice.referenceAfter;
        slice.referenceAfter = referenceTicks(i + 1);
        slice.throughput = throughput(slice.referenceAfter);
        series.add(slice);
        m_core.saw(slice);
        const double alone = m_core.throughput();
        (waited < longestWait && series.endsShared(alone) ? waited : ticks) +=
            n * (once + 2 * twice) + 3 * sliceTicks;
        const bool spent = ticks >= mostTicks && series.mayEnd(alone);
        if (series.count() < next && !spent)
            continue;
        if (spent || series.figure(m_settings.accuracy, alone).reached)
            return series;
        next = bxSliceSeries::nextLook(series.count());
    }
}

} // namespace

bxTimingFigures bxTimePrecisely(const bxTimingSettings& settings, const bxLoopSampler& sampler,
                                bxOwnCore& core) {
    return PreciseTiming(settings, sampler, core).run();
}
