// The floating-point tools of AAC beside the whole-number ones, which have tests by formula, and the readers
// of headers and window information against streams written by hand.
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

using Lines = std::vector<Zor32s>;
using Floats = std::vector<Zor32f>;
using Bytes = std::vector<Zor8u>;

struct Windows {
    int winLen, maxSfb, rate;
    std::vector<int> groups;
    int count() const { return static_cast<int>(groups.size()); }
    int bands() const { return count() * maxSfb; }
};
const Windows frames[] = {
    {1024, 49, 4, {1}}, {1024, 20, 3, {1}}, {128, 14, 4, {1, 1, 1, 1, 1, 1, 1, 1}}, {128, 9, 8, {3, 1, 4}}};

class AacFloat : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, AacFloat, testing::ValuesIn(zorPaths), zorPathName);

Floats floats(const Lines& lines) {
    return {lines.begin(), lines.end()};
}

/** Each float within half a unit of rounding, and some units of its last place, of the whole number. */
void expectNear(const Lines& whole, const Floats& found, double units, const std::string& what) {
    for (std::size_t i = 0; i < whole.size(); ++i)
        ASSERT_NEAR(found[i], whole[i], 0.5001 + units * std::abs(found[i]) * std::exp2(-23)) << what << i;
}

TEST_P(AacFloat, LineToolsAreThoseOfWholeNumbersWithoutRounding) {
    for (const Windows& f : frames) {
        const auto* const groups = f.groups.data();
        const auto factors = randomInts<Zor16s>(f.bands(), 90, 140, 1);
        const auto energies = randomInts<Zor16s>(f.bands(), 0, 80, 9);
        const auto positions = randomInts<Zor16s>(f.bands(), -8, 20, 2);
        const auto books = randomInts<Zor8u>(f.bands(), 0, 15, 3),
                   others = randomInts<Zor8u>(f.bands(), 0, 15, 4);
        const auto used = randomInts<Zor8u>(f.bands(), 0, 1, 5);
        Lines quantised = randomInts<Zor32s>(1024, -500, 500, 6);
        Floats lines(1024, 5);
        ASSERT_EQ(zorStsNoErr,
                  zorsQuantInv_AAC_32s32f(quantised.data(), lines.data(), factors.data(), books.data(),
                                          f.count(), groups, f.maxSfb, f.rate, f.winLen));
        Lines whole(1024, 7);
        zorsQuantInv_AAC_32s_I(quantised.data(), factors.data(), books.data(), f.count(), groups, f.maxSfb,
                               f.rate, f.winLen);
        zorsDeinterleaveSpectrum_AAC_32s(quantised.data(), whole.data(), f.count(), groups, f.maxSfb, f.rate,
                                         f.winLen);
        expectNear(whole, lines, 2, "dequantised ");

        // Whole numbers from here on, so that both begin alike.
        const Lines left = randomInts<Zor32s>(1024, -1000000, 1000000, 7),
                    right = randomInts<Zor32s>(1024, -1000000, 1000000, 8);
        for (const int mask : {0, 1, 2}) {
            Lines l = left, r = right;
            Floats fl = floats(left), fr = floats(right);
            zorsDecodeMsStereoPair_AAC_32s_I(l.data(), r.data(), mask, used.data(), books.data(),
                                             others.data(), f.count(), groups, f.maxSfb, f.rate, f.winLen);
            ASSERT_EQ(zorStsNoErr, zorsDecodeMsStereo_AAC_32f_I(fl.data(), fr.data(), mask, used.data(),
                                                                books.data(), others.data(), f.count(),
                                                                groups, f.maxSfb, f.rate, f.winLen));
            ASSERT_EQ(floats(l), fl);
            ASSERT_EQ(floats(r), fr);
            zorsDecodeIsStereo_AAC_32s(left.data(), r.data(), positions.data(), mask, used.data(),
                                       others.data(), f.count(), groups, f.maxSfb, f.rate, f.winLen);
            const Floats carrier = floats(left);
            ASSERT_EQ(zorStsNoErr, zorsDecodeIsStereo_AAC_32f(carrier.data(), fr.data(), positions.data(),
                                                              mask, used.data(), others.data(), f.count(),
                                                              groups, f.maxSfb, f.rate, f.winLen));
            expectNear(r, fr, 2, "intensity ");
        }
        Zor32u state = 9, floatState = 9;
        for (const int second : {0, 1}) {
            Lines noise = left, bands(static_cast<std::size_t>(f.bands())), floatBands = bands;
            Floats floatNoise = floats(left);
            zorsDecodePNS_AAC_32s(noise.data(), energies.data(), books.data(), &state, bands.data(), second,
                                  used.data(), f.count(), groups, f.maxSfb, f.rate, f.winLen);
            ASSERT_EQ(zorStsNoErr, zorsDecodePNS_AAC_32f(floatNoise.data(), energies.data(), books.data(),
                                                         &floatState, floatBands.data(), second, used.data(),
                                                         f.count(), groups, f.maxSfb, f.rate, f.winLen));
            expectNear(noise, floatNoise, 2, "noise ");
            ASSERT_EQ(state, floatState);
            ASSERT_EQ(bands, floatBands);
        }
        const auto flags = randomInts<Zor8u>(52, 0, 1, 10);
        Lines sum = left;
        Floats floatSum = floats(left);
        const Floats addend = floats(right);
        const int sequence = f.winLen == 128 ? zorAacEightShort : zorAacOnlyLong;
        zorsLongTermReconstruct_AAC_32s(right.data(), sum.data(), flags.data(), sequence, f.maxSfb, f.rate);
        ASSERT_EQ(zorStsNoErr, zorsLongTermReconstruct_AAC_32f(addend.data(), floatSum.data(), flags.data(),
                                                               sequence, f.maxSfb, f.rate));
        ASSERT_EQ(floats(sum), floatSum);
    }
}

