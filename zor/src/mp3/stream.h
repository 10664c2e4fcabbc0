/** \file
 * The bit-stream arguments of the MP3 functions.
 */
#ifndef ZOR_MP3_STREAM_H
#define ZOR_MP3_STREAM_H

#include "common/bitreader.h"
#include "common/check.h"

namespace zor::mp3 {

/** The status of a stream position; `Byte` is Zor8u or const Zor8u. */
template <class Byte>
ZorStatus checkStream(Byte* const* stream, const int* bitOffset, const Zor8u* end) {
    if (!stream || !*stream || !bitOffset || !end)
        return zorStsNullPtrErr;
    if (*bitOffset < 0 || *bitOffset > 7)
        return zorStsBadArgErr;
    return *stream <= end ? zorStsNoErr : zorStsStreamEndErr;
}

/** Hands the reader's position back, unless it went beyond the stream's end. */
inline ZorStatus finishReading(const BitReader& reader, const Zor8u** stream, int* bitOffset) {
    if (reader.overrun())
        return zorStsStreamEndErr;
    reader.store(stream, bitOffset);
    return zorStsNoErr;
}

} // namespace zor::mp3

#endif
