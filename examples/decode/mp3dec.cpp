// An MP3 decoder (MPEG-1, MPEG-2 and MPEG-2.5, layer III) over the public headers of the library: the order
// of the calls from the bytes of a file to a WAV file.
//
//     mp3dec [-f] [-c type] input.mp3 [output.wav]
//
// -f writes 32-bit floats instead of 16-bit integers, -c takes the code path of a processor type (a number of
// zorcore.h). Without an output file the stream is only decoded. Exit status: 0 done, 1 no frame found or a
// file failed, 2 usage.
#include "commandline.h"
#include "wavfile.h"
#include "zorac.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace {

constexpr int granule = 576;
using Bytes = std::vector<Zor8u>;

/** Where frames begin and end in a file, and what stands around them. */
class FrameFinder {
  public:
    explicit FrameFinder(const Bytes& file) : m_at(file.data()), m_end(file.data() + file.size()) {
        skipTag();
    }

    ZorMP3FrameHeader header{};
    ZorMP3FrameInfo info{};
    const Zor8u* body = nullptr; /**< behind the header and the check word */
    const Zor8u* end = nullptr;

    /** Goes to the next frame; false at the end of the file. */
    bool next() {
        for (; m_end - m_at >= 4; ++m_at)
            if (isFrame(m_at, header, info) && confirmed()) {
                body = m_at + info.headerSize;
                end = m_at + info.frameLength;
                m_at = end;
                return true;
            }
        return false;
    }

    /** A frame for players, which holds no sound: it says how long the stream is. */
    bool isForPlayers() const {
        const Zor8u* const text =
            end - info.frameLength + 4 + info.sideInfoSize; // a check word is not counted
        return end - text >= 4 && (!std::memcmp(text, "Xing", 4) || !std::memcmp(text, "Info", 4));
    }

  private:
    /** A header of layer III with a bit rate, whose frame lies in the file whole. */
    bool isFrame(const Zor8u* at, ZorMP3FrameHeader& h, ZorMP3FrameInfo& i) const {
        return zorsUnpackFrameHeader_MP3(&at, m_end, &h) == zorStsNoErr &&
               zorsGetFrameInfo_MP3(&h, &i) == zorStsNoErr && i.frameLength > i.headerSize + i.sideInfoSize &&
               i.frameLength - i.headerSize <= m_end - at;
    }

    /** Chance makes sync words too: the next frame must agree, unless the file ends. */
    bool confirmed() const {
        const Zor8u* const follower = m_at + info.frameLength;
        if (m_end - follower < 4)
            return true;
        ZorMP3FrameHeader h{};
        ZorMP3FrameInfo i{};
        const Zor8u* at = follower;
        return zorsUnpackFrameHeader_MP3(&at, m_end, &h) >= 0
                   ? zorsGetFrameInfo_MP3(&h, &i) == zorStsNoErr && i.samplingRate == info.samplingRate
                   : !std::memcmp(follower, "TAG", 3);
    }

    /** An ID3v2 tag ahead of the stream: its length stands in four times seven bits. */
    void skipTag() {
        if (m_end - m_at < 10 || std::memcmp(m_at, "ID3", 3) != 0)
            return;
        const std::ptrdiff_t size = 10 + (m_at[6] << 21 | m_at[7] << 14 | m_at[8] << 7 | m_at[9]);
        m_at += std::min(size, m_end - m_at);
    }

    const Zor8u* m_at;
    const Zor8u* m_end;
};

/** The main data of the frames so far, of which a frame may use what others have left. */
class Reservoir {
  public:
    /** Adds a frame's main data. False where it begins in bytes that were never there. */
    bool add(const Zor8u* from, const Zor8u* to, int mainDataBegin) {
        const auto begin = static_cast<std::size_t>(mainDataBegin);
        constexpr std::size_t reach = 511;
        if (m_bytes.size() > reach)
            m_bytes.erase(m_bytes.begin(), m_bytes.end() - reach);
        const std::size_t before = m_bytes.size();
        m_bytes.insert(m_bytes.end(), from, to);
        m_begin = before - std::min(begin, before);
        return begin <= before;
    }
    const Zor8u* begin() const { return m_bytes.data() + m_begin; }
    const Zor8u* end() const { return m_bytes.data() + m_bytes.size(); }

  private:
    Bytes m_bytes;
    std::size_t m_begin = 0;
};

/** What a channel carries from granule to granule. */
struct Channel {
    std::array<Zor8s, zorMP3ScaleFactors> factors{};
    std::array<Zor32s, granule> overlap{};
    int overlapBands = 0;
    Bytes filterMemory;
    ZorMP3SynthesisState_32f* filter = nullptr;

