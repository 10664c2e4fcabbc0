#include "timing/bxiterative.h"

#include "output/bxostream.h"
#include "system/bxclock.h"
#include "timing/bxfiguretext.h"
#include "timing/bxfpwatch.h"
#include "timing/bxstatistics.h"
#include "timing/bxtimingtext.h"

#include <algorithm>
#include <climits>
#include <vector>

namespace {

using bxTimingText::traced;
using bxTimingText::write;

/** A number of calls times a factor, as far as it can be counted. */
int multiplied(int calls, int factor) {
    return static_cast<int>(
        std::min(static_cast<long long>(calls) * factor, static_cast<long long>(INT_MAX)));
}

/** The search for a number of calls at which two figures agree; what it says of itself goes to INFO. */
class Search {
  public:
    Search(const bxTimingSettings& settings, const bxLoopSampler& sampler)
        : m_settings(settings), m_sampler(sampler) {}

    bxTimingFigures run(bxIterativeLimits limits);

  private:
    /** \name Steps; those returning bool are false when the timing has to be given up */
    /** @{ */
    bool priorMeasurement(bxIterativeLimits& limits);
    bxResult startIterations(int start, long long minClocks);
    bool iterate(int max);
    bxResult continueIterations(int n, int max);
    bxResult repeatTiming(int n, int count);
    void avoidBadControlStatus();
    /** @} */
    /** Makes `loops` calls. */
    void measure();
    bool badStatus() const { return m_settings.ibsMode && m_badStatus; }
    static void printBadStatus();

