// The hybrid filter bank of layer III: the fast transforms against the defining sums, and the pair's
// reconstruction over every sequence of windows.
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace {

constexpr int lines = 576, subbands = 32, slots = 18;
constexpr double pi = std::numbers::pi;
using Granule = std::vector<Zor32s>;

struct Window {
    int blockType;
    int mixed;
};

/** The window of a block type, ISO/IEC 11172-3 2.4.3.4.10.3. */
double windowAt(int blockType, int n) {
    if (blockType == 1 && n >= 18)
        return n < 24 ? 1 : n < 30 ? std::sin(pi / 12 * (n - 18 + 0.5)) : 0;
    if (blockType == 3 && n < 18)
        return n < 6 ? 0 : n < 12 ? std::sin(pi / 12 * (n - 6 + 0.5)) : 1;
    return std::sin(pi / 36 * (n + 0.5));
}

/** One sub-band's inverse transform by its sum: 18 lines to 36 windowed samples. */
std::array<double, 36> inverseSum(const double* X, int blockType) {
    std::array<double, 36> z{};
    if (blockType != 2) {
        for (int n = 0; n < 36; ++n) {
            for (int k = 0; k < 18; ++k)
                z[n] += X[k] * std::cos(pi / 72 * (2 * n + 1 + 18) * (2 * k + 1));
            z[n] *= windowAt(blockType, n);
        }
        return z;
    }
    for (int w = 0; w < 3; ++w)
        for (int n = 0; n < 12; ++n) {
            double sum = 0;
            for (int k = 0; k < 6; ++k)
                sum += X[3 * k + w] * std::cos(pi / 24 * (2 * n + 1 + 6) * (2 * k + 1));
            z[6 * w + 6 + n] += sum * std::sin(pi / 12 * (n + 0.5));
        }
    return z;
}

/** The standard's decoder from lines to sub-band samples, for a granule with nothing before it. */
std::vector<double> inverseReference(const Granule& spectrum, Window window) {
    static constexpr double c[] = {-0.6, -0.535, -0.33, -0.185, -0.095, -0.041, -0.0142, -0.0037};
    std::vector<double> xr(spectrum.begin(), spectrum.end());
    const int boundaries = window.blockType != 2 ? 31 : window.mixed ? 1 : 0;
    for (int b = 1; b <= boundaries; ++b)
        for (int i = 0; i < 8; ++i) {
            const double cs = 1 / std::sqrt(1 + c[i] * c[i]), ca = c[i] * cs;
            double &up = xr[static_cast<std::size_t>(18 * b - 1 - i)],
                   &down = xr[static_cast<std::size_t>(18 * b + i)];
            const double a = up, d = down;
            up = a * cs - d * ca;
            down = d * cs + a * ca;
        }
    std::vector<double> samples(lines);
    for (int b = 0; b < subbands; ++b) {
        const auto z =
            inverseSum(&xr[static_cast<std::size_t>(18 * b)], window.mixed && b < 2 ? 0 : window.blockType);
        for (int slot = 0; slot < slots; ++slot)
            samples[static_cast<std::size_t>(slot * subbands + b)] =
                (slot % 2 && b % 2 ? -1 : 1) * z[static_cast<std::size_t>(slot)];
    }
    return samples;
}

double largestDifference(const Granule& a, const std::vector<double>& b) {
    double largest = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

class Mp3Hybrid : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Mp3Hybrid, testing::ValuesIn(zorPaths), zorPathName);

TEST_P(Mp3Hybrid, InverseIsTheStandardsSum) {
    for (const Window window : {Window{0, 0}, {1, 0}, {2, 0}, {3, 0}, {1, 1}, {2, 1}, {3, 1}}) {
        const Granule spectrum = randomInts<Zor32s>(lines, -(1 << 26), 1 << 26, 5);
        Granule overlap(lines, 12345), samples(lines);
        int previous = 0; // the overlap's contents do not count
        ASSERT_EQ(zorsMDCTInv_MP3_32s(spectrum.data(), samples.data(), overlap.data(), lines, &previous,
                                      window.blockType, window.mixed),
                  zorStsNoErr);
        EXPECT_EQ(previous, 32);
        // Sums of up to 18 lines of 2^26 in single precision: some 2^-22 of 2^29.
        EXPECT_LT(largestDifference(samples, inverseReference(spectrum, window)), 300)
            << "block type " << window.blockType << " mixed " << window.mixed;
    }
}

TEST_P(Mp3Hybrid, PairReconstructsAnySequence) {
    // Each window goes into the next as the standard's block switching allows.
    const Window sequence[] = {{0, 0}, {0, 0}, {1, 0}, {2, 0}, {2, 0}, {3, 0}, {0, 0}, {1, 1}, {2, 1}, {2, 1},
                               {3, 1}, {0, 0}, {1, 0}, {2, 0}, {3, 0}, {1, 1}, {2, 1}, {3, 1}, {0, 0}};
    Granule before(lines), spectrum(lines), result(lines), fwdOverlap(lines), invOverlap(lines);
    int previous = 0;
    unsigned seed = 1;
    double worst = 0;
    for (const Window window : sequence) {
        const Granule samples = randomInts<Zor32s>(lines, -(1 << 26), 1 << 26, seed++);
        ASSERT_EQ(zorsMDCTFwd_MP3_32s(samples.data(), spectrum.data(), window.blockType, window.mixed,
                                      fwdOverlap.data()),
                  zorStsNoErr);
        ASSERT_EQ(zorsMDCTInv_MP3_32s(spectrum.data(), result.data(), invOverlap.data(), lines, &previous,
                                      window.blockType, window.mixed),
                  zorStsNoErr);
        worst = std::max(worst, largestDifference(result, {before.begin(), before.end()}));
        before = samples;
    }
    EXPECT_LT(worst, 300);
    RecordProperty("worst", std::to_string(worst));
}

TEST_P(Mp3Hybrid, BoundAndPreviousBlocksOnlySaveWork) {
    for (const int blockType : {0, 2})
        for (const int bound : {0, 1, 17, 18, 19, 100, 300, 575, 576}) {
            Granule spectrum = randomInts<Zor32s>(lines, -(1 << 24), 1 << 24, 3);
            std::fill(spectrum.begin() + bound, spectrum.end(), 0);
            const Granule first = randomInts<Zor32s>(lines, -(1 << 24), 1 << 24, 4);
            Granule full(lines), bounded(lines), unused(lines), overlapFull(lines), overlapBounded(lines);
            int previousFull = 0, previousBounded = 0;
            // A granule up to line 200 before it, so that the overlap reaches further or less far.
            zorsMDCTInv_MP3_32s(first.data(), unused.data(), overlapFull.data(), 200, &previousFull, 0, 0);
            overlapBounded = overlapFull;
            previousBounded = previousFull;
            previousFull = 32;
            std::fill(spectrum.begin() + bound, spectrum.end(), 0);
            zorsMDCTInv_MP3_32s(spectrum.data(), full.data(), overlapFull.data(), lines, &previousFull,
                                blockType, 0);
            std::fill(spectrum.begin() + bound, spectrum.end(), 99); // not to be looked at
            zorsMDCTInv_MP3_32s(spectrum.data(), bounded.data(), overlapBounded.data(), bound,
                                &previousBounded, blockType, 0);
            EXPECT_EQ(full, bounded) << "bound " << bound;
            // What the next granule hears is the same too.
            zorsMDCTInv_MP3_32s(first.data(), full.data(), overlapFull.data(), 0, &previousFull, blockType,
                                0);
            zorsMDCTInv_MP3_32s(first.data(), bounded.data(), overlapBounded.data(), 0, &previousBounded,
                                blockType, 0);
            EXPECT_EQ(full, bounded) << "after bound " << bound;
        }
}

TEST_P(Mp3Hybrid, RefusesBadArguments) {
    Granule a(lines), b(lines), c(lines);
    int blocks = 0;
    EXPECT_EQ(zorsMDCTFwd_MP3_32s(nullptr, b.data(), 0, 0, c.data()), zorStsNullPtrErr);
    EXPECT_EQ(zorsMDCTFwd_MP3_32s(a.data(), b.data(), 4, 0, c.data()), zorStsBadArgErr);
    EXPECT_EQ(zorsMDCTInv_MP3_32s(a.data(), b.data(), c.data(), 576, nullptr, 0, 0), zorStsNullPtrErr);
    EXPECT_EQ(zorsMDCTInv_MP3_32s(a.data(), b.data(), c.data(), 577, &blocks, 0, 0), zorStsSizeErr);
    blocks = 33;
    EXPECT_EQ(zorsMDCTInv_MP3_32s(a.data(), b.data(), c.data(), 576, &blocks, 0, 0), zorStsBadArgErr);
}

} // namespace
