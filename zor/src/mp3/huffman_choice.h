/** \file
 * Finds the cheapest way to code quantised values: regions, tables, quads.
 */
#ifndef ZOR_MP3_HUFFMAN_CHOICE_H
#define ZOR_MP3_HUFFMAN_CHOICE_H

#include "mp3/huffman.h"

namespace zor::mp3 {

/** What a granule of one channel costs as coded by the fields that chooseHuffman sets. */
struct HuffmanCost {
    int bits;
    int countOneLen;
};

/**
 * Sets bigValues, tableSelect, the region counts and count1TableSelect for values of at least 0 and at most
 * 8206 in stream order; block fields are read.
 */
HuffmanCost chooseHuffman(const Zor32s* values, const ZorMP3FrameHeader& header, ZorMP3SideInfo& side);

} // namespace zor::mp3

#endif
