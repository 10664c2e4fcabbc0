#include "timing/bxcallscope.h"

#include "system/bxpriority.h"
#include "timing/bxcallwatch.h"
#include "timing/bxfpwatch.h"
#include "timing/bxwatchdog.h"

bxCallScope::bxCallScope(Extent extent, int priority) : m_extent(extent) {
    if (m_extent == measured) {
        g_ssx.resume();
        g_ctrl87.start();
    }
    g_callWatch.start();
    bxEnterCalls();
    if (m_extent == measured)
        bxSetPriority(priority);
}

bxCallScope::~bxCallScope() {
    if (m_extent == measured)
        bxResetPriority();
    bxLeaveCalls();
    if (m_extent == measured) { // first: putting the control words back clears the flags
        g_ctrl87.stop();
        g_ssx.stop();
    }
    g_callWatch.stop();
}
