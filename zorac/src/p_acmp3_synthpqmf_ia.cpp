// Polyphase synthesis of MP3 in fixed point.
#include "zorcore.h"

#include "mp3suite.h"
#include "zorac.h"

namespace {

constexpr int subbandLength = 32;
constexpr int ringLength = 512;

kvVector s_srcDst, s_dst;
int s_channels;
int s_row;

bxIterator<int> s_mode(1, "", "");

class Timacmp4_SynthPQMF : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setParm(s_mode, "mode", "interleave", {1, 2});
        regParm(s_mode);
        return true;
    }

    bool initData() override {
        m_divisor = subbandLength;
        s_channels = s_mode.value();
        return within({{s_mode, 1, 2}}) && makeFirst(s_srcDst, kv32s, ringLength * s_channels) &&
               make(s_dst, kv16s, subbandLength * s_channels);
    }
};

int tcall_zorsSynthPQMF_MP3_32s16s() {
    return zorsSynthPQMF_MP3_32s16s(s_srcDst.p32s, s_dst.p16s, &s_row, s_channels);
}

int tinit_zorsSynthPQMF_MP3_32s16s() {
    s_row = 0;
    return 0;
}

KV_REG_I(Timacmp4_SynthPQMF, zorsSynthPQMF_MP3_32s16s)

} // namespace
