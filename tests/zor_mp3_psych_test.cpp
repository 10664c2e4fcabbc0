// The psychoacoustic model of layer III on signals whose masking is known, and the quantiser that uses it.
#include "../zor/src/tables/mp3_sfb_long.h"
#include "zorac.h"
#include "zorsupport.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace {

using Signal = std::function<double(int)>; // sample at a time, full scale 32767
constexpr int frames = 8;

struct Result {
    ZorMP3PsychInfo info[2]; /**< of the last granule */
    std::vector<int> types[2];
    std::vector<float> ratios; /**< of the left channel's long band 10 */
    int modeExtension = 0;
};

Signal sine(double hz, double amplitude) {
    return [=](int t) { return amplitude * std::sin(2 * std::numbers::pi * hz * t / 44100); };
}

Signal noise(double amplitude, unsigned seed) {
    auto values =
        std::make_shared<std::vector<int>>(randomInts<int>(1152 * (frames + 2), -32767, 32767, seed));
    return [=](int t) { return amplitude / 32767 * (*values)[static_cast<std::size_t>(t + 1152)]; };
}

/** Runs a stereo or joint signal of 44.1 or 22.05 kHz through the model. */
Result run(const Signal& left, const Signal& right, int id = 1, int mode = 0) {
    Result result{};
    ZorMP3FrameHeader h{};
    h.id = id;
    h.mode = mode;
    std::vector<Zor32s> state(zorMP3WorkSize);
    const int frame = id ? 1152 : 576;
    for (int n = 0; n < frames; ++n) {
        std::vector<Zor16s> pcm(2 * zorMP3PcmStride);
        for (int i = 0; i < 2 * frame; ++i) {
            const int t = (n - 1) * frame + i;
            pcm[static_cast<std::size_t>(i)] = static_cast<Zor16s>(std::lrint(left(t)));
            pcm[static_cast<std::size_t>(zorMP3PcmStride + i)] = static_cast<Zor16s>(std::lrint(right(t)));
        }
        ZorMP3PsychInfo info[4]{};
        ZorMP3SideInfo side[4]{};
        EXPECT_EQ(zorsPsychoacousticModelTwo_MP3_16s(pcm.data(), info, side, &h, state.data()), zorStsNoErr);
        const int granules = id ? 2 : 1;
        for (int i = 0; i < 2 * granules; ++i) {
            EXPECT_EQ(side[i].windowSwitching, side[i].blockType != 0);
            result.types[i % 2].push_back(side[i].blockType);
            result.info[i % 2] = info[i];
            if (i % 2 == 0)
                result.ratios.push_back(info[i].ratioLong[10]);
        }
        result.modeExtension = h.modeExtension;
    }
    return result;
}

/** The long band of 44.1 kHz that holds a frequency. */
int bandAt(double hz) {
    const auto& boundary = zor::tables::mp3_sfb_long::boundary[3];
    return static_cast<int>(std::upper_bound(boundary, boundary + 23, hz / 22050 * 576) - boundary) - 1;
}

double dB(double ratio) {
    return 10 * std::log10(ratio);
}

Signal operator+(const Signal& a, const Signal& b) {
    return [=](int t) { return a(t) + b(t); };
}

class Mp3Psych : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, Mp3Psych, testing::ValuesIn(zorPaths), zorPathName);

TEST_P(Mp3Psych, ToneAndNoiseMaskDifferently) {
    const Result r = run(sine(5000, 10000), noise(10000, 1));
    const auto band = static_cast<std::size_t>(bandAt(5000));
    // A tone masks noise 29 dB below it, noise 6 dB below; spreading over partitions takes up to some dB
    // more.
    EXPECT_NEAR(dB(r.info[0].ratioLong[band]), -31, 3);
    EXPECT_NEAR(dB(r.info[1].ratioLong[band]), -6.5, 1.5);
    EXPECT_NEAR(dB(r.info[1].ratioShort[7][1]), -6, 3);
    // Low bands need a larger distance in any case.
    EXPECT_LT(dB(r.info[1].ratioLong[0]), -20);
}

TEST_P(Mp3Psych, MaskingSpreadsUpwardsAndFadesAway) {
    const auto ratioAt = [](const Signal& signal, double hz) {
        return run(signal, signal).info[0].ratioLong[bandAt(hz)];
    };
    const Signal masker = sine(2000, 12000), weak = sine(2600, 30), far = sine(9000, 30),
                 below = sine(1000, 30);
    EXPECT_LT(ratioAt(weak, 2600), 0.1);          // heard when alone
    EXPECT_GT(ratioAt(masker + weak, 2600), 0.9); // masked, 52 dB below and 1.6 Bark above the masker
    EXPECT_LT(ratioAt(masker + far, 9000), 0.5);  // too far above
    EXPECT_LT(ratioAt(masker + below, 1000),
              0.5); // 3.9 Bark below the masker: spreading downwards is steeper
}

