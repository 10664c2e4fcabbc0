#include "system/bxostimer.h"

#include <cmath>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <linux/rtc.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

LinuxRTClock::LinuxRTClock() {
    if (getuid() == 0)
        use(open("/dev/rtc", O_RDONLY | O_CLOEXEC));
}

LinuxRTClock::~LinuxRTClock() {
    drop("");
}

void LinuxRTClock::use(int fd) {
    m_fd = fd;
    if (!isOpen())
        return;
    if (ioctl(m_fd, RTC_IRQP_SET, static_cast<unsigned long>(INT_PER_SEC)) == -1)
        drop("setting of IRQ rate fails");
    else if (ioctl(m_fd, RTC_PIE_ON, 0) == -1)
        drop("enabling of periodic interrupts fails");
    else
        m_interrupts = true;
}

void LinuxRTClock::drop(const char* problem) {
    if (!isOpen())
        return;
    m_problem = problem;
    if (m_interrupts)
        ioctl(m_fd, RTC_PIE_OFF, 0);
    m_interrupts = false;
    close(m_fd);
    m_fd = -1;
}

long long LinuxRTClock::waitInterrupts() {
    if (!m_interrupts)
        return 0;
    constexpr int patience = 100; // ms, for what should come every 0.12 ms
    pollfd device{.fd = m_fd, .events = POLLIN, .revents = 0};
    std::uint32_t value = 0; // the low byte holds the kind of the interrupt
    if (poll(&device, 1, patience) == 1 && read(m_fd, &value, sizeof value) == sizeof value)
        return value >> 8;
    drop("reading of RTC data fails");
    return 0;
}

LinuxRTClock& bxRTClock() {
    static LinuxRTClock clock;
    return clock;
}

void OSTimer::GetCounter(long long* counter) {
    *counter = g_rtc.isOpen() ? g_rtc.waitInterrupts() : std::clock();
}

long long OSTimer::getOSFreq() {
    return g_rtc.isOpen() ? LinuxRTClock::INT_PER_SEC : CLOCKS_PER_SEC;
}

bool OSTimer::agreesWith(double seconds) const {
    constexpr double tolerance = 0.01;
    const double oneCount = 1.0 / static_cast<double>(getOSFreq());
    return std::abs(getSec() - seconds) <= tolerance * seconds + oneCount;
}

float OSTimer::getSec() const {
    return static_cast<float>(m_stop - m_start) / static_cast<float>(getOSFreq());
}
