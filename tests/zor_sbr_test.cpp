// The SBR filter banks against their defining sums and by reconstruction; prediction coefficients.
#include "../zor/src/tables/sbr_qmf_window.h"
#include "zorac.h"
#include "zormath.h"
#include "zorsupport.h"

#include <complex>
#include <numbers>

namespace {

using Complex = std::complex<double>;
constexpr double pi = std::numbers::pi;
constexpr const auto& window = zor::tables::sbr_qmf_window::c;

class SbrTest : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, SbrTest, testing::ValuesIn(zorPaths), zorPathName);

/** e(pi/M (k + 1/2)(n + phase)) for the M bands k and n below 2M. */
class Modulation {
  public:
    Modulation(int bands, double phase) : m_bands(bands) {
        for (int k = 0; k < bands; ++k)
            for (int n = 0; n < 2 * bands; ++n)
                m_table.push_back(std::polar(1.0, pi / bands * (k + 0.5) * (n + phase)));
    }
    /** n counts on and on; the modulation of the banks is repeated after 2M. */
    Complex operator()(int k, int n) const {
        return m_table[static_cast<std::size_t>(2 * m_bands * k + n % (2 * m_bands))];
    }

  private:
    int m_bands;
    std::vector<Complex> m_table;
};

/** One slot of the defining sum of the analysis; `newest` is the index of the slot's last sample. */
std::vector<Complex> directAnalysis(const std::vector<float>& samples, int newest, double phase) {
    const Modulation modulation(32, phase);
    std::vector<Complex> bands(32);
    for (int k = 0; k < 32; ++k)
        for (int n = 0; n < 320 && n <= newest; ++n)
            bands[static_cast<std::size_t>(k)] +=
                2 * window[2 * n] * static_cast<double>(samples[static_cast<std::size_t>(newest - n)]) *
                modulation(k, n);
    return bands;
}

/** The defining overlap sum of the synthesis for all slots of `bands` [slot][band]. */
std::vector<double> directSynthesis(const std::vector<std::vector<Complex>>& bands, int width, double phase,
                                    double gain) {
    const Modulation modulation(width, phase);
    std::vector<double> out(bands.size() * static_cast<std::size_t>(width));
    for (std::size_t slot = 0; slot < bands.size(); ++slot)
        for (int i = 0; i < 10 * width; ++i) {
            // Sample i of a slot's contribution: element i mod 2M of its modulated values.
            const std::size_t at = slot * static_cast<std::size_t>(width) + static_cast<std::size_t>(i);
            if (at >= out.size())
                break;
            double sum = 0;
            for (int k = 0; k < width; ++k) {
                const Complex a = bands[slot][static_cast<std::size_t>(k)], b = modulation(k, i);
                sum += a.real() * b.real() - a.imag() * b.imag();
            }
            out[at] += gain * window[i * (64 / width)] * sum;
        }
    return out;
}

/** Runs all slots in calls of 1, 3, 30 and 32 slots, so that every way past the delay line is taken. */
template <class Call>
void inBlocks(Call call) {
    int slot = 0;
    for (const int slots : {1, 3, 30, 9, 32}) {
        EXPECT_EQ(zorStsNoErr, call(slot, slots));
        slot += slots;
    }
}
constexpr int totalSlots = 75;

auto splitAnalysis() {
    return PlacedState<ZorsAnalysisFilterState_SBR_RToC_32f>(zorsAnalysisFilterGetSize_SBR_RToC_32f,
                                                             zorsAnalysisFilterInit_SBR_RToC_32f);
}
auto realAnalysis() {
    return PlacedState<ZorsAnalysisFilterState_SBR_RToR_32f>(zorsAnalysisFilterGetSize_SBR_RToR_32f,
                                                             zorsAnalysisFilterInit_SBR_RToR_32f);
}

