// Huffman coding of layer III: every table against a bit string made from the table files, and decoding back
// in the three forms.
#include "../zor/src/tables/mp3_huffman.h"
#include "../zor/src/tables/mp3_huffman_linbits.h"
#include "../zor/src/tables/mp3_huffman_quad.h"
#include "../zor/src/tables/mp3_sfb_long.h"
#include "../zor/src/tables/mp3_sfb_short.h"
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

using namespace zor::tables;
constexpr int lines = 576;
constexpr Zor16s mixedBands[2] = {6, 8};

std::string binary(int value, int length) {
    std::string text;
    while (length-- > 0)
        text += value >> length & 1 ? '1' : '0';
    return text;
}

/** The bits of a pair by the rules that stand with the tables. */
std::string pairText(int x, int y, int table) {
    const int book = mp3_huffman_linbits::code_table[table], linbits = mp3_huffman_linbits::linbits[table];
    const int ax = std::abs(x), ay = std::abs(y);
    for (int row = 0; row < mp3_huffman::rows; ++row) {
        if (mp3_huffman::table[row] != book || mp3_huffman::x[row] != std::min(ax, 15) ||
            mp3_huffman::y[row] != std::min(ay, 15))
            continue;
        std::string text = binary(mp3_huffman::code[row], mp3_huffman::length[row]);
        for (const int value : {x, y}) {
            if (std::abs(value) >= 15)
                text += binary(std::abs(value) - 15, linbits);
            if (value)
                text += value < 0 ? '1' : '0';
        }
        return text;
    }
    return {};
}

std::string quadText(const Zor32s* v, int table) {
    int index = 0;
    std::string signs;
    for (int i = 0; i < 4; ++i) {
        index = 2 * index + (v[i] != 0);
        if (v[i])
            signs += v[i] < 0 ? '1' : '0';
    }
    return binary(mp3_huffman_quad::code[16 * table + index], mp3_huffman_quad::length[16 * table + index]) +
           signs;
}

std::string streamText(const std::vector<Zor8u>& stream, std::size_t bits) {
    std::string text;
    for (std::size_t i = 0; i < bits; ++i)
        text += stream[i / 8] >> (7 - i % 8) & 1 ? '1' : '0';
    return text;
}

struct Position {
    const Zor8u* byte;
    int bit;
};

ZorMP3FrameHeader header(int id, int frequency) {
    ZorMP3FrameHeader h{};
    h.id = id;
    h.layer = 1;
    h.samplingFrequency = frequency;
    return h;
}

/** Decodes by one of the three forms. */
ZorStatus decode(int form, Position& position, const std::vector<Zor8u>& stream, Zor32s* dst, int* bound,
                 const ZorMP3FrameHeader& h, const ZorMP3SideInfo& side, int countOneLen, int hufSize) {
    const Zor8u* end = stream.data() + stream.size();
    if (form == 0)
        return zorsHuffmanDecode_MP3_1u32s(&position.byte, &position.bit, end, dst, bound, &h, &side,
                                           countOneLen, hufSize);
    if (form == 1)
        return zorsHuffmanDecodeSfb_MP3_1u32s(&position.byte, &position.bit, end, dst, bound, &h, &side,
                                              mp3_sfb_long::boundary, mp3_sfb_short::boundary, countOneLen,
                                              hufSize);
    return zorsHuffmanDecodeSfbMbp_MP3_1u32s(&position.byte, &position.bit, end, dst, bound, &h, &side,
                                             mp3_sfb_long::boundary, mp3_sfb_short::boundary, mixedBands,
                                             countOneLen, hufSize);
}

class Mp3Huffman : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Mp3Huffman, testing::ValuesIn(zorPaths), zorPathName);

