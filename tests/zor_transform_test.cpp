// The MDCT against its defining sum and by overlap of two frames; the DTS filter against the standard's
// procedure and by analysis.
#include "../zor/src/tables/dts_fir.h"
#include "zorac.h"
#include "zormath.h"
#include "zorsupport.h"

#include <algorithm>
#include <numbers>
#include <numeric>

namespace {

constexpr double pi = std::numbers::pi;

class TransformTest : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, TransformTest, testing::ValuesIn(zorPaths), zorPathName);

/** Forward and inverse transform of one length with a work buffer at an odd address. */
class Mdct {
  public:
    explicit Mdct(int len) {
        ZorsMDCTFwdState_32f* forward = nullptr;
        ZorsMDCTInvState_32f* inverse = nullptr;
        EXPECT_EQ(zorStsNoErr, zorsMDCTFwdInitAlloc_32f(&forward, len));
        EXPECT_EQ(zorStsNoErr, zorsMDCTInvInitAlloc_32f(&inverse, len));
        m_forward.reset(forward);
        m_inverse.reset(inverse);
        int forwardSize = 0, inverseSize = 0;
        EXPECT_EQ(zorStsNoErr, zorsMDCTFwdGetBufSize_32f(forward, &forwardSize));
        EXPECT_EQ(zorStsNoErr, zorsMDCTInvGetBufSize_32f(inverse, &inverseSize));
        m_buffer.resize(static_cast<std::size_t>(std::max(forwardSize, inverseSize)) + 1);
    }
    std::vector<float> forward(const std::vector<float>& samples) {
        std::vector<float> coefs(samples.size() / 2);
        EXPECT_EQ(zorStsNoErr, zorsMDCTFwd_32f(samples.data(), coefs.data(), m_forward.get(), buffer()));
        auto inPlace = samples;
        EXPECT_EQ(zorStsNoErr, zorsMDCTFwd_32f_I(inPlace.data(), m_forward.get(), buffer()));
        inPlace.resize(coefs.size());
        EXPECT_EQ(coefs, inPlace);
        return coefs;
    }
    std::vector<float> inverse(const std::vector<float>& coefs) {
        std::vector<float> samples(2 * coefs.size());
        EXPECT_EQ(zorStsNoErr, zorsMDCTInv_32f(coefs.data(), samples.data(), m_inverse.get(), buffer()));
        auto inPlace = coefs;
        inPlace.resize(samples.size());
        EXPECT_EQ(zorStsNoErr, zorsMDCTInv_32f_I(inPlace.data(), m_inverse.get(), buffer()));
        EXPECT_EQ(samples, inPlace);
        return samples;
    }

  private:
    unsigned char* buffer() { return m_buffer.data() + 1; }
    StateOwner<ZorsMDCTFwdState_32f, zorsMDCTFwdFree_32f> m_forward;
    StateOwner<ZorsMDCTInvState_32f, zorsMDCTInvFree_32f> m_inverse;
    std::vector<unsigned char> m_buffer;
};

/** The cosines of an MDCT of len samples; their angles are multiples of pi/2len, reduced to whole turns. */
class MdctCosines {
  public:
    explicit MdctCosines(std::size_t len) : m_table(4 * len) {
        for (std::size_t i = 0; i < m_table.size(); ++i)
            m_table[i] = std::cos(pi / static_cast<double>(2 * len) * static_cast<double>(i));
    }
    double operator()(std::size_t n, std::size_t k) const {
        return m_table[(2 * n + 1 + m_table.size() / 8) * (2 * k + 1) % m_table.size()];
    }

  private:
    std::vector<double> m_table;
};

std::vector<double> directForward(const std::vector<float>& x) {
    const MdctCosines cosine(x.size());
    std::vector<double> coefs(x.size() / 2);
    for (std::size_t k = 0; k < coefs.size(); ++k)
        for (std::size_t n = 0; n < x.size(); ++n)
            coefs[k] += 2 * static_cast<double>(x[n]) * cosine(n, k);
    return coefs;
}

std::vector<double> directInverse(const std::vector<float>& coefs) {
    std::vector<double> x(2 * coefs.size());
    const MdctCosines cosine(x.size());
    for (std::size_t n = 0; n < x.size(); ++n)
        for (std::size_t k = 0; k < coefs.size(); ++k)
            x[n] += 2.0 / static_cast<double>(x.size()) * static_cast<double>(coefs[k]) * cosine(n, k);
    return x;
}

