/** \file
 * Unpacks the frame header, the side information and the scale factors of layer III.
 */
#include "mp3/scalefactor.h"
#include "mp3/stream.h"

namespace zor::mp3 {
namespace {

int take(BitReader& reader, int bits) {
    return static_cast<int>(reader.read(bits));
}

constexpr int syncWord = 0xFFF;
constexpr int halfRateSync = 0xFFE; /**< with id 0 */

/** The region counts that hold where the syntax leaves them out, so that the two regions cover all bands. */
constexpr int impliedRegion0Count(const ZorMP3SideInfo& side) {
    return isShort(side) && !side.mixedBlock ? 8 : 7;
}
constexpr int impliedRegionCountSum = 20;

ZorMP3SideInfo takeGranule(BitReader& reader, int id) {
    ZorMP3SideInfo side{};
    side.part23Length = take(reader, 12);
    side.bigValues = take(reader, 9);
    side.globalGain = take(reader, 8);
    side.scalefacCompress = take(reader, id == 1 ? 4 : 9);
    side.windowSwitching = take(reader, 1);
    if (side.windowSwitching) {
        side.blockType = take(reader, 2);
        side.mixedBlock = take(reader, 1);
        for (int region = 0; region < 2; ++region)
            side.tableSelect[region] = take(reader, 5);
        for (int& gain : side.subblockGain)
            gain = take(reader, 3);
        side.region0Count = impliedRegion0Count(side);
        side.region1Count = impliedRegionCountSum - side.region0Count;
    } else {
        for (int& table : side.tableSelect)
            table = take(reader, 5);
        side.region0Count = take(reader, 4);
        side.region1Count = take(reader, 3);
    }
    side.preflag = id == 1 ? take(reader, 1) : 0;
    side.scalefacScale = take(reader, 1);
    side.count1TableSelect = take(reader, 1);
    return side;
}

/** Bits of side_info() in all. */
constexpr int sideInfoBits(int id, int channels) {
    return 8 * (id == 1 ? (channels == 1 ? 17 : 32) : (channels == 1 ? 9 : 17));
}

/** The private bits fill the side information up to whole bytes. */
constexpr int privateBitCount(int id, int channels) {
    return id == 1 ? (channels == 1 ? 5 : 3) : channels;
}

constexpr int scfsiGroups = 4;

} // namespace
} // namespace zor::mp3

extern "C" {

ZorStatus zorsUnpackFrameHeader_MP3(const Zor8u** bitStream, const Zor8u* bitStreamEnd,
                                    ZorMP3FrameHeader* frameHeader) {
    using namespace zor::mp3;
    if (!bitStream || !*bitStream || !bitStreamEnd || !frameHeader)
        return zorStsNullPtrErr;
    if (bitStreamEnd - *bitStream < 4)
        return zorStsStreamEndErr;
    zor::BitReader reader(*bitStream, 0, bitStreamEnd);
    ZorMP3FrameHeader header{};
    const int sync = take(reader, 12);
    header.id = take(reader, 1);
    header.halfRate = sync == halfRateSync && header.id == 0;
    if (sync != syncWord && !header.halfRate)
        return zorStsBadStreamErr;
    header.layer = take(reader, 2);
    header.protectionBit = take(reader, 1);
    header.bitrateIndex = take(reader, 4);
    header.samplingFrequency = take(reader, 2);
    header.paddingBit = take(reader, 1);
    header.privateBit = take(reader, 1);
    header.mode = take(reader, 2);
    header.modeExtension = take(reader, 2);
    header.copyright = take(reader, 1);
    header.original = take(reader, 1);
    header.emphasis = take(reader, 2);
    if (header.protectionBit == 0)
        header.crcCheck = take(reader, 16);
    if (reader.overrun())
        return zorStsStreamEndErr;
    *bitStream = reader.bytes();
    *frameHeader = header;
    return zorStsNoErr;
}

ZorStatus zorsUnpackSideInfo_MP3(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                 ZorMP3SideInfo* sideInfo, int* mainDataBegin, int* privateBits, int* scfsi,
                                 const ZorMP3FrameHeader* frameHeader) {
    using namespace zor::mp3;
    if (zor::anyNull(sideInfo, frameHeader) || zor::anyNull(mainDataBegin, privateBits, scfsi))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkStream(bitStream, bitOffset, bitStreamEnd); status < 0)
        return status;
    const int id = frameHeader->id != 0, channels = channelsOf(*frameHeader);
    if (8LL * (bitStreamEnd - *bitStream) - *bitOffset < sideInfoBits(id, channels))
        return zorStsStreamEndErr;
    zor::BitReader reader(*bitStream, *bitOffset, bitStreamEnd);
    *mainDataBegin = take(reader, id == 1 ? 9 : 8);
    *privateBits = take(reader, privateBitCount(id, channels));
    for (int i = 0; i < scfsiGroups * channels; ++i)
        scfsi[i] = id == 1 ? take(reader, 1) : 0;
    for (int granule = 0; granule < (id == 1 ? 2 : 1); ++granule)
        for (int channel = 0; channel < channels; ++channel)
            sideInfo[2 * granule + channel] = takeGranule(reader, id);
    return finishReading(reader, bitStream, bitOffset);
}

ZorStatus zorsUnpackScaleFactors_MP3_1u8s(const Zor8u** bitStream, int* bitOffset, const Zor8u* bitStreamEnd,
                                          Zor8s* dst, ZorMP3SideInfo* sideInfo, const int* scfsi,
                                          const ZorMP3FrameHeader* frameHeader, int granule, int channel) {
    using namespace zor::mp3;
    if (zor::anyNull(dst) || zor::anyNull(sideInfo) || zor::anyNull(scfsi) || zor::anyNull(frameHeader))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkStream(bitStream, bitOffset, bitStreamEnd); status < 0)
        return status;
    const int id = frameHeader->id != 0;
    if (granule < 0 || granule > id || channel < 0 || channel > 1 ||
        !isScalefacCompress(id, sideInfo->scalefacCompress))
        return zorStsBadArgErr;
    const bool sharable = granule == 1 && !isShort(*sideInfo);
    const FactorPartition partition =
        id == 1 ? mpeg1Partition(*sideInfo)
                : lsfPartition(*sideInfo, channel == 1 && usesIntensity(*frameHeader));
    zor::BitReader reader(*bitStream, *bitOffset, bitStreamEnd);
    Zor8s factors[codedFactors]{};
    for (int group = 0, at = 0; group < 4; at += partition.count[group++])
        for (int i = at; i < at + partition.count[group]; ++i)
            factors[i] =
                sharable && scfsi[group] ? dst[i] : static_cast<Zor8s>(take(reader, partition.length[group]));
    if (const ZorStatus status = finishReading(reader, bitStream, bitOffset); status < 0)
        return status;
    std::copy(factors, factors + codedFactors, dst);
    if (id == 0)
        sideInfo->preflag = partition.preflag;
    return zorStsNoErr;
}

} // extern "C"