TEST_P(Mp3Huffman, EveryTableCodesAndDecodes) {
    for (int table = 0; table < 32; ++table) {
        const int largest = mp3_huffman_linbits::max_value[table];
        if (largest < 0)
            continue;
        // Half the pairs small, so that short and long codes, with and without escapes, come next to each
        // other.
        auto values = randomInts<Zor32s>(lines, -largest, largest, static_cast<unsigned>(table + 1));
        for (std::size_t i = 0; i < 300; ++i)
            values[i] %= 17;
        const int quads = table % 2;
        const auto ones = randomInts<Zor32s>(76, -1, 1, 9);
        std::copy(ones.begin(), ones.end(), values.begin() + 500);
        ZorMP3SideInfo side{};
        side.bigValues = 250;
        side.region0Count = 15;
        std::fill_n(side.tableSelect, 3, table);
        side.count1TableSelect = quads;
        std::string expected = "101";
        for (std::size_t i = 0; i < 500 && largest > 0; i += 2)
            expected += pairText(values[i], values[i + 1], table);
        for (std::size_t i = 500; i < lines; i += 4)
            expected += quadText(&values[i], quads);

        std::vector<Zor8u> stream(4000, 0xBF); // begins 101
        Zor8u* byte = stream.data();
        int bit = 3;
        const auto h = header(1, 0);
        ASSERT_EQ(zorsHuffmanEncode_MP3_32s1u(values.data(), &byte, &bit, stream.data() + stream.size(), &h,
                                              &side, 76, 0),
                  zorStsNoErr);
        ASSERT_EQ((byte - stream.data()) * 8 + bit, static_cast<std::ptrdiff_t>(expected.size()));
        EXPECT_EQ(streamText(stream, expected.size()), expected) << "table " << table;

        for (int form = 0; form < 3; ++form)
            for (const int hufSize : {0, static_cast<int>(expected.size()) - 3}) {
                std::vector<Zor32s> decoded(lines, 77);
                Position position{stream.data(), 3};
                int bound = 0;
                ASSERT_EQ(decode(form, position, stream, decoded.data(), &bound, h, side, hufSize ? 0 : 76,
                                 hufSize),
                          zorStsNoErr);
                EXPECT_EQ(decoded, values) << "table " << table << " form " << form;
                EXPECT_EQ(position.byte, byte);
                EXPECT_EQ(position.bit, bit);
                int last = lines;
                while (last > 0 && values[static_cast<std::size_t>(last - 1)] == 0)
                    --last;
                EXPECT_EQ(bound, last);
            }
    }
}

struct RegionCase {
    int id, frequency, windowSwitching, blockType, mixed, region0, region1;
    int end0, end1; /**< where the standard has the regions end */
};

TEST_P(Mp3Huffman, RegionsFollowBlockTypeAndBands) {
    // Tables 1, 2 and 3 for the regions: the same values cost other bits in each.
    const RegionCase cases[] = {
        {1, 0, 0, 0, 0, 0, 0, 4, 8},    {1, 0, 0, 0, 0, 5, 6, 24, 90},  {1, 2, 0, 0, 0, 15, 7, 194, 576},
        {0, 1, 0, 0, 0, 3, 2, 24, 44},  {1, 1, 1, 1, 0, 0, 0, 36, 576}, {0, 0, 1, 1, 0, 0, 0, 54, 576},
        {0, 2, 1, 3, 0, 0, 0, 54, 576}, {1, 0, 1, 2, 0, 0, 0, 36, 576}, {0, 0, 1, 2, 0, 0, 0, 36, 576},
        {1, 2, 1, 2, 1, 0, 0, 36, 576}, {0, 1, 1, 2, 1, 0, 0, 36, 576},
    };
    for (const RegionCase& c : cases) {
        const auto values = randomInts<Zor32s>(lines, -1, 1, 4);
        const auto h = header(c.id, c.frequency);
        ZorMP3SideInfo side{};
        side.bigValues = 288;
        side.windowSwitching = c.windowSwitching;
        side.blockType = c.blockType;
        side.mixedBlock = c.mixed;
        side.region0Count = c.region0;
        side.region1Count = c.region1;
        for (int r = 0; r < 3; ++r)
            side.tableSelect[r] = r + 1;
        std::string expected;
        for (int i = 0; i < lines; i += 2)
            expected += pairText(values[static_cast<std::size_t>(i)], values[static_cast<std::size_t>(i + 1)],
                                 i < c.end0   ? 1
                                 : i < c.end1 ? 2
                                              : 3);
        std::vector<Zor8u> stream(1000);
        Zor8u* byte = stream.data();
        int bit = 0;
        ASSERT_EQ(zorsHuffmanEncode_MP3_32s1u(values.data(), &byte, &bit, stream.data() + stream.size(), &h,
                                              &side, 0, 0),
                  zorStsNoErr);
        EXPECT_EQ(streamText(stream, static_cast<std::size_t>((byte - stream.data()) * 8 + bit)), expected)
            << "id " << c.id << " type " << c.blockType << " mixed " << c.mixed;
        for (int form = 0; form < 3; ++form) {
            std::vector<Zor32s> decoded(lines);
            Position position{stream.data(), 0};
            int bound = 0;
            ASSERT_EQ(decode(form, position, stream, decoded.data(), &bound, h, side, 0, 0), zorStsNoErr);
            EXPECT_EQ(decoded, values);
        }
    }
}

