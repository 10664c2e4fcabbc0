// Inverse quantisation of AAC.
#include "zorcore.h"

#include "aacparms.h"
#include "kv.h"
#include "suitedata.h"
#include "zorac.h"

#include <algorithm>

namespace {

kvVector s_coefs, s_scaleFactors, s_sfbCb;
int s_numWinGrp;
int s_winGrpLen[8];
int s_maxSfb;
int s_winLen;
int s_value;
int s_divisor = 1;

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
        s_divisor = frame.lines();
        std::fill_n(s_winGrpLen, frame.windows, 1);
        const int bands = s_numWinGrp * s_maxSfb;
        s_coefs.init(kv32s);
        return s_coefs.createVector(s_divisor, smConst, 3, 0) &&
               makeVector(s_scaleFactors, kv16s, bands, 1) && makeVector(s_sfbCb, kv8u, bands, 2);
    }

    bool flushData() override {
        for (kvVector* vector : {&s_coefs, &s_scaleFactors, &s_sfbCb})
            vector->deleteVector();
        return true;
    }

    double getDivisor() override { return s_divisor; }
};

int tcall_zorsQuantInv_AAC_32s_I() {
    return zorsQuantInv_AAC_32s_I(s_coefs.p32s, s_scaleFactors.p16s, s_sfbCb.p8u, s_numWinGrp, s_winGrpLen,
                                  s_maxSfb, aacSamplingRate, s_winLen);
}

/** The function works in place: the lines get their value again. */
int tinit_zorsQuantInv_AAC_32s_I() {
    std::fill_n(s_coefs.p32s, s_divisor, s_value);
    return 0;
}

KV_REG_I(TimacAACQuantInv, zorsQuantInv_AAC_32s_I)

} // namespace
