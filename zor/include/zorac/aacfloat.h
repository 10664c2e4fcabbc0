/** \file
 * The decoding tools of AAC on lines and samples in floating point, in the standard's unit (a full scale of
 * 32768). They stand beside the timed ones of aac.h, and take the same arguments where nothing else is said.
 * All of them work in window order.
 */
#ifndef ZORAC_AACFLOAT_H
#define ZORAC_AACFLOAT_H

#include "zorac/aac.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Inverse quantisation of 1024 lines from group order to window order: sign(q) |q|^(4/3) 2^((scale factor -
 * 100) / 4). Bands with code book 0 or one of noise and intensity, and lines above maxSfb, become 0.
 * Magnitudes above 8191 count as 8191.
 */
ZOR_API ZorStatus zorsQuantInv_AAC_32s32f(const Zor32s* src, Zor32f* dst, const Zor16s* scaleFactor,
                                          const Zor8u* sfbCb, int numWinGrp, const int* winGrpLen, int maxSfb,
                                          int samplingRateIndex, int winLen);

/** M/S stereo as zorsDecodeMsStereoPair_AAC_32s_I. */
ZOR_API ZorStatus zorsDecodeMsStereo_AAC_32f_I(Zor32f* srcDstL, Zor32f* srcDstR, int msMaskPresent,
                                               const Zor8u* msUsed, const Zor8u* sfbCbL, const Zor8u* sfbCbR,
                                               int numWinGrp, const int* winGrpLen, int maxSfb,
                                               int samplingRateIndex, int winLen);
/** Intensity stereo as zorsDecodeIsStereo_AAC_32s. */
ZOR_API ZorStatus zorsDecodeIsStereo_AAC_32f(const Zor32f* srcL, Zor32f* dstR, const Zor16s* scaleFactor,
                                             int msMaskPresent, const Zor8u* msUsed, const Zor8u* sfbCb,
                                             int numWinGrp, const int* winGrpLen, int maxSfb,
                                             int samplingRateIndex, int winLen);
/** Perceptual noise substitution as zorsDecodePNS_AAC_32s, of the same generator. */
ZOR_API ZorStatus zorsDecodePNS_AAC_32f(Zor32f* srcDst, const Zor16s* scaleFactor, const Zor8u* sfbCb,
                                        Zor32u* randomState, Zor32s* bandState, int second,
                                        const Zor8u* msUsed, int numWinGrp, const int* winGrpLen, int maxSfb,
                                        int samplingRateIndex, int winLen);

/** Temporal noise shaping as zorsDecodeTNS_AAC_32s_I and zorsEncodeTNS_AAC_32s_I. */
ZOR_API ZorStatus zorsDecodeTNS_AAC_32f_I(Zor32f* srcDst, const int* numFilt, const int* regionLen,
                                          const int* order, const int* coefRes, const Zor8s* coef,
                                          const int* direction, int maxSfb, int profile,
                                          int samplingRateIndex, int winLen);
/** \copydoc zorsDecodeTNS_AAC_32f_I */
ZOR_API ZorStatus zorsEncodeTNS_AAC_32f_I(Zor32f* srcDst, const int* numFilt, const int* regionLen,
                                          const int* order, const int* coefRes, const Zor8s* coef,
                                          const int* direction, int maxSfb, int profile,
                                          int samplingRateIndex, int winLen);

/**
 * Windowing and forward MDCT of a frame: the 2048 samples at src to 1024 lines, X[k] = 2 sum z[n] cos(2 pi /
 * N (n + n0)(k + 1/2)); of zorAacEightShort all eight windows. dst must not overlap src.
 * \param winShape, prevWinShape of this and of the previous frame: 0 sine, 1 Kaiser-Bessel derived
 * \return zorStsNullPtrErr, zorStsBadArgErr (winSequence, a shape)
 */
ZOR_API ZorStatus zorsMDCTFwd_AAC_32f(const Zor32f* src, Zor32f* dst, int winSequence, int winShape,
                                      int prevWinShape);
/**
 * Inverse MDCT with windowing, overlap and add: 1024 lines to 1024 samples. It undoes zorsMDCTFwd_AAC_32f.
 * dst must not overlap src.
 * \param srcDstOverlap 1024 elements, zeros at first: what this frame adds to the next one
 * \return as zorsMDCTFwd_AAC_32f
 */
ZOR_API ZorStatus zorsMDCTInv_AAC_32f(const Zor32f* src, Zor32f* dst, Zor32f* srcDstOverlap, int winSequence,
                                      int winShape, int prevWinShape);

/**
 * Long-term prediction as zorsLongTermPredict_AAC_32s: predicts the frame's samples from the past and
 * transforms them to 1024 lines.
 * \param src 4096 samples, of which the frame begins at the 2049th. What stands there is the overlap that
 *             zorsMDCTInv_AAC_32f has left
 */
ZOR_API ZorStatus zorsLongTermPredict_AAC_32f(const Zor32f* src, Zor32f* dst, int lag, int coefIndex,
                                              int winSequence, int winShape, int prevWinShape);
/** Adds the predicted spectrum in the bands that use it, as zorsLongTermReconstruct_AAC_32s. */
ZOR_API ZorStatus zorsLongTermReconstruct_AAC_32f(const Zor32f* src, Zor32f* srcDst, const Zor8u* ltpFlag,
                                                  int winSequence, int maxSfb, int samplingRateIndex);

#ifdef __cplusplus
}
#endif

#endif
