/** \file
 * Psychoacoustic model II of 11172-3 annex D with its changes for layer III.
 *
 * A granule is looked at through a window of 1024 samples that ends with it, and through three of 256 in its
 * middle. Long blocks: energies and the unpredictability of each line are summed over partitions, spread over
 * their neighbours, turned into a tonality and so into the threshold that noise must stay below; pre-echo
 * control keeps the threshold from rising faster than the two before it allow. Short blocks take every masker
 * for noise.
 *
 * A start window has to come before the short ones, so the model looks one granule ahead: what it hands out
 * is what it found at the call for the granule before.
 */
#include "common/check.h"
#include "mp3/psych_kernels.h"
#include "mp3/psych_tables.h"
#include "zorac/mp3.h"

#include <cmath>

namespace zor::mp3 {
namespace {

constexpr int granuleSamples = 576;
constexpr int predictedLines = 6;     /**< lines that the long transform's own past predicts */
constexpr int shortPredicted = 206;   /**< from here on no line is predicted */
constexpr float unpredicted = 0.4f;   /**< what then stands for its unpredictability */
constexpr float toneMasksNoise = 29;  /**< dB */
constexpr float noiseMasksNoise = 6;  /**< dB */
constexpr float switchEntropy = 1300; /**< bits; an attack lies above */
constexpr int windows = 3;
constexpr int longLines = longFft / 2 + 1;
constexpr int shortLines = shortFft / 2 + 1;
constexpr int longStride = 520;
constexpr int shortStride = 136;

/** What is kept of a channel between granules. */
struct ChannelMemory {
    float re[2][predictedLines], im[2][predictedLines]; /**< lowest lines, one and two granules ago */
    float threshold[2][maxPartitions]; /**< before pre-echo control, one and two granules ago */
};

/** Left and right, or M and S. */
struct InfoPair {
    ZorMP3PsychInfo info[2];
};

struct PsychState {
    ChannelMemory memory[2];
    int blockType[2];            /**< of the last granule, still without its successor */
    InfoPair leftRight, midSide; /**< of the last granule */
    float transform[2][splitFloats(longFft)];
    float longSpectrum[2][2 * longStride];
    float shortSpectrum[2][windows][2 * shortStride];
};
static_assert(sizeof(PsychState) <= zorMP3WorkSize * sizeof(Zor32s));

/** Energy and threshold of each partition. */
struct Masking {
    float energy[maxPartitions];
    float threshold[maxPartitions];
};

struct ChannelMasking {
    Masking longs;
    Masking shorts[windows];
};

class Model {
  public:
    Model(PsychState& state, const PsychTables& tables, const FftPlan& longPlan, const FftPlan& shortPlan)
        : m_state(state), m_tables(tables), m_longPlan(longPlan), m_shortPlan(shortPlan) {}

    /** Finds what the granule that ends before `left` and `right` can mask; the right channel may be missing.
     */
    void analyse(const Zor16s* left, const Zor16s* right, bool joint) {
        transform(left - longFft, right ? right - longFft : nullptr, m_longPlan, m_tables.longWindow,
                  longSpectrum(0), longSpectrum(1));
        for (int w = 0; w < windows; ++w) {
            const int from = shortFft + w * shortFft / 2 - longFft; // the middle half of the long window
            transform(left + from, right ? right + from : nullptr, m_shortPlan, m_tables.shortWindow,
                      shortSpectrum(0, w), shortSpectrum(1, w));
        }
        ChannelMasking masking[2];
        for (int channel = 0; channel < (right ? 2 : 1); ++channel) {
            maskChannel(channel, masking[channel]);
            m_found.info[channel] = infoOf(masking[channel]);
        }
        if (joint)
            findMidSide(masking);
    }

    const InfoPair& leftRight() const { return m_found; }
    const InfoPair& midSide() const { return m_foundMidSide; }

