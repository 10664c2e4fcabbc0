/** \file
 * Settings for runs on a library that may be broken.
 */
#ifndef BXPROTECTION_H
#define BXPROTECTION_H

/**
 * Reads "GuardBlocks" (yes or no; test data end at a protected page) and "WatchdogSeconds" (limit for each
 * combination of parameter values, 0 for none), and "RandomData" (magnitude of random values in place of the
 * default constants, 0 for the constants). They come from -d keys and the ini file only: nobody is
 * asked, and one that is not given is not mentioned. Throws bxException for a wrong value.
 */
void bxReadProtection();

#endif
