// The variable-length coder: code tables, encoders and decoders built from them, and the escape blocks.
#include "kvvlctable.h"
#include "zordc.h"
#include "zorsupport.h"

#include <cmath>
#include <memory>

namespace {

using Values = std::vector<Zor16s>;
using Bytes = std::vector<Zor8u>;

/** One of the two escape books behind one interface. */
struct Book {
    const char* name;
    bool isAac;
    int linBits;
    int limit; // largest magnitude that can be coded

    int largest() const { return isAac ? 16 : 15; }
    ZorStatus encode(const Values& values, Zor8u** stream, int* offset, const Zor8u* end,
                     const ZorVLCEncodeState_32s* state) const {
        const int len = static_cast<int>(values.size());
        return isAac
                   ? zorsVLCEncodeEscBlock_AAC_16s1u(values.data(), len, stream, offset, end, state)
                   : zorsVLCEncodeEscBlock_MP3_16s1u(values.data(), len, linBits, stream, offset, end, state);
    }
    ZorStatus count(const Values& values, Zor32s* bits, const ZorVLCEncodeState_32s* state) const {
        const int len = static_cast<int>(values.size());
        return isAac ? zorsVLCCountEscBits_AAC_16s32s(values.data(), len, bits, state)
                     : zorsVLCCountEscBits_MP3_16s32s(values.data(), len, linBits, bits, state);
    }
    ZorStatus decode(const Zor8u** stream, int* offset, const Zor8u* end, Values& values,
                     const ZorVLCDecodeState_32s* state) const {
        const int len = static_cast<int>(values.size());
        return isAac
                   ? zorsVLCDecodeEscBlock_AAC_1u16s(stream, offset, end, values.data(), len, state)
                   : zorsVLCDecodeEscBlock_MP3_1u16s(stream, offset, end, values.data(), len, linBits, state);
    }
    kvacVLCTable table(bool forDecoder) const {
        kvacVLCTable table;
        if (isAac)
            forDecoder ? table.setTableDecode_AAC() : table.setTableEncode_AAC();
        else
            forDecoder ? table.setTableDecode_MP3() : table.setTableEncode_MP3();
        return table;
    }
};

void PrintTo(const Book& book, std::ostream* out) {
    *out << book.name;
}

const Book books[] = {
    {"aac", true, 0, 8191}, {"mp3_0", false, 0, 15}, {"mp3_4", false, 4, 30}, {"mp3_13", false, 13, 8206}};

/** States of a book, freed at the end. */
struct States {
    ZorVLCEncodeState_32s* encoder = nullptr;
    ZorVLCDecodeState_32s* decoder = nullptr;

