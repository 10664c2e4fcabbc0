// What stands beside the timed functions of layer III: sizes from headers, band tables, granules at once,
// conversions, stereo in floating point.
#include "../zor/src/tables/mp3_sfb_long.h"
#include "../zor/src/tables/mp3_sfb_short.h"
#include "zorac.h"
#include "zormath.h"
#include "zors.h"
#include "zorsupport.h"

#include <limits>
#include <numbers>

namespace {

/** A header's first 32 bits as the standard has them; version 3 MPEG-1, 2 MPEG-2, 0 the half-rate extension.
 */
std::vector<Zor8u> headerBytes(int version, int protection, int bitrate, int frequency, int padding,
                               int mode) {
    BitText bits;
    bits.put(0x7FF, 11)
        .put(static_cast<unsigned>(version), 2)
        .put(1, 2)
        .put(static_cast<unsigned>(protection), 1);
    bits.put(static_cast<unsigned>(bitrate), 4).put(static_cast<unsigned>(frequency), 2);
    bits.put(static_cast<unsigned>(padding), 1).put(0, 1).put(static_cast<unsigned>(mode), 2).put(0, 6);
    return bits.put(0, 16).bytes();
}

ZorMP3FrameHeader unpacked(const std::vector<Zor8u>& bytes) {
    ZorMP3FrameHeader header{};
    const Zor8u* at = bytes.data();
    EXPECT_EQ(zorsUnpackFrameHeader_MP3(&at, bytes.data() + bytes.size(), &header), zorStsNoErr);
    return header;
}

TEST(Mp3FrameInfo, SizesFollowFromTheHeader) {
    struct Case {
        int version, protection, bitrate, frequency, padding, mode;
        int hz, bitRate, channels, granules, headerSize, sideInfoSize, frameLength;
    };
    const Case cases[] = {
        {3, 1, 9, 0, 0, 0, 44100, 128000, 2, 2, 4, 32, 417},
        {3, 1, 9, 0, 1, 1, 44100, 128000, 2, 2, 4, 32, 418},
        {3, 0, 14, 1, 0, 3, 48000, 320000, 1, 2, 6, 17, 960},
        {3, 1, 1, 2, 0, 2, 32000, 32000, 2, 2, 4, 32, 144},
        {2, 1, 8, 0, 1, 0, 22050, 64000, 2, 1, 4, 17, 209},
        {2, 0, 14, 1, 0, 3, 24000, 160000, 1, 1, 6, 9, 480},
        {2, 1, 1, 2, 0, 3, 16000, 8000, 1, 1, 4, 9, 36},
        {0, 1, 8, 0, 0, 0, 11025, 64000, 2, 1, 4, 17, 417},
        {0, 1, 2, 2, 0, 3, 8000, 16000, 1, 1, 4, 9, 144},
        {0, 1, 8, 1, 0, 0, 12000, 64000, 2, 1, 4, 17, 384},
        {3, 1, 0, 0, 0, 0, 44100, 0, 2, 2, 4, 32, 0},
    };
    for (const Case& c : cases) {
        const auto header =
            unpacked(headerBytes(c.version, c.protection, c.bitrate, c.frequency, c.padding, c.mode));
        EXPECT_EQ(header.id, c.version == 3);
        EXPECT_EQ(header.halfRate, c.version == 0);
        ZorMP3FrameInfo info{};
        ASSERT_EQ(zorsGetFrameInfo_MP3(&header, &info), zorStsNoErr);
        EXPECT_EQ(info.samplingRate, c.hz);
        EXPECT_EQ(info.bitRate, c.bitRate);
        EXPECT_EQ(info.channels, c.channels);
        EXPECT_EQ(info.granules, c.granules);
        EXPECT_EQ(info.headerSize, c.headerSize);
        EXPECT_EQ(info.sideInfoSize, c.sideInfoSize);
        EXPECT_EQ(info.frameLength, c.frameLength) << c.hz << " Hz, " << c.bitRate << " bit/s";
    }
}

TEST(Mp3FrameInfo, ReservedValuesAreRefused) {
    ZorMP3FrameInfo info{};
    for (const auto& [bitrate, frequency] : {std::pair{15, 0}, {9, 3}}) {
        const auto header = unpacked(headerBytes(3, 1, bitrate, frequency, 0, 0));
        EXPECT_EQ(zorsGetFrameInfo_MP3(&header, &info), zorStsBadArgErr);
    }
    auto header = unpacked(headerBytes(3, 1, 9, 0, 0, 0));
    header.layer = 2;
    EXPECT_EQ(zorsGetFrameInfo_MP3(&header, &info), zorStsBadArgErr);
    EXPECT_EQ(zorsGetFrameInfo_MP3(&header, nullptr), zorStsNullPtrErr);
    const auto reservedVersion = headerBytes(1, 1, 9, 0, 0, 0);
    const Zor8u* at = reservedVersion.data();
    EXPECT_EQ(zorsUnpackFrameHeader_MP3(&at, at + 6, &header), zorStsBadStreamErr);
}

TEST(Mp3FrameInfo, BandTablesAreTheStandardsOrThoseOfTheExtension) {
    for (const int version : {0, 2, 3})
        for (int frequency = 0; frequency < 3; ++frequency) {
            const auto header = unpacked(headerBytes(version, 1, 9, frequency, 0, 0));
            const Zor16s(*longs)[23] = nullptr;
            const Zor16s(*shorts)[14] = nullptr;
            ASSERT_EQ(zorsGetSfbTables_MP3(&header, &longs, &shorts), zorStsNoErr);
            const int row = 3 * header.id + frequency;
            // The extension's 11.025 and 12 kHz are cut like 16 kHz, 8 kHz so that bands are twice as wide.
            const int like = version == 0 ? 2 : row;
            for (int band = 0; band < 23; ++band) {
                const int expected = zor::tables::mp3_sfb_long::boundary[like][band];
                const bool eight = version == 0 && frequency == 2;
                EXPECT_EQ(longs[row][band], eight && band <= 6   ? 2 * expected
                                            : eight && band < 22 ? longs[row][band]
                                                                 : expected);
                EXPECT_TRUE(band == 0 || longs[row][band] > longs[row][band - 1]);
            }
            EXPECT_EQ(shorts[row][0], 0);
            EXPECT_EQ(shorts[row][13], 192);
            for (int band = 1; band < 14; ++band)
                EXPECT_GT(shorts[row][band], shorts[row][band - 1]);
        }
}

class Mp3Decoding : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Mp3Decoding, testing::ValuesIn(zorPaths), zorPathName);

