/** \file
 * Signal processing: scaling, interleaving, conversion, powers, block FIR.
 *
 * Every function returns a ZorStatus. Arguments are checked once per call; a call that fails with a negative
 * status has written nothing unless its comment says otherwise. No function allocates memory except the
 * ones whose name ends in "InitAlloc" before the type.
 */
#ifndef ZORS_H
#define ZORS_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The version record of this library. */
ZOR_API const ZorLibraryVersion* zorsGetLibVersion(void);

/**
 * Multiplies every element by the factor of its band.
 * \param bandEnd  for each band the index behind its last element, rising; the first band begins at 0
 * \return zorStsNullPtrErr; zorStsSizeErr for fewer than 1 band; zorStsBadArgErr where bandEnd falls or is
 * negative.
 */
ZOR_API ZorStatus zorsScale_32f_I(Zor32f* srcDst, const Zor32f* factor, const int* bandEnd, int numBands);

/**
 * Gains of scale factors: dst = 2^((src - offset) / 4); 0 below the range of normal floats, infinite above
 * it. \return zorStsNullPtrErr; zorStsSizeErr for length below 1.
 */
ZOR_API ZorStatus zorsCalcSF_16s32f(const Zor16s* src, int offset, Zor32f* dst, int length);

/**
 * Takes interleaved channels apart: dst[channel][i] = src[i * numChannels + channel], for length samples a
 * channel. \return zorStsNullPtrErr, also for a null channel; zorStsSizeErr for numChannels or length
 * below 1.
 */
ZOR_API ZorStatus zorsDeinterleave_16s(const Zor16s* src, int numChannels, int length, Zor16s* const dst[]);
ZOR_API ZorStatus zorsDeinterleave_32f(const Zor32f* src, int numChannels, int length, Zor32f* const dst[]);

/** Puts channels together: dst[i * numChannels + channel] = src[channel][i]. Statuses as above. */
ZOR_API ZorStatus zorsInterleave_16s(const Zor16s* const src[], int numChannels, int length, Zor16s* dst);
ZOR_API ZorStatus zorsInterleave_32f(const Zor32f* const src[], int numChannels, int length, Zor32f* dst);

/** Converts to float, value for value. \return zorStsNullPtrErr; zorStsSizeErr for length below 1. */
ZOR_API ZorStatus zorsMakeFloat_16s32f(const Zor16s* src, Zor32f* dst, int length);

/**
 * Between the fixed-point and the floating-point world: 32s32f gives src times 2^-scaleFactor, the other two
 * src times 2^-scaleFactor rounded to the nearest integer, halves away from zero, and saturated; what is no
 * number becomes the largest. With the number of bits behind the point of a fixed-point format as scaleFactor
 * (its negative towards fixed point), 1.0 is full scale. These stand beside the timed functions. \return
 * zorStsNullPtrErr; zorStsSizeErr for length below 1; zorStsScaleRangeErr outside -31 to 31.
 */
ZOR_API ZorStatus zorsConvert_32s32f_Sfs(const Zor32s* src, Zor32f* dst, int length, int scaleFactor);
ZOR_API ZorStatus zorsConvert_32f32s_Sfs(const Zor32f* src, Zor32s* dst, int length, int scaleFactor);
ZOR_API ZorStatus zorsConvert_32f16s_Sfs(const Zor32f* src, Zor16s* dst, int length, int scaleFactor);

/**
 * The power law of the AAC and MP3 quantisers (ISO/IEC 14496-3, 4.6.1; ISO/IEC 11172-3, 2.4.3.4), sign kept:
 * Pow34_32f |x|^(3/4); Pow34_32f16s the same plus 0.4054, cut to an integer, saturated at 32767; Pow43_16s32f
 * its inverse |x|^(4/3). Floats are right to 4 units in the last place. \return zorStsNullPtrErr;
 * zorStsSizeErr for length below 1.
 */
ZOR_API ZorStatus zorsPow34_32f(const Zor32f* src, Zor32f* dst, int length);
ZOR_API ZorStatus zorsPow34_32f16s(const Zor32f* src, Zor16s* dst, int length);
ZOR_API ZorStatus zorsPow43_16s32f(const Zor16s* src, Zor32f* dst, int length);

/** Taps and delay line of a block FIR filter. */
typedef struct ZorsFIRBlockState_32f ZorsFIRBlockState_32f;

/**
 * Makes a filter of `order` taps with an empty delay line; the taps are copied.
 * \return zorStsNullPtrErr; zorStsSizeErr for an order outside 1 to 65536; zorStsMemAllocErr.
 */
ZOR_API ZorStatus zorsFIRBlockInitAlloc_32f(ZorsFIRBlockState_32f** state, const Zor32f* taps, int order);

/** \return zorStsNullPtrErr; zorStsContextErr for anything but a filter. */
ZOR_API ZorStatus zorsFIRBlockFree_32f(ZorsFIRBlockState_32f* state);

/**
 * Filters one block and keeps its end for the next: dst[n] = sum over k of taps[k] src[n - k].
 * dst must not overlap src.
 * \return zorStsNullPtrErr; zorStsSizeErr for length below 1; zorStsContextErr.
 */
ZOR_API ZorStatus zorsFIRBlockOne_32f(const Zor32f* src, Zor32f* dst, int length,
                                      ZorsFIRBlockState_32f* state);

#ifdef __cplusplus
}
#endif

#endif
