// An AAC decoder (ADTS streams of the profiles Low Complexity, Main and Long-Term Prediction) over the public
// headers of the library: the order of the calls from the bytes of a file to a WAV file.
//
//     aacdec [-f] [-c type] input.aac [output.wav]
//
// -f writes 32-bit floats instead of 16-bit integers, -c takes the code path of a processor type (a number of
// zorcore.h). Without an output file the stream is only decoded. Not served: coupling channels, gain control,
// spectral band replication (its core is decoded) and check words, which are passed over. Exit status: 0
// done, 1 no frame found or a file failed, 2 usage.
#include "commandline.h"
#include "wavfile.h"
#include "zorac.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace {

constexpr int frameLines = 1024, mostBands = 8 * 15, mostChannels = 8;
using Bytes = std::vector<Zor8u>;

/** Where frames begin and end in a file. */
class FrameFinder {
  public:
    explicit FrameFinder(const Bytes& file) : m_at(file.data()), m_end(file.data() + file.size()) {}

    ZorAacFrameHeader header{};
    const Zor8u* body = nullptr; /**< behind the header and its check word */
    const Zor8u* end = nullptr;

    /** Goes to the next frame; false at the end of the file. */
    bool next() {
        for (; m_at < m_end; ++m_at) {
            body = m_at;
            if (zorsUnpackFrameHeader_AAC(&body, m_end, &header) == zorStsNoErr &&
                header.frameLength <= m_end - m_at && confirmed(m_at + header.frameLength)) {
                m_at = end = m_at + header.frameLength;
                return true;
            }
        }
        return false;
    }

  private:
    /** Chance makes sync words too: the next frame must agree, unless the file ends. */
    bool confirmed(const Zor8u* follower) const {
        ZorAacFrameHeader h{};
        const ZorStatus status = zorsUnpackFrameHeader_AAC(&follower, m_end, &h);
        return status == zorStsStreamEndErr ||
               (status == zorStsNoErr && h.samplingRateIndex == header.samplingRateIndex);
    }

    const Zor8u* m_at;
    const Zor8u* m_end;
};

/** A position in a raw data block. */
struct Bits {
    const Zor8u* at;
    const Zor8u* end;
    int offset = 0;

    /** The next bits as a number, 0 behind the end. */
    int get(int count) {
        int value = 0;
        for (; count > 0; --count) {
            value = 2 * value + (at < end ? *at >> (7 - offset) & 1 : 0);
            offset = (offset + 1) % 8;
            at += offset == 0 && at < end;
        }
        return value;
    }
    void skip(int count) {
        for (; count > 0; --count)
            get(1);
    }
    void align() {
        if (offset > 0)
            skip(8 - offset);
    }
};

struct FreePredictors {
    void operator()(ZorsFDPState_32f* state) const { zorsFDPFree_32f(state); }
};

/** What is read of a channel, and what it carries from frame to frame. */
struct Channel {
    ZorAacIcsInfo info{};
    ZorAacChannel stream{};
    std::array<Zor16s, mostBands> factors{};
    std::array<Zor8u, mostBands> books{};
    std::array<Zor8s, 60> tnsCoef{};
    alignas(64) std::array<Zor32s, frameLines> quantised{};
    alignas(64) std::array<float, frameLines> lines{};
    /** Two frames of decoded samples, the last one from `samples` on; then the overlap to the next; zeros. */
    alignas(64) std::array<float, 4 * frameLines> history{};
    int previousShape = 0;
    std::unique_ptr<ZorsFDPState_32f, FreePredictors> predictors; /**< of the Main profile */

    float* samples() { return history.data() + frameLines; }
    float* overlap() { return history.data() + 2 * frameLines; }
};

/** Which bands of a pair share something. */
struct Mask {
    int present = 0;
    std::array<Zor8u, mostBands> used{};
};