  private:
    Split longSpectrum(int channel) {
        float* const lines = m_state.longSpectrum[channel];
        return {lines, lines + longStride};
    }
    Split shortSpectrum(int channel, int window) {
        float* const lines = m_state.shortSpectrum[channel][window];
        return {lines, lines + shortStride};
    }

    /** Both channels in one complex transform. */
    void transform(const Zor16s* left, const Zor16s* right, const FftPlan& plan, const float* window,
                   Split first, Split second) {
        const int n = plan.size;
        const Split data = splitOver(m_state.transform[0], n), work = splitOver(m_state.transform[1], n);
        m_kernel.window(left, window, data.re, n);
        if (right)
            m_kernel.window(right, window, data.im, n);
        else
            std::fill(data.im, data.im + n, 0.f);
        m_kernel.separate(kernels<FftKernels>().transform(plan, data, work), n, first, second);
    }

    /** The lowest lines by the long past, the next ones by the short windows, four lines for one of theirs.
     */
    void unpredictabilityOf(int channel, float* result) {
        ChannelMemory& memory = m_state.memory[channel];
        const Split now = longSpectrum(channel);
        m_kernel.unpredictability(now, {memory.re[0], memory.im[0]}, {memory.re[1], memory.im[1]}, result,
                                  predictedLines);
        for (int k = 0; k < predictedLines; ++k) {
            memory.re[1][k] = memory.re[0][k];
            memory.im[1][k] = memory.im[0][k];
            memory.re[0][k] = now.re[k];
            memory.im[0][k] = now.im[k];
        }
        float shorts[shortLines];
        m_kernel.unpredictability(shortSpectrum(channel, 2), shortSpectrum(channel, 1),
                                  shortSpectrum(channel, 0), shorts, shortLines);
        for (int k = predictedLines; k < shortPredicted; ++k)
            result[k] = shorts[(k + 2) / 4];
        std::fill(result + shortPredicted, result + longLines, unpredicted);
    }

    static void sumPartitions(const Partitions& partitions, const float* lines, float* sums) {
        for (int b = 0; b < partitions.count; ++b) {
            sums[b] = 0;
            for (int line = partitions.begin[b]; line < partitions.begin[b + 1]; ++line)
                sums[b] += lines[line];
        }
    }

    void spread(const Partitions& partitions, const float* from, float* to) const {
        m_kernel.spread(partitions.spread[0], maxPartitions, from, to, partitions.count);
    }

    void maskLong(int channel, Masking& masking) {
        const Partitions& partitions = m_tables.longs;
        float energy[longLines], surprise[longLines], weighted[maxPartitions], spreadEnergy[maxPartitions],
            spreadWeighted[maxPartitions];
        m_kernel.energies(longSpectrum(channel), energy, longLines);
        unpredictabilityOf(channel, surprise);
        sumPartitions(partitions, energy, masking.energy);
        for (int k = 0; k < longLines; ++k)
            surprise[k] *= energy[k];
        sumPartitions(partitions, surprise, weighted);
        spread(partitions, masking.energy, spreadEnergy);
        spread(partitions, weighted, spreadWeighted);
        ChannelMemory& memory = m_state.memory[channel];
        for (int b = 0; b < partitions.count; ++b) {
            const float noisiness = spreadEnergy[b] > 0 ? spreadWeighted[b] / spreadEnergy[b] : 1;
            const float tonality =
                std::clamp(-0.299f - 0.43f * std::log(std::max(noisiness, 1e-6f)), 0.f, 1.f);
            const float snr = std::max(partitions.leastSnr[b],
                                       tonality * toneMasksNoise + (1 - tonality) * noiseMasksNoise);
            const float masked = spreadEnergy[b] * std::pow(10.f, -0.1f * snr);
            const float slow = std::min(2 * memory.threshold[0][b], 16 * memory.threshold[1][b]);
            masking.threshold[b] = std::max(partitions.quiet[b], std::min(masked, slow));
            memory.threshold[1][b] = memory.threshold[0][b];
            memory.threshold[0][b] = masked;
        }
    }

