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

void add(bxTool& tool, const bxString& text) {
    if (!text.empty())
        tool.info << (tool.info.empty() ? "" : " ") << text;
}

} // namespace

bxResult bxTimeCallsOfTest(bxTest& test) {
    bxTool& tool = test.tool;
    bxResult result = UNDEFINED;
    bxPreparedCall function{test.funcCall, test.initFunc, tool.includeDataSet};
    if (function.call && g_callWatch.clobbers())
        function.call = bxCallWatch::shield(function.call);
    // Whatever the clocks of the figure are made of.
    const double clocksPerTick = tool.preciseFigure.coreClocksPerTick;
    int status = 0;
    if (tool.singleCalls > 0) {
        bxCallSpread spread;
        spread.problem = "nocall";
        if (function.call) {
            spread = bxTraced("timeSingleCalls", [&] {
                return bxTimeSingleCalls(function, tool.singleCalls, bxTool::m_priority, status);
            });
            result = std::max(result, graded(status));
        }
        spread.scale(clocksPerTick);
        add(tool, spread.text());
    }
    if (tool.coldCalls) {
        bxColdFigure first;
        first.problem = "nocall";
        if (function.call) {
            first = bxTraced("timeColdCalls",
                             [&] { return bxTimeColdCalls(function, bxTool::m_priority, status); });
            result = std::max(result, graded(status));
        }
        first.clocks *= clocksPerTick;
        add(tool, first.text());
    }
    return result;
}
