/** \file
 * Huffman encoding of layer III, and the count of bits that it takes.
 */
#include "common/bitwriter.h"
#include "mp3/huffman.h"
#include "mp3/kernel_tables.h"
#include "mp3/stream.h"

#include <cstdlib>

namespace zor::mp3 {
namespace {

constexpr bool isPairTable(int table) {
    return table >= 0 && table < pairTables && pairTable[static_cast<std::size_t>(table)].largest >= 0;
}

} // namespace

ZorStatus checkHuffman(const ZorMP3FrameHeader& header, const ZorMP3SideInfo& side, const BandTables& bands,
                       int countOneLen, int hufSize) {
    if (!isHeader(header) || side.count1TableSelect < 0 || side.count1TableSelect >= quadTables)
        return zorStsBadArgErr;
    const auto isRegionCount = [](int count) { return count >= 0 && count <= longBands; };
    if (!side.windowSwitching && !(isRegionCount(side.region0Count) && isRegionCount(side.region1Count)))
        return zorStsBadArgErr;
    const int mixedBands = bands.mixedBands[header.id];
    if (mixedBands < 0 || mixedBands > longBands)
        return zorStsBadArgErr;
    if (side.bigValues < 0 || countOneLen < 0 || countOneLen % 4 != 0 || hufSize < 0 ||
        side.bigValues > lines / 2 || countOneLen > lines - 2 * side.bigValues)
        return zorStsSizeErr;
    const Regions regions = regionsOf(bands, header, side);
    for (int r = 0, begin = 0; r < 3; begin = regions.end[r++])
        if (regions.end[r] % 2 != 0 || (begin < regions.end[r] && !isPairTable(side.tableSelect[r])))
            return zorStsBadArgErr;
    return zorStsNoErr;
}

namespace {

constexpr int escape = 15;

const Code& codeOf(const PairTable& table, int x, int y) {
    return pairCodes[static_cast<std::size_t>(table.first + std::min(x, escape) * table.width +
                                              std::min(y, escape))];
}

} // namespace

int pairBits(const Zor32s* values, int n, int table) {
    const PairTable& book = pairTable[static_cast<std::size_t>(table)];
    int bits = 0;
    if (book.largest == 0)
        return 0;
    for (int i = 0; i < n; i += 2) {
        const int x = std::abs(values[i]), y = std::abs(values[i + 1]);
        bits += codeOf(book, x, y).length + (x != 0) + (y != 0);
        if (book.linbits)
            bits += ((x >= escape) + (y >= escape)) * book.linbits;
    }
    return bits;
}

int quadBits(const Zor32s* values, int n, int table) {
    int bits = 0;
    for (int i = 0; i < n; i += 4) {
        unsigned index = 0;
        for (int j = 0; j < 4; ++j) {
            index = index << 1 | (values[i + j] != 0);
            bits += values[i + j] != 0;
        }
        bits += quadCodes[static_cast<std::size_t>(table)][index].length;
    }
    return bits;
}

namespace {

/** The escape bits of one value, where it has any, and its sign. */
void putValue(BitWriter& writer, int magnitude, bool negative, int linbits) {
    Zor32u bits = 0;
    int count = 0;
    if (magnitude >= escape) {
        bits = static_cast<Zor32u>(magnitude - escape);
        count = linbits;
    }
    if (magnitude != 0) {
        bits = bits << 1 | negative;
        ++count;
    }
    writer.put(bits, count);
}

void putEscapePairs(BitWriter& writer, const Zor32s* values, int n, const PairTable& book) {
    for (int i = 0; i < n; i += 2) {
        const int x = std::abs(values[i]), y = std::abs(values[i + 1]);
        const Code code = codeOf(book, x, y);
        writer.put(code.word, code.length);
        putValue(writer, x, values[i] < 0, book.linbits);
        putValue(writer, y, values[i + 1] < 0, book.linbits);
    }
}

/** Without escapes a pair and its signs are one number of at most 21 bits. */
void putPairs(BitWriter& writer, const Zor32s* values, int n, const PairTable& book) {
    const Code* const codes = pairCodes.data() + book.first;
    for (int i = 0; i < n; i += 2) {
        const int x = std::abs(values[i]), y = std::abs(values[i + 1]);
        const Code code = codes[x * book.width + y];
        const int signsX = x != 0, signsY = y != 0;
        Zor32u word = Zor32u{code.word} << signsX | static_cast<Zor32u>(values[i] < 0);
        word = word << signsY | static_cast<Zor32u>(values[i + 1] < 0);
        writer.put(word, code.length + signsX + signsY);
    }
}

void putQuads(BitWriter& writer, const Zor32s* values, int n, int table) {
    for (int i = 0; i < n; i += 4) {
        unsigned index = 0;
        Zor32u signs = 0;
        int count = 0;
        for (int j = 0; j < 4; ++j) {
            const bool one = values[i + j] != 0;
            index = index << 1 | one;
            signs = one ? signs << 1 | (values[i + j] < 0) : signs;
            count += one;
        }
        const Code code = quadCodes[static_cast<std::size_t>(table)][index];
        writer.put(Zor32u{code.word} << count | signs, code.length + count);
    }
}

/** A granule's lines with the tables that code them. */
struct Coding {
    const Zor32s* values;
    Regions regions;
    const ZorMP3SideInfo& side;
    int countOneLen;

