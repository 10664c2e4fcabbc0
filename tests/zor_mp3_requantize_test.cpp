// Requantisation of layer III line by line against the standards' formulas in double precision, and joint
// stereo encoding against what the decoder makes of it.
#include "../zor/src/tables/mp3_pretab.h"
#include "../zor/src/tables/mp3_sfb_long.h"
#include "../zor/src/tables/mp3_sfb_short.h"
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using namespace zor::tables;
constexpr int lines = 576;
constexpr double one = 1 << 26;

/** Where a line in stream order belongs. */
struct Place {
    int band, window; /**< window -1 in long bands */
    int factor;       /**< index of the scale factor, -1 for the highest band */
    int shared;       /**< index of the position: that of the band below for the highest */
    int destination;  /**< line after reordering */
};

bool isShort(const ZorMP3SideInfo& side) {
    return side.windowSwitching && side.blockType == 2;
}

Place placeOf(int line, const ZorMP3FrameHeader& h, const ZorMP3SideInfo& side) {
    const int row = 3 * h.id + h.samplingFrequency;
    const auto& longs = mp3_sfb_long::boundary[row];
    const auto& shorts = mp3_sfb_short::boundary[row];
    if (!isShort(side) || (side.mixedBlock && line < 36)) {
        const int band = static_cast<int>(std::upper_bound(longs, longs + 23, line) - longs) - 1;
        return {band, -1, band < 21 ? band : -1, std::min(band, 20), line};
    }
    const int band = static_cast<int>(std::upper_bound(shorts, shorts + 14, line / 3) - shorts) - 1;
    const int width = shorts[band + 1] - shorts[band], within = line - 3 * shorts[band],
              window = within / width;
    const int base = side.mixedBlock ? (h.id ? 8 : 6) - 9 : 0;
    return {band, window, band < 12 ? base + 3 * band + window : -1, base + 3 * std::min(band, 11) + window,
            3 * (shorts[band] + within % width) + window};
}

double requantised(int value, const Place& place, const ZorMP3SideInfo& side, const Zor8s* factors) {
    const double multiplier = side.scalefacScale ? 1 : 0.5;
    double exponent = 0.25 * (side.globalGain - 210);
    if (place.window >= 0)
        exponent -= 2 * side.subblockGain[place.window];
    if (place.factor >= 0)
        exponent -= multiplier * (factors[place.factor] +
                                  (place.window < 0 && side.preflag ? mp3_pretab::pretab[place.band] : 0));
    return std::copysign(std::pow(std::abs(value), 4.0 / 3), value) * std::exp2(exponent);
}

struct Case {
    ZorMP3FrameHeader header{};
    ZorMP3SideInfo side[2]{};
    std::vector<Zor8s> factors = std::vector<Zor8s>(2 * zorMP3ScaleFactors);
    int len[2]{};
    std::vector<Zor32s> values;
};

/** Illegal positions: 7 in id 1; in the tests of id 0 all lengths are 3 bits, so 7 too. */
bool legal(int position) {
    return position < 7;
}

void balance(const Case& c, int position, double& left, double& right) {
    if (c.header.id) {
        const double ratio = std::tan(position * std::numbers::pi / 12);
        left = position == 6 ? 1 : ratio / (1 + ratio);
        right = position == 6 ? 0 : 1 / (1 + ratio);
        return;
    }
    const double io = c.side[1].scalefacCompress & 1 ? std::numbers::sqrt2 / 2 : std::pow(2, -0.25);
    left = position % 2 ? std::pow(io, (position + 1) / 2) : 1;
    right = position % 2 ? 1 : std::pow(io, position / 2);
}

/** Whether the right channel is zero from the band of a line on (in its window). */
bool inZeroPart(const Case& c, const Place& place) {
    for (int line = 0; line < c.len[1]; ++line) {
        const Place other = placeOf(line, c.header, c.side[1]);
        const bool later = place.window < 0 ? other.window >= 0 || other.band >= place.band
                                            : other.window == place.window && other.band >= place.band;
        if (later && c.values[static_cast<std::size_t>(lines + line)] != 0)
            return false;
    }
    return true;
}

