/** \file
 * What a side of a comparison writes down of its test data, for the program that compares.
 */
#ifndef BXTURNSLOG_H
#define BXTURNSLOG_H

#include "foundation/bxstring.h"
#include "timing/bxturnsform.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/** Writes entries to a file descriptor, each at once, so that those before a crash are whole. */
class bxTurnsLog {
  public:
    explicit bxTurnsLog(int descriptor) : m_descriptor(descriptor) {}

    /** What is lost on a full disk the reader finds missing. */
    void write(bxTurnsForm::Kind kind, bxTurnsForm::Place place, const std::string& content) const;
    /** Every block of the table of test data but work memory, with what its owner says of it. \return whether
     * there was work memory */
    bool writeBlocks(bxTurnsForm::Place place) const;
    /** The memory map of this process. */
    void writeMappings(bxTurnsForm::Place place) const;

  private:
    int m_descriptor;
};

/** A text with its end, and the bytes of a value, as entries hold them. */
std::string bxLogged(const bxString& text);
template <class Value>
std::string bxLoggedBytes(const Value& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/** Tells the sides' data apart. Bytes without a type may hold addresses, which differ from process to
 * process: words that lie in the memory of this one do not count there. */
std::uint64_t bxDigestOfData();

#endif
