// The decoding tools of AAC beside its transforms and filters: elements of the stream, inverse quantisation,
// the order of lines, stereo, noise and long-term prediction.
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

namespace {

using Lines = std::vector<Zor32s>;
using Bytes = std::vector<Zor8u>;

constexpr Zor32s most = std::numeric_limits<Zor32s>::max(), least = std::numeric_limits<Zor32s>::min();

const int longOffsets[] = {0,   4,   8,   12,  16,  20,  24,  28,  32,  36,  40,  44,  48,  52,
                           56,  64,  72,  80,  88,  96,  108, 120, 132, 144, 156, 172, 188, 212,
                           240, 276, 320, 384, 448, 512, 576, 640, 704, 768, 832, 896, 960, 1024};
const int shortOffsets[] = {0, 4, 8, 12, 16, 20, 24, 32, 40, 48, 64, 92, 128};

Zor32s saturate(double value) {
    return static_cast<Zor32s>(std::llrint(std::clamp<double>(value, least, most)));
}

/** The division of a frame, with the band and the group of every line in window order. */
struct Layout {
    int winLen, maxSfb;
    std::vector<int> groups;

    int windows() const { return 1024 / winLen; }
    const int* offsets() const { return winLen == 128 ? shortOffsets : longOffsets; }
    int groupCount() const { return static_cast<int>(groups.size()); }
    /** At least 1, so that there is a table to point to. */
    std::size_t tableSize() const { return groups.size() * static_cast<std::size_t>(std::max(maxSfb, 1)); }
    int groupOf(int window) const {
        int group = 0;
        for (int end = groups[0]; window >= end; end += groups[static_cast<std::size_t>(++group)]) {}
        return group;
    }
    /** The table index of a line's band; -1 above maxSfb. */
    int bandOf(int line) const {
        const int within = line % winLen;
        if (within >= offsets()[maxSfb])
            return -1;
        const int* end = std::upper_bound(offsets(), offsets() + maxSfb, within);
        return groupOf(line / winLen) * maxSfb + static_cast<int>(end - offsets()) - 1;
    }
};

const Layout layouts[] = {{1024, 41, {1}},     {1024, 30, {1}}, {128, 12, {1, 1, 1, 1, 1, 1, 1, 1}},
                          {128, 9, {3, 1, 4}}, {128, 12, {8}},  {1024, 0, {1}}};

class Aac : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Aac, testing::ValuesIn(zorPaths), zorPathName);

TEST_P(Aac, QuantInvIsThePowerTimesTheGainOfTheScaleFactor) {
    for (const Layout& layout : layouts) {
        auto factors = randomInts<Zor16s>(static_cast<int>(layout.tableSize()), 60, 200, 1);
        auto books = randomInts<Zor8u>(static_cast<int>(layout.tableSize()), 0, 15, 2);
        if (layout.maxSfb > 8) { // gains beyond those that a stream can have
            factors[2] = 32767;
            factors[3] = -32768;
            books[2] = books[3] = 1;
        }
        for (const int range : {16, 8191, 20000}) {
            const Lines quantised = randomInts<Zor32s>(1024, -range, range, 3);
            Lines lines = quantised;
            ASSERT_EQ(zorStsNoErr,
                      zorsQuantInv_AAC_32s_I(lines.data(), factors.data(), books.data(), layout.groupCount(),
                                             layout.groups.data(), layout.maxSfb, 0, layout.winLen));
            std::size_t start = 0;
            for (int group = 0; group < layout.groupCount(); ++group) {
                const int windows = layout.groups[static_cast<std::size_t>(group)];
                for (int i = 0; i < windows * layout.winLen; ++i) {
                    const int band =
                        static_cast<int>(std::upper_bound(layout.offsets(), layout.offsets() + layout.maxSfb,
                                                          i / windows) -
                                         layout.offsets()) -
                        1;
                    double expected = 0;
                    if (i / windows < layout.offsets()[layout.maxSfb]) {
                        const auto table = static_cast<std::size_t>(group * layout.maxSfb + band);
                        const double q = quantised[start + static_cast<std::size_t>(i)];
                        if (q != 0 && books[table] >= 1 && books[table] < 13)
                            expected = std::copysign(std::pow(std::min(std::abs(q), 8191.0), 4.0 / 3), q) *
                                       std::exp2((factors[table] - 100) / 4.0);
                    }
                    expected = std::clamp<double>(expected, least, most);
                    // Rounding, and 24 bits of precision in the power, the gain and their product.
                    ASSERT_NEAR(lines[start + static_cast<std::size_t>(i)], expected,
                                0.5001 + std::abs(expected) * std::ldexp(1, -22))
                        << "group " << group << " line " << i;
                }
                start += static_cast<std::size_t>(windows * layout.winLen);
            }
        }
    }
}

