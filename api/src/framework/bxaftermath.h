/** \file
 * What is left to do after a fault in a test.
 */
#ifndef BXAFTERMATH_H
#define BXAFTERMATH_H

#include "output/bxlevels.h"
#include "timing/bxexception.h"

class bxTest;

/**
 * Remembers how the streams stand, so that they can be put back after a fault: it jumps over whatever would
 * have ended a message or a row.
 */
class bxAftermath {
  public:
    bxAftermath();

    /** The streams, time limit and priority as they were. */
    void restore() const;
    /** The same, with the message of the fault and the step in which it happened. */
    void report(const bxException& fault) const;
    /**
     * Frees the data of a test that was left in the middle of a combination. What `flushData` keeps stays, as
     * it does in a sound test; when it faults on data in ruins, all blocks of the combination go.
     */
    void discardData(bxTest& test) const;

  private:
    const OutputLevel m_level;
    const int m_openMessages;
};

/**
 * Whether a failure or a fault ends only the combination of parameter values that has it: the table has a row
 * for it, which names the failure, and the test goes on. Not in comparisons of two programs.
 */
bool bxKeepsGoing();

#endif
