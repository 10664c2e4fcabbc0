#include "session/bxrunsettings.h"

#include "framework/bxrun.h"
#include "parameters/bxmap.h"
#include "session/bxgiven.h"
#include "timing/bxfpwatch.h"

namespace {

template <class Apply>
void readYesOrNo(bool value, const char* name, Apply apply) {
    bxMapDefault<bool> setting(value, name, "");
    setting[true] = "yes";
    setting[false] = "no";
    bxReadGiven(setting, apply);
}

} // namespace

void bxReadRunSettings() {
    constexpr int flushes = 0x8000; // the bit of MXCSR
    readYesOrNo(g_run.keepGoing, "KeepGoing", [](bool on) { g_run.keepGoing = on; });
    readYesOrNo(tsSSXBase::FlushZero != 0, "FlushToZero",
                [](bool on) { tsSSXBase::FlushZero = on ? flushes : 0; });
}