    Channel() {
        int size = 0;
        zorsSynthesisFilterGetSize_PQMF_MP3_32f(&size);
        filterMemory.resize(static_cast<std::size_t>(size));
        zorsSynthesisFilterInit_PQMF_MP3_32f(&filter, filterMemory.data());
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
};

class Decoder {
  public:
    /** Decodes a frame into interleaved PCM with full scale 1; what is broken becomes silence. */
    void decode(const FrameFinder& frame, std::vector<float>& pcm) {
        pcm.resize(static_cast<std::size_t>(frame.info.granules * frame.info.channels * granule));
        const Zor8u* at = frame.body;
        int bit = 0, mainDataBegin = 0, privateBits = 0, scfsi[8]{};
        ZorMP3SideInfo side[4]{};
        zorsUnpackSideInfo_MP3(&at, &bit, frame.end, side, &mainDataBegin, &privateBits, scfsi,
                               &frame.header);
        const bool whole = m_reservoir.add(at, frame.end, mainDataBegin);
        m_at = m_reservoir.begin();
        m_bit = 0;
        const auto channels = static_cast<std::size_t>(frame.info.channels);
        for (int g = 0; g < frame.info.granules; ++g) {
            int bound[2]{};
            for (std::size_t c = 0; c < channels; ++c)
                bound[c] =
                    whole ? readLines(frame.header, side[2 * g + static_cast<int>(c)], scfsi + 4 * c, g, c)
                          : 0;
            // Steps and powers, mid/side and intensity stereo, order of short blocks.
            if (zorsReQuantize_MP3_32s_I(m_lines.data(), bound, m_factors.data(), side + 2 * g, &frame.header,
                                         m_work.data()) < 0)
                bound[0] = bound[1] = 0;
            float* const out = pcm.data() + static_cast<std::size_t>(g) * channels * granule;
            for (std::size_t c = 0; c < channels; ++c)
                synthesise(m_channels[c], &m_lines[c * granule], bound[c], side[2 * g + static_cast<int>(c)],
                           out + c, frame.info.channels);
        }
    }

  private:
    /** Scale factors and Huffman code of one channel. Returns the number of lines up to the last that is not
     * 0. */
    int readLines(const ZorMP3FrameHeader& header, ZorMP3SideInfo& side, const int* scfsi, int g,
                  std::size_t c) {
        Channel& channel = m_channels[c];
        const Zor8u *const start = m_at, *const end = m_reservoir.end();
        const int startBit = m_bit;
        int bound = 0;
        if (zorsUnpackScaleFactors_MP3_1u8s(&m_at, &m_bit, end, channel.factors.data(), &side, scfsi, &header,
                                            g, static_cast<int>(c)) == zorStsNoErr) {
            const int codeBits =
                side.part23Length - static_cast<int>(zorBitsBetween(start, startBit, m_at, m_bit));
            if (codeBits > 0 && zorsHuffmanDecode_MP3_1u32s(&m_at, &m_bit, end, &m_lines[c * granule], &bound,
                                                            &header, &side, 0, codeBits) < 0)
                bound = 0;
        }
        std::copy(channel.factors.begin(), channel.factors.end(), &m_factors[c * zorMP3ScaleFactors]);
        // Whatever the calls took, the next channel begins where the side information says.
        const int next = startBit + side.part23Length;
        m_at = start + std::min<std::ptrdiff_t>(next / 8, end - start);
        m_bit = next % 8;
        return bound;
    }

    /** Lines to sub-band samples to PCM, `step` apart. */
    void synthesise(Channel& channel, const Zor32s* lines, int bound, const ZorMP3SideInfo& side, float* pcm,
                    int step) {
        alignas(32) Zor32s samples[granule];
        alignas(32) float bands[granule];
        zorsMDCTInv_MP3_32s(lines, samples, channel.overlap.data(), bound, &channel.overlapBands,
                            side.windowSwitching ? side.blockType : 0, side.mixedBlock);
        zorsConvert_32s32f_Sfs(samples, bands, granule, zorMP3FractionBits);
        zorsSynthesisGranule_PQMF_MP3_32f(bands, pcm, channel.filter, step);
    }

    Reservoir m_reservoir;
    const Zor8u* m_at = nullptr;
    int m_bit = 0;
    std::array<Channel, 2> m_channels;
    alignas(32) std::array<Zor32s, 2 * granule> m_lines{};
    std::array<Zor8s, 2 * zorMP3ScaleFactors> m_factors{};
    alignas(32) std::array<Zor8u, 4 * granule> m_work{};
};

} // namespace

int main(int argc, char* argv[]) {
    const CommandLine words(argc, argv, "mp3dec");
    if (!words.input)
        return words.usage("mp3");
    const std::optional<Bytes> file = words.read();
    if (!file)
        return words.fail("cannot read", words.input);

    FrameFinder frame(*file);
    ZorMP3FrameInfo first{};
    std::vector<float> pcm;
    std::optional<WavFile> wav;
    if (words.output)
        wav.emplace(words.output, words.floats);
    const auto decoder = std::make_unique<Decoder>();
    while (frame.next()) {
        const bool isFirst = first.channels == 0;
        if (isFirst)
            first = frame.info;
        if (frame.info.channels != first.channels || frame.info.samplingRate != first.samplingRate ||
            (isFirst && frame.isForPlayers()))
            continue;
        decoder->decode(frame, pcm);
        if (wav)
            wav->write(pcm, 0);
    }
    if (first.channels == 0)
        return words.fail("no frame of layer III in", words.input);
    return !wav || wav->finish(first.channels, first.samplingRate) ? 0
                                                                   : words.fail("cannot write", words.output);
}