TEST_P(AacFloat, NoiseShapingIsThatOfWholeNumbersAndUndoesItself) {
    const int orders[] = {1, 4, 12}, regions[] = {9, 10, 11}, directions[] = {0, 1, 0}, resolution[] = {4},
              count[] = {3};
    const auto codes = randomInts<Zor8s>(17, -3, 3, 1);
    const Lines lines = randomInts<Zor32s>(1024, -1000000, 1000000, 2);
    Lines whole = lines;
    Floats found = floats(lines);
    const auto call = [&](auto function, auto* data) {
        return function(data, count, regions, orders, resolution, codes.data(), directions, 49, zorAacLC, 4,
                        1024);
    };
    ASSERT_EQ(zorStsNoErr, call(zorsEncodeTNS_AAC_32s_I, whole.data()));
    ASSERT_EQ(zorStsNoErr, call(zorsEncodeTNS_AAC_32f_I, found.data()));
    ASSERT_NE(lines, whole);
    for (std::size_t i = 0; i < lines.size(); ++i)
        ASSERT_NEAR(whole[i], found[i], 2) << i; // of a million: 24 bits
    ASSERT_EQ(zorStsNoErr, call(zorsDecodeTNS_AAC_32f_I, found.data()));
    for (std::size_t i = 0; i < lines.size(); ++i)
        ASSERT_NEAR(lines[i], found[i], 16) << i;
}

struct Block {
    int sequence, shape, before;
};

