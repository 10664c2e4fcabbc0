// Scaling, scale factors, interleaving, conversion, powers and block FIR.
#include "zormath.h"
#include "zors.h"
#include "zorsupport.h"

#include <gmock/gmock.h>

#include <limits>
#include <numeric>

namespace {

class GenericTest : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, GenericTest, testing::ValuesIn(zorPaths), zorPathName);

/** Lengths around whole vectors of every path. */
constexpr int lengths[] = {1, 3, 4, 7, 8, 15, 16, 17, 31, 33, 100, 1027};

TEST_P(GenericTest, ScaleMultipliesBandByBand) {
    const std::vector<int> ends = {0, 3, 20, 20, 61};
    const std::vector<float> factors = {100, 0.5f, -2, 1000, 3};
    const auto before = noise(70);
    auto data = before;
    ASSERT_EQ(zorStsNoErr, zorsScale_32f_I(data.data(), factors.data(), ends.data(), 5));
    for (std::size_t i = 0; i < data.size(); ++i) {
        const float factor = i < 3 ? 0.5f : i < 20 ? -2.0f : i < 61 ? 3.0f : 1.0f;
        EXPECT_EQ(before[i] * factor, data[i]) << i;
    }
    const std::vector<int> falling = {5, 4}, negative = {-1, 4};
    EXPECT_EQ(zorStsBadArgErr, zorsScale_32f_I(data.data(), factors.data(), falling.data(), 2));
    EXPECT_EQ(zorStsBadArgErr, zorsScale_32f_I(data.data(), factors.data(), negative.data(), 2));
    EXPECT_EQ(zorStsSizeErr, zorsScale_32f_I(data.data(), factors.data(), ends.data(), 0));
}

TEST_P(GenericTest, ScaleFactorsAreQuarterPowersOfTwo) {
    std::vector<Zor16s> all(65536);
    std::iota(all.begin(), all.end(), std::numeric_limits<Zor16s>::min());
    std::vector<float> gains(all.size());
    for (const int offset :
         {0, 6, -40000, 100, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        ASSERT_EQ(zorStsNoErr, zorsCalcSF_16s32f(all.data(), offset, gains.data(), 65536));
        for (std::size_t i = 0; i < all.size(); ++i) {
            const double power = (all[i] - static_cast<double>(offset)) / 4;
            if (power < -126)
                ASSERT_EQ(0.0f, gains[i]) << power;
            else if (power >= 128)
                ASSERT_EQ(std::numeric_limits<float>::infinity(), gains[i]) << power;
            else
                ASSERT_FLOAT_EQ(static_cast<float>(std::exp2(power)), gains[i]) << power;
        }
    }
}

/** Interleaves, compares with the definition, and takes apart again. */
template <class Sample>
void expectInterleaving(int (*interleave)(const Sample* const*, int, int, Sample*),
                        int (*deinterleave)(const Sample*, int, int, Sample* const*)) {
    for (int channels = 1; channels <= 11; ++channels)
        for (const int len : lengths) {
            SCOPED_TRACE(testing::Message() << channels << " channels of " << len);
            Lines<Sample> apart(channels, len), again(channels, len);
            for (std::size_t i = 0; i < apart.all().size(); ++i)
                apart.all()[i] = static_cast<Sample>(i + 1);
            std::vector<Sample> together(apart.all().size() + 1, Sample{77});
            ASSERT_EQ(zorStsNoErr, interleave(apart.constList(), channels, len, together.data()));
            for (int i = 0; i < len; ++i)
                for (int channel = 0; channel < channels; ++channel)
                    ASSERT_EQ(apart.at(channel, i),
                              together[static_cast<std::size_t>(i * channels + channel)]);
            ASSERT_EQ(Sample{77}, together.back());
            ASSERT_EQ(zorStsNoErr, deinterleave(together.data(), channels, len, again.list()));
            ASSERT_EQ(apart.all(), again.all());
        }
    Sample sample{};
    Sample* const list[] = {&sample, nullptr};
    EXPECT_EQ(zorStsNullPtrErr, deinterleave(&sample, 2, 1, list));
    EXPECT_EQ(zorStsNullPtrErr, interleave(list, 2, 1, &sample));
    EXPECT_EQ(zorStsSizeErr, interleave(list, 0, 1, &sample));
    EXPECT_EQ(zorStsSizeErr, deinterleave(&sample, 1, 0, list));
}

TEST_P(GenericTest, InterleavingAndBack) {
    expectInterleaving<Zor16s>(zorsInterleave_16s, zorsDeinterleave_16s);
    expectInterleaving<Zor32f>(zorsInterleave_32f, zorsDeinterleave_32f);
}

TEST_P(GenericTest, ConversionsAndPowersOfAllShorts) {
    std::vector<Zor16s> all(65536), back(65536);
    std::iota(all.begin(), all.end(), std::numeric_limits<Zor16s>::min());
    std::vector<float> floats(65536), powers(65536);
    ASSERT_EQ(zorStsNoErr, zorsMakeFloat_16s32f(all.data(), floats.data(), 65536));
    ASSERT_EQ(zorStsNoErr, zorsPow43_16s32f(all.data(), powers.data(), 65536));
    ASSERT_EQ(zorStsNoErr, zorsPow34_32f16s(powers.data(), back.data(), 65536));
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(static_cast<float>(all[i]), floats[i]);
        const double magnitude = std::pow(std::abs(static_cast<double>(all[i])), 4.0 / 3);
        ASSERT_FLOAT_EQ(static_cast<float>(std::copysign(magnitude, all[i])), powers[i]);
        // The quantiser undoes the power law; the most negative short has no positive counterpart.
        ASSERT_EQ(std::max<int>(all[i], -32767), back[i]);
    }
}

