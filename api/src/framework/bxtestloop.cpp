#include "framework/bxtestloop.h"

#include "data/bxalloc.h"
#include "data/bxplacement.h"
#include "framework/bxbuildstep.h"
#include "framework/bxcomment.h"
#include "framework/bxinterrupt.h"
#include "framework/bxlayouts.h"
#include "framework/bxrun.h"
#include "framework/bxtest.h"
#include "framework/bxtestcalls.h"
#include "framework/bxtestlist.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "timing/bxcallscope.h"
#include "timing/bxcallwatch.h"
#include "timing/bxfpwatch.h"
#include "timing/bxsignal.h"
#include "timing/bxturns.h"

#include <algorithm>
#include <alloca.h>
#include <sched.h>

namespace {

/** What a result counts as: a warning that is not shown does not lower the test's result. */
bxResult counted(bxResult r) {
    return bxIsWarning(r) && g_ostrm.outLevel() <= outErr ? OK : r;
}

} // namespace

bxTestLoop::bxTestLoop(bxTest& test) : m_test(test), m_step(g_trace.getCurName()) {}

void bxTestLoop::run() {
    m_test.firstIteration = true;
    g_cstrm.identicalLinesStart(bxTest::m_numParmsColm);
    while (bxKeepsGoing() ? nextGuarded() : next()) {}
    if (bxInterrupted() && !bxIsFailure(bxTest::m_currentResult))
        countMissing();
    finish();
}

/** A test's own step that was left open does not lead into the next combination. */
void bxTestLoop::restoreTraceStep() {
    while (!g_trace.empty() && !(*g_trace.begin() == m_step))
        g_trace.traceOut(bxString(*g_trace.begin()));
}

/** Produces and measures one combination; false at the end of the loop. */
bool bxTestLoop::next() {
    restoreTraceStep();
    m_produced = false;
    if (const bxLayoutFollower* const follower = bxLayoutFollower::present())
        g_placement.restart(follower->displacement(), follower->displacement());
    else
        g_placement.restart();
    bxCombination& combination = m_test.m_combination;
    combination.dataMark = bxMallocMark();
    if (!bxBuildStep("canContinue", [this] { return m_test.canContinue(); })) {
        if (m_test.firstIteration)
            bxTest::reportError("-- One of argument list for timing is empty\n", DATAFAIL);
        return false;
    }
    m_test.firstIteration = false;
    m_produced = true;
    // A cache iterator learns from the data of every size.
    if (bxTurns* const side = bxTurns::side(); side && !side->nextCombination() && !m_test.cacheIter)
        return true;
    combination.dataLive = true;
    if (bxBuildStep("initData", [this] { return m_test.initData(); }))
        process();
    else if (g_placement.failures > 0)
        m_dataMissing = true;
    bxTraced("flushData", [this] { return m_test.flushData(); });
    combination.dataLive = false;
    return (!bxIsFailure(bxTest::m_currentResult) || bxKeepsGoing()) && !bxInterrupted();
}

/** The same, where a fault in a combination does not end the test. */
bool bxTestLoop::nextGuarded() {
    try {
        return bxGuarded([this] { return next(); });
    } catch (const bxException& fault) {
        if (!m_produced) // there may be no end of them
            throw;
        m_aftermath.report(fault);
    }
    bxTest::raiseResult(EXCPTFAIL);
    m_test.cacheRetry = false;
    try {
        bxGuarded([this] { m_test.outputResult(EXCPTFAIL); });
    } catch (const bxException&) { // the test's own cells need what is in ruins
        m_aftermath.restore();
    }
    m_aftermath.discardData(m_test);
    return !bxInterrupted();
}

void bxTestLoop::process() {
    if (m_constDue) {
        m_constDue = false;
        m_test.outputConst();
    }
    if (m_test.cacheIter && !m_test.cacheIter->validateSize()) {
        m_test.cacheRetry = true;
        return;
    }
    m_test.putTextParms(PERF);
    if (m_test.tool.includeDataSet)
        bxTraced("reserveAllVectors", [] { return bxTest::reserveAllVectors(); });
    if (g_run.onlyRow > 0 && ++m_number != g_run.onlyRow)
        return;
    if (bxTest::m_hot == bxTest::hotOnly && !m_test.isHotLine()) {
        g_ostrm << "  measuring is omitted: not hot line\n";
        return;
    }
    time();
}

/**
 * Calls the function once to see whether it preserves its caller's registers, which a compiled loop around it
 * could not survive. Where there is no such loop, the engine sees to it in its own untimed call.
 */
void bxTestLoop::checkRegisters() {
    if (m_test.funcCall && (m_test.funcLoop || m_test.funcStat))
        callOnce();
}

int bxTestLoop::callOnce() {
    return bxTraced("zorFunctionCalls", [this] {
        const bxCallScope scope(bxCallScope::called);
        if (m_test.initFunc)
            m_test.initFunc();
        return g_callWatch.call(m_test.funcCall);
    });
}

