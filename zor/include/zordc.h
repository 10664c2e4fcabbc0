/** \file
 * Data compression: variable-length coding over code tables.
 *
 * Every function returns a ZorStatus. Arguments are checked once per call; a call that fails with a negative
 * status has written nothing unless its comment says otherwise. No function allocates memory except the
 * ones whose name ends in "InitAlloc" before the type.
 */
#ifndef ZORDC_H
#define ZORDC_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The version record of this library. */
ZOR_API const ZorLibraryVersion* zordcGetLibVersion(void);

/** One code word of a variable-length code, sent most significant bit first. */
typedef struct {
    Zor32s value;  /**< what the code word stands for */
    Zor32s code;   /**< the code word, in the low `length` bits */
    Zor32s length; /**< length in bits, 1 to 24 */
} ZorVLCTable_32s;

/** An encoder's view of a code: the code word of each value. */
typedef struct ZorVLCEncodeState_32s ZorVLCEncodeState_32s;

/** A decoder's view of a code: look-up tables by the next bits of the stream. */
typedef struct ZorVLCDecodeState_32s ZorVLCDecodeState_32s;

/**
 * Builds an encoder. The values of the records are the numbers 0 to tableSize - 1, each once, in any order.
 * \return zorStsNullPtrErr, zorStsSizeErr (tableSize below 1), zorStsBadArgErr (a value or a length out of
 * its range, a value given twice), zorStsMemAllocErr
 */
ZOR_API ZorStatus zorsVLCEncodeInitAlloc_32s(const ZorVLCTable_32s* table, int tableSize,
                                             ZorVLCEncodeState_32s** state);
/** Frees an encoder. \return zorStsNullPtrErr, zorStsContextErr */
ZOR_API ZorStatus zorsVLCEncodeFree_32s(ZorVLCEncodeState_32s* state);

/**
 * Builds a decoder. The values may be any numbers. A table in which a code word is, or begins, another one is
 * refused.
 * \return zorStsNullPtrErr, zorStsSizeErr (tableSize below 1), zorStsBadArgErr (a length out of its range, no
 *         prefix code), zorStsMemAllocErr
 */
ZOR_API ZorStatus zorsVLCDecodeInitAlloc_32s(const ZorVLCTable_32s* table, int tableSize,
                                             ZorVLCDecodeState_32s** state);
/** Frees a decoder. \return zorStsNullPtrErr, zorStsContextErr */
ZOR_API ZorStatus zorsVLCDecodeFree_32s(ZorVLCDecodeState_32s* state);

/*
 * The escape-block functions code pairs of signed values with the escape books of AAC (spectrum codebook 11,
 * ISO/IEC 14496-3) and MP3 (table 24 and those that share its code words, ISO/IEC 11172-3).
 *
 * With M the largest magnitude of a pair in the book, 16 (AAC) or 15 (MP3), the code has (2M + 1)^2 records,
 * one for each signed pair (x, y); a code word ends with the sign bits (1 = negative) of the values that are
 * not 0, x first. An encoder's value is (x + M) (2M + 1) + (y + M), a decoder's is x in the high and y in the
 * low 16 bits.
 *
 * AAC: a magnitude of 16 stands for 16 and more; an escape sequence for it follows the code word: N ones, a
 * zero, then N + 4 bits b of the magnitude 2^(N+4) + b, at most 8191.
 * MP3: with linBits above 0, a magnitude of 15 stands for 15 and more; its excess over 15 follows in linBits
 * bits, ahead of that value's sign bit. With linBits 0 it stands for itself.
 *
 * length is the number of values, even. bitStream and bitOffset (0 to 7, from the most significant bit) are
 * the position in the stream; they advance. bitStreamEnd is one past the last byte of the stream. Bits
 * beside those written stay as they were. A call that fails leaves position, stream and destination
 * unchanged, but a decoder may have written values.
 *
 * All return zorStsNullPtrErr, zorStsSizeErr (length), zorStsBadArgErr (bit offset, linBits, a value too
 * large for the escape), zorStsContextErr (the state is of another code), zorStsStreamEndErr, and the
 * decoders zorStsBadStreamErr (an escape too long, or a word that is no code).
 */
ZOR_API ZorStatus zorsVLCEncodeEscBlock_AAC_16s1u(const Zor16s* src, int length, Zor8u** bitStream,
                                                  int* bitOffset, const Zor8u* bitStreamEnd,
                                                  const ZorVLCEncodeState_32s* state);
/** Counts the bits that zorsVLCEncodeEscBlock_AAC_16s1u would write. */
ZOR_API ZorStatus zorsVLCCountEscBits_AAC_16s32s(const Zor16s* src, int length, Zor32s* countBits,
                                                 const ZorVLCEncodeState_32s* state);
ZOR_API ZorStatus zorsVLCDecodeEscBlock_AAC_1u16s(const Zor8u** bitStream, int* bitOffset,
                                                  const Zor8u* bitStreamEnd, Zor16s* dst, int length,
                                                  const ZorVLCDecodeState_32s* state);

/** \param linBits 0 to 13 */
ZOR_API ZorStatus zorsVLCEncodeEscBlock_MP3_16s1u(const Zor16s* src, int length, int linBits,
                                                  Zor8u** bitStream, int* bitOffset,
                                                  const Zor8u* bitStreamEnd,
                                                  const ZorVLCEncodeState_32s* state);
/** Counts the bits that zorsVLCEncodeEscBlock_MP3_16s1u would write. */
ZOR_API ZorStatus zorsVLCCountEscBits_MP3_16s32s(const Zor16s* src, int length, int linBits,
                                                 Zor32s* countBits, const ZorVLCEncodeState_32s* state);
ZOR_API ZorStatus zorsVLCDecodeEscBlock_MP3_1u16s(const Zor8u** bitStream, int* bitOffset,
                                                  const Zor8u* bitStreamEnd, Zor16s* dst, int length,
                                                  int linBits, const ZorVLCDecodeState_32s* state);

#ifdef __cplusplus
}
#endif

#endif
