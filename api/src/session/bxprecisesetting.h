/** \file
 * Settings of the engine's precise mode.
 */
#ifndef BXPRECISESETTING_H
#define BXPRECISESETTING_H

/**
 * Reads "Precise" (yes or no, default no) and "PreciseAccuracy" (half width of a figure's 95 % interval in
 * per cent of the figure, above 0, at most 50; default: the session's accuracy) into `g_tool`. To be called
 * behind the dialogue about the timing method, which sets the accuracy. Throws bxException for a wrong value.
 */
void bxReadPrecise();

#endif
