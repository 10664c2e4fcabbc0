/** \file
 * One measurement: the calls between two readings of the counter, and what is done around them.
 */
#ifndef BXSAMPLER_H
#define BXSAMPLER_H

#include "timing/bxcallscope.h"
#include "timing/bxtiming.h"

#include <functional>

/** Measures the functions of a test. */
class bxCallSampler {
  public:
    /**
     * \param functions  `funcCall` is replaced where it turns out not to preserve its caller's registers
     * \param priority  of the measurements, as `bxSetPriority` takes it
     * \param check  null where no library is bound
     */
    bxCallSampler(const bxTimingSettings& settings, bxTimingFunctions& functions, int priority,
                  bxStatusCheck check);

    bxSample loop(int count);
    bxSample stat(int& calls, long long clocks);

    /** What makes the calls and gives their clocks. */
    using Calls = std::function<bxResult(double& clocks)>;
    /** Called between measurements, for who shows that the run is alive; empty for nobody. */
    static inline std::function<void()> m_between;

    /** Has a loop of calls made in the measuring state; once more if they took no clocks at all. */
    bxSample loopOf(const Calls& calls, bxCallScope::Extent extent = bxCallScope::measured);

  private:
    bxSample once(const Calls& calls, bxCallScope::Extent extent = bxCallScope::measured);
    bxResult loopOfCalls(int count, double& clocks, bool restoreData);
    bxResult timedCalls(int& calls, long long clocksToReach, double& clocks, bool restoreData);
    int untimedCall();
    bxResult graded(int status) const { return m_check ? m_check(status) : OK; }

    const bxTimingSettings& m_settings;
    bxTimingFunctions& m_functions;
    int m_priority;
    bxStatusCheck m_check;
};

#endif
