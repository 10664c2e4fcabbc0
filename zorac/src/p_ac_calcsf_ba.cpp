// Gains of scale factors.
#include "zorcore.h"

#include "scalarloop.h"
#include "zors.h"

#include <climits>

namespace {

kvVector s_factors, s_gains;
int s_len, s_offset;

kvScaleIterator s_scale;
bxStepIterator<int> s_length(0, "", ""), s_offsets(0, "", "");

class TimCalc : public ScalarLoopTest {
  public:
    using ScalarLoopTest::ScalarLoopTest;

    bool canStart() override {
        setRangeParm(s_length, "Lenght of vector", "length of the vectors", 100, 200, '+', 50);
        setRangeParm(s_offsets, "Offset", "offset of the scale factors", 6, 10, '+', 2);
        regParm(s_length);
        regParm(s_offsets);
        regScale(s_scale);
        return true;
    }

  protected:
    bool createData() override {
        m_divisor = s_len = s_length.value();
        s_offset = s_offsets.value();
        if (!within({{s_length, 1, INT_MAX}, {s_offsets, -SHRT_MAX, SHRT_MAX}}) ||
            !makeFirst(s_factors, kv16s, s_len) || !make(s_gains, kv32f, s_len))
            return false;
        s_factors.setRandom(0, 60);
        return true;
    }
};

int tcall_zorsCalcSF_16s32f() {
    return zorsCalcSF_16s32f(s_factors.p16s, s_offset, s_gains.p32f, s_len);
}

KV_REG(TimCalc, zorsCalcSF_16s32f)

} // namespace
