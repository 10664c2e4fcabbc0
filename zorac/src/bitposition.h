/** \file
 * Where a library function stands in a bit stream.
 */
#ifndef BITPOSITION_H
#define BITPOSITION_H

#include "kv.h"

/** A position that a function advances, and the stream that it is set back to. Byte is Zor8u, const to read.
 */
template <class Byte>
struct BitPosition {
    Byte* bytes = nullptr;
    int offset = 0;
    Byte* start = nullptr;
    const Zor8u* end = nullptr;

    void attach(const kvBitVector& stream) {
        start = stream.p8u;
        end = stream.p8u + stream.length();
        rewind();
    }
    void rewind() {
        bytes = start;
        offset = 0;
    }
};

#endif