/** What the decoder has to hand out, in units of the fixed-point format. */
std::vector<double> reference(const Case& c) {
    std::vector<double> result(2 * lines);
    const bool joint = c.header.mode == 1, intensity = joint && c.header.modeExtension & 1,
               ms = joint && c.header.modeExtension & 2;
    for (int line = 0; line < lines; ++line) {
        double x[2]{};
        Place place{};
        for (int channel = 0; channel < (c.header.mode == 3 ? 1 : 2); ++channel) {
            place = placeOf(line, c.header, c.side[channel]);
            if (line < c.len[channel])
                x[channel] = requantised(c.values[static_cast<std::size_t>(channel * lines + line)], place,
                                         c.side[channel],
                                         &c.factors[static_cast<std::size_t>(channel * zorMP3ScaleFactors)]);
        }
        const int position = c.factors[static_cast<std::size_t>(zorMP3ScaleFactors + place.shared)];
        double left = 0, right = 0;
        Place below = place;
        --below.band;
        if (intensity && place.factor < 0 && inZeroPart(c, place) && !inZeroPart(c, below)) {
            left = right = c.header.id ? x[0] : 0.5 * x[0]; // the band below has no position to share
        } else if (intensity && legal(position) && inZeroPart(c, place)) {
            balance(c, position, left, right);
            right *= x[0];
            left *= x[0];
        } else {
            left = ms ? (x[0] + x[1]) / std::numbers::sqrt2 : x[0];
            right = ms ? (x[0] - x[1]) / std::numbers::sqrt2 : x[1];
        }
        result[static_cast<std::size_t>(place.destination)] = left * one;
        result[static_cast<std::size_t>(lines + place.destination)] = right * one;
    }
    return result;
}

class Mp3Requantize : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Mp3Requantize, testing::ValuesIn(zorPaths), zorPathName);

/** A granule with values up to the lengths, the right channel zero from `rightEnd` on. */
Case makeCase(int id, int frequency, int mode, int extension, int blockType, int mixed, unsigned seed) {
    Case c;
    std::mt19937 engine(seed);
    const auto draw = [&engine](int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); };
    c.header.id = id;
    c.header.samplingFrequency = frequency;
    c.header.mode = mode;
    c.header.modeExtension = extension;
    for (ZorMP3SideInfo& side : c.side) {
        side.globalGain = 130 + draw(25); // 8206^(4/3) stays in range
        side.windowSwitching = blockType != 0;
        side.blockType = blockType;
        side.mixedBlock = mixed;
        side.preflag = draw(2);
        side.scalefacScale = draw(2);
        for (int& gain : side.subblockGain)
            gain = draw(4);
    }
    // Right positions of id 0 in three bits each: 3 * 36 + 3 * 6 + 3. The lowest bit is the scale.
    c.side[1].scalefacCompress = id ? 0 : 2 * 129 + draw(2);
    for (Zor8s& factor : c.factors)
        factor = static_cast<Zor8s>(draw(8));
    c.len[0] = 200 + draw(377);
    c.len[1] = draw(3) ? draw(300) : 0;
    c.values = randomInts<Zor32s>(2 * lines, -8, 8, seed + 100);
    c.values[5] = 8206;
    c.values[6] = -8191;
    return c;
}

