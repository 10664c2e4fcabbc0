// Noiseless decoding of AAC: every code word of every book, and streams that use each part of the syntax.
#include "../zor/src/tables/aac_scalefactor_huffman.h"
#include "../zor/src/tables/aac_spectral_huffman.h"
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

namespace spectral = zor::tables::aac_spectral_huffman;
namespace factors = zor::tables::aac_scalefactor_huffman;
using Lines = std::vector<Zor32s>;

/** A code word of a spectral book with the values of its lines. */
struct Word {
    unsigned code;
    int length;
    std::vector<int> values; // magnitudes where the book has sign bits
};

bool hasSigns(int book) {
    return book == 3 || book == 4 || book >= 7;
}

/** The code words of a book, values by the formulas of the standard's tables. */
std::vector<Word> wordsOf(int book) {
    static constexpr int base[] = {0, 3, 3, 3, 3, 9, 9, 8, 8, 13, 13, 17};
    std::vector<Word> words;
    for (int row = 0; row < spectral::rows; ++row) {
        if (spectral::codebook[row] != book)
            continue;
        const int offset = hasSigns(book) ? 0 : base[book] / 2;
        Word word{static_cast<unsigned>(spectral::code[row]), spectral::length[row], {}};
        for (int i = 0, rest = spectral::index[row]; i < (book <= 4 ? 4 : 2); ++i, rest /= base[book])
            word.values.insert(word.values.begin(), rest % base[book] - offset);
        words.push_back(word);
    }
    return words;
}

/** Writes a code word with signs and escapes; the values are the lines to come. */
void putWord(BitText& bits, int book, const std::vector<int>& values) {
    std::vector<int> coded;
    for (const int value : values)
        coded.push_back(!hasSigns(book) ? value : std::min(std::abs(value), book == 11 ? 16 : 12));
    static std::array<std::vector<Word>, 12> books;
    auto& words = books[static_cast<std::size_t>(book)];
    if (words.empty())
        words = wordsOf(book);
    const auto word =
        std::find_if(words.begin(), words.end(), [&](const Word& w) { return w.values == coded; });
    ASSERT_NE(words.end(), word);
    bits.put(word->code, word->length);
    for (const int value : values)
        if (hasSigns(book) && value != 0)
            bits.put(value < 0, 1);
    for (const int value : values)
        if (book == 11 && std::abs(value) >= 16) {
            int ones = 0;
            while (std::abs(value) >= 32 << ones)
                ++ones;
            bits.put((2U << ones) - 2, ones + 1);
            bits.put(static_cast<unsigned>(std::abs(value)) & ((16U << ones) - 1), ones + 4);
        }
}

void putDifference(BitText& bits, int difference) {
    bits.put(static_cast<unsigned>(factors::code[difference + 60]), factors::length[difference + 60]);
}

const int longOffsets[] = {0,   4,   8,   12,  16,  20,  24,  28,  32,  36,  40,  44,  48,  52,
                           56,  64,  72,  80,  88,  96,  108, 120, 132, 144, 156, 172, 188, 212,
                           240, 276, 320, 384, 448, 512, 576, 640, 704, 768, 832, 896, 960, 1024};
const int shortOffsets[] = {0, 4, 8, 12, 16, 20, 24, 32, 40, 48, 64, 92, 128};

/** A channel with its outputs, decoded from the bits. */
struct Channel {
    ZorAacChannel info{};
    std::vector<Zor16s> scaleFactor = std::vector<Zor16s>(8 * 15, -1);
    Lines spectrum = Lines(1024, -1);
    std::vector<Zor8u> books = std::vector<Zor8u>(8 * 15, 99);
    std::vector<Zor8s> tnsCoef = std::vector<Zor8s>(60, 99);
    std::ptrdiff_t used = 0; // bits

