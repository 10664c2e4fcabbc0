// Data-stream and fill elements of AAC.
#include "common/bitreader.h"
#include "common/check.h"
#include "zorac/aac.h"

#include <cstring>

namespace zor::aac {

namespace {

ZorStatus checkCall(const Zor8u** stream, const int* offset, const Zor8u* end, const int* count,
                    const Zor8u* dst, int dstSize) {
    if (anyNull(stream, offset, end, count, dst) || !*stream)
        return zorStsNullPtrErr;
    if (*offset < 0 || *offset > 7)
        return zorStsBadArgErr;
    if (dstSize < 0)
        return zorStsSizeErr;
    return *stream <= end ? zorStsNoErr : zorStsStreamEndErr;
}

/** Copies whole bytes from any bit position. */
void copyBytes(BitReader in, const Zor8u* end, Zor8u* dst, int count) {
    const Zor8u* bytes = in.bytes();
    const int shift = static_cast<int>(in.position() % 8);
    if (shift == 0) {
        std::memcpy(dst, bytes, static_cast<std::size_t>(count));
        return;
    }
    // Seven bytes at a time while eight can be read.
    for (; count >= 7 && end - bytes >= 8; count -= 7, bytes += 7, dst += 7) {
        const Zor64u word = __builtin_bswap64(loadBigEndian64(bytes) << shift);
        std::memcpy(dst, &word, 7);
    }
    for (; count > 0; --count, ++bytes)
        *dst++ = static_cast<Zor8u>(bytes[0] << shift | bytes[1] >> (8 - shift));
}

/** Takes the `count` bytes that follow, once it is sure that they are there and fit. */
ZorStatus takeBytes(BitReader& in, const Zor8u* end, int count, Zor8u* dst, int dstSize) {
    if (in.overrun())
        return zorStsStreamEndErr;
    if (count > dstSize)
        return zorStsSizeErr;
    const std::ptrdiff_t bits = (end - in.bytes()) * 8 - in.position() % 8;
    if (std::ptrdiff_t{8} * count > bits)
        return zorStsStreamEndErr;
    copyBytes(in, end, dst, count);
    return zorStsNoErr;
}

/** The position behind the bytes taken. */
void advance(const BitReader& in, int count, const Zor8u** stream, int* offset) {
    in.store(stream, offset);
    *stream += count;
}

} // namespace

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsDecodeDatStrElt_AAC(const Zor8u** bitStream, int* bitOffset,
                                             const Zor8u* bitStreamEnd, int* elementTag, int* count,
                                             Zor8u* dst, int dstSize) {
    if (!elementTag)
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkCall(bitStream, bitOffset, bitStreamEnd, count, dst, dstSize);
        status != zorStsNoErr)
        return status;
    BitReader in(*bitStream, *bitOffset, bitStreamEnd);
    const auto tag = static_cast<int>(in.read(4));
    const bool align = in.get(1) != 0;
    auto bytes = static_cast<int>(in.get(8));
    if (bytes == 255)
        bytes += static_cast<int>(in.get(8));
    if (align)
        in.align();
    if (const ZorStatus status = takeBytes(in, bitStreamEnd, bytes, dst, dstSize); status != zorStsNoErr)
        return status;
    *elementTag = tag;
    *count = bytes;
    advance(in, bytes, bitStream, bitOffset);
    return zorStsNoErr;
}

extern "C" ZorStatus zorsDecodeFillElt_AAC(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                           int* count, Zor8u* dst, int dstSize) {
    if (const ZorStatus status = checkCall(bitStream, bitOffset, bitStreamEnd, count, dst, dstSize);
        status != zorStsNoErr)
        return status;
    BitReader in(*bitStream, *bitOffset, bitStreamEnd);
    auto bytes = static_cast<int>(in.read(4));
    if (bytes == 15)
        bytes += static_cast<int>(in.get(8)) - 1;
    if (const ZorStatus status = takeBytes(in, bitStreamEnd, bytes, dst, dstSize); status != zorStsNoErr)
        return status;
    *count = bytes;
    advance(in, bytes, bitStream, bitOffset);
    return zorStsNoErr;
}
