// The blocks of the AAC decoder.
#include "blocks.h"
#include "zorac.h"
#include "zors.h"

using namespace predict;

namespace {

constexpr std::size_t frame = 1024, mostBands = 8 * 15;
constexpr int mostChannels = 8;
// Work whose time does not depend on the values of its lines is repeated on zeros, which stay what they are.
alignas(64) Zor32s s_quantised[frame];
alignas(64) Zor32f s_left[frame], s_right[frame], s_history[4 * frame], s_overlap[mostChannels][frame];
alignas(64) Zor32f s_pcm[mostChannels * frame];
Zor16s s_factors[mostBands];
Zor8u s_books[mostBands];
Zor8s s_tnsCoef[60];
Places s_overlaps, s_predictors;

struct KeptHeader {
    KeptBits bits;
    KeptHeader(const Zor8u** at, const Zor8u* end, ZorAacFrameHeader*) : bits(*at, 0, end, 16) {}
    void repeat(auto* function) {
        ZorAacFrameHeader header;
        bits.rewind();
        function(&bits.at, bits.end(), &header);
    }
};
Block<KeptHeader, decltype(zorsUnpackFrameHeader_AAC)> s_header("zorsUnpackFrameHeader_AAC");

struct KeptInfo {
    KeptBits bits;
    int profile, rate, common;
    KeptInfo(const Zor8u** at, int* bit, const Zor8u* end, ZorAacIcsInfo*, int ofProfile, int index,
             int commonWindow)
        : bits(*at, *bit, end, 64), profile(ofProfile), rate(index), common(commonWindow) {}
    void repeat(auto* function) {
        ZorAacIcsInfo info;
        bits.rewind();
        function(&bits.at, &bits.offset, bits.end(), &info, profile, rate, common);
    }
};
Block<KeptInfo, decltype(zorsUnpackIcsInfo_AAC)> s_info("zorsUnpackIcsInfo_AAC");

struct KeptNoiseless {
    KeptBits bits;
    ZorAacChannel channel;
    int profile, scale;
    KeptNoiseless(const Zor8u** at, int* bit, const Zor8u* end, ZorAacChannel* of, Zor16s*, Zor32s*, Zor8u*,
                  Zor8s*, int ofProfile, int scaleFlag)
        : bits(*at, *bit, end, 2048), channel(*of), profile(ofProfile), scale(scaleFlag) {}
    void repeat(auto* function) {
        bits.rewind();
        function(&bits.at, &bits.offset, bits.end(), &channel, s_factors, s_quantised, s_books, s_tnsCoef,
                 profile, scale);
    }
};
Block<KeptNoiseless, decltype(zorsNoiselessDecodeBehindGain_AAC)>
    s_noiseless("zorsNoiselessDecodeBehindGain_AAC");

/** How the lines of a frame are divided. */
struct Windows {
    int count, maxSfb, rate, length;
    std::array<int, 8> groups{};
    Windows(int numWinGrp, const int* winGrpLen, int bands, int index, int winLen)
        : count(numWinGrp), maxSfb(bands), rate(index), length(winLen) {
        std::copy_n(winGrpLen, numWinGrp, groups.begin());
    }
};

struct KeptQuant {
    KeptArray<Zor32s, frame> lines;
    KeptArray<Zor16s, mostBands> factors;
    KeptArray<Zor8u, mostBands> books;
    Windows w;
    KeptQuant(const Zor32s* src, Zor32f*, const Zor16s* scaleFactor, const Zor8u* sfbCb, int n,
              const int* groups, int bands, int index, int winLen)
        : lines(src), factors(scaleFactor), books(sfbCb), w(n, groups, bands, index, winLen) {}
    void repeat(auto* function) {
        function(lines.put(), s_left, factors.put(), books.put(), w.count, w.groups.data(), w.maxSfb, w.rate,
                 w.length);
    }
};
Block<KeptQuant, decltype(zorsQuantInv_AAC_32s32f)> s_quant("zorsQuantInv_AAC_32s32f");

struct KeptNoise {
    KeptArray<Zor16s, mostBands> factors;
    KeptArray<Zor8u, mostBands> books, used;
    int second;
    Windows w;
    KeptNoise(Zor32f*, const Zor16s* scaleFactor, const Zor8u* sfbCb, Zor32u*, Zor32s*, int isSecond,
              const Zor8u* msUsed, int n, const int* groups, int bands, int index, int winLen)
        : factors(scaleFactor), books(sfbCb), used(msUsed), second(isSecond),
          w(n, groups, bands, index, winLen) {}
    void repeat(auto* function) {
        static Zor32u state = 1;
        static Zor32s ofBands[mostBands];
        function(s_left, factors.put(), books.put(), &state, ofBands, second, used.values(), w.count,
                 w.groups.data(), w.maxSfb, w.rate, w.length);
    }
};
Block<KeptNoise, decltype(zorsDecodePNS_AAC_32f)> s_noise("zorsDecodePNS_AAC_32f");

struct KeptMidSide {
    int mask;
    KeptArray<Zor8u, mostBands> used, left, right;
    Windows w;
    KeptMidSide(Zor32f*, Zor32f*, int msMaskPresent, const Zor8u* msUsed, const Zor8u* booksL,
                const Zor8u* booksR, int n, const int* groups, int bands, int index, int winLen)
        : mask(msMaskPresent), used(msUsed), left(booksL), right(booksR), w(n, groups, bands, index, winLen) {
    }
    void repeat(auto* function) {
        function(s_left, s_right, mask, used.values(), left.values(), right.put(), w.count, w.groups.data(),
                 w.maxSfb, w.rate, w.length);
    }
};
Block<KeptMidSide, decltype(zorsDecodeMsStereo_AAC_32f_I)> s_midSide("zorsDecodeMsStereo_AAC_32f_I");

struct KeptIntensity {
    KeptArray<Zor16s, mostBands> positions;
    int mask;
    KeptArray<Zor8u, mostBands> used, books;
    Windows w;
    KeptIntensity(const Zor32f*, Zor32f*, const Zor16s* scaleFactor, int msMaskPresent, const Zor8u* msUsed,
                  const Zor8u* sfbCb, int n, const int* groups, int bands, int index, int winLen)
        : positions(scaleFactor), mask(msMaskPresent), used(msUsed), books(sfbCb),
          w(n, groups, bands, index, winLen) {}
    void repeat(auto* function) {
        function(s_left, s_right, positions.put(), mask, used.values(), books.put(), w.count, w.groups.data(),
                 w.maxSfb, w.rate, w.length);
    }
};
Block<KeptIntensity, decltype(zorsDecodeIsStereo_AAC_32f)> s_intensity("zorsDecodeIsStereo_AAC_32f");

struct KeptShaping {
    KeptArray<Zor32f, frame> lines;
    ZorAacTns tns;
    KeptArray<Zor8s, 60> coef;
    int maxSfb, profile, rate, winLen;
    KeptShaping(Zor32f* src, const int* numFilt, const int* regionLen, const int* order, const int* coefRes,
                const Zor8s* codes, const int* direction, int bands, int ofProfile, int index, int length)
        : lines(src), coef(codes), maxSfb(bands), profile(ofProfile), rate(index), winLen(length) {
        std::copy_n(numFilt, 8, tns.numFilt);
        std::copy_n(regionLen, 8, tns.regionLen);
        std::copy_n(order, 8, tns.order);
        std::copy_n(coefRes, 8, tns.coefRes);
        std::copy_n(direction, 8, tns.direction);
    }
    void repeat(auto* function) {
        function(lines.put(), tns.numFilt, tns.regionLen, tns.order, tns.coefRes, coef.values(),
                 tns.direction, maxSfb, profile, rate, winLen);
    }
};
Block<KeptShaping, decltype(zorsDecodeTNS_AAC_32f_I)> s_decodeTns("zorsDecodeTNS_AAC_32f_I");
Block<KeptShaping, decltype(zorsEncodeTNS_AAC_32f_I)> s_encodeTns("zorsEncodeTNS_AAC_32f_I");

/** Predictors of each channel, apart from the decoder's. */
ZorsFDPState_32f* predictorsOf(std::size_t channel, int length) {
    static std::array<std::pair<ZorsFDPState_32f*, int>, mostChannels> all{};
    auto& [state, lengthOf] = all[channel];
    if (!state || lengthOf != length) {
        zorsFDPFree_32f(state);
        zorsFDPInitAlloc_32f(&state, length);
        lengthOf = length;
    }
    return state;
}

struct KeptPrediction {
    KeptArray<Zor32f, frame> lines;
    std::array<int, 42> offset{};
    std::array<Zor8u, 41> used{};
    int bands;
    ZorsFDPState_32f* state;
    KeptPrediction(Zor32f* src, const int* bandOffset, const Zor8u* predictionUsed, int numBands,
                   ZorsFDPState_32f* of)
        : lines(src), bands(numBands),
          state(predictorsOf(s_predictors.of(of) % mostChannels, bandOffset[numBands])) {
        std::copy_n(bandOffset, numBands + 1, offset.begin());
        std::copy_n(predictionUsed, numBands, used.begin());
    }
    void repeat(auto* function) { function(lines.put(), offset.data(), used.data(), bands, state); }
};
Block<KeptPrediction, decltype(zorsFDPInv_32f_I)> s_prediction("zorsFDPInv_32f_I");

struct KeptLongTerm {
    int lag, coef, sequence, shape, before;
    KeptLongTerm(const Zor32f*, Zor32f*, int theLag, int index, int winSequence, int winShape,
                 int prevWinShape)
        : lag(theLag), coef(index), sequence(winSequence), shape(winShape), before(prevWinShape) {}
    void repeat(auto* function) { function(s_history, s_left, lag, coef, sequence, shape, before); }
};
Block<KeptLongTerm, decltype(zorsLongTermPredict_AAC_32f)> s_longTerm("zorsLongTermPredict_AAC_32f");

struct KeptAddition {
    std::array<Zor8u, 52> flags{};
    int sequence, bands, rate;
    KeptAddition(const Zor32f*, Zor32f*, const Zor8u* ltpFlag, int winSequence, int maxSfb, int index)
        : sequence(winSequence), bands(maxSfb), rate(index) {
        std::copy_n(ltpFlag, 52, flags.begin());
    }
    void repeat(auto* function) { function(s_left, s_right, flags.data(), sequence, bands, rate); }
};
Block<KeptAddition, decltype(zorsLongTermReconstruct_AAC_32f)> s_addition("zorsLongTermReconstruct_AAC_32f");

struct KeptMdct {
    KeptArray<Zor32f, frame> lines;
    std::size_t channel;
    int sequence, shape, before;
    KeptMdct(const Zor32f* src, Zor32f*, Zor32f* overlap, int winSequence, int winShape, int prevWinShape)
        : lines(src), channel(s_overlaps.of(overlap) % mostChannels), sequence(winSequence), shape(winShape),
          before(prevWinShape) {}
    void repeat(auto* function) { function(lines.put(), s_pcm, s_overlap[channel], sequence, shape, before); }
};
Block<KeptMdct, decltype(zorsMDCTInv_AAC_32f)> s_mdct("zorsMDCTInv_AAC_32f");

struct KeptInterleave {
    int channels;
    KeptInterleave(const Zor32f* const[], int numChannels, int, Zor32f*) : channels(numChannels) {}
    void repeat(auto* function) {
        const Zor32f* const sources[mostChannels] = {s_overlap[0], s_overlap[1], s_overlap[2], s_overlap[3],
                                                     s_overlap[4], s_overlap[5], s_overlap[6], s_overlap[7]};
        function(sources, channels, frame, s_pcm);
    }
};
Block<KeptInterleave, decltype(zorsInterleave_32f)> s_interleave("zorsInterleave_32f");

} // namespace

