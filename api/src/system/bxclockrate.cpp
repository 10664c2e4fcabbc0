#include "system/bxclockrate.h"

#include "system/bxclock.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <utility>
#include <vector>

namespace {

long long rawNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_RAW, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

/** Counts in a microsecond between two readings; 0 where the clock or the counter did not go on. */
double rateBetween(const bxClockReading& from, const bxClockReading& to) {
    const long long ticks = to.ticks - from.ticks;
    const long long nanoseconds = to.nanoseconds - from.nanoseconds;
    if (ticks <= 0 || nanoseconds <= 0)
        return 0;
    return 1000.0 * static_cast<double>(ticks) / static_cast<double>(nanoseconds);
}

bool agree(double least, double most) {
    return least > 0 && most - least <= bxClockRate::agreement * least;
}

bool lastWindowsAgree(const std::vector<bxClockReading>& readings) {
    if (readings.size() <= bxClockRate::windows)
        return false;
    double least = std::numeric_limits<double>::max(), most = 0;
    for (auto to = readings.end() - bxClockRate::windows; to != readings.end(); ++to) {
        const double rate = rateBetween(*(to - 1), *to);
        least = std::min(least, rate);
        most = std::max(most, rate);
    }
    return agree(least, most);
}

/** The first reading a window after `from`; an earlier one where the clock stands still. */
bxClockReading readWindowLater(const bxClockRate::Source& source, const bxClockReading& from) {
    constexpr int mostReadings = 1'000'000; // each takes some hundred nanoseconds at least
    bxClockReading now = source();
    for (int i = 0; i < mostReadings && now.nanoseconds - from.nanoseconds < bxClockRate::window; ++i)
        now = source();
    return now;
}

} // namespace

bxClockReading bxReadClocks() {
    constexpr int brackets = 8;
    bxClockReading best;
    long long narrowest = std::numeric_limits<long long>::max();
    for (int i = 0; i < brackets; ++i) {
        const auto before = static_cast<long long>(zor_get_cpu_counter());
        const long long nanoseconds = rawNanoseconds();
        const auto after = static_cast<long long>(zor_get_cpu_counter());
        if (after - before < narrowest) {
            narrowest = after - before;
            best = {.ticks = before + narrowest / 2, .nanoseconds = nanoseconds};
        }
    }
    return best;
}

bxClockRate::bxClockRate(Source source) : m_source(std::move(source)), m_mhz(measure()) {}

double bxClockRate::measure() {
    std::vector<bxClockReading> readings{m_source()};
    for (int i = 0; i < mostWindows; ++i) {
        readings.push_back(readWindowLater(m_source, readings.back()));
        if (lastWindowsAgree(readings)) {
            m_first = *(readings.end() - 1 - windows);
            m_last = readings.back();
            return rateBetween(m_first, m_last);
        }
    }
    return 0;
}

double bxClockRate::mhz() {
    if (m_mhz <= 0)
        return 0;
    const bxClockReading now = m_source();
    if (now.nanoseconds - m_last.nanoseconds < window)
        return m_mhz;
    const double rate = rateBetween(m_last, now);
    if (!agree(std::min(rate, m_mhz), std::max(rate, m_mhz)))
        return m_mhz = measure();
    m_last = now;
    return m_mhz = rateBetween(m_first, m_last);
}
