/** \file
 * What the psychoacoustic model knows of hearing, for each sampling frequency: partitions of about a third of
 * a critical band, how masking spreads between them, the threshold in quiet.
 */
#ifndef ZOR_MP3_PSYCH_TABLES_H
#define ZOR_MP3_PSYCH_TABLES_H

#include "mp3/frame.h"

namespace zor::mp3 {

inline constexpr int longFft = 1024;
inline constexpr int shortFft = 256;
inline constexpr int maxPartitions = 72;

/** Partitions of the lines 0 to N/2 of a transform of N. */
struct Partitions {
    int count;
    int begin[maxPartitions + 1];  /**< first line; the last entry is N/2 + 1 */
    float quiet[maxPartitions];    /**< energy of a just audible tone */
    float leastSnr[maxPartitions]; /**< dB that a masker must exceed noise by, whatever its kind */
    float spread[maxPartitions]
                [maxPartitions]; /**< share of masker [column] in masked [row]; rows sum to 1 */
};

/** A scale-factor band in partitions: first and last of them with the part that lies in the band. */
struct BandSpan {
    int first, last;
    float firstShare, lastShare;
};

struct PsychTables {
    Partitions longs;
    Partitions shorts;
    BandSpan longBand[longBands];
    BandSpan shortBand[shortBands];
    float longWindow[longFft];
    float shortWindow[shortFft];
};

/** The tables of a row of the band tables; made at the first use. */
const PsychTables& psychTables(int row);

} // namespace zor::mp3

#endif
