/** \file
 * The message stream.
 */
#ifndef BXOSTREAM_H
#define BXOSTREAM_H

#include "foundation/bxstring.h"
#include "output/bxiostream.h"
#include "output/bxlevels.h"
#include "output/bxstreams.h"

#include <string_view>
#include <vector>

/**
 * Messages with levels. A message is written as its level, its pieces, and endMessage or endMessageFlush,
 * which make the level before it current again; messages may nest. Text goes to every attached output when
 * the current message level is among the levels shown, and is not even built when it is not.
 */
class bxOStream : public bxOutputs {
  public:
    OutputLevel outLevel() const { return m_outLevel; }
    void setOutLevel(OutputLevel shown) { m_outLevel = shown; }
    MessageLevel msgLevel() const { return m_msgLevel; }
    /** Makes a level current and keeps the one before. */
    void setMsgLevel(MessageLevel m);
    /** Makes the level before current again; ERR when nothing was kept. */
    void restoreMsgLevel();

    /** False if m is numerically above the output level; otherwise starts a message of level m. */
    bool beginMessage(MessageLevel m);
    void endMessage() { restoreMsgLevel(); }
    void endMessageFlush();

    /** Number of messages that are not ended. */
    int openMessages() const { return static_cast<int>(m_saved.size()); }
    /** Ends the innermost messages until this many are open. */
    void closeMessages(int open);

    /** True when messages of level m are shown. */
    bool shows(MessageLevel m) const { return isShown(m, m_outLevel); }
    /** True when text written now is shown. */
    bool shown() const { return shows(m_msgLevel); }
    /** Writes a text if it is shown. */
    void write(std::string_view text);

  private:
    OutputLevel m_outLevel = outErr;
    MessageLevel m_msgLevel = PERF;
    std::vector<MessageLevel> m_saved; /**< newest last */
};

/** Starts a message of this level, or ends one. */
bxOStream& operator<<(bxOStream& out, MessageLevel m);
bxOStream& operator<<(bxOStream& out, const bxString& text);
bxOStream& operator<<(bxOStream& out, const char* text);

/** Writes a value as bxString converts it. */
template <class T>
bxOStream& tsOutTpl(bxOStream& out, T value) {
    if (out.shown())
        out.write((bxString() << value).c_str());
    return out;
}

/** All values that bxString converts. */
template <class T>
requires requires(bxString text, const T& value) {
    text.operator<<(value);
}
bxOStream& operator<<(bxOStream& out, const T& value) {
    return tsOutTpl<T>(out, value);
}

#endif
