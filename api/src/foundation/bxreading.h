/** \file
 * What reading a value from text gives.
 */
#ifndef BXREADING_H
#define BXREADING_H

#include "foundation/bxstring.h"

/** A value that was read from a text, or none. */
template <class T>
struct bxReading {
    T value{};
    bool good = true;  /**< a value was read; else `value` means nothing */
    bool whole = true; /**< nothing but blanks stands behind what was read */
};

/** Sets the text's conversion-failed flag; the value, or a zero value where there is none. */
template <class T>
T bxTell(bxString& text, const bxReading<T>& reading) {
    text.setFailed(!reading.good);
    return reading.good ? reading.value : T();
}

/**
 * \name Numbers
 * Decimal, or hexadecimal after "0x" at the very start. A text of blanks gives `none`. A number outside the
 * range of its type is none.
 * @{ */
bxReading<int> bxReadInt(const bxString& text, int none = 0);
bxReading<long long> bxReadLong(const bxString& text, long long none = 0);
bxReading<double> bxReadDouble(const bxString& text, double none = 0);
/** @} */

#endif
