// The pieces of layer III in a row: analysis, MDCT, model, quantiser, Huffman code, and back to PCM.
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr int frame = 1152, frames = 60, granule = 576;
constexpr double rate = 44100;

/** Two sweeps at once: 100 Hz to 12 kHz, and 3 kHz down to 300 Hz. */
std::vector<Zor16s> chirp() {
    std::vector<Zor16s> pcm(static_cast<std::size_t>(frame * frames));
    const double seconds = static_cast<double>(pcm.size()) / rate;
    for (std::size_t i = 0; i < pcm.size(); ++i) {
        const double t = static_cast<double>(i) / rate;
        const double up = 100 * t + (12000 - 100) * t * t / (2 * seconds);
        const double down = 3000 * t - (3000 - 300) * t * t / (2 * seconds);
        pcm[i] = static_cast<Zor16s>(std::lrint(12000 * std::sin(2 * std::numbers::pi * up) +
                                                6000 * std::sin(2 * std::numbers::pi * down)));
    }
    return pcm;
}

/** Mono encoder and decoder over one stream of main data. */
class Chain {
  public:
    explicit Chain(int bitrateIndex) {
        m_header.id = 1;
        m_header.layer = 1;
        m_header.protectionBit = 1;
        m_header.bitrateIndex = bitrateIndex;
        m_header.mode = 3;
    }

    /** The PCM that comes back, and the bits that lay between. */
    std::vector<Zor16s> run(const std::vector<Zor16s>& pcm) {
        for (int n = 0; n < frames; ++n)
            encodeFrame(pcm, n);
        return m_out;
    }
    double bitsPerSecond() const { return static_cast<double>(m_bits) * rate / (frame * frames); }

  private:
    /** The model looks 576 samples further than the MDCT, which leaves it the granule it wants. */
    void model(const std::vector<Zor16s>& pcm, int n, ZorMP3PsychInfo* info) {
        std::vector<Zor16s> window(2 * zorMP3PcmStride);
        for (int i = 0; i < 2 * frame; ++i) {
            const int at = (n - 1) * frame + i + granule;
            if (at >= 0 && at < static_cast<int>(pcm.size()))
                window[static_cast<std::size_t>(i)] = pcm[static_cast<std::size_t>(at)];
        }
        ASSERT_EQ(zorsPsychoacousticModelTwo_MP3_16s(window.data(), info, m_side, &m_header, m_psych.data()),
                  zorStsNoErr);
    }

    void encodeFrame(const std::vector<Zor16s>& pcm, int n) {
        ZorMP3PsychInfo info[4]{};
        model(pcm, n, info);
        std::vector<Zor32s> spectrum(4 * granule);
        for (int g = 0; g < 2; ++g) {
            Zor32s samples[granule], unused[32];
            for (int slot = 0; slot < 18; ++slot) {
                Zor16s in[64]{};
                std::copy_n(pcm.begin() + n * frame + g * granule + slot * 32, 32, in);
                zorsAnalysisPQMF_MP3_16s32s(in, samples + 32 * slot, unused, m_analysis.data(), 1);
            }
            ASSERT_EQ(zorsMDCTFwd_MP3_32s(samples, &spectrum[static_cast<std::size_t>(g * 2 * granule)],
                                          m_side[2 * g].blockType, m_side[2 * g].mixedBlock,
                                          m_fwdOverlap.data()),
                      zorStsNoErr);
        }
        Zor8s factors[160]{};
        int countOneLen[4], hufSize[4];
        ASSERT_EQ(zorsQuantize_MP3_32s_I(spectrum.data(), factors, countOneLen, hufSize, info, m_side,
                                         &m_header, &m_reservoir, m_work.data()),
                  zorStsNoErr);
        for (int g = 0; g < 2; ++g) {
            m_bits += m_side[2 * g].part23Length;
            decodeGranule(&spectrum[static_cast<std::size_t>(g * 2 * granule)], m_side[2 * g],
                          factors + 2 * g * zorMP3ScaleFactors, countOneLen[2 * g], hufSize[2 * g]);
        }
    }

