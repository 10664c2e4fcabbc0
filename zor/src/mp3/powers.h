/** \file
 * Powers that quantisation needs: x^(4/3) of every quantised value, 2^(n/4) of every gain.
 */
#ifndef ZOR_MP3_POWERS_H
#define ZOR_MP3_POWERS_H

#include "mp3/kernel_tables.h"

#include <array>

namespace zor::mp3 {

/** x^(4/3) for x from 0 to largestQuantised. */
const std::array<float, largestQuantised + 1>& fourThirds();

/** 2^(steps/4); steps are clamped to +-400. */
float quarterPower(int steps);
/** 2^(-3 steps/16), what |x|^(3/4) is multiplied by to be quantised with a step of 2^(steps/4). */
float quantiserScale(int steps);

} // namespace zor::mp3

#endif
