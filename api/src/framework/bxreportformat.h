/** \file
 * Layout of report blocks: lines of up to six items at fixed columns, with or without a frame.
 */
#ifndef BXREPORTFORMAT_H
#define BXREPORTFORMAT_H

#include "foundation/bxstring.h"

#include <array>
#include <ctime>
#include <initializer_list>

/**
 * Places items in lines of 79 characters. A column position of 0 or more is where an item starts;
 * a negative position -p aligns the item to the right, so that it ends just before column p - 1.
 */
class bxReportFormat {
  public:
    bxReportFormat(bool frame, int columns, int c0, int c1, int c2, int c3, int c4, int c5);

    int columns() const { return m_columns; }

    /** The separator line that opens a framed block; switches the frame on. */
    bxString firstLine();
    /** The separator line that closes a framed block; switches the frame off. */
    bxString lastLine();
    bxString sepLine() const;

    /** One line with the items at their columns, closed by a line feed; an empty item is not placed. */
    bxString getLine(const bxString& a, const bxString& b = "", const bxString& c = "",
                     const bxString& d = "", const bxString& e = "", const bxString& f = "") const;

    /**
     * The framed lines of an entry: the heads (label, mark) in the first columns, the value in the next, a
     * further text in the one after that. A value that does not fit continues on further lines in its own
     * column, a word wider than the column is cut; a further text that finds no room beside the value gets a
     * line of its own. Control characters become blanks.
     */
    bxString getEntry(std::initializer_list<bxString> heads, const bxString& value,
                      const bxString& further = "") const;

    /** Number of characters behind the last line feed of the text. */
    static int getLastLen(const bxString& text);
    /** Appends blanks to the last line up to a column; false, and no change, when it is longer already. */
    static bool setOffsetLine(bxString& line, int col);
    /** Places an item at a column position; an item to be right-aligned that is too long is dropped. */
    static void setItem(bxString& line, const bxString& item, int col);
    /** Places an item at a column, or one blank behind the line's text when that reaches the column. */
    static void setItemLeft(bxString& line, const bxString& item, int col);
    /**
     * Splits a text at its last blank that leaves at most `width` characters before it: these become the
     * piece, the text keeps what follows. False when the text fits or holds no blank.
     */
    static bool getPieceItem(bxString& text, bxString& piece, int width);

    /** "hh:mm:ss" of a number of seconds. */
    static bxString getTimeStr(int seconds);
    /** The text up to its first line feed. */
    static bxString cutoffNL(const bxString& text);
    /** Processor name, count and frequency, largest cache size. */
    static bxString cpuInfo();
    /**
     * The same line from its values: MHz measured and nominal (0: unknown), and bytes of cache (0 or less:
     * unknown).
     */
    static bxString cpuInfo(const bxString& name, int processors, int freqMHz, int cacheBytes,
                            int nominalMHz = 0);

  private:
    bxString startLine() const;
    bxString closedLine(bxString line) const;
    /** Like getPieceItem, but a piece never exceeds the width. */
    static bool takePiece(bxString& text, bxString& piece, int width);

    bool m_frame;
    int m_columns;
    std::array<int, 6> m_col;
};

/** A time as `ctime` renders it, without the line feed. */
bxString bxCtimeText(time_t when);

#endif
