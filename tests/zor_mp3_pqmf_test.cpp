// The polyphase bank of layer III: each half against the defining sums, and the pair's reconstruction.
#include "../zor/src/tables/mp3_pqmf_window.h"
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double pi = std::numbers::pi;
constexpr int subbands = 32;

double windowD(int i) {
    return zor::tables::mp3_pqmf_window::d_x65536[i] / 65536.0;
}

/** ISO/IEC 11172-3 figure C.4: sub-band samples of the slot that ends before sample `end`. */
template <class T>
std::vector<double> analysisReference(const std::vector<T>& pcm, int end) {
    double y[64]{};
    for (int i = 0; i < 512; ++i)
        if (const int at = end - 1 - i; at >= 0)
            y[i % 64] += windowD(i) / 32 * static_cast<double>(pcm[static_cast<std::size_t>(at)]);
    std::vector<double> s(subbands);
    for (int k = 0; k < subbands; ++k)
        for (int i = 0; i < 64; ++i)
            s[static_cast<std::size_t>(k)] += std::cos((2 * k + 1) * (i - 16) * pi / 64) * y[i];
    return s;
}

/** Figure A.2: PCM of the slots in `bands`, 32 sub-bands each. */
std::vector<double> synthesisReference(const std::vector<double>& bands) {
    const int slots = static_cast<int>(bands.size()) / subbands;
    std::vector<double> v(1024), pcm;
    for (int slot = 0; slot < slots; ++slot) {
        std::copy_backward(v.begin(), v.end() - 64, v.end());
        for (int i = 0; i < 64; ++i) {
            double sum = 0;
            for (int k = 0; k < subbands; ++k)
                sum += std::cos((16 + i) * (2 * k + 1) * pi / 64) *
                       bands[static_cast<std::size_t>(slot * 32 + k)];
            v[static_cast<std::size_t>(i)] = sum;
        }
        for (int j = 0; j < 32; ++j) {
            double sum = 0;
            for (int i = 0; i < 16; ++i)
                sum += v[static_cast<std::size_t>(i / 2 * 128 + i % 2 * 96 + j)] * windowD(j + 32 * i);
            pcm.push_back(sum);
        }
    }
    return pcm;
}

template <class A, class B>
double snr(const std::vector<A>& signal, std::size_t from, const std::vector<B>& copy, std::size_t at,
           std::size_t count) {
    double energy = 0, noise = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double s = signal[from + i], d = s - static_cast<double>(copy[at + i]);
        energy += s * s;
        noise += d * d;
    }
    return 10 * std::log10(energy / noise);
}

template <class State>
struct Filter {
    template <class GetSize, class Init>
    Filter(GetSize getSize, Init init) {
        int size = 0;
        EXPECT_EQ(getSize(&size), zorStsNoErr);
        memory.resize(static_cast<std::size_t>(size) + 1);
        EXPECT_EQ(init(&state, memory.data() + 1), zorStsNoErr); // an odd address
    }
    std::vector<Zor8u> memory;
    State* state = nullptr;
};

struct Analysis : Filter<ZorMP3AnalysisState_32f> {
    Analysis() : Filter(zorsAnalysisFilterGetSize_PQMF_MP3_32f, zorsAnalysisFilterInit_PQMF_MP3_32f) {}
};
struct Synthesis : Filter<ZorMP3SynthesisState_32f> {
    Synthesis() : Filter(zorsSynthesisFilterGetSize_PQMF_MP3_32f, zorsSynthesisFilterInit_PQMF_MP3_32f) {}
};

class Mp3Pqmf : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Mp3Pqmf, testing::ValuesIn(zorPaths), zorPathName);

TEST_P(Mp3Pqmf, FloatBankReconstructsAsTheWindowAllows) {
    constexpr int slots = 400;
    const auto noise = randomInts<Zor16s>(32 * slots, -20000, 20000, 7);
    for (const int mode : {1, 2}) {
        Analysis analysis;
        Synthesis synthesis;
        std::vector<float> result(32 * slots);
        std::vector<double> bands, pcm;
        double analysisError = 0;
        for (int slot = 0; slot < slots; ++slot) {
            float in[64]{}, band[32], out[64]{};
            for (int i = 0; i < 32; ++i)
                in[i * mode] = noise[static_cast<std::size_t>(32 * slot + i)];
            ASSERT_EQ(zorsAnalysisFilter_PQMF_MP3_32f(in, band, analysis.state, mode), zorStsNoErr);
            bands.insert(bands.end(), band, band + 32);
            ASSERT_EQ(zorsSynthesisFilter_PQMF_MP3_32f(band, out, synthesis.state, mode), zorStsNoErr);
            for (int i = 0; i < 32; ++i)
                result[static_cast<std::size_t>(32 * slot + i)] = out[i * mode];
            if (slot < 40) {
                const auto expected = analysisReference(noise, 32 * slot + 32);
                for (std::size_t k = 0; k < 32; ++k)
                    analysisError = std::max(analysisError, std::abs(expected[k] - band[k]));
            }
        }
        EXPECT_LT(analysisError, 0.02); // of 20000: -120 dB
        const auto expected = synthesisReference(bands);
        EXPECT_GT(snr(expected, 0, result, 0, expected.size()), 120);
        const double figure = snr(noise, 0, result, 481, 32 * slots - 481);
        EXPECT_GT(figure, 83.5);
        RecordProperty("snr", std::to_string(figure));
    }
}

