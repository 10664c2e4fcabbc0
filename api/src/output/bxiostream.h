/** \file
 * Text files: the streams on which messages, tables and parameter input are built.
 */
#ifndef BXIOSTREAM_H
#define BXIOSTREAM_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"
#include "output/bxstreams.h"

#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

/** Bits of the mode in which a file is opened. */
enum IoMode : int {
    ioRead = 1,
    ioWrite = 2,
    ioAppend = 4, /**< with ioWrite: keep what the file holds */
    ioBinary = 8,
    ioNameAsGiven = 256, /**< do not complete the name by the session's directories */
    ioEmptyLate = 512    /**< with ioWrite: a file that exists is emptied by the first write, not before */
};

/** The system's text for its last error; empty on this platform. */
bxString getLastErrorMessage();

/** Owns the handle of a file, or refers to standard input or output. */
class io_stream {
  public:
    /** Opens a file, `mode` being IoMode bits. A failure leaves a null handle and, with `report`, an ERR
     * message. */
    io_stream(const bxString& name, int mode, bool report);
    /** Takes over an open handle. */
    explicit io_stream(std::FILE* file) : m_file(file) {}
    virtual ~io_stream() { close(); }
    io_stream(const io_stream&) = delete;
    io_stream& operator=(const io_stream&) = delete;

    /** Null when the file could not be opened. */
    std::FILE* handle() const { return m_file; }
    /** True when a read or write on the open handle has failed. */
    bool failed() const { return m_file && std::ferror(m_file) != 0; }
    void flush();
    /** Closes the handle; false if there is none of its own to close (standard input and output stay open).
     */
    bool close();

  private:
    std::FILE* m_file = nullptr;
};

/** A text file to read. */
class i_stream : public io_stream {
  public:
    using io_stream::io_stream;
    /** Reads a line of any length, without its newline; false, with an empty line, at the end of the file. */
    bool getline(bxString& line);
};

/** A text file to write. */
class o_stream : public io_stream {
  public:
    using io_stream::io_stream;
    o_stream(const bxString& name, int mode, bool report)
        : io_stream(name, mode, report), m_full((mode & ioEmptyLate) != 0) {}
    /** Writes to the handle, or to standard output when it is null. Errors are left to failed(). */
    void write(std::string_view text);

  private:
    bool m_full = false; /**< holds what an earlier run has written */
};

o_stream& operator<<(o_stream& out, const bxString& text);

/**
 * Opens a file to write, its name as given; null, after an ERR message, when that fails. The caller owns it.
 * Until something is written a file that exists keeps what it holds.
 */
o_stream* createOStream(const bxString& name, bool append);

/**
 * Outputs that all receive the same text, in the order attached. Those added by name are owned; one that is
 * inserted stays its owner's and must outlive the list or be closed or erased before.
 */
class bxOutputs : public bxList<o_stream*> {
  public:
    bxOutputs() = default;
    ~bxOutputs() override { close(); }
    bxOutputs(const bxOutputs&) = delete;
    bxOutputs& operator=(const bxOutputs&) = delete;

    /** Attaches a file, its name as given; false, after an ERR message, when it cannot be opened. */
    bool addStream(const bxString& name, bool append);
    void flush();
    /** Closes and detaches every file; standard output stays. */
    void close();

  private:
    std::vector<std::unique_ptr<o_stream>> m_owned;
};

#endif
