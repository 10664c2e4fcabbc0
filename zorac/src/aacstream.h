/** \file
 * Writes parts of an AAC bit stream.
 */
#ifndef AACSTREAM_H
#define AACSTREAM_H

#include "kv.h"

#include <algorithm>

constexpr int aacMaxFill = 269; /**< bytes of a fill element */
constexpr int aacMaxData = 510; /**< bytes of a data-stream element */

/** The head of a fill element: its count, with an escape above 14. */
inline void putFillHead(kvBitVector& stream, int count) {
    stream.setBits(static_cast<unsigned>(std::min(count, 15)), 4);
    if (count >= 15)
        stream.setBits(static_cast<unsigned>(count - 14), 8);
}

/** The head of a data-stream element: tag 1, not byte-aligned, its count, with an escape above 254. */
inline void putDataHead(kvBitVector& stream, int count) {
    stream.setBits(1U, 4);
    stream.setBits(0U, 1);
    stream.setBits(static_cast<unsigned>(std::min(count, 255)), 8);
    if (count >= 255)
        stream.setBits(static_cast<unsigned>(count - 255), 8);
}

/** The length of a section in increments; the largest one means that another follows. */
inline void putSectionLength(kvBitVector& stream, int length, int bits) {
    const int escape = (1 << bits) - 1;
    for (; length >= escape; length -= escape)
        stream.setBits(static_cast<unsigned>(escape), bits);
    stream.setBits(static_cast<unsigned>(length), bits);
}

#endif
