/** \file
 * The instructions of a call, beside its figure.
 */
#include "data/bxalloc.h"
#include "framework/bxrun.h"
#include "framework/bxstepfile.h"
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
    const bxTool& tool = m_test.tool;
    if (!tool.countInstructions)
        return;
    if (!tool.stepsFile.empty() && g_run.steps && !m_steps)
        m_steps = std::make_unique<bxStepLog>(tool.mostInstructions);
    stepThroughCall();
}

void bxTestLoop::stepThroughCall() {
    const bxTool& tool = m_test.tool;
    if (!m_test.funcCall) {
        m_instructions.problem = "nocall";
        return;
    }
    callOnce(); // binds what is bound at the first call
    bxTraced("countInstructions", [this, &tool] {
        const bxCallScope scope(bxCallScope::called);
        if (m_test.initFunc)
            m_test.initFunc();
        if (tool.includeDataSet)
            bxResetAllVectors();
        m_instructions = bxCountInstructions(m_test.funcCall, tool.mostInstructions, m_steps.get());
    });
}

bxString bxTestLoop::parameterText() const {
    bxString text;
    for (const bxParameter* parm : m_test.parms)
        text << (text.empty() ? "" : " ") << parm->name() << (parm->name().empty() ? "" : "=")
             << parm->valueString();
    if (m_test.cacheIter)
        text << " " << m_test.cacheIter->getComment();
    return text;
}

void bxTestLoop::writeSteps() {
    const bxTool& tool = m_test.tool;
    if (tool.stepsFile.empty() || m_instructions.text().empty())
        return;
    const bxStepRecord record{m_test.name,    parameterText(),    m_test.getFlops(),
                              m_instructions, tool.preciseFigure, m_steps.get()};
    if (!bxStepFile::add(record))
        bxTest::reportError("-- The file of the steps cannot be written\n", FAIL);
}