TEST_P(Aac, DeinterleavingPutsEachWindowInOnePiece) {
    for (const Layout& layout : layouts) {
        const Lines window = randomInts<Zor32s>(1024, least, most, 4);
        Lines group(1024, 5), result(1024, 6), expected = window;
        // The order of the stream: group, band, window, line.
        std::size_t next = 0;
        for (int g = 0, first = 0; g < layout.groupCount();
             first += layout.groups[static_cast<std::size_t>(g++)]) {
            const std::size_t start = next;
            const int count = layout.groups[static_cast<std::size_t>(g)];
            for (int band = 0; band < layout.maxSfb; ++band)
                for (int w = first; w < first + count; ++w)
                    for (int line = layout.offsets()[band]; line < layout.offsets()[band + 1]; ++line)
                        group[next++] = window[static_cast<std::size_t>(w * layout.winLen + line)];
            next = start + static_cast<std::size_t>(count * layout.winLen);
        }
        for (int line = 0; line < 1024; ++line)
            if (layout.bandOf(line) < 0)
                expected[static_cast<std::size_t>(line)] = 0;
        ASSERT_EQ(zorStsNoErr,
                  zorsDeinterleaveSpectrum_AAC_32s(group.data(), result.data(), layout.groupCount(),
                                                   layout.groups.data(), layout.maxSfb, 0, layout.winLen));
        ASSERT_EQ(expected, result);
    }
}

TEST_P(Aac, MidSideMatricesTheBandsInUse) {
    for (const Layout& layout : layouts)
        for (const int mask : {0, 1, 2}) {
            const Bytes used = randomInts<Zor8u>(static_cast<int>(layout.tableSize()), 0, 1, 5);
            const Bytes books = randomInts<Zor8u>(static_cast<int>(layout.tableSize()), 8, 15, 6);
            const Lines mid = randomInts<Zor32s>(1024, least, most, 7),
                        side = randomInts<Zor32s>(1024, least, most, 8);
            Lines left = mid, right = side;
            ASSERT_EQ(zorStsNoErr,
                      zorsDecodeMsStereo_AAC_32s_I(left.data(), right.data(), mask, used.data(), books.data(),
                                                   layout.groupCount(), layout.groups.data(), layout.maxSfb,
                                                   0, layout.winLen));
            for (std::size_t i = 0; i < 1024; ++i) {
                const int band = layout.bandOf(static_cast<int>(i));
                const bool on = band >= 0 && books[static_cast<std::size_t>(band)] < 13 &&
                                (mask == 2 || (mask == 1 && used[static_cast<std::size_t>(band)] != 0));
                const double m = mid[i], s = side[i];
                ASSERT_EQ(left[i], on ? saturate(m + s) : mid[i]) << i;
                ASSERT_EQ(right[i], on ? saturate(m - s) : side[i]) << i;
            }
        }
}

TEST_P(Aac, MidSideOfAPairLeavesTheNoiseOfEitherChannelAlone) {
    const Layout& layout = layouts[0];
    const Lines mid(1024, 100), side(1024, 30);
    Bytes leftBooks(layout.tableSize(), 1), rightBooks(layout.tableSize(), 1);
    leftBooks[3] = rightBooks[5] = 13;
    rightBooks[7] = 15;
    Lines left = mid, right = side;
    ASSERT_EQ(zorStsNoErr, zorsDecodeMsStereoPair_AAC_32s_I(
                               left.data(), right.data(), 2, nullptr, leftBooks.data(), rightBooks.data(),
                               layout.groupCount(), layout.groups.data(), layout.maxSfb, 0, layout.winLen));
    for (int i = 0; i < 1024; ++i) {
        const int band = layout.bandOf(i);
        const bool on = band >= 0 && band != 3 && band != 5 && band != 7;
        EXPECT_EQ(left[static_cast<std::size_t>(i)], on ? 130 : 100) << i;
        EXPECT_EQ(right[static_cast<std::size_t>(i)], on ? 70 : 30) << i;
    }
}