TEST_P(Mp3Requantize, IsTheStandardsFormula) {
    unsigned seed = 1;
    for (const bool onlyHighestZero : {false, true})
        for (const int id : {0, 1})
            for (const auto& [mode, extension] : {std::pair{0, 0}, {3, 0}, {1, 0}, {1, 1}, {1, 2}, {1, 3}})
                for (const auto& [blockType, mixed] : {std::pair{0, 0}, {1, 0}, {2, 0}, {2, 1}, {3, 0}})
                    for (int frequency = 0; frequency < 3; ++frequency) {
                        Case c = makeCase(id, frequency, mode, extension, blockType, mixed, seed++);
                        if (onlyHighestZero) {
                            const int row = 3 * id + frequency;
                            c.len[0] = lines;
                            c.len[1] = isShort(c.side[1]) ? 3 * mp3_sfb_short::boundary[row][12]
                                                          : mp3_sfb_long::boundary[row][21];
                        }
                        const auto expected = reference(c);
                        for (const bool sfb : {false, true}) {
                            auto data = c.values;
                            int len[2]{c.len[0], c.len[1]};
                            Zor32s buffer[lines];
                            auto* const bytes = reinterpret_cast<Zor8u*>(buffer);
                            const ZorStatus status =
                                sfb ? zorsReQuantizeSfb_MP3_32s_I(data.data(), len, c.factors.data(), c.side,
                                                                  &c.header, bytes, mp3_sfb_long::boundary,
                                                                  mp3_sfb_short::boundary)
                                    : zorsReQuantize_MP3_32s_I(data.data(), len, c.factors.data(), c.side,
                                                               &c.header, bytes);
                            ASSERT_EQ(status, zorStsNoErr);
                            for (int channel = 0; channel < (mode == 3 ? 1 : 2); ++channel) {
                                EXPECT_GE(len[channel], c.len[channel]);
                                for (int line = 0; line < lines; ++line) {
                                    const auto at = static_cast<std::size_t>(channel * lines + line);
                                    const double got = line < len[channel] ? data[at] : 0;
                                    ASSERT_NEAR(got, expected[at], 2 + 1e-6 * std::abs(expected[at]))
                                        << "id " << id << " mode " << mode << "/" << extension << " block "
                                        << blockType << " mixed " << mixed << " channel " << channel
                                        << " line " << line;
                                }
                            }
                        }
                    }
}

TEST_P(Mp3Requantize, Saturates) {
    Case c = makeCase(1, 0, 0, 0, 0, 0, 1);
    c.side[0] = {};
    c.side[0].globalGain = 255;
    Zor32s buffer[lines];
    ASSERT_EQ(zorsReQuantize_MP3_32s_I(c.values.data(), c.len, c.factors.data(), c.side, &c.header,
                                       reinterpret_cast<Zor8u*>(buffer)),
              zorStsNoErr);
    EXPECT_GE(c.values[5], 2147483000);
    EXPECT_LE(c.values[6], -2147483000);
}

TEST_P(Mp3Requantize, RefusesBadArguments) {
    Case c = makeCase(1, 0, 0, 0, 0, 0, 1);
    Zor32s buffer[lines];
    auto* const bytes = reinterpret_cast<Zor8u*>(buffer);
    const auto status = [&] {
        return zorsReQuantize_MP3_32s_I(c.values.data(), c.len, c.factors.data(), c.side, &c.header, bytes);
    };
    c.values[5] = 8207;
    EXPECT_EQ(status(), zorStsBadArgErr);
    c.values[5] = 0;
    c.len[1] = 577;
    EXPECT_EQ(status(), zorStsSizeErr);
    c.len[1] = 0;
    c.header.samplingFrequency = 3;
    EXPECT_EQ(status(), zorStsBadArgErr);
    c.header.samplingFrequency = 0;
    c.side[1].globalGain = 256;
    EXPECT_EQ(status(), zorStsBadArgErr);
    c.header.mode = 3; // then the second channel does not count
    EXPECT_EQ(status(), zorStsNoErr);
    EXPECT_EQ(zorsReQuantize_MP3_32s_I(c.values.data(), c.len, nullptr, c.side, &c.header, bytes),
              zorStsNullPtrErr);
    Zor16s broken[6][23]{};
    EXPECT_EQ(zorsReQuantizeSfb_MP3_32s_I(c.values.data(), c.len, c.factors.data(), c.side, &c.header, bytes,
                                          broken, mp3_sfb_short::boundary),
              zorStsBadArgErr);
}

TEST_P(Mp3Requantize, MsEncodingIsItsOwnInverse) {
    const auto left = randomInts<Zor32s>(lines, -(1 << 28), 1 << 28, 1);
    const auto right = randomInts<Zor32s>(lines, -(1 << 28), 1 << 28, 2);
    auto a = left, b = right;
    ZorMP3FrameHeader h{};
    h.id = 1;
    h.mode = 1;
    h.modeExtension = 2;
    const ZorMP3SideInfo side[2]{};
    const int bound[3]{};
    Zor8s factors[36];
    ASSERT_EQ(zorsJointStereoEncode_MP3_32s_I(a.data(), b.data(), factors, &h, side, bound), zorStsNoErr);
    EXPECT_NEAR(a[7], (static_cast<double>(left[7]) + right[7]) / std::numbers::sqrt2, 32);
    EXPECT_NEAR(b[7], (static_cast<double>(left[7]) - right[7]) / std::numbers::sqrt2, 32);
    ASSERT_EQ(zorsJointStereoEncode_MP3_32s_I(a.data(), b.data(), factors, &h, side, bound), zorStsNoErr);
    for (std::size_t i = 0; i < lines; ++i) {
        EXPECT_NEAR(a[i], left[i], 64);
        EXPECT_NEAR(b[i], right[i], 64);
    }
}