    void maskShort(int channel, int window, Masking& masking) {
        static const float noiseSnr = std::pow(10.f, -0.1f * noiseMasksNoise);
        const Partitions& partitions = m_tables.shorts;
        float energy[shortLines], spreadEnergy[maxPartitions];
        m_kernel.energies(shortSpectrum(channel, window), energy, shortLines);
        sumPartitions(partitions, energy, masking.energy);
        spread(partitions, masking.energy, spreadEnergy);
        for (int b = 0; b < partitions.count; ++b)
            masking.threshold[b] = std::max(partitions.quiet[b], spreadEnergy[b] * noiseSnr);
    }

    void maskChannel(int channel, ChannelMasking& masking) {
        maskLong(channel, masking.longs);
        for (int w = 0; w < windows; ++w)
            maskShort(channel, w, masking.shorts[w]);
    }

    /** M and S have their own energies and share the lower one of the channels' thresholds. */
    void findMidSide(const ChannelMasking (&masking)[2]) {
        const auto lower = [](const Masking& a, const Masking& b, const Partitions& partitions, Masking& to) {
            for (int i = 0; i < partitions.count; ++i)
                to.threshold[i] = std::min(a.threshold[i], b.threshold[i]);
        };
        for (int side = 0; side < 2; ++side) {
            const float sign = side == 0 ? 1.f : -1.f;
            ChannelMasking mixed;
            float energy[longLines];
            m_kernel.mixedEnergies(longSpectrum(0), longSpectrum(1), sign, energy, longLines);
            sumPartitions(m_tables.longs, energy, mixed.longs.energy);
            lower(masking[0].longs, masking[1].longs, m_tables.longs, mixed.longs);
            for (int w = 0; w < windows; ++w) {
                m_kernel.mixedEnergies(shortSpectrum(0, w), shortSpectrum(1, w), sign, energy, shortLines);
                sumPartitions(m_tables.shorts, energy, mixed.shorts[w].energy);
                lower(masking[0].shorts[w], masking[1].shorts[w], m_tables.shorts, mixed.shorts[w]);
            }
            m_foundMidSide.info[side] = infoOf(mixed);
        }
    }

    static float ratioOf(const Masking& masking, const BandSpan& span) {
        float energy = masking.energy[span.first] * span.firstShare;
        float threshold = masking.threshold[span.first] * span.firstShare;
        for (int b = span.first + 1; b <= span.last; ++b) {
            const float share = b == span.last ? span.lastShare : 1;
            energy += masking.energy[b] * share;
            threshold += masking.threshold[b] * share;
        }
        return energy > 0 ? threshold / energy : 1;
    }

    /** Half a bit for every doubling of energy over threshold, on each line. */
    float entropyOf(const Masking& masking) const {
        const Partitions& partitions = m_tables.longs;
        float bits = 0;
        for (int b = 0; b < partitions.count; ++b)
            if (masking.energy[b] > masking.threshold[b])
                bits += 0.5f * static_cast<float>(partitions.begin[b + 1] - partitions.begin[b]) *
                        std::log2(masking.energy[b] / masking.threshold[b]);
        return bits;
    }

    ZorMP3PsychInfo infoOf(const ChannelMasking& masking) const {
        ZorMP3PsychInfo info;
        for (int band = 0; band < longBands; ++band)
            info.ratioLong[band] = ratioOf(masking.longs, m_tables.longBand[band]);
        for (int band = 0; band < shortBands; ++band)
            for (int w = 0; w < windows; ++w)
                info.ratioShort[band][w] = ratioOf(masking.shorts[w], m_tables.shortBand[band]);
        info.perceptualEntropy = entropyOf(masking.longs);
        return info;
    }

