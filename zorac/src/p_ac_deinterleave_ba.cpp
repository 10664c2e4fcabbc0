// Taking interleaved channels apart.
#include "zorcore.h"

#include "channeldata.h"
#include "scalarloop.h"
#include "zors.h"

namespace {

ChannelData s_data;

kvScaleIterator s_scale;
bxStepIterator<int> s_channels(0, "", ""), s_length(0, "", "");

class TimDeinterleave : public ScalarLoopTest {
  public:
    using ScalarLoopTest::ScalarLoopTest;

    bool canStart() override {
        setRangeParm(s_channels, "Number of channels", "number of channels", 2, 7, '+', 5);
        setRangeParm(s_length, "Length", "samples of a channel", 100, 2048, '+', 1948);
        regParm(s_channels);
        regParm(s_length);
        regScale(s_scale);
        return true;
    }

    double getDivisor() override { return static_cast<double>(s_data.channels) * s_data.len; }

  protected:
    bool createData() override { return s_data.create(*this, m_func.type(1), s_channels, s_length); }
};

int tcall_zorsDeinterleave_16s() {
    return zorsDeinterleave_16s(s_data.together.p16s, s_data.channels, s_data.len, s_data.apart16s);
}

int tcall_zorsDeinterleave_32f() {
    return zorsDeinterleave_32f(s_data.together.p32f, s_data.channels, s_data.len, s_data.apart32f);
}

KV_REG(TimDeinterleave, zorsDeinterleave_16s)
KV_REG(TimDeinterleave, zorsDeinterleave_32f)

} // namespace