TEST_P(AacFloat, TransformsAreThoseOfWholeNumbersAndAPair) {
    const Block blocks[] = {{zorAacOnlyLong, 0, 0},   {zorAacLongStart, 1, 0}, {zorAacEightShort, 0, 1},
                            {zorAacEightShort, 1, 0}, {zorAacLongStop, 1, 1},  {zorAacOnlyLong, 0, 1},
                            {zorAacOnlyLong, 0, 0}};
    const int count = static_cast<int>(std::size(blocks));
    const Lines signal = randomInts<Zor32s>(1024 * (count + 1), -30000, 30000, 3);
    const Floats samples = floats(signal);
    Floats overlap(1024), out(1024), lines(1024);
    Lines expected(1024), buffer(2048);
    for (int b = 0; b < count; ++b) {
        const auto [sequence, shape, before] = blocks[b];
        const auto start = static_cast<std::size_t>(1024 * b);
        ASSERT_EQ(zorStsNoErr, zorsMDCTFwd_AAC_32f(&samples[start], lines.data(), sequence, shape, before));
        const int length = sequence == zorAacEightShort ? 128 : 1024;
        for (int w = 0; w < 1024 / length; ++w) {
            const Zor32s* const first = &signal[start] + (length == 128 ? 448 + 128 * w : 0);
            Lines past(first, first + length);
            zorsMDCTFwd_AAC_32s(first + length, expected.data() + w * length, past.data(), sequence, shape,
                                w == 0 ? before : shape, buffer.data());
        }
        for (std::size_t i = 0; i < 1024; ++i)
            ASSERT_NEAR(expected[i], lines[i], 2) << b << " line " << i; // of four millions
        ASSERT_EQ(zorStsNoErr,
                  zorsMDCTInv_AAC_32f(lines.data(), out.data(), overlap.data(), sequence, shape, before));
        for (std::size_t i = 0; b > 0 && i < 1024; ++i)
            ASSERT_NEAR(samples[start + i], out[i], 0.05) << b << " sample " << i;
    }
    EXPECT_EQ(zorStsBadArgErr, zorsMDCTInv_AAC_32f(lines.data(), out.data(), overlap.data(), 4, 0, 0));
    EXPECT_EQ(zorStsBadArgErr, zorsMDCTFwd_AAC_32f(out.data(), lines.data(), 0, 2, 0));
}

TEST_P(AacFloat, LongTermPredictionIsThatOfWholeNumbers) {
    const Lines history = randomInts<Zor32s>(4096, -30000, 30000, 4);
    const Floats samples = floats(history);
    for (const int sequence : {zorAacOnlyLong, zorAacLongStop, zorAacEightShort}) {
        Lines whole(2048);
        Floats found(1024);
        zorsLongTermPredict_AAC_32s(history.data(), whole.data(), 1234, 5, sequence, 1, 0);
        ASSERT_EQ(zorStsNoErr,
                  zorsLongTermPredict_AAC_32f(samples.data(), found.data(), 1234, 5, sequence, 1, 0));
        for (std::size_t i = 0; i < 1024; ++i) // the whole numbers round each sample, too
            ASSERT_NEAR(whole[i], found[i], 150) << i;
    }
    Floats found(1024);
    EXPECT_EQ(zorStsBadArgErr, zorsLongTermPredict_AAC_32f(samples.data(), found.data(), 2048, 0, 0, 0, 0));
}

BitText adtsHeader(int protectionAbsent, int rate, int length, int blocks) {
    BitText bits;
    bits.put(0xFFF, 12).put("1").put("00").put(static_cast<unsigned>(protectionAbsent), 1).put(1, 2);
    bits.put(static_cast<unsigned>(rate), 4)
        .put("0")
        .put(6, 3)
        .put("0000")
        .put(static_cast<unsigned>(length), 13);
    return bits.put(0x123, 11).put(static_cast<unsigned>(blocks - 1), 2);
}