    const bxTimingSettings& m_settings;
    const bxLoopSampler& m_sampler;
    bxTimingFigures m_figures;
    bool m_badStatus = false;
};

void Search::measure() {
    traced("runTimFunc", [this] {
        const bxSample sample = m_sampler(m_figures.loops);
        m_badStatus = sample.badStatus;
        m_figures.add(sample, m_figures.loops);
    });
}

bxTimingFigures Search::run(bxIterativeLimits limits) {
    write(INFO, "    Auto method: start\n", "        minClocks  = ", bxClocksText(limits.minClocks), "\n");
    if (!priorMeasurement(limits) || !iterate(limits.most)) {
        write(INFO, "    Auto method: exit\n");
        return m_figures;
    }
    m_figures.found = true;
    if (m_figures.actualAccuracy > m_settings.accuracy && m_figures.result <= OK)
        m_figures.result = ACCURWRN;
    write(INFO, "    Auto method: stop\n");
    return m_figures;
}

bool Search::priorMeasurement(bxIterativeLimits& limits) {
    for (;;) {
        write(INFO, "    Prior Measurement: \n", "        numLoops   = ", limits.start, "\n");
        const bxResult r = startIterations(limits.start, limits.minClocks);
        write(INFO, "        numClocks  = ", m_figures.clocks, "\n",
              "        funcClocks = ", m_figures.funcClocks, "\n", "        result     = ", bxResultString(r),
              "\n");
        if (r < ACCURFAIL)
            return true;
        if (r > ACCURFAIL || limits.start > bxCpuTicker::getClockFactor()) {
            m_figures.result = r;
            return false;
        }
        limits.start = multiplied(limits.start, 10);
        limits.most = multiplied(limits.most, 10);
    }
}

bxResult Search::startIterations(int start, long long minClocks) {
    m_figures.loops = start;
    measure();
    if (bxIsFailure(m_figures.result))
        return m_figures.result;
    return start * m_figures.funcClocks >= static_cast<double>(minClocks) ? OK : ACCURFAIL;
}

bool Search::iterate(int max) {
    constexpr double certain = 0.01; // two figures this close need no further measurement
    while (m_figures.loops < max) {
        const int n = multiplied(m_figures.loops, 4);
        write(INFO, "    Iteration Measurement: \n", "        startLoops = ", n, "\n",
              "        maxLoops   = ", max, "\n");
        const bxResult r = continueIterations(n, max);
        write(INFO, "        stopLoops  = ", m_figures.loops, "\n", "        stopClocks = ", m_figures.clocks,
              "\n", "        accuracy   = ", bxAccuracyText(m_figures.actualAccuracy), "\n",
              "        funcClocks = ", m_figures.funcClocks, "\n", "        result     = ", bxResultString(r),
              "\n");
        if (r == ACCURFAIL) {
            m_figures.raise(ACCURFAIL);
            return false;
        }
        if (r == BADSTSWRN) {
            avoidBadControlStatus();
            return true;
        }
        if (m_figures.actualAccuracy <= certain)
            return true;
        write(INFO, "    Simple Measurements: \n");
        if (repeatTiming(m_figures.loops, 3) != ACCURWRN)
            return true;
    }
    return true;
}

bxResult Search::continueIterations(int n, int max) {
    double previous = m_figures.funcClocks;
    for (m_figures.loops = std::min(n, max);; m_figures.loops *= 2) {
        measure();
        if (m_figures.funcClocks <= 0)
            return ACCURFAIL;
        m_figures.actualAccuracy = bxDifference(m_figures.funcClocks, previous);
        if (badStatus()) {
            m_figures.loops >>= 1;
            m_figures.funcClocks = previous;
            return BADSTSWRN;
        }
        if (m_figures.actualAccuracy <= m_settings.accuracy)
            return OK;
        if (m_figures.loops > max / 2)
            return ACCURWRN;
        previous = m_figures.funcClocks;
    }
}

bxResult Search::repeatTiming(int n, int count) {
    std::vector<double> perCall;
    if (m_figures.loops == n)
        perCall.push_back(m_figures.funcClocks);
    m_figures.loops = n;
    while (static_cast<int>(perCall.size()) < count) {
        measure();
        write(INFO, "        numLoops   = ", n, "\n", "        numClocks  = ", m_figures.clocks, "\n",
              "        funcClocks = ", m_figures.funcClocks, "\n");
        perCall.push_back(m_figures.funcClocks);
    }
    m_figures.actualAccuracy = bxLargestDeviation(perCall);
    m_figures.funcClocks = *std::min_element(perCall.begin(), perCall.end());
    const bxResult r = badStatus()                                      ? BADSTSWRN
                       : m_figures.actualAccuracy > m_settings.accuracy ? ACCURWRN
                                                                        : OK;
    write(INFO, "        accuracy   = ", bxAccuracyText(m_figures.actualAccuracy), "\n",
          "        bestClocks = ", m_figures.funcClocks, "\n", "        result     = ", bxResultString(r),
          "\n");
    if (badStatus())
        printBadStatus();
    return r;
}

void Search::avoidBadControlStatus() {
    const double limit = 2 * m_settings.accuracy;
    if (badStatus())
        printBadStatus();
    write(WARN, "-- Attempting to avoid bad control status\n");
    write(INFO, "    Reduce loops to avoid bad ctrl status.\n", "    Simple Measurements: \n");
    bxClearCtrlStatus();
    m_badStatus = false;
    const bool repeats = repeatTiming(m_figures.loops, 6) == BADSTSWRN;
    if (!repeats && m_figures.actualAccuracy <= limit) {
        write(WARN, "-- Attempt is successful\n");
        return;
    }
    write(INFO, "    Cannot avoid bad ctrl status\n");
    write(WARN,
          "-- Attempt fails: ", repeats ? "Bad control status repeats.\n" : "Accuracy is unsatisfactory.\n");
}

void Search::printBadStatus() {
    bool bad87, badSSX;
    bxBadCtrlStatus(bad87, badSSX);
    bxPrintCtrlStatus(bad87, badSSX);
}

} // namespace

bxTimingFigures bxTimeIteratively(const bxTimingSettings& settings, const bxIterativeLimits& limits,
                                  const bxLoopSampler& sampler) {
    return Search(settings, sampler).run(limits);
}
