// Stereo and noise tools of AAC and the order of its lines.
#include "zorcore.h"

#include "aacparms.h"
#include "suitetest.h"
#include "zorac.h"

#include <algorithm>
#include <climits>

namespace {

constexpr int msMaskPresent = 1; // the bands marked in s_msUsed
constexpr int firstChannel = 0;

kvVector s_left, s_right, s_scaleFactors, s_msUsed, s_sfbCb, s_work;
Zor32u s_randomState;
int s_numWinGrp;
int s_winGrpLen[8];
int s_maxSfb;
int s_winLen;

aacWinSeqItr s_winSequence;
kvScaleIterator s_scaleFactor;

class TimacAACDecodeMs : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        m_isStereo = name.find("IsStereo") >= 0;
        m_noise = name.find("PNS") >= 0;
        m_spectrum = name.find("Spectrum") >= 0;
        if (m_spectrum)
            s_winSequence.init({aacWinShort});
        else
            s_winSequence.init({aacWinShort, aacWinLong});
        regParm(s_winSequence);
        if (m_isStereo) {
            s_scaleFactor.init(name, 1, -1, 9);
            regParm(s_scaleFactor);
        }
        return true;
    }

    bool initData() override {
        const AacFrame frame = aacFrame(s_winSequence.value());
        s_winLen = frame.winLen;
        s_numWinGrp = frame.windows;
        s_maxSfb = frame.maxSfb;
        m_divisor = frame.lines();
        std::fill_n(s_winGrpLen, frame.windows, 1);
        const int bands = frame.windows * frame.maxSfb;
        if (!makeFirst(s_left, kv32s, m_divisor) || !make(s_right, kv32s, m_divisor) ||
            !make(s_scaleFactors, kv16s, bands) || !make(s_msUsed, kv8u, bands) ||
            !make(s_sfbCb, kv8u, bands) || !make(s_work, kv32s, m_divisor))
            return false;
        if (m_isStereo && !within({{s_scaleFactor, SHRT_MIN, SHRT_MAX}}))
            return false;
        // The bands have to be of the kind that the function works on.
        if (m_isStereo) {
            s_scaleFactors.setConst(s_scaleFactor.value(), 0);
            s_sfbCb.setConst(zorAacIntensityInPhase, 0);
        } else if (m_noise) {
            s_sfbCb.setConst(zorAacNoiseBook, 0);
        }
        s_randomState = 1;
        return true;
    }

  private:
    bool m_isStereo = false;
    bool m_noise = false;
    bool m_spectrum = false;
};

int tcall_zorsDecodeMsStereo_AAC_32s_I() {
    return zorsDecodeMsStereo_AAC_32s_I(s_left.p32s, s_right.p32s, msMaskPresent, s_msUsed.p8u, s_sfbCb.p8u,
                                        s_numWinGrp, s_winGrpLen, s_maxSfb, aacSamplingRate, s_winLen);
}

int tcall_zorsDecodeIsStereo_AAC_32s() {
    return zorsDecodeIsStereo_AAC_32s(s_left.p32s, s_right.p32s, s_scaleFactors.p16s, msMaskPresent,
                                      s_msUsed.p8u, s_sfbCb.p8u, s_numWinGrp, s_winGrpLen, s_maxSfb,
                                      aacSamplingRate, s_winLen);
}

int tcall_zorsDecodePNS_AAC_32s() {
    return zorsDecodePNS_AAC_32s(s_left.p32s, s_scaleFactors.p16s, s_sfbCb.p8u, &s_randomState, s_work.p32s,
                                 firstChannel, s_msUsed.p8u, s_numWinGrp, s_winGrpLen, s_maxSfb,
                                 aacSamplingRate, s_winLen);
}

int tcall_zorsDeinterleaveSpectrum_AAC_32s() {
    return zorsDeinterleaveSpectrum_AAC_32s(s_left.p32s, s_right.p32s, s_numWinGrp, s_winGrpLen, s_maxSfb,
                                            aacSamplingRate, s_winLen);
}

KV_REG(TimacAACDecodeMs, zorsDecodeMsStereo_AAC_32s_I)
KV_REG(TimacAACDecodeMs, zorsDecodeIsStereo_AAC_32s)
KV_REG(TimacAACDecodeMs, zorsDecodePNS_AAC_32s)
KV_REG(TimacAACDecodeMs, zorsDeinterleaveSpectrum_AAC_32s)

} // namespace
