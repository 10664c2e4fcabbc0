// The synthesis filter of DTS.
#include "zorcore.h"

#include "suiteparms.h"
#include "suitetest.h"
#include "zorac.h"

namespace {

constexpr int calls = 64;      /**< of a subframe */
constexpr int bands = 32;      /**< sub-band samples of a call */
constexpr int blockSize = 128; /**< distance of the blocks of two calls, floats */

kvVector s_src, s_dst, s_memory;
ZorsSynthesisFilterState_DTS_32f* s_state;
const Zor32f* s_srcStart;
Zor32f* s_dstStart;
int s_mode;

bxStepIterator<int> s_modes(0, "", ""), s_offsets(0, "", "");

class kvsSynthesisFilter_DTS : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setRangeParm(s_modes, "mode", "set of taps", 0, 1, '+', 1);
        setRangeParm(s_offsets, "offset", "floats that input and output are moved by", 0, 3, '+', 3);
        regParm(s_modes);
        regParm(s_offsets);
        return true;
    }

    bool initData() override {
        if (!within({{s_modes, 0, 1}, {s_offsets, 0, maxOffset}}))
            return false;
        const int offset = s_offsets.value(), len = calls * blockSize + offset;
        int sizeByte = 0;
        s_mode = s_modes.value();
        m_divisor = calls * bands;
        if (!makeFirst(s_src, kv32f, len) || !make(s_dst, kv32f, len) ||
            zorsSynthesisFilterGetSize_DTS_32f(&sizeByte) != zorStsNoErr ||
            !makeWork(s_memory, kv8u, sizeByte))
            return false;
        s_src.setRandom(-1, 1);
        s_srcStart = s_src.p32f + offset;
        s_dstStart = s_dst.p32f + offset;
        return zorsSynthesisFilterInit_DTS_32f(&s_state, s_memory.p8u) == zorStsNoErr;
    }
};

/** The calls of a subframe; returns the last status that was not 0. */
int x_find_syndts() {
    int status = zorStsNoErr;
    for (int i = 0; i < calls; ++i)
        if (const int one = zorsSynthesisFilter_DTS_32f(s_srcStart + i * blockSize,
                                                        s_dstStart + i * blockSize, s_state, s_mode))
            status = one;
    return status;
}

int tcall_zorsSynthesisFilter_DTS_32f() {
    return x_find_syndts();
}

KV_REG_X(kvsSynthesisFilter_DTS, zorsSynthesisFilter_DTS_32f)

} // namespace
