// Frequency-domain prediction: inverse undoes forward, predictable lines shrink, resets forget.
#include "zorac.h"
#include "zormath.h"
#include "zorsupport.h"

#include <algorithm>
#include <numeric>
#include <random>

namespace {

class FdpTest : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, FdpTest, testing::ValuesIn(zorPaths), zorPathName);

constexpr int length = 1024;

using State = StateOwner<ZorsFDPState_32f, zorsFDPFree_32f>;

State makeState(int len = length) {
    ZorsFDPState_32f* state = nullptr;
    EXPECT_EQ(zorStsNoErr, zorsFDPInitAlloc_32f(&state, len));
    return State(state);
}

/** Bands of uneven width from line 5 to line 901, prediction in some of them by turns. */
struct Bands {
    std::vector<int> offset{5, 6, 13, 40, 104, 104, 333, 901};
    std::vector<Zor8u> used;
    explicit Bands(int frame) {
        for (int band = 0; band < count(); ++band)
            used.push_back(static_cast<Zor8u>((frame + band) % 4 ? 0x80 : 0));
    }
    int count() const { return static_cast<int>(offset.size()) - 1; }
};

/** The whole spectrum as one predicted band. */
struct AllLines {
    int offset[2] = {0, length};
    Zor8u used = 1;
};

std::vector<float> forward(const std::vector<float>& spectrum, ZorsFDPState_32f* state) {
    const AllLines all;
    std::vector<float> errors(spectrum.size());
    EXPECT_EQ(zorStsNoErr, zorsFDPFwd_32f(spectrum.data(), errors.data(), all.offset, &all.used, 1, state));
    return errors;
}

/** A frame of lines that each follow an oscillation of their own, as a stationary sine's do. */
std::vector<float> oscillation(int frame) {
    std::vector<float> lines(length);
    for (std::size_t i = 0; i < lines.size(); ++i)
        lines[i] = static_cast<float>(1000 * std::cos(0.3 + 0.9 * static_cast<double>(i) +
                                                      frame * (0.2 + 0.0025 * static_cast<double>(i))));
    return lines;
}

TEST_P(FdpTest, InverseUndoesForwardOverManyFrames) {
    const State coder = makeState(), decoder = makeState();
    double worst = 400;
    for (int frame = 0; frame < 600; ++frame) {
        auto spectrum = noise(length, static_cast<unsigned>(frame));
        const auto steady = oscillation(frame);
        for (std::size_t i = 0; i < spectrum.size(); ++i)
            spectrum[i] = 30 * spectrum[i] + (frame % 100 < 60 ? steady[i] : 0);
        const Bands bands(frame);
        std::vector<float> coded(length);
        ASSERT_EQ(zorStsNoErr, zorsFDPFwd_32f(spectrum.data(), coded.data(), bands.offset.data(),
                                              bands.used.data(), bands.count(), coder.get()));
        for (const int line : {0, 4, 901, 1023})
            ASSERT_EQ(spectrum[static_cast<std::size_t>(line)], coded[static_cast<std::size_t>(line)]);
        ASSERT_EQ(zorStsNoErr, zorsFDPInv_32f_I(coded.data(), bands.offset.data(), bands.used.data(),
                                                bands.count(), decoder.get()));
        worst = std::min(worst, snr(spectrum, coded));
        if (frame % 30 == 29) {
            ASSERT_EQ(zorStsNoErr, zorsFDPResetGroup_32f(frame / 30 + 1, 30, coder.get()));
            ASSERT_EQ(zorStsNoErr, zorsFDPResetGroup_32f(frame / 30 + 1, 30, decoder.get()));
        }
    }
    EXPECT_GT(worst, 125);
}

TEST_P(FdpTest, SteadyLinesBecomeSmall) {
    const State state = makeState();
    std::vector<float> errors;
    for (int frame = 0; frame < 80; ++frame)
        errors = forward(oscillation(frame), state.get());
    // Energy of the frame over that of its errors; the 16-bit state and the attenuation limit it.
    const auto energy = [](const std::vector<float>& v) {
        return std::inner_product(v.begin(), v.end(), v.begin(), 0.0);
    };
    EXPECT_GT(10 * std::log10(energy(oscillation(79)) / energy(errors)), 15);
}

/**
 * The recursion of the standard for one line, in its single precision: every product, sum and quotient is
 * rounded to a float by itself.
 */
class ReferencePredictor {
  public:
    /** One frame; returns the prediction error. */
    float step(float x) {
        const float k0 = reflection(cor[0], var[0]), k1 = reflection(cor[1], var[1]);
        const float error = x - roundAway(k0 * r[0] + k1 * r[1]);
        const float e0 = error + roundAway(k0 * r[0] + k1 * r[1]), e1 = e0 - k0 * r[0];
        const float feed = r[0] - k0 * e0;
        cor[0] = cut(0.90625f * cor[0] + r[0] * e0);
        cor[1] = cut(0.90625f * cor[1] + r[1] * e1);
        var[0] = cut(0.90625f * var[0] + 0.5f * (r[0] * r[0] + e0 * e0));
        var[1] = cut(0.90625f * var[1] + 0.5f * (r[1] * r[1] + e1 * e1));
        r[1] = cut(0.953125f * feed);
        r[0] = cut(0.953125f * e0);
        return error;
    }