TEST(AacStream, FrameHeadersGiveSizesAndRates) {
    const auto read = [](const Bytes& bytes, ZorAacFrameHeader& header) {
        const Zor8u* at = bytes.data();
        const ZorStatus status = zorsUnpackFrameHeader_AAC(&at, bytes.data() + bytes.size(), &header);
        EXPECT_EQ(status == zorStsNoErr ? header.headerSize : 0, at - bytes.data());
        return status;
    };
    ZorAacFrameHeader header{};
    ASSERT_EQ(zorStsNoErr, read(adtsHeader(1, 4, 400, 1).bytes(), header));
    EXPECT_EQ(std::vector({1, 1, 4, 6, 1, 7, 400, 44100, 137812, 0x123}),
              std::vector({header.id, header.profile, header.samplingRateIndex, header.channelConfiguration,
                           header.blocks, header.headerSize, header.frameLength, header.samplingRate,
                           header.bitRate, header.bufferFullness}));
    ASSERT_EQ(zorStsNoErr, read(adtsHeader(0, 11, 1000, 3).put(0, 48).bytes(), header));
    EXPECT_EQ(std::vector({13, 3, 8000, 20833}),
              std::vector({header.headerSize, header.blocks, header.samplingRate, header.bitRate}));
    EXPECT_EQ(zorStsStreamEndErr,
              read(adtsHeader(0, 11, 1000, 3).put(0, 40).bytes(), header)); // in the check word
    EXPECT_EQ(zorStsBadStreamErr, read(adtsHeader(1, 12, 400, 1).bytes(), header));
    EXPECT_EQ(zorStsBadStreamErr, read(adtsHeader(1, 4, 6, 1).bytes(), header));
    Bytes bytes = adtsHeader(1, 4, 400, 1).bytes();
    bytes.pop_back();
    EXPECT_EQ(zorStsStreamEndErr, read(bytes, header));
    bytes[1] = 0;
    EXPECT_EQ(zorStsBadStreamErr, read(bytes, header));
}

/** Reads an ics_info behind three bits, and judges where the position is afterwards. */
ZorStatus readInfo(const BitText& text, ZorAacIcsInfo& info, int profile, int rate, int common) {
    BitText bits = BitText().put("111");
    for (int i = 0; i < text.size(); ++i)
        bits.put(text.bytes()[static_cast<std::size_t>(i / 8)] >> (7 - i % 8) & 1, 1);
    const Bytes bytes = bits.bytes();
    const Zor8u* at = bytes.data();
    int offset = 3;
    const ZorStatus status =
        zorsUnpackIcsInfo_AAC(&at, &offset, bytes.data() + bytes.size(), &info, profile, rate, common);
    EXPECT_EQ(status == zorStsNoErr ? bits.size() : 3, zorBitsBetween(bytes.data(), 0, at, offset));
    return status;
}

TEST(AacStream, WindowInformationOfEveryProfile) {
    ZorAacIcsInfo info{};
    ASSERT_EQ(zorStsNoErr, readInfo(BitText().put("0").put("10").put("1").put(12, 4).put("1100101"), info,
                                    zorAacLC, 4, 0));
    EXPECT_EQ(std::vector({2, 1, 12, 128, 4}),
              std::vector({info.winSequence, info.winShape, info.maxSfb, info.winLen, info.numWinGrp}));
    EXPECT_EQ(std::vector({3, 1, 2, 2}), std::vector(info.winGrpLen, info.winGrpLen + 4));

    const BitText longHead = BitText().put("0").put("01").put("0").put(45, 6);
    ASSERT_EQ(zorStsNoErr, readInfo(BitText(longHead).put("0"), info, zorAacLC, 4, 1));
    EXPECT_EQ(std::vector({1, 0, 45, 1024, 1, 1, 0}),
              std::vector({info.winSequence, info.winShape, info.maxSfb, info.winLen, info.numWinGrp,
                           info.winGrpLen[0], int{info.ltp[0].ltpFlag[0]}}));
    EXPECT_EQ(zorStsBadStreamErr, readInfo(BitText(longHead).put("1"), info, zorAacLC, 4, 1));

    BitText main = BitText(longHead).put("1").put("1").put(17, 5); // 40 of the 45 bands can be predicted
    for (int band = 0; band < 40; ++band)
        main.put(band % 3 == 0, 1);
    ASSERT_EQ(zorStsNoErr, readInfo(main, info, zorAacMain, 4, 0));
    EXPECT_EQ(17, info.predictorReset);
    for (int band = 0; band < 41; ++band)
        EXPECT_EQ(band % 3 == 0 && band < 40, info.predictionUsed[band] == 1) << band;

    BitText ltp = BitText(longHead).put("1").put("0").put("1").put(1500, 11).put(6, 3);
    for (int band = 0; band < 40; ++band)
        ltp.put(band % 4 == 1, 1);
    ASSERT_EQ(zorStsNoErr, readInfo(ltp, info, zorAacLTP, 4, 1));
    EXPECT_EQ(std::vector({0, 1, 1500, 6}),
              std::vector({int{info.ltp[0].ltpFlag[0]}, int{info.ltp[1].ltpFlag[0]}, info.ltp[1].lag,
                           info.ltp[1].coefIndex}));
    for (int band = 0; band < 45; ++band)
        EXPECT_EQ(band % 4 == 1 && band < 40, info.ltp[1].ltpFlag[band + 1] == 1) << band;

    EXPECT_EQ(zorStsBadStreamErr,
              readInfo(BitText().put("0").put("00").put("0").put(50, 6).put("0"), info, zorAacLC, 4, 0));
    EXPECT_EQ(zorStsStreamEndErr, readInfo(BitText().put("0").put("00"), info, zorAacLC, 4, 0));
    EXPECT_EQ(zorStsBadArgErr, readInfo(longHead, info, 2, 4, 0));
}

