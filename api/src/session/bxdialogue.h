/** \file
 * The settings that hold for all tests: the parameters of the common dialogue. The dialogue itself is
 * `bxSession::readTimingMethod`, `readTestParameters` and `readDataOffset`.
 */
#ifndef BXDIALOGUE_H
#define BXDIALOGUE_H

#include "parameters/bxdefault.h"

/** Bits of the ask mode: which settings are asked on the console. */
enum bxAskMode {
    askTiming = 1,     /**< timing method and accuracy */
    askParameters = 2, /**< common test parameters */
    askAlignment = 4,  /**< alignment of test data */
    askTests = 8       /**< each test's own parameters */
};

/** The misalignment of test data: any integer, taken modulo 64 (truncating). */
class DefaultAlign : public bxDefault<int> {
  public:
    using bxDefault<int>::bxDefault;
    int validItem(bxString text) override;
};

/** The mutual shift of test data in bytes: any integer, rounded down to a multiple of 64. */
class DefaultShift : public bxDefault<int> {
  public:
    using bxDefault<int>::bxDefault;
    int validItem(bxString text) override;
};

/** Reads the accuracy that the timing method (0 Auto to 3 Iterative) works to, and hands it to `g_tool`. */
void readAccuracy(int method);

#endif
