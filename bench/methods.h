/** \file
 * The ways to measure a kernel that are compared.
 */
#ifndef METHODS_H
#define METHODS_H

#include "kernels.h"

#include <functional>
#include <string>
#include <vector>

/** What one measurement says of a call. */
struct Figure {
    double value = 0;
    bool coreClocks = false;  /**< the unit: core clocks, else counts of the time-stamp counter */
    double low = 0, high = 0; /**< stated 95 % interval; both 0 where none is stated */
};

struct Method {
    std::string name;
    std::function<Figure(const Kernel&)> measure;
    std::function<bool(const Kernel&)> takes; /**< the slow ones take a part of the kernels only */
    int every = 1;                            /**< and a turn in one round of so many */
};

/**
 * The methods: each with its defaults; with a given time, as "name@time"; Google Benchmark as a user may call
 * it. A method of the engine that ends of itself is given time by repetition, and the figure is the median.
 */
std::vector<Method> allMethods();

/** Ticks of the counter in a nanosecond, measured when first asked for. */
double ticksPerNanosecond();

#endif
