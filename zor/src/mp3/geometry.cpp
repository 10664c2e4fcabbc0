#include "mp3/geometry.h"

#include "common/check.h"
#include "tables/mp3_bitrate.h"
#include "tables/mp3_samplerate.h"

namespace zor::mp3 {
namespace {

constexpr int layerThree = 3;

/** How the tables number the standards. */
constexpr int versionOf(const ZorMP3FrameHeader& header) {
    return header.id == 1 ? 1 : 2;
}

} // namespace

int samplingRateOf(const ZorMP3FrameHeader& header) {
    using namespace tables::mp3_samplerate;
    for (int row = 0; row < rows; ++row)
        if (version_id[row] == versionOf(header) && index[row] == header.samplingFrequency)
            return header.halfRate ? hz[row] / 2 : hz[row];
    return 1;
}

int bitRateOf(const ZorMP3FrameHeader& header) {
    using namespace tables::mp3_bitrate;
    for (int row = 0; row < rows; ++row)
        if (version_id[row] == versionOf(header) && layer[row] == layerThree &&
            index[row] == header.bitrateIndex)
            return 1000 * kbps[row];
    return 0;
}

} // namespace zor::mp3

extern "C" {

ZorStatus zorsGetFrameInfo_MP3(const ZorMP3FrameHeader* frameHeader, ZorMP3FrameInfo* info) {
    using namespace zor::mp3;
    if (zor::anyNull(frameHeader) || zor::anyNull(info))
        return zorStsNullPtrErr;
    const ZorMP3FrameHeader& header = *frameHeader;
    if (!isHeader(header) || header.layer != 1 || header.bitrateIndex < 0 || header.bitrateIndex > 14)
        return zorStsBadArgErr;
    const int bytes = unpaddedFrameBytes(header);
    *info = {.samplingRate = samplingRateOf(header),
             .bitRate = bitRateOf(header),
             .channels = channelsOf(header),
             .granules = granulesOf(header),
             .headerSize = headerBytes(header),
             .sideInfoSize = sideInfoBytes(header),
             .frameLength = bytes > 0 ? bytes + (header.paddingBit != 0) : 0};
    return zorStsNoErr;
}

ZorStatus zorsGetSfbTables_MP3(const ZorMP3FrameHeader* frameHeader, const Zor16s (**sfbLong)[23],
                               const Zor16s (**sfbShort)[14]) {
    using namespace zor::mp3;
    if (zor::anyNull(frameHeader) || !sfbLong || !sfbShort)
        return zorStsNullPtrErr;
    const BandTables tables = bandTablesOf(*frameHeader);
    *sfbLong = tables.longBoundary;
    *sfbShort = tables.shortBoundary;
    return zorStsNoErr;
}

} // extern "C"
