/** \file
 * What a timing writes while it works.
 */
#ifndef BXTIMINGTEXT_H
#define BXTIMINGTEXT_H

#include "output/bxostream.h"
#include "output/bxtrace.h"

namespace bxTimingText {

/** Writes the pieces of a message; costs nothing when its level is not shown. */
template <class... Pieces>
void write(MessageLevel level, const Pieces&... pieces) {
    if (!g_ostrm.beginMessage(level))
        return;
    (g_ostrm << ... << pieces);
    g_ostrm.endMessage();
}

/**
 * Runs a step under its name in the trace. After an exception the name stays open, so that the message can
 * tell where it happened.
 */
template <class Step>
void traced(const char* name, Step step) {
    g_trace.traceIn(name);
    step();
    g_trace.traceOut(name);
}

} // namespace bxTimingText

#endif
