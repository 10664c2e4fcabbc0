// The filter banks of spectral band replication.
#include "zorcore.h"

#include "bandlines.h"
#include "suiteparms.h"
#include "testsignal.h"
#include "zorac.h"

namespace {

constexpr int slotSize = 32; /**< samples of a slot at the core's sampling rate */
constexpr int maxBands = 64; /**< of the synthesis */
constexpr int largestFrame = 1 << 20;

kvVector s_signal, s_memory;
BandLines s_lines;
int s_slots;

bxIterator<int> s_frameSize(0, "", "");

ZorsAnalysisFilterState_SBR_RToC_32f* s_analysisSplit;
ZorsAnalysisFilterState_SBR_RToC_32f32fc* s_analysisPairs;
ZorsAnalysisFilterState_SBR_RToR_32f* s_analysisReal;
ZorsSynthesisFilterState_SBR_CToR_32f* s_synthesisSplit;
ZorsSynthesisFilterState_SBR_CToR_32fc32f* s_synthesisPairs;
ZorsSynthesisFilterState_SBR_RToR_32f* s_synthesisReal;
ZorsSynthesisDownFilterState_SBR_CToR_32f* s_downSplit;
ZorsSynthesisDownFilterState_SBR_CToR_32fc32f* s_downPairs;
ZorsSynthesisDownFilterState_SBR_RToR_32f* s_downReal;

template <auto& state, auto getSize, auto init>
bool buildState(SuiteTest& test) {
    int sizeByte = 0;
    return getSize(&sizeByte) == zorStsNoErr && test.makeWork(s_memory, kv8u, sizeByte) &&
           init(&state, s_memory.p8u) == zorStsNoErr;
}

/** How the state of each function is built, by what stands in its name. */
struct Filter {
    const char* kind;
    bool (*build)(SuiteTest&);
};

constexpr Filter filters[] = {
    {"AnalysisFilter_SBR_RToC_32f_", buildState<s_analysisSplit, zorsAnalysisFilterGetSize_SBR_RToC_32f,
                                                zorsAnalysisFilterInit_SBR_RToC_32f>},
    {"AnalysisFilter_SBR_RToC_32f32fc_",
     buildState<s_analysisPairs, zorsAnalysisFilterGetSize_SBR_RToC_32f32fc,
                zorsAnalysisFilterInit_SBR_RToC_32f32fc>},
    {"AnalysisFilter_SBR_RToR_32f_",
     buildState<s_analysisReal, zorsAnalysisFilterGetSize_SBR_RToR_32f, zorsAnalysisFilterInit_SBR_RToR_32f>},
    {"SynthesisFilter_SBR_CToR_32f_", buildState<s_synthesisSplit, zorsSynthesisFilterGetSize_SBR_CToR_32f,
                                                 zorsSynthesisFilterInit_SBR_CToR_32f>},
    {"SynthesisFilter_SBR_CToR_32fc32f_",
     buildState<s_synthesisPairs, zorsSynthesisFilterGetSize_SBR_CToR_32fc32f,
                zorsSynthesisFilterInit_SBR_CToR_32fc32f>},
    {"SynthesisFilter_SBR_RToR_32f_", buildState<s_synthesisReal, zorsSynthesisFilterGetSize_SBR_RToR_32f,
                                                 zorsSynthesisFilterInit_SBR_RToR_32f>},
    {"SynthesisDownFilter_SBR_CToR_32f_", buildState<s_downSplit, zorsSynthesisDownFilterGetSize_SBR_CToR_32f,
                                                     zorsSynthesisDownFilterInit_SBR_CToR_32f>},
    {"SynthesisDownFilter_SBR_CToR_32fc32f_",
     buildState<s_downPairs, zorsSynthesisDownFilterGetSize_SBR_CToR_32fc32f,
                zorsSynthesisDownFilterInit_SBR_CToR_32fc32f>},
    {"SynthesisDownFilter_SBR_RToR_32f_", buildState<s_downReal, zorsSynthesisDownFilterGetSize_SBR_RToR_32f,
                                                     zorsSynthesisDownFilterInit_SBR_RToR_32f>},
};

/** Bands as a decoder has them: the analysed signal, and a faint copy of it in the replicated upper half. */
bool fillBands(SuiteTest& test) {
    constexpr Zor32f replicated = 0.1f;
    std::vector<Zor32f> signal(static_cast<std::size_t>(s_slots * slotSize));
    fillSignal(signal.data(), s_slots * slotSize);
    if (!filters[0].build(test) ||
        zorsAnalysisFilter_SBR_RToC_32f_D2L(signal.data(), s_lines.reList.data(), s_lines.imList.data(),
                                            s_slots, s_analysisSplit) != zorStsNoErr)
        return false;
    for (int slot = 0; slot < s_slots; ++slot)
        for (int band = 0; band < slotSize; ++band) {
            const Zor32f re = s_lines.reList[static_cast<std::size_t>(slot)][band];
            const Zor32f im = s_lines.imList[static_cast<std::size_t>(slot)][band];
            s_lines.set(slot, band, re, im);
            s_lines.set(slot, slotSize + band, replicated * re, replicated * im);
        }
    return true;
}

class Timacsbr_Synthes : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        setParm(s_frameSize, "frameSize", "samples of a frame at the core's sampling rate", {1024, 960});
        regParm(s_frameSize);
        return true;
    }

    bool initData() override {
        if (!within({{s_frameSize, slotSize, largestFrame}}))
            return false;
        m_divisor = s_frameSize.value();
        s_slots = m_divisor / slotSize;
        if (!makeFirst(s_signal, kv32f, s_slots * maxBands) ||
            !s_lines.create(*this, s_slots, maxBands, false))
            return false;
        if (name.find("Analysis") >= 0)
            fillSignal(s_signal.p32f, s_slots * slotSize);
        else if (!fillBands(*this))
            return false;
        for (const Filter& filter : filters)
            if (name.find(filter.kind) >= 0)
                return filter.build(*this);
        return false;
    }
};

