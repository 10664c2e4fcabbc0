// The blocks of the MP3 decoder.
#include "blocks.h"
#include "zorac.h"
#include "zors.h"

using namespace predict;

namespace {

constexpr std::size_t granule = 576;
constexpr int mostChannels = 2;
alignas(64) Zor32s s_lines[2 * granule], s_overlap[mostChannels][granule];
alignas(64) Zor32f s_pcm[2 * granule];
alignas(64) Zor8u s_work[4 * granule];
Zor8s s_factors[mostChannels][zorMP3ScaleFactors];
int s_previousBlocks[mostChannels];
Places s_overlaps, s_filters;

struct KeptHeader {
    KeptBits bits;
    KeptHeader(const Zor8u** at, const Zor8u* end, ZorMP3FrameHeader*) : bits(*at, 0, end, 6) {}
    void repeat(auto* function) {
        ZorMP3FrameHeader header;
        bits.rewind();
        function(&bits.at, bits.end(), &header);
    }
};
Block<KeptHeader, decltype(zorsUnpackFrameHeader_MP3)> s_header("zorsUnpackFrameHeader_MP3");

struct KeptSideInfo {
    KeptBits bits;
    ZorMP3FrameHeader header;
    KeptSideInfo(const Zor8u** at, int* bit, const Zor8u* end, ZorMP3SideInfo*, int*, int*, int*,
                 const ZorMP3FrameHeader* of)
        : bits(*at, *bit, end, 40), header(*of) {}
    void repeat(auto* function) {
        ZorMP3SideInfo side[4];
        int begin, privateBits, shared[8];
        bits.rewind();
        function(&bits.at, &bits.offset, bits.end(), side, &begin, &privateBits, shared, &header);
    }
};
Block<KeptSideInfo, decltype(zorsUnpackSideInfo_MP3)> s_sideInfo("zorsUnpackSideInfo_MP3");

struct KeptFactors {
    KeptBits bits;
    ZorMP3SideInfo side;
    std::array<int, 4> shared{};
    ZorMP3FrameHeader header;
    int granuleNumber, channel;
    KeptFactors(const Zor8u** at, int* bit, const Zor8u* end, Zor8s*, ZorMP3SideInfo* of, const int* scfsi,
                const ZorMP3FrameHeader* frame, int g, int c)
        : bits(*at, *bit, end, 32), side(*of), header(*frame), granuleNumber(g), channel(c) {
        std::copy_n(scfsi, 4, shared.begin());
    }
    void repeat(auto* function) {
        bits.rewind();
        function(&bits.at, &bits.offset, bits.end(), s_factors[channel], &side, shared.data(), &header,
                 granuleNumber, channel);
    }
};
Block<KeptFactors, decltype(zorsUnpackScaleFactors_MP3_1u8s)>
    s_scaleFactors("zorsUnpackScaleFactors_MP3_1u8s");

struct KeptHuffman {
    KeptBits bits;
    ZorMP3FrameHeader header;
    ZorMP3SideInfo side;
    int countOne, size;
    KeptHuffman(const Zor8u** at, int* bit, const Zor8u* end, Zor32s*, int*, const ZorMP3FrameHeader* of,
                const ZorMP3SideInfo* info, int countOneLength, int bitCount)
        : bits(*at, *bit, end, bitCount / 8 + 16), header(*of), side(*info), countOne(countOneLength),
          size(bitCount) {}
    void repeat(auto* function) {
        int bound;
        bits.rewind();
        function(&bits.at, &bits.offset, bits.end(), s_lines, &bound, &header, &side, countOne, size);
    }
};
Block<KeptHuffman, decltype(zorsHuffmanDecode_MP3_1u32s)> s_huffman("zorsHuffmanDecode_MP3_1u32s");

struct KeptRequantize {
    KeptArray<Zor32s, 2 * granule> lines;
    std::array<int, 2> bound{};
    KeptArray<Zor8s, 2 * zorMP3ScaleFactors> factors;
    std::array<ZorMP3SideInfo, 2> side{};
    ZorMP3FrameHeader header;
    KeptRequantize(Zor32s* src, int* length, const Zor8s* scaleFactor, const ZorMP3SideInfo* of,
                   const ZorMP3FrameHeader* frame, Zor8u*)
        : lines(src), factors(scaleFactor), header(*frame) {
        std::copy_n(length, 2, bound.begin());
        std::copy_n(of, 2, side.begin());
    }
    void repeat(auto* function) {
        std::array<int, 2> length = bound;
        function(lines.put(), length.data(), factors.put(), side.data(), &header, s_work);
    }
};
Block<KeptRequantize, decltype(zorsReQuantize_MP3_32s_I)> s_requantize("zorsReQuantize_MP3_32s_I");

struct KeptMdct {
    KeptArray<Zor32s, granule> lines;
    std::size_t channel;
    int bound, block, mixed;
    KeptMdct(const Zor32s* src, Zor32s*, Zor32s* overlap, int nonZero, int*, int blockType, int mixedBlock)
        : lines(src), channel(s_overlaps.of(overlap) % mostChannels), bound(nonZero), block(blockType),
          mixed(mixedBlock) {}
    void repeat(auto* function) {
        function(lines.put(), s_lines, s_overlap[channel], bound, &s_previousBlocks[channel], block, mixed);
    }
};
Block<KeptMdct, decltype(zorsMDCTInv_MP3_32s)> s_mdct("zorsMDCTInv_MP3_32s");

struct KeptConversion {
    KeptArray<Zor32s, granule> lines;
    int scale;
    KeptConversion(const Zor32s* src, Zor32f*, int, int scaleFactor) : lines(src), scale(scaleFactor) {}
    void repeat(auto* function) { function(lines.put(), s_pcm, granule, scale); }
};
Block<KeptConversion, decltype(zorsConvert_32s32f_Sfs)> s_conversion("zorsConvert_32s32f_Sfs");

/** A filter of each channel, apart from the decoder's. */
ZorMP3SynthesisState_32f* filterOf(std::size_t channel) {
    static std::array<ZorMP3SynthesisState_32f*, mostChannels> filters{};
    static std::array<std::vector<Zor8u>, mostChannels> memory;
    if (!filters[channel]) {
        int size = 0;
        zorsSynthesisFilterGetSize_PQMF_MP3_32f(&size);
        memory[channel].resize(static_cast<std::size_t>(size));
        zorsSynthesisFilterInit_PQMF_MP3_32f(&filters[channel], memory[channel].data());
    }
    return filters[channel];
}

struct KeptSynthesis {
    KeptArray<Zor32f, granule> samples;
    ZorMP3SynthesisState_32f* filter;
    int mode;
    KeptSynthesis(const Zor32f* src, Zor32f*, ZorMP3SynthesisState_32f* state, int step)
        : samples(src), filter(filterOf(s_filters.of(state) % mostChannels)), mode(step) {}
    void repeat(auto* function) { function(samples.put(), s_pcm, filter, mode); }
};
Block<KeptSynthesis, decltype(zorsSynthesisGranule_PQMF_MP3_32f)>
    s_synthesis("zorsSynthesisGranule_PQMF_MP3_32f");

} // namespace

