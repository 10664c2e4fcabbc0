// ADTS headers, window information and band tables of AAC.
#include "aac/bands.h"
#include "common/bitreader.h"
#include "common/check.h"
#include "tables/aac_pred_sfb_max.h"
#include "zorac/aacstream.h"

#include <algorithm>
#include <iterator>

namespace zor::aac {

namespace {

constexpr int rates[samplingRates] = {96000, 88200, 64000, 48000, 44100, 32000,
                                      24000, 22050, 16000, 12000, 11025, 8000};
constexpr int maxLtpBands = 40;

ZorStatus readHeader(BitReader in, ZorAacFrameHeader& header) {
    constexpr Zor32u syncWord = 0xFFF;
    if (in.get(12) != syncWord)
        return in.overrun() ? zorStsStreamEndErr : zorStsBadStreamErr;
    header.id = static_cast<int>(in.get(1));
    const auto layer = in.get(2);
    const bool checked = in.get(1) == 0;
    header.profile = static_cast<int>(in.get(2));
    header.samplingRateIndex = static_cast<int>(in.get(4));
    in.skip(1);
    header.channelConfiguration = static_cast<int>(in.get(3));
    in.skip(4); // original, home and copyright
    header.frameLength = static_cast<int>(in.read(13));
    header.bufferFullness = static_cast<int>(in.get(11));
    header.blocks = static_cast<int>(in.get(2)) + 1;
    // With a check word, the positions of all blocks but the first stand ahead of it.
    header.headerSize = 7 + (checked ? 2 * header.blocks : 0);
    if (in.overrun())
        return zorStsStreamEndErr;
    if (layer != 0 || header.samplingRateIndex >= samplingRates || header.frameLength < header.headerSize)
        return zorStsBadStreamErr;
    header.samplingRate = rates[header.samplingRateIndex];
    header.bitRate =
        static_cast<int>(8LL * header.frameLength * header.samplingRate / (frameLength * header.blocks));
    return zorStsNoErr;
}

void readLtp(BitReader& in, int maxSfb, ZorAacLtp& ltp) {
    ltp.ltpFlag[0] = 1;
    ltp.lag = static_cast<int>(in.read(11));
    ltp.coefIndex = static_cast<int>(in.get(3));
    for (int band = 0; band < std::min(maxSfb, maxLtpBands); ++band)
        ltp.ltpFlag[1 + band] = static_cast<Zor8u>(in.read(1));
}

void readGroups(BitReader& in, ZorAacIcsInfo& info) {
    info.winGrpLen[0] = 1;
    for (int window = 1; window < shortWindows; ++window)
        if (in.get(1) != 0)
            ++info.winGrpLen[info.numWinGrp - 1];
        else
            info.winGrpLen[info.numWinGrp++] = 1;
}

void readPrediction(BitReader& in, int samplingRateIndex, ZorAacIcsInfo& info) {
    if (in.get(1) != 0)
        info.predictorReset = static_cast<int>(in.get(5));
    const int bandCount = std::min<int>(info.maxSfb, tables::aac_pred_sfb_max::max_sfb[samplingRateIndex]);
    for (int band = 0; band < bandCount; ++band)
        info.predictionUsed[band] = static_cast<Zor8u>(in.read(1));
}

ZorStatus readInfo(BitReader& in, ZorAacIcsInfo& info, int profile, int samplingRateIndex,
                   bool commonWindow) {
    info = {};
    in.skip(1); // reserved
    info.winSequence = static_cast<int>(in.get(2));
    info.winShape = static_cast<int>(in.get(1));
    info.numWinGrp = 1;
    const bool isShort = info.winSequence == zorAacEightShort;
    info.winLen = isShort ? shortLength : frameLength;
    info.maxSfb = static_cast<int>(in.get(isShort ? 4 : 6));
    if (info.maxSfb > bands(samplingRateIndex, info.winLen).count)
        return zorStsBadStreamErr;
    if (isShort) {
        readGroups(in, info);
        return zorStsNoErr;
    }
    info.winGrpLen[0] = 1;
    if (in.get(1) == 0)
        return zorStsNoErr;
    if (profile == zorAacLC)
        return zorStsBadStreamErr;
    if (profile == zorAacMain) {
        readPrediction(in, samplingRateIndex, info);
        return info.predictorReset > 30 ? zorStsBadStreamErr : zorStsNoErr;
    }
    for (ZorAacLtp* ltp = info.ltp; ltp <= info.ltp + (commonWindow ? 1 : 0); ++ltp)
        if (in.read(1) != 0)
            readLtp(in, info.maxSfb, *ltp);
    return zorStsNoErr;
}

} // namespace

} // namespace zor::aac

using namespace zor;
using namespace zor::aac;

extern "C" ZorStatus zorsUnpackFrameHeader_AAC(const Zor8u** bitStream, const Zor8u* bitStreamEnd,
                                               ZorAacFrameHeader* frameHeader) {
    if (anyNull(bitStream, bitStreamEnd, frameHeader) || !*bitStream)
        return zorStsNullPtrErr;
    if (*bitStream > bitStreamEnd)
        return zorStsStreamEndErr;
    ZorAacFrameHeader header{};
    if (const ZorStatus status = readHeader(BitReader(*bitStream, 0, bitStreamEnd), header);
        status != zorStsNoErr)
        return status;
    if (header.headerSize > bitStreamEnd - *bitStream)
        return zorStsStreamEndErr;
    *frameHeader = header;
    *bitStream += header.headerSize;
    return zorStsNoErr;
}

extern "C" ZorStatus zorsUnpackIcsInfo_AAC(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                           ZorAacIcsInfo* info, int profile, int samplingRateIndex,
                                           int commonWindow) {
    if (anyNull(bitStream, bitOffset, bitStreamEnd, info) || !*bitStream)
        return zorStsNullPtrErr;
    if (*bitOffset < 0 || *bitOffset > 7 || samplingRateIndex < 0 || samplingRateIndex >= samplingRates ||
        (commonWindow | 1) != 1 || (profile != zorAacMain && profile != zorAacLC && profile != zorAacLTP))
        return zorStsBadArgErr;
    if (*bitStream > bitStreamEnd)
        return zorStsStreamEndErr;
    BitReader in(*bitStream, *bitOffset, bitStreamEnd);
    const ZorStatus status = readInfo(in, *info, profile, samplingRateIndex, commonWindow == 1);
    if (in.overrun())
        return zorStsStreamEndErr;
    if (status == zorStsNoErr)
        in.store(bitStream, bitOffset);
    return status;
}

extern "C" ZorStatus zorsGetSfbTable_AAC(int samplingRateIndex, int winLen, const Zor16u** offset,
                                         int* numBands) {
    if (anyNull(offset, numBands))
        return zorStsNullPtrErr;
    const Bands found = bands(samplingRateIndex, winLen);
    if (found.count == 0)
        return zorStsBadArgErr;
    *offset = found.offset;
    *numBands = found.count;
    return zorStsNoErr;
}

extern "C" ZorStatus zorsGetPredictionBands_AAC(int samplingRateIndex, int* numBands) {
    if (!numBands)
        return zorStsNullPtrErr;
    if (samplingRateIndex < 0 || samplingRateIndex >= samplingRates)
        return zorStsBadArgErr;
    *numBands = tables::aac_pred_sfb_max::max_sfb[samplingRateIndex];
    return zorStsNoErr;
}
