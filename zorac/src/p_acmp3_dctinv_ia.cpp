// The inverse hybrid filter bank of MP3.
#include "zorcore.h"

#include "mp3suite.h"
#include "zorac.h"

#include <algorithm>

namespace {

kvVector s_src, s_dst, s_overlap;
int s_bound;
int s_prevBlocks;
int s_blockType;
int s_mixedBlock;

bxStepIterator<int> s_nonZeroBound(9, "", "");
acBlockItr s_block;

class TimacDCTInv : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setRangeParm(s_nonZeroBound, "nonZeroBound", "lines that are not 0", 9, mp3Lines, '*', 2);
        s_block.init({acBlockLong, acBlockShort});
        regParm(s_nonZeroBound);
        regParm(s_block);
        return true;
    }

    bool initData() override {
        s_bound = s_nonZeroBound.value();
        s_blockType = s_block.value() / 16;
        s_mixedBlock = (s_block.value() & 7) != 0;
        m_divisor = s_bound;
        if (!within({{s_nonZeroBound, 1, mp3Lines}}) || !makeFirst(s_src, kv32s, mp3Lines) ||
            !make(s_dst, kv32s, mp3Lines) || !make(s_overlap, kv32s, mp3Lines))
            return false;
        std::fill(s_src.p32s + s_bound, s_src.p32s + mp3Lines, 0);
        return true;
    }
};

int tcall_zorsMDCTInv_MP3_32s() {
    return zorsMDCTInv_MP3_32s(s_src.p32s, s_dst.p32s, s_overlap.p32s, s_bound, &s_prevBlocks, s_blockType,
                               s_mixedBlock);
}

int tinit_zorsMDCTInv_MP3_32s() {
    s_prevBlocks = 0;
    return 0;
}

KV_REG_I(TimacDCTInv, zorsMDCTInv_MP3_32s)

} // namespace