TEST_P(Mp3Decoding, AGranuleIsEighteenSlots) {
    using State = PlacedState<ZorMP3SynthesisState_32f>;
    for (const int mode : {1, 2}) {
        const State slotwise(zorsSynthesisFilterGetSize_PQMF_MP3_32f, zorsSynthesisFilterInit_PQMF_MP3_32f);
        const State granulewise(zorsSynthesisFilterGetSize_PQMF_MP3_32f,
                                zorsSynthesisFilterInit_PQMF_MP3_32f);
        const State mixed(zorsSynthesisFilterGetSize_PQMF_MP3_32f, zorsSynthesisFilterInit_PQMF_MP3_32f);
        for (unsigned granule = 0; granule < 6; ++granule) {
            const auto samples = noise(576, granule + 1);
            const auto size = static_cast<std::size_t>(576 * mode);
            std::vector<float> bySlots(size, 7), byGranule(size, 7), byBoth(size, 7);
            const auto slots = [&](const State& state, std::vector<float>& out) {
                for (std::size_t slot = 0; slot < 18; ++slot)
                    ASSERT_EQ(zorsSynthesisFilter_PQMF_MP3_32f(
                                  &samples[32 * slot], &out[32 * slot * static_cast<std::size_t>(mode)],
                                  state.get(), mode),
                              zorStsNoErr);
            };
            const auto whole = [&](const State& state, std::vector<float>& out) {
                ASSERT_EQ(zorsSynthesisGranule_PQMF_MP3_32f(samples.data(), out.data(), state.get(), mode),
                          zorStsNoErr);
            };
            slots(slotwise, bySlots);
            whole(granulewise, byGranule);
            if (granule % 2)
                slots(mixed, byBoth);
            else
                whole(mixed, byBoth);
            EXPECT_GT(snr(bySlots, byGranule), 130) << "granule " << granule << " mode " << mode;
            EXPECT_GT(snr(bySlots, byBoth), 130);
            for (std::size_t i = 1; mode == 2 && i < size; i += 2)
                ASSERT_EQ(byGranule[i], 7) << "the other channel's place";
        }
    }
    float data[576] = {};
    const State state(zorsSynthesisFilterGetSize_PQMF_MP3_32f, zorsSynthesisFilterInit_PQMF_MP3_32f);
    EXPECT_EQ(zorsSynthesisGranule_PQMF_MP3_32f(data, data, state.get(), 3), zorStsBadArgErr);
    EXPECT_EQ(zorsSynthesisGranule_PQMF_MP3_32f(data, data, nullptr, 1), zorStsNullPtrErr);
}

