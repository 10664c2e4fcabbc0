/** \file
 * Real transforms through the complex one: the cosine transform of type IV,
 *     X[k] = scale * sum over n of x[n] cos(pi/N (n + 1/2)(k + 1/2)),  n and k from 0 to N - 1,
 * by a complex transform of N/2. Type IV is its own inverse for scale = sqrt(2/N).
 */
#ifndef ZOR_TRANSFORM_DCT_H
#define ZOR_TRANSFORM_DCT_H

#include "transform/fft.h"

namespace zor {

struct Dct4Plan {
    int size;
    FftPlan fft;  /**< of size / 2 */
    Split before; /**< exp(-j pi/N (n + 1/8)), n below N/2 */
    Split after;  /**< the same times the scale */
};

/** Whether a type IV transform of n is to be had: n is even and n/2 a length of the complex transform. */
inline bool isDct4Size(int n) {
    return n >= 2 && n % 2 == 0 && isFftSize(n / 2);
}

/** Fills the plan; takes its tables from the arena; only measures with a measuring one. */
void placeDct4(Dct4Plan& plan, int n, double scale, Arena& arena);

/** Floats of the work buffer of dct4. */
constexpr int dct4WorkFloats(int n) {
    return 2 * splitFloats(n / 2);
}

struct DctKernels {
    /** Type IV; `to` may be `from`. */
    void (*dct4)(const Dct4Plan& plan, const float* from, float* to, float* work);
};

} // namespace zor

#endif
