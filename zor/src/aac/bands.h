/** \file
 * Scalefactor bands of AAC and the division of a frame into windows and window groups.
 */
#ifndef ZOR_AAC_BANDS_H
#define ZOR_AAC_BANDS_H

#include "zortypes.h"

#include <cstdint>
#include <span>

namespace zor::aac {

constexpr int frameLength = 1024; /**< lines of a frame, whatever its windows */
constexpr int shortLength = 128;  /**< lines of a short window */
constexpr int shortWindows = 8;   /**< short windows of a frame */
constexpr int samplingRates = 12; /**< sampling-rate indices in use */

/** The bands of one window: band b spans the lines offset[b] to offset[b + 1] - 1. */
struct Bands {
    const std::uint16_t* offset;
    int count;
};

/** The bands of a window of 1024 or 128 lines; a count of 0 where an argument is out of its range. */
Bands bands(int samplingRateIndex, int winLen);

/** Where the windows of a frame are and which of them share their side information. */
struct Grouping {
    Bands bands;
    int winLen;
    std::span<const int> groupLen;
};

/**
 * Checks and joins the arguments that describe a frame's windows.
 * \return zorStsNullPtrErr, zorStsSizeErr (winLen, maxSfb, groups), zorStsBadArgErr (sampling-rate index)
 */
ZorStatus grouping(int numWinGrp, const int* winGrpLen, int maxSfb, int samplingRateIndex, int winLen,
                   Grouping& result);

/** Calls visit(first, end) for every run of neighbouring bands that are in use. */
template <class Use, class Visit>
void forEachRun(int bandCount, Use use, Visit visit) {
    for (int band = 0; band < bandCount; ++band) {
        if (!use(band))
            continue;
        const int first = band;
        while (band < bandCount && use(band))
            ++band;
        visit(first, band);
    }
}

} // namespace zor::aac

#endif