    explicit Channel(bool isShort, std::vector<int> groups = {}) {
        info.winSequence = isShort ? zorAacEightShort : zorAacOnlyLong;
        info.maxSfb = isShort ? 12 : 41;
        if (groups.empty())
            groups.assign(isShort ? 8 : 1, 1);
        info.numWinGrp = static_cast<int>(groups.size());
        std::copy(groups.begin(), groups.end(), info.winGrpLen);
    }

    ZorStatus decode(const std::vector<Zor8u>& bytes, int profile = -1, int scaleFlag = 0) {
        const Zor8u* position = bytes.data();
        const Zor8u* end = position + bytes.size();
        int offset = 0;
        const ZorStatus status =
            profile < 0
                ? zorsNoiselessDecoder_LC_AAC(&position, &offset, end, &info, scaleFactor.data(),
                                              spectrum.data(), books.data(), tnsCoef.data())
                : zorsNoiselessDecode_AAC(&position, &offset, end, &info, scaleFactor.data(), spectrum.data(),
                                          books.data(), tnsCoef.data(), profile, scaleFlag);
        used = (position - bytes.data()) * 8 + offset;
        return status;
    }
};

/** The head of a long stream: gain 100, all 41 bands in one section of a book. */
BitText longHead(int book, int bands = 41) {
    BitText bits;
    bits.put(100, 8).put(static_cast<unsigned>(book), 4);
    int left = bands;
    for (; left >= 31; left -= 31)
        bits.put(31, 5);
    bits.put(static_cast<unsigned>(left), 5);
    return bits;
}

TEST(Noiseless, DecodesEveryCodeWordOfEveryBook) {
    for (int book = 1; book <= 11; ++book) {
        const std::vector<Word> words = wordsOf(book);
        const auto dimension = words[0].values.size();
        unsigned draw = 1;
        for (std::size_t next = 0; next < words.size();) {
            BitText bits = longHead(book);
            for (int band = 0; band < 41; ++band)
                putDifference(bits, 0);
            bits.put(0, 3);
            Lines expected;
            for (std::size_t i = 0; i < 1024 / dimension; ++i, ++next) {
                std::vector<int> values = words[next % words.size()].values;
                for (int& value : values) {
                    draw = draw * 1664525 + 1013904223;
                    if (book == 11 && value == 16)
                        value = 16 << (draw >> 20) % 9 | static_cast<int>((draw >> 8) % 16);
                    if (hasSigns(book) && (draw >> 31))
                        value = -value;
                    expected.push_back(value);
                }
                putWord(bits, book, values);
            }
            Channel channel(false);
            ASSERT_EQ(zorStsNoErr, channel.decode(bits.bytes()));
            ASSERT_EQ(expected, channel.spectrum) << "book " << book;
            ASSERT_EQ(bits.size(), channel.used);
        }
    }
}

TEST(Noiseless, DecodesTheLargestEscape) {
    BitText bits = longHead(11, 1);
    putDifference(bits, 0);
    bits.put(0, 3);
    for (const int value : {8191, -8191, 16, -31})
        putWord(bits, 11, {value, -value}), putWord(bits, 11, {value, 0});
    Channel channel(false);
    channel.info.maxSfb = 1;
    ASSERT_EQ(zorStsNoErr, channel.decode(bits.bytes()));
    EXPECT_EQ(8191, channel.spectrum[0]);
    EXPECT_EQ(-8191, channel.spectrum[1]);
    EXPECT_EQ(Lines(1020), Lines(channel.spectrum.begin() + 4, channel.spectrum.end()));
    BitText tooLong = longHead(11, 1);
    putDifference(tooLong, 0);
    tooLong.put(0, 3)
        .put("00100"
             "00"
             "1111111110"
             "1111111111111")
        .put(0, 32);
    EXPECT_EQ(zorStsBadStreamErr, channel.decode(tooLong.bytes()));
}

/** The stream of the speed tests: sections of one length, a fixed code word of each section's book. */
struct FixedStream {
    BitText bits;
    Lines lines;
    std::vector<Zor8u> books;
};