/** The present combination as one side of a comparison; the figures are those of who compares. */
void bxTestLoop::compare(bxTurns& side) {
    if (!side.wanted())
        return;
    bxTest::initCtrlStatus();
    g_callWatch.init();
    side.beginCombination(parameterText());
    bxStartWatchdog();
    if (side.counting()) {
        stepThroughCall();
        side.countedAs(m_instructions.text());
        bxStopWatchdog();
        bxResetFpState();
        bxTest::raiseResult(OK);
        return;
    }
    if (side.calledOnce(m_test.funcCall ? callOnce() : 0) && m_test.funcCall)
        side.calledOnce(callOnce());
    const bxResult r = bxTraced("runTiming", [this] { return m_test.runTiming(); });
    bxStopWatchdog();
    bxResetFpState();
    bxTest::raiseResult(std::max(r, OK));
}

/** The place of the test does not change during a run. */
bxLayoutPlace bxTestLoop::place() const {
    const auto test = std::find(pTestList->begin(), pTestList->end(), &m_test);
    return {static_cast<int>(std::distance(pTestList->begin(), test)), m_measured};
}

/** The present combination in another layout; the figure goes to the process that leads this one. */
void bxTestLoop::follow(bxLayoutFollower& follower) {
    bxResult r = OK;
    if (follower.arrive(place())) {
        bxTest::initCtrlStatus();
        g_callWatch.init();
        bxStartWatchdog();
        checkRegisters();
        // cppcheck-suppress allocaCalled
        auto* const unused = static_cast<volatile char*>(alloca(follower.stackDepth()));
        unused[0] = 0;
        r = bxTraced("runTiming", [this] { return m_test.runTiming(); });
        bxStopWatchdog();
        bxResetFpState();
        if (r != UNDEFINED && !bxIsFailure(r))
            follower.measured(m_test.tool.funcClocks);
    }
    bxTest::raiseResult(std::max(r, OK));
}

bxLayoutSpread bxTestLoop::otherLayouts() const {
    const bxTool& tool = m_test.tool;
    if (g_run.layouts <= 1 || !(tool.funcClocks > 0) || bxInterrupted())
        return {};
    const int core = tool.preciseFigure.core >= 0 ? tool.preciseFigure.core : sched_getcpu();
    return bxTraced("measureLayouts",
                    [&] { return bxLayouts::measure(g_run.layouts, place(), tool.funcClocks, core); });
}

void bxTestLoop::time() {
    ++m_measured;
    if (bxTurns* const side = bxTurns::side())
        return compare(*side);
    if (bxLayoutFollower* const follower = bxLayoutFollower::present())
        return follow(*follower);
    m_test.printAllMemoryBlocks("before function calls");
    const OutputLevel level = g_ostrm.outLevel();
    bxTest::initCtrlStatus();
    g_callWatch.init();
    if (level == outWarn)
        g_ostrm.setOutLevel(outPerf);
    bxStartWatchdog();
    checkRegisters();
    countInstructions();
    bxResult r = bxTraced("runTiming", [this] { return m_test.runTiming(); });
    bxStopWatchdog();
    bxCallFigures calls;
    bxLayoutSpread layouts;
    if (r != UNDEFINED && !bxIsFailure(r)) {
        layouts = otherLayouts();
        bxStartWatchdog();
        calls = bxTimeCallsOfTest(m_test);
        r = std::max(r, calls.result);
        bxStopWatchdog();
    }
    g_ostrm.setOutLevel(level);
    // Figures are formatted and the next data built in the harness's own floating-point state.
    bxResetFpState();
    if (r == UNDEFINED)
        bxTest::reportError("-- Internal test problem: runTiming() function returns undefined result\n",
                            FAIL);
    else
        m_test.printAllMemoryBlocks("after function calls");
    bxCompleteComment(m_test.tool, m_instructions, calls, layouts);
    writeSteps();
    r = std::max(r, m_test.checkCtrlStatus());
    bxTest::raiseResult(counted(r));
    m_test.outputResult(r);
    countAuto(r);
}

/** Auto is content when two loops agree, and both may be wrong where the calls are short. */
void bxTestLoop::countAuto(bxResult r) const {
    const bxTool& tool = m_test.tool;
    if (tool.precise || tool.method != bxTool::methodAuto || !tool.found || bxIsFailure(r))
        return;
    ++g_run.autoFigures;
    g_run.shortAutoFigures += tool.funcClocks < bxRun::shortForAuto ? 1 : 0;
}

/** Steps through what an interruption left, without building any data. */
void bxTestLoop::countMissing() {
    long long& missing = m_test.m_notMeasured;
    missing = m_test.cacheRetry; // the present combination waited for another size
    m_test.cacheRetry = false;
    bxBuildStep("canContinue", [this, &missing] {
        while (missing < bxTest::maxCounted && m_test.canContinue())
            ++missing;
        return true;
    });
    m_test.m_interrupted = missing > 0;
}

void bxTestLoop::finish() {
    if (bxTest::m_currentResult == UNDEFINED && !m_test.m_interrupted)
        bxTest::reportError("-- Error while initialization of function data\n", DATAFAIL);
    else if (m_dataMissing)
        bxTest::raiseResult(counted(DATAWRN));
    g_cstrm.linePostponeOut(bxTest::m_numResultColm + bxTest::m_numParmsColm);
    if (g_cstrm.identicalLinesStop()) {
        g_ostrm << WARN << "-- Warning: duplicate lines in performance table (csv-file)\n" << endMessage;
        bxTest::raiseResult(counted(DATAWRN));
    }
}