TEST_P(Mp3Pqmf, FixedBankReconstructsBothChannels) {
    constexpr int slots = 400;
    const auto noise = randomInts<Zor16s>(64 * slots, -20000, 20000, 8); // left, right alternating
    std::vector<Zor16s> channel[2];
    for (std::size_t i = 0; i < noise.size(); ++i)
        channel[i % 2].push_back(noise[i]);
    for (const int mode : {1, 2}) {
        std::vector<Zor16s> state(zorMP3AnalysisState), result[2];
        std::vector<Zor32s> stereoRing(1024), monoRing(512);
        std::vector<double> bands;
        int stereoRow = 0, monoRow = 0;
        double analysisError = 0;
        for (int slot = 0; slot < slots; ++slot) {
            const std::size_t at = static_cast<std::size_t>(32 * slot);
            Zor16s in[64], stereo[64], mono[32];
            for (std::size_t i = 0; i < 32; ++i)
                for (std::size_t c = 0; c < 2; ++c)
                    in[mode == 1 ? 32 * c + i : 2 * i + c] = channel[c][at + i];
            Zor32s left[32], right[32];
            ASSERT_EQ(zorsAnalysisPQMF_MP3_16s32s(in, left, right, state.data(), mode), zorStsNoErr);
            if (slot < 40) {
                const auto expected = analysisReference(channel[1], 32 * slot + 32);
                for (std::size_t k = 0; k < 32; ++k)
                    analysisError = std::max(analysisError, std::abs(expected[k] * 2048 - right[k]));
            }
            std::copy(left, left + 32, monoRing.begin() + 32 * monoRow);
            std::copy(left, left + 32, stereoRing.begin() + 32 * stereoRow);
            std::copy(right, right + 32, stereoRing.begin() + 512 + 32 * stereoRow);
            ASSERT_EQ(zorsSynthPQMF_MP3_32s16s(monoRing.data(), mono, &monoRow, 1), zorStsNoErr);
            ASSERT_EQ(zorsSynthPQMF_MP3_32s16s(stereoRing.data(), stereo, &stereoRow, 2), zorStsNoErr);
            for (int i = 0; i < 32; ++i) {
                EXPECT_EQ(mono[i], stereo[2 * i]);
                result[0].push_back(stereo[2 * i]);
                result[1].push_back(stereo[2 * i + 1]);
            }
        }
        EXPECT_LT(analysisError, 40); // of 2^26: -124 dB
        for (int c = 0; c < 2; ++c) {
            const double figure = snr(channel[c], 0, result[c], 481, 32 * slots - 481);
            EXPECT_GT(figure, 83);
            RecordProperty("snr", std::to_string(figure));
        }
    }
}

TEST_P(Mp3Pqmf, SynthesisSaturatesToPcm) {
    std::vector<Zor32s> ring(512);
    Zor16s out[32];
    int row = 0, highest = 0, lowest = 0;
    for (int slot = 0; slot < 40; ++slot) {
        std::fill_n(ring.begin() + 32 * row, 32, slot % 8 < 4 ? 1 << 30 : -(1 << 30));
        ASSERT_EQ(zorsSynthPQMF_MP3_32s16s(ring.data(), out, &row, 1), zorStsNoErr);
        highest = std::max(highest, static_cast<int>(*std::max_element(out, out + 32)));
        lowest = std::min(lowest, static_cast<int>(*std::min_element(out, out + 32)));
    }
    EXPECT_EQ(highest, 32767);
    EXPECT_EQ(lowest, -32768);
}

TEST_P(Mp3Pqmf, RefusesBadArguments) {
    Analysis analysis;
    Synthesis synthesis;
    float in[64]{}, out[64];
    EXPECT_EQ(zorsSynthesisFilter_PQMF_MP3_32f(in, out, nullptr, 1), zorStsNullPtrErr);
    EXPECT_EQ(zorsSynthesisFilter_PQMF_MP3_32f(in, out, synthesis.state, 3), zorStsBadArgErr);
    EXPECT_EQ(zorsAnalysisFilter_PQMF_MP3_32f(in, nullptr, analysis.state, 1), zorStsNullPtrErr);
    EXPECT_EQ(zorsAnalysisFilter_PQMF_MP3_32f(in, out,
                                              reinterpret_cast<ZorMP3AnalysisState_32f*>(synthesis.state), 1),
              zorStsContextErr);
    EXPECT_EQ(zorsSynthesisFilterGetSize_PQMF_MP3_32f(nullptr), zorStsNullPtrErr);
    Zor16s pcm[64]{}, state[zorMP3AnalysisState]{};
    Zor32s left[32], right[32], ring[1024]{};
    int row = 16;
    EXPECT_EQ(zorsAnalysisPQMF_MP3_16s32s(pcm, left, right, state, 0), zorStsBadArgErr);
    state[0] = 7;
    EXPECT_EQ(zorsAnalysisPQMF_MP3_16s32s(pcm, left, right, state, 1), zorStsContextErr);
    EXPECT_EQ(zorsSynthPQMF_MP3_32s16s(ring, pcm, &row, 1), zorStsBadArgErr);
}

} // namespace