int tcall_zorsAnalysisFilter_SBR_RToC_32f_D2L() {
    return zorsAnalysisFilter_SBR_RToC_32f_D2L(s_signal.p32f, s_lines.reList.data(), s_lines.imList.data(),
                                               s_slots, s_analysisSplit);
}

int tcall_zorsAnalysisFilter_SBR_RToC_32f32fc_D2L() {
    return zorsAnalysisFilter_SBR_RToC_32f32fc_D2L(s_signal.p32f, s_lines.pairList.data(), s_slots,
                                                   s_analysisPairs);
}

int tcall_zorsAnalysisFilter_SBR_RToR_32f_D2L() {
    return zorsAnalysisFilter_SBR_RToR_32f_D2L(s_signal.p32f, s_lines.reList.data(), s_slots, s_analysisReal);
}

int tcall_zorsSynthesisFilter_SBR_CToR_32f_D2L() {
    return zorsSynthesisFilter_SBR_CToR_32f_D2L(s_lines.reList.data(), s_lines.imList.data(), s_signal.p32f,
                                                s_slots, s_synthesisSplit);
}

int tcall_zorsSynthesisFilter_SBR_CToR_32fc32f_D2L() {
    return zorsSynthesisFilter_SBR_CToR_32fc32f_D2L(s_lines.pairList.data(), s_signal.p32f, s_slots,
                                                    s_synthesisPairs);
}

int tcall_zorsSynthesisFilter_SBR_RToR_32f_D2L() {
    return zorsSynthesisFilter_SBR_RToR_32f_D2L(s_lines.reList.data(), s_signal.p32f, s_slots,
                                                s_synthesisReal);
}

int tcall_zorsSynthesisDownFilter_SBR_CToR_32f_D2L() {
    return zorsSynthesisDownFilter_SBR_CToR_32f_D2L(s_lines.reList.data(), s_lines.imList.data(),
                                                    s_signal.p32f, s_slots, s_downSplit);
}

int tcall_zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L() {
    return zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L(s_lines.pairList.data(), s_signal.p32f, s_slots,
                                                        s_downPairs);
}

int tcall_zorsSynthesisDownFilter_SBR_RToR_32f_D2L() {
    return zorsSynthesisDownFilter_SBR_RToR_32f_D2L(s_lines.reList.data(), s_signal.p32f, s_slots,
                                                    s_downReal);
}

KV_REG(Timacsbr_Synthes, zorsAnalysisFilter_SBR_RToC_32f_D2L)
KV_REG(Timacsbr_Synthes, zorsAnalysisFilter_SBR_RToC_32f32fc_D2L)
KV_REG(Timacsbr_Synthes, zorsAnalysisFilter_SBR_RToR_32f_D2L)
KV_REG(Timacsbr_Synthes, zorsSynthesisFilter_SBR_CToR_32f_D2L)
KV_REG(Timacsbr_Synthes, zorsSynthesisFilter_SBR_CToR_32fc32f_D2L)
KV_REG(Timacsbr_Synthes, zorsSynthesisFilter_SBR_RToR_32f_D2L)
KV_REG(Timacsbr_Synthes, zorsSynthesisDownFilter_SBR_CToR_32f_D2L)
KV_REG(Timacsbr_Synthes, zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L)
KV_REG(Timacsbr_Synthes, zorsSynthesisDownFilter_SBR_RToR_32f_D2L)

} // namespace
