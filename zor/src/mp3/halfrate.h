/** \file
 * Scale-factor band boundaries of the half-rate extension (MPEG-2.5), which no standard prints: 11.025 and 12
 * kHz divide the spectrum as 16 kHz does in 13818-3, 8 kHz in its own way.
 */
#ifndef ZOR_MP3_HALFRATE_H
#define ZOR_MP3_HALFRATE_H

#include "zortypes.h"

namespace zor::mp3 {

/** In the rows of id 0: 11.025, 12, 8 kHz. The rows of id 1 are not used, but there. */
inline constexpr Zor16s halfRateLong[6][23] = {
    {0, 6, 12, 18, 24, 30, 36, 44, 54, 66, 80, 96, 116, 140, 168, 200, 238, 284, 336, 396, 464, 522, 576},
    {0, 6, 12, 18, 24, 30, 36, 44, 54, 66, 80, 96, 116, 140, 168, 200, 238, 284, 336, 396, 464, 522, 576},
    {0,   12,  24,  36,  48,  60,  72,  88,  108, 132, 160, 192,
     232, 280, 336, 400, 476, 566, 568, 570, 572, 574, 576},
};

inline constexpr Zor16s halfRateShort[6][14] = {
    {0, 4, 8, 12, 18, 26, 36, 48, 62, 80, 104, 134, 174, 192},
    {0, 4, 8, 12, 18, 26, 36, 48, 62, 80, 104, 134, 174, 192},
    {0, 8, 16, 24, 36, 52, 72, 96, 124, 160, 162, 164, 166, 192},
};

} // namespace zor::mp3

#endif
