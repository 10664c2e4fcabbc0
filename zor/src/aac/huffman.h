/** \file
 * The Huffman books of AAC as look-up tables.
 */
#ifndef ZOR_AAC_HUFFMAN_H
#define ZOR_AAC_HUFFMAN_H

#include "common/prefixtable.h"

namespace zor::aac {

using BookTable = PrefixTable<9>;

constexpr int spectralBooks = 11;
constexpr int escapeBook = 11;
constexpr int escapeMagnitude = 16; /**< in the escape book: an escape sequence follows */

/**
 * The values of a code word of a spectral book in one number: up to four values of six bits, the first one
 * lowest, and above them how many of them are not 0.
 */
namespace packing {

constexpr int valueBits = 6;
constexpr int countShift = 24;

constexpr int value(Zor32s packed, int index) {
    return static_cast<Zor32s>(static_cast<Zor32u>(packed) << (32 - valueBits * (index + 1))) >>
           (32 - valueBits);
}

constexpr int nonZero(Zor32s packed) {
    return packed >> countShift;
}

} // namespace packing

/** The look-up table of a spectral book, 1 to 11; entries as `packing` has them. */
const PrefixEntry* spectralBook(int book);

/** The look-up table of the scale factors: differences. */
const PrefixEntry* scaleFactorBook();

} // namespace zor::aac

#endif