TEST_P(Mp3Psych, SilenceAndQuietSoundsCostNothing) {
    const Result r = run(sine(1000, 0), noise(0.4, 2)); // rounds to silence
    for (const auto& info : r.info)
        EXPECT_EQ(info.perceptualEntropy, 0);
    const Result hiss = run(noise(8, 3), noise(2000, 3));
    EXPECT_LT(hiss.info[0].perceptualEntropy, hiss.info[1].perceptualEntropy);
    EXPECT_GT(hiss.info[0].ratioLong[20], 1); // 16 kHz near the end of hearing
}

TEST_P(Mp3Psych, AttacksSwitchBlocksInOrder) {
    for (const int id : {0, 1})
        for (const int attackAt : {3000, 3300, 3456}) {
            const Signal hiss = noise(30, 4), loud = noise(20000, 5);
            const Signal attack = [=](int t) { return t < attackAt ? hiss(t) : loud(t); };
            const Result r = run(attack, hiss, id);
            // The granule that the attack falls into was seen first with the one before: that one starts.
            const auto& types = r.types[0];
            const auto brief = std::find(types.begin() + 4, types.end(), 2);
            ASSERT_NE(brief, types.end()) << "attack at " << attackAt;
            const auto at = static_cast<int>(brief - types.begin());
            EXPECT_EQ(at, attackAt / 576 + 1) << "attack at " << attackAt; // one granule of delay
            EXPECT_EQ(types[static_cast<std::size_t>(at - 1)], 1);
            // Pre-echo control: the threshold does not rise with the attack.
            EXPECT_LT(r.ratios[static_cast<std::size_t>(at)], 0.01);
            EXPECT_GT(r.ratios[static_cast<std::size_t>(at - 1)], 0.05);
            for (std::size_t i = 1; i < types.size(); ++i) {
                static constexpr bool follows[4][4] = {{true, true, false, false},
                                                       {false, false, true, false},
                                                       {false, false, true, true},
                                                       {true, true, false, false}};
                EXPECT_TRUE(follows[types[i - 1]][types[i]]) << types[i - 1] << " then " << types[i];
            }
            if (id == 1) { // the run of id 0 ends with the attack
                EXPECT_EQ(types.back(), 0);
            }
            EXPECT_TRUE(
                std::all_of(r.types[1].begin() + 4, r.types[1].end(), [](int type) { return type == 0; }));
        }
}

TEST_P(Mp3Psych, JointStereoChoosesMidSideForWhatIsInTheMiddle) {
    const Signal a = noise(9000, 6), b = noise(9000, 7);
    const Signal nearly = [=](int t) { return 0.95 * a(t) + 0.05 * b(t); };
    EXPECT_EQ(run(a, nearly, 1, 1).modeExtension, 2);
    EXPECT_EQ(run(a, b, 1, 1).modeExtension, 0);
    EXPECT_EQ(run(a, nearly, 1, 0).modeExtension, 0); // not in plain stereo
    // The side signal lies 26 dB lower and below what left and right mask by half: little to code.
    const Result r = run(a, nearly, 1, 1);
    EXPECT_LT(r.info[1].perceptualEntropy, 0.5 * r.info[0].perceptualEntropy);
}

TEST_P(Mp3Psych, RefusesBadArguments) {
    std::vector<Zor32s> state(zorMP3WorkSize);
    std::vector<Zor16s> pcm(2 * zorMP3PcmStride);
    ZorMP3PsychInfo info[4];
    ZorMP3SideInfo side[4]{};
    ZorMP3FrameHeader h{};
    EXPECT_EQ(zorsPsychoacousticModelTwo_MP3_16s(nullptr, info, side, &h, state.data()), zorStsNullPtrErr);
    EXPECT_EQ(zorsPsychoacousticModelTwo_MP3_16s(pcm.data(), info, side, &h, nullptr), zorStsNullPtrErr);
    h.samplingFrequency = 3;
    EXPECT_EQ(zorsPsychoacousticModelTwo_MP3_16s(pcm.data(), info, side, &h, state.data()), zorStsBadArgErr);
}

struct Quantised {
    std::vector<Zor32s> values = std::vector<Zor32s>(2304);
    std::vector<Zor8s> factors = std::vector<Zor8s>(160);
    int countOneLen[4]{}, hufSize[4]{};
    ZorMP3SideInfo side[4]{};
    int reservoir = 0;
};

