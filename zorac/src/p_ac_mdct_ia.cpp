// The generic modified discrete cosine transform.
#include "zorcore.h"

#include "suiteparms.h"
#include "suitetest.h"
#include "zorac.h"

#include <climits>

namespace {

kvVector s_src, s_dst, s_buffer;
ZorsMDCTFwdState_32f* s_fwd32f;
ZorsMDCTInvState_32f* s_inv32f;
ZorsMDCTFwdState_16s* s_fwd16s;
int s_len, s_scaleFactor;

bxStepIterator<int> s_length(0, "", "");
kvScaleIterator s_scale;

class Timac_MDCT : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setRangeParm(s_length, "Length", "samples of a frame", 64, 4096, '*', 2);
        s_scale.init(name);
        regParm(s_length);
        if (s_scale.isScaled())
            regParm(s_scale);
        return true;
    }

    bool initData() override {
        m_divisor = s_len = s_length.value();
        s_scaleFactor = s_scale.isScaled() ? s_scale.value() : 0;
        return within({{s_length, 1, INT_MAX}}) && (!s_scale.isScaled() || within({{s_scale, -31, 31}})) &&
               createVectors() && createSpec();
    }

    bool flushData() override {
        if (s_fwd32f)
            zorsMDCTFwdFree_32f(s_fwd32f);
        if (s_inv32f)
            zorsMDCTInvFree_32f(s_inv32f);
        if (s_fwd16s)
            zorsMDCTFwdFree_16s(s_fwd16s);
        s_fwd32f = nullptr;
        s_inv32f = nullptr;
        s_fwd16s = nullptr;
        return PerElementTest::flushData();
    }

  private:
    /** In place a transform is fed its own output, call after call; only zeros neither grow nor vanish. */
    bool createVectors() {
        const kvType type = m_func.type(1);
        if (!makeFirst(s_src, type, s_len))
            return false;
        if (m_func.inplace()) {
            s_src.setConst(0, 0);
            return true;
        }
        return make(s_dst, type, s_len);
    }

    bool createSpec() {
        if (m_func.type(1) == kv16s)
            return create(s_fwd16s, zorsMDCTFwdInitAlloc_16s, zorsMDCTFwdGetBufSize_16s,
                          "zorsMDCTFwdInitAlloc_16s");
        if (name.find("Inv") >= 0)
            return create(s_inv32f, zorsMDCTInvInitAlloc_32f, zorsMDCTInvGetBufSize_32f,
                          "zorsMDCTInvInitAlloc_32f");
        return create(s_fwd32f, zorsMDCTFwdInitAlloc_32f, zorsMDCTFwdGetBufSize_32f,
                      "zorsMDCTFwdInitAlloc_32f");
    }

    template <class State>
    bool create(State*& state, ZorStatus (*initAlloc)(State**, int),
                ZorStatus (*getBufSize)(const State*, int*), const char* initName) {
        int sizeByte = 0;
        return built(initAlloc(&state, s_len), initName) && getBufSize(state, &sizeByte) == zorStsNoErr &&
               makeWork(s_buffer, kv8u, sizeByte);
    }
};

int tcall_zorsMDCTFwd_32f() {
    return zorsMDCTFwd_32f(s_src.p32f, s_dst.p32f, s_fwd32f, s_buffer.p8u);
}

int tcall_zorsMDCTInv_32f() {
    return zorsMDCTInv_32f(s_src.p32f, s_dst.p32f, s_inv32f, s_buffer.p8u);
}

int tcall_zorsMDCTFwd_32f_I() {
    return zorsMDCTFwd_32f_I(s_src.p32f, s_fwd32f, s_buffer.p8u);
}

int tcall_zorsMDCTInv_32f_I() {
    return zorsMDCTInv_32f_I(s_src.p32f, s_inv32f, s_buffer.p8u);
}

int tcall_zorsMDCTFwd_16s_Sfs() {
    return zorsMDCTFwd_16s_Sfs(s_src.p16s, s_dst.p16s, s_fwd16s, s_scaleFactor, s_buffer.p8u);
}

KV_REG(Timac_MDCT, zorsMDCTFwd_32f)
KV_REG(Timac_MDCT, zorsMDCTInv_32f)
KV_REG(Timac_MDCT, zorsMDCTFwd_32f_I)
KV_REG(Timac_MDCT, zorsMDCTInv_32f_I)
KV_REG(Timac_MDCT, zorsMDCTFwd_16s_Sfs)

} // namespace
