#include "output/bxtrace.h"

#include "output/bxostream.h"

/** Writes one line of the trace, where it is shown. */
void bxTrace::announce(const char* direction, const bxString& name) {
    if (static_cast<int>(TRACE) > static_cast<int>(g_ostrm.outLevel()))
        return;
    g_ostrm.setMsgLevel(TRACE);
    g_ostrm << m_indent << "*****" << direction << name << "\n";
    flush();
    g_ostrm.restoreMsgLevel();
}

void bxTrace::traceIn(const bxString& name) {
    m_indent << '*';
    announce(" trace into   ", name);
    insert(begin(), name);
}

void bxTrace::traceOut(const bxString& name) {
    announce(" trace out of ", name);
    int visited = 0;
    for (auto it = begin(); it != end();) {
        ++visited;
        if (*it++ == name) {
            erase(begin(), it);
            break;
        }
    }
    m_indent = m_indent.substr(0, m_indent.length() - visited);
}

bxString bxTrace::getCurName() const {
    return empty() ? bxString() : *begin();
}

void bxTrace::clear() {
    bxList<bxString>::clear();
    m_indent = bxString();
}

void bxTrace::flush() {
    if (static_cast<int>(g_ostrm.msgLevel()) <= static_cast<int>(g_ostrm.outLevel()))
        g_ostrm.flush();
}
