#include "session/bxprotection.h"

#include "data/bxplacement.h"
#include "parameters/bxmap.h"
#include "session/bxgiven.h"
#include "timing/bxwatchdog.h"

void bxReadProtection() {
    bxMapDefault<bool> guard(bxGetGuard(), "GuardBlocks", "");
    guard[true] = "yes";
    guard[false] = "no";
    bxReadGiven(guard, bxSetGuard);
    bxDefault<int> seconds(bxGetTimeLimit(), "WatchdogSeconds", "");
    bxReadGiven(seconds, bxSetTimeLimit);
}
