// Long-term prediction of AAC.
#include "zorcore.h"

#include "aacparms.h"
#include "suitetest.h"
#include "zorac.h"

namespace {

constexpr int lag = 1000;
constexpr int coefIndex = 4;
constexpr int winShape = 0;

kvVector s_src, s_dst, s_ltpFlag;
int s_sequence;
int s_maxSfb;

aacWinSeqItr s_winSequence;

class TimacAACLongTerm : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        m_predict = name.find("Predict") >= 0;
        s_winSequence.init({aacWinShort, aacWinLong});
        regParm(s_winSequence);
        return true;
    }

    bool initData() override {
        s_sequence = s_winSequence.value();
        s_maxSfb = aacFrame(s_winSequence.value()).maxSfb;
        m_divisor = m_predict ? 2048 : 1024;
        return makeFirst(s_src, kv32s, m_predict ? 4096 : 1024) && make(s_dst, kv32s, m_divisor) &&
               make(s_ltpFlag, kv8u, s_maxSfb + 1);
    }

  private:
    bool m_predict = false;
};

int tcall_zorsLongTermPredict_AAC_32s() {
    return zorsLongTermPredict_AAC_32s(s_src.p32s, s_dst.p32s, lag, coefIndex, s_sequence, winShape,
                                       winShape);
}

int tcall_zorsLongTermReconstruct_AAC_32s() {
    return zorsLongTermReconstruct_AAC_32s(s_src.p32s, s_dst.p32s, s_ltpFlag.p8u, s_sequence, s_maxSfb,
                                           aacSamplingRate);
}

KV_REG(TimacAACLongTerm, zorsLongTermPredict_AAC_32s)
KV_REG(TimacAACLongTerm, zorsLongTermReconstruct_AAC_32s)

} // namespace