TEST_P(Aac, IntensityScalesTheLeftChannel) {
    for (const Layout& layout : layouts)
        for (const int mask : {0, 1, 2}) {
            const int size = static_cast<int>(layout.tableSize());
            const Bytes used = randomInts<Zor8u>(size, 0, 1, 9), books = randomInts<Zor8u>(size, 11, 15, 10);
            const auto positions = randomInts<Zor16s>(size, -20, 60, 11);
            const Lines left = randomInts<Zor32s>(1024, least, most, 12);
            Lines right(1024, 321);
            ASSERT_EQ(zorStsNoErr,
                      zorsDecodeIsStereo_AAC_32s(left.data(), right.data(), positions.data(), mask,
                                                 used.data(), books.data(), layout.groupCount(),
                                                 layout.groups.data(), layout.maxSfb, 0, layout.winLen));
            for (std::size_t i = 0; i < 1024; ++i) {
                const int band = layout.bandOf(static_cast<int>(i));
                const auto b = static_cast<std::size_t>(std::max(band, 0));
                double expected = 321;
                if (band >= 0 && books[b] >= 14) {
                    expected = left[i] * std::pow(0.5, positions[b] / 4.0) * (books[b] == 15 ? 1 : -1);
                    if (mask == 1 && used[b] != 0)
                        expected = -expected;
                }
                ASSERT_NEAR(right[i], std::clamp<double>(expected, least, most), 0.5001) << i;
            }
        }
}

/** Calls the noise tool for one channel of a pair. */
struct NoiseCall {
    Layout layout;
    std::vector<Zor16s> energies;
    Bytes books, used;
    Zor32u state = 1;
    Lines bandState;

    explicit NoiseCall(const Layout& l) : layout(l) {
        const int size = static_cast<int>(l.tableSize());
        energies = randomInts<Zor16s>(size, 40, 80, 13);
        books = randomInts<Zor8u>(size, 12, 14, 14);
        used = randomInts<Zor8u>(size, 0, 1, 15);
        bandState.resize(l.tableSize());
    }
    Lines run(int second) {
        Lines lines(1024, 7);
        EXPECT_EQ(zorStsNoErr,
                  zorsDecodePNS_AAC_32s(lines.data(), energies.data(), books.data(), &state, bandState.data(),
                                        second, used.data(), layout.groupCount(), layout.groups.data(),
                                        layout.maxSfb, 0, layout.winLen));
        return lines;
    }
};

TEST_P(Aac, NoiseHasTheEnergyOfItsBand) {
    for (const Layout& layout : layouts) {
        NoiseCall call(layout);
        const Lines lines = call.run(0);
        for (int window = 0; window < layout.windows(); ++window)
            for (int band = 0; band < layout.maxSfb; ++band) {
                const auto b = static_cast<std::size_t>(layout.groupOf(window) * layout.maxSfb + band);
                const int first = window * layout.winLen + layout.offsets()[band];
                const int width = layout.offsets()[band + 1] - layout.offsets()[band];
                double energy = 0;
                int changed = 0;
                for (int i = first; i < first + width; ++i) {
                    const double line = lines[static_cast<std::size_t>(i)];
                    energy += line * line;
                    changed += line != 7;
                }
                if (call.books[b] != 13) {
                    ASSERT_EQ(0, changed);
                    continue;
                }
                // Rounding moves each line by up to a half.
                const double root = std::exp2(call.energies[b] / 4.0);
                ASSERT_NEAR(std::sqrt(energy), root, 0.5 * std::sqrt(width)) << window << " " << band;
            }
    }
}

