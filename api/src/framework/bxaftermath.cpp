#include "framework/bxaftermath.h"

#include "data/bxalloc.h"
#include "framework/bxinterrupt.h"
#include "framework/bxrun.h"
#include "framework/bxtest.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "output/bxtrace.h"
#include "system/bxpriority.h"
#include "timing/bxsignal.h"
#include "timing/bxturns.h"
#include "timing/bxwatchdog.h"

bxAftermath::bxAftermath() : m_level(g_ostrm.outLevel()), m_openMessages(g_ostrm.openMessages()) {}

void bxAftermath::restore() const {
    g_ostrm.closeMessages(m_openMessages);
    g_ostrm.setOutLevel(m_level);
    g_cstrm.tableFlush();
    bxInterruptReads(false);
    bxStopWatchdog();
    bxResetPriority();
}

void bxAftermath::report(const bxException& fault) const {
    const bxString step = g_trace.getCurName();
    restore();
    g_ostrm << ERR << fault.msg() << " in " << step << "\n" << endMessage;
}

void bxAftermath::discardData(bxTest& test) const {
    if (!test.m_combination.dataLive)
        return;
    test.m_combination.dataLive = false;
    try {
        bxGuarded([&test] { test.flushData(); });
    } catch (const bxException&) {
        restore();
        bxFreeSince(test.m_combination.dataMark);
    }
}

bool bxKeepsGoing() {
    return g_run.keepGoing && bxTurns::side() == nullptr;
}