  private:
    static int exponent(float value) { return value == 0 ? 0 : std::ilogb(value); }
    /** Eight bits of mantissa are left, by one of the three roundings. */
    template <class Rounding>
    static float toEightBits(float value, Rounding rounding) {
        const int e = exponent(value);
        return std::ldexp(rounding(std::ldexp(value, 7 - e)), e - 7);
    }
    static float cut(float value) {
        return toEightBits(value, [](float v) { return std::trunc(v); });
    }
    static float roundAway(float value) {
        return toEightBits(value, [](float v) { return std::round(v); });
    }
    static float reflection(float correlation, float energy) {
        if (energy <= 1)
            return 0;
        return correlation * toEightBits(0.953125f / energy, [](float v) { return std::nearbyint(v); });
    }
    float r[2] = {0, 0}, cor[2] = {0, 0}, var[2] = {1, 1};
};

TEST_P(FdpTest, FollowsTheRecursionOfTheStandard) {
    const State state = makeState();
    std::vector<ReferencePredictor> references(length);
    std::mt19937 engine(7);
    std::uniform_real_distribution<float> noise(-3000, 3000);
    // A product that is not rounded by itself shows in a state of 8 bits now and then only: many frames.
    for (int frame = 0; frame < 200; ++frame) {
        auto spectrum = oscillation(frame);
        for (float& line : spectrum)
            line += noise(engine);
        const auto errors = forward(spectrum, state.get());
        for (std::size_t i = 0; i < spectrum.size(); ++i)
            ASSERT_EQ(references[i].step(spectrum[i]), errors[i]) << "frame " << frame << ", line " << i;
    }
}

TEST_P(FdpTest, ResetsForgetTheirLinesOnly) {
    for (const auto& [group, step] :
         {std::pair{1, 30}, std::pair{30, 30}, std::pair{7, 1}, std::pair{1024, 5}}) {
        const State reset = makeState(), kept = makeState(), fresh = makeState();
        for (int frame = 0; frame < 10; ++frame) {
            forward(oscillation(frame), reset.get());
            forward(oscillation(frame), kept.get());
        }
        ASSERT_EQ(zorStsNoErr, zorsFDPResetGroup_32f(group, step, reset.get()));
        for (int frame = 10; frame < 13; ++frame) {
            const auto afterReset = forward(oscillation(frame), reset.get());
            const auto afterAll = forward(oscillation(frame), kept.get());
            const auto fromNew = forward(oscillation(frame), fresh.get());
            for (int line = 0; line < length; ++line) {
                const bool inGroup = line >= group - 1 && (line - group + 1) % step == 0;
                const auto i = static_cast<std::size_t>(line);
                ASSERT_EQ(inGroup ? fromNew[i] : afterAll[i], afterReset[i]) << "line " << line;
            }
        }
        ASSERT_EQ(zorStsNoErr, zorsFDPReset_32f(reset.get()));
        const State another = makeState();
        ASSERT_EQ(forward(oscillation(1), another.get()), forward(oscillation(1), reset.get()));
    }
}

TEST(Fdp, RefusesBadArguments) {
    ZorsFDPState_32f* none = nullptr;
    for (const int len : {-1, 0, (1 << 24) + 1})
        EXPECT_EQ(zorStsSizeErr, zorsFDPInitAlloc_32f(&none, len));
    const State state = makeState(100);
    std::vector<float> lines(100);
    const Zor8u used[2] = {1, 1};
    const auto run = [&](std::vector<int> offset, int bands) {
        return zorsFDPInv_32f_I(lines.data(), offset.data(), used, bands, state.get());
    };
    EXPECT_EQ(zorStsNoErr, run({0, 50, 100}, 2));
    EXPECT_EQ(zorStsSizeErr, run({0, 50, 100}, 0));
    for (const auto& offset : {std::vector{0, 50, 101}, {-1, 50, 100}, {0, 60, 50}})
        EXPECT_EQ(zorStsBadArgErr, run(offset, 2));
    for (const auto& [group, step] : {std::pair{0, 1}, std::pair{101, 1}, std::pair{1, 0}, std::pair{1, 101}})
        EXPECT_EQ(zorStsBadArgErr, zorsFDPResetGroup_32f(group, step, state.get()));
    EXPECT_EQ(zorStsNullPtrErr, zorsFDPReset_32f(nullptr));
    EXPECT_EQ(zorStsNullPtrErr, zorsFDPFree_32f(nullptr));
}

} // namespace
