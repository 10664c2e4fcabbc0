/** \file
 * What a test works with: the combinations of its parameter values, its data and the floating-point watch.
 */
#include "data/bxalloc.h"
#include "data/bxplacement.h"
#include "framework/bxaftermath.h"
#include "framework/bxinterrupt.h"
#include "framework/bxtest.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "parameters/bxistream.h"
#include "timing/bxcallwatch.h"
#include "timing/bxfpwatch.h"

// ---- Parameters ----

bxParameter* bxTest::regParm(bxParameter& parm) {
    parms.push_back(&parm);
    return &parm;
}

bxParameter* bxTest::regCacheParm(bxIterator<int>& size, bxObject* owner, bxCacheSetFunc check) {
    if (!m_cache || cacheIter)
        return regParm(size);
    cacheIter = new bxCacheIteratorInt(size, owner, check);
    return regParm(*cacheIter);
}

void bxTest::parmsFromIstrm() {
    g_istrm.expect(parms);
    for (bxParameter* parm : parms) {
        if (bxInterrupted())
            return;
        parm->fromIStream(g_istrm);
    }
}

void bxTest::parmsToOstrm() {
    for (const bxParameter* parm : parms)
        parm->toOStream(g_ostrm);
}

void bxTest::parmsToCstrm() {
    for (const bxParameter* parm : parms)
        parm->toCStream(g_cstrm);
}

void bxTest::parmsNameToCstrm() {
    for (const bxParameter* parm : parms)
        parm->nameToCStream(g_cstrm);
}

bool bxTest::setDeprecatedFlag(bool on) {
    deprecated = on;
    if (!on) {
        for (bxParameter* parm : parms)
            parm->setDeprecatedFlag(false);
        return false;
    }
    bool any = false;
    for (bxParameter* parm : parms) {
        if (!parm->isDeprecatedParm())
            continue;
        if (!parm->setDeprecatedFlag(true))
            return false;
        any = true;
    }
    return any;
}

bool bxTest::canContinue() {
    if (parms.empty())
        return firstIteration;
    if (cacheIter && cacheRetry) {
        if (repeatWithNewSize())
            return true;
        if (!bxKeepsGoing())
            return false;
        putTableFailure(DATAFAIL);
    }
    if (firstIteration) {
        for (bxParameter* parm : parms)
            if (!parm->firstValue())
                return false;
        return true;
    }
    for (auto it = parms.end(); it != parms.begin();) {
        --it;
        if ((*it)->nextValue())
            return true;
        (*it)->firstValue();
    }
    return false;
}

/** The same combination with another data size; false, after an error, when no size fits the cache mode. */
bool bxTest::repeatWithNewSize() {
    cacheRetry = false;
    if (cacheIter->repeatValue())
        return true;
    g_ostrm << ERR;
    cacheIter->outputInfo();
    putTextParms();
    g_ostrm << "-- Fail to allocate " << cacheIter->getComment() << " data\n" << endMessage;
    raiseResult(DATAFAIL);
    return false;
}

// ---- Data ----

bool bxTest::initData() {
    return true;
}

bool bxTest::flushData() {
    return true;
}

void* bxTest::allocate(int size, int align, void* owner) {
    return g_placement.allocate(size, align, owner);
}

void bxTest::deallocate(void* block) {
    bxFree(block);
}

int bxTest::reserveAllVectors() {
    return bxReserveAllVectors();
}

int bxTest::resetAllVectors() {
    return bxResetAllVectors();
}

int bxTest::printAllMemoryBlocks(bxString) {
    return 0;
}

// ---- Floating-point watch ----

void bxTest::initCtrlStatus() {
    bxInitCtrlStatus();
}

void bxTest::clearCtrlStatus() {
    bxClearCtrlStatus();
}

bool bxTest::badCtrlStatus(bool& bad87, bool& badSSX) {
    return bxBadCtrlStatus(bad87, badSSX);
}

void bxTest::printCtrlStatus(bool bad87, bool badSSX) {
    bxPrintCtrlStatus(bad87, badSSX);
}

bxResult bxTest::checkCtrlStatus() {
    bool bad87 = false;
    bool badSSX = false;
    const bool badStatus = badCtrlStatus(bad87, badSSX);
    if (badStatus) {
        bad87Status = bad87Status || bad87;
        badSSXStatus = badSSXStatus || badSSX;
        printCtrlStatus(bad87, badSSX);
    }
    const bool badCall = g_callWatch.bad();
    if (badCall)
        g_callWatch.print();
    clearCtrlStatus();
    g_callWatch.init();
    return badStatus || badCall ? BADSTSWRN : UNDEFINED;
}

// ---- Measurement ----

/** A search for the number of calls needs a loop; without one the calls are timed one by one. */
static void replaceMethodWithoutLoop(bxTool& tool) {
    if (tool.method != bxTool::methodAuto && tool.method != bxTool::methodIterative)
        return;
    g_ostrm << ERR << " ATTENTION! The test cannot execute "
            << (tool.method == bxTool::methodAuto ? "Auto" : "Iterative")
            << " timing.\n Statistic timing will be run instead.\n"
            << endMessage;
    tool.method = bxTool::methodStat;
}

bxResult bxTest::runTiming() {
    if (funcStat && !funcLoop && !funcCall)
        replaceMethodWithoutLoop(tool);
    if (funcLoop || funcStat)
        return tool.timing(funcLoop, funcStat, funcCall, initFunc);
    if (funcCall)
        return tool.timing(nullptr, nullptr, funcCall, initFunc);
    return funcTool ? tool.timing(funcTool) : UNDEFINED;
}