TEST_P(Mp3Huffman, CallersTablesMoveTheRegions) {
    // Bands of the caller: region 0 of long blocks ends with band region0, of short ones with three bands of
    // each window, of mixed ones with the caller's number of long bands.
    Zor16s longs[6][23], shorts[6][14];
    for (int row = 0; row < 6; ++row) {
        for (int band = 0; band < 23; ++band)
            longs[row][band] = static_cast<Zor16s>(band < 22 ? 2 * (row + 1) * band : lines);
        for (int band = 0; band < 14; ++band)
            shorts[row][band] = static_cast<Zor16s>(band < 13 ? 2 * (row + 1) * band : lines / 3);
    }
    const Zor16s mixed[2] = {4, 5};
    struct Case {
        int id, frequency, windowSwitching, blockType, mixedBlock, region0, region1, end0, end1;
    };
    const Case cases[] = {{1, 0, 0, 0, 0, 1, 2, 16, 40},  {0, 2, 0, 0, 0, 4, 7, 30, 78},
                          {1, 2, 1, 1, 0, 0, 0, 96, 576}, {0, 0, 1, 2, 0, 0, 0, 18, 576},
                          {1, 1, 1, 2, 0, 0, 0, 90, 576}, {1, 0, 1, 2, 1, 0, 0, 40, 576},
                          {0, 1, 1, 2, 1, 0, 0, 16, 576}};
    const auto values = randomInts<Zor32s>(lines, -1, 1, 5);
    for (const Case& c : cases) {
        std::string text;
        for (std::size_t i = 0; i < lines; i += 2)
            text += pairText(values[i], values[i + 1],
                             static_cast<int>(i) < c.end0   ? 1
                             : static_cast<int>(i) < c.end1 ? 2
                                                            : 3);
        BitText bits;
        const auto stream = bits.put(text.c_str()).bytes();
        const auto h = header(c.id, c.frequency);
        ZorMP3SideInfo side{};
        side.bigValues = 288;
        side.windowSwitching = c.windowSwitching;
        side.blockType = c.blockType;
        side.mixedBlock = c.mixedBlock;
        side.region0Count = c.region0;
        side.region1Count = c.region1;
        for (int r = 0; r < 3; ++r)
            side.tableSelect[r] = r + 1;
        for (const bool ownMixed : {false, true}) {
            if (c.mixedBlock && !ownMixed)
                continue;
            std::vector<Zor32s> decoded(lines);
            const Zor8u* byte = stream.data();
            int bit = 0, bound = 0;
            const Zor8u* const end = byte + stream.size();
            ASSERT_EQ(ownMixed ? zorsHuffmanDecodeSfbMbp_MP3_1u32s(&byte, &bit, end, decoded.data(), &bound,
                                                                   &h, &side, longs, shorts, mixed, 0, 0)
                               : zorsHuffmanDecodeSfb_MP3_1u32s(&byte, &bit, end, decoded.data(), &bound, &h,
                                                                &side, longs, shorts, 0, 0),
                      zorStsNoErr);
            EXPECT_EQ(decoded, values)
                << "id " << c.id << " type " << c.blockType << " mixed " << c.mixedBlock;
        }
    }
}

