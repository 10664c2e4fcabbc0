/** \file
 * The inner loops of the MP3 functions, one entry per code path.
 */
#ifndef ZOR_MP3_KERNEL_TABLES_H
#define ZOR_MP3_KERNEL_TABLES_H

#include "codepath.h"

namespace zor::mp3 {

inline constexpr int subbands = 32;
inline constexpr int slots = 18;
inline constexpr int lines = subbands * slots;

/** Bits behind the point of sub-band samples and spectral lines. */
inline constexpr int fractionBits = 26;

/** Slots that a synthesis of a granule takes at once; a granule is a whole number of them. */
inline constexpr int slotsAtOnce = 6;

/** The float synthesis keeps the 64 matrixed values of each slot: 15 past slots and those of one call. */
inline constexpr int matrixedValues = 64;
inline constexpr int matrixedRows = 32;

struct PqmfKernels {
    /** `src`, 32 sub-band samples, becomes row `row` of the ring of matrixed values; `dst` receives 32
     * samples. */
    void (*synthesis)(float* ring, int row, const float* src, float* dst);
    /** As above for a granule, whose first slot goes to row `row`. */
    void (*synthesisGranule)(float* ring, int row, const float* src, float* dst);
    /** `row` of a 16 x 32 ring holds 32 samples, which become cosines; `dst` receives PCM, `step` apart. */
    void (*synthesisFixed)(Zor32s* ring, int row, Zor16s* dst, int step);
    /** 512 samples, the newest first, to 32 sub-band samples. */
    void (*analysis)(const float* history, float* dst);
    void (*analysisFixed)(const Zor16s* history, Zor32s* dst);
};

/** The hybrid's transforms of a granule; mixed gives the two lowest sub-bands the window of type 0. */
struct MdctKernels {
    void (*forward)(const Zor32s* src, Zor32s* overlap, Zor32s* dst, int blockType, bool mixed);
    /**
     * \param bound lines from here on are 0
     * \param bands sub-bands that hold data after the butterflies
     * \param overlapBands sub-bands from here on have no overlap
     */
    void (*inverse)(const Zor32s* src, Zor32s* overlap, Zor32s* dst, int bound, int bands, int overlapBands,
                    int blockType, bool mixed);
};

inline constexpr int maxRuns = 40;
inline constexpr int largestQuantised = 8206;

/** Lines cut into runs of one scale each: run i ends before line end[i]. */
struct ScaledRuns {
    int count;
    int end[maxRuns];
    float scale[maxRuns];
};

struct QuantKernels {
    /** Whether all of n values lie within +-limit. */
    bool (*within)(const Zor32s* values, int n, int limit);
    /** In place: sign(x) |x|^(4/3) scale; power holds the powers up to largestQuantised. */
    void (*requantise)(Zor32s* data, const ScaledRuns& runs, const float* power);
    /** In place: (a + b) / sqrt 2 and (a - b) / sqrt 2. */
    void (*rotate)(Zor32s* a, Zor32s* b, int n);
    /** Left becomes left * toLeft and right left * toRight, both factors at most 1. */
    void (*spreadCarrier)(Zor32s* left, Zor32s* right, int n, float toLeft, float toRight);
    /** To: |x|^(3/4), from values in units of 2^-fractionBits. */
    void (*power34)(const Zor32s* from, float* to, int n);
    /** To: the integer part of x scale + 0.4054, at most largestQuantised; returns the largest. */
    int (*quantise)(const float* from, Zor32s* to, const ScaledRuns& runs);
};

} // namespace zor::mp3

#endif
