// Requantisation of MP3.
#include "zorcore.h"

#include "mp3suite.h"
#include "tables/kvsfb_mp3.h"
#include "zorac.h"

#include <algorithm>

namespace {

constexpr int scaleFactors = 2 * zorMP3ScaleFactors;

kvVector s_srcDst;
int s_len[2];
Zor8s s_scaleFactor[scaleFactors];
ZorMP3FrameHeader s_header;
ZorMP3SideInfo s_sideInfo[4]; // two granules of two channels
alignas(64) Zor8u s_buffer[2304];

bxStepIterator<int> s_nonZeroBound(9, "", "");
acIdItr s_id;
acModeItr s_mode;
acBlockItr s_block;

class Timm3ReQnt : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setRangeParm(s_nonZeroBound, "nonZeroBound", "lines that are not 0", 9, mp3Lines, '*', 4);
        s_id.init({acIdMpeg1, acIdMpeg2});
        s_mode.init({acModeStereo, acModeIntensity, acModeMs, acModeMsIntensity, acModeMono});
        s_block.init({acBlockLong, acBlockShort, acBlockMixed});
        regParm(s_nonZeroBound);
        regParm(s_id);
        regParm(s_mode);
        regParm(s_block);
        std::fill_n(s_scaleFactor, scaleFactors, Zor8s{0});
        return true;
    }

    bool initData() override {
        m_divisor = mp3Lines;
        if (!within({{s_nonZeroBound, 0, mp3Lines}}) || !make(s_srcDst, m_func.type(1), 2 * mp3Lines))
            return false;
        std::fill_n(s_len, 2, s_nonZeroBound.value());
        s_header = mp3Header(s_id.value(), s_mode.value());
        std::fill_n(s_sideInfo, 4, mp3SideInfo(s_block.value()));
        return true;
    }
};

int tcall_zorsReQuantize_MP3_32s_I() {
    return zorsReQuantize_MP3_32s_I(s_srcDst.p32s, s_len, s_scaleFactor, s_sideInfo, &s_header, s_buffer);
}

int tcall_zorsReQuantizeSfb_MP3_32s_I() {
    return zorsReQuantizeSfb_MP3_32s_I(s_srcDst.p32s, s_len, s_scaleFactor, s_sideInfo, &s_header, s_buffer,
                                       kvacSfbTableLong, kvacSfbTableShort);
}

KV_REG(Timm3ReQnt, zorsReQuantize_MP3_32s_I)
KV_REG(Timm3ReQnt, zorsReQuantizeSfb_MP3_32s_I)

} // namespace