TEST_P(TransformTest, MdctIsTheDefiningSum) {
    // Powers of two to 8192, and lengths of the other radices, odd transforms among them.
    for (const int len :
         {4, 8, 12, 16, 20, 32, 36, 60, 64, 100, 128, 240, 256, 512, 960, 1024, 1920, 2048, 4096}) {
        SCOPED_TRACE(len);
        Mdct mdct(len);
        const auto samples = noise(static_cast<std::size_t>(len), static_cast<unsigned>(len));
        EXPECT_GT(snr(directForward(samples), mdct.forward(samples)), 132);
        const auto coefs = noise(static_cast<std::size_t>(len / 2), 3);
        EXPECT_GT(snr(directInverse(coefs), mdct.inverse(coefs)), 132);
    }
}

TEST_P(TransformTest, OverlappedFramesGiveTheSamplesBack) {
    for (const int len : {64, 1024, 1920, 4096, 65536}) {
        SCOPED_TRACE(len);
        const auto size = static_cast<std::size_t>(len), hop = size / 2;
        Mdct mdct(len);
        const auto signal = noise(6 * hop, 9);
        std::vector<float> window(size), out(signal.size());
        for (std::size_t i = 0; i < size; ++i)
            window[i] = static_cast<float>(std::sin(pi / len * (static_cast<double>(i) + 0.5)));
        for (std::size_t at = 0; at + size <= signal.size(); at += hop) {
            std::vector<float> frame(size);
            for (std::size_t i = 0; i < size; ++i)
                frame[i] = window[i] * signal[at + i];
            const auto back = mdct.inverse(mdct.forward(frame));
            for (std::size_t i = 0; i < size; ++i)
                out[at + i] += window[i] * back[i];
        }
        EXPECT_GT(snr(signal.data() + hop, out.data() + hop, 4 * hop), 125);
    }
}

TEST_P(TransformTest, ScaledMdctRoundsAndSaturates) {
    for (const int len : {64, 1024, 1920}) {
        ZorsMDCTFwdState_16s* made = nullptr;
        ASSERT_EQ(zorStsNoErr, zorsMDCTFwdInitAlloc_16s(&made, len));
        const StateOwner<ZorsMDCTFwdState_16s, zorsMDCTFwdFree_16s> state(made);
        int size = 0;
        ASSERT_EQ(zorStsNoErr, zorsMDCTFwdGetBufSize_16s(made, &size));
        std::vector<unsigned char> buffer(static_cast<std::size_t>(size) + 1);
        const auto samples = randomInts<Zor16s>(len, -3000, 3000, 1);
        const auto exact = directForward({samples.begin(), samples.end()});
        for (const int scale : {0, 1, 5, -3}) {
            std::vector<Zor16s> coefs(static_cast<std::size_t>(len));
            ASSERT_EQ(zorStsNoErr,
                      zorsMDCTFwd_16s_Sfs(samples.data(), coefs.data(), made, scale, buffer.data() + 1));
            for (std::size_t k = 0; k < exact.size(); ++k) {
                const double expected = std::clamp(std::ldexp(exact[k], -scale), -32768.0, 32767.0);
                ASSERT_NEAR(expected, coefs[k], 0.5 + std::fabs(expected) * 1e-6 + std::ldexp(0.05, -scale))
                    << "len " << len << " scale " << scale << " coefficient " << k;
            }
        }
    }
}

TEST(Mdct, RefusesBadArguments) {
    ZorsMDCTFwdState_32f* forward = nullptr;
    ZorsMDCTInvState_32f* inverse = nullptr;
    EXPECT_EQ(zorStsNullPtrErr, zorsMDCTFwdInitAlloc_32f(nullptr, 64));
    for (const int len : {-64, 0, 1, 2, 6, 28, 1022, (1 << 20) + 4, 1 << 21})
        EXPECT_EQ(zorStsSizeErr, zorsMDCTFwdInitAlloc_32f(&forward, len)) << len;
    ASSERT_EQ(zorStsNoErr, zorsMDCTFwdInitAlloc_32f(&forward, 64));
    ASSERT_EQ(zorStsNoErr, zorsMDCTInvInitAlloc_32f(&inverse, 64));
    int size = 0;
    EXPECT_EQ(zorStsNullPtrErr, zorsMDCTFwdGetBufSize_32f(forward, nullptr));
    ASSERT_EQ(zorStsNoErr, zorsMDCTFwdGetBufSize_32f(forward, &size));
    std::vector<unsigned char> buffer(static_cast<std::size_t>(size));
    float data[64] = {};
    EXPECT_EQ(zorStsNullPtrErr, zorsMDCTFwd_32f(nullptr, data, forward, buffer.data()));
    EXPECT_EQ(zorStsNullPtrErr, zorsMDCTFwd_32f(data, data, forward, nullptr));
    // A state of the other direction is no state of this one.
    EXPECT_EQ(zorStsContextErr,
              zorsMDCTFwd_32f_I(data, reinterpret_cast<ZorsMDCTFwdState_32f*>(inverse), buffer.data()));
    EXPECT_EQ(zorStsContextErr, zorsMDCTFwdFree_32f(reinterpret_cast<ZorsMDCTFwdState_32f*>(inverse)));
    EXPECT_EQ(zorStsNoErr, zorsMDCTFwdFree_32f(forward));
    EXPECT_EQ(zorStsNoErr, zorsMDCTInvFree_32f(inverse));
    EXPECT_EQ(zorStsNullPtrErr, zorsMDCTInvFree_32f(nullptr));
}

