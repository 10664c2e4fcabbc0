// Putting channels together.
#include "zorcore.h"

#include "channeldata.h"
#include "suiteparms.h"
#include "zors.h"

namespace {

ChannelData s_data;

bxStepIterator<int> s_channels(0, "", ""), s_length(0, "", "");

class TimInterleave : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setRangeParm(s_channels, "Number of channels", "number of channels", 2, 7, '+', 5);
        setRangeParm(s_length, "Length", "samples of a channel", 100, 2048, '+', 1948);
        regParm(s_channels);
        regCacheParm(s_length);
        return true;
    }

    bool initData() override { return s_data.create(*this, m_func.type(1), s_channels, s_length); }

    double getDivisor() override { return static_cast<double>(s_data.channels) * s_data.len; }
};

int tcall_zorsInterleave_16s() {
    return zorsInterleave_16s(s_data.apart16s, s_data.channels, s_data.len, s_data.together.p16s);
}

int tcall_zorsInterleave_32f() {
    return zorsInterleave_32f(s_data.apart32f, s_data.channels, s_data.len, s_data.together.p32f);
}

KV_REG(TimInterleave, zorsInterleave_16s)
KV_REG(TimInterleave, zorsInterleave_32f)

} // namespace
