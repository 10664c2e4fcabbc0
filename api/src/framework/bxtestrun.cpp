#include "framework/bxtestrun.h"

#include "framework/bxbuildstep.h"
#include "framework/bxinterrupt.h"
#include "framework/bxreports.h"
#include "framework/bxsessionmodes.h"
#include "framework/bxtest.h"
#include "framework/bxtraced.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "parameters/bxistream.h"
#include "system/bxenvironment.h"
#include "timing/bxexception.h"
#include "timing/bxsignal.h"
#include "timing/bxturns.h"

bxTestRun::bxTestRun(bxTest& test) : m_test(test) {}

bxResult bxTestRun::run() {
    enter();
    try {
        if (!bxGuarded([this] { return proceed(); }))
            return UNDEFINED;
    } catch (const bxException& fault) {
        recover(fault);
        m_aftermath.discardData(m_test);
    }
    try {
        bxGuarded([this] { report(); });
    } catch (const bxException& fault) {
        // The block that may stand already says what the test measured; a second one says how it ended.
        recover(fault);
        writeResult();
    }
    return m_test.result;
}

void bxTestRun::enter() {
    m_test.result = OK;
    m_test.m_currentResult = UNDEFINED;
    m_test.tool = g_tool;
    if (m_test.info.regKind.find("Ibs") >= 0)
        m_test.tool.ibsMode = true;
    m_test.m_combination = {};
    m_test.m_notMeasured = 0;
    m_test.m_interrupted = false;
    g_trace.clear();
}

/** From the ini section to `flushStart`; false when the test has no section and is left out. */
bool bxTestRun::proceed() {
    if (!bxTraced("setIniSection", [this] { return m_test.setIniSection(m_test.name); }))
        return false;
    bxTraced("beginTest", [this] { m_test.beginTest(); });
    announce();
    if (!bxBuildStep("canStart", [this] { return m_test.canStart(); })) {
        g_ostrm << ERR << "-- Can't start timing\n" << endMessage;
        m_test.m_currentResult = DATAFAIL;
    } else if (bxTest::m_cache && !m_test.cacheIter) {
        g_ostrm << ERR << "-- Can't run "
                << "In-Outof-Cache"
                << " timing: no program support for function " << m_test.name << "\n"
                << endMessage;
    } else if (bxTest::m_cache && bxLibraryCacheSizeB() == 0) {
        g_ostrm << ERR << "-- Can't run In-Outof-Cache timing: the size of the cache is not known\n"
                << endMessage;
    } else {
        measureAll();
    }
    bxTraced("flushStart", [this] { m_test.flushStart(); });
    return true;
}

void bxTestRun::announce() {
    m_announced = true;
    m_test.startTime = time(nullptr);
    const auto title = bxTraced("testTitle", [this] { return bxReportTestTitle(&m_test); });
    bxTraced("g_ostrm<<testTitle", [&title] { g_ostrm << ERR << title << endMessage; });
    bxTraced("g_ustrm<<testTitle", [&title] { g_ustrm << title; });
}

void bxTestRun::measureAll() {
    bxInterruptReads(g_istrm.iStream() != nullptr);
    bxTraced("parmsFromIstrm", [this] { m_test.parmsFromIstrm(); });
    bxInterruptReads(false);
    m_test.putTableName();
    if ((g_istrm.iniFile() && g_istrm.updateIni()) || bxSessionModes::m_nameExit) {
        m_test.m_currentResult = OK;
        return;
    }
    if (bxInterrupted()) {
        m_test.m_interrupted = true;
        return;
    }
    m_test.outputRegInfo();
    bxTraced("loopData", [this] { m_test.loopData(); });
}

void bxTestRun::report() {
    m_test.endTime = time(nullptr);
    m_test.result = m_test.m_currentResult;
    bxTraced("testResult", [this] {
        const bxReportTestResult block(&m_test);
        g_ostrm << block;
        g_ustrm << block;
    });
    g_ostrm.flush();
    g_cstrm.flush();
    g_ustrm.flush();
    bxTraced("endTest", [this] { m_test.endTest(); });
}

/** The result block of a test that was lost after its block, or in it. */
void bxTestRun::writeResult() {
    m_test.result = m_test.m_currentResult;
    const bxReportTestResult block(&m_test);
    g_ostrm << block << endMessageFlush;
    g_ustrm.tableFlush();
    g_ustrm << bxReportTestTitle(&m_test) << block;
}

/** After a fault or an exception: everything as it was before the test, and the message. */
void bxTestRun::recover(const bxException& fault) {
    const bxString step = g_trace.getCurName();
    m_aftermath.restore();
    m_test.m_currentResult = EXCPTFAIL;
    if (!m_announced)
        announce();
    if (bxTurns* const side = bxTurns::side())
        side->fault(fault.msg());
    g_ostrm << ERR << fault.msg() << " in " << step << "\n" << endMessage;
    g_cstrm.linePostponeOut(bxTest::m_numResultColm + bxTest::m_numParmsColm);
}

void bxTestRun::registerOnly() {
    const OutputLevel level = g_ostrm.outLevel();
    const int openMessages = g_ostrm.openMessages();
    g_ostrm.setOutLevel(outErr);
    try {
        bxGuarded([this] {
            m_test.beginTest();
            m_test.canStart();
            m_test.flushStart();
            m_test.endTest();
        });
    } catch (const bxException& fault) {
        g_ostrm.closeMessages(openMessages);
        g_ostrm << ERR << fault.msg() << " in startAndStop of " << m_test.name << " test\n" << endMessage;
    }
    g_ostrm.setOutLevel(level);
}
