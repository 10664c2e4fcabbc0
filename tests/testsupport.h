/** \file
 * What the tests of several rooms share.
 */
#ifndef TESTSUPPORT_H
#define TESTSUPPORT_H

#include "output/bxcstream.h"
#include "output/bxostream.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

/** Collects what is written to a list of outputs, while it lives. */
template <class Stream>
class OutputCapture {
  public:
    explicit OutputCapture(Stream& stream) : m_stream(stream), m_out(open_memstream(&m_text, &m_size)) {
        m_stream.insert(m_stream.end(), &m_out);
    }
    ~OutputCapture() {
        m_stream.erase(std::find(m_stream.begin(), m_stream.end(), &m_out));
        m_out.close();
        std::free(m_text);
    }
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;

    std::string text() {
        m_out.flush();
        return {m_text, m_size};
    }

  private:
    Stream& m_stream;
    char* m_text = nullptr;
    std::size_t m_size = 0;
    o_stream m_out;
};

/** Collects the message stream at an output level. */
class Capture {
  public:
    explicit Capture(int level) : m_saved(g_ostrm.outLevel()), m_capture(g_ostrm) {
        g_ostrm.setOutLevel(static_cast<OutputLevel>(level));
    }
    ~Capture() { g_ostrm.setOutLevel(m_saved); }
    std::string text() { return m_capture.text(); }

  private:
    OutputLevel m_saved;
    OutputCapture<bxOStream> m_capture;
};

/** Collects a table, by default the result table. */
class TableCapture {
  public:
    explicit TableCapture(bxCStream& table = g_cstrm) : m_capture(table) {}
    std::string text() { return m_capture.text(); }

  private:
    OutputCapture<bxCStream> m_capture;
};

#endif