TEST_P(GenericTest, QuantiserRoundsAtItsThreshold) {
    // A magnitude of level - 0.4054 in the power domain is the first that reaches the level.
    for (const int level : {1, 2, 15, 100})
        for (const double sign : {1.0, -1.0}) {
            const double threshold = std::pow(level - 0.4054, 4.0 / 3);
            const float x[2] = {static_cast<float>(sign * threshold * (1 - 1e-5)),
                                static_cast<float>(sign * threshold * (1 + 1e-5))};
            Zor16s levels[2];
            ASSERT_EQ(zorStsNoErr, zorsPow34_32f16s(x, levels, 2));
            EXPECT_EQ(static_cast<int>(sign) * (level - 1), levels[0]) << level;
            EXPECT_EQ(static_cast<int>(sign) * level, levels[1]) << level;
        }
    const float extremes[] = {0, 1e30f, -1e30f, std::numeric_limits<float>::max(), -0.0f};
    const Zor16s expected[] = {0, 32767, -32767, 32767, 0};
    Zor16s levels[5];
    ASSERT_EQ(zorStsNoErr, zorsPow34_32f16s(extremes, levels, 5));
    EXPECT_THAT(levels, testing::ElementsAreArray(expected));
}

TEST_P(GenericTest, Pow34OverTheRangeOfFloats) {
    std::vector<float> x;
    for (double value = 1e-37; value < 3e38; value *= 1.37)
        x.insert(x.end(), {static_cast<float>(value), static_cast<float>(-value)});
    x.push_back(0);
    std::vector<float> y(x.size());
    ASSERT_EQ(zorStsNoErr, zorsPow34_32f(x.data(), y.data(), static_cast<int>(x.size())));
    for (std::size_t i = 0; i < x.size(); ++i)
        ASSERT_FLOAT_EQ(
            static_cast<float>(std::copysign(std::pow(std::fabs(static_cast<double>(x[i])), 0.75), x[i])),
            y[i]);
}

TEST_P(GenericTest, FirBlocksJoinSeamlessly) {
    const auto signal = noise(3000);
    for (const int order : {1, 2, 3, 8, 33, 500}) {
        const auto taps = noise(static_cast<std::size_t>(order), 4);
        ZorsFIRBlockState_32f* made = nullptr;
        ASSERT_EQ(zorStsNoErr, zorsFIRBlockInitAlloc_32f(&made, taps.data(), order));
        const StateOwner<ZorsFIRBlockState_32f, zorsFIRBlockFree_32f> state(made);
        std::vector<float> out(signal.size());
        std::vector<double> expected(signal.size());
        for (std::size_t n = 0; n < signal.size(); ++n)
            for (std::size_t k = 0; k < taps.size() && k <= n; ++k)
                expected[n] += static_cast<double>(taps[k]) * static_cast<double>(signal[n - k]);
        std::size_t at = 0;
        // Blocks shorter than the delay line, as long, and longer.
        for (const int len : {1, 2, 7, 31, 32, 33, 499, 500, 501, 1000, 394}) {
            ASSERT_EQ(zorStsNoErr, zorsFIRBlockOne_32f(signal.data() + at, out.data() + at, len, made));
            at += static_cast<std::size_t>(len);
        }
        ASSERT_EQ(signal.size(), at);
        EXPECT_GT(snr(expected, out), 120) << order;
    }
}

TEST(Generic, FirRefusesBadArguments) {
    const float tap = 1;
    float out = 0;
    ZorsFIRBlockState_32f* state = nullptr;
    EXPECT_EQ(zorStsSizeErr, zorsFIRBlockInitAlloc_32f(&state, &tap, 0));
    EXPECT_EQ(zorStsSizeErr, zorsFIRBlockInitAlloc_32f(&state, &tap, 65537));
    EXPECT_EQ(zorStsNullPtrErr, zorsFIRBlockInitAlloc_32f(&state, nullptr, 1));
    ASSERT_EQ(zorStsNoErr, zorsFIRBlockInitAlloc_32f(&state, &tap, 1));
    EXPECT_EQ(zorStsSizeErr, zorsFIRBlockOne_32f(&tap, &out, 0, state));
    EXPECT_EQ(zorStsNullPtrErr, zorsFIRBlockOne_32f(nullptr, &out, 1, state));
    EXPECT_EQ(zorStsNoErr, zorsFIRBlockFree_32f(state));
    EXPECT_EQ(zorStsNullPtrErr, zorsFIRBlockFree_32f(nullptr));
}

} // namespace
