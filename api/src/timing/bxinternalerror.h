/** \file
 * Report of a state that the harness itself should have excluded.
 */
#ifndef BXINTERNALERROR_H
#define BXINTERNALERROR_H

#include "timing/bxresult.h"

/** Writes where the check stands, as an error; returns FAIL. */
bxResult bxInternalError(const char* path = __builtin_FILE(), int line = __builtin_LINE());

#endif
