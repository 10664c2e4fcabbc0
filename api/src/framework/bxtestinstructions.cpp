/** \file
 * The instructions of a call, beside its figure.
 */
#include "data/bxalloc.h"
#include "framework/bxtest.h"
#include "framework/bxtestloop.h"
#include "framework/bxtraced.h"
#include "timing/bxcallscope.h"

/**
 * Counts before the timing: how often that calls depends on the machine, and a function that goes on from
 * what it left (a filter's state, data in place) would not execute the same instructions in the next run.
 */
void bxTestLoop::countInstructions() {
    m_instructions = {};
    if (!m_test.tool.countInstructions)
        return;
    if (!m_test.funcCall) {
        m_instructions.problem = "nocall";
        return;
    }
    callOnce(); // binds what is bound at the first call
    bxTraced("countInstructions", [this] {
        const bxCallScope scope(bxCallScope::called);
        if (m_test.initFunc)
            m_test.initFunc();
        if (m_test.tool.includeDataSet)
            bxResetAllVectors();
        m_instructions = bxCountInstructions(m_test.funcCall, m_test.tool.mostInstructions);
    });
}
