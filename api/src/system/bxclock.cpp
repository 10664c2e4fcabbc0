#include "system/bxclock.h"

#include "system/bxostimer.h"
#include "system/bxpriority.h"
#include "system/bxprobes.h"

#include <cstdlib>
#include <ctime>

namespace {

/** Nominal frequencies of processors in MHz, ascending. */
constexpr int knownCpuMHz[] = {60,   66,   75,   90,   100,  120,  133,  150,  166,  185,  200,  220,  240,
                               266,  300,  333,  400,  450,  500,  530,  550,  600,  800,  1000, 1400, 1700,
                               1800, 1900, 2000, 2200, 2260, 2400, 2500, 2530, 2600, 2660, 2800, 3060};

/** A measured frequency this close to a nominal one, relative, is taken for it. */
constexpr double snapTolerance = 0.03;

/** Real time of the estimate; the wall clock counts whole seconds, so one to two seconds pass. */
constexpr double waitSeconds = 2.0;

} // namespace

int bxCpuTicker::m_freqMHz = 0;

int bxCpuTicker::getFreq() {
    if (m_freqMHz == 0)
        m_freqMHz = estimateCpuFreqMHz();
    return m_freqMHz;
}

int bxSnapCpuMHz(int measuredMHz) {
    int nearest = measuredMHz;
    int least = 1000; // a nominal frequency farther away is none
    for (int known : knownCpuMHz) {
        const int difference = std::abs(known - measuredMHz);
        if (difference < least) {
            least = difference;
            nearest = known;
        }
    }
    return least < snapTolerance * measuredMHz ? nearest : measuredMHz;
}

int estimateCpuFreqMHz() {
    if (!zor_has_rdtsc())
        return 0;
    OSTimer timer;
    bxSetPriority(1);
    timer.start();
    const unsigned long long firstClock = zor_get_cpu_counter();
    const std::time_t firstTime = std::time(nullptr);
    while (std::difftime(std::time(nullptr), firstTime) < waitSeconds) {}
    const unsigned long long lastClock = zor_get_cpu_counter();
    timer.stop();
    bxResetPriority();
    const float clocks =
        static_cast<float>((lastClock - firstClock) * static_cast<unsigned>(bxCpuTicker::getClockFactor()));
    return bxSnapCpuMHz(static_cast<int>(clocks / timer.getUSec() + 0.5F));
}
