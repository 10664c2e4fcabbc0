#include "output/bxostream.h"

void bxOStream::setMsgLevel(MessageLevel m) {
    m_saved.push_back(m_msgLevel);
    m_msgLevel = m;
}

void bxOStream::restoreMsgLevel() {
    if (m_saved.empty()) {
        m_msgLevel = ERR;
        return;
    }
    m_msgLevel = m_saved.back();
    m_saved.pop_back();
}

bool bxOStream::beginMessage(MessageLevel m) {
    if (static_cast<int>(m) > static_cast<int>(m_outLevel))
        return false;
    setMsgLevel(m);
    return true;
}

void bxOStream::endMessageFlush() {
    endMessage();
    flush();
}

void bxOStream::closeMessages(int open) {
    for (int n = openMessages(); n > open; --n)
        endMessage();
}

void bxOStream::write(std::string_view text) {
    if (!shown())
        return;
    for (o_stream* stream : *this)
        stream->write(text);
}

bxOStream& operator<<(bxOStream& out, MessageLevel m) {
    switch (m) {
    case endMessage:
        out.endMessage();
        break;
    case endMessageFlush:
        out.endMessageFlush();
        break;
    default:
        out.setMsgLevel(m);
    }
    return out;
}

bxOStream& operator<<(bxOStream& out, const bxString& text) {
    out.write(text.c_str());
    return out;
}

bxOStream& operator<<(bxOStream& out, const char* text) {
    out.write(text ? std::string_view(text) : std::string_view());
    return out;
}
