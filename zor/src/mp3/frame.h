/** \file
 * What the frame header and the side information mean: channels, band boundaries, regions, layouts.
 */
#ifndef ZOR_MP3_FRAME_H
#define ZOR_MP3_FRAME_H

#include "mp3/halfrate.h"
#include "tables/mp3_sfb_long.h"
#include "tables/mp3_sfb_short.h"
#include "zorac/mp3.h"

#include <algorithm>

namespace zor::mp3 {

inline constexpr int modeJoint = 1;
inline constexpr int modeMono = 3;
inline constexpr int extensionIntensity = 1;
inline constexpr int extensionMs = 2;
inline constexpr int shortBlock = 2;
inline constexpr int longBands = 22;  /**< the last has no scale factor */
inline constexpr int shortBands = 13; /**< likewise */
inline constexpr int firstShortInMixed = 3;

inline constexpr Zor16s standardMixedBands[2] = {6, 8};

/** Scale-factor band boundaries: the standards' or the caller's. */
struct BandTables {
    const Zor16s (*longBoundary)[longBands + 1] = tables::mp3_sfb_long::boundary;
    const Zor16s (*shortBoundary)[shortBands + 1] = tables::mp3_sfb_short::boundary;
    const Zor16s* mixedBands = standardMixedBands; /**< long bands of a mixed block, by id */
};

/** The tables that hold for a header without the caller's. */
constexpr BandTables bandTablesOf(const ZorMP3FrameHeader& header) {
    return header.halfRate ? BandTables{halfRateLong, halfRateShort} : BandTables{};
}

constexpr bool isHeader(const ZorMP3FrameHeader& header) {
    return (header.id == 0 || header.id == 1) && header.halfRate >= 0 && header.halfRate <= 1 - header.id &&
           header.samplingFrequency >= 0 && header.samplingFrequency <= 2 && header.mode >= 0 &&
           header.mode <= 3;
}

constexpr int channelsOf(const ZorMP3FrameHeader& header) {
    return header.mode == modeMono ? 1 : 2;
}

constexpr int granulesOf(const ZorMP3FrameHeader& header) {
    return header.id == 1 ? 2 : 1;
}

constexpr bool usesIntensity(const ZorMP3FrameHeader& header) {
    return header.mode == modeJoint && (header.modeExtension & extensionIntensity) != 0;
}

constexpr bool usesMs(const ZorMP3FrameHeader& header) {
    return header.mode == modeJoint && (header.modeExtension & extensionMs) != 0;
}

/** Row of the band tables: MPEG-2 in rows 0 to 2, MPEG-1 in 3 to 5. */
constexpr int bandRow(const ZorMP3FrameHeader& header) {
    return 3 * header.id + header.samplingFrequency;
}

constexpr bool isShort(const ZorMP3SideInfo& side) {
    return side.windowSwitching != 0 && side.blockType == shortBlock;
}

/** How a granule of one channel is cut into long and short bands. */
struct BandLayout {
    const Zor16s* longBoundary;
    const Zor16s* shortBoundary;
    int longs;      /**< long bands, from line 0 */
    int firstShort; /**< shortBands where there are none */

    BandLayout(const BandTables& tables, const ZorMP3FrameHeader& header, const ZorMP3SideInfo& side)
        : longBoundary(tables.longBoundary[bandRow(header)]),
          shortBoundary(tables.shortBoundary[bandRow(header)]),
          longs(!isShort(side)    ? longBands
                : side.mixedBlock ? std::clamp<int>(tables.mixedBands[header.id], 0, longBands)
                                  : 0),
          firstShort(!isShort(side)    ? shortBands
                     : side.mixedBlock ? firstShortInMixed
                                       : 0) {}

    /** Place of a short band's factor of window 0 among the scale factors; window 1 and 2 follow. */
    int shortFactor(int band) const { return longs + 3 * (band - firstShort); }
    /** The first line of the short part. */
    int shortStart() const { return firstShort == shortBands ? 576 : 3 * shortBoundary[firstShort]; }
    int shortWidth(int band) const { return shortBoundary[band + 1] - shortBoundary[band]; }

    /**
     * Calls visit(first line, end line, index of the scale factor, band, window) for each band that begins
     * below `end`, in stream order. The window of long bands and the factor of the highest bands are -1.
     */
    template <class Visit>
    void forBands(int end, Visit visit) const {
        for (int band = 0; band < longs && longBoundary[band] < end; ++band)
            visit(longBoundary[band], longBoundary[band + 1], band < longBands - 1 ? band : -1, band, -1);
        for (int band = firstShort; band < shortBands; ++band) {
            const int width = shortWidth(band), start = 3 * shortBoundary[band];
            for (int window = 0; window < 3 && start + window * width < end; ++window)
                visit(start + window * width, start + (window + 1) * width,
                      band < shortBands - 1 ? shortFactor(band) + window : -1, band, window);
        }
    }
};

} // namespace zor::mp3

#endif
