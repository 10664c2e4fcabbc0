#include "framework/bxprogress.h"

#include "framework/bxreportformat.h"
#include "timing/bxsampler.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr char clearLine[] = "\r\x1b[K";

/** Characters that fit into a line of the terminal without wrapping it. */
int lineWidth() {
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return known ? size.ws_col - 1 : 79;
}

} // namespace

bxProgress::bxProgress() : m_shown(isatty(STDERR_FILENO) && !isatty(STDOUT_FILENO)), m_start(time(nullptr)) {
    if (m_shown)
        bxCallSampler::m_between = [this] { tick(); };
}

bxProgress::~bxProgress() {
    if (!m_shown)
        return;
    bxCallSampler::m_between = nullptr;
    std::fputs(clearLine, stderr);
}

void bxProgress::beforeTest(const bxString& function) {
    m_function = function;
    if (m_shown)
        write();
}

void bxProgress::tick() {
    if (m_shown && time(nullptr) != m_written)
        write();
}

void bxProgress::write() {
    m_written = time(nullptr);
    const auto elapsed = static_cast<int>(m_written - m_start);
    const bxString text = line(m_done, m_selected, m_function, elapsed);
    std::fprintf(stderr, "%s%s", clearLine, text.substr(0, lineWidth()).c_str());
    std::fflush(stderr);
}

bxString bxProgress::line(int done, int selected, const bxString& function, int elapsed) {
    bxString text;
    text << done << " of " << selected << " tests, " << function << ", "
         << bxReportFormat::getTimeStr(elapsed) << " elapsed";
    if (done > 0) {
        const long long rest = static_cast<long long>(elapsed) * std::max(selected - done, 0) / done;
        text << ", about " << bxReportFormat::getTimeStr(static_cast<int>(rest)) << " remaining";
    }
    return text;
}
