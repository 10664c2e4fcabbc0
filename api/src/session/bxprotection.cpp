#include "session/bxprotection.h"

#include "data/bxalloc.h"
#include "output/bxstreams.h"
#include "parameters/bxistream.h"
#include "parameters/bxmap.h"
#include "timing/bxwatchdog.h"

namespace {

bool isGiven(const bxString& name) {
    bxString value;
    if (g_istrm.dataList().get(name, value))
        return true;
    bxIniFile* const ini = g_istrm.iniFile();
    return ini && !ini->read(g_istrm.iniSection(), name, "").empty();
}

/** Reads a parameter and applies its value, if one is given. */
template <class Parameter, class Apply>
void readGiven(Parameter& parm, Apply apply) {
    if (!isGiven(parm.name()))
        return;
    parm.fromIStream(g_istrm);
    apply(parm.value());
}

} // namespace

void bxReadProtection() {
    bxMapDefault<bool> guard(bxGetGuard(), "GuardBlocks", "");
    guard[true] = "yes";
    guard[false] = "no";
    readGiven(guard, bxSetGuard);
    bxDefault<int> seconds(bxGetTimeLimit(), "WatchdogSeconds", "");
    readGiven(seconds, bxSetTimeLimit);
}