    const PairTable& book(int region) const {
        return pairTable[static_cast<std::size_t>(side.tableSelect[region])];
    }
    const Zor32s* quads() const { return values + regions.end[2]; }
    template <class Visit>
    void forRegions(Visit visit) const {
        for (int r = 0, begin = 0; r < 3; begin = regions.end[r++])
            if (begin < regions.end[r])
                visit(r, values + begin, regions.end[r] - begin);
    }
};

bool codable(const Coding& coding) {
    const auto& kernel = kernels<QuantKernels>();
    bool fits = kernel.within(coding.quads(), coding.countOneLen, 1);
    coding.forRegions([&](int region, const Zor32s* values, int n) {
        fits = fits && kernel.within(values, n, coding.book(region).largest);
    });
    return fits;
}

/** Bits that the lines cannot exceed. */
long long mostBits(const Coding& coding) {
    long long bits = 10LL * coding.countOneLen / 4;
    coding.forRegions([&](int region, const Zor32s*, int n) {
        const PairTable& book = coding.book(region);
        bits += n / 2 * (book.longest + 2LL * (book.linbits + 1));
    });
    return bits;
}

int exactBits(const Coding& coding) {
    int bits = quadBits(coding.quads(), coding.countOneLen, coding.side.count1TableSelect);
    coding.forRegions([&](int region, const Zor32s* values, int n) {
        bits += pairBits(values, n, coding.side.tableSelect[region]);
    });
    return bits;
}

} // namespace
} // namespace zor::mp3

extern "C" ZorStatus zorsHuffmanEncode_MP3_32s1u(const Zor32s* src, Zor8u** bitStream, int* bitOffset,
                                                 const Zor8u* bitStreamEnd,
                                                 const ZorMP3FrameHeader* frameHeader,
                                                 const ZorMP3SideInfo* sideInfo, int countOneLen,
                                                 int hufSize) {
    using namespace zor::mp3;
    if (zor::anyNull(src, frameHeader, sideInfo))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkStream(bitStream, bitOffset, bitStreamEnd); status < 0)
        return status;
    const BandTables bands = bandTablesOf(*frameHeader);
    if (const ZorStatus status = checkHuffman(*frameHeader, *sideInfo, bands, countOneLen, hufSize);
        status < 0)
        return status;
    const Coding coding{src, regionsOf(bands, *frameHeader, *sideInfo), *sideInfo, countOneLen};
    if (!codable(coding))
        return zorStsBadArgErr;
    const long long room = 8LL * (bitStreamEnd - *bitStream) - *bitOffset;
    if (hufSize > 0 || mostBits(coding) > room) {
        const int bits = exactBits(coding);
        if (hufSize > 0 && bits > hufSize)
            return zorStsSizeErr;
        if (bits > room)
            return zorStsStreamEndErr;
    }
    zor::BitWriter writer(*bitStream, *bitOffset);
    coding.forRegions([&](int region, const Zor32s* values, int n) {
        const PairTable& book = coding.book(region);
        if (book.linbits)
            putEscapePairs(writer, values, n, book);
        else if (book.largest > 0)
            putPairs(writer, values, n, book);
    });
    putQuads(writer, coding.quads(), countOneLen, sideInfo->count1TableSelect);
    writer.finish(bitStream, bitOffset);
    return zorStsNoErr;
}