    void decodeGranule(const Zor32s* values, const ZorMP3SideInfo& side, const Zor8s* factors,
                       int countOneLen, int hufSize) {
        std::vector<Zor8u> stream(4096 / 8 + 8);
        Zor8u* byte = stream.data();
        int bit = 0;
        const Zor8u* const end = stream.data() + stream.size();
        ASSERT_EQ(
            zorsHuffmanEncode_MP3_32s1u(values, &byte, &bit, end, &m_header, &side, countOneLen, hufSize),
            zorStsNoErr);
        const Zor8u* from = stream.data();
        bit = 0;
        Zor32s lines[2 * granule], samples[granule], buffer[granule];
        int bound[2]{};
        ASSERT_EQ(zorsHuffmanDecode_MP3_1u32s(&from, &bit, end, lines, bound, &m_header, &side, 0, hufSize),
                  zorStsNoErr);
        ASSERT_TRUE(std::equal(values, values + granule, lines));
        ASSERT_EQ(zorsReQuantize_MP3_32s_I(lines, bound, factors, &side, &m_header,
                                           reinterpret_cast<Zor8u*>(buffer)),
                  zorStsNoErr);
        ASSERT_EQ(zorsMDCTInv_MP3_32s(lines, samples, m_invOverlap.data(), bound[0], &m_previous,
                                      side.blockType, side.mixedBlock),
                  zorStsNoErr);
        for (int slot = 0; slot < 18; ++slot) {
            Zor16s out[32];
            std::copy_n(samples + 32 * slot, 32, m_ring.begin() + 32 * m_row);
            ASSERT_EQ(zorsSynthPQMF_MP3_32s16s(m_ring.data(), out, &m_row, 1), zorStsNoErr);
            m_out.insert(m_out.end(), out, out + 32);
        }
    }

    ZorMP3FrameHeader m_header{};
    ZorMP3SideInfo m_side[4]{};
    std::vector<Zor32s> m_psych = std::vector<Zor32s>(zorMP3WorkSize), m_work = m_psych;
    std::vector<Zor16s> m_analysis = std::vector<Zor16s>(zorMP3AnalysisState), m_out;
    std::vector<Zor32s> m_fwdOverlap = std::vector<Zor32s>(granule), m_invOverlap = m_fwdOverlap;
    std::vector<Zor32s> m_ring = std::vector<Zor32s>(512);
    int m_previous = 0, m_row = 0, m_reservoir = 0;
    long long m_bits = 0;
};

class Mp3Chain : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Mp3Chain, testing::ValuesIn(zorPaths), zorPathName);

TEST_P(Mp3Chain, ChirpComesBack) {
    struct Case {
        int bitrateIndex;
        double kbps, leastSnr;
    };
    const auto pcm = chirp();
    for (const Case& c : {Case{14, 320, 72}, {5, 64, 34}}) {
        Chain chain(c.bitrateIndex);
        const auto out = chain.run(pcm);
        // The filter bank delays by 481 samples, the overlap by one granule.
        constexpr std::size_t delay = 481 + granule, from = 4 * frame;
        double energy = 0, error = 0;
        for (std::size_t i = from; i + delay < out.size(); ++i) {
            energy += std::pow(pcm[i], 2);
            error += std::pow(pcm[i] - out[i + delay], 2);
        }
        const double snr = 10 * std::log10(energy / error);
        EXPECT_GT(snr, c.leastSnr) << c.kbps;
        EXPECT_LE(chain.bitsPerSecond(), 1000 * c.kbps);
        RecordProperty("kbps" + std::to_string(static_cast<int>(c.kbps)),
                       std::to_string(snr) + " dB with " + std::to_string(chain.bitsPerSecond()) + " bit/s");
    }
}

} // namespace
