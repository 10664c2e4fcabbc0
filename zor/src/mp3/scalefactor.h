/** \file
 * How scale factors are coded: lengths and partitions by scalefac_compress.
 */
#ifndef ZOR_MP3_SCALEFACTOR_H
#define ZOR_MP3_SCALEFACTOR_H

#include "mp3/frame.h"
#include "tables/mp3_lsf_scalefactor_partition.h"
#include "tables/mp3_slen.h"

namespace zor::mp3 {

inline constexpr int codedFactors = 36; /**< the most that a granule of one channel has */

/** Runs of scale factors that have the same length in bits, in the order of the stream. */
struct FactorPartition {
    int length[4];
    int count[4];
    int preflag; /**< what scalefac_compress implies in id 0; 0 in id 1, where it is a field of its own */
};

/** Values of scalefac_compress: 4 bits in id 1, 9 bits in id 0. */
constexpr bool isScalefacCompress(int id, int value) {
    return value >= 0 && value < (id == 1 ? 16 : 512);
}

/** The lengths of 13818-3 2.4.3.2; `intensityRight` for the right channel in intensity stereo. */
constexpr FactorPartition lsfLengths(int compress, bool intensityRight) {
    if (intensityRight) {
        const int i = compress >> 1;
        if (i < 180)
            return {{i / 36, i % 36 / 6, i % 6, 0}, {3}, 0};
        if (i < 244)
            return {{(i - 180) >> 4, ((i - 180) & 15) >> 2, (i - 180) & 3, 0}, {4}, 0};
        return {{(i - 244) / 3, (i - 244) % 3, 0, 0}, {5}, 0};
    }
    if (compress < 400)
        return {{(compress >> 4) / 5, (compress >> 4) % 5, (compress & 15) >> 2, compress & 3}, {0}, 0};
    if (compress < 500)
        return {{((compress - 400) >> 2) / 5, ((compress - 400) >> 2) % 5, (compress - 400) & 3, 0}, {1}, 0};
    return {{(compress - 500) / 3, (compress - 500) % 3, 0, 0}, {2}, 1};
}

/** The partition of id 0. */
constexpr FactorPartition lsfPartition(const ZorMP3SideInfo& side, bool intensityRight) {
    namespace table = tables::mp3_lsf_scalefactor_partition;
    FactorPartition partition = lsfLengths(side.scalefacCompress, intensityRight);
    const int row = 3 * partition.count[0] + (!isShort(side) ? 0 : side.mixedBlock ? 2 : 1);
    partition.count[0] = table::n1[row];
    partition.count[1] = table::n2[row];
    partition.count[2] = table::n3[row];
    partition.count[3] = table::n4[row];
    return partition;
}

/** The partition of id 1; of long blocks the four runs are those that scfsi can share between granules. */
constexpr FactorPartition mpeg1Partition(const ZorMP3SideInfo& side) {
    const int slen1 = tables::mp3_slen::slen1[side.scalefacCompress];
    const int slen2 = tables::mp3_slen::slen2[side.scalefacCompress];
    if (!isShort(side))
        return {{slen1, slen1, slen2, slen2}, {6, 5, 5, 5}, 0};
    return {{slen1, slen2, 0, 0}, {side.mixedBlock ? 17 : 18, 18, 0, 0}, 0};
}

} // namespace zor::mp3

#endif