FixedStream fixedStream(bool isShort, int sectLen, int tuple) {
    struct Fixed {
        unsigned code;
        int length;
        std::vector<int> values;
    };
    static const Fixed fixed[] = {{0, 0, {}},
                                  {109, 7, {0, 0, 1, 1}}, // index 44 of book 1
                                  {46, 6, {1, 1, 0, 0}},
                                  {495, 9, {0, 1, 0, 2}},
                                  {243, 8, {0, 0, 2, 1}},
                                  {2028, 11, {1, 4}},
                                  {37, 6, {2, 1}},
                                  {494, 9, {1, 6}},
                                  {49, 6, {4, 3}},
                                  {989, 10, {2, 7}},
                                  {477, 9, {10, 1}},
                                  {4, 5, {511, 511}}};
    FixedStream stream;
    const int windows = isShort ? 8 : 1, bands = isShort ? 12 : 41;
    const int* offsets = isShort ? shortOffsets : longOffsets;
    stream.bits.put(100, 8);
    for (int window = 0; window < windows; ++window)
        for (int band = 0; band < bands; band += sectLen) {
            const int book = tuple == 4 ? std::rand() % 4 + 1 : tuple == 2 ? std::rand() % 6 + 5 : 11;
            int length = std::min(sectLen, bands - band);
            stream.books.insert(stream.books.end(), static_cast<std::size_t>(length),
                                static_cast<Zor8u>(book));
            stream.bits.put(static_cast<unsigned>(book), 4);
            const int escape = isShort ? 7 : 31;
            for (; length >= escape; length -= escape)
                stream.bits.put(static_cast<unsigned>(escape), isShort ? 3 : 5);
            stream.bits.put(static_cast<unsigned>(length), isShort ? 3 : 5);
        }
    for (int band = 0; band < windows * bands + 3; ++band)
        stream.bits.put(0, 1);
    for (int window = 0; window < windows; ++window)
        for (int band = 0; band < bands; ++band) {
            const int book = stream.books[static_cast<std::size_t>(window * bands + band)];
            const Fixed& word = fixed[book];
            for (int line = offsets[band]; line < offsets[band + 1];
                 line += static_cast<int>(word.values.size())) {
                stream.bits.put(word.code, word.length);
                if (hasSigns(book))
                    stream.bits.put(0, 2);
                if (book == 11)
                    stream.bits.put("1111011111111").put("1111011111111");
                stream.lines.insert(stream.lines.end(), word.values.begin(), word.values.end());
            }
        }
    return stream;
}

TEST(Noiseless, DecodesTheStreamsOfTheSpeedTests) {
    for (const bool isShort : {true, false})
        for (const int sectLen : {1, 4, 12, 41})
            for (const int tuple : {4, 2, 11}) {
                const int bands = isShort ? 12 : 41;
                if (sectLen > bands || (tuple == 11 && sectLen != bands))
                    continue;
                const FixedStream stream = fixedStream(isShort, sectLen, tuple);
                ASSERT_LE(stream.bits.size(), 3072 * 8);
                for (const int profile : {-1, static_cast<int>(zorAacMain), static_cast<int>(zorAacLTP)}) {
                    Channel channel(isShort);
                    std::vector<Zor8u> bytes = stream.bits.bytes();
                    bytes.resize(3072);
                    ASSERT_EQ(zorStsNoErr, channel.decode(bytes, profile));
                    EXPECT_EQ(stream.lines, channel.spectrum) << isShort << " " << sectLen << " " << tuple;
                    EXPECT_EQ(stream.bits.size(), channel.used);
                    channel.books.resize(stream.books.size());
                    EXPECT_EQ(stream.books, channel.books);
                    EXPECT_EQ(std::vector<Zor16s>(stream.books.size(), 100),
                              std::vector<Zor16s>(channel.scaleFactor.begin(),
                                                  channel.scaleFactor.begin() +
                                                      static_cast<int>(stream.books.size())));
                    EXPECT_EQ(100, channel.info.globalGain);
                    EXPECT_EQ(0, channel.info.tnsPresent + channel.info.pulsePresent);
                }
            }
}

