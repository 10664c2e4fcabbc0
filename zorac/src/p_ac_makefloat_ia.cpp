// Conversion of samples to float.
#include "zorcore.h"

#include "suiteparms.h"
#include "suitetest.h"
#include "zors.h"

#include <climits>

namespace {

kvVector s_src, s_dst;
int s_len;

bxStepIterator<int> s_length(0, "", "");

class Timac_MakeFloat : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setRangeParm(s_length, "Length", "length of the vectors", 64, 4096, '*', 2);
        regCacheParm(s_length);
        return true;
    }

    bool initData() override {
        m_divisor = s_len = s_length.value();
        return within({{s_length, 1, INT_MAX}}) && makeFirst(s_src, kv16s, s_len) &&
               make(s_dst, kv32f, s_len);
    }
};

int tcall_zorsMakeFloat_16s32f() {
    return zorsMakeFloat_16s32f(s_src.p16s, s_dst.p32f, s_len);
}

KV_REG(Timac_MakeFloat, zorsMakeFloat_16s32f)

} // namespace
