// The psychoacoustic model and the quantiser of MP3.
#include "zorcore.h"

#include "mp3suite.h"
#include "zorac.h"

#include <algorithm>

namespace {

constexpr int vectorLength = 4608;
constexpr int scaleFactors = 4 * zorMP3ScaleFactors;
constexpr float ratio = 0.05f; // noise that the quantiser may make, to energy
constexpr float entropy = 600; // bits of a granule of one channel

kvVector s_spectrum, s_pcm, s_work, s_scaleFactors;
ZorMP3FrameHeader s_header;
ZorMP3SideInfo s_sideInfo[4];
ZorMP3PsychInfo s_psychInfo[4];
int s_countOneLen[4];
int s_hufSize[4];
int s_reservoir;

acIdItr s_id;
acBlockItr s_block;
acModeItr s_mode;

/** What the model might say of noise; it is the quantiser's input and the model's output. */
void fillPsychInfo() {
    for (ZorMP3PsychInfo& info : s_psychInfo) {
        std::fill_n(info.ratioLong, 22, ratio);
        std::fill_n(info.ratioShort[0], 3 * 13, ratio);
        info.perceptualEntropy = entropy;
    }
}

class TimacPsych : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        const bool quantise = name.find("Quantize") >= 0;
        s_id.init({acIdMpeg1, acIdMpeg2});
        s_block.init({acBlockNormal});
        if (quantise)
            s_mode.init({acModeMono, acModeStereo});
        else
            s_mode.init({acModeStereo, acModeJoint});
        regParm(s_id);
        regParm(s_block);
        regParm(s_mode);
        return true;
    }

    bool initData() override {
        m_divisor = mp3Lines;
        if (!makeFirst(s_spectrum, kv32s, vectorLength) || !make(s_pcm, kv16s, vectorLength) ||
            !makeWork(s_work, kv32s, zorMP3WorkSize) || !make(s_scaleFactors, kv8s, scaleFactors))
            return false;
        s_work.setConst(0, 0);
        s_scaleFactors.setConst(0, 0);
        s_header = mp3Header(s_id.value(), s_mode.value());
        std::fill_n(s_sideInfo, 4, mp3SideInfo(s_block.value()));
        fillPsychInfo();
        s_reservoir = 0;
        return true;
    }
};

int tcall_zorsPsychoacousticModelTwo_MP3_16s() {
    return zorsPsychoacousticModelTwo_MP3_16s(s_pcm.p16s, s_psychInfo, s_sideInfo, &s_header, s_work.p32s);
}

int tcall_zorsQuantize_MP3_32s_I() {
    return zorsQuantize_MP3_32s_I(s_spectrum.p32s, s_scaleFactors.p8s, s_countOneLen, s_hufSize, s_psychInfo,
                                  s_sideInfo, &s_header, &s_reservoir, s_work.p32s);
}

KV_REG(TimacPsych, zorsPsychoacousticModelTwo_MP3_16s)
KV_REG(TimacPsych, zorsQuantize_MP3_32s_I)

} // namespace