class Decoder {
  public:
    /**
     * Decodes a raw data block into the channels' samples. A block that is broken, or has other channels than
     * those expected (0 for any), becomes silence; false where even their number is not known.
     */
    bool decode(const ZorAacFrameHeader& header, Bits& bits, int expected) {
        m_rate = header.samplingRateIndex;
        m_profile = header.profile;
        m_used = 0;
        if (elements(bits) && (expected == 0 || m_used == expected))
            return true;
        for (m_used = 0; m_used < expected;) {
            Channel& channel = *nextChannel();
            channel.info = {};
            channel.stream.tnsPresent = 0;
            channel.lines.fill(0);
            synthesise(channel, 0);
        }
        return expected > 0;
    }

    /** Channels of the last block. */
    int channels() const { return m_used; }

    /** The samples of the last block, interleaved in the order of WAV files; a full scale is 2^15. */
    void interleave(int configuration, float* pcm) const {
        // Streams have the centre first and the low frequencies last.
        static constexpr int counts[8] = {0, 1, 2, 3, 4, 5, 6, 8};
        static constexpr int order[8][mostChannels] = {{0, 1, 2, 3, 4, 5, 6, 7},
                                                       {0},
                                                       {0, 1},
                                                       {1, 2, 0},
                                                       {1, 2, 0, 3},
                                                       {1, 2, 0, 3, 4},
                                                       {1, 2, 0, 5, 3, 4},
                                                       {1, 2, 0, 7, 5, 6, 3, 4}};
        const int row = m_used == counts[configuration] ? configuration : 0;
        const float* sources[mostChannels];
        for (int c = 0; c < m_used; ++c)
            sources[c] = m_channels[static_cast<std::size_t>(order[row][c])]->samples();
        zorsInterleave_32f(sources, m_used, frameLines, pcm);
    }

  private:
    enum Element { single, pair, coupling, lowFrequency, data, program, fill, end };

    bool elements(Bits& bits) {
        for (;;) {
            Zor8u bytes[512];
            int tag = 0, count = 0;
            const int element = bits.get(3);
            bool good = false;
            switch (element) {
            case single:
            case lowFrequency:
                bits.skip(4); // instance tag, here and below
                good = singleChannel(bits);
                break;
            case pair:
                bits.skip(4);
                good = channelPair(bits);
                break;
            case data:
                good = zorsDecodeDatStrElt_AAC(&bits.at, &bits.offset, bits.end, &tag, &count, bytes,
                                               sizeof bytes) == zorStsNoErr;
                break;
            case program:
                good = passConfiguration(bits);
                break;
            case fill:
                good = zorsDecodeFillElt_AAC(&bits.at, &bits.offset, bits.end, &count, bytes, sizeof bytes) ==
                       zorStsNoErr;
                break;
            case end:
                bits.align();
                return m_used > 0;
            default:
                break;
            }
            if (!good)
                return false;
        }
    }

    /** A program configuration: elements follow in its order, so that only its length matters here. */
    static bool passConfiguration(Bits& bits) {
        bits.skip(10); // tag, profile, sampling rate
        int fives = 0; // elements that take five bits
        for (int kind = 0; kind < 3; ++kind)
            fives += bits.get(4); // front, side, back
        int fours = bits.get(2);  // low frequencies
        fours += bits.get(3);     // data
        fives += bits.get(4);     // coupling
        for (const int mixdownBits : {4, 4, 3})
            if (bits.get(1))
                bits.skip(mixdownBits);
        bits.skip(5 * fives + 4 * fours);
        bits.align();
        bits.skip(8 * bits.get(8)); // comment
        return bits.at < bits.end;
    }

    Channel* nextChannel() {
        if (m_used == mostChannels)
            return nullptr;
        if (m_used == static_cast<int>(m_channels.size()))
            m_channels.push_back(std::make_unique<Channel>());
        return m_channels[static_cast<std::size_t>(m_used++)].get();
    }

    bool singleChannel(Bits& bits) {
        Channel* const channel = nextChannel();
        if (!channel || !readChannel(bits, *channel, false))
            return false;
        dequantise(*channel, false);
        predict(*channel);
        synthesise(*channel, 0);
        return true;
    }

