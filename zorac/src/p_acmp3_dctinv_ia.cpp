// The inverse hybrid filter bank of MP3.
#include "zorcore.h"

#include "kv.h"
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

class TimacDCTInv : public Mp3Test {
  public:
    using Mp3Test::Mp3Test;

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
        if (!makeVector(s_src, kv32s, mp3Lines) || !makeVector(s_dst, kv32s, mp3Lines, 1) ||
            !makeVector(s_overlap, kv32s, mp3Lines, 2))
            return false;
        std::fill(s_src.p32s + s_bound, s_src.p32s + mp3Lines, 0);
        return true;
    }

    bool flushData() override {
        deleteVectors({&s_src, &s_dst, &s_overlap});
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
