/** \file
 * What one addition costs in counts of the time-stamp counter at this moment. Written apart from the engine's
 * own reference, so that a fault of that one would show.
 */
#ifndef TRUTH_H
#define TRUTH_H

#include "chains.h"
#include "system/bxclock.h"

#include <algorithm>
#include <array>

/** Counts that `blocks` chains of 256 additions take, with the fixed cost of their loop and of the reads. */
inline double additionTicks(int blocks) {
    chain<Link::addition, 4096>(); // each starts behind the same
    const unsigned long long start = zor_get_cpu_counter();
    for (int i = 0; i < blocks; ++i)
        chain<Link::addition, 256>();
    return static_cast<double>(zor_get_cpu_counter() - start);
}

/**
 * Counts of one addition: the difference between chains of one and of two times 131,072 additions, in which
 * the fixed costs drop out. The median of five, which an interrupt in two of them does not touch. Half a
 * millisecond.
 */
inline double ticksPerAddition() {
    constexpr int blocks = 512;
    std::array<double, 5> differences;
    for (double& difference : differences) {
        const double once = additionTicks(blocks);
        difference = additionTicks(2 * blocks) - once;
    }
    std::nth_element(differences.begin(), differences.begin() + 2, differences.end());
    return differences[2] / (256 * blocks);
}

#endif
