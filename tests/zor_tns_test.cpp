// Temporal noise shaping against a lattice filter in double precision, which knows nothing of predictors
// in direct form or of fixed point.
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

namespace {

using Signal = std::vector<double>;

double reflection(int code, int bits) {
    const int levels = 1 << bits;
    int value = code & (levels - 1);
    if (value >= levels / 2)
        value -= levels;
    const double step = value < 0 ? (levels + 1) / 2.0 : (levels - 1) / 2.0;
    return std::sin(value * std::numbers::pi / 2 / step);
}

struct Lattice {
    std::vector<double> k;

    Signal encode(Signal signal) const {
        std::vector<double> delayed(k.size() + 1);
        for (double& sample : signal) {
            double forward = sample, backward = sample;
            for (std::size_t m = 0; m < k.size(); ++m) {
                const double old = std::exchange(delayed[m], backward);
                backward = k[m] * forward + old;
                forward += k[m] * old;
            }
            sample = forward;
        }
        return signal;
    }

    Signal decode(Signal signal) const {
        std::vector<double> delayed(k.size() + 1);
        for (double& sample : signal) {
            double forward = sample;
            for (std::size_t m = k.size(); m-- > 0;) {
                forward -= k[m] * delayed[m];
                delayed[m + 1] = k[m] * forward + delayed[m];
            }
            delayed[0] = forward;
            sample = forward;
        }
        return signal;
    }

    /** The sum of the magnitudes of the decoder's response to one unit: by how much it can enlarge an error.
     */
    double decoderGain(std::size_t length) const {
        Signal unit(length);
        unit[0] = 1;
        double sum = 0;
        for (const double value : decode(unit))
            sum += std::abs(value);
        return sum;
    }

    /** The sum of the magnitudes of the predictor's coefficients. */
    double predictorSize() const {
        Signal unit(k.size() + 1);
        unit[0] = 1;
        double sum = -1;
        for (const double value : encode(unit))
            sum += std::abs(value);
        return sum;
    }
};

/** A call's tables; each filter is added for all windows. */
struct Filters {
    std::vector<int> numFilt, regionLen, order, coefRes, direction;
    std::vector<Zor8s> coef;
    int maxSfb = 41, profile = zorAacLC, rate = 0, winLen = 1024;

    using Function = decltype(&zorsDecodeTNS_AAC_32s_I);
    ZorStatus run(Function function, std::vector<Zor32s>& lines) const {
        return function(lines.data(), numFilt.data(), regionLen.data(), order.data(), coefRes.data(),
                        coef.data(), direction.data(), maxSfb, profile, rate, winLen);
    }
};

/** One filter over all bands of each window; the codes are those of the window's filter. */
Filters oneFilter(int winLen, int order, int bits, int direction, unsigned seed) {
    const int windows = 1024 / winLen;
    const auto each = static_cast<std::size_t>(windows);
    Filters filters;
    filters.numFilt.assign(each, 1);
    filters.maxSfb = winLen == 128 ? 12 : 41;
    filters.regionLen.assign(each, filters.maxSfb);
    filters.order.assign(each, order);
    filters.coefRes.assign(each, bits);
    filters.direction.assign(each, direction);
    filters.winLen = winLen;
    filters.coef = randomInts<Zor8s>(order * windows, -8, 7, seed);
    return filters;
}

Lattice latticeOf(const Filters& filters, int filter, int bits) {
    Lattice lattice;
    const int order = filters.order[static_cast<std::size_t>(filter)];
    int first = 0;
    for (int i = 0; i < filter; ++i)
        first += filters.order[static_cast<std::size_t>(i)];
    for (int i = 0; i < order; ++i)
        lattice.k.push_back(reflection(filters.coef[static_cast<std::size_t>(first + i)], bits));
    return lattice;
}

Signal cut(const std::vector<Zor32s>& lines, int first, int last, bool down) {
    Signal signal(lines.begin() + first, lines.begin() + last);
    if (down)
        std::reverse(signal.begin(), signal.end());
    return signal;
}

double peak(const Signal& signal) {
    double most = 0;
    for (const double value : signal)
        most = std::max(most, std::abs(value));
    return most;
}

/** How far a fixed-point filter may be from the exact one: half a unit per output and what rounding the
    coefficients to 28 bits below the predictor's size makes of the largest sample, through the filter's gain.
 */
double tolerance(const Lattice& lattice, double gain, double largest) {
    const double coefStep = std::max(2.0, lattice.predictorSize()) * std::ldexp(1.0, -29);
    return gain * (0.5 + static_cast<double>(lattice.k.size()) * coefStep * largest) * 1.01 + 0.01;
}

struct Region {
    int first, last;
};

/** Compares the regions of a call with the lattice; true when all lines agree. */
void expectFiltered(const Filters& filters, bool decode, const std::vector<Zor32s>& before,
                    const std::vector<Zor32s>& after, const std::vector<Region>& regions) {
    std::vector<bool> touched(before.size());
    for (std::size_t f = 0; f < regions.size(); ++f) {
        const auto [first, last] = regions[f];
        if (first == last)
            continue;
        const std::size_t window = filters.winLen == 128 ? f : 0;
        const Lattice lattice = latticeOf(filters, static_cast<int>(f), filters.coefRes[window]);
        const bool down = filters.direction[f] == 1;
        const Signal input = cut(before, first, last, down);
        const Signal expected = decode ? lattice.decode(input) : lattice.encode(input);
        const Signal found = cut(after, first, last, down);
        const double gain = decode ? lattice.decoderGain(input.size()) : 1;
        const double allowed = tolerance(lattice, gain, decode ? peak(expected) : peak(input));
        ASSERT_LT(peak(expected), 2147483647.0);
        for (std::size_t i = 0; i < input.size(); ++i)
            ASSERT_NEAR(found[i], expected[i], allowed) << "filter " << f << " sample " << i;
        std::fill(touched.begin() + first, touched.begin() + last, true);
    }
    for (std::size_t i = 0; i < before.size(); ++i)
        if (!touched[i]) {
            ASSERT_EQ(before[i], after[i]) << "line outside every region: " << i;
        }
}

class Tns : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Tns, testing::ValuesIn(zorPaths), zorPathName);

