/** \file
 * A time limit for functions that never return, and for data that are never built.
 */
#ifndef BXWATCHDOG_H
#define BXWATCHDOG_H

/**
 * Seconds of real time that each step of a combination may take, its data and its measurement; 0, as at
 * start, for no limit.
 */
int bxGetTimeLimit();
void bxSetTimeLimit(int seconds);

/**
 * Starts the time of a step, if there is a limit. When it is over while tested functions are being called or
 * a test builds its data, they are left like after a fault, with the text "Time limit of N s exceeded."; the
 * harness's own code is never interrupted, and notices at its next call.
 */
void bxStartWatchdog();
/** Ends the time; also after a jump out of the calls. */
void bxStopWatchdog();

/** \name Bounds of a stretch of code of the test or its functions, outside what is timed
 * @{ */
/** Throws bxException when the time is over. */
void bxEnterCalls();
void bxLeaveCalls();
/** @} */

#endif
