#include "timing/bxsinglecalls.h"

#include "data/bxalloc.h"
#include "system/bxprobes.h"
#include "timing/bxcallscope.h"
#include "timing/bxcores.h"
#include "timing/bxonecall.h"
#include "timing/bxsampler.h"
#include "timing/bxstatistics.h"

#include <algorithm>
#include <sys/resource.h>

namespace {

/** Counts of a stretch of calls, and of the idle loops behind it (some 0.5 ms). */
constexpr long long stretch = 1'000'000;
/** Counts by which a sample of the idle loop has to be longer, to be taken for interrupted: less than the
 * shortest way into the system and back. */
constexpr double shortestInterrupt = 1000;

int s_idleTurns; /**< of the idle loop: one clock each */

int idleLoop() {
    for (int turns = s_idleTurns; turns > 0; --turns)
        asm volatile("");
    return 0;
}

long involuntarySwitches() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nivcsw;
}

/** One series. */
class Series {
  public:
    Series(const bxPreparedCall& function, int count, int priority)
        : m_function(function), m_count(static_cast<std::size_t>(count)), m_priority(priority) {
        m_calls.reserve(m_count);
    }

    bxCallSpread run(int& status);

  private:
    /** False at the end of the series. \param spent  counts of the calls */
    bool callForAStretch(long long& spent);
    void idleFor(long long whole);
    std::vector<double> idleExcess();

    const bxPreparedCall& m_function;
    const std::size_t m_count;
    const int m_priority;
    const bool m_ordered = zor_is_wni_extension() != 0;
    std::vector<bxTimedCall> m_calls;
    std::vector<double> m_idle; /**< counts of loops without a known interruption */
    double m_readCost = 0;
    int m_status = 0;
};

bool Series::callForAStretch(long long& spent) {
    const auto begin = static_cast<std::ptrdiff_t>(m_calls.size());
    const long switches = involuntarySwitches();
    for (spent = 0; spent < stretch && m_calls.size() < m_count;) {
        m_function.prepare();
        const bxOneCall one = bxCallOnce(m_function.call, m_ordered);
        m_calls.push_back({std::max(static_cast<double>(one.ticks) - m_readCost, 0.0), one.interrupted});
        spent += one.ticks;
        if (one.status != 0)
            m_status = one.status;
        if (one.status < 0)
            return false;
    }
    bxMarkSwitchedCalls(m_calls.begin() + begin, m_calls.end(), involuntarySwitches() - switches);
    return m_calls.size() < m_count;
}

void Series::idleFor(long long whole) {
    if (s_idleTurns == 0) {
        std::vector<double> clocks;
        for (const bxTimedCall& call : m_calls)
            clocks.push_back(call.clocks);
        s_idleTurns = static_cast<int>(std::clamp(bxMedian(std::move(clocks)), 1.0, 1e9));
    }
    for (long long spent = 0; spent < whole;) {
        const bxOneCall one = bxCallOnce(idleLoop, m_ordered);
        spent += one.ticks;
        if (!one.interrupted)
            m_idle.push_back(static_cast<double>(one.ticks));
    }
}

std::vector<double> Series::idleExcess() {
    const double usual = bxMedian(m_idle);
    std::vector<double> excess;
    for (const double ticks : m_idle)
        if (ticks - usual > std::max(shortestInterrupt, usual / 20))
            excess.push_back(ticks - usual);
    return excess;
}

bxCallSpread Series::run(int& status) {
    const bxPinnedCore pinned;
    {
        const bxCallScope scope(bxCallScope::measured, m_priority);
        m_function.prepare();
        m_status = m_function.call();
        std::vector<double> reads;
        for (int i = 0; i < 101; ++i)
            reads.push_back(static_cast<double>(bxCallOnce(bxCallNothing, m_ordered).ticks));
        m_readCost = bxMedian(std::move(reads));
    }
    s_idleTurns = 0;
    for (bool more = m_status >= 0; more;) {
        {
            const bxCallScope scope(bxCallScope::measured, m_priority);
            long long spent = 0;
            more = callForAStretch(spent);
            idleFor(spent);
        }
        if (bxCallSampler::m_between)
            bxCallSampler::m_between();
    }
    status = m_status;
    if (status >= 0)
        return bxSpreadOfCalls(std::move(m_calls), idleExcess());
    bxCallSpread failed;
    failed.problem = "status";
    return failed;
}

} // namespace

void bxPreparedCall::prepare() const {
    if (init)
        init();
    if (restoreData)
        bxResetAllVectors();
}

bxCallSpread bxTimeSingleCalls(const bxPreparedCall& function, int count, int priority, int& status) {
    return Series(function, count, priority).run(status);
}
