/** \file
 * Huffman codes of layer III: the regions of a granule, the code tables, and what coding costs.
 */
#ifndef ZOR_MP3_HUFFMAN_H
#define ZOR_MP3_HUFFMAN_H

#include "mp3/frame.h"
#include "tables/mp3_huffman.h"
#include "tables/mp3_huffman_linbits.h"
#include "tables/mp3_huffman_quad.h"

#include <array>
#include <cstddef>

namespace zor::mp3 {

inline constexpr int pairTables = 32;
inline constexpr int quadTables = 2;

/** A table number of the big values: its code book, escape bits and the largest value it can send. */
struct PairTable {
    int linbits = 0;
    int largest = -1; /**< -1: no such table */
    int width = 0;    /**< the code of (x, y) stands at first + x width + y */
    int first = 0;
    int longest = 0; /**< bits of its longest code, without signs and escapes */
};

inline constexpr auto pairTable = [] {
    using namespace tables;
    std::array<PairTable, pairTables> table{};
    for (std::size_t t = 0; t < pairTables; ++t) {
        PairTable& entry = table[t];
        entry.linbits = std::max<int>(mp3_huffman_linbits::linbits[t], 0);
        entry.largest = mp3_huffman_linbits::max_value[t];
        for (int row = mp3_huffman::rows - 1; row >= 0; --row)
            if (mp3_huffman::table[row] == mp3_huffman_linbits::code_table[t]) {
                entry.first = row;
                entry.width = std::max(entry.width, mp3_huffman::y[row] + 1);
                entry.longest = std::max<int>(entry.longest, mp3_huffman::length[row]);
            }
    }
    return table;
}();

/** A code word and its length in bits. */
struct Code {
    Zor16u word;
    Zor8u length;
};

/** The code words of all books, in the order of the csv. */
inline constexpr auto pairCodes = [] {
    std::array<Code, tables::mp3_huffman::rows> codes{};
    for (std::size_t i = 0; i < codes.size(); ++i)
        codes[i] = {static_cast<Zor16u>(tables::mp3_huffman::code[i]),
                    static_cast<Zor8u>(tables::mp3_huffman::length[i])};
    return codes;
}();

/** The code words of the two quad books: v w x y is the index, v most significant. */
inline constexpr auto quadCodes = [] {
    std::array<std::array<Code, 16>, quadTables> codes{};
    for (std::size_t i = 0; i < 32; ++i)
        codes[i / 16][i % 16] = {static_cast<Zor16u>(tables::mp3_huffman_quad::code[i]),
                                 static_cast<Zor8u>(tables::mp3_huffman_quad::length[i])};
    return codes;
}();

/** The three regions of the big values: region r ends before line end[r]. */
struct Regions {
    int end[3];
};

inline Regions regionsOf(const BandTables& bands, const ZorMP3FrameHeader& header,
                         const ZorMP3SideInfo& side) {
    const Zor16s* const boundary = bands.longBoundary[bandRow(header)];
    const int lines = 2 * side.bigValues;
    int first = 0, second = 576;
    if (side.windowSwitching) {
        const bool mixed = isShort(side) && side.mixedBlock;
        first = mixed           ? boundary[bands.mixedBands[header.id]]
                : isShort(side) ? 3 * bands.shortBoundary[bandRow(header)][3]
                                : boundary[8];
    } else {
        first = boundary[std::min(side.region0Count + 1, longBands)];
        second = boundary[std::min(side.region0Count + side.region1Count + 2, longBands)];
    }
    first = std::clamp(first, 0, lines);
    return {{first, std::clamp(second, first, lines), lines}};
}

/**
 * Whether the counts, the tables and the header serve for Huffman coding. Pairs do not cross a boundary
 * between regions, so it must be even; the table of a region without lines is of no account.
 */
ZorStatus checkHuffman(const ZorMP3FrameHeader& header, const ZorMP3SideInfo& side, const BandTables& bands,
                       int countOneLen, int hufSize);

/** Bits of an even number n of lines in a table that can send them. */
int pairBits(const Zor32s* values, int n, int table);
/** Bits of n lines of magnitude 0 or 1, n a multiple of 4. */
int quadBits(const Zor32s* values, int n, int table);

} // namespace zor::mp3

#endif