/** Quantises a frame of a falling spectrum; its threshold is `ratio` of the energy everywhere. */
Quantised quantise(const ZorMP3FrameHeader& h, int blockType, int mixed, float ratio, float entropy,
                   std::vector<Zor32s>& original, int reservoir = 0) {
    Quantised q;
    q.reservoir = reservoir;
    q.values = randomInts<Zor32s>(2304, -(1 << 24), 1 << 24, 9);
    for (std::size_t i = 0; i < q.values.size(); ++i)
        q.values[i] = static_cast<Zor32s>(q.values[i] / (1 + std::pow(static_cast<double>(i % 576) / 12, 2)));
    original = q.values;
    ZorMP3PsychInfo info[4];
    for (int i = 0; i < 4; ++i) {
        std::fill_n(info[i].ratioLong, 22, ratio);
        std::fill_n(info[i].ratioShort[0], 39, ratio);
        info[i].perceptualEntropy = entropy;
        q.side[i].windowSwitching = blockType != 0;
        q.side[i].blockType = blockType;
        q.side[i].mixedBlock = mixed;
    }
    std::vector<Zor32s> work(zorMP3WorkSize);
    EXPECT_EQ(zorsQuantize_MP3_32s_I(q.values.data(), q.factors.data(), q.countOneLen, q.hufSize, info,
                                     q.side, &h, &q.reservoir, work.data()),
              zorStsNoErr);
    return q;
}

/** The Huffman encoder takes exactly the bits told, and the scale factors the rest. Returns part23Length. */
int checkGranule(const Quantised& q, const ZorMP3FrameHeader& h, int granule, int channel) {
    const int at = 2 * granule + channel;
    const ZorMP3SideInfo& side = q.side[at];
    std::vector<Zor8u> stream(1000);
    Zor8u* byte = stream.data();
    int bit = 0;
    EXPECT_EQ(zorsHuffmanEncode_MP3_32s1u(&q.values[static_cast<std::size_t>(at * 576)], &byte, &bit,
                                          stream.data() + stream.size(), &h, &side, q.countOneLen[at],
                                          q.hufSize[at]),
              zorStsNoErr);
    EXPECT_EQ((byte - stream.data()) * 8 + bit, q.hufSize[at]);
    const Zor8u* from = stream.data();
    int offset = 0;
    const int scfsi[4]{};
    Zor8s factors[36];
    ZorMP3SideInfo copy = side;
    EXPECT_EQ(zorsUnpackScaleFactors_MP3_1u8s(&from, &offset, stream.data() + stream.size(), factors, &copy,
                                              scfsi, &h, granule, channel),
              zorStsNoErr);
    EXPECT_EQ((from - stream.data()) * 8 + offset, side.part23Length - q.hufSize[at]);
    EXPECT_LE(side.part23Length, 4095);
    return side.part23Length;
}

/** A bit rate that the test runs: index, bit/s and sampling rate (row 0). */
struct Rate {
    int id, index, bitRate;
};
constexpr Rate rates[] = {{1, 1, 32000},   {1, 5, 64000},   {1, 9, 128000}, {1, 10, 160000}, {1, 11, 192000},
                          {1, 13, 256000}, {1, 14, 320000}, {0, 2, 16000},  {0, 8, 64000},   {0, 14, 160000}};

int sideInfoBytes(int id, int mode) {
    return id ? (mode == 3 ? 17 : 32) : (mode == 3 ? 9 : 17);
}

