/** \file
 * The modified discrete cosine transform of any codec.
 */
#ifndef ZORAC_TRANSFORM_H
#define ZORAC_TRANSFORM_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Modified discrete cosine transform of `length` samples to length/2 coefficients and back (ISO/IEC
 * 14496-3, 4.6.11; without window), with M = length/2 and n0 = (M + 1)/2:
 * - forward X[k] = 2 sum over n of x[n] cos(pi/M (n + n0)(k + 1/2)),
 * - inverse x[n] = 2/length sum over k of X[k] cos(pi/M (n + n0)(k + 1/2)).
 *
 * With windows whose squares add up to 1, applied on both sides, the overlapped halves of two frames give
 * back the samples. `length` is 4 times a product of twos, threes and fives, up to 1 << 20.
 */
typedef struct ZorsMDCTFwdState_32f ZorsMDCTFwdState_32f;
typedef struct ZorsMDCTInvState_32f ZorsMDCTInvState_32f;
typedef struct ZorsMDCTFwdState_16s ZorsMDCTFwdState_16s;

/** Makes the tables of one length. \return zorStsNullPtrErr, zorStsSizeErr, zorStsMemAllocErr. */
ZOR_API ZorStatus zorsMDCTFwdInitAlloc_32f(ZorsMDCTFwdState_32f** state, int length);
ZOR_API ZorStatus zorsMDCTInvInitAlloc_32f(ZorsMDCTInvState_32f** state, int length);
ZOR_API ZorStatus zorsMDCTFwdInitAlloc_16s(ZorsMDCTFwdState_16s** state, int length);

/**
 * The bytes of the work buffer of a call, which may stand at any address.
 * \return zorStsNullPtrErr, zorStsContextErr.
 */
ZOR_API ZorStatus zorsMDCTFwdGetBufSize_32f(const ZorsMDCTFwdState_32f* state, int* sizeByte);
ZOR_API ZorStatus zorsMDCTInvGetBufSize_32f(const ZorsMDCTInvState_32f* state, int* sizeByte);
ZOR_API ZorStatus zorsMDCTFwdGetBufSize_16s(const ZorsMDCTFwdState_16s* state, int* sizeByte);

/** Frees the tables. \return zorStsNullPtrErr, zorStsContextErr. */
ZOR_API ZorStatus zorsMDCTFwdFree_32f(ZorsMDCTFwdState_32f* state);
ZOR_API ZorStatus zorsMDCTInvFree_32f(ZorsMDCTInvState_32f* state);
ZOR_API ZorStatus zorsMDCTFwdFree_16s(ZorsMDCTFwdState_16s* state);

/**
 * Forward: length samples at src to length/2 coefficients at dst. The _I forms work in srcDst, whose first
 * length/2 elements hold the coefficients. Inverse: length/2 coefficients to length samples; _I the same in
 * srcDst. dst must be src or apart from it. \return zorStsNullPtrErr, zorStsContextErr.
 */
ZOR_API ZorStatus zorsMDCTFwd_32f(const Zor32f* src, Zor32f* dst, const ZorsMDCTFwdState_32f* state,
                                  Zor8u* buffer);
ZOR_API ZorStatus zorsMDCTFwd_32f_I(Zor32f* srcDst, const ZorsMDCTFwdState_32f* state, Zor8u* buffer);
ZOR_API ZorStatus zorsMDCTInv_32f(const Zor32f* src, Zor32f* dst, const ZorsMDCTInvState_32f* state,
                                  Zor8u* buffer);
ZOR_API ZorStatus zorsMDCTInv_32f_I(Zor32f* srcDst, const ZorsMDCTInvState_32f* state, Zor8u* buffer);

/**
 * Forward in 16 bits: the coefficients times 2^-scaleFactor, rounded to nearest and saturated.
 * \return zorStsNullPtrErr, zorStsContextErr; zorStsScaleRangeErr for a scale factor outside -31 to 31.
 */
ZOR_API ZorStatus zorsMDCTFwd_16s_Sfs(const Zor16s* src, Zor16s* dst, const ZorsMDCTFwdState_16s* state,
                                      int scaleFactor, Zor8u* buffer);

#ifdef __cplusplus
}
#endif

#endif