TEST_P(Aac, NoiseIsSpreadAndGoesOnFromCallToCall) {
    NoiseCall call(layouts[0]);
    std::fill(call.books.begin(), call.books.end(), Zor8u{13});
    std::fill(call.energies.begin(), call.energies.end(), Zor16s{80});
    const Lines first = call.run(0), second = call.run(0);
    EXPECT_NE(first, second);
    // The last band of 64 lines: mean near 0, no line repeated, correlation of the calls small.
    double sum = 0, product = 0, energy = std::exp2(40.0);
    for (std::size_t i = 960; i < 1024; ++i) {
        sum += first[i];
        product += static_cast<double>(first[i]) * second[i];
    }
    EXPECT_LT(std::abs(sum), 4 * std::sqrt(energy));
    EXPECT_LT(std::abs(product), energy / 2);
}

TEST_P(Aac, NoiseOfMarkedBandsIsThatOfTheFirstChannel) {
    int same = 0, different = 0;
    for (const Layout& layout : layouts) {
        NoiseCall call(layout);
        const Lines first = call.run(0), second = call.run(1);
        for (int i = 0; i < 1024; ++i) {
            const int band = layout.bandOf(i);
            const auto line = static_cast<std::size_t>(i);
            if (band < 0 || call.books[static_cast<std::size_t>(band)] != 13)
                continue;
            if (call.used[static_cast<std::size_t>(band)] != 0) {
                ASSERT_EQ(first[line], second[line]);
                ++same;
            } else {
                different += first[line] != second[line];
            }
        }
    }
    EXPECT_GT(same, 100);
    EXPECT_GT(different, 100);
}

TEST_P(Aac, NoiseThatTheFirstChannelNeverMadeIsTheSecondOnesOwn) {
    NoiseCall call(layouts[0]);
    std::fill(call.used.begin(), call.used.end(), Zor8u{1});
    std::fill(call.books.begin(), call.books.end(), Zor8u{1});
    std::fill(call.energies.begin(), call.energies.end(), Zor16s{80});
    std::fill(call.bandState.begin(), call.bandState.end(), 0);
    call.run(0); // no noise at all
    EXPECT_EQ(call.state, 1U);
    std::fill(call.books.begin(), call.books.end(), Zor8u{13});
    const Lines second = call.run(1);
    // Bands of 64 lines at the end: no two alike, which they would be from one state or from none.
    for (std::size_t band = 640; band + 128 <= 1024; band += 64) {
        double product = 0;
        for (std::size_t i = 0; i < 64; ++i)
            product += static_cast<double>(second[band + i]) * second[band + 64 + i];
        EXPECT_LT(std::abs(product), std::exp2(40.0) / 2) << band;
    }
}

TEST_P(Aac, LongTermReconstructionAddsTheBandsInUse) {
    struct Case {
        int sequence, winLen, maxSfb, bandsServed;
        bool on;
    };
    // Prediction serves 40 bands of long and 8 of short windows.
    for (const Case& test : {Case{0, 1024, 41, 40, true}, Case{3, 1024, 20, 20, true},
                             Case{2, 128, 12, 8, true}, Case{0, 1024, 41, 40, false}}) {
        const Layout layout{test.winLen, test.bandsServed,
                            std::vector<int>(static_cast<std::size_t>(1024 / test.winLen), 1)};
        Bytes flags = randomInts<Zor8u>(test.maxSfb + 1, 0, 1, 16);
        flags[0] = test.on;
        const Lines prediction = randomInts<Zor32s>(1024, least, most, 17),
                    before = randomInts<Zor32s>(1024, least, most, 18);
        Lines lines = before;
        ASSERT_EQ(zorStsNoErr, zorsLongTermReconstruct_AAC_32s(prediction.data(), lines.data(), flags.data(),
                                                               test.sequence, test.maxSfb, 0));
        for (std::size_t i = 0; i < 1024; ++i) {
            const int band = layout.bandOf(static_cast<int>(i));
            const bool on =
                test.on && band >= 0 && flags[static_cast<std::size_t>(band % test.bandsServed) + 1] != 0;
            ASSERT_EQ(lines[i], on ? saturate(static_cast<double>(before[i]) + prediction[i]) : before[i])
                << i;
        }
    }
}