TEST_P(Mp3Psych, QuantiserKeepsToItsBitsAndTellsThem) {
    // Two frames that ask for all they can have, after two that ask for little and fill the reservoir.
    for (const Rate& rate : rates)
        for (const auto& [blockType, mixed] : {std::pair{0, 0}, {2, 0}, {2, 1}})
            for (const auto& [mode, extension] :
                 {std::pair{0, 0}, {1, 0}, {1, 1}, {1, 2}, {1, 3}, {2, 0}, {3, 0}}) {
                ZorMP3FrameHeader h{};
                h.id = rate.id;
                h.mode = mode;
                h.modeExtension = extension;
                h.bitrateIndex = rate.index;
                const int granules = rate.id ? 2 : 1, channels = mode == 3 ? 1 : 2;
                const int unpadded = rate.id ? 144 * rate.bitRate / 44100 : 72 * rate.bitRate / 22050;
                const int limit = std::clamp(7680 - 8 * (unpadded + 1), 0, rate.id ? 511 * 8 : 255 * 8);
                int reservoir = 0;
                for (int frame = 0; frame < 4; ++frame) {
                    const bool greedy = frame >= 2;
                    h.protectionBit = frame % 2;
                    h.paddingBit = frame / 2;
                    const int capacity = 8 * (unpadded + h.paddingBit - 4 - (h.protectionBit ? 0 : 2) -
                                              sideInfoBytes(rate.id, mode));
                    std::vector<Zor32s> original;
                    const Quantised q = quantise(h, blockType, mixed, greedy ? 1e-6f : 0.5f,
                                                 greedy ? 1e9f : 10.f, original, reservoir);
                    int used = 0;
                    for (int g = 0; g < granules; ++g)
                        for (int c = 0; c < channels; ++c)
                            used += checkGranule(q, h, g, c);
                    const int stuffing = capacity + reservoir - used - q.reservoir;
                    SCOPED_TRACE("id " + std::to_string(rate.id) + " rate " + std::to_string(rate.bitRate) +
                                 " mode " + std::to_string(mode) + "/" + std::to_string(extension) +
                                 " block " + std::to_string(blockType) + " frame " + std::to_string(frame));
                    EXPECT_GE(stuffing, 0);
                    EXPECT_EQ(q.reservoir % 8, 0);
                    EXPECT_LE(q.reservoir, limit);
                    // Stuffing where the reservoir can take no more; one step of the gain is a tenth of the
                    // bits.
                    EXPECT_TRUE(stuffing < 8 || q.reservoir + 8 > limit);
                    EXPECT_GT(used, greedy ? (capacity + reservoir - limit) * 17 / 20 : -1);
                    reservoir = q.reservoir;
                }
            }
}

TEST_P(Mp3Psych, QuantiserKeepsIntensityPositionsLegal) {
    // Of id 0 the largest number of a length in bits says that a band has no position: 1, 3 and 7 need one
    // bit more.
    for (const int position : {1, 3, 6, 7, 14}) {
        ZorMP3FrameHeader h{};
        h.bitrateIndex = 8;
        h.mode = 1;
        h.modeExtension = 1;
        h.protectionBit = 1;
        Quantised q;
        for (std::size_t i = 0; i < 576; ++i)
            q.values[i] = 1 << 22; // the carrier; the right channel is 0
        std::fill(q.values.begin() + 320, q.values.end(), 0);
        std::fill_n(q.factors.begin() + zorMP3ScaleFactors, 21, static_cast<Zor8s>(position));
        ZorMP3PsychInfo info[4]{};
        for (ZorMP3PsychInfo& one : info)
            one.perceptualEntropy = 1e9f;
        std::vector<Zor32s> work(zorMP3WorkSize);
        ASSERT_EQ(zorsQuantize_MP3_32s_I(q.values.data(), q.factors.data(), q.countOneLen, q.hufSize, info,
                                         q.side, &h, &q.reservoir, work.data()),
                  zorStsNoErr);
        const double io = q.side[1].scalefacCompress & 1 ? std::sqrt(0.5) : std::pow(2, -0.25);
        const double weak = std::pow(io, (position + 1) / 2);
        int length[2]{576, 0};
        Zor32s buffer[576];
        ASSERT_EQ(zorsReQuantize_MP3_32s_I(q.values.data(), length, q.factors.data(), q.side, &h,
                                           reinterpret_cast<Zor8u*>(buffer)),
                  zorStsNoErr);
        for (const std::size_t line : {0U, 100U, 300U}) {
            const double left = q.values[line], right = q.values[576 + line];
            ASSERT_GT(left, 1 << 16);
            EXPECT_NEAR(right / left, position % 2 ? 1 / weak : weak, 1e-3) << "position " << position;
        }
    }
}