ZorStatus zorsUnpackFrameHeader_MP3(const Zor8u** at, const Zor8u* end, ZorMP3FrameHeader* header) {
    return s_header(at, end, header);
}
ZorStatus zorsUnpackSideInfo_MP3(const Zor8u** at, int* bit, const Zor8u* end, ZorMP3SideInfo* side,
                                 int* begin, int* privateBits, int* scfsi, const ZorMP3FrameHeader* header) {
    return s_sideInfo(at, bit, end, side, begin, privateBits, scfsi, header);
}
ZorStatus zorsUnpackScaleFactors_MP3_1u8s(const Zor8u** at, int* bit, const Zor8u* end, Zor8s* factors,
                                          ZorMP3SideInfo* side, const int* scfsi,
                                          const ZorMP3FrameHeader* header, int g, int c) {
    return s_scaleFactors(at, bit, end, factors, side, scfsi, header, g, c);
}
ZorStatus zorsHuffmanDecode_MP3_1u32s(const Zor8u** at, int* bit, const Zor8u* end, Zor32s* lines, int* bound,
                                      const ZorMP3FrameHeader* header, const ZorMP3SideInfo* side,
                                      int countOne, int size) {
    return s_huffman(at, bit, end, lines, bound, header, side, countOne, size);
}
ZorStatus zorsReQuantize_MP3_32s_I(Zor32s* lines, int* length, const Zor8s* factors,
                                   const ZorMP3SideInfo* side, const ZorMP3FrameHeader* header, Zor8u* work) {
    return s_requantize(lines, length, factors, side, header, work);
}
ZorStatus zorsMDCTInv_MP3_32s(const Zor32s* src, Zor32s* dst, Zor32s* overlap, int bound, int* previousBlocks,
                              int block, int mixed) {
    return s_mdct(src, dst, overlap, bound, previousBlocks, block, mixed);
}
ZorStatus zorsConvert_32s32f_Sfs(const Zor32s* src, Zor32f* dst, int length, int scale) {
    return s_conversion(src, dst, length, scale);
}
ZorStatus zorsSynthesisGranule_PQMF_MP3_32f(const Zor32f* src, Zor32f* dst, ZorMP3SynthesisState_32f* state,
                                            int mode) {
    return s_synthesis(src, dst, state, mode);
}
