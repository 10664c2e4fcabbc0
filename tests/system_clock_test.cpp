#include "system/bxclock.h"
#include "system/bxclockrate.h"
#include "system/bxostimer.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

TEST(Clock, MeasuredFrequenciesSnapToNominalOnes) {
    const std::pair<int, int> cases[] = {{1996, 2000}, {1250, 1250}, {2230, 2200}, {2231, 2260},
                                         {60, 60},     {1, 1},       {1030, 1000}, {1031, 1031},
                                         {3152, 3060}, {3155, 3155}, {5000, 5000}};
    for (const auto& [measured, reported] : cases)
        EXPECT_EQ(bxSnapCpuMHz(measured), reported) << measured;
    std::vector<int> nominal;
    for (int measured = 50; measured <= 3060; ++measured)
        if (bxSnapCpuMHz(measured - 1) == measured && bxSnapCpuMHz(measured + 1) == measured)
            nominal.push_back(measured);
    EXPECT_EQ(nominal,
              (std::vector{60,   66,   75,   90,   100,  120,  133,  150,  166,  185,  200,  220,  240,
                           266,  300,  333,  400,  450,  500,  530,  550,  600,  800,  1000, 1400, 1700,
                           1800, 1900, 2000, 2200, 2260, 2400, 2500, 2530, 2600, 2660, 2800, 3060}));
}

TEST(Clock, FrequencyIsEstimatedOnce) {
    const int saved = std::exchange(bxCpuTicker::m_freqMHz, 1234);
    EXPECT_EQ(bxCpuTicker::getFreq(), 1234);
    bxCpuTicker::m_freqMHz = saved;
}

TEST(Clock, EstimateAgreesWithTheSystemsClock) {
    using Clock = std::chrono::steady_clock;
    struct Reading {
        Clock::time_point time;
        unsigned long long ticks;
    };
    const auto undisturbed = [] { // on a busy machine a process may stand still between two readings
        for (;;) {
            const Clock::time_point before = Clock::now();
            const unsigned long long ticks = zor_get_cpu_counter();
            if (Clock::now() - before < std::chrono::microseconds(50))
                return Reading{before, ticks};
        }
    };
    const Reading first = undisturbed();
    const int estimated = bxCpuTicker::getFreq();
    Reading last = first;
    while (last.time - first.time < std::chrono::milliseconds(200))
        last = undisturbed();
    const std::chrono::duration<double, std::micro> passed = last.time - first.time;
    const double mhz = static_cast<double>(last.ticks - first.ticks) / passed.count();
    EXPECT_NEAR(estimated, mhz, 0.001 * mhz + 0.5);
    EXPECT_NEAR(bxCpuTicker::getMHz(), mhz, 0.001 * mhz);
    EXPECT_EQ(estimateCpuFreqMHz(), estimated) << "measured once";
}

/** A machine whose counter runs at `mhz`, of which each reading takes a microsecond and may go wrong. */
struct SimulatedClocks {
    double mhz = 2000;
    std::function<void(SimulatedClocks&)> before = [](SimulatedClocks&) {};
    double ticks = 1e12;
    double error = 0; /**< of one reading, in ticks */
    long long nanoseconds = 5'000'000'000;

    void pass(long long time) {
        nanoseconds += time;
        ticks += mhz * static_cast<double>(time) / 1000;
    }
    bxClockReading read() {
        pass(1000);
        before(*this);
        return {static_cast<long long>(ticks + error), nanoseconds};
    }
    bxClockRate::Source source() {
        return [this] { return read(); };
    }
};