TEST_P(Mp3Decoding, ConversionsScaleRoundAndSaturate) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN(),
                    infinite = std::numeric_limits<float>::infinity();
    constexpr int most = 2147483647, least = -most - 1;
    struct Case {
        float value;
        int scaleFactor;
        int whole, sixteen;
    };
    const Case cases[] = {{0.5f, -26, 1 << 25, 32767},
                          {-1, -15, -32768, -32768},
                          {1, -15, 32768, 32767},
                          {2.5f, 0, 3, 3},
                          {-2.5f, 0, -3, -3},
                          {2.4999f, 0, 2, 2},
                          {5, 1, 3, 3},
                          {-5, 2, -1, -1},
                          {3e9f, 0, most, 32767},
                          {-3e9f, 0, least, -32768},
                          {infinite, 0, most, 32767},
                          {-infinite, 31, least, -32768},
                          {nan, 0, most, 32767},
                          {8388609, 0, 8388609, 32767},
                          {-0.f, 0, 0, 0},
                          {0.49999997f, 0, 0, 0}};
    for (const Case& c : cases)
        for (const int length : {1, 7, 64}) {
            const std::vector<float> values(static_cast<std::size_t>(length), c.value);
            std::vector<Zor32s> wide(values.size());
            std::vector<Zor16s> narrow(values.size());
            ASSERT_EQ(zorsConvert_32f32s_Sfs(values.data(), wide.data(), length, c.scaleFactor), zorStsNoErr);
            ASSERT_EQ(zorsConvert_32f16s_Sfs(values.data(), narrow.data(), length, c.scaleFactor),
                      zorStsNoErr);
            EXPECT_EQ(wide, std::vector<Zor32s>(values.size(), c.whole)) << c.value << " " << c.scaleFactor;
            EXPECT_EQ(narrow, std::vector<Zor16s>(values.size(), static_cast<Zor16s>(c.sixteen))) << c.value;
        }
    const auto fixed = randomInts<Zor32s>(1000, least, most, 3);
    std::vector<float> floats(1000);
    ASSERT_EQ(zorsConvert_32s32f_Sfs(fixed.data(), floats.data(), 1000, zorMP3FractionBits), zorStsNoErr);
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(floats[i], static_cast<float>(fixed[i]) / 67108864.f);
    EXPECT_EQ(zorsConvert_32s32f_Sfs(fixed.data(), floats.data(), 1000, 32), zorStsScaleRangeErr);
    EXPECT_EQ(zorsConvert_32s32f_Sfs(fixed.data(), floats.data(), 0, 0), zorStsSizeErr);
    EXPECT_EQ(zorsConvert_32s32f_Sfs(nullptr, floats.data(), 1, 0), zorStsNullPtrErr);
}

TEST(Mp3FloatStereo, IsTheStandardsFormula) {
    const auto mid = noise(101, 1), side = noise(101, 2);
    auto left = mid, right = side;
    ASSERT_EQ(zorsDecodeMidSide_MP3_32f_I(left.data(), right.data(), 101), zorStsNoErr);
    for (std::size_t i = 0; i < left.size(); ++i) {
        EXPECT_NEAR(left[i], (mid[i] + side[i]) / std::numbers::sqrt2, 1e-6);
        EXPECT_NEAR(right[i], (mid[i] - side[i]) / std::numbers::sqrt2, 1e-6);
    }
    for (const int id : {0, 1})
        for (const int scale : {0, 1})
            for (int position = 0; position <= (id ? 6 : 30); ++position) {
                left = mid;
                ASSERT_EQ(zorsDecodeIntensity_MP3_32f_I(left.data(), right.data(), 101, id, position, scale),
                          zorStsNoErr);
                const double io = scale ? std::sqrt(0.5) : std::pow(2, -0.25),
                             ratio = std::tan(position * 0.2617993877991494);
                const double weak = std::pow(io, (position + 1) / 2);
                const double toLeft = id             ? (position == 6 ? 1 : ratio / (1 + ratio))
                                      : position % 2 ? weak
                                                     : 1;
                const double toRight = id ? (position == 6 ? 0 : 1 / (1 + ratio)) : position % 2 ? 1 : weak;
                for (std::size_t i = 0; i < left.size(); ++i) {
                    EXPECT_NEAR(left[i], toLeft * static_cast<double>(mid[i]), 1e-6);
                    EXPECT_NEAR(right[i], toRight * static_cast<double>(mid[i]), 1e-6);
                }
            }
    EXPECT_EQ(zorsDecodeIntensity_MP3_32f_I(left.data(), right.data(), 101, 1, 7, 0), zorStsBadArgErr);
    EXPECT_EQ(zorsDecodeIntensity_MP3_32f_I(left.data(), right.data(), 101, 0, 31, 0), zorStsBadArgErr);
    EXPECT_EQ(zorsDecodeMidSide_MP3_32f_I(left.data(), nullptr, 101), zorStsNullPtrErr);
}

} // namespace
