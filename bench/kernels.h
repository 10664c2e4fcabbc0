/** \file
 * The work that is measured: chains of a known cost, registered as ordinary tests, and functions of the
 * reference library.
 */
#ifndef KERNELS_H
#define KERNELS_H

#include "framework/bxtest.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

/** A function of Google Benchmark. */
using PeerFunction = void (*)(benchmark::State&);

/** One thing to measure, while its data exist. */
struct Kernel {
    const bxTest* test; /**< with the functions that the engine calls */
    std::string name;   /**< of the function, with the values of its parameters */
    double clocks = 0;  /**< core clocks of a call by construction; 0 where nobody knows */
    PeerFunction peer =
        nullptr; /**< the same call in a loop of Google Benchmark; null: through `test->funcCall` */
};

/** Registers the chains. Call it once, before the first `forEachKernel`. */
void registerChains();

/** Calls `measure` for every kernel, with its data in place: the same data every time. */
void forEachKernel(const std::function<void(const Kernel&)>& measure);

#endif
