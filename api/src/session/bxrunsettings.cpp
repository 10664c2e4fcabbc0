#include "session/bxrunsettings.h"

#include "framework/bxrun.h"
#include "session/bxgiven.h"
#include "session/bxyesno.h"
#include "timing/bxfpwatch.h"

void bxReadRunSettings() {
    constexpr int flushes = 0x8000; // the bit of MXCSR
    bxReadYesNo("KeepGoing", g_run.keepGoing);
    bxYesNo flush(tsSSXBase::FlushZero != 0, "FlushToZero");
    bxReadGiven(flush, [](bool on) { tsSSXBase::FlushZero = on ? flushes : 0; });
}
