#include "session/bxprotection.h"

#include "data/bxplacement.h"
#include "data/bxrandomdata.h"
#include "parameters/bxdefault.h"
#include "session/bxgiven.h"
#include "session/bxwholenumber.h"
#include "timing/bxwatchdog.h"

void bxReadProtection() {
    bxReadYesNo("GuardBlocks", g_placement.rules.guard);
    bxWholeNumber seconds(bxGetTimeLimit(), "WatchdogSeconds", 0);
    bxReadGiven(seconds, bxSetTimeLimit);
    bxDefault<int> random(bxGetRandomData(), "RandomData", "");
    bxReadGiven(random, bxSetRandomData);
}
