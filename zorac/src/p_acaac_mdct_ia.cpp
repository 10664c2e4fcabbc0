// The transforms of AAC.
#include "zorcore.h"

#include "aacparms.h"
#include "suitetest.h"
#include "zorac.h"

namespace {

constexpr int vectorLength = 2048;
constexpr int winShape = 0;

kvVector s_src, s_dst, s_overlap, s_buffer;
int s_sequence;

aacWinSeqItr s_winSequence;

class TimaacMDCT : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        m_forward = name.find("Fwd") >= 0;
        s_winSequence.init({aacWinShort, aacWinLong});
        regParm(s_winSequence);
        return true;
    }

    bool initData() override {
        s_sequence = s_winSequence.value();
        m_divisor = m_forward && s_sequence == aacWinShort ? 128 : 1024;
        return make(s_src, kv32s, vectorLength) && make(s_dst, m_forward ? kv32s : kv16s, vectorLength) &&
               make(s_overlap, kv32s, vectorLength) && makeWork(s_buffer, kv32s, vectorLength);
    }

  private:
    bool m_forward = false;
};

int tcall_zorsMDCTFwd_AAC_32s() {
    return zorsMDCTFwd_AAC_32s(s_src.p32s, s_dst.p32s, s_overlap.p32s, s_sequence, winShape, winShape,
                               s_buffer.p32s);
}

int tcall_zorsMDCTInv_AAC_32s16s() {
    return zorsMDCTInv_AAC_32s16s(s_src.p32s, s_dst.p16s, s_overlap.p32s, s_sequence, winShape, winShape,
                                  s_buffer.p32s);
}

KV_REG(TimaacMDCT, zorsMDCTFwd_AAC_32s)
KV_REG(TimaacMDCT, zorsMDCTInv_AAC_32s16s)

} // namespace