TEST(Noiseless, TheThousandthDecodingEqualsTheFirst) {
    const FixedStream stream = fixedStream(true, 4, 2);
    const std::vector<Zor8u> bytes = stream.bits.bytes();
    Channel channel(true);
    for (int call = 1; call <= 1000; ++call) {
        ASSERT_EQ(zorStsNoErr, channel.decode(bytes));
        if (call == 1 || call == 1000) {
            EXPECT_EQ(stream.lines, channel.spectrum);
        }
        channel.spectrum.assign(1024, call);
    }
}

TEST(Noiseless, GroupsShareSectionsAndInterleaveTheirWindows) {
    Channel channel(true, {3, 5});
    channel.info.maxSfb = 2;
    BitText bits;
    bits.put(60, 8);
    bits.put(1, 4).put(2, 3);                     // group 0: two bands of book 1
    bits.put(0, 4).put(1, 3).put(5, 4).put(1, 3); // group 1: a band of zeros, one of book 5
    for (const int difference : {-5, 7, 1})
        putDifference(bits, difference);
    bits.put(0, 3);
    Lines group0, group1(20);
    for (int word = 0; word < 2 * 3; ++word) {
        const std::vector<int> values = {word % 3 - 1, 0, 1, -1};
        putWord(bits, 1, values);
        group0.insert(group0.end(), values.begin(), values.end());
    }
    for (int word = 0; word < 2 * 5; ++word) {
        putWord(bits, 5, {word % 9 - 4, 2});
        group1.insert(group1.end(), {word % 9 - 4, 2});
    }
    ASSERT_EQ(zorStsNoErr, channel.decode(bits.bytes()));
    group0.resize(3 * 128);
    group1.resize(5 * 128);
    group0.insert(group0.end(), group1.begin(), group1.end());
    EXPECT_EQ(group0, channel.spectrum);
    EXPECT_EQ((std::vector<Zor16s>{55, 62, 0, 63}),
              std::vector<Zor16s>(channel.scaleFactor.begin(), channel.scaleFactor.begin() + 4));
}

TEST(Noiseless, NoiseAndIntensityBandsHaveScalesOfTheirOwn) {
    Channel channel(false);
    channel.info.maxSfb = 6;
    BitText bits;
    bits.put(120, 8);
    for (const unsigned book : {13U, 15U, 2U, 13U, 14U, 2U})
        bits.put(book, 4).put(1, 5);
    bits.put(256 + 10, 9);    // noise: 120 - 90 + 10 = 40
    putDifference(bits, -3);  // position -3
    putDifference(bits, 4);   // factor 124
    putDifference(bits, 60);  // noise 100
    putDifference(bits, -60); // position -63
    putDifference(bits, -24); // factor 100
    bits.put(0, 3);
    for (int word = 0; word < 2; ++word)
        putWord(bits, 2, {1, -1, 0, 1});
    ASSERT_EQ(zorStsNoErr, channel.decode(bits.bytes()));
    EXPECT_EQ((std::vector<Zor16s>{40, -3, 124, 100, -63, 100}),
              std::vector<Zor16s>(channel.scaleFactor.begin(), channel.scaleFactor.begin() + 6));
    EXPECT_EQ((Lines{0, 0, 1, -1, 0, 1}), Lines(channel.spectrum.begin() + 6, channel.spectrum.begin() + 12));
}

/** A long channel of one band of zeros, up to the bit that announces pulses. */
BitText zeroBand() {
    return BitText().put(100, 8).put(0, 4).put(1, 5);
}

