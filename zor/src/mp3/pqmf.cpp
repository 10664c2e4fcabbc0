/** \file
 * The polyphase filter banks of layer III: states and PCM on either side of the kernels.
 */
#include "common/arena.h"
#include "mp3/kernel_tables.h"
#include "zorac/mp3.h"

using zor::mp3::subbands;

struct ZorMP3SynthesisState_32f {
    static constexpr zor::StateTag expectedTag = zor::stateTag('M', '3', 'S', 'y');
    static ZorMP3SynthesisState_32f* place(zor::Arena& arena) {
        return arena.take<ZorMP3SynthesisState_32f>(1);
    }
    zor::StateTag tag;
    int row; /**< where the next samples go */
    float ring[zor::mp3::matrixedRows * zor::mp3::matrixedValues];
};

struct ZorMP3AnalysisState_32f {
    static constexpr zor::StateTag expectedTag = zor::stateTag('M', '3', 'A', 'n');
    static ZorMP3AnalysisState_32f* place(zor::Arena& arena) {
        return arena.take<ZorMP3AnalysisState_32f>(1);
    }
    zor::StateTag tag;
    int position;
    float history[1024];
};

namespace {

constexpr int historySize = 512;

/**
 * Puts 32 samples in front of a history that runs from the newest to the oldest. The ring is written twice,
 * 512 apart, so that the 512 samples from the new position on always lie in a row.
 * \return the new position
 */
template <class T>
int pushSamples(T* ring, int position, const T* samples, int step) {
    position = (position - subbands) & (historySize - 1);
    for (int i = 0; i < subbands; ++i) {
        T* place = ring + position + subbands - 1 - i;
        place[0] = place[historySize] = samples[i * step];
    }
    return position;
}

bool isMode(int mode) {
    return mode == 1 || mode == 2;
}

template <class State>
ZorStatus getSize(int* size) {
    if (!size)
        return zorStsNullPtrErr;
    *size = zor::stateSize<State>();
    return zorStsNoErr;
}

template <class State>
ZorStatus initState(State** state, Zor8u* buffer) {
    if (!state || !buffer)
        return zorStsNullPtrErr;
    zor::Arena arena(buffer);
    *state = State::place(arena);
    **state = State{};
    (*state)->tag = State::expectedTag;
    return zorStsNoErr;
}

template <class State>
ZorStatus checkFilter(const Zor32f* src, const Zor32f* dst, const State* state, int mode) {
    if (!src || !dst || !state)
        return zorStsNullPtrErr;
    if (!isMode(mode))
        return zorStsBadArgErr;
    return state->tag == State::expectedTag ? zorStsNoErr : zorStsContextErr;
}

} // namespace

extern "C" {

ZorStatus zorsSynthesisFilterGetSize_PQMF_MP3_32f(int* sizeByte) {
    return getSize<ZorMP3SynthesisState_32f>(sizeByte);
}

ZorStatus zorsSynthesisFilterInit_PQMF_MP3_32f(ZorMP3SynthesisState_32f** state, Zor8u* memory) {
    return initState(state, memory);
}

ZorStatus zorsSynthesisFilter_PQMF_MP3_32f(const Zor32f* src, Zor32f* dst, ZorMP3SynthesisState_32f* state,
                                           int mode) {
    if (const ZorStatus status = checkFilter(src, dst, state, mode); status < 0)
        return status;
    const auto& kernel = zor::kernels<zor::mp3::PqmfKernels>();
    const int row = state->row;
    state->row = (row + 1) & (zor::mp3::matrixedRows - 1);
    if (mode == 1) {
        kernel.synthesis(state->ring, row, src, dst);
        return zorStsNoErr;
    }
    float samples[subbands];
    kernel.synthesis(state->ring, row, src, samples);
    for (int i = 0; i < subbands; ++i)
        dst[2 * i] = samples[i];
    return zorStsNoErr;
}

ZorStatus zorsSynthesisGranule_PQMF_MP3_32f(const Zor32f* src, Zor32f* dst, ZorMP3SynthesisState_32f* state,
                                            int mode) {
    using namespace zor::mp3;
    if (const ZorStatus status = checkFilter(src, dst, state, mode); status < 0)
        return status;
    const auto& kernel = zor::kernels<PqmfKernels>();
    const int row = state->row;
    state->row = (row + slots) & (matrixedRows - 1);
    if (mode == 1) {
        kernel.synthesisGranule(state->ring, row, src, dst);
        return zorStsNoErr;
    }
    float samples[lines];
    kernel.synthesisGranule(state->ring, row, src, samples);
    for (int i = 0; i < lines; ++i)
        dst[2 * i] = samples[i];
    return zorStsNoErr;
}

ZorStatus zorsAnalysisFilterGetSize_PQMF_MP3_32f(int* sizeByte) {
    return getSize<ZorMP3AnalysisState_32f>(sizeByte);
}

ZorStatus zorsAnalysisFilterInit_PQMF_MP3_32f(ZorMP3AnalysisState_32f** state, Zor8u* memory) {
    return initState(state, memory);
}

ZorStatus zorsAnalysisFilter_PQMF_MP3_32f(const Zor32f* src, Zor32f* dst, ZorMP3AnalysisState_32f* state,
                                          int mode) {
    if (const ZorStatus status = checkFilter(src, dst, state, mode); status < 0)
        return status;
    state->position = pushSamples(state->history, state->position, src, mode);
    zor::kernels<zor::mp3::PqmfKernels>().analysis(state->history + state->position, dst);
    return zorStsNoErr;
}

ZorStatus zorsAnalysisPQMF_MP3_16s32s(const Zor16s* src, Zor32s* dstL, Zor32s* dstR, Zor16s* state,
                                      int mode) {
    if (!src || !dstL || !dstR || !state)
        return zorStsNullPtrErr;
    if (!isMode(mode))
        return zorStsBadArgErr;
    // The state begins with the position of both histories, on a cache line of its own.
    const int position = state[0];
    if (position < 0 || position >= historySize || position % subbands != 0)
        return zorStsContextErr;
    Zor16s* const left = state + 32;
    Zor16s* const right = left + 2 * historySize;
    const Zor16s* const rightSamples = src + (mode == 1 ? subbands : 1);
    const int next = pushSamples(left, position, src, mode);
    pushSamples(right, position, rightSamples, mode);
    state[0] = static_cast<Zor16s>(next);
    const auto& kernel = zor::kernels<zor::mp3::PqmfKernels>();
    kernel.analysisFixed(left + next, dstL);
    kernel.analysisFixed(right + next, dstR);
    return zorStsNoErr;
}

ZorStatus zorsSynthPQMF_MP3_32s16s(Zor32s* srcDst, Zor16s* dst, int* row, int mode) {
    if (!srcDst || !dst || !row)
        return zorStsNullPtrErr;
    if (!isMode(mode) || *row < 0 || *row > 15)
        return zorStsBadArgErr;
    const auto& kernel = zor::kernels<zor::mp3::PqmfKernels>();
    for (int channel = 0; channel < mode; ++channel)
        kernel.synthesisFixed(srcDst + channel * 16 * subbands, *row, dst + channel, mode);
    *row = (*row + 1) & 15;
    return zorStsNoErr;
}

} // extern "C"