TEST(AacStream, TheGainMayStandAheadOfTheWindowInformation) {
    // One band of zeros, no tools; with the gain of 77 and without.
    for (const bool behind : {false, true}) {
        BitText bits;
        if (!behind)
            bits.put(77, 8);
        bits.put(0, 4).put(1, 5).put("000");
        const Bytes bytes = bits.bytes();
        ZorAacChannel channel{};
        channel.maxSfb = channel.numWinGrp = channel.winGrpLen[0] = 1;
        channel.globalGain = behind ? 77 : -1;
        const Zor8u* at = bytes.data();
        int offset = 0;
        std::vector<Zor16s> factors(1);
        Lines lines(1024, 3);
        Bytes books(1);
        std::vector<Zor8s> coef(60);
        const auto decode = behind ? zorsNoiselessDecodeBehindGain_AAC : zorsNoiselessDecode_AAC;
        ASSERT_EQ(zorStsNoErr, decode(&at, &offset, bytes.data() + bytes.size(), &channel, factors.data(),
                                      lines.data(), books.data(), coef.data(), zorAacLC, 0));
        EXPECT_EQ(77, channel.globalGain);
        EXPECT_EQ(bits.size(), zorBitsBetween(bytes.data(), 0, at, offset));
        EXPECT_EQ(Lines(1024), lines);
        channel.globalGain = 256;
        at = bytes.data();
        offset = 0;
        EXPECT_EQ(behind ? zorStsBadArgErr : zorStsNoErr,
                  decode(&at, &offset, bytes.data() + bytes.size(), &channel, factors.data(), lines.data(),
                         books.data(), coef.data(), zorAacLC, 0));
    }
}

TEST(AacStream, BandTables) {
    const Zor16u* offset = nullptr;
    int bands = 0;
    ASSERT_EQ(zorStsNoErr, zorsGetSfbTable_AAC(4, 1024, &offset, &bands));
    EXPECT_EQ(49, bands);
    EXPECT_EQ(1024, offset[49]);
    ASSERT_EQ(zorStsNoErr, zorsGetSfbTable_AAC(11, 128, &offset, &bands));
    EXPECT_EQ(15, bands);
    EXPECT_EQ(128, offset[15]);
    EXPECT_EQ(zorStsBadArgErr, zorsGetSfbTable_AAC(12, 128, &offset, &bands));
    EXPECT_EQ(zorStsBadArgErr, zorsGetSfbTable_AAC(4, 256, &offset, &bands));
    ASSERT_EQ(zorStsNoErr, zorsGetPredictionBands_AAC(4, &bands));
    EXPECT_EQ(40, bands);
    EXPECT_EQ(zorStsBadArgErr, zorsGetPredictionBands_AAC(-1, &bands));
}

} // namespace
