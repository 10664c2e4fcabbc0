/** \file
 * The sizes that a frame header implies: rates, bytes of a frame and of its parts.
 */
#ifndef ZOR_MP3_GEOMETRY_H
#define ZOR_MP3_GEOMETRY_H

#include "mp3/frame.h"

namespace zor::mp3 {

/** Hertz; the header's fields are in range. The half-rate extension has half the rates of id 0. */
int samplingRateOf(const ZorMP3FrameHeader& header);
/** Bits a second; 0 for free format and for the forbidden index. */
int bitRateOf(const ZorMP3FrameHeader& header);

constexpr int headerBytes(const ZorMP3FrameHeader& header) {
    return header.protectionBit == 0 ? 6 : 4;
}

constexpr int sideInfoBytes(const ZorMP3FrameHeader& header) {
    const bool mono = header.mode == modeMono;
    return header.id == 1 ? (mono ? 17 : 32) : (mono ? 9 : 17);
}

/** Bytes of a frame without padding, 0 where the header has no bit rate. */
inline int unpaddedFrameBytes(const ZorMP3FrameHeader& header) {
    return static_cast<int>(72LL * granulesOf(header) * bitRateOf(header) / samplingRateOf(header));
}

} // namespace zor::mp3

#endif
