/** \file
 * What single calls of a combination cost, beside its figure: the calls one by one, and first calls.
 */
#ifndef BXTESTCALLS_H
#define BXTESTCALLS_H

#include "timing/bxcallspread.h"
#include "timing/bxcoldcall.h"
#include "timing/bxresult.h"

class bxTest;

/** What single calls of a combination cost, in the clocks of its figure. */
struct bxCallFigures {
    bxCallSpread single;
    bxColdFigure first;
    bxResult result = UNDEFINED; /**< of the calls' status; UNDEFINED where none was made */
};

/**
 * Measures what the settings of the test's engine ask for. To be called behind the timing, with the data of
 * the combination in place.
 */
bxCallFigures bxTimeCallsOfTest(bxTest& test);

#endif
