/** \file
 * The window sequence of the AAC tests and the frame layout that follows from it.
 */
#ifndef AACPARMS_H
#define AACPARMS_H

#include "suiteparms.h"

/** Window sequences that the tests run; the values are those of the stream. */
enum aacWinSeq : int { aacWinLong = 1, aacWinShort = 2 };

/** The parameter "winSequence". */
class aacWinSeqItr : public bxMapIterator<aacWinSeq> {
  public:
    aacWinSeqItr() : bxMapIterator<aacWinSeq>(aacWinShort, "", "") {}

    void init(std::initializer_list<aacWinSeq> values) {
        setMapParm<aacWinSeq>(*this, "winSequence", "window sequence",
                              {{aacWinLong, "long"}, {aacWinShort, "short"}}, values);
    }
};

/** The division of a frame of 1024 lines. */
struct AacFrame {
    int winLen;  /**< lines of a window */
    int windows; /**< windows, each a window group of its own */
    int maxSfb;  /**< scalefactor bands of a window */

    int lines() const { return winLen * windows; }
};

inline AacFrame aacFrame(aacWinSeq sequence) {
    return sequence == aacWinShort ? AacFrame{128, 8, 12} : AacFrame{1024, 1, 41};
}

/** Sampling-rate index of all AAC tests: 96 kHz, whose bands the suite's maxSfb are. */
constexpr int aacSamplingRate = 0;

#endif