    bool channelPair(Bits& bits) {
        Channel *const left = nextChannel(), *const right = nextChannel();
        if (!left || !right)
            return false;
        m_mask.present = 0;
        m_mask.used.fill(0);
        const bool common = bits.get(1) == 1;
        if (common) {
            if (!readInfo(bits, left->info, 1) || !readMask(bits, left->info))
                return false;
            right->info = left->info;
        }
        if (!readChannel(bits, *left, common) || !readChannel(bits, *right, common))
            return false;
        dequantise(*left, false);
        dequantise(*right, common);
        const ZorAacIcsInfo& info = right->info;
        if (common)
            zorsDecodeMsStereo_AAC_32f_I(left->lines.data(), right->lines.data(), m_mask.present,
                                         m_mask.used.data(), left->books.data(), right->books.data(),
                                         info.numWinGrp, info.winGrpLen, info.maxSfb, m_rate, info.winLen);
        predict(*left);
        predict(*right);
        if (common)
            zorsDecodeIsStereo_AAC_32f(left->lines.data(), right->lines.data(), right->factors.data(),
                                       m_mask.present, m_mask.used.data(), right->books.data(),
                                       info.numWinGrp, info.winGrpLen, info.maxSfb, m_rate, info.winLen);
        synthesise(*left, 0);
        synthesise(*right, common ? 1 : 0);
        return true;
    }

    bool readInfo(Bits& bits, ZorAacIcsInfo& info, int commonWindow) const {
        return zorsUnpackIcsInfo_AAC(&bits.at, &bits.offset, bits.end, &info, m_profile, m_rate,
                                     commonWindow) == zorStsNoErr;
    }

    /** Which bands are mid and side: none, those that are marked, all; 3 is reserved. */
    bool readMask(Bits& bits, const ZorAacIcsInfo& info) {
        m_mask.present = bits.get(2);
        const int bands = info.numWinGrp * info.maxSfb;
        for (int band = 0; band < bands; ++band)
            m_mask.used[static_cast<std::size_t>(band)] =
                static_cast<Zor8u>(m_mask.present == 1 ? bits.get(1) : m_mask.present == 2);
        return m_mask.present < 3;
    }

    /** Gain, window information unless the pair has it in common, and everything else of a channel. */
    bool readChannel(Bits& bits, Channel& channel, bool common) const {
        ZorAacChannel& stream = channel.stream;
        stream.globalGain = bits.get(8);
        if (!common && !readInfo(bits, channel.info, 0))
            return false;
        stream.winSequence = channel.info.winSequence;
        stream.maxSfb = channel.info.maxSfb;
        stream.numWinGrp = channel.info.numWinGrp;
        std::copy_n(channel.info.winGrpLen, 8, stream.winGrpLen);
        stream.samplingRateIndex = m_rate;
        return zorsNoiselessDecodeBehindGain_AAC(&bits.at, &bits.offset, bits.end, &stream,
                                                 channel.factors.data(), channel.quantised.data(),
                                                 channel.books.data(), channel.tnsCoef.data(), m_profile,
                                                 0) == zorStsNoErr;
    }

    /** Lines of quantised values, and of noise, which the second channel of a pair may share. */
    void dequantise(Channel& channel, bool second) {
        const ZorAacIcsInfo& info = channel.info;
        zorsQuantInv_AAC_32s32f(channel.quantised.data(), channel.lines.data(), channel.factors.data(),
                                channel.books.data(), info.numWinGrp, info.winGrpLen, info.maxSfb, m_rate,
                                info.winLen);
        zorsDecodePNS_AAC_32f(channel.lines.data(), channel.factors.data(), channel.books.data(), &m_random,
                              m_noise.data(), second, m_mask.used.data(), info.numWinGrp, info.winGrpLen,
                              info.maxSfb, m_rate, info.winLen);
    }

