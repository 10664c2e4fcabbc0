// A program without a library core: the keys -T and -N do not exist, nor do -q and -Q, since no unit asks for
// them. It brings its keys and its timing method along.
#include "bx.h"

namespace {

bxResult pricedLoop(int count, long long* clocks) {
    *clocks = 50LL * count;
    return OK;
}

bxResult pricedStat(int* calls, long long* clocks) {
    *clocks = 50LL * *calls;
    return OK;
}

void useStatistic(bxTool& tool) {
    tool.setMethodStat(7, 350);
}

[[maybe_unused]] const int s_registered[] = {
    bxCpuTicker::m_freqMHz = 1000,
    bxRegTest(new bxTest(pricedLoop, pricedStat, "plainSum", __FILE__, "TimPlain")),
    bxRegTimingMethod(useStatistic),
    bxRegCmdLine("-B -fplain"),
    bxRegCmdLine("-LP"),
};

} // namespace
