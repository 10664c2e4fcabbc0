// The library's parsers of streams: whatever the bits and the fields beside them, nothing is read or written
// beyond what is documented, the position stays inside the stream, and a call that fails leaves it as it was.
// The first byte chooses the function. Buffers are exactly as long as their documentation says.
#include "../zor/src/tables/mp3_sfb_long.h"
#include "../zor/src/tables/mp3_sfb_short.h"
#include "fuzzinput.h"
#include "kvvlctable.h"
#include "zorac.h"
#include "zordc.h"

#include <array>
#include <cstring>
#include <functional>
#include <memory>

namespace {

/** A stream of exactly the bytes given, and the position in it. */
class Stream {
  public:
    Stream(FuzzedDataProvider& input, int offset)
        : m_bytes(input.ConsumeRemainingBytes<Zor8u>()), m_offset(offset) {
        m_bytes.shrink_to_fit();
        m_at = m_bytes.data();
    }
    const Zor8u** at() { return &m_at; }
    int* offset() { return &m_offset; }
    const Zor8u* end() const { return m_bytes.data() + m_bytes.size(); }

    /** Calls a parser on this stream and judges where it left the position. */
    bool parse(const std::function<ZorStatus()>& parser) {
        const Zor8u* const before = m_at;
        const int offsetBefore = m_offset;
        const bool good = parser() >= zorStsNoErr;
        if (good) {
            require(m_offset >= 0 && m_offset <= 7, "the bit offset is one within a byte");
            require(m_at >= before && m_at + (m_offset > 0) <= end(), "the position is inside the stream");
        } else {
            require(m_at == before && m_offset == offsetBefore,
                    "a call that fails leaves the position as it was");
        }
        return good;
    }

