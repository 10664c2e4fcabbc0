#include "framework/bxtest.h"

#include "data/bxalloc.h"
#include "framework/bxconditions.h"
#include "framework/bxhotlist.h"
#include "framework/bxinterrupt.h"
#include "framework/bxreports.h"
#include "framework/bxsessionmodes.h"
#include "framework/bxtraced.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "parameters/bxinifile.h"
#include "parameters/bxistream.h"
#include "system/bxenvironment.h"
#include "system/bxpriority.h"
#include "timing/bxcallscope.h"
#include "timing/bxcallwatch.h"
#include "timing/bxexception.h"
#include "timing/bxfpwatch.h"
#include "timing/bxsignal.h"
#include "timing/bxturns.h"
#include "timing/bxwatchdog.h"

#include <algorithm>

namespace {

/** What a result counts as: a warning that is not shown does not lower the test's result. */
bxResult counted(bxResult r) {
    return bxIsWarning(r) && g_ostrm.outLevel() <= outErr ? OK : r;
}

} // namespace

/** The output level to go back to after a step that changes it. */
static OutputLevel OldOutLevel = outErr;

bxTest::bxTest(bxString testName, bxString path, bxString text)
    : startTime(time(nullptr)), endTime(startTime), name(testName), fileName(path.getFileName()), info(text) {
}

// `initSettings` is called as the base's own: a derived test is not constructed yet.

bxTest::bxTest(bxFuncTool toolFunc, bxString testName, bxString path, bxString text)
    : bxTest(testName, path, text) {
    funcTool = toolFunc;
    bxTest::initSettings();
}

bxTest::bxTest(bxFuncLoop loopFunc, bxFuncStat statFunc, bxString testName, bxString path, bxString text)
    : bxTest(nullptr, nullptr, loopFunc, statFunc, testName, path, text) {}

bxTest::bxTest(bxFuncCall callFunc, bxFuncInit init, bxFuncLoop loopFunc, bxFuncStat statFunc,
               bxString testName, bxString path, bxString text)
    : bxTest(testName, path, text) {
    funcLoop = loopFunc;
    funcStat = statFunc;
    funcCall = callFunc;
    initFunc = init;
    bxTest::initSettings();
}

bxTest::~bxTest() {
    delete cacheIter;
}

void bxTest::initSettings() {
    m_currentResult = UNDEFINED;
    firstIteration = true;
    bad87Status = badSSXStatus = false;
    cacheIter = nullptr;
    cacheRetry = false;
    deprecated = false;
    parms.clear();
}

bool bxTest::tobeRun(bxConditions& conditions) {
    return conditions.tobeRun(this) && (m_hot != 2 || bxIsHotFunction(name));
}

int bxTest::compareFunc(const bxTest* other) const {
    return name.compare(other->name);
}

bool bxTest::canStart() {
    return true;
}
void bxTest::flushStart() {}
void bxTest::beginTest() {
    initSettings();
}
void bxTest::endTest() {}

void bxTest::raiseResult(bxResult r) {
    if (r > m_currentResult)
        m_currentResult = r;
}

void bxTest::reportError(const bxString& message, bxResult r) {
    g_ostrm << ERR << message << endMessage;
    raiseResult(r);
}

bool bxTest::setIniSection(bxString section) {
    bxIniFile* const ini = g_istrm.iniFile();
    if (m_pressing && ini && !ini->sectionExist(section))
        return false;
    if (ini && g_istrm.updateIni())
        ini->write(section);
    g_istrm.setIniSection(section);
    return true;
}

/** A step in which the test builds its data: code of the test, under the time limit like the function. */
template <class Body>
static bool buildStep(const char* step, Body body) {
    bxStartWatchdog();
    const bool built = bxTraced(step, [&body] {
        bxEnterCalls();
        const bool done = body();
        bxLeaveCalls();
        return done;
    });
    bxStopWatchdog();
    return built;
}

bxResult bxTest::run() {
    const int openMessages = g_ostrm.openMessages();
    enter();
    try {
        if (!bxGuarded([this] { return proceed(); }))
            return UNDEFINED;
    } catch (const bxException& fault) {
        recover(fault.msg(), openMessages);
        discardData();
    }
    report();
    return result;
}