TEST_P(Aac, LongTermPredictionTransformsTheDelayedSignal) {
    static const double gains[] = {0.570829, 0.696616, 0.813004, 0.911304,
                                   0.984900, 1.067894, 1.194601, 1.369533};
    Lines history = randomInts<Zor32s>(4096, -30000, 30000, 19);
    for (const int sequence : {0, 1, 2, 3})
        for (const int lag : {0, 1, 1000, 2047})
            for (const int index : {0, 7}) {
                Lines predicted(2048), samples(2048), expected(1024), buffer(2048);
                ASSERT_EQ(zorStsNoErr, zorsLongTermPredict_AAC_32s(history.data(), predicted.data(), lag,
                                                                   index, sequence, 1, 0));
                for (int i = 0; i < 2048; ++i)
                    samples[static_cast<std::size_t>(i)] = saturate(
                        std::floor(gains[index] * history[static_cast<std::size_t>(2048 + i - lag)] + 0.5));
                // The transform has a test of its own.
                const int length = sequence == 2 ? 128 : 1024;
                for (int w = 0; w < 1024 / length; ++w) {
                    const Zor32s* first = samples.data() + (sequence == 2 ? 448 + w * 128 : 0);
                    Lines overlap(first, first + length);
                    ASSERT_EQ(zorStsNoErr, zorsMDCTFwd_AAC_32s(first + length, expected.data() + w * length,
                                                               overlap.data(), sequence, 1, w == 0 ? 0 : 1,
                                                               buffer.data()));
                }
                // A product next to a half may round the other way; each such sample moves a line by up to 2.
                for (std::size_t i = 0; i < 1024; ++i)
                    ASSERT_NEAR(expected[i], predicted[i], 8) << sequence << " " << lag << " " << index;
            }
}

TEST(AacElements, AreReadAtEveryBitPosition) {
    for (const int count : {0, 1, 6, 7, 8, 13, 14, 15, 100, 254, 255, 256, 269, 510})
        for (int start = 0; start < 8; ++start)
            for (const int kind : {0, 1, 2}) { // fill, data, aligned data
                if (kind == 0 && count > 269)
                    continue;
                const Bytes payload = randomInts<Zor8u>(count, 0, 255, static_cast<unsigned>(count));
                BitText bits;
                bits.put(0x55, start);
                if (kind == 0) {
                    bits.put(static_cast<unsigned>(std::min(count, 15)), 4);
                    if (count >= 15)
                        bits.put(static_cast<unsigned>(count - 14), 8);
                } else {
                    bits.put(9, 4).put(kind == 2, 1).put(static_cast<unsigned>(std::min(count, 255)), 8);
                    if (count >= 255)
                        bits.put(static_cast<unsigned>(count - 255), 8);
                    if (kind == 2)
                        bits.put(0, (8 - bits.size() % 8) % 8);
                }
                for (const Zor8u byte : payload)
                    bits.put(byte, 8);
                // Exactly as many bytes as the element takes.
                const Bytes stream = bits.bytes();
                const Zor8u* position = stream.data();
                const Zor8u* end = position + stream.size();
                int offset = start, tag = 0, found = -1;
                Bytes out(static_cast<std::size_t>(count) + 1, 0xEE);
                const auto decode = [&](const Zor8u* limit, int room) {
                    return kind == 0
                               ? zorsDecodeFillElt_AAC(&position, &offset, limit, &found, out.data(), room)
                               : zorsDecodeDatStrElt_AAC(&position, &offset, limit, &tag, &found, out.data(),
                                                         room);
                };
                if (count > 0) {
                    ASSERT_EQ(zorStsSizeErr, decode(end, count - 1));
                    ASSERT_EQ(zorStsStreamEndErr, decode(end - 1, count));
                    ASSERT_EQ(stream.data(), position);
                }
                ASSERT_EQ(-1, found);
                ASSERT_EQ(zorStsNoErr, decode(end, count));
                ASSERT_EQ(count, found);
                ASSERT_EQ(kind == 0 ? 0 : 9, tag);
                ASSERT_EQ(bits.size(), (position - stream.data()) * 8 + offset);
                ASSERT_EQ(0xEE, out.back());
                out.pop_back();
                ASSERT_EQ(payload, out) << count << " from bit " << start;
            }
}

