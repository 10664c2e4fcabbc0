// The public functions of the SBR filter banks: nine states on two filters, three forms of band lines.
#include "common/check.h"
#include "sbr/filterbank.h"
#include "zorac/sbr.h"

using namespace zor;

namespace {

/** Phases of the modulation, in samples of the bank. */
constexpr double complexAnalysisPhase = -0.25, realAnalysisPhase = -48;

template <StateTag kind, bool complexBands>
struct AnalysisState {
    static constexpr StateTag expectedTag = kind;
    StateTag tag;
    SbrAnalysis filter;

    static void placeFilter(SbrAnalysis& filter, Arena& arena) {
        placeSbrAnalysis(filter, complexBands ? complexAnalysisPhase : realAnalysisPhase, arena);
    }
};

template <StateTag kind, int bands, bool complexBands>
struct SynthesisState {
    static constexpr StateTag expectedTag = kind;
    StateTag tag;
    SbrSynthesis filter;

    static void placeFilter(SbrSynthesis& filter, Arena& arena) {
        constexpr double complexPhase = bands == 64 ? -127.5 : -63.75, realPhase = -bands / 2;
        placeSbrSynthesis(filter, bands, complexBands ? complexPhase : realPhase,
                          (complexBands ? 1 : 2) / 64.0, arena);
    }
};

} // namespace

struct ZorsAnalysisFilterState_SBR_RToC_32f : AnalysisState<stateTag('S', 'A', 'C', '1'), true> {};
struct ZorsAnalysisFilterState_SBR_RToC_32f32fc : AnalysisState<stateTag('S', 'A', 'C', '2'), true> {};
struct ZorsAnalysisFilterState_SBR_RToR_32f : AnalysisState<stateTag('S', 'A', 'R', '1'), false> {};
struct ZorsSynthesisFilterState_SBR_CToR_32f : SynthesisState<stateTag('S', 'S', 'C', '1'), 64, true> {};
struct ZorsSynthesisFilterState_SBR_CToR_32fc32f : SynthesisState<stateTag('S', 'S', 'C', '2'), 64, true> {};
struct ZorsSynthesisFilterState_SBR_RToR_32f : SynthesisState<stateTag('S', 'S', 'R', '1'), 64, false> {};
struct ZorsSynthesisDownFilterState_SBR_CToR_32f : SynthesisState<stateTag('S', 'D', 'C', '1'), 32, true> {};
struct ZorsSynthesisDownFilterState_SBR_CToR_32fc32f
    : SynthesisState<stateTag('S', 'D', 'C', '2'), 32, true> {};
struct ZorsSynthesisDownFilterState_SBR_RToR_32f : SynthesisState<stateTag('S', 'D', 'R', '1'), 32, false> {};

namespace {

template <class State>
State* placeState(Arena& arena) {
    State* memory = arena.take<State>(1);
    State state{};
    state.tag = State::expectedTag;
    State::placeFilter(state.filter, arena);
    return arena.measuring() ? nullptr : new (memory) State(state);
}

template <class State>
ZorStatus getSize(int* sizeByte) {
    if (!sizeByte)
        return zorStsNullPtrErr;
    Arena measure;
    placeState<State>(measure);
    *sizeByte = static_cast<int>(measure.size());
    return zorStsNoErr;
}

template <class State>
ZorStatus init(State** state, Zor8u* memory) {
    if (anyNull(state, memory))
        return zorStsNullPtrErr;
    Arena arena(memory);
    *state = placeState<State>(arena);
    return zorStsNoErr;
}

template <class Source, class Target, class State>
ZorStatus check(Source src, Target dst, int slots, const State* state) {
    if (const ZorStatus status = checkVectors(slots, src, dst, state))
        return status;
    return checkState(state);
}

/** A call whose band lines are one list: `lines` is that list among src and dst. */
template <class Kernel, class Source, class Target, class Lines, class State>
ZorStatus run(Kernel SbrKernels::*kernel, Source src, Target dst, Lines lines, int slots, State* state) {
    if (const ZorStatus status = check(src, dst, slots, state))
        return status;
    if (anyNullIn(lines, slots))
        return zorStsNullPtrErr;
    (kernels<SbrKernels>().*kernel)(state->filter, src, dst, slots);
    return zorStsNoErr;
}

/** The same with a list for each of the two parts. */
template <class State>
ZorStatus synthesise(const Zor32f* const re[], const Zor32f* const im[], Zor32f* dst, int slots,
                     State* state) {
    if (const ZorStatus status = check(re, dst, slots, state))
        return status;
    if (!im || anyNullIn(re, slots) || anyNullIn(im, slots))
        return zorStsNullPtrErr;
    kernels<SbrKernels>().synthesiseSplit(state->filter, {re, im}, dst, slots);
    return zorStsNoErr;
}

} // namespace

