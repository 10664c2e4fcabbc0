#include "system/bxostimer.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <linux/rtc.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/** The device is set up or the program ends: a figure from a half-set timer would be wrong. */
void endIfFailed(bool failed, const char* message) {
    if (failed) {
        const int error = errno;
        std::perror(message);
        std::exit(error);
    }
}

} // namespace

LinuxRTClock::LinuxRTClock() {
    if (getuid() != 0)
        return;
    m_fd = open("/dev/rtc", O_RDONLY | O_CLOEXEC);
    if (!isOpen())
        return;
    endIfFailed(ioctl(m_fd, RTC_IRQP_SET, static_cast<unsigned long>(INT_PER_SEC)) == -1,
                "\n-- bxCpuTicker. ioctl: Setting of IRQ rate fails\n");
    endIfFailed(ioctl(m_fd, RTC_PIE_ON, 0) == -1,
                "\n-- bxCpuTicker. ioctl: Enabling of periodic interrupts fails\n");
    m_interrupts = true;
}

LinuxRTClock::~LinuxRTClock() {
    if (!isOpen())
        return;
    m_interrupts = false;
    if (ioctl(m_fd, RTC_PIE_OFF, 0) == -1) {
        // During static destruction `exit` would come back to here.
        const int error = errno;
        std::perror("\n-- bxCpuTicker. ioctl: Disabling of periodic interrupts fails\n");
        _exit(error);
    }
    close(m_fd);
}

long long LinuxRTClock::waitInterrupts() const {
    if (!m_interrupts)
        return 0;
    std::uint32_t value = 0; // the low byte holds the kind of the interrupt
    endIfFailed(read(m_fd, &value, sizeof value) != sizeof value,
                "\n-- OSTimer. read: Reading of TRC data fails\n");
    return value >> 8;
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

float OSTimer::getSec() const {
    return static_cast<float>(m_stop - m_start) / static_cast<float>(getOSFreq());
}
