#include "framework/bxtestcalls.h"

#include "framework/bxtest.h"
#include "framework/bxtraced.h"
#include "timing/bxcallwatch.h"
#include "timing/bxcoldcall.h"
#include "timing/bxsinglecalls.h"

#include <algorithm>

namespace {

bxResult graded(int status) {
    return bxTool::m_pCheckStatus ? bxTool::m_pCheckStatus(status) : OK;
}

} // namespace

bxCallFigures bxTimeCallsOfTest(bxTest& test) {
    bxTool& tool = test.tool;
    bxCallFigures figures;
    bxPreparedCall function{test.funcCall, test.initFunc, tool.includeDataSet};
    if (!function.call) {
        figures.single.problem = tool.singleCalls > 0 ? "nocall" : "";
        figures.first.problem = tool.coldCalls ? "nocall" : "";
        return figures;
    }
    if (g_callWatch.clobbers())
        function.call = bxCallWatch::shield(function.call);
    int status = 0;
    if (tool.singleCalls > 0) {
        figures.single = bxTraced("timeSingleCalls", [&] {
            return bxTimeSingleCalls(function, tool.singleCalls, bxTool::m_priority, status);
        });
        figures.result = graded(status);
    }
    if (tool.coldCalls) {
        figures.first =
            bxTraced("timeColdCalls", [&] { return bxTimeColdCalls(function, bxTool::m_priority, status); });
        figures.result = std::max(figures.result, graded(status));
    }
    // Whatever the clocks of the figure are made of.
    figures.single.scale(tool.preciseFigure.coreClocksPerTick);
    figures.first.clocks *= tool.preciseFigure.coreClocksPerTick;
    return figures;
}