TEST(Noiseless, AddsPulsesAwayFromZero) {
    Channel channel(false);
    channel.info.maxSfb = 3;
    BitText bits = longHead(1, 3);
    for (int band = 0; band < 3; ++band)
        putDifference(bits, 0);
    // Three pulses from band 1 (line 4): lines 5, 6 and 8.
    bits.put(1, 1).put(2, 2).put(1, 6).put(1, 5).put(9, 4).put(1, 5).put(15, 4).put(2, 5).put(3, 4).put(0, 2);
    for (int word = 0; word < 3; ++word)
        putWord(bits, 1, {-1, 1, 0, 1});
    ASSERT_EQ(zorStsNoErr, channel.decode(bits.bytes()));
    EXPECT_EQ((Lines{-1, 1, 0, 1, -1, 10, -15, 1, -4, 1, 0, 1, 0}),
              Lines(channel.spectrum.begin(), channel.spectrum.begin() + 13));
    EXPECT_EQ(1, channel.info.pulsePresent);
}

TEST(Noiseless, ReadsFilters) {
    Channel channel(false);
    channel.info.maxSfb = 1;
    BitText bits = zeroBand();
    bits.put(0, 1).put(1, 1);
    bits.put(2, 2).put(1, 1);                                                     // two filters, 4 bits
    bits.put(20, 6).put(3, 5).put(1, 1).put(0, 1).put(7, 4).put(8, 4).put(15, 4); // 7 -8 -1
    bits.put(11, 6).put(2, 5).put(0, 1).put(1, 1).put(3, 3).put(4, 3);            // 3 -4 in three bits
    bits.put(0, 1);
    ASSERT_EQ(zorStsNoErr, channel.decode(bits.bytes()));
    const ZorAacTns& tns = channel.info.tns;
    EXPECT_EQ(2, tns.numFilt[0]);
    EXPECT_EQ(4, tns.coefRes[0]);
    EXPECT_EQ((std::vector<int>{20, 11, 3, 2, 1, 0}),
              (std::vector<int>{tns.regionLen[0], tns.regionLen[1], tns.order[0], tns.order[1],
                                tns.direction[0], tns.direction[1]}));
    EXPECT_EQ((std::vector<Zor8s>{7, -8, -1, 3, -4}),
              std::vector<Zor8s>(channel.tnsCoef.begin(), channel.tnsCoef.begin() + 5));
}

TEST(Noiseless, ScalableLayersHaveNoToolBits) {
    Channel channel(false);
    channel.info.maxSfb = 1;
    const BitText bits = zeroBand();
    ASSERT_EQ(zorStsNoErr, channel.decode(bits.bytes(), zorAacLC, 1));
    EXPECT_EQ(bits.size(), channel.used);
}

TEST(Noiseless, ForbiddenStreamsAreRefused) {
    struct Case {
        const char* name;
        BitText bits;
        int profile;
        ZorStatus status;
    };
    const BitText band = zeroBand();
    const auto filter = [&](int order) {
        BitText bits = band;
        return bits.put(0, 1)
            .put(1, 1)
            .put(1, 2)
            .put(0, 1)
            .put(1, 6)
            .put(static_cast<unsigned>(order), 5)
            .put(0, 200);
    };
    const Case cases[] = {
        {"reserved book", BitText().put(100, 8).put(12, 4).put(1, 5).put(0, 32), -1, zorStsBadStreamErr},
        {"section too long", BitText().put(100, 8).put(1, 4).put(2, 5).put(0, 32), -1, zorStsBadStreamErr},
        {"gain control", BitText(band).put("001").put(0, 32), -1, zorStsBadStreamErr},
        {"pulse behind the last band", BitText(band).put("1").put(0, 2).put(41, 6).put(0, 32), -1,
         zorStsBadStreamErr},
        {"pulse behind the last line",
         BitText(band)
             .put("1")
             .put(3, 2)
             .put(40, 6)
             .put(31, 5)
             .put(0, 4)
             .put(31, 5)
             .put(0, 4)
             .put(31, 5)
             .put(0, 10)
             .put(0, 32),
         -1, zorStsBadStreamErr},
        {"order 13 of low complexity", filter(13), -1, zorStsBadStreamErr},
        {"order 13 of Main", filter(13), zorAacMain, zorStsNoErr},
        {"order 21 of Main", filter(21), zorAacMain, zorStsBadStreamErr},
        {"no end of zero sections", BitText().put(100, 8), -1, zorStsStreamEndErr},
    };
    for (const Case& test : cases) {
        Channel channel(false);
        channel.info.maxSfb = 1;
        EXPECT_EQ(test.status, channel.decode(test.bits.bytes(), test.profile)) << test.name;
        if (test.status != zorStsNoErr) {
            EXPECT_EQ(0, channel.used) << test.name;
        }
    }
    // A scale factor below 0, and pulses of short windows.
    Channel below(false);
    below.info.maxSfb = 1;
    BitText bits = BitText().put(10, 8).put(1, 4).put(1, 5);
    putDifference(bits, -11);
    EXPECT_EQ(zorStsBadStreamErr, below.decode(bits.put(0, 64).bytes()));
    Channel pulsed(true, {8});
    pulsed.info.maxSfb = 1;
    EXPECT_EQ(zorStsBadStreamErr,
              pulsed.decode(BitText().put(9, 8).put(0, 4).put(1, 3).put("1").put(0, 64).bytes()));
}

