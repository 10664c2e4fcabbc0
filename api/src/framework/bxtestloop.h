/** \file
 * The combinations of a test's parameter values.
 */
#ifndef BXTESTLOOP_H
#define BXTESTLOOP_H

#include "foundation/bxstring.h"
#include "framework/bxaftermath.h"
#include "timing/bxinstructions.h"
#include "timing/bxresult.h"
#include "timing/bxsteplog.h"

#include <memory>

class bxLayoutFollower;
class bxTest;
class bxTurns;
struct bxLayoutPlace;
struct bxLayoutSpread;

/** Measures a test for every combination of its parameter values, the last parameter varying fastest. */
class bxTestLoop {
  public:
    explicit bxTestLoop(bxTest& test);
    void run();

  private:
    bool next();
    bool nextGuarded();
    void process();
    void checkRegisters();
    /** Outside what is timed; returns the function's status. */
    int callOnce();
    void countInstructions();
    /** Steps through a call, whatever the settings say. */
    void stepThroughCall();
    /** Adds the counted call to the file of the setting, where there is one. */
    void writeSteps();
    /** The parameters of the combination: "Len=64 Type=2". */
    bxString parameterText() const;
    void time();
    void compare(bxTurns& side);
    void follow(bxLayoutFollower& follower);
    bxLayoutSpread otherLayouts() const;
    bxLayoutPlace place() const;
    void finish();
    void countMissing();
    void countAuto(bxResult r) const;
    void restoreTraceStep();

    bxTest& m_test;
    const bxString m_step; /**< trace step that every combination starts from */
    const bxAftermath m_aftermath;
    bool m_produced = false;            /**< the present combination has its values */
    bool m_constDue = true;             /**< the constant description has not been written */
    bxInstructionCount m_instructions;  /**< of a call of the combination */
    int m_number = 0;                   /**< of the combination, from 1 on */
    int m_measured = 0;                 /**< combinations that came to be measured */
    std::unique_ptr<bxStepLog> m_steps; /**< of that call, where they are wanted */
    bool m_dataMissing = false; /**< some combination was passed over because its data could not be had */
};

#endif
