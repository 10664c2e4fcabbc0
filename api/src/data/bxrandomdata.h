/** \file
 * Random values in place of the default constants.
 */
#ifndef BXRANDOMDATA_H
#define BXRANDOMDATA_H

/**
 * Largest magnitude of the values that stand for the default fill, 0 for the constants. Unsigned types and
 * single bytes keep their constant: tests have code books, counts and flags in them.
 */
int bxGetRandomData();
void bxSetRandomData(int most);

#endif