TEST(AacArguments, AreRefusedWithoutWriting) {
    const int eight[] = {1, 1, 1, 1, 1, 1, 1, 1}, bad[] = {1, 1, 1, 1, 1, 1, 1, 2}, none[] = {0, 8};
    struct Case {
        const char* name;
        ZorStatus status;
        int numWinGrp;
        const int* winGrpLen;
        int maxSfb, rate, winLen;
    };
    const Case cases[] = {
        {"nine windows", zorStsSizeErr, 8, bad, 12, 0, 128},
        {"seven windows", zorStsSizeErr, 7, eight, 12, 0, 128},
        {"empty group", zorStsSizeErr, 2, none, 12, 0, 128},
        {"no group", zorStsSizeErr, 0, eight, 12, 0, 128},
        {"nine groups", zorStsSizeErr, 9, eight, 12, 0, 128},
        {"groups of long windows", zorStsSizeErr, 8, eight, 12, 0, 1024},
        {"bands", zorStsSizeErr, 8, eight, 13, 0, 128},
        {"negative bands", zorStsSizeErr, 8, eight, -1, 0, 128},
        {"window length", zorStsSizeErr, 8, eight, 12, 0, 64},
        {"rate", zorStsBadArgErr, 8, eight, 12, 12, 128},
        {"no lengths", zorStsNullPtrErr, 8, nullptr, 12, 0, 128},
    };
    const std::vector<Zor16s> factors(120, 4);
    const Bytes used(120, 1), books(120, 13), coded(120, 1), intensity(120, 15);
    const Lines before(1024, 9);
    for (const Case& c : cases) {
        Lines a = before, b = before;
        Zor32u state = 1;
        Lines bandState(120);
        EXPECT_EQ(c.status, zorsQuantInv_AAC_32s_I(a.data(), factors.data(), coded.data(), c.numWinGrp,
                                                   c.winGrpLen, c.maxSfb, c.rate, c.winLen))
            << c.name;
        EXPECT_EQ(c.status, zorsDeinterleaveSpectrum_AAC_32s(a.data(), b.data(), c.numWinGrp, c.winGrpLen,
                                                             c.maxSfb, c.rate, c.winLen))
            << c.name;
        EXPECT_EQ(c.status,
                  zorsDecodeMsStereo_AAC_32s_I(a.data(), b.data(), 1, used.data(), coded.data(), c.numWinGrp,
                                               c.winGrpLen, c.maxSfb, c.rate, c.winLen))
            << c.name;
        EXPECT_EQ(c.status, zorsDecodeIsStereo_AAC_32s(a.data(), b.data(), factors.data(), 1, used.data(),
                                                       intensity.data(), c.numWinGrp, c.winGrpLen, c.maxSfb,
                                                       c.rate, c.winLen))
            << c.name;
        EXPECT_EQ(c.status,
                  zorsDecodePNS_AAC_32s(a.data(), factors.data(), books.data(), &state, bandState.data(), 0,
                                        nullptr, c.numWinGrp, c.winGrpLen, c.maxSfb, c.rate, c.winLen))
            << c.name;
        EXPECT_EQ(before, a) << c.name;
        EXPECT_EQ(before, b) << c.name;
    }
    Lines a = before, b = before;
    EXPECT_EQ(zorStsBadArgErr, zorsDecodeMsStereo_AAC_32s_I(a.data(), b.data(), 3, used.data(), coded.data(),
                                                            8, eight, 12, 0, 128));
    EXPECT_EQ(zorStsNullPtrErr, zorsDecodeMsStereo_AAC_32s_I(a.data(), b.data(), 1, nullptr, coded.data(), 8,
                                                             eight, 12, 0, 128));
    for (const auto& [lag, index, sequence] :
         {std::tuple{-1, 0, 0}, {2048, 0, 0}, {0, 8, 0}, {0, -1, 0}, {0, 0, 4}}) {
        Lines history(4096), predicted(2048);
        EXPECT_EQ(zorStsBadArgErr,
                  zorsLongTermPredict_AAC_32s(history.data(), predicted.data(), lag, index, sequence, 0, 0));
    }
    EXPECT_EQ(zorStsSizeErr, zorsLongTermReconstruct_AAC_32s(a.data(), b.data(), used.data(), 2, 13, 0));
}

} // namespace
