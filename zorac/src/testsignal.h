/** \file
 * A signal for filter banks.
 */
#ifndef TESTSIGNAL_H
#define TESTSIGNAL_H

#include "zortypes.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

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
