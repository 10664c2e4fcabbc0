/** \file
 * The registry of tests and the loop that runs them.
 */
#ifndef BXTESTLIST_H
#define BXTESTLIST_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"
#include "timing/bxresult.h"

#include <ctime>

class bxConditions;
class bxParameter;
class bxTest;

/** The registered tests in the order of registration, or sorted; counts the results of a run. */
class bxTestList : public bxList<bxTest*> {
  public:
    bxTestList();

    /**
     * Runs the selected tests in list order; SIGINT, SIGTERM and SIGHUP end the run after the current
     * measurement. Returns whether any test ended in a failure.
     */
    bool runTests(bxConditions& conditions);

    /** Counts the test that has just run with result r. */
    void count(const bxTest& test, bxResult r);
    /** Counts one result; a specific warning or failure also counts under WARNING or FAIL. */
    void plus(bxResult r);

    /** Sorts the list, stable, by `compareFunc` of the tests: n log n comparisons, whatever they answer. */
    void sortFunc();

    /** Keeps of `common` only the parameters that some selected test registers. */
    void selectCommonParms(bxConditions& conditions, bxList<bxParameter*>& common);

    static constexpr int numCodes = 12;
    time_t startTime;         /**< start of the run */
    time_t endTime;           /**< end of the run */
    int numTests = 0;         /**< results counted */
    int numResults[numCodes]; /**< results counted per code */
    int numInterrupted = 0;   /**< tests that an interruption cut short, under no code */
    /** Name of the signal that ended the run early, or null. */
    const char* interruptedBy = nullptr;

    // Views of the present run.
    static bxString& m_startFunc;
    static bxTest*& m_pCurrentTest;

  private:
    /** Number of tests that a run now would take. */
    int countSelected(bxConditions& conditions) const;
};

/** The one list of registered tests; null until the first registration. */
extern bxTestList* pTestList;

/** Appends a test to the registry, which owns it from then on. Returns 1, to initialise a static. */
int bxRegTest(bxTest* test);

/** Deletes every registered test and the registry. */
void deleteTestList();

/** Whether `a` comes strictly before `b`; false for a null pointer. */
bool aless(bxTest*& a, bxTest*& b);

/** Called once before the tests, before each test and after each test. */
void beforeAll();
void beforeTest();
void afterTest(bxTest* test);

#endif
