/** \file
 * Tables of comma-separated values.
 */
#ifndef BXCSTREAM_H
#define BXCSTREAM_H

#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"
#include "output/bxiostream.h"
#include "output/bxstreams.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

class bxLineKeys;

/**
 * A table. A line of up to 32 cells is filled, then written to every attached file. Lines can be held back,
 * and a block of lines can be checked for rows whose leading (key) cells are the same.
 */
class bxCStream : public bxOutputs {
  public:
    bxCStream();
    ~bxCStream() override;

    static constexpr int lineWidth = 32;

    /** Appends a cell; a full line takes no more. */
    void addCell(const bxString& text);
    /** Sets the cell at an index; the number of appended cells stays. Indices outside the line do nothing. */
    void setColm(int i, const bxString& text);
    /** Copies the cell at an index; false outside the line. */
    bool getColm(int i, bxString& text) const;
    /** Number of cells appended so far. */
    int cellCount() const { return m_count; }
    /** Makes the line n cells long, from 0 to its width; cells never set read "-". */
    void setCellCount(int n) { m_count = n < 0 ? 0 : n < lineWidth ? n : lineWidth; }

    /** Writes n cells (those appended if n is 0) and keeps the line; a cell that is empty or not appended
     * reads "-". */
    void tableOut(int n);
    /** Writes the line, stores it for the check and starts a new one. */
    void lineOut(int n);
    /** Starts a new line. */
    void tableFlush();

    /** Holds the line back. */
    void linePostpone();
    /** Writes all lines held back, n cells each. */
    void linePostponeOut(int n);

    /** Starts the check with k key columns. */
    void identicalLinesStart(int k);
    /** Ends the check and tells whether two lines had the same key cells. */
    bool identicalLinesStop();
    /** Warns of the first pair of stored lines with the same key cells. */
    bool identicalLinesCheck() const;
    /** True when the first k cells of two lines are equal. */
    static bool identicalColms(const bxString* a, const bxString* b, int k);

  private:
    using Line = std::array<bxString, lineWidth>;

    /** Puts the key cells of the line into the text, with a NUL, which no cell holds, between them; not the
     * empty ones at the end. */
    void makeKey();

    Line m_cells;
    int m_count = 0;
    int m_used = 0; /**< cells from here on are empty */
    int m_lineNumber = 0;
    int m_keyColumns = 0;                  /**< 0: no check */
    std::string m_text;                    /**< of the line, or its key */
    std::unique_ptr<bxLineKeys> m_checked; /**< of the lines written while the check is on */
    std::vector<Line> m_postponed;
};

/** Appends a cell; "\n" ends the line. */
bxCStream& operator<<(bxCStream& table, const bxString& text);

/** Appends a value as bxString converts it. */
template <class T>
bxCStream& tmOutTpl(bxCStream& table, T value) {
    return table << (bxString() << value);
}

/** All values that bxString converts. */
template <class T>
requires requires(bxString text, const T& value) {
    text.operator<<(value);
}
bxCStream& operator<<(bxCStream& table, const T& value) {
    return tmOutTpl<std::decay_t<const T>>(table, value);
}

#endif
