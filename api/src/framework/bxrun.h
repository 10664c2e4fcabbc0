/** \file
 * One run of the tests as a value.
 */
#ifndef BXRUN_H
#define BXRUN_H

#include "foundation/bxstring.h"
#include "timing/bxresult.h"

class bxTest;

/** What the session asks of the tests, and where they stand. */
struct bxRun {
    // Settings.
    int hot = 0;            /**< a column "Interest", or hot functions only: bxTest::Hot */
    bool pressing = false;  /**< run only tests that have a section in the ini file */
    bool cache = false;     /**< measure in and out of cache */
    int nameMode = 0;       /**< where lines of parameter names go, bits of bxSessionModes::NameMode */
    bool keepGoing = false; /**< a failure ends its combination, not the test (see bxaftermath.h) */
    bool nameExit = false;  /**< write the names of the parameters and measure nothing */
    int layouts = 1;        /**< of code, data and stack in which each combination is measured */
    int onlyRow = 0;        /**< the only combination of each test that is measured, from 1 on; 0 for all */
    bool steps = true;      /**< counted calls are written step by step, and not only their counts */
    bxString startFunc;     /**< tests are passed over until one whose function name contains it */

    // The result table.
    int parameterColumns = 0; /**< function and parameter columns */
    int resultColumns = 0;

    // Progress.
    bxResult result = UNDEFINED;   /**< of the running test, raised step by step */
    bxTest* currentTest = nullptr; /**< null between tests */

    // Figures of the Auto method.
    long long autoFigures = 0;
    long long shortAutoFigures = 0; /**< of calls too short for it */
    /** Clocks of a call below which the method errs by per cents and more (docs/measurement.md). */
    static constexpr int shortForAuto = 300;
};

/** The present run. Statics of the tests, the list and the session under their given names are views of it.
 */
inline bxRun g_run;

/** A run of its own; at its end the one before is present again. */
class bxRunScope {
  public:
    explicit bxRunScope(const bxRun& run = {}) : m_outer(g_run) { g_run = run; }
    ~bxRunScope() { g_run = m_outer; }
    bxRunScope(const bxRunScope&) = delete;
    bxRunScope& operator=(const bxRunScope&) = delete;

  private:
    const bxRun m_outer;
};

#endif