    explicit States(const Book& book) {
        const kvacVLCTable forEncoder = book.table(false), forDecoder = book.table(true);
        EXPECT_EQ(zorStsNoErr, zorsVLCEncodeInitAlloc_32s(forEncoder.table(), forEncoder.size(), &encoder));
        EXPECT_EQ(zorStsNoErr, zorsVLCDecodeInitAlloc_32s(forDecoder.table(), forDecoder.size(), &decoder));
    }
    ~States() {
        EXPECT_EQ(zorStsNoErr, zorsVLCEncodeFree_32s(encoder));
        EXPECT_EQ(zorStsNoErr, zorsVLCDecodeFree_32s(decoder));
    }
    States(const States&) = delete;
    States& operator=(const States&) = delete;
};

std::string bitsOf(const Bytes& bytes, int first, int count) {
    std::string text;
    for (int i = first; i < first + count; ++i)
        text += bytes[static_cast<std::size_t>(i / 8)] >> (7 - i % 8) & 1 ? '1' : '0';
    return text;
}

class Vlc : public testing::TestWithParam<Book> {};
std::string bookName(const testing::TestParamInfo<Book>& info) {
    return info.param.name;
}
INSTANTIATE_TEST_SUITE_P(Books, Vlc, testing::ValuesIn(books), bookName);

TEST_P(Vlc, TablesOfABookListOneCompleteCodeUnderTwoPackings) {
    const kvacVLCTable encoder = GetParam().table(false), decoder = GetParam().table(true);
    const int most = GetParam().largest(), width = 2 * most + 1;
    ASSERT_EQ(width * width, encoder.size());
    ASSERT_EQ(encoder.size(), decoder.size());
    double kraft = 0;
    for (int i = 0; i < encoder.size(); ++i) {
        const ZorVLCTable_32s& one = encoder.table()[i];
        const ZorVLCTable_32s& other = decoder.table()[i];
        EXPECT_EQ(one.code, other.code);
        EXPECT_EQ(one.length, other.length);
        const int x = other.value >> 16, y = static_cast<Zor16s>(other.value & 0xFFFF);
        EXPECT_EQ(one.value, (x + most) * width + y + most);
        EXPECT_EQ((x < 0) + (y < 0),
                  __builtin_popcount(static_cast<unsigned>(one.code) & ((1U << ((x != 0) + (y != 0))) - 1)));
        kraft += std::ldexp(1.0, -one.length);
    }
    EXPECT_EQ(1.0, kraft);
}

TEST_P(Vlc, EncodingCountingAndDecodingAgree) {
    const Book& book = GetParam();
    const States states(book);
    const int most = std::min(book.limit, 2 * book.largest());
    struct Range {
        int low, high;
    };
    // Without escapes, with and without, and with escapes only; and everything that the format can send.
    const Range ranges[] = {{0, 15}, {0, most}, {std::min(16, most), most}, {0, book.limit}};
    unsigned seed = 1;
    for (const Range& range : ranges)
        for (const int len : {2, 72, 1152})
            for (int offset = 0; offset < 8; ++offset) {
                Values values = randomInts<Zor16s>(len, range.low, range.high, ++seed);
                for (std::size_t i = 0; i < values.size(); i += 3)
                    values[i] = static_cast<Zor16s>(-values[i]);
                Zor32s bits = 0;
                ASSERT_EQ(zorStsNoErr, book.count(values, &bits, states.encoder));
                // Exactly as many bytes as are needed; all bits set, to see which ones are written.
                Bytes bytes(static_cast<std::size_t>(offset + bits + 7) / 8, 0xFF);
                Zor8u* out = bytes.data();
                int outOffset = offset;
                const Zor8u* end = bytes.data() + bytes.size();
                ASSERT_EQ(zorStsNoErr, book.encode(values, &out, &outOffset, end, states.encoder));
                ASSERT_EQ(offset + bits, (out - bytes.data()) * 8 + outOffset);
                ASSERT_EQ(std::string(static_cast<std::size_t>(offset), '1'), bitsOf(bytes, 0, offset));
                const int behind = static_cast<int>(bytes.size()) * 8 - offset - bits;
                ASSERT_EQ(std::string(static_cast<std::size_t>(behind), '1'),
                          bitsOf(bytes, offset + bits, behind));

                Values decoded(values.size());
                const Zor8u* in = bytes.data();
                int inOffset = offset;
                ASSERT_EQ(zorStsNoErr, book.decode(&in, &inOffset, end, decoded, states.decoder));
                ASSERT_EQ(values, decoded);
                ASSERT_EQ(out, in);
                ASSERT_EQ(outOffset, inOffset);
            }
}

TEST_P(Vlc, EveryPairRoundTrips) {
    const Book& book = GetParam();
    const States states(book);
    std::vector<int> magnitudes;
    for (int value = 0; value <= std::min(40, book.limit); ++value)
        magnitudes.push_back(value);
    for (int power = 64; power <= book.limit; power *= 2)
        magnitudes.insert(magnitudes.end(), {power - 1, power});
    magnitudes.push_back(book.limit);
    Values values;
    for (const int x : magnitudes)
        for (const int y : magnitudes)
            for (const int signs : {0, 1, 2, 3}) {
                values.push_back(static_cast<Zor16s>(signs & 1 ? -x : x));
                values.push_back(static_cast<Zor16s>(signs & 2 ? -y : y));
            }
    Bytes bytes(values.size() * 4);
    Zor8u* out = bytes.data();
    const Zor8u* in = bytes.data();
    const Zor8u* end = bytes.data() + bytes.size();
    int outOffset = 0, inOffset = 0;
    ASSERT_EQ(zorStsNoErr, book.encode(values, &out, &outOffset, end, states.encoder));
    Values decoded(values.size());
    ASSERT_EQ(zorStsNoErr, book.decode(&in, &inOffset, end, decoded, states.decoder));
    EXPECT_EQ(values, decoded);
}

TEST_P(Vlc, AnOverfullStreamOrABadCallLeavesEverythingAsItWas) {
    const Book& book = GetParam();
    const States states(book);
    const Values values = {1, -2, 3, 4, 0, -5};
    Zor32s bits = 0;
    ASSERT_EQ(zorStsNoErr, book.count(values, &bits, states.encoder));
    Bytes bytes(static_cast<std::size_t>(bits + 7) / 8);
    const Bytes before = bytes;
    const Zor8u* full = bytes.data() + bytes.size();
    struct Case {
        const char* name;
        ZorStatus status;
        Values values;
        int offset;
        const Zor8u* end;
    };
    const auto beyond = static_cast<Zor16s>(book.limit + 1);
    const Case cases[] = {
        {"one byte short", zorStsStreamEndErr, values, 0, full - 1},
        {"end before the start", zorStsStreamEndErr, values, 0, bytes.data() - 1},
        {"offset", zorStsBadArgErr, values, 8, full},
        {"odd length", zorStsSizeErr, {1, 2, 3}, 0, full},
        {"no values", zorStsSizeErr, {}, 0, full},
        {"beyond the escape", zorStsBadArgErr, {0, beyond}, 0, full},
        {"below the escape", zorStsBadArgErr, {static_cast<Zor16s>(-beyond), 0}, 0, full},
        {"most negative", zorStsBadArgErr, {0, -32768}, 0, full},
    };
    for (const Case& test : cases) {
        Zor8u* out = bytes.data();
        int offset = test.offset;
        Values content = test.values;
        content.reserve(1); // not null
        EXPECT_EQ(test.status, book.encode(content, &out, &offset, test.end, states.encoder)) << test.name;
        EXPECT_EQ(bytes.data(), out) << test.name;
        EXPECT_EQ(test.offset, offset) << test.name;
        EXPECT_EQ(before, bytes) << test.name;
    }
    Zor8u* out = bytes.data();
    int offset = 0;
    ASSERT_EQ(zorStsNoErr, book.encode(values, &out, &offset, full, states.encoder));
    const Zor8u* in = bytes.data();
    offset = 0;
    Values decoded(values.size() + 2); // one pair more than the stream has
    EXPECT_EQ(zorStsStreamEndErr, book.decode(&in, &offset, out, decoded, states.decoder));
    EXPECT_EQ(bytes.data(), in);
}

TEST_P(Vlc, TheThousandthDecodingEqualsTheFirst) {
    const Book& book = GetParam();
    const States states(book);
    const Values values = randomInts<Zor16s>(576, -15, 15, 4);
    Bytes bytes(2048);
    Zor8u* out = bytes.data();
    int offset = 0;
    const Zor8u* end = bytes.data() + bytes.size();
    ASSERT_EQ(zorStsNoErr, book.encode(values, &out, &offset, end, states.encoder));
    for (int call = 1; call <= 1000; ++call) {
        Values decoded(values.size());
        const Zor8u* in = bytes.data();
        offset = 0;
        ASSERT_EQ(zorStsNoErr, book.decode(&in, &offset, end, decoded, states.decoder));
        if (call == 1 || call == 1000) {
            EXPECT_EQ(values, decoded);
        }
    }
}

TEST(VlcStreams, AreThoseOfTheStandards) {
    struct Case {
        const Book& book;
        Values values;
        const char* bits;
    };
    // AAC codebook 11: (0, 0) 0000, (16, 16) 00100. MP3 table 24: (0, 0) 1111, (15, 15) 0011.
    const Case cases[] = {
        {books[0], {0, 0}, "0000"},
        {books[0],
         {17, -16},
         "00100"
         "01"
         "0"
         "0001"
         "0"
         "0000"},
        {books[0],
         {-511, 16},
         "00100"
         "10"
         "1111"
         "0"
         "11111111"
         "0"
         "0000"},
        {books[2], {0, 0}, "1111"},
        {books[2],
         {18, -15},
         "0011"
         "0011"
         "0"
         "0000"
         "1"},
        {books[1],
         {15, -15},
         "0011"
         "0"
         "1"},
    };
    for (const Case& test : cases) {
        const States states(test.book);
        Bytes bytes(16);
        Zor8u* out = bytes.data();
        int offset = 0;
        ASSERT_EQ(zorStsNoErr,
                  test.book.encode(test.values, &out, &offset, bytes.data() + bytes.size(), states.encoder));
        EXPECT_EQ(test.bits, bitsOf(bytes, 0, static_cast<int>(out - bytes.data()) * 8 + offset));
    }
}

TEST(VlcStreams, EscapesTooLongAreRefused) {
    const States states(books[0]);
    // (16, 16), both positive, then nine ones.
    const Bytes bytes = {0b00100001, 0xFF, 0xFF, 0, 0, 0, 0, 0};
    const Zor8u* in = bytes.data();
    int offset = 0;
    Values decoded(2);
    EXPECT_EQ(zorStsBadStreamErr,
              books[0].decode(&in, &offset, bytes.data() + bytes.size(), decoded, states.decoder));
}

TEST(VlcStates, AreBuiltFromPrefixCodesOnly) {
    using Table = std::vector<ZorVLCTable_32s>;
    struct Case {
        const char* name;
        Table table;
        ZorStatus encoder, decoder;
    };
    const Case cases[] = {
        {"complete", {{0, 0, 1}, {1, 2, 2}, {2, 3, 2}}, zorStsNoErr, zorStsNoErr},
        {"with gaps", {{0, 1, 2}, {1, 0, 2}}, zorStsNoErr, zorStsNoErr},
        {"long words", {{1, 0, 1}, {0, 0xFFFFFF, 24}, {2, 0xFFFFFE, 24}}, zorStsNoErr, zorStsNoErr},
        {"value twice", {{0, 0, 1}, {0, 1, 1}}, zorStsBadArgErr, zorStsNoErr},
        {"value out of range", {{0, 0, 1}, {2, 1, 1}}, zorStsBadArgErr, zorStsNoErr},
        {"same word", {{0, 1, 2}, {1, 1, 2}}, zorStsNoErr, zorStsBadArgErr},
        {"prefix", {{0, 1, 2}, {1, 5, 4}}, zorStsNoErr, zorStsBadArgErr},
        {"prefix of a long word", {{0, 0, 1}, {1, 1, 14}}, zorStsNoErr, zorStsBadArgErr},
        {"long before its prefix", {{1, 1, 14}, {0, 0, 1}}, zorStsNoErr, zorStsBadArgErr},
        {"same long word", {{0, 9000, 14}, {1, 9000, 14}}, zorStsNoErr, zorStsBadArgErr},
        {"length 0", {{0, 0, 0}}, zorStsBadArgErr, zorStsBadArgErr},
        {"length 25", {{0, 0, 25}}, zorStsBadArgErr, zorStsBadArgErr},
        {"code longer than its length", {{0, 4, 2}}, zorStsBadArgErr, zorStsBadArgErr},
        {"negative code", {{0, -1, 2}}, zorStsBadArgErr, zorStsBadArgErr},
    };
    for (const Case& test : cases) {
        ZorVLCEncodeState_32s* encoder = nullptr;
        ZorVLCDecodeState_32s* decoder = nullptr;
        const int size = static_cast<int>(test.table.size());
        EXPECT_EQ(test.encoder, zorsVLCEncodeInitAlloc_32s(test.table.data(), size, &encoder)) << test.name;
        EXPECT_EQ(test.decoder, zorsVLCDecodeInitAlloc_32s(test.table.data(), size, &decoder)) << test.name;
        EXPECT_EQ(test.encoder == zorStsNoErr, encoder != nullptr);
        EXPECT_EQ(test.decoder == zorStsNoErr, decoder != nullptr);
        zorsVLCEncodeFree_32s(encoder);
        zorsVLCDecodeFree_32s(decoder);
    }
}

TEST(VlcStates, OfAnotherCodeAreRefused) {
    const States aac(books[0]), mp3(books[2]);
    const Values values(2);
    Zor32s bits = 0;
    EXPECT_EQ(zorStsContextErr, books[0].count(values, &bits, mp3.encoder));
    EXPECT_EQ(zorStsContextErr, books[2].count(values, &bits, aac.encoder));
    EXPECT_EQ(zorStsNullPtrErr, books[0].count(values, nullptr, aac.encoder));
    EXPECT_EQ(zorStsNullPtrErr, books[0].count(values, &bits, nullptr));
    const Book tooWide{"", false, 14, 0};
    EXPECT_EQ(zorStsBadArgErr, tooWide.count(values, &bits, mp3.encoder));
    EXPECT_EQ(zorStsNullPtrErr, zorsVLCEncodeFree_32s(nullptr));
    // A code of the right size whose words are too short to hold signs, as a hostile table may have them.
    std::vector<ZorVLCTable_32s> table;
    for (int i = 0; i < 1089; ++i)
        table.push_back({i, i % 4, 2});
    ZorVLCEncodeState_32s* state = nullptr;
    ASSERT_EQ(zorStsNoErr, zorsVLCEncodeInitAlloc_32s(table.data(), 1089, &state));
    EXPECT_EQ(zorStsContextErr, books[0].count(values, &bits, state));
    zorsVLCEncodeFree_32s(state);
}

} // namespace
