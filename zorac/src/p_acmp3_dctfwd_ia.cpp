// The forward hybrid filter bank of MP3.
#include "zorcore.h"

#include "mp3suite.h"
#include "zorac.h"

namespace {

kvVector s_src, s_dst, s_overlap;
int s_blockType;
int s_mixedBlock;

acBlockItr s_block;

class TimacDCTFwd : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        s_block.init({acBlockLong, acBlockShort});
        regParm(s_block);
        return true;
    }

    bool initData() override {
        s_blockType = s_block.value() / 16;
        s_mixedBlock = (s_block.value() & 7) != 0;
        m_divisor = mp3Lines;
        return makeFirst(s_src, kv32s, mp3Lines) && make(s_dst, kv32s, mp3Lines) &&
               make(s_overlap, kv32s, mp3Lines);
    }
};

int tcall_zorsMDCTFwd_MP3_32s() {
    return zorsMDCTFwd_MP3_32s(s_src.p32s, s_dst.p32s, s_blockType, s_mixedBlock, s_overlap.p32s);
}

KV_REG(TimacDCTFwd, zorsMDCTFwd_MP3_32s)

} // namespace
