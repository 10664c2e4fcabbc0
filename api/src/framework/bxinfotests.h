/** \file
 * Tests that measure nothing and report what the measurements depend on.
 */
#ifndef BXINFOTESTS_H
#define BXINFOTESTS_H

#include "framework/bxtest.h"

/** A test whose loop prints a report. */
class __bxInfoTest : public bxTest {
  public:
    __bxInfoTest(bxString testName, bxString path, bxString text);
    void loopData() override;

  protected:
    /** Writes the report to the message stream; called at the error level. */
    virtual void printInformation() = 0;
};

/** The processor, as the CPUID instruction describes it. */
class __bxQuarnCpuTest : public __bxInfoTest {
  public:
    using __bxInfoTest::__bxInfoTest;

  protected:
    void printInformation() override;
};

/** The operating system. */
class __bxOSTest : public __bxInfoTest {
  public:
    using __bxInfoTest::__bxInfoTest;

  protected:
    void printInformation() override;
};

/** The name of the computer. */
class __bxHostTest : public __bxInfoTest {
  public:
    using __bxInfoTest::__bxInfoTest;

  protected:
    void printInformation() override;
};

#endif
