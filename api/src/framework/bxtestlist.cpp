#include "framework/bxtestlist.h"

#include "framework/bxconditions.h"
#include "framework/bxinterrupt.h"
#include "framework/bxprogress.h"
#include "framework/bxtest.h"
#include "output/bxostream.h"
#include "timing/bxturns.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

bxTestList* pTestList = nullptr;

int bxRegTest(bxTest* test) {
    if (!pTestList)
        pTestList = new bxTestList;
    pTestList->insert(pTestList->end(), test);
    return 1;
}

void deleteTestList() {
    if (!pTestList)
        return;
    for (bxTest* test : *pTestList)
        delete test;
    delete pTestList;
    pTestList = nullptr;
}

bool aless(bxTest*& a, bxTest*& b) {
    return a && b && a->compareFunc(b) < 0;
}

void beforeAll() {}
void beforeTest() {}
void afterTest(bxTest*) {}

bxTestList::bxTestList() : startTime(time(nullptr)), endTime(startTime), numResults{} {}

bool bxTestList::runTests(bxConditions& conditions) {
    const bxInterruptScope interruptible;
    bxProgress progress;
    if (progress.shown())
        progress.setSelected(countSelected(conditions));
    beforeAll();
    for (bxTest* test : *this) {
        if (bxInterrupted())
            break;
        if (!test->tobeRun(conditions) || test->name.find(m_startFunc, 0) < 0)
            continue;
        m_startFunc = "";
        bxTurns* const side = bxTurns::side();
        if (side && !side->beginTest(test->name))
            continue;
        m_pCurrentTest = test;
        progress.beforeTest(test->name);
        beforeTest();
        const bxResult r = test->run();
        afterTest(test);
        if (side)
            side->endTest(r);
        progress.afterTest();
        count(*test, r);
        m_pCurrentTest = nullptr;
    }
    if (bxInterrupted()) {
        interruptedBy = bxInterruptName();
        g_ostrm << ERR << "-- Interrupted by " << interruptedBy << ": the run stops here\n"
                << endMessageFlush;
    }
    return numResults[FAIL] != 0;
}

int bxTestList::countSelected(bxConditions& conditions) const {
    int n = 0;
    for (bxTest* test : *this)
        n += test->tobeRun(conditions) && (n > 0 || test->name.find(m_startFunc, 0) >= 0);
    return n;
}

void bxTestList::count(const bxTest& test, bxResult r) {
    if (test.interrupted()) {
        ++numTests;
        ++numInterrupted;
    } else if (r != UNDEFINED || test.result != OK) {
        // A test that stopped before it measured still holds the mark of its entry.
        plus(r);
    }
}

void bxTestList::plus(bxResult r) {
    ++numTests;
    ++numResults[r];
    if (bxIsWarning(r) && r != WARNING)
        ++numResults[WARNING];
    if (bxIsFailure(r) && r != FAIL)
        ++numResults[FAIL];
}

namespace {

/**
 * Puts tests of equal names, in order of registration, into the places that sorting gave them. They stand so
 * already unless the order of other names goes in a circle: then a merge may carry a test past its equal.
 */
void keepEqualInOrder(bxTestList& list, const std::vector<bxTest*>& registered) {
    std::unordered_map<std::string_view, std::vector<bxTest*>> equal; // the first one at the back
    for (auto test = registered.rbegin(); test != registered.rend(); ++test)
        equal[(*test)->name.view()].push_back(*test);
    for (bxTest*& place : list) {
        std::vector<bxTest*>& remaining = equal[place->name.view()];
        place = remaining.back();
        remaining.pop_back();
    }
}

} // namespace

void bxTestList::sortFunc() {
    const std::vector<bxTest*> registered(begin(), end());
    sort(aless);
    keepEqualInOrder(*this, registered);
}

namespace {

/** Whether the test registers the parameter, by itself or behind its cache iterator. */
bool uses(const bxTest& test, const bxParameter* wanted) {
    for (const bxParameter* parm : test.parms)
        if (parm == wanted || (parm == test.cacheIter && test.cacheIter->cacheParm() == wanted))
            return true;
    return false;
}

/** Lets the test register its parameters and moves those that it uses from `open` to `used`. */
void markUsed(bxTest& test, std::vector<bxParameter*>& open, std::vector<bxParameter*>& used) {
    test.startAndStop();
    for (auto it = open.begin(); it != open.end();) {
        if (uses(test, *it)) {
            used.push_back(*it);
            it = open.erase(it);
        } else {
            ++it;
        }
    }
    test.parms.erase(test.parms.begin(), test.parms.end());
    delete test.cacheIter;
    test.cacheIter = nullptr;
}

} // namespace

void bxTestList::selectCommonParms(bxConditions& conditions, bxList<bxParameter*>& common) {
    std::vector<bxParameter*> open(common.begin(), common.end());
    std::vector<bxParameter*> used;
    for (bxTest* test : *this) {
        if (open.empty())
            break;
        if (test->tobeRun(conditions))
            markUsed(*test, open, used);
    }
    for (auto it = common.begin(); it != common.end();)
        it = std::find(open.begin(), open.end(), *it) != open.end() ? common.erase(it) : ++it;
}