TEST_P(SbrTest, AnalysisIsTheDefiningSum) {
    const auto samples = noise(32 * totalSlots);
    Lines<float> re(totalSlots, 32), im(totalSlots, 32), real(totalSlots, 32);
    Lines<Zor32fc> pairs(totalSlots, 32);
    const auto split = splitAnalysis();
    const PlacedState<ZorsAnalysisFilterState_SBR_RToC_32f32fc> paired(
        zorsAnalysisFilterGetSize_SBR_RToC_32f32fc, zorsAnalysisFilterInit_SBR_RToC_32f32fc);
    const auto realState = realAnalysis();
    inBlocks([&](int slot, int slots) {
        const float* src = samples.data() + 32 * slot;
        EXPECT_EQ(zorStsNoErr,
                  zorsAnalysisFilter_SBR_RToC_32f_D2L(src, re.list(slot), im.list(slot), slots, split.get()));
        EXPECT_EQ(zorStsNoErr,
                  zorsAnalysisFilter_SBR_RToC_32f32fc_D2L(src, pairs.list(slot), slots, paired.get()));
        return zorsAnalysisFilter_SBR_RToR_32f_D2L(src, real.list(slot), slots, realState.get());
    });
    for (const int slot : {0, 1, 4, 12, 13, 33, 34, 42, 43, 74}) {
        const auto complex = directAnalysis(samples, 32 * slot + 31, -0.25);
        const auto cosine = directAnalysis(samples, 32 * slot + 31, -48);
        for (int k = 0; k < 32; ++k) {
            const Complex expected = complex[static_cast<std::size_t>(k)];
            SCOPED_TRACE(testing::Message() << "slot " << slot << " band " << k);
            ASSERT_NEAR(expected.real(), re.at(slot, k), 4e-6);
            ASSERT_NEAR(expected.imag(), im.at(slot, k), 4e-6);
            ASSERT_EQ(re.at(slot, k), pairs.at(slot, k).re);
            ASSERT_EQ(im.at(slot, k), pairs.at(slot, k).im);
            ASSERT_NEAR(cosine[static_cast<std::size_t>(k)].real(), real.at(slot, k), 4e-6);
        }
    }
}

/** The three synthesis functions of one width on the same bands. */
template <class SplitState, class PairState, class RealState>
struct SynthesisForms {
    int width;
    double complexPhase;
    PlacedState<SplitState> split;
    PlacedState<PairState> pairs;
    PlacedState<RealState> real;
    int (*runSplit)(const float* const*, const float* const*, float*, int, SplitState*);
    int (*runPairs)(const Zor32fc* const*, float*, int, PairState*);
    int (*runReal)(const float* const*, float*, int, RealState*);
};

SynthesisForms<ZorsSynthesisFilterState_SBR_CToR_32f, ZorsSynthesisFilterState_SBR_CToR_32fc32f,
               ZorsSynthesisFilterState_SBR_RToR_32f>
full() {
    return {64,
            -127.5,
            {zorsSynthesisFilterGetSize_SBR_CToR_32f, zorsSynthesisFilterInit_SBR_CToR_32f},
            {zorsSynthesisFilterGetSize_SBR_CToR_32fc32f, zorsSynthesisFilterInit_SBR_CToR_32fc32f},
            {zorsSynthesisFilterGetSize_SBR_RToR_32f, zorsSynthesisFilterInit_SBR_RToR_32f},
            zorsSynthesisFilter_SBR_CToR_32f_D2L,
            zorsSynthesisFilter_SBR_CToR_32fc32f_D2L,
            zorsSynthesisFilter_SBR_RToR_32f_D2L};
}

SynthesisForms<ZorsSynthesisDownFilterState_SBR_CToR_32f, ZorsSynthesisDownFilterState_SBR_CToR_32fc32f,
               ZorsSynthesisDownFilterState_SBR_RToR_32f>
down() {
    return {32,
            -63.75,
            {zorsSynthesisDownFilterGetSize_SBR_CToR_32f, zorsSynthesisDownFilterInit_SBR_CToR_32f},
            {zorsSynthesisDownFilterGetSize_SBR_CToR_32fc32f, zorsSynthesisDownFilterInit_SBR_CToR_32fc32f},
            {zorsSynthesisDownFilterGetSize_SBR_RToR_32f, zorsSynthesisDownFilterInit_SBR_RToR_32f},
            zorsSynthesisDownFilter_SBR_CToR_32f_D2L,
            zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L,
            zorsSynthesisDownFilter_SBR_RToR_32f_D2L};
}

