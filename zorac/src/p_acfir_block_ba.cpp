// Block FIR filter.
#include "zorcore.h"

#include "scalarloop.h"
#include "suitedata.h"
#include "zors.h"

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
        for (kvVector* vector : {&s_src, &s_dst, &s_taps})
            vector->deleteVector();
        if (s_state)
            zorsFIRBlockFree_32f(s_state);
        s_state = nullptr;
        return true;
    }

    double getDivisor() override { return s_len; }

  protected:
    bool createData() override {
        const int order = s_order.value();
        s_len = s_length.value();
        if (!makeVector(s_src, kv32f, s_len) || !makeVector(s_dst, kv32f, s_len, 1) ||
            !makeVector(s_taps, kv32f, order, 2))
            return false;
        s_src.setRandom(-1, 1);
        s_taps.setRandom(-1, 1);
        return zorsFIRBlockInitAlloc_32f(&s_state, s_taps.p32f, order) == zorStsNoErr;
    }
};

int tcall_zorsFIRBlockOne_32f() {
    return zorsFIRBlockOne_32f(s_src.p32f, s_dst.p32f, s_len, s_state);
}

KV_REG(TimFirBlock, zorsFIRBlockOne_32f)

} // namespace
