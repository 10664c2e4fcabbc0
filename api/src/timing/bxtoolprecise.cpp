/** \file
 * The precise mode of the engine. What the counter reads and the entry of the loop cost is the same for n
 * calls and for 2n, so their difference is that of n calls alone. Each such pair stands between two
 * differenced chains of additions of one core clock each, so that the figure is in core clocks even where the
 * core's clock is not the counter's, or drifts.
 */
#include "output/bxtable.h"
#include "timing/bxfpwatch.h"
#include "timing/bxtool.h"
#include "timing/bxtooltext.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>

using bxToolText::traced;
using bxToolText::write;

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

/** For the comment column: more digits than the figure's own cell, since the mode is used for small
 * differences. */
bxString describe(const bxPreciseFigure& figure, int loops) {
    char text[160];
    std::snprintf(text, sizeof text,
                  "%s%d slices=%d dropped=%d clocks=%.6g 95%%=%.6g..%.6g core/counter=%.5f %s%.3f",
                  bxTable::loops, loops, figure.slices, figure.dropped, figure.clocks, figure.low,
                  figure.high, figure.coreClocksPerTick, bxTable::throughput, figure.throughput);
    return text;
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

} // namespace

bxOwnCore bxTool::m_ownCore;

void bxTool::preciseTiming() {
    write(INFO, "    Precise mode: start\n");
    if (patience > 0 && m_ownCore.throughput() == 0)
        meet(m_ownCore);
    const int calls = callsOfSlice();
    if (bxIsFailure(result))
        return;
    const bxSliceSeries series = measureSlices(calls);
    if (bxIsFailure(result))
        return;
    preciseFigure = series.figure(accuracy, m_ownCore.throughput());
    m_ownCore.seriesEnded(preciseFigure);
    funcClocks = preciseFigure.clocks;
    if (!(funcClocks > 0)) {
        updateResult(ACCURFAIL);
        return;
    }
    actualAccuracy = (preciseFigure.high - preciseFigure.low) / 2 / funcClocks;
    if (preciseFigure.lost > 0)
        actualAccuracy = std::max({actualAccuracy, preciseFigure.lost, bxOwnCore::costOfCompany});
    info = describe(preciseFigure, loops);
    if (preciseFigure.lost > 0)
        info << " " << bxTable::shared << getAccuracyStr(preciseFigure.lost);
    if (!preciseFigure.reached) {
        info << " " << bxTable::accuracy << getAccuracyStr(actualAccuracy);
        if (result <= OK)
            result = ACCURWRN;
    }
    write(INFO, "        accuracy   = ", getAccuracyStr(actualAccuracy), "\n",
          "        funcClocks = ", funcClocks, "\n", "        result     = ", bxResultString(result), "\n",
          "    Precise mode: stop\n");
}

bool bxTool::statusIsBadAndAvoidable() const {
    return avoidBadStatus && bxBadCtrlStatus();
}

/** Calls n of a slice: as many as take some time, but no more than leave the control status clean. */
int bxTool::callsOfSlice() {
    avoidBadStatus = ibsMode;
    int calls = 1;
    for (;;) {
        double perCall = 0;
        traced("runTimFunc", [&] { runTimFunc(calls, &perCall); });
        if (bxIsFailure(result))
            return calls;
        if (statusIsBadAndAvoidable() && calls > 1) {
            bxClearCtrlStatus();
            m_flags.keep();
            return std::max(calls / 4, 1); // 2n calls and the stretch of the slices stay below what was bad
        }
        const double wanted = perCall > 0 ? sliceTicks / perCall : mostCalls;
        if (wanted <= 2.0 * calls || calls == mostCalls)
            return static_cast<int>(std::clamp(wanted + 0.5, 1.0, static_cast<double>(mostCalls)));
        // Few calls are mostly their fixed cost: not more than ten times as many at once.
        calls = static_cast<int>(std::min({wanted, 10.0 * calls, static_cast<double>(mostCalls)}));
    }
}

bxSliceSeries bxTool::measureSlices(int calls) {
    bxSliceSeries series;
    bxSlice slice;
    double ticks = 0, waited = 0;
    const double longestWait = patience * m_ownCore.patience();
    int next = bxSliceSeries::fewest;
    slice.referenceAfter = referenceTicks(0);
    for (;;) {
        const int i = series.count();
        loops = stretched(calls, i);
        // The order changes from slice to slice, so that a drift makes the difference too large as often as
        // too small.
        double once = 0, twice = 0;
        traced("runTimFunc", [&] {
            runTimFunc(i % 2 ? 2 * loops : loops, i % 2 ? &twice : &once);
            runTimFunc(i % 2 ? loops : 2 * loops, i % 2 ? &once : &twice);
        });
        if (bxIsFailure(result))
            return series;
        slice.perCall = 2 * twice - once;
        slice.disagreement =
            loops * std::abs(twice - once) / std::max(sliceTicks, loops * std::abs(slice.perCall));
        slice.referenceBefore = slice.referenceAfter;
        slice.referenceAfter = referenceTicks(i + 1);
        slice.throughput = throughput(slice.referenceAfter);
        series.add(slice);
        m_ownCore.saw(slice);
        const double alone = m_ownCore.throughput();
        (waited < longestWait && series.endsShared(alone) ? waited : ticks) +=
            loops * (once + 2 * twice) + 3 * sliceTicks;
        const bool spent = ticks >= mostTicks && series.mayEnd(alone);
        if (series.count() < next && !spent)
            continue;
        if (spent || series.figure(accuracy, alone).reached)
            return series;
        next = bxSliceSeries::nextLook(series.count());
    }
}