template <class Forms>
void expectDefiningSynthesis(const Forms& forms) {
    const int width = forms.width;
    const auto parts = noise(static_cast<std::size_t>(2 * totalSlots * width));
    Lines<float> re(totalSlots, width), im(totalSlots, width);
    Lines<Zor32fc> pairs(totalSlots, width);
    std::vector<std::vector<Complex>> complex(totalSlots), real(totalSlots);
    for (int slot = 0, i = 0; slot < totalSlots; ++slot)
        for (int k = 0; k < width; ++k, i += 2) {
            const float a = parts[static_cast<std::size_t>(i)], b = parts[static_cast<std::size_t>(i + 1)];
            re.at(slot, k) = a;
            im.at(slot, k) = b;
            pairs.at(slot, k) = {a, b};
            complex[static_cast<std::size_t>(slot)].push_back({a, b});
            real[static_cast<std::size_t>(slot)].push_back({a, 0});
        }
    std::vector<float> fromSplit(static_cast<std::size_t>(totalSlots * width)), fromPairs(fromSplit),
        fromReal(fromSplit);
    inBlocks([&](int slot, int slots) {
        const int at = slot * width;
        EXPECT_EQ(zorStsNoErr, forms.runSplit(re.constList(slot), im.constList(slot), fromSplit.data() + at,
                                              slots, forms.split.get()));
        EXPECT_EQ(zorStsNoErr,
                  forms.runPairs(pairs.constList(slot), fromPairs.data() + at, slots, forms.pairs.get()));
        return forms.runReal(re.constList(slot), fromReal.data() + at, slots, forms.real.get());
    });
    EXPECT_GT(snr(directSynthesis(complex, width, forms.complexPhase, 1 / 64.0), fromSplit), 125);
    EXPECT_EQ(fromSplit, fromPairs);
    EXPECT_GT(snr(directSynthesis(real, width, -width / 2, 1 / 32.0), fromReal), 125);
}

TEST_P(SbrTest, SynthesisIsTheDefiningSum) {
    expectDefiningSynthesis(full());
    expectDefiningSynthesis(down());
}

TEST_P(SbrTest, DownSampledSynthesisUndoesAnalysis) {
    constexpr int slots = 300, count = 32 * slots, delay = 289;
    const auto samples = noise(count, 5);
    Lines<float> re(slots, 32), im(slots, 32), real(slots, 32);
    const auto complexState = splitAnalysis();
    const auto realState = realAnalysis();
    const auto synthesis = down();
    std::vector<float> fromComplex(count), fromReal(count);
    zorsAnalysisFilter_SBR_RToC_32f_D2L(samples.data(), re.list(), im.list(), slots, complexState.get());
    zorsAnalysisFilter_SBR_RToR_32f_D2L(samples.data(), real.list(), slots, realState.get());
    synthesis.runSplit(re.constList(), im.constList(), fromComplex.data(), slots, synthesis.split.get());
    synthesis.runReal(real.constList(), fromReal.data(), slots, synthesis.real.get());
    // The window's own echoes hold both banks below 60 dB.
    EXPECT_GT(snr(samples.data(), fromComplex.data() + delay, count - delay), 58.5);
    EXPECT_GT(snr(samples.data(), fromReal.data() + delay, count - delay), 50);
}

/** Amplitude of the sine of this frequency (radians a sample) in a signal of whole periods, and energy beside
 * it in dB. */
struct SineFit {
    double amplitude, purity;
    SineFit(const float* signal, std::size_t count, double frequency) {
        Complex sum = 0;
        double energy = 0;
        for (std::size_t i = 0; i < count; ++i) {
            sum += std::polar(static_cast<double>(signal[i]), -frequency * static_cast<double>(i));
            energy += static_cast<double>(signal[i]) * static_cast<double>(signal[i]);
        }
        amplitude = 2 * std::abs(sum) / static_cast<double>(count);
        purity = 10 * std::log10(energy / (energy - amplitude * amplitude * static_cast<double>(count) / 2));
    }
};

TEST_P(SbrTest, FullSynthesisOfThirtyTwoBandsDoublesTheRate) {
    constexpr int settling = 24, slots = 64 + settling;
    constexpr double frequency = 2 * pi * 341 / 4096; // at the double rate; whole periods in 64 slots
    Lines<float> re(slots, 64), im(slots, 64);
    std::vector<float> samples(32 * slots), out(64 * slots);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(std::cos(2 * frequency * static_cast<double>(i)));
    const auto analysis = splitAnalysis();
    const auto synthesis = full();
    zorsAnalysisFilter_SBR_RToC_32f_D2L(samples.data(), re.list(), im.list(), slots, analysis.get());
    synthesis.runSplit(re.constList(), im.constList(), out.data(), slots, synthesis.split.get());
    const SineFit fit(out.data() + 64 * settling, 4096, frequency);
    EXPECT_NEAR(1, fit.amplitude, 2e-3);
    EXPECT_GT(fit.purity, 55);
}