ZorStatus zorsUnpackFrameHeader_AAC(const Zor8u** at, const Zor8u* end, ZorAacFrameHeader* header) {
    return s_header(at, end, header);
}
ZorStatus zorsUnpackIcsInfo_AAC(const Zor8u** at, int* bit, const Zor8u* end, ZorAacIcsInfo* info,
                                int profile, int rate, int common) {
    return s_info(at, bit, end, info, profile, rate, common);
}
ZorStatus zorsNoiselessDecodeBehindGain_AAC(const Zor8u** at, int* bit, const Zor8u* end,
                                            ZorAacChannel* channel, Zor16s* factors, Zor32s* lines,
                                            Zor8u* books, Zor8s* coef, int profile, int scale) {
    return s_noiseless(at, bit, end, channel, factors, lines, books, coef, profile, scale);
}
ZorStatus zorsQuantInv_AAC_32s32f(const Zor32s* src, Zor32f* dst, const Zor16s* factors, const Zor8u* books,
                                  int n, const int* groups, int bands, int rate, int winLen) {
    return s_quant(src, dst, factors, books, n, groups, bands, rate, winLen);
}
ZorStatus zorsDecodePNS_AAC_32f(Zor32f* lines, const Zor16s* factors, const Zor8u* books, Zor32u* random,
                                Zor32s* ofBands, int second, const Zor8u* used, int n, const int* groups,
                                int bands, int rate, int winLen) {
    return s_noise(lines, factors, books, random, ofBands, second, used, n, groups, bands, rate, winLen);
}
ZorStatus zorsDecodeMsStereo_AAC_32f_I(Zor32f* left, Zor32f* right, int mask, const Zor8u* used,
                                       const Zor8u* booksL, const Zor8u* booksR, int n, const int* groups,
                                       int bands, int rate, int winLen) {
    return s_midSide(left, right, mask, used, booksL, booksR, n, groups, bands, rate, winLen);
}
ZorStatus zorsDecodeIsStereo_AAC_32f(const Zor32f* left, Zor32f* right, const Zor16s* positions, int mask,
                                     const Zor8u* used, const Zor8u* books, int n, const int* groups,
                                     int bands, int rate, int winLen) {
    return s_intensity(left, right, positions, mask, used, books, n, groups, bands, rate, winLen);
}
ZorStatus zorsDecodeTNS_AAC_32f_I(Zor32f* lines, const int* numFilt, const int* regionLen, const int* order,
                                  const int* coefRes, const Zor8s* coef, const int* direction, int bands,
                                  int profile, int rate, int winLen) {
    return s_decodeTns(lines, numFilt, regionLen, order, coefRes, coef, direction, bands, profile, rate,
                       winLen);
}
ZorStatus zorsEncodeTNS_AAC_32f_I(Zor32f* lines, const int* numFilt, const int* regionLen, const int* order,
                                  const int* coefRes, const Zor8s* coef, const int* direction, int bands,
                                  int profile, int rate, int winLen) {
    return s_encodeTns(lines, numFilt, regionLen, order, coefRes, coef, direction, bands, profile, rate,
                       winLen);
}
ZorStatus zorsFDPInv_32f_I(Zor32f* lines, const int* offset, const Zor8u* used, int bands,
                           ZorsFDPState_32f* state) {
    return s_prediction(lines, offset, used, bands, state);
}
ZorStatus zorsLongTermPredict_AAC_32f(const Zor32f* src, Zor32f* dst, int lag, int coef, int sequence,
                                      int shape, int before) {
    return s_longTerm(src, dst, lag, coef, sequence, shape, before);
}
ZorStatus zorsLongTermReconstruct_AAC_32f(const Zor32f* src, Zor32f* dst, const Zor8u* flags, int sequence,
                                          int bands, int rate) {
    return s_addition(src, dst, flags, sequence, bands, rate);
}
ZorStatus zorsMDCTInv_AAC_32f(const Zor32f* src, Zor32f* dst, Zor32f* overlap, int sequence, int shape,
                              int before) {
    return s_mdct(src, dst, overlap, sequence, shape, before);
}
ZorStatus zorsInterleave_32f(const Zor32f* const src[], int channels, int length, Zor32f* dst) {
    return s_interleave(src, channels, length, dst);
}