    /** Prediction from the lines of past frames, of the Main profile; short windows forget them. */
    void predict(Channel& channel) const {
        if (m_profile != zorAacMain)
            return;
        const Zor16u* offset = nullptr;
        int all = 0, bands = 0, lines[42]{};
        zorsGetSfbTable_AAC(m_rate, frameLines, &offset, &all);
        zorsGetPredictionBands_AAC(m_rate, &bands);
        std::copy_n(offset, bands + 1, lines);
        if (!channel.predictors) {
            ZorsFDPState_32f* state = nullptr;
            zorsFDPInitAlloc_32f(&state, lines[bands]);
            channel.predictors.reset(state);
        }
        ZorsFDPState_32f* const state = channel.predictors.get();
        if (channel.info.winSequence == zorAacEightShort) {
            zorsFDPReset_32f(state);
            return;
        }
        zorsFDPInv_32f_I(channel.lines.data(), lines, channel.info.predictionUsed, bands, state);
        if (channel.info.predictorReset > 0)
            zorsFDPResetGroup_32f(channel.info.predictorReset, 30, state);
    }

    /** Prediction from past samples, of the LTP profile; noise shaping; lines to samples. */
    void synthesise(Channel& channel, int ofPair) const {
        const ZorAacIcsInfo& info = channel.info;
        const ZorAacTns& tns = channel.stream.tns;
        const bool shaped = channel.stream.tnsPresent == 1;
        const ZorAacLtp& ltp = info.ltp[ofPair];
        if (ltp.ltpFlag[0] != 0) {
            alignas(64) float predicted[frameLines];
            zorsLongTermPredict_AAC_32f(channel.history.data(), predicted, ltp.lag, ltp.coefIndex,
                                        info.winSequence, info.winShape, channel.previousShape);
            if (shaped)
                zorsEncodeTNS_AAC_32f_I(predicted, tns.numFilt, tns.regionLen, tns.order, tns.coefRes,
                                        channel.tnsCoef.data(), tns.direction, info.maxSfb, m_profile, m_rate,
                                        info.winLen);
            zorsLongTermReconstruct_AAC_32f(predicted, channel.lines.data(), ltp.ltpFlag, info.winSequence,
                                            info.maxSfb, m_rate);
        }
        if (shaped)
            zorsDecodeTNS_AAC_32f_I(channel.lines.data(), tns.numFilt, tns.regionLen, tns.order, tns.coefRes,
                                    channel.tnsCoef.data(), tns.direction, info.maxSfb, m_profile, m_rate,
                                    info.winLen);
        if (m_profile == zorAacLTP)
            std::copy_n(channel.samples(), frameLines, channel.history.data());
        zorsMDCTInv_AAC_32f(channel.lines.data(), channel.samples(), channel.overlap(), info.winSequence,
                            info.winShape, channel.previousShape);
        channel.previousShape = info.winShape;
    }

    int m_rate = 0, m_profile = zorAacLC, m_used = 0;
    Mask m_mask;
    Zor32u m_random = 1;
    std::array<Zor32s, mostBands> m_noise{};
    std::vector<std::unique_ptr<Channel>> m_channels;
};

} // namespace

int main(int argc, char* argv[]) {
    const CommandLine words(argc, argv, "aacdec");
    if (!words.input)
        return words.usage("aac");
    const std::optional<Bytes> file = words.read();
    if (!file)
        return words.fail("cannot read", words.input);

    FrameFinder frame(*file);
    ZorAacFrameHeader first{};
    int channels = 0;
    std::vector<float> pcm;
    std::optional<WavFile> wav;
    if (words.output)
        wav.emplace(words.output, words.floats);
    Decoder decoder;
    while (frame.next()) {
        const ZorAacFrameHeader& header = frame.header;
        if (channels == 0)
            first = header;
        if (header.profile == 2 || header.profile != first.profile ||
            header.samplingRateIndex != first.samplingRateIndex ||
            header.channelConfiguration != first.channelConfiguration)
            continue;
        Bits bits{frame.body, frame.end};
        for (int block = 0; block < header.blocks; ++block) {
            if (decoder.decode(header, bits, channels)) {
                channels = decoder.channels();
                pcm.resize(static_cast<std::size_t>(channels * frameLines));
                decoder.interleave(header.channelConfiguration, pcm.data());
                if (wav)
                    wav->write(pcm, 15);
            }
            if (header.blocks > 1 && header.headerSize > 7)
                bits.skip(16); // the block's check word
        }
    }
    if (channels == 0)
        return words.fail("no frame in", words.input);
    return !wav || wav->finish(channels, first.samplingRate) ? 0 : words.fail("cannot write", words.output);
}