TEST_P(Mp3Requantize, IntensityEncodingKeepsEnergyAndPlace) {
    // Each band has its own panorama; decoded again by the balance formula the energies come out.
    for (const int id : {0, 1})
        for (const auto& [blockType, mixed] : {std::pair{0, 0}, {2, 0}, {2, 1}})
            for (const int boundBand : {0, 6}) {
                Case c = makeCase(id, 1, 1, 1 | 2, blockType, mixed, 5);
                auto left = randomInts<Zor32s>(lines, -(1 << 24), 1 << 24, 3), right = left;
                std::vector<Place> places(lines);
                for (int line = 0; line < lines; ++line) {
                    const Place place = placeOf(line, c.header, c.side[0]);
                    auto& at = places[static_cast<std::size_t>(place.destination)] = place;
                    const int pan = at.shared % 7; // the highest band like the one below
                    const auto i = static_cast<std::size_t>(place.destination);
                    right[i] = static_cast<Zor32s>(right[i] * (pan - 3) / 3.0);
                }
                const int bound[3]{boundBand, boundBand, boundBand};
                auto a = left, b = right;
                std::vector<Zor8s> factors(36, 99);
                ASSERT_EQ(zorsJointStereoEncode_MP3_32s_I(a.data(), b.data(), factors.data(), &c.header,
                                                          c.side, bound),
                          zorStsNoErr);
                std::vector<double> before(40), after(40), ratioBefore(40), ratioAfter(40);
                for (std::size_t i = 0; i < lines; ++i) {
                    const Place& place = places[i];
                    const bool longPartOfMixed = mixed && place.window < 0;
                    if (longPartOfMixed ? boundBand > 0 : place.band < boundBand) {
                        EXPECT_NEAR(a[i], (static_cast<double>(left[i]) + right[i]) / std::numbers::sqrt2, 4);
                        continue;
                    }
                    EXPECT_EQ(b[i], 0);
                    double l = 0, r = 0;
                    const auto at = static_cast<std::size_t>(place.shared);
                    balance(c, factors[at], l, r);
                    before[at] += std::pow(left[i], 2) + std::pow(right[i], 2);
                    after[at] += (l * l + r * r) * std::pow(a[i], 2);
                    ratioBefore[at] += std::pow(left[i], 2);
                    ratioAfter[at] += l * l * std::pow(a[i], 2);
                }
                for (std::size_t i = 0; i < 36; ++i) {
                    if (before[i] == 0)
                        continue;
                    EXPECT_TRUE(legal(factors[i]) || !id);
                    EXPECT_NEAR(after[i] / before[i], 1, 1e-4);
                    EXPECT_NEAR(ratioAfter[i] / after[i], ratioBefore[i] / before[i], 0.14)
                        << "id " << id << " at " << i;
                }
            }
}

TEST_P(Mp3Requantize, JointEncodingLeavesTheRest) {
    auto a = randomInts<Zor32s>(lines, -100, 100, 1), b = a;
    const auto before = a;
    ZorMP3FrameHeader h{};
    h.id = 1;
    const ZorMP3SideInfo side[2]{};
    const int bound[3]{}, beyond[3]{23, 0, 0};
    Zor8s factors[36];
    h.modeExtension = 3; // means nothing outside joint stereo
    ASSERT_EQ(zorsJointStereoEncode_MP3_32s_I(a.data(), b.data(), factors, &h, side, bound), zorStsNoErr);
    EXPECT_EQ(a, before);
    EXPECT_EQ(b, before);
    EXPECT_EQ(zorsJointStereoEncode_MP3_32s_I(a.data(), b.data(), factors, &h, side, beyond),
              zorStsBadArgErr);
    EXPECT_EQ(zorsJointStereoEncode_MP3_32s_I(a.data(), nullptr, factors, &h, side, bound), zorStsNullPtrErr);
}

} // namespace
