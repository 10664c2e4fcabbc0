/** \file
 * Test data that several tests of the suite build in the same way.
 */
#ifndef SUITEDATA_H
#define SUITEDATA_H

#include "kv.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

/**
 * Creates a vector of `len` elements with the default fill. The first vector of a combination (place 0)
 * carries the session's misalignment; those after it (1, 2, ...) stand on 64-byte boundaries at their own
 * mutual offsets.
 */
inline bool makeVector(kvVector& vector, kvType type, int len, int place = 0) {
    vector.init(type);
    return vector.createVector(len, place == 0 ? -1 : place * bxGetVectorShift());
}

/** A signal like music to a filter bank: four partials of falling amplitude and some noise, within -1 to 1.
 */
inline void fillSignal(Zor32f* signal, int len) {
    for (int i = 0; i < len; ++i) {
        double value = 0.02 * (2.0 * std::rand() / RAND_MAX - 1);
        for (int partial = 1; partial <= 4; ++partial)
            value += 0.45 / partial * std::sin(std::numbers::pi * 0.0213 * partial * partial * i);
        signal[i] = static_cast<Zor32f>(value);
    }
}

#endif