TEST_P(Mp3Psych, QuantiserKeepsBandsThatItSilencesOutOfIntensityStereo) {
    // The right channel is loud in the lowest lines and so soft in those above, up to line 300, that it is
    // quantised to 0: its left partner must stay on the left. From line 300 on both share the carrier, by
    // position 3 or 0.
    for (const int id : {0, 1})
        for (const auto& [blockType, mixed] : {std::pair{0, 0}, {2, 0}, {2, 1}}) {
            ZorMP3FrameHeader h{};
            h.id = id;
            h.bitrateIndex = 14;
            h.mode = 1;
            h.modeExtension = 1;
            Quantised q;
            for (std::size_t i = 0; i < 576; ++i) {
                q.values[i] = i < 400 ? 1 << 23 : 0;
                q.values[576 + i] = i < 20 ? 1 << 23 : i < 300 ? 1 << 4 : 0;
            }
            std::fill(q.values.begin() + 1152, q.values.end(), 0);
            const auto original = q.values;
            std::fill_n(q.factors.begin() + zorMP3ScaleFactors, 36, static_cast<Zor8s>(id ? 3 : 0));
            for (ZorMP3SideInfo& side : q.side) {
                side.windowSwitching = blockType != 0;
                side.blockType = blockType;
                side.mixedBlock = mixed;
            }
            ZorMP3PsychInfo info[4]{};
            for (int i = 0; i < 4; ++i) { // the model does not hear the right channel's noise
                std::fill_n(info[i].ratioLong, 22, i % 2 ? 2.f : 0.01f);
                std::fill_n(info[i].ratioShort[0], 39, i % 2 ? 2.f : 0.01f);
                info[i].perceptualEntropy = 1500;
            }
            std::vector<Zor32s> work(zorMP3WorkSize);
            ASSERT_EQ(zorsQuantize_MP3_32s_I(q.values.data(), q.factors.data(), q.countOneLen, q.hufSize,
                                             info, q.side, &h, &q.reservoir, work.data()),
                      zorStsNoErr);
            checkGranule(q, h, 0, 1);
            int length[2]{576, 576};
            Zor32s buffer[576];
            ASSERT_EQ(zorsReQuantize_MP3_32s_I(q.values.data(), length, q.factors.data(), q.side, &h,
                                               reinterpret_cast<Zor8u*>(buffer)),
                      zorStsNoErr);
            for (const std::size_t line : {60U, 120U, 200U, 290U}) {
                EXPECT_NEAR(q.values[line], original[line], original[line] / 3)
                    << "id " << id << " type " << blockType << " mixed " << mixed << " line " << line;
                EXPECT_LT(std::abs(q.values[576 + line]), original[line] / 50);
            }
            EXPECT_NEAR(q.values[576 + 380], q.values[380], 8);
        }
}

TEST_P(Mp3Psych, QuantiserShapesTheNoise) {
    ZorMP3FrameHeader h{};
    h.id = 1;
    h.mode = 3;
    h.protectionBit = 1;
    h.bitrateIndex = 14; // 320 kbit/s: more than enough
    for (const auto& [blockType, mixed] : {std::pair{0, 0}, {2, 0}, {2, 1}}) {
        std::vector<Zor32s> original;
        constexpr float ratio = 1e-2f;
        const Quantised q = quantise(h, blockType, mixed, ratio, 1e4f, original);
        auto decoded = q.values;
        int len[2]{576, 0};
        Zor32s buffer[576];
        ASSERT_EQ(zorsReQuantize_MP3_32s_I(decoded.data(), len, q.factors.data(), q.side, &h,
                                           reinterpret_cast<Zor8u*>(buffer)),
                  zorStsNoErr);
        const auto& boundary = zor::tables::mp3_sfb_long::boundary[3];
        for (int band = 0; band < 22; ++band) { // of short blocks too: stretches of the spectrum
            double energy = 0, error = 0;
            for (auto i = static_cast<std::size_t>(boundary[band]);
                 i < static_cast<std::size_t>(boundary[band + 1]); ++i) {
                energy += std::pow(original[i], 2);
                error += std::pow(static_cast<double>(original[i]) - decoded[i], 2);
            }
            EXPECT_LT(error, 1.05 * ratio * energy) << "block type " << blockType << " band " << band;
        }
    }
}

TEST_P(Mp3Psych, QuantiserTakesSilenceAndRefusesFreeFormat) {
    ZorMP3FrameHeader h{};
    h.id = 1;
    h.bitrateIndex = 9;
    Quantised q;
    std::fill(q.values.begin(), q.values.end(), 0);
    const ZorMP3PsychInfo info[4]{};
    std::vector<Zor32s> work(zorMP3WorkSize);
    const auto run = [&] {
        return zorsQuantize_MP3_32s_I(q.values.data(), q.factors.data(), q.countOneLen, q.hufSize, info,
                                      q.side, &h, &q.reservoir, work.data());
    };
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(run(), zorStsNoErr);
    EXPECT_EQ(q.side[0].part23Length, 0);
    EXPECT_EQ(q.reservoir, 511 * 8); // as far as main_data_begin reaches
    h.bitrateIndex = 0;
    EXPECT_EQ(run(), zorStsBadArgErr);
    h.bitrateIndex = 9;
    q.reservoir = -1;
    EXPECT_EQ(run(), zorStsBadArgErr);
}

} // namespace