void bxTest::enter() {
    result = OK;
    m_currentResult = UNDEFINED;
    tool = g_tool;
    if (info.regKind.find("Ibs") >= 0)
        tool.ibsMode = true;
    OldOutLevel = g_ostrm.outLevel();
    m_announced = m_dataLive = false;
    g_trace.clear();
}

/** From the ini section to `flushStart`; false when the test has no section and is left out. */
bool bxTest::proceed() {
    if (!bxTraced("setIniSection", [this] { return setIniSection(name); }))
        return false;
    bxTraced("beginTest", [this] { beginTest(); });
    announce();
    if (!buildStep("canStart", [this] { return canStart(); })) {
        g_ostrm << ERR << "-- Can't start timing\n" << endMessage;
        m_currentResult = DATAFAIL;
    } else if (m_cache && !cacheIter) {
        g_ostrm << ERR << "-- Can't run "
                << "In-Outof-Cache"
                << " timing: no program support for function " << name << "\n"
                << endMessage;
    } else if (m_cache && bxLibraryCacheSizeB() == 0) {
        g_ostrm << ERR << "-- Can't run In-Outof-Cache timing: the size of the cache is not known\n"
                << endMessage;
    } else {
        measureAll();
    }
    bxTraced("flushStart", [this] { flushStart(); });
    return true;
}

void bxTest::announce() {
    m_announced = true;
    OldOutLevel = g_ostrm.outLevel();
    startTime = time(nullptr);
    const auto title = bxTraced("testTitle", [this] { return bxReportTestTitle(this); });
    bxTraced("g_ostrm<<testTitle", [&title] { g_ostrm << ERR << title << endMessage; });
    bxTraced("g_ustrm<<testTitle", [&title] { g_ustrm << title; });
}

void bxTest::measureAll() {
    bxTraced("parmsFromIstrm", [this] { parmsFromIstrm(); });
    putTableName();
    if ((g_istrm.iniFile() && g_istrm.updateIni()) || bxSessionModes::m_nameExit) {
        m_currentResult = OK;
        return;
    }
    outputRegInfo();
    bxTraced("loopData", [this] { loopData(); });
}

/** After a fault or an exception: the streams as they were before the test, and the message. */
void bxTest::recover(const char* message, int openMessages) {
    const bxString step = g_trace.getCurName();
    bxStopWatchdog();
    bxResetPriority();
    m_currentResult = EXCPTFAIL;
    g_ostrm.closeMessages(openMessages);
    g_ostrm.setOutLevel(OldOutLevel);
    g_cstrm.tableFlush();
    if (!m_announced)
        announce();
    if (bxTurns* const side = bxTurns::side())
        side->fault(message);
    g_ostrm << ERR << message << " in " << step << "\n" << endMessage;
    g_cstrm.linePostponeOut(m_numResultColm + m_numParmsColm);
}

/**
 * Frees the data of a test that was left in the middle of a combination. What `flushData` keeps stays, as it
 * does in a sound test; when it faults on data in ruins, all blocks of the combination go.
 */
void bxTest::discardData() {
    if (!m_dataLive)
        return;
    m_dataLive = false;
    try {
        bxGuarded([this] { flushData(); });
    } catch (const bxException&) {
        bxFreeSince(m_dataMark);
    }
}

void bxTest::report() {
    result = m_currentResult;
    endTime = time(nullptr);
    bxTraced("testResult", [this] {
        const bxReportTestResult block(this);
        g_ostrm << block;
        g_ustrm << block;
    });
    g_ostrm.flush();
    g_cstrm.flush();
    g_ustrm.flush();
    bxTraced("endTest", [this] { endTest(); });
}

void bxTest::startAndStop() {
    const OutputLevel level = g_ostrm.outLevel();
    g_ostrm.setOutLevel(outErr);
    try {
        bxGuarded([this] {
            beginTest();
            canStart();
            flushStart();
            endTest();
        });
    } catch (const bxException& fault) {
        g_ostrm << ERR << fault.msg() << " in startAndStop of " << name << " test\n" << endMessage;
    }
    g_ostrm.setOutLevel(level);
}

// ---- Combinations ----

void bxTest::loopData() {
    firstIteration = true;
    m_loopStep = g_trace.getCurName();
    m_constDue = true;
    m_dataMissing = false;
    g_cstrm.identicalLinesStart(m_numParmsColm);
    while (nextCombination()) {}
    if (m_currentResult == UNDEFINED && !bxInterrupted())
        reportError("-- Error while initialization of function data\n", DATAFAIL);
    else if (m_dataMissing)
        raiseResult(counted(DATAWRN));
    g_cstrm.linePostponeOut(m_numResultColm + m_numParmsColm);
    if (g_cstrm.identicalLinesStop()) {
        g_ostrm << WARN << "-- Warning: duplicate lines in performance table (csv-file)\n" << endMessage;
        raiseResult(counted(DATAWRN));
    }
}