TEST(Noiseless, CutAndRandomStreamsEndWithAStatus) {
    const FixedStream stream = fixedStream(false, 4, 2);
    std::vector<Zor8u> bytes = stream.bits.bytes();
    while (!bytes.empty()) {
        bytes.pop_back();
        const std::vector<Zor8u> cut(bytes.begin(), bytes.end());
        Channel channel(false);
        const ZorStatus status = cut.empty() ? zorStsStreamEndErr : channel.decode(cut);
        ASSERT_EQ(zorStsStreamEndErr, status) << bytes.size();
    }
    int succeeded = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        Channel channel(seed % 2 == 0);
        succeeded +=
            channel.decode(randomInts<Zor8u>(static_cast<int>(seed % 700) + 1, 0, 255, seed), zorAacLTP) == 0;
    }
    EXPECT_LT(succeeded, 3000);
}

TEST(Noiseless, ChannelInformationIsChecked) {
    struct Case {
        const char* name;
        ZorStatus status;
        void (*spoil)(ZorAacChannel&);
    };
    const Case cases[] = {
        {"sequence", zorStsBadArgErr, [](ZorAacChannel& c) { c.winSequence = 4; }},
        {"rate", zorStsBadArgErr, [](ZorAacChannel& c) { c.samplingRateIndex = 12; }},
        {"bands", zorStsSizeErr, [](ZorAacChannel& c) { c.maxSfb = 13; }},
        {"no group", zorStsSizeErr, [](ZorAacChannel& c) { c.numWinGrp = 0; }},
        {"nine groups", zorStsSizeErr, [](ZorAacChannel& c) { c.numWinGrp = 9; }},
        {"too few windows", zorStsSizeErr, [](ZorAacChannel& c) { c.numWinGrp = 7; }},
        {"empty group", zorStsSizeErr, [](ZorAacChannel& c) { c.winGrpLen[0] = 0, c.winGrpLen[1] = 2; }},
        {"long windows in groups", zorStsSizeErr, [](ZorAacChannel& c) { c.winSequence = 0; }},
    };
    const std::vector<Zor8u> bytes(64);
    for (const Case& test : cases) {
        Channel channel(true);
        test.spoil(channel.info);
        EXPECT_EQ(test.status, channel.decode(bytes)) << test.name;
        EXPECT_EQ(-1, channel.spectrum[0]) << test.name;
    }
    Channel channel(true);
    EXPECT_EQ(zorStsBadArgErr, channel.decode(bytes, 2));
    EXPECT_EQ(zorStsBadArgErr, channel.decode(bytes, zorAacLC, 2));
}

} // namespace
