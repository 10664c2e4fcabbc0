/** \file
 * What single calls of a combination cost, beside its figure: the calls one by one, and first calls.
 */
#ifndef BXTESTCALLS_H
#define BXTESTCALLS_H

#include "timing/bxresult.h"

class bxTest;

/**
 * Measures what the settings of the test's engine ask for, in the same clocks as the engine's figure, and
 * adds it to the engine's `info`. To be called behind the timing, with the data of the combination in place.
 * \return the result of the calls' status; UNDEFINED where none was made
 */
bxResult bxTimeCallsOfTest(bxTest& test);

#endif