// ---- DTS ------------------------------------------------------------------------------------------------

/** Tap n of the low-pass prototype: the printed one without the sign of its group of 64. */
double dtsPrototype(int mode, int n) {
    const double printed = (mode ? zor::tables::dts_fir::perfect : zor::tables::dts_fir::nonperfect)[n];
    return (n / 64) % 2 ? -printed : printed;
}

double dtsCosine(int k, int n) {
    static const auto table = [] {
        std::vector<double> cosines(32 * 128);
        for (std::size_t i = 0; i < cosines.size(); ++i)
            cosines[i] = std::cos(pi / 32 * (static_cast<double>(i / 128) + 0.5) *
                                  (static_cast<double>(i % 128) + 16.5));
        return cosines;
    }();
    return table[static_cast<std::size_t>(128 * k + n % 128)];
}

using Slots = std::vector<std::vector<float>>;

/** Bands of each slot: the time-reversed modulated prototype with the standard's signs, twice, so that an
 * in-band sine keeps its amplitude. */
Slots dtsAnalysis(const std::vector<float>& signal, int mode) {
    Slots slots(signal.size() / 32, std::vector<float>(32));
    for (std::size_t slot = 0; slot < slots.size(); ++slot)
        for (int k = 0; k < 32; ++k) {
            double sum = 0;
            for (int n = 0; n < 512; ++n) {
                const long at = static_cast<long>(32 * slot + 31) - n;
                if (at >= 0)
                    sum += ((k + 1) & 2 ? -1 : 1) * dtsPrototype(mode, n) * dtsCosine(k, 511 - n) *
                           static_cast<double>(signal[static_cast<std::size_t>(at)]);
            }
            slots[slot][static_cast<std::size_t>(k)] = static_cast<float>(2 * sum);
        }
    return slots;
}

std::vector<float> dtsSynthesis(const Slots& slots, int mode) {
    const PlacedState<ZorsSynthesisFilterState_DTS_32f> state(zorsSynthesisFilterGetSize_DTS_32f,
                                                              zorsSynthesisFilterInit_DTS_32f);
    std::vector<float> out(32 * slots.size());
    for (std::size_t slot = 0; slot < slots.size(); ++slot)
        EXPECT_EQ(zorStsNoErr,
                  zorsSynthesisFilter_DTS_32f(slots[slot].data(), out.data() + 32 * slot, state.get(), mode));
    return out;
}

/** The interpolation of ETSI TS 102 114, C.2.5, line by line in double precision, with the scale rScale = 1.
 */
class DtsProcedure {
  public:
    explicit DtsProcedure(const double* coefficients) : m_coefficients(coefficients) {
        for (int k = 0; k < 16; ++k)
            for (int i = 0; i < 16; ++i)
                m_cosMod.push_back(std::cos((2 * i + 1) * (2 * k + 1) * pi / 64));
        for (int k = 0; k < 16; ++k)
            for (int i = 0; i < 16; ++i)
                m_cosMod.push_back(std::cos(i * (2 * k + 1) * pi / 32));
        for (int k = 0; k < 16; ++k)
            m_cosMod.push_back(0.25 / (2 * std::cos((2 * k + 1) * pi / 128)));
        for (int k = 0; k < 16; ++k)
            m_cosMod.push_back(-0.25 / (2 * std::sin((2 * k + 1) * pi / 128)));
    }

