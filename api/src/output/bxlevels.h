/** \file
 * Levels of messages and of the output.
 */
#ifndef BXLEVELS_H
#define BXLEVELS_H

/** The level of a message, one bit; or a command to the message stream, below zero. */
enum MessageLevel : int {
    ERR = 1,               /**< errors */
    WARN = 2,              /**< warnings */
    PERF = 4,              /**< figures of each parameter set */
    INFO = 8,              /**< course of the measurement */
    TRACE = 16,            /**< calls inside the harness */
    MEM = 32,              /**< allocation of test data */
    DATA = 64,             /**< vectors before and after the call */
    endMessage = -10,      /**< ends a message: the level before it is current again */
    endMessageFlush = -11, /**< ends a message and flushes all outputs */
};

/** The set of levels that are shown; any combination of MessageLevel bits. */
enum OutputLevel : int {
    outNone = 0,
    outErr = ERR,
    outWarn = outErr | WARN,
    outPerf = outWarn | PERF,
    outInfo = outPerf | INFO,
    outTrace = outPerf | TRACE,
    outMem = outPerf | MEM,
    outData = outPerf | DATA,
};

/** True when messages of level m are shown at the output level. */
constexpr bool isShown(MessageLevel m, OutputLevel shown) {
    return (static_cast<int>(m) & shown) != 0;
}

#endif
