/** \file
 * A time limit on the measurements of one combination of parameter values, for functions that never return.
 */
#ifndef BXWATCHDOG_H
#define BXWATCHDOG_H

/** Seconds of real time that a combination may take; 0, as at start, for no limit. */
int bxGetTimeLimit();
void bxSetTimeLimit(int seconds);

/**
 * Starts the time of a combination, if there is a limit. When it is over while tested functions are being
 * called, they are left like after a fault, with the text "Time limit of N s exceeded."; the harness's own
 * code is never interrupted, and notices at its next call.
 */
void bxStartWatchdog();
/** Ends the time; also after a jump out of the calls. */
void bxStopWatchdog();

/** \name Bounds of a stretch of calls to tested functions, outside what is timed
 * @{ */
/** Throws bxException when the time is over. */
void bxEnterCalls();
void bxLeaveCalls();
/** @} */

#endif
