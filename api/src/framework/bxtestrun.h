/** \file
 * The life of a test in a session.
 */
#ifndef BXTESTRUN_H
#define BXTESTRUN_H

#include "framework/bxaftermath.h"
#include "timing/bxresult.h"

class bxException;
class bxTest;

/**
 * One run of a test: title, registration of the parameters, all combinations, result block. It stands
 * outside of what may fault, so it holds what a fault must not take along, and puts right what one leaves
 * behind. Every step of the test runs under a guard, the result block and `endTest` as well.
 */
class bxTestRun {
  public:
    explicit bxTestRun(bxTest& test);

    /** The whole life; UNDEFINED with the test's `result` OK when it stopped at its ini section. */
    bxResult run();
    /** Registration of the parameters only, in silence. */
    void registerOnly();

  private:
    void enter();
    bool proceed();
    void announce();
    void measureAll();
    void report();
    void writeResult();

    void recover(const bxException& fault);

    bxTest& m_test;
    const bxAftermath m_aftermath;
    bool m_announced = false; /**< the title block has been written */
};

#endif
