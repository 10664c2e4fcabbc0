#include "timing/bxowntime.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace {

double wallNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_RAW, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

} // namespace

bxOwnTime::bxOwnTime() : m_file(open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC)) {
    lap();
}

bxOwnTime::~bxOwnTime() {
    if (m_file >= 0)
        close(m_file);
}

/** Nanoseconds that the thread was ready to run and did not; the second number of the file. */
double bxOwnTime::delay() const {
    char text[96];
    const ssize_t length = m_file >= 0 ? pread(m_file, text, sizeof text - 1, 0) : 0;
    if (length <= 0)
        return m_delay;
    text[length] = 0;
    char* second = nullptr;
    std::strtod(text, &second);
    return std::strtod(second, nullptr);
}

double bxOwnTime::lap() {
    const double delay = this->delay();
    const double now = wallNanoseconds();
    const double share = now > m_wall ? std::clamp((delay - m_delay) / (now - m_wall), 0.0, 1.0) : 0;
    m_delay = delay;
    m_wall = now;
    return share;
}
