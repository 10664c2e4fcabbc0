// Inverse quantisation of AAC.
#include "zorcore.h"

#include "aacparms.h"
#include "suitetest.h"
#include "zorac.h"

#include <algorithm>

namespace {

constexpr int largest = 8191; /**< quantised value of the standard */

kvVector s_coefs, s_scaleFactors, s_sfbCb;
int s_numWinGrp;
int s_winGrpLen[8];
int s_maxSfb;
int s_winLen;
int s_lines;
int s_value;

aacWinSeqItr s_winSequence;
bxIterator<int> s_dataValue(3, "", "");

class TimacAACQuantInv : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        s_winSequence.init({aacWinShort, aacWinLong});
        setParm(s_dataValue, "dataValue", "value of the quantised lines", {3, 15, 63, 127, 255});
        regParm(s_winSequence);
        regParm(s_dataValue);
        return true;
    }

    bool initData() override {
        const AacFrame frame = aacFrame(s_winSequence.value());
        s_winLen = frame.winLen;
        s_numWinGrp = frame.windows;
        s_maxSfb = frame.maxSfb;
        s_value = s_dataValue.value();
        m_divisor = s_lines = frame.lines();
        std::fill_n(s_winGrpLen, frame.windows, 1);
        const int bands = s_numWinGrp * s_maxSfb;
        if (!within({{s_dataValue, -largest, largest}}) || !makeFirst(s_coefs, kv32s, m_divisor))
            return false;
        s_coefs.setConst(3, 0);
        return make(s_scaleFactors, kv16s, bands) && make(s_sfbCb, kv8u, bands);
    }
};

int tcall_zorsQuantInv_AAC_32s_I() {
    return zorsQuantInv_AAC_32s_I(s_coefs.p32s, s_scaleFactors.p16s, s_sfbCb.p8u, s_numWinGrp, s_winGrpLen,
                                  s_maxSfb, aacSamplingRate, s_winLen);
}

/** The function works in place: the lines get their value again. */
int tinit_zorsQuantInv_AAC_32s_I() {
    std::fill_n(s_coefs.p32s, s_lines, s_value);
    return 0;
}

KV_REG_I(TimacAACQuantInv, zorsQuantInv_AAC_32s_I)

} // namespace