  private:
    std::vector<Zor8u> m_bytes;
    const Zor8u* m_at = nullptr;
    int m_offset = 0;
};

/** Mostly a number of the range, sometimes one beside it or far away. */
int field(FuzzedDataProvider& input, int first, int last) {
    const auto number = input.ConsumeIntegral<std::uint16_t>();
    if (number == 0xffff)
        return input.ConsumeIntegral<int>();
    return first - 1 + static_cast<int>(number) % (last - first + 3);
}

int offset(FuzzedDataProvider& input) {
    return field(input, 0, 7);
}

/** The elements of documented length, where the address sanitizer watches their ends. */
template <class T>
std::unique_ptr<T[]> buffer(std::size_t length) {
    return std::make_unique<T[]>(length);
}

void dataStreamElement(FuzzedDataProvider& input) {
    const auto room = input.ConsumeIntegralInRange(0, 520);
    const auto bytes = buffer<Zor8u>(static_cast<std::size_t>(room));
    int tag = 0, count = 0;
    Stream stream(input, offset(input));
    if (stream.parse([&] {
            return zorsDecodeDatStrElt_AAC(stream.at(), stream.offset(), stream.end(), &tag, &count,
                                           bytes.get(), room);
        }))
        require(tag >= 0 && tag <= 15 && count >= 0 && count <= room && count <= 510,
                "tag and count are in range");
}

void fillElement(FuzzedDataProvider& input) {
    const auto room = input.ConsumeIntegralInRange(0, 280);
    const auto bytes = buffer<Zor8u>(static_cast<std::size_t>(room));
    int count = 0;
    Stream stream(input, offset(input));
    if (stream.parse([&] {
            return zorsDecodeFillElt_AAC(stream.at(), stream.offset(), stream.end(), &count, bytes.get(),
                                         room);
        }))
        require(count >= 0 && count <= room && count <= 269, "the count is in range");
}

ZorAacChannel channel(FuzzedDataProvider& input) {
    ZorAacChannel channel{};
    channel.winSequence = field(input, 0, 3);
    channel.maxSfb = field(input, 0, 51);
    channel.numWinGrp = field(input, 1, 8);
    for (int& length : channel.winGrpLen)
        length = field(input, 1, 8);
    if (input.ConsumeBool()) { // groups that fit: the usual case
        const bool isShort = channel.winSequence == zorAacEightShort;
        channel.numWinGrp = isShort ? 2 : 1;
        channel.winGrpLen[0] = isShort ? 3 : 1;
        channel.winGrpLen[1] = 5;
        channel.maxSfb %= isShort ? 15 : 50;
    }
    channel.samplingRateIndex = field(input, 0, 11);
    return channel;
}

/** Per band: eight groups of at most 51 bands. What maxSfb and groups ask for beyond is refused. */
constexpr std::size_t mostBands = 8 * 51;

enum class Noiseless { lowComplexity, everyProfile, behindGain };

void noiseless(FuzzedDataProvider& input, Noiseless form) {
    ZorAacChannel ics = channel(input);
    ics.globalGain = field(input, 0, 255);
    const int profile = field(input, 0, 3), scale = field(input, 0, 1);
    const long long asked = static_cast<long long>(ics.numWinGrp) * ics.maxSfb;
    const std::size_t bands =
        asked > 0 && asked <= static_cast<long long>(mostBands) ? static_cast<std::size_t>(asked) : mostBands;
    const auto factors = buffer<Zor16s>(bands);
    const auto spectrum = buffer<Zor32s>(1024);
    const auto books = buffer<Zor8u>(bands);
    const auto coefficients = buffer<Zor8s>(60);
    Stream stream(input, offset(input));
    const bool good = stream.parse([&] {
        if (form == Noiseless::lowComplexity)
            return zorsNoiselessDecoder_LC_AAC(stream.at(), stream.offset(), stream.end(), &ics,
                                               factors.get(), spectrum.get(), books.get(),
                                               coefficients.get());
        return (form == Noiseless::everyProfile ? zorsNoiselessDecode_AAC
                                                : zorsNoiselessDecodeBehindGain_AAC)(
            stream.at(), stream.offset(), stream.end(), &ics, factors.get(), spectrum.get(), books.get(),
            coefficients.get(), profile, scale);
    });
    if (!good)
        return;
    require(ics.globalGain >= 0 && ics.globalGain <= 255, "the gain is in range");
    for (std::size_t band = 0; band < bands && static_cast<long long>(band) < asked; ++band) {
        require(books[band] <= 15, "a code book is one of 16");
        if (books[band] > 0 && books[band] < zorAacNoiseBook)
            require(factors[band] >= 0 && factors[band] <= 255, "a scale factor is in range");
    }
}

void adtsHeader(FuzzedDataProvider& input) {
    ZorAacFrameHeader read{};
    Stream stream(input, 0);
    if (stream.parse([&] { return zorsUnpackFrameHeader_AAC(stream.at(), stream.end(), &read); }))
        require(read.samplingRate >= 8000 && read.samplingRate <= 96000 && read.blocks >= 1 &&
                    read.blocks <= 4 && read.frameLength >= read.headerSize && read.frameLength <= 8191 &&
                    read.bitRate > 0,
                "the frame is one of ADTS");
}

void windowInformation(FuzzedDataProvider& input) {
    ZorAacIcsInfo info{};
    const int profile = field(input, 0, 3), rate = field(input, 0, 11), common = field(input, 0, 1);
    Stream stream(input, offset(input));
    if (!stream.parse([&] {
            return zorsUnpackIcsInfo_AAC(stream.at(), stream.offset(), stream.end(), &info, profile, rate,
                                         common);
        }))
        return;
    const Zor16u* bandOffset = nullptr;
    int bands = 0, windows = 0;
    require(zorsGetSfbTable_AAC(rate, info.winLen, &bandOffset, &bands) == zorStsNoErr &&
                info.maxSfb <= bands,
            "the bands are there");
    for (int group = 0; group < info.numWinGrp; ++group)
        windows += info.winGrpLen[group];
    require(windows * info.winLen == 1024 && info.predictorReset <= 30 && info.ltp[1].coefIndex <= 7,
            "the windows make up a frame");
}

ZorMP3FrameHeader frameHeader(FuzzedDataProvider& input) {
    ZorMP3FrameHeader header{};
    header.id = field(input, 0, 1);
    header.layer = 1;
    header.samplingFrequency = field(input, 0, 2);
    header.mode = field(input, 0, 3);
    header.modeExtension = field(input, 0, 3);
    return header;
}

ZorMP3SideInfo sideInfo(FuzzedDataProvider& input) {
    ZorMP3SideInfo side{};
    side.part23Length = field(input, 0, 4095);
    side.bigValues = field(input, 0, 288);
    side.globalGain = field(input, 0, 255);
    side.scalefacCompress = field(input, 0, 511);
    side.windowSwitching = field(input, 0, 1);
    side.blockType = field(input, 0, 3);
    side.mixedBlock = field(input, 0, 1);
    for (int& table : side.tableSelect)
        table = field(input, 0, 31);
    side.region0Count = field(input, 0, 15);
    side.region1Count = field(input, 0, 7);
    side.count1TableSelect = field(input, 0, 1);
    return side;
}

enum class Bands { ofTheStandard, ofTheCaller, mixedOfTheCaller };

void huffman(FuzzedDataProvider& input, Bands bands) {
    namespace tables = zor::tables;
    const ZorMP3FrameHeader header = frameHeader(input);
    Zor16s mixedBands[2] = {6, 8}, longs[6][23], shorts[6][14];
    std::memcpy(longs, tables::mp3_sfb_long::boundary, sizeof longs);
    std::memcpy(shorts, tables::mp3_sfb_short::boundary, sizeof shorts);
    if (input.ConsumeBool()) { // boundaries in any order, odd and beyond the lines
        for (int i = 0; i < 8; ++i)
            longs[input.ConsumeIntegralInRange(0, 5)][input.ConsumeIntegralInRange(0, 22)] =
                input.ConsumeIntegral<Zor16s>();
        shorts[input.ConsumeIntegralInRange(0, 5)][3] = input.ConsumeIntegral<Zor16s>();
        mixedBands[input.ConsumeBool()] = input.ConsumeIntegral<Zor16s>();
    }
    const ZorMP3SideInfo side = sideInfo(input);
    const int quadLines = field(input, 0, 576), bits = field(input, 0, 4095);
    const auto lines = buffer<Zor32s>(576);
    int bound = 0;
    Stream stream(input, offset(input));
    const bool good = stream.parse([&] {
        switch (bands) {
        case Bands::ofTheStandard:
            return zorsHuffmanDecode_MP3_1u32s(stream.at(), stream.offset(), stream.end(), lines.get(),
                                               &bound, &header, &side, quadLines, bits);
        case Bands::ofTheCaller:
            return zorsHuffmanDecodeSfb_MP3_1u32s(stream.at(), stream.offset(), stream.end(), lines.get(),
                                                  &bound, &header, &side, longs, shorts, quadLines, bits);
        default:
            return zorsHuffmanDecodeSfbMbp_MP3_1u32s(stream.at(), stream.offset(), stream.end(), lines.get(),
                                                     &bound, &header, &side, longs, shorts, mixedBands,
                                                     quadLines, bits);
        }
    });
    if (!good)
        return;
    require(bound >= 0 && bound <= 576, "the bound is in the granule");
    for (int line = bound; line < 576; ++line)
        require(lines[static_cast<std::size_t>(line)] == 0, "lines above the bound are 0");
}

void header(FuzzedDataProvider& input) {
    ZorMP3FrameHeader read{};
    Stream stream(input, 0);
    if (stream.parse([&] { return zorsUnpackFrameHeader_MP3(stream.at(), stream.end(), &read); })) {
        ZorMP3FrameInfo info{};
        if (zorsGetFrameInfo_MP3(&read, &info) == zorStsNoErr)
            require(info.samplingRate >= 8000 && info.samplingRate <= 48000 && info.bitRate <= 320000 &&
                        info.frameLength >= 0 && info.frameLength <= 1441,
                    "the frame is one of layer III");
        require(read.id >= 0 && read.id <= 1 && read.bitrateIndex >= 0 && read.bitrateIndex <= 15 &&
                    read.mode >= 0 && read.mode <= 3 && read.samplingFrequency >= 0 &&
                    read.samplingFrequency <= 3,
                "the fields have as many bits as the stream");
    }
}

void sideInformation(FuzzedDataProvider& input) {
    const ZorMP3FrameHeader of = frameHeader(input);
    const auto sides = buffer<ZorMP3SideInfo>(of.id == 0 ? 2 : 4);
    const auto shared = buffer<int>(8);
    int mainData = 0, privateBits = 0;
    Stream stream(input, offset(input));
    if (stream.parse([&] {
            return zorsUnpackSideInfo_MP3(stream.at(), stream.offset(), stream.end(), sides.get(), &mainData,
                                          &privateBits, shared.get(), &of);
        }))
        require(mainData >= 0 && mainData <= 511 && sides[0].bigValues >= 0 && sides[0].bigValues <= 511,
                "the fields have as many bits as the stream");
}

void scaleFactors(FuzzedDataProvider& input) {
    const ZorMP3FrameHeader of = frameHeader(input);
    ZorMP3SideInfo side = sideInfo(input);
    const int granule = field(input, 0, 1), channelNumber = field(input, 0, 1);
    std::array<int, 4> shared{};
    for (int& flag : shared)
        flag = field(input, 0, 1);
    const auto factors = buffer<Zor8s>(36);
    Stream stream(input, offset(input));
    stream.parse([&] {
        return zorsUnpackScaleFactors_MP3_1u8s(stream.at(), stream.offset(), stream.end(), factors.get(),
                                               &side, shared.data(), &of, granule, channelNumber);
    });
}

using Decoder = std::unique_ptr<ZorVLCDecodeState_32s, ZorStatus (*)(ZorVLCDecodeState_32s*)>;

Decoder decoder(const ZorVLCTable_32s* table, int size) {
    ZorVLCDecodeState_32s* state = nullptr;
    if (zorsVLCDecodeInitAlloc_32s(table, size, &state) < zorStsNoErr)
        state = nullptr;
    return {state, zorsVLCDecodeFree_32s};
}

/** The code of a book, or one made of the input. */
Decoder anyDecoder(FuzzedDataProvider& input) {
    kvacVLCTable book;
    switch (input.ConsumeIntegralInRange(0, 2)) {
    case 0:
        book.setTableDecode_AAC();
        break;
    case 1:
        book.setTableDecode_MP3();
        break;
    default: {
        std::vector<ZorVLCTable_32s> table(input.ConsumeIntegralInRange<std::size_t>(0, 40));
        for (ZorVLCTable_32s& record : table) {
            record.value = input.ConsumeIntegral<std::int16_t>();
            record.length = field(input, 1, 24);
            record.code = input.ConsumeIntegralInRange(0, 255);
        }
        return decoder(table.data(), static_cast<int>(table.size()));
    }
    }
    return decoder(book.table(), book.size());
}

void escapeBlock(FuzzedDataProvider& input, bool mp3) {
    const Decoder state = anyDecoder(input);
    const int length = field(input, 0, 64), linBits = field(input, 0, 13);
    const auto values = buffer<Zor16s>(static_cast<std::size_t>(std::clamp(length, 0, 4096)));
    if (!state || length > 4096)
        return;
    Stream stream(input, offset(input));
    stream.parse([&] {
        return mp3 ? zorsVLCDecodeEscBlock_MP3_1u16s(stream.at(), stream.offset(), stream.end(), values.get(),
                                                     length, linBits, state.get())
                   : zorsVLCDecodeEscBlock_AAC_1u16s(stream.at(), stream.offset(), stream.end(), values.get(),
                                                     length, state.get());
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::function<void(FuzzedDataProvider&)> parsers[] = {
        dataStreamElement,
        fillElement,
        [](FuzzedDataProvider& input) { noiseless(input, Noiseless::lowComplexity); },
        [](FuzzedDataProvider& input) { noiseless(input, Noiseless::everyProfile); },
        [](FuzzedDataProvider& input) { huffman(input, Bands::ofTheStandard); },
        [](FuzzedDataProvider& input) { huffman(input, Bands::ofTheCaller); },
        [](FuzzedDataProvider& input) { huffman(input, Bands::mixedOfTheCaller); },
        header,
        sideInformation,
        scaleFactors,
        [](FuzzedDataProvider& input) { escapeBlock(input, false); },
        [](FuzzedDataProvider& input) { escapeBlock(input, true); },
        [](FuzzedDataProvider& input) { noiseless(input, Noiseless::behindGain); },
        adtsHeader,
        windowInformation,
    };
    if (size == 0)
        return 0;
    FuzzedDataProvider input(data + 1, size - 1);
    parsers[data[0] % std::size(parsers)](input);
    return 0;
}
