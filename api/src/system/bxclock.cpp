#include "system/bxclock.h"

#include "output/bxostream.h"
#include "system/bxclockrate.h"
#include "system/bxostimer.h"
#include "system/bxpriority.h"
#include "system/bxprobes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

/** Nominal frequencies of processors in MHz, ascending. */
constexpr int knownCpuMHz[] = {60,   66,   75,   90,   100,  120,  133,  150,  166,  185,  200,  220,  240,
                               266,  300,  333,  400,  450,  500,  530,  550,  600,  800,  1000, 1400, 1700,
                               1800, 1900, 2000, 2200, 2260, 2400, 2500, 2530, 2600, 2660, 2800, 3060};

/** A measured frequency this close to a nominal one, relative, is taken for it. */
constexpr double snapTolerance = 0.03;

/** A nominal frequency this close to the measured one, relative, is shown beside it. */
constexpr double nominalTolerance = 0.01;

bxClockRate& counterRate() {
    static bxClockRate rate = bxMeasureClockRate();
    return rate;
}

/** What the estimate gave; another `m_freqMHz` comes from outside. */
int s_estimatedMHz = 0;

} // namespace

int bxCpuTicker::m_freqMHz = 0;

int bxCpuTicker::getFreq() {
    constexpr int unknown = -1;
    if (m_freqMHz == 0) {
        const int estimated = estimateCpuFreqMHz();
        m_freqMHz = s_estimatedMHz = estimated > 0 ? estimated : unknown;
    }
    return std::max(m_freqMHz, 0);
}

double bxCpuTicker::getMHz() {
    const int wholeMHz = getFreq();
    return wholeMHz == 0 || wholeMHz != s_estimatedMHz ? wholeMHz : counterRate().mhz() * getClockFactor();
}

bxClockRate bxMeasureClockRate() {
    OSTimer device;
    if (!g_rtc.isOpen())
        return bxClockRate();
    bxSetPriority(1); // who reads the device late sees a wrong time
    device.start();
    device.start(); // the first reading counts from the opening on
    const long long start = bxReadClocks().nanoseconds;
    bxClockRate rate;
    device.stop();
    const long long stop = bxReadClocks().nanoseconds;
    bxResetPriority();
    if (g_rtc.isOpen() && !device.agreesWith(1e-9 * static_cast<double>(stop - start)))
        g_rtc.drop("it disagrees with the monotonic clock by more than 1 %");
    return rate;
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

int bxNominalCpuMHz(int measuredMHz) {
    for (int known : knownCpuMHz)
        if (known == bxSnapCpuMHz(measuredMHz) &&
            std::abs(known - measuredMHz) <= nominalTolerance * measuredMHz)
            return known;
    return 0;
}

int estimateCpuFreqMHz() {
    if (!zor_has_rdtsc())
        return 0;
    const int mhz = static_cast<int>(std::lround(counterRate().mhz() * bxCpuTicker::getClockFactor()));
    if (*g_rtc.problem())
        g_ostrm << WARN << "-- The real-time clock device is not used: " << g_rtc.problem() << "\n"
                << endMessage;
    return mhz;
}
