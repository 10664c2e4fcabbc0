// The power law of the quantisers.
#include "zorcore.h"

#include "scalarloop.h"
#include "zors.h"

#include <climits>

namespace {

kvVector s_src, s_dst;
int s_len;

bxStepIterator<int> s_length(0, "", "");
kvScaleIterator s_scale;

class TimAdd : public ScalarLoopTest {
  public:
    using ScalarLoopTest::ScalarLoopTest;

    bool canStart() override {
        setRangeParm(s_length, "Length", "length of the vectors", 128, 1100, '*', 2);
        regParm(s_length);
        regScale(s_scale);
        return true;
    }

  protected:
    bool createData() override {
        constexpr double largestLevel = 8191; // of the quantiser
        const kvType from = m_func.type(1), to = m_func.type(2);
        m_divisor = s_len = s_length.value();
        if (!within({{s_length, 1, INT_MAX}}) || !makeFirst(s_src, from, s_len) ||
            !make(s_dst, to == kvUndef ? from : to, s_len))
            return false;
        s_src.setRandom(-largestLevel, largestLevel);
        return true;
    }
};

int tcall_zorsPow34_32f() {
    return zorsPow34_32f(s_src.p32f, s_dst.p32f, s_len);
}

int tcall_zorsPow34_32f16s() {
    return zorsPow34_32f16s(s_src.p32f, s_dst.p16s, s_len);
}

int tcall_zorsPow43_16s32f() {
    return zorsPow43_16s32f(s_src.p16s, s_dst.p32f, s_len);
}

KV_REG(TimAdd, zorsPow34_32f)
KV_REG(TimAdd, zorsPow34_32f16s)
KV_REG(TimAdd, zorsPow43_16s32f)

} // namespace
