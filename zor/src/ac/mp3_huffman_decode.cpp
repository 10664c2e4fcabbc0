/** \file
 * Huffman decoding of layer III by tables of two levels.
 *
 * The first level is indexed by the next eight bits. Where the code ends within them the entry holds it; else
 * it names a part of the second level and how many further bits, those of the longest code with this
 * beginning, are its index.
 */
#include "ac/mp3_huffman.h"
#include "ac/mp3_kernels.h"
#include "ac/mp3_stream.h"

namespace zor::mp3 {
namespace {

constexpr int firstBits = 8;
constexpr int firstSize = 1 << firstBits;

/** `count` bits of the code are left at this level; `value` is x << 4 | y, or the place of the second level.
 */
struct Entry {
    Zor16u value = 0;
    Zor8u length = 0; ///< bits of the code at this level, 0 in an entry that leads on
    Zor8u more = 0;   ///< bits that index the second level
};

/**
 * Enters the codes of rows [row, end) of the csv behind place `base` of `entries`, which may be null to
 * measure. \return entries taken
 */
constexpr int enterBook(Entry* entries, int row, int end) {
    using namespace tables::mp3_huffman;
    int longest[firstSize]{};
    for (int i = row; i < end; ++i)
        if (length[i] > firstBits) {
            int& bits = longest[code[i] >> (length[i] - firstBits)];
            bits = std::max(bits, length[i] - firstBits);
        }
    int place[firstSize]{}, used = firstSize;
    for (int prefix = 0; prefix < firstSize; ++prefix)
        if (longest[prefix] > 0) {
            place[prefix] = used;
            if (entries)
                entries[prefix] = {static_cast<Zor16u>(used), 0, static_cast<Zor8u>(longest[prefix])};
            used += 1 << longest[prefix];
        }
    for (int i = row; entries && i < end; ++i) {
        const int beyond = length[i] - firstBits;
        const int prefix = beyond > 0 ? code[i] >> beyond : 0;
        const int bits = beyond > 0 ? beyond : length[i],
                  indexBits = beyond > 0 ? longest[prefix] : firstBits;
        const int first = (beyond > 0 ? place[prefix] : 0) +
                          ((beyond > 0 ? code[i] & ((1 << beyond) - 1) : code[i]) << (indexBits - bits));
        for (int j = 0; j < 1 << (indexBits - bits); ++j)
            entries[first + j] = {static_cast<Zor16u>(x[i] << 4 | y[i]), static_cast<Zor8u>(bits), 0};
    }
    return used;
}

/** Calls visit(book, first row, end row) for each book of the csv. */
template <class Visit>
constexpr void forBooks(Visit visit) {
    using namespace tables::mp3_huffman;
    for (int row = 0, book = 0; row < rows; ++book) {
        int end = row;
        while (end < rows && table[end] == table[row])
            ++end;
        visit(book, row, end);
        row = end;
    }
}

constexpr int totalEntries = [] {
    int total = 0;
    forBooks([&](int, int row, int end) { total += enterBook(nullptr, row, end); });
    return total;
}();

struct DecodeTables {
    Entry entry[totalEntries];
    int start[pairTables]; ///< by table number
};

constexpr DecodeTables decodeTables = [] {
    DecodeTables result{};
    int used = 0;
    forBooks([&](int, int row, int end) {
        for (int t = 0; t < pairTables; ++t)
            if (tables::mp3_huffman_linbits::code_table[t] == tables::mp3_huffman::table[row])
                result.start[t] = used;
        used += enterBook(result.entry + used, row, end);
    });
    return result;
}();

constexpr int quadBitsMost = 6;

/** Indexed by the next six bits: v w x y in the value. */
struct QuadEntry {
    Zor8u value;
    Zor8u length;
};

constexpr auto quadEntries = [] {
    std::array<std::array<QuadEntry, 1 << quadBitsMost>, quadTables> result{};
    for (std::size_t table = 0; table < quadTables; ++table)
        for (std::size_t value = 0; value < 16; ++value) {
            const Code code = quadCodes[table][value];
            const int free = quadBitsMost - code.length;
            for (std::size_t j = 0; j < std::size_t{1} << free; ++j)
                result[table][(std::size_t{code.word} << free) + j] = {static_cast<Zor8u>(value),
                                                                       code.length};
        }
    return result;
}();

/** The value with the sign bit that follows a magnitude other than 0. */
inline Zor32s takeSign(BitReader& reader, int magnitude) {
    const int has = magnitude != 0;
    const int negative = static_cast<int>(reader.window() >> 63) & has;
    reader.skip(has);
    return (magnitude ^ -negative) + negative;
}

template <bool escapes>
inline Zor32s takeValue(BitReader& reader, int magnitude, int linbits) {
    if constexpr (escapes)
        if (magnitude == 15)
            magnitude += static_cast<int>(reader.get(linbits));
    return takeSign(reader, magnitude);
}

/** A pair takes at most 19 + 2 (13 + 1) bits, so one refill serves it. */
template <bool escapes>
void takePairs(BitReader& reader, Zor32s* dst, int n, int table) {
    const Entry* const entries = decodeTables.entry + decodeTables.start[table];
    const int linbits = pairTable[static_cast<std::size_t>(table)].linbits;
    for (int i = 0; i < n; i += 2) {
        reader.refill();
        Entry entry = entries[reader.peek(firstBits)];
        if (entry.more) {
            reader.skip(firstBits);
            entry = entries[entry.value + reader.peek(entry.more)];
        }
        reader.skip(entry.length);
        dst[i] = takeValue<escapes>(reader, entry.value >> 4, linbits);
        dst[i + 1] = takeValue<escapes>(reader, entry.value & 15, linbits);
    }
}

void takeQuad(BitReader& reader, Zor32s* dst, int table) {
    reader.refill();
    const QuadEntry entry = quadEntries[static_cast<std::size_t>(table)][reader.peek(quadBitsMost)];
    reader.skip(entry.length);
    for (int j = 0; j < 4; ++j)
        dst[j] = takeSign(reader, entry.value >> (3 - j) & 1);
}

void takeBigValues(BitReader& reader, Zor32s* dst, const Regions& regions, const ZorMP3SideInfo& side) {
    for (int r = 0, begin = 0; r < 3; begin = regions.end[r++]) {
        const int n = regions.end[r] - begin, table = side.tableSelect[r];
        const PairTable& book = pairTable[static_cast<std::size_t>(table)];
        if (book.largest == 0)
            std::fill_n(dst + begin, n, 0);
        else if (book.linbits)
            takePairs<true>(reader, dst + begin, n, table);
        else
            takePairs<false>(reader, dst + begin, n, table);
    }
}

/**
 * Quads from `line` on while there are bits before `limit`; the last one is dropped where it goes beyond,
 * since its bits are stuffing. \return the line behind the last quad
 */
int takeQuadsUpTo(BitReader& reader, Zor32s* dst, int line, std::ptrdiff_t limit, int table) {
    while (line + 4 <= lines && reader.position() < limit) {
        takeQuad(reader, dst + line, table);
        if (reader.position() > limit)
            break;
        line += 4;
    }
    return line;
}

struct Arguments {
    const Zor8u** stream;
    int* bitOffset;
    const Zor8u* end;
    Zor32s* dst;
    int* bound;
    const ZorMP3FrameHeader* header;
    const ZorMP3SideInfo* side;
    int countOneLen;
    int hufSize;
};

ZorStatus checkArguments(const Arguments& a, const BandTables& bands) {
    if (anyNull(a.dst, a.bound, a.header, a.side))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkStream(a.stream, a.bitOffset, a.end); status < 0)
        return status;
    if (const ZorStatus status = checkHuffman(*a.header, *a.side, bands, a.countOneLen, a.hufSize);
        status < 0)
        return status;
    const long long room = 8LL * (a.end - *a.stream) - *a.bitOffset;
    return a.hufSize <= room ? zorStsNoErr : zorStsStreamEndErr;
}

ZorStatus decode(const Arguments& a, const BandTables& bands) {
    if (const ZorStatus status = checkArguments(a, bands); status < 0)
        return status;
    BitReader reader(*a.stream, *a.bitOffset, a.end);
    const std::ptrdiff_t limit = *a.bitOffset + a.hufSize;
    const Regions regions = regionsOf(bands, *a.header, *a.side);
    takeBigValues(reader, a.dst, regions, *a.side);
    int line = regions.end[2];
    if (a.hufSize > 0) {
        if (reader.position() > limit)
            return zorStsBadStreamErr;
        line = takeQuadsUpTo(reader, a.dst, line, limit, a.side->count1TableSelect);
        *a.stream += limit / 8;
        *a.bitOffset = static_cast<int>(limit % 8);
    } else {
        for (const int end = line + a.countOneLen; line < end; line += 4)
            takeQuad(reader, a.dst + line, a.side->count1TableSelect);
        if (const ZorStatus status = finishReading(reader, a.stream, a.bitOffset); status < 0)
            return status;
    }
    std::fill(a.dst + line, a.dst + lines, 0);
    while (line > 0 && a.dst[line - 1] == 0)
        --line;
    *a.bound = line;
    return zorStsNoErr;
}

} // namespace
} // namespace zor::mp3

