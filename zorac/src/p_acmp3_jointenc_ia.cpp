// Joint stereo encoding of MP3.
#include "zorcore.h"

#include "mp3suite.h"
#include "zorac.h"

#include <algorithm>

namespace {

constexpr int scaleFactors = 36;

kvVector s_left, s_right, s_scaleFactorR;
ZorMP3FrameHeader s_header;
ZorMP3SideInfo s_sideInfo[2];
int s_isSfbBound[3];

acIdItr s_id;
acBlockItr s_block;
acModeItr s_mode;

class TimacJointEnc : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        s_id.init({acIdMpeg1, acIdMpeg2});
        s_block.init({acBlockShort, acBlockLong});
        s_mode.init({acModeMs, acModeIntensity});
        regParm(s_id);
        regParm(s_block);
        regParm(s_mode);
        return true;
    }

    bool initData() override {
        m_divisor = mp3Lines;
        if (!make(s_left, kv32s, mp3Lines) || !make(s_right, kv32s, mp3Lines) ||
            !make(s_scaleFactorR, kv8s, scaleFactors))
            return false;
        s_header = mp3Header(s_id.value(), s_mode.value());
        std::fill_n(s_sideInfo, 2, mp3SideInfo(s_block.value()));
        std::fill_n(s_isSfbBound, 3, 0);
        return true;
    }
};

int tcall_zorsJointStereoEncode_MP3_32s_I() {
    return zorsJointStereoEncode_MP3_32s_I(s_left.p32s, s_right.p32s, s_scaleFactorR.p8s, &s_header,
                                           s_sideInfo, s_isSfbBound);
}

KV_REG(TimacJointEnc, zorsJointStereoEncode_MP3_32s_I)

} // namespace
