/** \file
 * The tests of simple functions: they step their parameters, build their vectors in the same step, and show
 * function and values in one line.
 */
#ifndef SCALARLOOP_H
#define SCALARLOOP_H

#include "suiteparms.h"
#include "suitetest.h"

/** Base of the scalar-loop tests. The scale factor is registered last, so that it varies fastest. */
class ScalarLoopTest : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canContinue() override {
        flushData(); // of a combination that was left out
        if (!PerElementTest::canContinue())
            return false;
        m_created = createData();
        return true;
    }
    /** A combination whose data could not be had is passed over. */
    bool initData() override { return m_created; }

    double getFlops() override { return 0; }
    void constToOstrm() override { g_ostrm << PERF << functionTitle() << "\n" << endMessage; }
    void parmsToOstrm() override {
        g_ostrm << functionTitle() << " ";
        PerElementTest::parmsToOstrm();
    }

  protected:
    /** Creates the vectors and states for the current values. */
    virtual bool createData() = 0;

    const bxString& functionTitle() const { return m_title; }

    /** Registers the scale factor; functions that are not scaled have the single value 0. */
    void regScale(kvScaleIterator& scale) {
        scale.init(name);
        regParm(scale);
    }

  private:
    bxString m_title = m_cells.function + "_" + m_cells.types;
    bool m_created = false;
};

#endif