TEST_P(Mp3Huffman, RegionsThatEndWithinAPairAreRefused) {
    const std::vector<Zor8u> stream(2000, 0xFF);
    for (const bool inShorts : {false, true})
        for (const int odd : {3, 5, 575}) {
            Zor16s longs[6][23], shorts[6][14];
            std::memcpy(longs, mp3_sfb_long::boundary, sizeof longs);
            std::memcpy(shorts, mp3_sfb_short::boundary, sizeof shorts);
            longs[3][1] = static_cast<Zor16s>(odd);
            shorts[3][3] = static_cast<Zor16s>(odd);
            ZorMP3SideInfo side{};
            side.bigValues = 288;
            side.windowSwitching = inShorts;
            side.blockType = inShorts ? 2 : 0;
            std::fill_n(side.tableSelect, 3, 1);
            std::vector<Zor32s> decoded(lines + 1, 77);
            const auto h = header(1, 0);
            const Zor8u* byte = stream.data();
            int bit = 0, bound = 0;
            const ZorStatus status = zorsHuffmanDecodeSfb_MP3_1u32s(
                &byte, &bit, byte + stream.size(), decoded.data(), &bound, &h, &side, longs, shorts, 0, 0);
            // 3 * 575 lies behind all lines, where the region ends with them.
            EXPECT_EQ(status, inShorts && odd == 575 ? zorStsNoErr : zorStsBadArgErr);
            EXPECT_EQ(decoded[lines], 77);
        }
}

TEST_P(Mp3Huffman, TheTableOfARegionWithoutLinesIsOfNoAccount) {
    for (const int table : {4, 14, 32, -1}) {
        ZorMP3SideInfo side{};
        side.bigValues = 2; // within the first band
        side.tableSelect[0] = 1;
        side.tableSelect[1] = side.tableSelect[2] = table;
        const auto values = [] {
            std::vector<Zor32s> some(lines);
            some[0] = 1, some[3] = -1;
            return some;
        }();
        const auto h = header(1, 0);
        std::vector<Zor8u> stream(16);
        Zor8u* byte = stream.data();
        int bit = 0;
        ASSERT_EQ(
            zorsHuffmanEncode_MP3_32s1u(values.data(), &byte, &bit, stream.data() + 16, &h, &side, 0, 0),
            zorStsNoErr);
        std::vector<Zor32s> decoded(lines);
        Position position{stream.data(), 0};
        int bound = 0;
        ASSERT_EQ(decode(0, position, stream, decoded.data(), &bound, h, side, 0, 0), zorStsNoErr) << table;
        EXPECT_EQ(decoded, values);
        side.bigValues = 0;
        side.tableSelect[0] = table;
        EXPECT_EQ(decode(0, position, stream, decoded.data(), &bound, h, side, 0, 0), zorStsNoErr);
        side.bigValues = 3;
        EXPECT_EQ(decode(0, position, stream, decoded.data(), &bound, h, side, 0, 0), zorStsBadArgErr);
    }
}

TEST_P(Mp3Huffman, StuffingEndsTheQuads) {
    // Two quads, then six bits of stuffing: table A's code for 0000 is one bit, so whole quads of stuffing
    // decode as zeros, but a last quad that would need more bits than there are is dropped.
    std::vector<Zor32s> values(lines);
    values[0] = 1, values[3] = -1, values[6] = 1;
    ZorMP3SideInfo side{};
    const auto h = header(1, 0);
    std::vector<Zor8u> stream(64);
    Zor8u* byte = stream.data();
    int bit = 0;
    ASSERT_EQ(zorsHuffmanEncode_MP3_32s1u(values.data(), &byte, &bit, stream.data() + 64, &h, &side, 8, 0),
              zorStsNoErr);
    const int bits = static_cast<int>(byte - stream.data()) * 8 + bit;
    std::vector<Zor32s> decoded(lines);
    Position position{stream.data(), 0};
    int bound = 0;
    ASSERT_EQ(decode(0, position, stream, decoded.data(), &bound, h, side, 0, bits + 3), zorStsNoErr);
    EXPECT_EQ(decoded, values);
    EXPECT_EQ(bound, 7);
    EXPECT_EQ((position.byte - stream.data()) * 8 + position.bit, bits + 3);
}

