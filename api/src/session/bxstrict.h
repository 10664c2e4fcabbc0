/** \file
 * The setting that makes the exit status tell more than the failures of tests.
 */
#ifndef BXSTRICT_H
#define BXSTRICT_H

/**
 * Whether "Strict" (yes or no, default no) is set, by a -d key or in the ini file. A value that is neither
 * counts as yes: who gives one wants to be told.
 */
bool bxIsStrict();

/** Reads "Strict" as the other settings are read, where it is given. Throws bxException for a wrong value. */
void bxReadStrict();

#endif
