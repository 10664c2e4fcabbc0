// Unpacking of layer III: every field of the syntax, for both ids, in stereo and mono.
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <numeric>

namespace {

/** Writes fields of random values and remembers where it put them. */
class FieldWriter {
  public:
    explicit FieldWriter(unsigned seed) : m_engine(seed) {}

    int put(int value, int bits) {
        while (bits-- > 0)
            m_bits.push_back(value >> bits & 1);
        return value;
    }
    int random(int bits) { return put(static_cast<int>(m_engine() & ((1u << bits) - 1)), bits); }
    int size() const { return static_cast<int>(m_bits.size()); }

    /** The bits from bit `offset` of the first byte on, with ones before and after them. */
    std::vector<Zor8u> bytes(int offset = 0) const {
        std::vector<Zor8u> result(static_cast<std::size_t>((offset + size() + 7) / 8), 0xFF);
        for (int i = 0; i < size(); ++i)
            if (!m_bits[static_cast<std::size_t>(i)])
                result[static_cast<std::size_t>((offset + i) / 8)] &=
                    static_cast<Zor8u>(~(0x80 >> (offset + i) % 8));
        return result;
    }

  private:
    std::mt19937 m_engine;
    std::vector<int> m_bits;
};

using Fields = std::vector<int>;

Fields fields(const ZorMP3SideInfo& s) {
    return {s.part23Length,    s.bigValues,       s.globalGain,       s.scalefacCompress, s.windowSwitching,
            s.blockType,       s.mixedBlock,      s.tableSelect[0],   s.tableSelect[1],   s.tableSelect[2],
            s.subblockGain[0], s.subblockGain[1], s.subblockGain[2],  s.region0Count,     s.region1Count,
            s.preflag,         s.scalefacScale,   s.count1TableSelect};
}

TEST(Mp3Unpack, HeaderHandsOutEveryField) {
    for (const int protection : {0, 1}) {
        FieldWriter writer(1);
        writer.put(0xFFF, 12);
        const Fields expected{writer.put(0, 1),
                              writer.put(2, 2),
                              writer.put(protection, 1),
                              writer.put(11, 4),
                              writer.put(3, 2),
                              writer.put(1, 1),
                              writer.put(0, 1),
                              writer.put(2, 2),
                              writer.put(1, 2),
                              writer.put(1, 1),
                              writer.put(0, 1),
                              writer.put(2, 2),
                              protection ? 0 : writer.put(0xABCD, 16)};
        const auto stream = writer.bytes();
        const Zor8u* at = stream.data();
        const Zor8u* const end = at + stream.size();
        ZorMP3FrameHeader h{};
        ASSERT_EQ(zorsUnpackFrameHeader_MP3(&at, end, &h), zorStsNoErr);
        EXPECT_EQ(at, end);
        EXPECT_EQ(
            (Fields{h.id, h.layer, h.protectionBit, h.bitrateIndex, h.samplingFrequency, h.paddingBit,
                    h.privateBit, h.mode, h.modeExtension, h.copyright, h.original, h.emphasis, h.crcCheck}),
            expected);
        at = stream.data();
        EXPECT_EQ(zorsUnpackFrameHeader_MP3(&at, end - 1, &h), zorStsStreamEndErr);
        EXPECT_EQ(at, stream.data());
    }
}

TEST(Mp3Unpack, HeaderOfOnesIsUnpackedAndZerosAreNone) {
    const Zor8u ones[4] = {0xFF, 0xFF, 0xFF, 0xFF}, zeros[4] = {};
    const Zor8u* at = ones;
    ZorMP3FrameHeader h{};
    EXPECT_EQ(zorsUnpackFrameHeader_MP3(&at, ones + 4, &h), zorStsNoErr);
    EXPECT_EQ(h.bitrateIndex, 15);
    EXPECT_EQ(h.samplingFrequency, 3);
    at = zeros;
    EXPECT_EQ(zorsUnpackFrameHeader_MP3(&at, zeros + 4, &h), zorStsBadStreamErr);
    EXPECT_EQ(zorsUnpackFrameHeader_MP3(nullptr, zeros + 4, &h), zorStsNullPtrErr);
    EXPECT_EQ(zorsUnpackFrameHeader_MP3(&at, zeros + 4, nullptr), zorStsNullPtrErr);
}

/** side_info() of one granule and channel: 11172-3 2.4.1.7, 13818-3 2.4.1.7. */
Fields putGranule(FieldWriter& writer, int id, bool switching) {
    Fields f(18);
    f[0] = writer.random(12);
    f[1] = writer.random(9);
    f[2] = writer.random(8);
    f[3] = writer.random(id ? 4 : 9);
    f[4] = writer.put(switching, 1);
    if (switching) {
        f[5] = writer.random(2);
        f[6] = writer.random(1);
        f[7] = writer.random(5);
        f[8] = writer.random(5);
        for (std::size_t i = 10; i < 13; ++i)
            f[i] = writer.random(3);
        f[13] = f[5] == 2 && f[6] == 0 ? 8 : 7;
        f[14] = 20 - f[13];
    } else {
        for (std::size_t i = 7; i < 10; ++i)
            f[i] = writer.random(5);
        f[13] = writer.random(4);
        f[14] = writer.random(3);
    }
    f[15] = id ? writer.random(1) : 0;
    f[16] = writer.random(1);
    f[17] = writer.random(1);
    return f;
}

TEST(Mp3Unpack, SideInfoHandsOutEveryField) {
    struct Case {
        int id, mode, bytes, mainDataBits, privateBits;
    };
    const Case cases[] = {{1, 0, 32, 9, 3}, {1, 3, 17, 9, 5}, {0, 1, 17, 8, 2}, {0, 3, 9, 8, 1}};
    for (const Case& c : cases)
        for (unsigned seed = 0; seed < 16; ++seed) {
            const int channels = c.mode == 3 ? 1 : 2, granules = c.id ? 2 : 1;
            FieldWriter writer(seed);
            const int mainData = writer.random(c.mainDataBits), privateField = writer.random(c.privateBits);
            Fields scfsi(static_cast<std::size_t>(4 * channels));
            for (int& flag : scfsi)
                flag = c.id ? writer.random(1) : 0;
            std::vector<Fields> expected;
            for (int i = 0; i < granules * channels; ++i)
                expected.push_back(putGranule(writer, c.id, (seed >> i & 1) != 0));
            ASSERT_EQ(writer.size(), 8 * c.bytes);

            const int offset = static_cast<int>(seed % 8);
            const auto stream = writer.bytes(offset);
            const Zor8u *at = stream.data(), *end = at + stream.size();
            int bit = offset, mainDataBegin = -1, privateBits = -1;
            Fields flags(static_cast<std::size_t>(4 * channels), -1);
            ZorMP3SideInfo side[4]{};
            ZorMP3FrameHeader h{};
            h.id = c.id;
            h.mode = c.mode;
            ASSERT_EQ(
                zorsUnpackSideInfo_MP3(&at, &bit, end, side, &mainDataBegin, &privateBits, flags.data(), &h),
                zorStsNoErr);
            EXPECT_EQ((at - stream.data()) * 8 + bit, offset + 8 * c.bytes);
            EXPECT_EQ(mainDataBegin, mainData);
            EXPECT_EQ(privateBits, privateField);
            EXPECT_EQ(flags, scfsi);
            for (int i = 0; i < granules * channels; ++i)
                EXPECT_EQ(fields(side[2 * (i / channels) + i % channels]),
                          expected[static_cast<std::size_t>(i)]);
            at = stream.data();
            bit = offset;
            EXPECT_EQ(zorsUnpackSideInfo_MP3(&at, &bit, end - 1, side, &mainDataBegin, &privateBits,
                                             flags.data(), &h),
                      zorStsStreamEndErr);
            EXPECT_EQ(zorsUnpackSideInfo_MP3(&at, &bit, end, side, &mainDataBegin, nullptr, flags.data(), &h),
                      zorStsNullPtrErr);
        }
}

struct FactorCase {
    int id, blockType, mixed, compress, intensityRight;
    std::vector<std::pair<int, int>> runs; /**< count, bits */
};

/** Runs worked out by hand from 11172-3 2.4.2.7 and 13818-3 2.4.3.2. */
const FactorCase factorCases[] = {
    {1, 0, 0, 5, 0, {{11, 1}, {10, 1}}},
    {1, 3, 0, 15, 0, {{11, 4}, {10, 3}}},
    {1, 0, 0, 0, 0, {{21, 0}}},
    {1, 2, 0, 13, 0, {{18, 3}, {18, 3}}},
    {1, 2, 0, 4, 0, {{18, 3}, {18, 0}}},
    {1, 2, 1, 9, 0, {{17, 2}, {18, 2}}},
    {1, 0, 1, 9, 0, {{11, 2}, {10, 2}}},
    {0, 0, 0, 399, 0, {{6, 4}, {5, 4}, {5, 3}, {5, 3}}},
    {0, 2, 0, 27, 0, {{9, 0}, {9, 1}, {9, 2}, {9, 3}}},
    {0, 2, 1, 90, 0, {{6, 1}, {9, 0}, {9, 2}, {9, 2}}},
    {0, 0, 0, 499, 0, {{6, 4}, {5, 4}, {7, 3}, {3, 0}}},
    {0, 0, 0, 511, 0, {{11, 3}, {10, 2}}},
    {0, 2, 0, 505, 0, {{18, 1}, {18, 2}}},
    {0, 0, 0, 359, 1, {{7, 4}, {7, 5}, {7, 5}}},
    {0, 2, 0, 486, 1, {{12, 3}, {9, 3}, {9, 3}, {6, 0}}},
    {0, 2, 1, 511, 1, {{6, 3}, {18, 2}, {9, 0}}},
};

TEST(Mp3Unpack, ScaleFactorsFollowTheirPartition) {
    for (const FactorCase& c : factorCases) {
        FieldWriter writer(11);
        std::vector<Zor8s> expected;
        for (const auto& [count, bits] : c.runs)
            for (int i = 0; i < count; ++i)
                expected.push_back(static_cast<Zor8s>(bits ? writer.random(bits) : 0));
        expected.resize(36);
        const int bits = writer.size();
        const auto stream = writer.bytes(3);
        const Zor8u *at = stream.data(), *end = at + stream.size();
        int bit = 3;
        std::vector<Zor8s> factors(36, 99);
        const int scfsi[4]{1, 1, 1, 1}; // no sharing in granule 0
        ZorMP3SideInfo side{};
        side.windowSwitching = c.blockType != 0;
        side.blockType = c.blockType;
        side.mixedBlock = c.mixed;
        side.scalefacCompress = c.compress;
        ZorMP3FrameHeader h{};
        h.id = c.id;
        h.mode = 1;
        h.modeExtension = c.intensityRight;
        ASSERT_EQ(zorsUnpackScaleFactors_MP3_1u8s(&at, &bit, end, factors.data(), &side, scfsi, &h, 0, 1),
                  zorStsNoErr);
        EXPECT_EQ(factors, expected) << "id " << c.id << " compress " << c.compress;
        EXPECT_EQ((at - stream.data()) * 8 + bit, 3 + bits);
        EXPECT_EQ(side.preflag, c.id == 0 && !c.intensityRight && c.compress >= 500);
        if (bits > 8) {
            at = stream.data();
            bit = 3;
            EXPECT_EQ(
                zorsUnpackScaleFactors_MP3_1u8s(&at, &bit, end - 1, factors.data(), &side, scfsi, &h, 0, 1),
                zorStsStreamEndErr);
        }
    }
}

TEST(Mp3Unpack, SharedScaleFactorsStay) {
    FieldWriter writer(3);
    std::vector<Zor8s> factors(36, 50), expected(factors);
    const int scfsi[4]{0, 1, 0, 1}, ends[4]{6, 11, 16, 21};
    for (int group = 0, i = 0; group < 4; ++group)
        for (; i < ends[group]; ++i)
            if (!scfsi[group])
                expected[static_cast<std::size_t>(i)] = static_cast<Zor8s>(writer.random(i < 11 ? 4 : 2));
    std::fill(expected.begin() + 21, expected.end(), Zor8s{0});
    const auto stream = writer.bytes();
    const Zor8u *at = stream.data(), *end = at + stream.size();
    int bit = 0;
    ZorMP3SideInfo side{};
    side.scalefacCompress = 14;
    side.preflag = 1; // a field of its own in id 1
    ZorMP3FrameHeader h{};
    h.id = 1;
    ASSERT_EQ(zorsUnpackScaleFactors_MP3_1u8s(&at, &bit, end, factors.data(), &side, scfsi, &h, 1, 0),
              zorStsNoErr);
    EXPECT_EQ(factors, expected);
    EXPECT_EQ(side.preflag, 1);
    EXPECT_EQ((at - stream.data()) * 8 + bit, writer.size());
    side.scalefacCompress = 16;
    EXPECT_EQ(zorsUnpackScaleFactors_MP3_1u8s(&at, &bit, end, factors.data(), &side, scfsi, &h, 1, 0),
              zorStsBadArgErr);
    side.scalefacCompress = 1;
    EXPECT_EQ(zorsUnpackScaleFactors_MP3_1u8s(&at, &bit, end, factors.data(), &side, scfsi, &h, 2, 0),
              zorStsBadArgErr);
    EXPECT_EQ(zorsUnpackScaleFactors_MP3_1u8s(&at, &bit, end, factors.data(), &side, nullptr, &h, 0, 0),
              zorStsNullPtrErr);
}

} // namespace