/** A test's own step that was left open does not lead into the next combination. */
void bxTest::restoreTraceStep() {
    while (!g_trace.empty() && !(*g_trace.begin() == m_loopStep))
        g_trace.traceOut(bxString(*g_trace.begin()));
}

/** Produces and measures one combination; false at the end of the loop. */
bool bxTest::nextCombination() {
    restoreTraceStep();
    g_placement.restart();
    m_dataMark = bxMallocMark();
    if (!buildStep("canContinue", [this] { return canContinue(); })) {
        if (firstIteration)
            reportError("-- One of argument list for timing is empty\n", DATAFAIL);
        return false;
    }
    firstIteration = false;
    // A cache iterator learns from the data of every size.
    if (bxTurns* const side = bxTurns::side(); side && !side->nextCombination() && !cacheIter)
        return true;
    m_dataLive = true;
    if (buildStep("initData", [this] { return initData(); }))
        processCombination();
    else if (g_placement.failures > 0)
        m_dataMissing = true;
    bxTraced("flushData", [this] { return flushData(); });
    m_dataLive = false;
    return !bxIsFailure(m_currentResult) && !bxInterrupted();
}

void bxTest::processCombination() {
    if (m_constDue) {
        m_constDue = false;
        outputConst();
    }
    if (cacheIter && !cacheIter->validateSize()) {
        cacheRetry = true;
        return;
    }
    putTextParms(PERF);
    if (tool.includeDataSet)
        bxTraced("reserveAllVectors", [] { return reserveAllVectors(); });
    if (m_hot == 2 && !isHotLine()) {
        g_ostrm << "  measuring is omitted: not hot line\n";
        return;
    }
    timeCombination();
}

/**
 * Calls the function once to see whether it preserves its caller's registers, which a compiled loop around it
 * could not survive. Where there is no such loop, the engine sees to it in its own untimed call.
 */
void bxTest::checkRegisters() {
    if (funcCall && (funcLoop || funcStat))
        callOnce();
}

int bxTest::callOnce() {
    return bxTraced("zorFunctionCalls", [this] {
        const bxCallScope scope(bxCallScope::called);
        if (initFunc)
            initFunc();
        return g_callWatch.call(funcCall);
    });
}

void bxTest::timeCombination() {
    if (bxTurns* const side = bxTurns::side())
        return compareCombination(*side);
    printAllMemoryBlocks("before function calls");
    OldOutLevel = g_ostrm.outLevel();
    initCtrlStatus();
    g_callWatch.init();
    if (OldOutLevel == outWarn)
        g_ostrm.setOutLevel(outPerf);
    bxStartWatchdog();
    checkRegisters();
    bxResult r = bxTraced("runTiming", [this] { return runTiming(); });
    bxStopWatchdog();
    g_ostrm.setOutLevel(OldOutLevel);
    // Figures are formatted and the next data built in the harness's own floating-point state.
    bxResetFpState();
    if (r == UNDEFINED)
        reportError("-- Internal test problem: runTiming() function returns undefined result\n", FAIL);
    else
        printAllMemoryBlocks("after function calls");
    r = std::max(r, checkCtrlStatus());
    raiseResult(counted(r));
    outputResult(r);
}

/** The present combination as one side of a comparison; the figures are those of who compares. */
void bxTest::compareCombination(bxTurns& side) {
    if (!side.wanted())
        return;
    initCtrlStatus();
    g_callWatch.init();
    bxString parameters;
    for (const bxParameter* parm : parms)
        parameters << (parameters.empty() ? "" : " ") << parm->name() << "=" << parm->valueString();
    if (cacheIter)
        parameters << " " << cacheIter->getComment();
    side.beginCombination(parameters);
    bxStartWatchdog();
    int status = 0;
    if (funcCall)
        status = callOnce();
    side.calledOnce(status);
    const bxResult r = bxTraced("runTiming", [this] { return runTiming(); });
    bxStopWatchdog();
    bxResetFpState();
    raiseResult(std::max(r, OK));
}
