#include "output/bxtrace.h"

#include "output/bxostream.h"

#include <algorithm>

/** Writes one line of the trace, where it is shown. */
void bxTrace::announce(const char* direction, std::string_view name) const {
    if (static_cast<int>(TRACE) > static_cast<int>(g_ostrm.outLevel()))
        return;
    g_ostrm.setMsgLevel(TRACE);
    g_ostrm << indent() << "*****" << direction << bxString(name) << "\n";
    flush();
    g_ostrm.restoreMsgLevel();
}

void bxTrace::traceIn(std::string_view name) {
    ++m_depth;
    announce(" trace into   ", name);
    if (m_closed.empty())
        m_closed.emplace_back();
    splice(begin(), m_closed, m_closed.begin());
    front().assign(name);
}

void bxTrace::traceOut(std::string_view name) {
    announce(" trace out of ", name);
    int visited = 0;
    for (auto it = begin(); it != end();) {
        ++visited;
        if ((it++)->view() == name) {
            m_closed.splice(m_closed.begin(), *this, begin(), it);
            break;
        }
    }
    m_depth = std::max(m_depth - visited, 0);
}

bxString bxTrace::indent() const {
    bxString stars;
    stars.resize(m_depth, '*');
    return stars;
}

bxString bxTrace::getCurName() const {
    return empty() ? bxString() : *begin();
}

void bxTrace::clear() {
    bxList<bxString>::clear();
    m_depth = 0;
}

void bxTrace::flush() const {
    if (static_cast<int>(g_ostrm.msgLevel()) <= static_cast<int>(g_ostrm.outLevel()))
        g_ostrm.flush();
}
