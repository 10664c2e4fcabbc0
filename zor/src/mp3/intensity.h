/** \file
 * Intensity stereo: what a position does to the carrier.
 */
#ifndef ZOR_MP3_INTENSITY_H
#define ZOR_MP3_INTENSITY_H

#include <cmath>
#include <numbers>

namespace zor::mp3 {

/** The carrier's share of either channel. */
struct Balance {
    float left, right;
};

inline constexpr int mpeg1Positions =
    7; /**< 0 to 6; position 7 says that the band is not in intensity stereo */
inline constexpr int lsfPositions = 31;

/** 11172-3 2.4.3.4.9.3: left : right = tan(position pi / 12). */
inline Balance mpeg1Balance(int position) {
    const double angle = position * std::numbers::pi / 12, sum = std::sin(angle) + std::cos(angle);
    return {static_cast<float>(std::sin(angle) / sum), static_cast<float>(std::cos(angle) / sum)};
}

/** Quarter powers of one half that a step of the position stands for: 13818-3, intensity_scale 1 or 0. */
constexpr int lsfQuarterSteps(int intensityScale) {
    return intensityScale ? 2 : 1;
}

/** 13818-3 2.4.3.2: odd positions weaken the left, even ones the right channel. */
inline Balance lsfBalance(int position, int intensityScale) {
    const auto weak =
        static_cast<float>(std::exp2(-0.25 * lsfQuarterSteps(intensityScale) * ((position + 1) / 2)));
    return position % 2 ? Balance{weak, 1} : Balance{1, weak};
}

/**
 * What the highest band gets where it is alone in intensity stereo: no scale factor is sent for it, and that
 * of the band below, an ordinary one, is no position. Decoders differ here; this is what the reference output
 * of the conformance streams has.
 */
constexpr Balance balanceWithoutPosition(bool lsf) {
    return lsf ? Balance{0.5f, 0.5f} : Balance{1, 1};
}

} // namespace zor::mp3

#endif
