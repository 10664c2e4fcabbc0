// Frequency-domain prediction of AAC main profile.
#include "zorcore.h"

#include "scalarloop.h"
#include "zorac.h"

#include <climits>

namespace {

constexpr int bandWidth = 32;

kvVector s_src, s_dst, s_bandOffset, s_predictionUsed;
ZorsFDPState_32f* s_state;
int s_numBands, s_len;

kvScaleIterator s_scale;
bxIterator<int> s_length(0, "", "");

class TimFDP : public ScalarLoopTest {
  public:
    using ScalarLoopTest::ScalarLoopTest;

    bool canStart() override {
        setParm(s_length, "Length", "lines of a frame", {1024});
        regParm(s_length);
        regScale(s_scale);
        return true;
    }

    bool flushData() override {
        if (s_state)
            zorsFDPFree_32f(s_state);
        s_state = nullptr;
        return ScalarLoopTest::flushData();
    }

  protected:
    bool createData() override {
        if (!within({{s_length, 1, INT_MAX - bandWidth}}))
            return false;
        m_divisor = s_len = s_length.value();
        s_numBands = (s_len + bandWidth - 1) / bandWidth;
        return makeFirst(s_src, kv32f, s_len) && make(s_dst, kv32f, s_len) &&
               make(s_bandOffset, kv32s, s_numBands + 1) && make(s_predictionUsed, kv8u, s_numBands) &&
               fill();
    }

  private:
    /**
     * Every band is predicted. The spectrum is small enough for the energies to stay below the threshold from
     * which lines are predicted: in place, a frame is the next one's prediction error, and would grow
     * otherwise.
     */
    bool fill() {
        constexpr double small = 0.25;
        for (int band = 0; band <= s_numBands; ++band)
            s_bandOffset.p32s[band] = band < s_numBands ? band * bandWidth : s_len;
        s_predictionUsed.setConst(1, 0);
        s_src.setRandom(-small, small);
        return built(zorsFDPInitAlloc_32f(&s_state, s_len), "zorsFDPInitAlloc_32f");
    }
};

int tcall_zorsFDPFwd_32f() {
    return zorsFDPFwd_32f(s_src.p32f, s_dst.p32f, s_bandOffset.p32s, s_predictionUsed.p8u, s_numBands,
                          s_state);
}

int tcall_zorsFDPInv_32f_I() {
    return zorsFDPInv_32f_I(s_src.p32f, s_bandOffset.p32s, s_predictionUsed.p8u, s_numBands, s_state);
}

KV_REG(TimFDP, zorsFDPFwd_32f)
KV_REG(TimFDP, zorsFDPInv_32f_I)

} // namespace