    void interpolate(const std::vector<float>& in, double* pcm) {
        const auto x = [&in](std::size_t i) { return static_cast<double>(in[i]); };
        std::size_t j = 0;
        double a[16]{}, b[16]{};
        for (double& sum : a)
            for (std::size_t i = 0; i < 16; ++i)
                sum += (x(2 * i) + x(2 * i + 1)) * m_cosMod[j++];
        for (double& sum : b)
            for (std::size_t i = 0; i < 16; ++i)
                sum += (i > 0 ? x(2 * i) + x(2 * i - 1) : x(0)) * m_cosMod[j++];
        for (std::size_t k = 0; k < 16; ++k)
            m_x[k] = m_cosMod[j++] * (a[k] + b[k]);
        for (std::size_t k = 0; k < 16; ++k)
            m_x[31 - k] = m_cosMod[j++] * (a[k] - b[k]);
        for (std::size_t i = 0, k = 31; i < 32; ++i, --k)
            for (std::size_t tap = 0; tap < 512; tap += 64) {
                m_z[i] += m_coefficients[i + tap] * (m_x[i + tap] - m_x[tap + k]);
                m_z[32 + i] += m_coefficients[32 + i + tap] * (-m_x[i + tap] - m_x[tap + k]);
            }
        std::copy_n(m_z.begin(), 32, pcm);
        std::copy_backward(m_x.begin(), m_x.end() - 32, m_x.end());
        std::copy_n(m_z.begin() + 32, 32, m_z.begin());
        std::fill(m_z.begin() + 32, m_z.end(), 0);
    }

  private:
    const double* m_coefficients;
    std::vector<double> m_cosMod, m_x = std::vector<double>(512), m_z = std::vector<double>(64);
};

TEST_P(TransformTest, DtsSynthesisIsTheStandardsProcedure) {
    // Full scale of the library's filter is that of the sub-band samples; the procedure leaves it to rScale.
    const double scale = 128 * std::numbers::sqrt2;
    Slots slots;
    for (unsigned slot = 0; slot < 40; ++slot)
        slots.push_back(noise(32, slot + 1));
    for (const int mode : {0, 1}) {
        DtsProcedure procedure(mode ? zor::tables::dts_fir::perfect : zor::tables::dts_fir::nonperfect);
        std::vector<double> expected(32 * slots.size());
        for (std::size_t slot = 0; slot < slots.size(); ++slot)
            procedure.interpolate(slots[slot], &expected[32 * slot]);
        for (double& sample : expected)
            sample *= scale;
        EXPECT_GT(snr(expected, dtsSynthesis(slots, mode)), 130) << "mode " << mode;
    }
}

TEST_P(TransformTest, DtsSynthesisUndoesAnalysis) {
    constexpr std::size_t delay = 480, count = 32 * 100;
    const auto signal = noise(count, 2);
    // The first set of taps is 85 dB good by design, the second one as good as floats are. The energy of the
    // printed taps is up to 9e-5 above 1/64.
    constexpr std::pair<int, double> modes[] = {{0, 84.0}, {1, 125.0}};
    for (const auto& [mode, least] : modes) {
        auto out = dtsSynthesis(dtsAnalysis(signal, mode), mode);
        out.erase(out.begin(), out.begin() + delay);
        const double gain = std::inner_product(out.begin(), out.end(), signal.begin(), 0.0) /
                            std::inner_product(signal.begin(), signal.end() - delay, signal.begin(), 0.0);
        EXPECT_NEAR(1, gain, 1e-4) << "mode " << mode;
        std::vector<double> scaled(signal.begin(), signal.end() - delay);
        for (double& value : scaled)
            value *= gain;
        EXPECT_GT(snr(scaled, out), least) << "mode " << mode;
    }
}

TEST(Dts, RefusesBadArguments) {
    const PlacedState<ZorsSynthesisFilterState_DTS_32f> state(zorsSynthesisFilterGetSize_DTS_32f,
                                                              zorsSynthesisFilterInit_DTS_32f);
    float data[32] = {};
    EXPECT_EQ(zorStsNullPtrErr, zorsSynthesisFilterGetSize_DTS_32f(nullptr));
    EXPECT_EQ(zorStsNullPtrErr, zorsSynthesisFilter_DTS_32f(data, nullptr, state.get(), 0));
    for (const int mode : {-1, 2})
        EXPECT_EQ(zorStsBadArgErr, zorsSynthesisFilter_DTS_32f(data, data, state.get(), mode));
    alignas(64) unsigned char foreign[1024] = {};
    EXPECT_EQ(zorStsContextErr,
              zorsSynthesisFilter_DTS_32f(data, data,
                                          reinterpret_cast<ZorsSynthesisFilterState_DTS_32f*>(foreign), 0));
}

} // namespace