extern "C" {

ZorStatus zorsAnalysisFilterGetSize_SBR_RToC_32f(int* sizeByte) {
    return getSize<ZorsAnalysisFilterState_SBR_RToC_32f>(sizeByte);
}
ZorStatus zorsAnalysisFilterGetSize_SBR_RToC_32f32fc(int* sizeByte) {
    return getSize<ZorsAnalysisFilterState_SBR_RToC_32f32fc>(sizeByte);
}
ZorStatus zorsAnalysisFilterGetSize_SBR_RToR_32f(int* sizeByte) {
    return getSize<ZorsAnalysisFilterState_SBR_RToR_32f>(sizeByte);
}
ZorStatus zorsSynthesisFilterGetSize_SBR_CToR_32f(int* sizeByte) {
    return getSize<ZorsSynthesisFilterState_SBR_CToR_32f>(sizeByte);
}
ZorStatus zorsSynthesisFilterGetSize_SBR_CToR_32fc32f(int* sizeByte) {
    return getSize<ZorsSynthesisFilterState_SBR_CToR_32fc32f>(sizeByte);
}
ZorStatus zorsSynthesisFilterGetSize_SBR_RToR_32f(int* sizeByte) {
    return getSize<ZorsSynthesisFilterState_SBR_RToR_32f>(sizeByte);
}
ZorStatus zorsSynthesisDownFilterGetSize_SBR_CToR_32f(int* sizeByte) {
    return getSize<ZorsSynthesisDownFilterState_SBR_CToR_32f>(sizeByte);
}
ZorStatus zorsSynthesisDownFilterGetSize_SBR_CToR_32fc32f(int* sizeByte) {
    return getSize<ZorsSynthesisDownFilterState_SBR_CToR_32fc32f>(sizeByte);
}
ZorStatus zorsSynthesisDownFilterGetSize_SBR_RToR_32f(int* sizeByte) {
    return getSize<ZorsSynthesisDownFilterState_SBR_RToR_32f>(sizeByte);
}

ZorStatus zorsAnalysisFilterInit_SBR_RToC_32f(ZorsAnalysisFilterState_SBR_RToC_32f** state, Zor8u* memory) {
    return init(state, memory);
}
ZorStatus zorsAnalysisFilterInit_SBR_RToC_32f32fc(ZorsAnalysisFilterState_SBR_RToC_32f32fc** state,
                                                  Zor8u* memory) {
    return init(state, memory);
}
ZorStatus zorsAnalysisFilterInit_SBR_RToR_32f(ZorsAnalysisFilterState_SBR_RToR_32f** state, Zor8u* memory) {
    return init(state, memory);
}
ZorStatus zorsSynthesisFilterInit_SBR_CToR_32f(ZorsSynthesisFilterState_SBR_CToR_32f** state, Zor8u* memory) {
    return init(state, memory);
}
ZorStatus zorsSynthesisFilterInit_SBR_CToR_32fc32f(ZorsSynthesisFilterState_SBR_CToR_32fc32f** state,
                                                   Zor8u* memory) {
    return init(state, memory);
}
ZorStatus zorsSynthesisFilterInit_SBR_RToR_32f(ZorsSynthesisFilterState_SBR_RToR_32f** state, Zor8u* memory) {
    return init(state, memory);
}
ZorStatus zorsSynthesisDownFilterInit_SBR_CToR_32f(ZorsSynthesisDownFilterState_SBR_CToR_32f** state,
                                                   Zor8u* memory) {
    return init(state, memory);
}
ZorStatus zorsSynthesisDownFilterInit_SBR_CToR_32fc32f(ZorsSynthesisDownFilterState_SBR_CToR_32fc32f** state,
                                                       Zor8u* memory) {
    return init(state, memory);
}
ZorStatus zorsSynthesisDownFilterInit_SBR_RToR_32f(ZorsSynthesisDownFilterState_SBR_RToR_32f** state,
                                                   Zor8u* memory) {
    return init(state, memory);
}

ZorStatus zorsAnalysisFilter_SBR_RToC_32f_D2L(const Zor32f* src, Zor32f* const dstRe[], Zor32f* const dstIm[],
                                              int numSlots, ZorsAnalysisFilterState_SBR_RToC_32f* state) {
    if (const ZorStatus status = check(src, dstRe, numSlots, state))
        return status;
    if (!dstIm || anyNullIn(dstRe, numSlots) || anyNullIn(dstIm, numSlots))
        return zorStsNullPtrErr;
    kernels<SbrKernels>().analyseSplit(state->filter, src, {dstRe, dstIm}, numSlots);
    return zorStsNoErr;
}
ZorStatus zorsAnalysisFilter_SBR_RToC_32f32fc_D2L(const Zor32f* src, Zor32fc* const dst[], int numSlots,
                                                  ZorsAnalysisFilterState_SBR_RToC_32f32fc* state) {
    return run(&SbrKernels::analysePairs, src, dst, dst, numSlots, state);
}
ZorStatus zorsAnalysisFilter_SBR_RToR_32f_D2L(const Zor32f* src, Zor32f* const dst[], int numSlots,
                                              ZorsAnalysisFilterState_SBR_RToR_32f* state) {
    return run(&SbrKernels::analyseReal, src, dst, dst, numSlots, state);
}

ZorStatus zorsSynthesisFilter_SBR_CToR_32f_D2L(const Zor32f* const srcRe[], const Zor32f* const srcIm[],
                                               Zor32f* dst, int numSlots,
                                               ZorsSynthesisFilterState_SBR_CToR_32f* state) {
    return synthesise(srcRe, srcIm, dst, numSlots, state);
}
ZorStatus zorsSynthesisFilter_SBR_CToR_32fc32f_D2L(const Zor32fc* const src[], Zor32f* dst, int numSlots,
                                                   ZorsSynthesisFilterState_SBR_CToR_32fc32f* state) {
    return run(&SbrKernels::synthesisePairs, src, dst, src, numSlots, state);
}
ZorStatus zorsSynthesisFilter_SBR_RToR_32f_D2L(const Zor32f* const src[], Zor32f* dst, int numSlots,
                                               ZorsSynthesisFilterState_SBR_RToR_32f* state) {
    return run(&SbrKernels::synthesiseReal, src, dst, src, numSlots, state);
}
ZorStatus zorsSynthesisDownFilter_SBR_CToR_32f_D2L(const Zor32f* const srcRe[], const Zor32f* const srcIm[],
                                                   Zor32f* dst, int numSlots,
                                                   ZorsSynthesisDownFilterState_SBR_CToR_32f* state) {
    return synthesise(srcRe, srcIm, dst, numSlots, state);
}
ZorStatus zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L(const Zor32fc* const src[], Zor32f* dst, int numSlots,
                                                       ZorsSynthesisDownFilterState_SBR_CToR_32fc32f* state) {
    return run(&SbrKernels::synthesisePairs, src, dst, src, numSlots, state);
}
ZorStatus zorsSynthesisDownFilter_SBR_RToR_32f_D2L(const Zor32f* const src[], Zor32f* dst, int numSlots,
                                                   ZorsSynthesisDownFilterState_SBR_RToR_32f* state) {
    return run(&SbrKernels::synthesiseReal, src, dst, src, numSlots, state);
}
}
