// Temporal noise shaping of AAC.
#include "zorcore.h"

#include "aacparms.h"
#include "suitetest.h"
#include "zorac.h"

#include <cstdlib>

namespace {

constexpr int maxWindows = 8;
constexpr int coefsPerWindow = 12;

kvVector s_coefs;
int s_numFilt[maxWindows];
int s_regionLen[maxWindows];
int s_order[maxWindows];
int s_coefRes[maxWindows];
int s_direction[maxWindows];
Zor8s s_filterCoefs[maxWindows * coefsPerWindow];
int s_maxSfb;
int s_winLen;
constexpr int profile = zorAacLC;

aacWinSeqItr s_winSequence;
bxIterator<int> s_tnsOrder(1, "", "");

class TimacAACTns : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        s_winSequence.init({aacWinShort, aacWinLong});
        setParm(s_tnsOrder, "tnsOrder", "order of the filters", {1, 4, 7, 12});
        regParm(s_winSequence);
        regParm(s_tnsOrder);
        return true;
    }

    bool initData() override {
        const AacFrame frame = aacFrame(s_winSequence.value());
        const int order = s_tnsOrder.value();
        if (!within({{s_tnsOrder, 0, 12}, {s_tnsOrder, 0, frame.winLen == 128 ? 7 : 12, INFO}}))
            return false;
        s_winLen = frame.winLen;
        s_maxSfb = frame.maxSfb;
        m_divisor = frame.lines();
        if (!makeFirst(s_coefs, kv32s, m_divisor))
            return false;
        Zor8s* coef = s_filterCoefs;
        for (int window = 0; window < frame.windows; ++window) {
            s_numFilt[window] = 1;
            s_regionLen[window] = frame.maxSfb;
            s_order[window] = order;
            s_coefRes[window] = std::rand() % 2 + 3;
            s_direction[window] = std::rand() % 2;
            for (int i = 0; i < coefsPerWindow; ++i)
                *coef++ = static_cast<Zor8s>(std::rand() % 16 - 8);
        }
        return true;
    }
};

int tcall_zorsDecodeTNS_AAC_32s_I() {
    return zorsDecodeTNS_AAC_32s_I(s_coefs.p32s, s_numFilt, s_regionLen, s_order, s_coefRes, s_filterCoefs,
                                   s_direction, s_maxSfb, profile, aacSamplingRate, s_winLen);
}

int tcall_zorsEncodeTNS_AAC_32s_I() {
    return zorsEncodeTNS_AAC_32s_I(s_coefs.p32s, s_numFilt, s_regionLen, s_order, s_coefRes, s_filterCoefs,
                                   s_direction, s_maxSfb, profile, aacSamplingRate, s_winLen);
}

KV_REG(TimacAACTns, zorsDecodeTNS_AAC_32s_I)
KV_REG(TimacAACTns, zorsEncodeTNS_AAC_32s_I)

} // namespace
