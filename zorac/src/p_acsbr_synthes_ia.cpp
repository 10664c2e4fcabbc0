// The filter banks of spectral band replication.
#include "zorcore.h"

#include "bandlines.h"
#include "suiteparms.h"
#include "zorac.h"

namespace {

constexpr int slotSize = 32; ///< samples of a slot at the core's sampling rate
constexpr int maxBands = 64; ///< of the synthesis

kvVector s_signal, s_memory;
BandLines s_lines;
int s_slots, s_frame;

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

template <class State>
bool buildState(State*& state, ZorStatus (*getSize)(int*), ZorStatus (*init)(State**, Zor8u*)) {
    int sizeByte = 0;
    return getSize(&sizeByte) == zorStsNoErr && makeVector(s_memory, kv8u, sizeByte, 4) &&
           init(&state, s_memory.p8u) == zorStsNoErr;
}

/** How the state of each function is built, by what stands in its name. */
struct Filter {
    const char* kind;
    bool (*build)();
};

constexpr Filter filters[] = {
    {"AnalysisFilter_SBR_RToC_32f_",
     [] {
         return buildState(s_analysisSplit, zorsAnalysisFilterGetSize_SBR_RToC_32f,
                           zorsAnalysisFilterInit_SBR_RToC_32f);
     }},
    {"AnalysisFilter_SBR_RToC_32f32fc_",
     [] {
         return buildState(s_analysisPairs, zorsAnalysisFilterGetSize_SBR_RToC_32f32fc,
                           zorsAnalysisFilterInit_SBR_RToC_32f32fc);
     }},
    {"AnalysisFilter_SBR_RToR_32f_",
     [] {
         return buildState(s_analysisReal, zorsAnalysisFilterGetSize_SBR_RToR_32f,
                           zorsAnalysisFilterInit_SBR_RToR_32f);
     }},
    {"SynthesisFilter_SBR_CToR_32f_",
     [] {
         return buildState(s_synthesisSplit, zorsSynthesisFilterGetSize_SBR_CToR_32f,
                           zorsSynthesisFilterInit_SBR_CToR_32f);
     }},
    {"SynthesisFilter_SBR_CToR_32fc32f_",
     [] {
         return buildState(s_synthesisPairs, zorsSynthesisFilterGetSize_SBR_CToR_32fc32f,
                           zorsSynthesisFilterInit_SBR_CToR_32fc32f);
     }},
    {"SynthesisFilter_SBR_RToR_32f_",
     [] {
         return buildState(s_synthesisReal, zorsSynthesisFilterGetSize_SBR_RToR_32f,
                           zorsSynthesisFilterInit_SBR_RToR_32f);
     }},
    {"SynthesisDownFilter_SBR_CToR_32f_",
     [] {
         return buildState(s_downSplit, zorsSynthesisDownFilterGetSize_SBR_CToR_32f,
                           zorsSynthesisDownFilterInit_SBR_CToR_32f);
     }},
    {"SynthesisDownFilter_SBR_CToR_32fc32f_",
     [] {
         return buildState(s_downPairs, zorsSynthesisDownFilterGetSize_SBR_CToR_32fc32f,
                           zorsSynthesisDownFilterInit_SBR_CToR_32fc32f);
     }},
    {"SynthesisDownFilter_SBR_RToR_32f_",
     [] {
         return buildState(s_downReal, zorsSynthesisDownFilterGetSize_SBR_RToR_32f,
                           zorsSynthesisDownFilterInit_SBR_RToR_32f);
     }},
};

/** Bands as a decoder has them: the analysed signal, and a faint copy of it in the replicated upper half. */
bool fillBands() {
    constexpr Zor32f replicated = 0.1f;
    std::vector<Zor32f> signal(static_cast<std::size_t>(s_slots * slotSize));
    fillSignal(signal.data(), s_slots * slotSize);
    if (!buildState(s_analysisSplit, zorsAnalysisFilterGetSize_SBR_RToC_32f,
                    zorsAnalysisFilterInit_SBR_RToC_32f) ||
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
        s_frame = s_frameSize.value();
        s_slots = s_frame / slotSize;
        if (s_slots < 1 || !makeVector(s_signal, kv32f, s_slots * maxBands) ||
            !s_lines.create(s_slots, maxBands, 1))
            return false;
        if (name.find("Analysis") >= 0)
            fillSignal(s_signal.p32f, s_slots * slotSize);
        else if (!fillBands())
            return false;
        for (const Filter& filter : filters)
            if (name.find(filter.kind) >= 0)
                return filter.build();
        return false;
    }

    bool flushData() override {
        s_signal.deleteVector();
        s_memory.deleteVector();
        s_lines.free();
        return true;
    }

    double getDivisor() override { return s_frame; }
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