TEST_P(Mp3Huffman, RefusesWhatCannotBeCoded) {
    struct Case {
        const char* what;
        int bigValues, table, countOneLen, hufSize, value, frequency;
        std::size_t room;
        ZorStatus encode, decode;
    };
    const Case cases[] = {
        {"too many", 289, 1, 0, 0, 0, 0, 999, zorStsSizeErr, zorStsSizeErr},
        {"too many with quads", 287, 1, 4, 0, 0, 0, 999, zorStsSizeErr, zorStsSizeErr},
        {"half a quad", 10, 1, 2, 0, 0, 0, 999, zorStsSizeErr, zorStsSizeErr},
        {"no table 4", 10, 4, 0, 0, 0, 0, 999, zorStsBadArgErr, zorStsBadArgErr},
        {"no table 14", 10, 14, 0, 0, 0, 0, 999, zorStsBadArgErr, zorStsBadArgErr},
        {"reserved frequency", 10, 1, 0, 0, 0, 3, 999, zorStsBadArgErr, zorStsBadArgErr},
        {"value above the table's", 10, 1, 0, 0, 2, 0, 999, zorStsBadArgErr, zorStsNoErr},
        {"value below the table's", 10, 16, 0, 0, -17, 0, 999, zorStsBadArgErr, zorStsNoErr},
        {"more bits than allowed", 10, 1, 0, 9, 0, 0, 999, zorStsSizeErr, zorStsBadStreamErr},
        {"just the bits allowed", 10, 1, 0, 10, 0, 0, 999, zorStsNoErr, zorStsNoErr},
        {"no room", 100, 1, 0, 0, 0, 0, 12, zorStsStreamEndErr, zorStsStreamEndErr},
        {"just room", 100, 1, 0, 0, 0, 0, 13, zorStsNoErr, zorStsNoErr},
        {"size beyond the end", 1, 1, 0, 100, 0, 0, 12, zorStsNoErr, zorStsStreamEndErr},
    };
    for (const Case& c : cases) {
        std::vector<Zor32s> values(lines);
        values[1] = c.value;
        ZorMP3SideInfo side{};
        side.bigValues = c.bigValues;
        std::fill_n(side.tableSelect, 3, c.table);
        const auto h = header(1, c.frequency);
        std::vector<Zor8u> stream(c.room);
        Zor8u* byte = stream.data();
        int bit = 0;
        EXPECT_EQ(zorsHuffmanEncode_MP3_32s1u(values.data(), &byte, &bit, stream.data() + c.room, &h, &side,
                                              c.countOneLen, c.hufSize),
                  c.encode)
            << c.what;
        if (c.encode < 0) {
            EXPECT_EQ(byte, stream.data()) << c.what;
        }
        const Zor8u ones = 0xFF; // table 1 has 0 0 as "1"
        std::fill(stream.begin(), stream.end(), ones);
        for (int form = 0; form < 3; ++form) {
            Position position{stream.data(), 0};
            int bound = 0;
            EXPECT_EQ(
                decode(form, position, stream, values.data(), &bound, h, side, c.countOneLen, c.hufSize),
                c.decode)
                << c.what;
        }
    }
    ZorMP3SideInfo side{};
    const auto h = header(1, 0);
    Zor8u byte = 0, *at = &byte;
    int offset = 0;
    const Zor32s zeros[lines] = {};
    for (int* count : {&side.region0Count, &side.region1Count}) {
        for (const int bands : {-1, 23, INT_MAX}) {
            *count = bands;
            EXPECT_EQ(zorsHuffmanEncode_MP3_32s1u(zeros, &at, &offset, at + 1, &h, &side, 0, 0),
                      zorStsBadArgErr);
        }
        *count = 0;
    }
    EXPECT_EQ(zorsHuffmanEncode_MP3_32s1u(zeros, &at, &offset, at + 1, &h, &side, INT_MAX - 3, 0),
              zorStsSizeErr);
    int bit = 8;
    Zor32s values[lines]{};
    EXPECT_EQ(zorsHuffmanEncode_MP3_32s1u(values, &at, &bit, at + 1, &h, &side, 0, 0), zorStsBadArgErr);
    EXPECT_EQ(zorsHuffmanEncode_MP3_32s1u(values, nullptr, &bit, at + 1, &h, &side, 0, 0), zorStsNullPtrErr);
    EXPECT_EQ(zorsHuffmanEncode_MP3_32s1u(values, &at, &bit, at + 1, &h, nullptr, 0, 0), zorStsNullPtrErr);
}

} // namespace