    PsychState& m_state;
    const PsychTables& m_tables;
    const FftPlan& m_longPlan;
    const FftPlan& m_shortPlan;
    const PsychKernels& m_kernel = kernels<PsychKernels>();
    InfoPair m_found{}, m_foundMidSide{};
};

enum BlockType { normal = 0, start = 1, brief = 2, stop = 3 };

/** The type of the next granule, and what it makes of the one before. */
int nextBlockType(int& before, bool attack) {
    if (!attack)
        return before == brief ? stop : normal;
    before = before == normal ? start : before == stop ? brief : before;
    return brief;
}

void setBlock(ZorMP3SideInfo& side, int blockType) {
    side.blockType = blockType;
    side.windowSwitching = blockType != normal;
    side.mixedBlock = 0;
}

/** The plans of both transforms and the memory of their tables. */
struct Plans {
    FftPlan longs, shorts;
    alignas(64) float memory[4 * longFft];

    Plans() {
        Arena arena(memory);
        placeFft(longs, longFft, arena);
        placeFft(shorts, shortFft, arena);
    }
};

void runFrame(const Zor16s* src, ZorMP3PsychInfo* infos, ZorMP3SideInfo* sides, ZorMP3FrameHeader& header,
              PsychState& state) {
    static const Plans plans;
    const bool joint = header.mode == modeJoint;
    const int channels = channelsOf(header), granules = granulesOf(header);
    InfoPair midSide[2];
    float entropy = 0, entropyMidSide = 0;
    for (int granule = 0; granule < granules; ++granule) {
        const Zor16s* const end = src + granuleSamples * (granules + granule + 1);
        Model model(state, psychTables(bandRow(header)), plans.longs, plans.shorts);
        model.analyse(end, channels == 2 ? end + zorMP3PcmStride : nullptr, joint);
        bool attack[2]{};
        for (int c = 0; c < channels; ++c)
            attack[c] = model.leftRight().info[c].perceptualEntropy > switchEntropy;
        if (joint) // M and S are made of lines of one kind
            attack[0] = attack[1] = attack[0] || attack[1];
        for (int c = 0; c < channels; ++c) {
            int before = state.blockType[c];
            state.blockType[c] = nextBlockType(before, attack[c]);
            setBlock(sides[2 * granule + c], before);
            infos[2 * granule + c] = state.leftRight.info[c];
            entropy += state.leftRight.info[c].perceptualEntropy;
            entropyMidSide += state.midSide.info[c].perceptualEntropy;
        }
        midSide[granule] = state.midSide;
        state.leftRight = model.leftRight();
        state.midSide = model.midSide();
    }
    if (!joint)
        return;
    const bool ms = entropyMidSide < entropy;
    header.modeExtension = (header.modeExtension & ~extensionMs) | (ms ? extensionMs : 0);
    for (int i = 0; ms && i < 2 * granules; ++i)
        infos[i] = midSide[i / 2].info[i % 2];
}

} // namespace
} // namespace zor::mp3

extern "C" ZorStatus zorsPsychoacousticModelTwo_MP3_16s(const Zor16s* src, ZorMP3PsychInfo* dstPsychInfo,
                                                        ZorMP3SideInfo* sideInfo,
                                                        ZorMP3FrameHeader* frameHeader, Zor32s* state) {
    using namespace zor::mp3;
    if (zor::anyNull(src) || zor::anyNull(dstPsychInfo) || zor::anyNull(sideInfo) ||
        zor::anyNull(frameHeader) || zor::anyNull(state))
        return zorStsNullPtrErr;
    auto& memory = *reinterpret_cast<PsychState*>(state);
    for (const int type : memory.blockType)
        if (type < normal || type > stop)
            return zorStsBadArgErr;
    if (!isHeader(*frameHeader) || frameHeader->halfRate)
        return zorStsBadArgErr;
    runFrame(src, dstPsychInfo, sideInfo, *frameHeader, memory);
    return zorStsNoErr;
}
