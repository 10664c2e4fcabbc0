// The AAC transforms against their defining sums in double precision, and as a pair: forward and inverse
// reconstruct the signal through every change of window sequence and shape.
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

namespace {

using Signal = std::vector<double>;
using Lines = std::vector<Zor32s>;
constexpr double pi = std::numbers::pi;
constexpr int frame = 1024, block = 128, flat = 448;
/** The sums are worked out for every seventh element: all positions in all stages of a transform come up. */
constexpr int step = 7;

/** The rising half of a window shape, from the definitions of the standard. */
Signal rise(int length, int shape) {
    Signal kaiser(static_cast<std::size_t>(length) + 1), slope;
    const double alpha = length == frame ? 4 : 6;
    for (int n = 0; n <= length; ++n) {
        const double x = (n - length / 2.0) / (length / 2.0);
        kaiser[static_cast<std::size_t>(n)] = std::cyl_bessel_i(0.0, pi * alpha * std::sqrt(1 - x * x));
    }
    std::partial_sum(kaiser.begin(), kaiser.end(), kaiser.begin());
    for (int n = 0; n < length; ++n)
        slope.push_back(shape == 0 ? std::sin(pi / (2 * length) * (n + 0.5))
                                   : std::sqrt(kaiser[static_cast<std::size_t>(n)] / kaiser.back()));
    return slope;
}

/** The left half of a long sequence's window; the right half is another one's, reversed. */
Signal leftHalf(bool steep, int shape) {
    if (!steep)
        return rise(frame, shape);
    Signal half(flat);
    const Signal slope = rise(block, shape);
    half.insert(half.end(), slope.begin(), slope.end());
    half.resize(frame, 1);
    return half;
}

Signal window(int sequence, int shape, int before) {
    Signal left =
        sequence == zorAacEightShort ? rise(block, before) : leftHalf(sequence == zorAacLongStop, before);
    Signal right =
        sequence == zorAacEightShort ? rise(block, shape) : leftHalf(sequence == zorAacLongStart, shape);
    left.insert(left.end(), right.rbegin(), right.rend());
    return left;
}

/** cos(2 pi / N (n + n0)(k + 1/2)) through a table over its period. */
class Cosines {
  public:
    explicit Cosines(int size) : m_size(size) {
        for (int i = 0; i < 4 * size; ++i)
            m_values.push_back(std::cos(pi / (2 * size) * i));
    }
    double at(int n, int k) const {
        // 2 pi / N (n + N/4 + 1/2)(k + 1/2) = pi / (2 N) (2n + N/2 + 1)(2k + 1)
        return m_values[static_cast<std::size_t>((2 * n + m_size / 2 + 1) * (2 * k + 1) % (4 * m_size))];
    }

