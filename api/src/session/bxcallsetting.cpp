#include "session/bxcallsetting.h"

#include "parameters/bxmap.h"
#include "session/bxgiven.h"
#include "session/bxwholenumber.h"
#include "timing/bxtool.h"

void bxReadCalls() {
    constexpr int most = 10'000'000; // each takes some bytes until the end of the series
    bxWholeNumber calls(g_tool.singleCalls, "Calls", 0, most);
    bxReadGiven(calls, [](int count) { g_tool.singleCalls = count; });
    bxMapDefault<bool> cold(g_tool.coldCalls, "Cold", "");
    cold[true] = "yes";
    cold[false] = "no";
    bxReadGiven(cold, [](bool on) { g_tool.coldCalls = on; });
}