// ---- Prediction coefficients ----------------------------------------------------------------------------

struct Alphas {
    Complex alpha0, alpha1;
};

/** The covariance method in double; x holds two slots before the first one. */
Alphas directPrediction(const std::vector<Complex>& x) {
    const auto phi = [&](std::size_t i, std::size_t j) {
        Complex sum = 0;
        for (std::size_t n = 2; n < x.size(); ++n)
            sum += x[n - i] * std::conj(x[n - j]);
        return sum;
    };
    const double phi11 = phi(1, 1).real(), phi22 = phi(2, 2).real();
    const double determinant = phi22 * phi11 - std::norm(phi(1, 2)) / (1 + 1e-6);
    Alphas a{0, 0};
    if (determinant != 0)
        a.alpha1 = (phi(0, 1) * phi(1, 2) - phi(0, 2) * phi11) / determinant;
    if (phi11 != 0)
        a.alpha0 = -(phi(0, 1) + a.alpha1 * std::conj(phi(1, 2))) / phi11;
    return std::abs(a.alpha0) >= 4 || std::abs(a.alpha1) >= 4 ? Alphas{0, 0} : a;
}

/** Runs the three functions on `bands` columns of `len` + 2 slots and compares them with the direct solution.
 */
void expectPrediction(int bands, int len) {
    SCOPED_TRACE(testing::Message() << bands << " bands, " << len << " slots");
    const int slots = len + 2;
    Lines<float> re(slots, bands), im(slots, bands);
    Lines<Zor32fc> pairs(slots, bands);
    const auto parts = noise(static_cast<std::size_t>(2 * slots * bands), static_cast<unsigned>(bands));
    for (int slot = 0, i = 0; slot < slots; ++slot)
        for (int k = 0; k < bands; ++k, i += 2) {
            re.at(slot, k) =
                k % 7 == 3 ? 0 : parts[static_cast<std::size_t>(i)]; // a silent band now and then
            im.at(slot, k) = k % 7 == 3 ? 0 : parts[static_cast<std::size_t>(i + 1)];
            pairs.at(slot, k) = {re.at(slot, k), im.at(slot, k)};
        }
    const auto size = static_cast<std::size_t>(bands);
    std::vector<float> real0(size), real1(size), re0(size), im0(size), re1(size), im1(size);
    std::vector<Zor32fc> pair0(size), pair1(size);
    ASSERT_EQ(zorStsNoErr,
              zorsPredictCoef_SBR_R_32f_D2L(re.constList(), real0.data(), real1.data(), bands, len));
    ASSERT_EQ(zorStsNoErr, zorsPredictCoef_SBR_C_32f_D2L(re.constList(), im.constList(), re0.data(),
                                                         im0.data(), re1.data(), im1.data(), bands, len));
    ASSERT_EQ(zorStsNoErr,
              zorsPredictCoef_SBR_C_32fc_D2L(pairs.constList(), pair0.data(), pair1.data(), bands, len));
    for (int k = 0; k < bands; ++k) {
        const auto i = static_cast<std::size_t>(k);
        std::vector<Complex> complex, real;
        for (int slot = 0; slot < slots; ++slot) {
            complex.emplace_back(re.at(slot, k), im.at(slot, k));
            real.emplace_back(re.at(slot, k), 0);
        }
        const Alphas ofComplex = directPrediction(complex), ofReal = directPrediction(real);
        ASSERT_LT(std::abs(ofComplex.alpha0 - Complex(re0[i], im0[i])), 1e-3) << "band " << k;
        ASSERT_LT(std::abs(ofComplex.alpha1 - Complex(re1[i], im1[i])), 1e-3) << "band " << k;
        ASSERT_LT(std::abs(ofReal.alpha0 - Complex(real0[i])), 1e-3) << "band " << k;
        ASSERT_LT(std::abs(ofReal.alpha1 - Complex(real1[i])), 1e-3) << "band " << k;
        ASSERT_NEAR(re0[i], pair0[i].re, 1e-4);
        ASSERT_NEAR(im0[i], pair0[i].im, 1e-4);
        ASSERT_NEAR(re1[i], pair1[i].re, 1e-4);
        ASSERT_NEAR(im1[i], pair1[i].im, 1e-4);
    }
}

