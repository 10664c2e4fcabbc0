#include "session/bxprotection.h"

#include "data/bxplacement.h"
#include "data/bxrandomdata.h"
#include "parameters/bxmap.h"
#include "session/bxgiven.h"
#include "session/bxwholenumber.h"
#include "timing/bxwatchdog.h"

void bxReadProtection() {
    bxMapDefault<bool> guard(bxGetGuard(), "GuardBlocks", "");
    guard[true] = "yes";
    guard[false] = "no";
    bxReadGiven(guard, bxSetGuard);
    bxWholeNumber seconds(bxGetTimeLimit(), "WatchdogSeconds", 0);
    bxReadGiven(seconds, bxSetTimeLimit);
    bxDefault<int> random(bxGetRandomData(), "RandomData", "");
    bxReadGiven(random, bxSetRandomData);
}
