/** \file
 * Settings of what single calls cost.
 */
#ifndef BXCALLSETTING_H
#define BXCALLSETTING_H

/**
 * Reads "Calls" (single calls to be timed behind each figure, up to 10,000,000; default 0) and "Cold"
 * (yes or no, default no: calls with empty caches) into `g_tool`. Throws bxException for a wrong value.
 */
void bxReadCalls();

#endif