TEST_P(Tns, EqualsTheLatticeForEveryOrderResolutionAndDirection) {
    for (const int winLen : {1024, 128})
        for (const int order : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 20})
            for (const int bits : {3, 4})
                for (const int direction : {0, 1}) {
                    if (winLen == 128 && order > 7)
                        continue;
                    Filters filters = oneFilter(winLen, order, bits, direction, static_cast<unsigned>(order));
                    filters.profile = order > 12 ? zorAacMain : zorAacLTP;
                    // At 96 kHz the filters end below band 31 (line 384) or band 9 (line 48).
                    std::vector<Region> regions;
                    for (int start = 0; start < 1024; start += winLen)
                        regions.push_back({start, start + (winLen == 1024 ? 384 : 48)});
                    SCOPED_TRACE(testing::Message() << winLen << " order " << order << " bits " << bits
                                                    << " direction " << direction);
                    for (const bool decode : {true, false}) {
                        // Small enough for the decoder not to saturate with these codes.
                        const auto before = randomInts<Zor32s>(1024, -200, 200, 3);
                        auto after = before;
                        ASSERT_EQ(
                            zorStsNoErr,
                            filters.run(decode ? zorsDecodeTNS_AAC_32s_I : zorsEncodeTNS_AAC_32s_I, after));
                        expectFiltered(filters, decode, before, after, regions);
                    }
                }
}

TEST_P(Tns, DecodingUndoesEncodingWithinRounding) {
    for (const int bits : {3, 4})
        for (const int order : {1, 4, 7, 12})
            for (const int direction : {0, 1}) {
                const Filters filters =
                    oneFilter(1024, order, bits, direction, 40U + static_cast<unsigned>(order));
                const auto before = randomInts<Zor32s>(1024, -100000, 100000, 5);
                auto after = before;
                ASSERT_EQ(zorStsNoErr, filters.run(zorsEncodeTNS_AAC_32s_I, after));
                EXPECT_NE(before, after);
                ASSERT_EQ(zorStsNoErr, filters.run(zorsDecodeTNS_AAC_32s_I, after));
                // Half a unit from each of the two, through the decoder's gain.
                const double allowed = 1.01 * latticeOf(filters, 0, bits).decoderGain(384) + 0.01;
                for (std::size_t i = 0; i < before.size(); ++i)
                    ASSERT_NEAR(before[i], after[i], i < 384 ? allowed : 0)
                        << bits << " " << order << " " << i;
            }
}

TEST_P(Tns, FiltersOfAWindowFollowOneAnotherDownward) {
    Filters filters;
    filters.numFilt = {3};
    filters.regionLen = {20, 11, 40}; // bands 21 to 40, 10 to 20, 0 to 9
    filters.order = {3, 0, 5};
    filters.coefRes = {4};
    filters.direction = {1, 0, 0};
    filters.coef = {3, -5, 2, 4, 4, -3, 1, -1};
    const auto before = randomInts<Zor32s>(1024, -3000, 3000, 6);
    auto after = before;
    ASSERT_EQ(zorStsNoErr, filters.run(zorsDecodeTNS_AAC_32s_I, after));
    expectFiltered(filters, true, before, after, {{120, 384}, {0, 0}, {0, 40}});

    filters.maxSfb = 25; // bands 0 to 24, which end at line 172
    after = before;
    ASSERT_EQ(zorStsNoErr, filters.run(zorsDecodeTNS_AAC_32s_I, after));
    expectFiltered(filters, true, before, after, {{120, 172}, {0, 0}, {0, 40}});
}

