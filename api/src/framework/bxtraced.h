/** \file
 * Steps of a test run, announced to the call trace.
 */
#ifndef BXTRACED_H
#define BXTRACED_H

#include "output/bxtrace.h"

#include <type_traits>

/**
 * Runs a step between its two trace lines and returns its result. A step that throws stays open, so that the
 * message of whoever catches the exception can name it.
 */
template <class Body>
auto bxTraced(const char* step, Body body) {
    g_trace.traceIn(step);
    if constexpr (std::is_void_v<decltype(body())>) {
        body();
        g_trace.traceOut(step);
    } else {
        auto outcome = body();
        g_trace.traceOut(step);
        return outcome;
    }
}

#endif