extern "C" {

ZorStatus zorsHuffmanDecode_MP3_1u32s(const Zor8u** ppStream, int* pBitOffset, const Zor8u* pStreamEnd,
                                      Zor32s* pDst, int* pNonZeroBound, const ZorMP3FrameHeader* pFrameHeader,
                                      const ZorMP3SideInfo* pSideInfo, int countOneLen, int hufSize) {
    return zor::mp3::decode({ppStream, pBitOffset, pStreamEnd, pDst, pNonZeroBound, pFrameHeader, pSideInfo,
                             countOneLen, hufSize},
                            {});
}

ZorStatus zorsHuffmanDecodeSfb_MP3_1u32s(const Zor8u** ppStream, int* pBitOffset, const Zor8u* pStreamEnd,
                                         Zor32s* pDst, int* pNonZeroBound,
                                         const ZorMP3FrameHeader* pFrameHeader,
                                         const ZorMP3SideInfo* pSideInfo, const Zor16s (*pSfbLong)[23],
                                         const Zor16s (*pSfbShort)[14], int countOneLen, int hufSize) {
    if (!pSfbLong || !pSfbShort)
        return zorStsNullPtrErr;
    return zor::mp3::decode({ppStream, pBitOffset, pStreamEnd, pDst, pNonZeroBound, pFrameHeader, pSideInfo,
                             countOneLen, hufSize},
                            {.longBoundary = pSfbLong, .shortBoundary = pSfbShort});
}

ZorStatus zorsHuffmanDecodeSfbMbp_MP3_1u32s(const Zor8u** ppStream, int* pBitOffset, const Zor8u* pStreamEnd,
                                            Zor32s* pDst, int* pNonZeroBound,
                                            const ZorMP3FrameHeader* pFrameHeader,
                                            const ZorMP3SideInfo* pSideInfo, const Zor16s (*pSfbLong)[23],
                                            const Zor16s (*pSfbShort)[14], const Zor16s* pMixedBands,
                                            int countOneLen, int hufSize) {
    if (!pSfbLong || !pSfbShort || !pMixedBands)
        return zorStsNullPtrErr;
    return zor::mp3::decode({ppStream, pBitOffset, pStreamEnd, pDst, pNonZeroBound, pFrameHeader, pSideInfo,
                             countOneLen, hufSize},
                            {pSfbLong, pSfbShort, pMixedBands});
}

} // extern "C"