TEST(ClockRate, WindowsHaveToAgree) {
    int readings = 0;
    const struct {
        const char* what;
        std::function<void(SimulatedClocks&)> before;
        double mhz;
        int mostMilliseconds;
    } rows[] = {
        {"an even machine", [](SimulatedClocks&) {}, 2000, 41},
        {"the process is left waiting now and then",
         [&](SimulatedClocks& c) { c.pass(++readings % 3000 == 0 ? 50'000'000 : 0); }, 2000, 400},
        {"the rate changes during the first window",
         [](SimulatedClocks& c) { c.mhz = c.nanoseconds < 5'003'000'000 ? 1500 : 3000; }, 3000, 61},
        {"the counter is set back once",
         [&](SimulatedClocks& c) { c.ticks -= ++readings == 15'000 ? 1e9 : 0; }, 2000, 91},
        {"the rate never stays", [&](SimulatedClocks& c) { c.mhz = ++readings / 14'000 % 2 ? 2000 : 2010; },
         0, 401},
        {"the clock stands still", [](SimulatedClocks& c) { c.nanoseconds = 1; }, 0, 0},
        {"the counter stands still", [](SimulatedClocks& c) { c.ticks = 1; }, 0, 401},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        readings = 0;
        SimulatedClocks clocks{.before = row.before};
        bxClockRate rate(clocks.source());
        EXPECT_NEAR(rate.mhz(), row.mhz, 0.0001 * row.mhz);
        EXPECT_LE((clocks.nanoseconds - 5'000'000'000) / 1'000'000, row.mostMilliseconds);
    }
}

TEST(ClockRate, TheWholeRunMakesItBetter) {
    // Each reading is off by two microseconds, this way or that: 0.01 % of the first measurement.
    SimulatedClocks clocks{.before = [](SimulatedClocks& c) {
        static unsigned random = 7;
        random = random * 1664525 + 1013904223;
        c.error = random >> 31 ? 4000 : -4000;
    }};
    bxClockRate rate(clocks.source());
    EXPECT_NEAR(rate.mhz(), 2000, 0.3);
    for (int i = 0; i < 20; ++i) {
        clocks.pass(100'000'000);
        rate.mhz();
    }
    EXPECT_NEAR(rate.mhz(), 2000, 0.01);

    clocks.mhz = 2500; // the machine was moved to another
    clocks.before = [](SimulatedClocks&) {};
    clocks.pass(1'000'000'000);
    EXPECT_NEAR(rate.mhz(), 2500, 0.1);
    clocks.before = [](SimulatedClocks& c) { c.mhz += 0.01; };
    clocks.mhz = 3000;
    clocks.pass(1'000'000'000);
    EXPECT_EQ(rate.mhz(), 0) << "not known any more";
    EXPECT_EQ(rate.mhz(), 0);
}

TEST(Clock, AFrequencyFromOutsideStands) {
    const int saved = std::exchange(bxCpuTicker::m_freqMHz, 1234);
    EXPECT_EQ(bxCpuTicker::getMHz(), 1234);
    bxCpuTicker::m_freqMHz = -1;
    EXPECT_EQ(bxCpuTicker::getFreq(), 0);
    EXPECT_EQ(bxCpuTicker::getMHz(), 0);
    bxCpuTicker::m_freqMHz = saved;
}

TEST(Clock, NominalFrequencies) {
    for (const auto& [measured, nominal] :
         {std::pair(1996, 2000), {2020, 2000}, {2021, 0}, {2000, 2000}, {2230, 0}, {2300, 0}, {1, 0}})
        EXPECT_EQ(bxNominalCpuMHz(measured), nominal) << measured;
}

/** A pipe in the place of the device: it gives what is put into it and refuses everything else. */
class PipeDevice {
  public:
    PipeDevice() { EXPECT_EQ(pipe(m_ends), 0); }
    ~PipeDevice() { close(m_ends[1]); }
    PipeDevice(const PipeDevice&) = delete;
    PipeDevice& operator=(const PipeDevice&) = delete;
    int fd() const { return m_ends[0]; } /**< the clock closes it */
    void put(std::uint32_t interrupts) {
        const std::uint32_t value = interrupts << 8 | 0xC0;
        EXPECT_EQ(write(m_ends[1], &value, sizeof value), ssize_t{sizeof value});
    }

  private:
    int m_ends[2];
};

TEST(RealTimeClock, ThatRefusesIsLeftOut) {
    const PipeDevice refusing;
    LinuxRTClock clock;
    clock.drop("");
    clock.use(refusing.fd());
    EXPECT_FALSE(clock.isOpen());
    EXPECT_STREQ(clock.problem(), "setting of IRQ rate fails");

    PipeDevice silent;
    clock.m_fd = silent.fd();
    clock.m_interrupts = true;
    silent.put(5);
    EXPECT_EQ(clock.waitInterrupts(), 5);
    EXPECT_EQ(clock.waitInterrupts(), 0) << "nothing comes";
    EXPECT_FALSE(clock.isOpen());
    EXPECT_STREQ(clock.problem(), "reading of RTC data fails");
}

TEST(RealTimeClock, ThatDisagreesIsLeftOut) {
    if (g_rtc.isOpen())
        GTEST_SKIP() << "a clock device is open";
    PipeDevice fast;
    g_rtc.m_fd = fast.fd();
    g_rtc.m_interrupts = true;
    for (unsigned interrupts : {3000U, 1U, 400'000U}) // since it was opened, to the next one, and after it
        fast.put(interrupts);
    bxClockRate rate = bxMeasureClockRate();
    EXPECT_GT(rate.mhz(), 0);
    EXPECT_FALSE(g_rtc.isOpen());
    EXPECT_STREQ(g_rtc.problem(), "it disagrees with the monotonic clock by more than 1 %");
    Capture listing(outWarn);
    estimateCpuFreqMHz();
    EXPECT_EQ(listing.text(),
              "-- The real-time clock device is not used: it disagrees with the monotonic clock "
              "by more than 1 %\n");
}

TEST(RealTimeClock, MayBeOffByACountAndOnePerCent) {
    if (g_rtc.isOpen())
        GTEST_SKIP() << "a clock device is open";
    PipeDevice device;
    g_rtc.m_fd = device.fd();
    g_rtc.m_interrupts = true;
    device.put(1);
    device.put(8193); // a second later
    OSTimer timer;
    timer.start();
    timer.stop();
    for (const auto& [seconds, agrees] :
         {std::pair(1.0, true), {1.009, true}, {0.991, true}, {1.02, false}, {0.98, false}})
        EXPECT_EQ(timer.agreesWith(seconds), agrees) << seconds;
    g_rtc.drop("");
}

TEST(Clock, TimerCountsProcessorTimeWithoutTheDevice) {
    if (g_rtc.isOpen())
        GTEST_SKIP() << "a clock device is open";
    EXPECT_EQ(OSTimer::getOSFreq(), 1000000);
    OSTimer timer;
    timer.start();
    long long now, begin;
    OSTimer::GetCounter(&begin);
    do
        OSTimer::GetCounter(&now);
    while (now - begin < 20000);
    timer.stop();
    EXPECT_NEAR(timer.getSec(), 0.02F, 0.005F);
    EXPECT_FLOAT_EQ(timer.getUSec(), timer.getSec() * 1e6F);
}

} // namespace