  private:
    int m_size;
    Signal m_values;
};

const Cosines& cosines(int size) {
    static const Cosines longOnes(2 * frame), shortOnes(2 * block);
    return size == 2 * frame ? longOnes : shortOnes;
}

Signal forward(const Signal& samples, const Signal& shape) {
    const int size = static_cast<int>(samples.size());
    Signal lines(samples.size() / 2);
    for (int k = 0; k < size / 2; k += step)
        for (int n = 0; n < size; ++n)
            lines[static_cast<std::size_t>(k)] += 2 * samples[static_cast<std::size_t>(n)] *
                                                  shape[static_cast<std::size_t>(n)] * cosines(size).at(n, k);
    return lines;
}

/** The windowed samples of a block that begins at sample `start` of the frame. */
Signal inverse(const Zor32s* lines, const Signal& shape, int start) {
    const int size = static_cast<int>(shape.size());
    Signal samples(shape.size());
    for (int n = 0; n < size; ++n) {
        if ((start + n) % frame % step != 0)
            continue;
        for (int k = 0; k < size / 2; ++k)
            samples[static_cast<std::size_t>(n)] += lines[k] * cosines(size).at(n, k);
        samples[static_cast<std::size_t>(n)] *= 2.0 / size * shape[static_cast<std::size_t>(n)];
    }
    return samples;
}

class AacMdct : public ZorPathTest {
  protected:
    Lines m_buffer = Lines(2048);
};
INSTANTIATE_TEST_SUITE_P(Paths, AacMdct, testing::ValuesIn(zorPaths), zorPathName);

struct Sequence {
    int sequence, shape, before;
};
const Sequence sequences[] = {{zorAacOnlyLong, 0, 0},   {zorAacOnlyLong, 1, 1},   {zorAacLongStart, 0, 1},
                              {zorAacLongStart, 1, 0},  {zorAacLongStop, 0, 1},   {zorAacLongStop, 1, 0},
                              {zorAacEightShort, 0, 0}, {zorAacEightShort, 1, 0}, {zorAacEightShort, 0, 1}};

TEST_P(AacMdct, ForwardIsTheDefiningSum) {
    for (const auto& [sequence, shape, before] : sequences)
        for (const int amplitude : {1, 32767}) {
            const int length = sequence == zorAacEightShort ? block : frame;
            const Lines samples = randomInts<Zor32s>(2 * length, -amplitude, amplitude, 11);
            const Signal expected =
                forward(Signal(samples.begin(), samples.end()), window(sequence, shape, before));
            Lines overlap(samples.begin(), samples.begin() + length), lines(static_cast<std::size_t>(length));
            ASSERT_EQ(zorStsNoErr, zorsMDCTFwd_AAC_32s(samples.data() + length, lines.data(), overlap.data(),
                                                       sequence, shape, before, m_buffer.data()));
            // Rounding, and the transform's own noise relative to 28 bits below its input.
            const double allowed = 0.5 + amplitude * 1e-4;
            for (std::size_t k = 0; k < lines.size(); k += step)
                ASSERT_NEAR(lines[k], expected[k], allowed) << sequence << shape << before << " line " << k;
            ASSERT_TRUE(std::equal(overlap.begin(), overlap.end(), samples.begin() + length));
        }
}

TEST_P(AacMdct, InverseIsTheDefiningSumOverlappedAndAdded) {
    for (const auto& [sequence, shape, before] : sequences)
        for (const int amplitude : {20, 300000}) {
            const Lines lines = randomInts<Zor32s>(frame, -amplitude, amplitude, 12);
            Signal expected(2 * frame);
            Lines overlap = randomInts<Zor32s>(frame, -200000, 200000, 13);
            for (std::size_t n = 0; n < frame; ++n)
                expected[n] = overlap[n] / 256.0;
            const int length = sequence == zorAacEightShort ? block : frame;
            for (int w = 0; w < frame / length; ++w) {
                const int start = sequence == zorAacEightShort ? flat + w * block : 0;
                const Signal part = inverse(lines.data() + w * length,
                                            window(sequence, shape, w == 0 ? before : shape), start);
                for (int n = 0; n < 2 * length; ++n)
                    expected[static_cast<std::size_t>(start + n)] += part[static_cast<std::size_t>(n)];
            }
            std::vector<Zor16s> samples(frame);
            ASSERT_EQ(zorStsNoErr, zorsMDCTInv_AAC_32s16s(lines.data(), samples.data(), overlap.data(),
                                                          sequence, shape, before, m_buffer.data()));
            for (std::size_t n = 0; n < frame; n += step) {
                ASSERT_NEAR(samples[n], std::clamp(expected[n], -32768.0, 32767.0), 0.5 + 0.01) << n;
                ASSERT_NEAR(overlap[n] / 256.0, expected[frame + n], 0.01) << n;
            }
        }
}

TEST_P(AacMdct, ThePairReconstructsThroughEveryWindowChange) {
    struct Frame {
        int sequence, shape;
    };
    const Frame frames[] = {{zorAacOnlyLong, 0},   {zorAacOnlyLong, 1},   {zorAacLongStart, 0},
                            {zorAacEightShort, 1}, {zorAacEightShort, 0}, {zorAacLongStop, 0},
                            {zorAacOnlyLong, 1},   {zorAacLongStart, 1},  {zorAacLongStop, 1},
                            {zorAacOnlyLong, 0}};
    const int count = static_cast<int>(std::size(frames));
    const Lines signal = randomInts<Zor32s>((count + 1) * frame, -32768, 32767, 14);
    Lines longOverlap(signal.begin(), signal.begin() + frame), inverseOverlap(frame), lines(frame);
    std::vector<Zor16s> samples(frame);
    int before = 0;
    for (int f = 0; f < count; ++f) {
        const auto [sequence, shape] = frames[f];
        const Zor32s* start = signal.data() + f * frame;
        if (sequence == zorAacEightShort) {
            Lines shortOverlap(start + flat, start + flat + block);
            for (int w = 0; w < 8; ++w)
                ASSERT_EQ(zorStsNoErr,
                          zorsMDCTFwd_AAC_32s(start + flat + (w + 1) * block, lines.data() + w * block,
                                              shortOverlap.data(), sequence, shape, w == 0 ? before : shape,
                                              m_buffer.data()));
            longOverlap.assign(start + frame, start + 2 * frame);
        } else {
            ASSERT_EQ(zorStsNoErr, zorsMDCTFwd_AAC_32s(start + frame, lines.data(), longOverlap.data(),
                                                       sequence, shape, before, m_buffer.data()));
        }
        ASSERT_EQ(zorStsNoErr, zorsMDCTInv_AAC_32s16s(lines.data(), samples.data(), inverseOverlap.data(),
                                                      sequence, shape, before, m_buffer.data()));
        before = shape;
        if (f == 0)
            continue; // the first half of the first frame has nothing to be added to
        for (int n = 0; n < frame; ++n)
            ASSERT_NEAR(start[n], samples[static_cast<std::size_t>(n)], 0.5)
                << "frame " << f << " sample " << n;
    }
}

TEST_P(AacMdct, SaturatesAndRepeatsWithAnyInput) {
    const Zor32s most = std::numeric_limits<Zor32s>::max(), least = std::numeric_limits<Zor32s>::min();
    for (const Zor32s value : {most, least, 0})
        for (const int sequence : {0, 1, 2, 3}) {
            Lines lines(frame, value), overlap(frame, value), out(frame);
            std::vector<Zor16s> samples(frame), first;
            for (int call = 0; call < 3; ++call) {
                ASSERT_EQ(zorStsNoErr, zorsMDCTFwd_AAC_32s(lines.data(), out.data(), overlap.data(), sequence,
                                                           0, 1, m_buffer.data()));
                ASSERT_EQ(zorStsNoErr, zorsMDCTInv_AAC_32s16s(lines.data(), samples.data(), overlap.data(),
                                                              sequence, 0, 1, m_buffer.data()));
            }
            if (value == 0) {
                EXPECT_EQ(std::vector<Zor16s>(frame), samples);
            }
        }
    // A constant spectrum of the largest magnitude is a pulse far beyond 16 bits.
    Lines lines(frame, most), overlap(frame);
    std::vector<Zor16s> samples(frame);
    ASSERT_EQ(zorStsNoErr,
              zorsMDCTInv_AAC_32s16s(lines.data(), samples.data(), overlap.data(), 0, 0, 0, m_buffer.data()));
    EXPECT_EQ(32767, *std::max_element(samples.begin(), samples.end()));
}

TEST(AacMdctPaths, AgreeToTheBit) {
    const Lines lines = randomInts<Zor32s>(frame, -5000000, 5000000, 15);
    std::vector<std::vector<Zor16s>> results;
    std::vector<Lines> spectra;
    for (const ZorPath& path : zorPaths)
        for (const int sequence : {zorAacOnlyLong, zorAacEightShort}) {
            if (zorInitCpu(path.cpuType) < 0)
                continue;
            std::vector<Zor16s> samples(frame);
            Lines overlap(frame, 77), buffer(2048), out(frame);
            zorsMDCTInv_AAC_32s16s(lines.data(), samples.data(), overlap.data(), sequence, 1, 0,
                                   buffer.data());
            zorsMDCTFwd_AAC_32s(lines.data(), out.data(), overlap.data(), sequence, 1, 0, buffer.data());
            results.push_back(samples);
            spectra.push_back(out);
        }
    zorInit();
    for (std::size_t i = 2; i < results.size(); ++i) {
        EXPECT_EQ(results[i % 2], results[i]);
        EXPECT_EQ(spectra[i % 2], spectra[i]);
    }
}

TEST(AacMdctArguments, AreChecked) {
    Lines lines(frame), overlap(frame), buffer(2048), out(frame);
    std::vector<Zor16s> samples(frame);
    for (const auto& [sequence, shape, before] :
         {Sequence{-1, 0, 0}, Sequence{4, 0, 0}, Sequence{0, 2, 0}, Sequence{0, 0, -1}}) {
        EXPECT_EQ(zorStsBadArgErr, zorsMDCTFwd_AAC_32s(lines.data(), out.data(), overlap.data(), sequence,
                                                       shape, before, buffer.data()));
        EXPECT_EQ(zorStsBadArgErr, zorsMDCTInv_AAC_32s16s(lines.data(), samples.data(), overlap.data(),
                                                          sequence, shape, before, buffer.data()));
    }
    EXPECT_EQ(zorStsNullPtrErr,
              zorsMDCTFwd_AAC_32s(lines.data(), out.data(), overlap.data(), 0, 0, 0, nullptr));
    EXPECT_EQ(zorStsNullPtrErr,
              zorsMDCTInv_AAC_32s16s(nullptr, samples.data(), overlap.data(), 0, 0, 0, buffer.data()));
}

} // namespace
