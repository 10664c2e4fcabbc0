// Polyphase analysis of MP3 in fixed point.
#include "zorcore.h"

#include "mp3suite.h"
#include "zorac.h"

#include <algorithm>

namespace {

constexpr int subbands = 32;

kvVector s_src, s_left, s_right;
Zor16s s_state[zorMP3AnalysisState];
int s_layout;

bxMapIterator<int> s_mode(1, "", "");

class TimacPQMF : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setMapParm<int>(s_mode, "mode", "layout of the channels", {{1, "notInterleaved"}, {2, "interleaved"}},
                        {1, 2});
        regParm(s_mode);
        return true;
    }

    bool initData() override {
        m_divisor = subbands;
        s_layout = s_mode.value();
        std::fill_n(s_state, zorMP3AnalysisState, Zor16s{0});
        return makeFirst(s_src, kv16s, 2 * subbands) && make(s_left, kv32s, subbands) &&
               make(s_right, kv32s, subbands);
    }
};

int tcall_zorsAnalysisPQMF_MP3_16s32s() {
    return zorsAnalysisPQMF_MP3_16s32s(s_src.p16s, s_left.p32s, s_right.p32s, s_state, s_layout);
}

KV_REG(TimacPQMF, zorsAnalysisPQMF_MP3_16s32s)

} // namespace
