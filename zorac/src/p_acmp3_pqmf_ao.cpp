// The polyphase filter banks of MP3 in floating point.
#include "zorcore.h"

#include "mp3suite.h"
#include "zorac.h"

namespace {

constexpr int subbands = 32;
constexpr int samples = 2048; // of a timed call
constexpr int streamLength = 8192;
constexpr int largestMode = 2;

kvVector s_dst, s_stream, s_memory;
ZorMP3SynthesisState_32f* s_synthesis;
ZorMP3AnalysisState_32f* s_analysis;
int s_step; // distance between PCM samples

bxStepIterator<int> s_mode(1, "", "");
bxStepIterator<int> s_offset(0, "", "");

/** Sub-band samples to PCM, a stretch of the stream at a time. */
int x_zorsSynthesisFilter_PQMF_MP3_32f() {
    int status = zorStsNoErr;
    for (int i = 0; i < samples && status >= 0; i += subbands)
        status =
            zorsSynthesisFilter_PQMF_MP3_32f(s_stream.p32f + i, s_dst.p32f + i * s_step, s_synthesis, s_step);
    return status;
}

int tcall_zorsSynthesisFilter_PQMF_MP3_32f() {
    return x_zorsSynthesisFilter_PQMF_MP3_32f();
}

/** PCM to sub-band samples. */
int x_zorsAnalysisFilter_PQMF_MP3_32f() {
    int status = zorStsNoErr;
    for (int i = 0; i < samples && status >= 0; i += subbands)
        status =
            zorsAnalysisFilter_PQMF_MP3_32f(s_stream.p32f + i * s_step, s_dst.p32f + i, s_analysis, s_step);
    return status;
}

int tcall_zorsAnalysisFilter_PQMF_MP3_32f() {
    return x_zorsAnalysisFilter_PQMF_MP3_32f();
}

class PqmfTest : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setRangeParm(s_mode, "mode", "distance between samples", 1, largestMode, '+', 1);
        setRangeParm(s_offset, "offset", "misalignment of the stream in values", 0, 3, '+', 3);
        regParm(s_mode);
        regParm(s_offset);
        return true;
    }

    bool flushData() override {
        s_synthesis = nullptr;
        s_analysis = nullptr;
        return PerElementTest::flushData();
    }

  protected:
    /** The vectors, and a state in memory of the size that the library asks for. */
    template <class State>
    bool create(ZorStatus (*getSize)(int*), ZorStatus (*init)(State**, Zor8u*), State** state) {
        if (!within({{s_mode, 1, largestMode}, {s_offset, 0, maxOffset}}))
            return false;
        m_divisor = samples;
        s_step = s_mode.value();
        int size = 0;
        if (!makeFirst(s_dst, kv32f, samples * largestMode) ||
            !make(s_stream, kv32f, streamLength, s_offset.value() * 4) ||
            bxIsFailure(checkStatus(getSize(&size))) || !makeWork(s_memory, kv8u, size))
            return false;
        s_stream.setRandom();
        return !bxIsFailure(checkStatus(init(state, s_memory.p8u)));
    }
};

class kvsConvert : public PqmfTest {
  public:
    using PqmfTest::PqmfTest;

    bool initData() override {
        return create(zorsSynthesisFilterGetSize_PQMF_MP3_32f, zorsSynthesisFilterInit_PQMF_MP3_32f,
                      &s_synthesis);
    }
};

class kvsAnalysis_PQMF_MP3 : public PqmfTest {
  public:
    using PqmfTest::PqmfTest;

    bool initData() override {
        return create(zorsAnalysisFilterGetSize_PQMF_MP3_32f, zorsAnalysisFilterInit_PQMF_MP3_32f,
                      &s_analysis);
    }
};

KV_REG_X(kvsConvert, zorsSynthesisFilter_PQMF_MP3_32f)
KV_REG_X(kvsAnalysis_PQMF_MP3, zorsAnalysisFilter_PQMF_MP3_32f)

} // namespace
