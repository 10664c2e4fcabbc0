#include "session/bxcallsetting.h"

#include "session/bxgiven.h"
#include "timing/bxtool.h"

void bxReadCalls() {
    constexpr int most = 10'000'000; // each takes some bytes until the end of the series
    bxReadNumber("Calls", g_tool.singleCalls, 0, most);
    bxReadYesNo("Cold", g_tool.coldCalls);
}
