/** \file
 * Huffman decoding of layer III.
 */
#include "common/prefixtable.h"
#include "mp3/huffman.h"
#include "mp3/kernel_tables.h"
#include "mp3/stream.h"

namespace zor::mp3 {
namespace {

/** A code word with what it stands for: x and y, or v w x y, packed from the most significant bit. */
struct Record {
    int value, code, length;
};

using PairLookup = PrefixTable<8>;
using QuadLookup = PrefixTable<6>;

constexpr auto pairRecords = [] {
    using namespace tables::mp3_huffman;
    std::array<Record, rows> records{};
    for (std::size_t i = 0; i < records.size(); ++i)
        records[i] = {x[i] << 4 | y[i], code[i], length[i]};
    return records;
}();

/** Calls visit(table number in the csv, its records) for each book. */
template <class Visit>
constexpr void forBooks(Visit visit) {
    using namespace tables::mp3_huffman;
    for (std::size_t row = 0, end = 0; row < pairRecords.size(); row = end) {
        while (end < pairRecords.size() && table[end] == table[row])
            ++end;
        visit(table[row], std::span<const Record>(pairRecords).subspan(row, end - row));
    }
}

constexpr std::size_t pairEntries = [] {
    std::size_t total = 0;
    forBooks([&](int, std::span<const Record> records) {
        PairLookup::PrefixBits bits{};
        total += PairLookup::measure(records, bits);
    });
    return total;
}();

/** The look-up tables of all books in a row. */
struct PairLookups {
    std::array<PrefixEntry, pairEntries> entries{};
    std::size_t start[pairTables]{}; /**< by table number */
    bool valid = true;
};

constexpr PairLookups pairLookups = [] {
    PairLookups result;
    std::size_t used = 0;
    forBooks([&](int book, std::span<const Record> records) {
        PairLookup::PrefixBits bits{};
        const std::size_t size = PairLookup::measure(records, bits);
        result.valid =
            PairLookup::build(records, bits, std::span(result.entries).subspan(used, size)) && result.valid;
        for (std::size_t t = 0; t < pairTables; ++t)
            if (tables::mp3_huffman_linbits::code_table[t] == book)
                result.start[t] = used;
        used += size;
    });
    return result;
}();
static_assert(pairLookups.valid);

constexpr auto quadLookups = [] {
    std::array<std::array<PrefixEntry, QuadLookup::rootSize>, quadTables> result{};
    for (std::size_t table = 0; table < quadTables; ++table) {
        std::array<Record, 16> records{};
        for (std::size_t i = 0; i < records.size(); ++i)
            records[i] = {static_cast<int>(i), quadCodes[table][i].word, quadCodes[table][i].length};
        const QuadLookup::PrefixBits none{};
        QuadLookup::build(std::span<const Record>(records), none, std::span<PrefixEntry>(result[table]));
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
    const PrefixEntry* const entries = pairLookups.entries.data() + pairLookups.start[table];
    const int linbits = pairTable[static_cast<std::size_t>(table)].linbits;
    for (int i = 0; i < n; i += 2) {
        reader.refill();
        const PrefixEntry& entry = PairLookup::find(entries, reader.window());
        reader.skip(entry.length);
        dst[i] = takeValue<escapes>(reader, entry.value >> 4, linbits);
        dst[i + 1] = takeValue<escapes>(reader, entry.value & 15, linbits);
    }
}

void takeQuad(BitReader& reader, Zor32s* dst, int table) {
    reader.refill();
    const PrefixEntry& entry =
        QuadLookup::find(quadLookups[static_cast<std::size_t>(table)].data(), reader.window());
    reader.skip(entry.length);
    for (int j = 0; j < 4; ++j)
        dst[j] = takeSign(reader, entry.value >> (3 - j) & 1);
}

void takeBigValues(BitReader& reader, Zor32s* dst, const Regions& regions, const ZorMP3SideInfo& side) {
    for (int r = 0, begin = 0; r < 3; begin = regions.end[r++]) {
        const int n = regions.end[r] - begin, table = side.tableSelect[r];
        if (n == 0)
            continue; // its table may be any number
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

ZorStatus zorsHuffmanDecode_MP3_1u32s(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                      Zor32s* dst, int* nonZeroBound, const ZorMP3FrameHeader* frameHeader,
                                      const ZorMP3SideInfo* sideInfo, int countOneLen, int hufSize) {
    return zor::mp3::decode(
        {bitStream, bitOffset, bitStreamEnd, dst, nonZeroBound, frameHeader, sideInfo, countOneLen, hufSize},
        frameHeader ? zor::mp3::bandTablesOf(*frameHeader) : zor::mp3::BandTables{});
}

ZorStatus zorsHuffmanDecodeSfb_MP3_1u32s(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                         Zor32s* dst, int* nonZeroBound, const ZorMP3FrameHeader* frameHeader,
                                         const ZorMP3SideInfo* sideInfo, const Zor16s (*sfbLong)[23],
                                         const Zor16s (*sfbShort)[14], int countOneLen, int hufSize) {
    if (!sfbLong || !sfbShort)
        return zorStsNullPtrErr;
    return zor::mp3::decode(
        {bitStream, bitOffset, bitStreamEnd, dst, nonZeroBound, frameHeader, sideInfo, countOneLen, hufSize},
        {.longBoundary = sfbLong, .shortBoundary = sfbShort});
}

ZorStatus zorsHuffmanDecodeSfbMbp_MP3_1u32s(const Zor8u** bitStream, int* bitOffset,
                                            const Zor8u* bitStreamEnd, Zor32s* dst, int* nonZeroBound,
                                            const ZorMP3FrameHeader* frameHeader,
                                            const ZorMP3SideInfo* sideInfo, const Zor16s (*sfbLong)[23],
                                            const Zor16s (*sfbShort)[14], const Zor16s* mixedBands,
                                            int countOneLen, int hufSize) {
    if (!sfbLong || !sfbShort || !mixedBands)
        return zorStsNullPtrErr;
    return zor::mp3::decode(
        {bitStream, bitOffset, bitStreamEnd, dst, nonZeroBound, frameHeader, sideInfo, countOneLen, hufSize},
        {sfbLong, sfbShort, mixedBands});
}

} // extern "C"
