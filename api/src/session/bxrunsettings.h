/** \file
 * Settings of a run that none of the timing methods knows.
 */
#ifndef BXRUNSETTINGS_H
#define BXRUNSETTINGS_H

/**
 * Reads "KeepGoing" (yes or no, default no; a failure ends its combination and not the test) and
 * "FlushToZero" (yes or no, default yes; results below the smallest normal number become 0 in SSE
 * arithmetic). They come from -d keys and the ini file only. Throws bxException for a wrong value.
 */
void bxReadRunSettings();

#endif