TEST_P(SbrTest, PredictionSolvesTheCovarianceEquations) {
    for (const int bands : {1, 7, 30, 32, 64})
        for (const int len : {8, 16, 38})
            expectPrediction(bands, len);
}

TEST_P(SbrTest, PredictionFindsTheCoefficientsOfARecursion) {
    // x[n] = -a0 x[n-1] - a1 x[n-2] without noise: the coefficients come back but for the relaxation.
    constexpr int bands = 32, len = 30;
    Lines<float> lines(len + 2, bands);
    for (int k = 0; k < bands; ++k) {
        const double angle = 0.3 + 0.08 * k;
        for (int slot = 0; slot < len + 2; ++slot)
            lines.at(slot, k) = static_cast<float>(std::cos(angle * slot + k));
    }
    std::vector<float> alpha0(bands), alpha1(bands);
    ASSERT_EQ(zorStsNoErr,
              zorsPredictCoef_SBR_R_32f_D2L(lines.constList(), alpha0.data(), alpha1.data(), bands, len));
    for (int k = 0; k < bands; ++k) {
        EXPECT_NEAR(-2 * std::cos(0.3 + 0.08 * k), alpha0[static_cast<std::size_t>(k)], 2e-3) << k;
        EXPECT_NEAR(1, alpha1[static_cast<std::size_t>(k)], 2e-3) << k;
    }
}

TEST_P(SbrTest, LargePredictionCoefficientsAreGivenUp) {
    // A signal that grows by 5 a slot wants alpha0 = -5.
    Lines<float> lines(6, 9);
    for (int slot = 0; slot < 6; ++slot)
        for (int k = 0; k < 9; ++k)
            lines.at(slot, k) = static_cast<float>(std::pow(k < 8 ? 5 : 2, slot));
    std::vector<float> alpha0(9, 1.0f), alpha1(9, 1.0f);
    ASSERT_EQ(zorStsNoErr,
              zorsPredictCoef_SBR_R_32f_D2L(lines.constList(), alpha0.data(), alpha1.data(), 9, 4));
    for (std::size_t k = 0; k < 8; ++k)
        EXPECT_TRUE(alpha0[k] == 0 && alpha1[k] == 0) << k;
    EXPECT_NE(0.0f, alpha0[8]);
}

TEST(Sbr, RefusesBadArguments) {
    const auto analysis = splitAnalysis();
    const auto synthesis = full();
    std::vector<float> samples(64);
    Lines<float> lines(3, 64);
    float* const holes[] = {lines.list()[0], nullptr, lines.list()[2]};
    const float* const constHoles[] = {holes[0], nullptr, holes[2]};
    EXPECT_EQ(zorStsSizeErr, zorsAnalysisFilter_SBR_RToC_32f_D2L(samples.data(), lines.list(), lines.list(),
                                                                 0, analysis.get()));
    EXPECT_EQ(zorStsNullPtrErr,
              zorsAnalysisFilter_SBR_RToC_32f_D2L(samples.data(), lines.list(), holes, 2, analysis.get()));
    EXPECT_EQ(zorStsNullPtrErr,
              zorsAnalysisFilter_SBR_RToC_32f_D2L(samples.data(), lines.list(), nullptr, 2, analysis.get()));
    EXPECT_EQ(zorStsNullPtrErr, synthesis.runReal(constHoles, samples.data(), 2, synthesis.real.get()));
    // A state of another form is refused.
    EXPECT_EQ(zorStsContextErr,
              zorsSynthesisFilter_SBR_RToR_32f_D2L(
                  lines.constList(), samples.data(), 1,
                  reinterpret_cast<ZorsSynthesisFilterState_SBR_RToR_32f*>(synthesis.split.get())));
    EXPECT_EQ(zorStsNullPtrErr, zorsAnalysisFilterGetSize_SBR_RToR_32f(nullptr));
    EXPECT_EQ(zorStsNullPtrErr,
              zorsPredictCoef_SBR_R_32f_D2L(constHoles, samples.data(), samples.data() + 32, 30, 1));
    EXPECT_EQ(zorStsSizeErr,
              zorsPredictCoef_SBR_R_32f_D2L(lines.constList(), samples.data(), samples.data() + 32, 0, 1));
}

} // namespace