TEST_P(Tns, CodesCountByTheirLowBits) {
    Filters wide = oneFilter(1024, 8, 3, 0, 1);
    Filters narrow = wide;
    wide.coef = {-8, -7, -6, -5, 4, 5, 6, 7};
    narrow.coef = {0, 1, 2, 3, -4, -3, -2, -1};
    auto first = randomInts<Zor32s>(1024, -1000, 1000, 8);
    auto second = first;
    ASSERT_EQ(zorStsNoErr, wide.run(zorsDecodeTNS_AAC_32s_I, first));
    ASSERT_EQ(zorStsNoErr, narrow.run(zorsDecodeTNS_AAC_32s_I, second));
    EXPECT_EQ(first, second);
}

TEST_P(Tns, StaysWithinRangeWhenRepeatedOnTheSameLines) {
    for (const auto function : {zorsDecodeTNS_AAC_32s_I, zorsEncodeTNS_AAC_32s_I})
        for (const int order : {1, 7, 12, 20}) {
            Filters filters = oneFilter(1024, order, 4, 0, 77);
            filters.profile = zorAacMain;
            // The codes of the largest predictor there is: alternating poles next to the unit circle.
            for (std::size_t i = 0; i < filters.coef.size(); ++i)
                filters.coef[i] = i % 2 ? Zor8s{7} : Zor8s{-8};
            std::vector<Zor32s> lines(1024);
            for (std::size_t i = 0; i < lines.size(); ++i)
                lines[i] = i % 3 ? std::numeric_limits<Zor32s>::max() : std::numeric_limits<Zor32s>::min();
            const Zor32s beyond = lines[384];
            for (int call = 0; call < 50; ++call)
                ASSERT_EQ(zorStsNoErr, filters.run(function, lines));
            EXPECT_EQ(beyond, lines[384]);
        }
}

TEST_P(Tns, SaturatesInsteadOfWrapping) {
    Filters filters = oneFilter(1024, 1, 4, 0, 1);
    filters.coef = {-7}; // a pole near 1: the sum of equal samples grows beyond 32 bits
    std::vector<Zor32s> lines(1024, std::numeric_limits<Zor32s>::max());
    ASSERT_EQ(zorStsNoErr, filters.run(zorsDecodeTNS_AAC_32s_I, lines));
    EXPECT_TRUE(std::all_of(lines.begin(), lines.end(),
                            [](Zor32s line) { return line == std::numeric_limits<Zor32s>::max(); }));
}

TEST(TnsArguments, AreRefusedWithoutTouchingTheLines) {
    const Filters good = oneFilter(1024, 4, 3, 0, 1);
    const Filters goodShort = oneFilter(128, 4, 3, 0, 1);
    struct Case {
        const char* name;
        ZorStatus status;
        const Filters& base;
        void (*spoil)(Filters&);
    };
    const Case cases[] = {
        {"window length", zorStsSizeErr, good, [](Filters& f) { f.winLen = 512; }},
        {"too many bands", zorStsSizeErr, good, [](Filters& f) { f.maxSfb = 42; }},
        {"negative bands", zorStsSizeErr, good, [](Filters& f) { f.maxSfb = -1; }},
        {"sampling rate", zorStsBadArgErr, good, [](Filters& f) { f.rate = 12; }},
        {"profile", zorStsBadArgErr, good, [](Filters& f) { f.profile = 2; }},
        {"order of a long window", zorStsBadArgErr, good, [](Filters& f) { f.order[0] = 13; }},
        {"order of a short window", zorStsBadArgErr, goodShort, [](Filters& f) { f.order[7] = 8; }},
        {"filters of a long window", zorStsBadArgErr, good, [](Filters& f) { f.numFilt[0] = 4; }},
        {"filters of a short window", zorStsBadArgErr, goodShort, [](Filters& f) { f.numFilt[0] = 2; }},
        {"resolution", zorStsBadArgErr, goodShort, [](Filters& f) { f.coefRes[3] = 5; }},
        {"direction", zorStsBadArgErr, good, [](Filters& f) { f.direction[0] = 2; }},
        {"region", zorStsBadArgErr, good, [](Filters& f) { f.regionLen[0] = -1; }},
    };
    const auto before = randomInts<Zor32s>(1024, -1000, 1000, 9);
    for (const Case& test : cases) {
        Filters filters = test.base;
        test.spoil(filters);
        for (const auto function : {zorsDecodeTNS_AAC_32s_I, zorsEncodeTNS_AAC_32s_I}) {
            auto lines = before;
            EXPECT_EQ(test.status, filters.run(function, lines)) << test.name;
            EXPECT_EQ(before, lines) << test.name;
        }
    }
    EXPECT_EQ(zorStsNullPtrErr,
              zorsDecodeTNS_AAC_32s_I(nullptr, good.numFilt.data(), good.regionLen.data(), good.order.data(),
                                      good.coefRes.data(), good.coef.data(), good.direction.data(), 41, 1, 0,
                                      1024));
}

} // namespace
