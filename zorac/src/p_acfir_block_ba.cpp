// Block FIR filter.
#include "zorcore.h"

#include "scalarloop.h"
#include "zors.h"

#include <climits>

namespace {

kvVector s_src, s_dst, s_taps;
ZorsFIRBlockState_32f* s_state;
int s_len;

kvScaleIterator s_scale;
bxStepIterator<int> s_length(0, "", ""), s_order(0, "", "");

class TimFirBlock : public ScalarLoopTest {
  public:
    using ScalarLoopTest::ScalarLoopTest;

    bool canStart() override {
        setRangeParm(s_length, "Length", "samples of a block", 1024, 32768, '*', 4);
        setRangeParm(s_order, "Order", "number of taps", 1, 8, '+', 1);
        regParm(s_length);
        regParm(s_order);
        regScale(s_scale);
        return true;
    }

    bool flushData() override {
        if (s_state)
            zorsFIRBlockFree_32f(s_state);
        s_state = nullptr;
        return ScalarLoopTest::flushData();
    }

  protected:
    bool createData() override {
        const int order = s_order.value();
        m_divisor = s_len = s_length.value();
        if (!within({{s_length, 1, INT_MAX}, {s_order, 1, INT_MAX}}) || !makeFirst(s_src, kv32f, s_len) ||
            !make(s_dst, kv32f, s_len) || !make(s_taps, kv32f, order))
            return false;
        s_src.setRandom(-1, 1);
        s_taps.setRandom(-1, 1);
        return built(zorsFIRBlockInitAlloc_32f(&s_state, s_taps.p32f, order), "zorsFIRBlockInitAlloc_32f");
    }
};

int tcall_zorsFIRBlockOne_32f() {
    return zorsFIRBlockOne_32f(s_src.p32f, s_dst.p32f, s_len, s_state);
}

KV_REG(TimFirBlock, zorsFIRBlockOne_32f)

} // namespace
