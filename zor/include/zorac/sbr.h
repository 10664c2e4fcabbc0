/** \file
 * Spectral band replication (ISO/IEC 14496-3, 4.6.18): filter banks and inverse filtering.
 */
#ifndef ZORAC_SBR_H
#define ZORAC_SBR_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Filter banks of spectral band replication (ISO/IEC 14496-3, 4.6.18): analysis of 32 bands, synthesis of 64
 * and down-sampled synthesis of 32 ("Down"). "C" is the complex bank, "R" the real one (low power). Band
 * signals are lists of lines ("D2L"), a line of 32 or 64 bands for each time slot; 32f lines hold real and
 * imaginary parts apart, 32fc lines pairs. With the window c[], the samples s[] back from the newest one and
 * e(x) = exp(jx):
 * - analysis of M = 32: u[n] = sum over j of c[2n + 128j] s[n + 64j],
 *   X[k] = 2 sum over n of u[n] e(pi/M (k + 1/2)(n + a));
 * - synthesis of M = 64 or 32: v[n] = 1/64 sum over k of re X[k] e(pi/M (k + 1/2)(n + b)), n below 2M, then
 *   windowed and overlapped over ten slots.
 *
 * Phases of the complex banks: a = -1/4, b = -127.5 for M = 64 and -63.75 for M = 32. The real banks have the
 * cosine instead of e, a = -48, b = -M/2 and the factor 1/32 instead of 1/64.
 */
typedef struct ZorsAnalysisFilterState_SBR_RToC_32f ZorsAnalysisFilterState_SBR_RToC_32f;
typedef struct ZorsAnalysisFilterState_SBR_RToC_32f32fc ZorsAnalysisFilterState_SBR_RToC_32f32fc;
typedef struct ZorsAnalysisFilterState_SBR_RToR_32f ZorsAnalysisFilterState_SBR_RToR_32f;
typedef struct ZorsSynthesisFilterState_SBR_CToR_32f ZorsSynthesisFilterState_SBR_CToR_32f;
typedef struct ZorsSynthesisFilterState_SBR_CToR_32fc32f ZorsSynthesisFilterState_SBR_CToR_32fc32f;
typedef struct ZorsSynthesisFilterState_SBR_RToR_32f ZorsSynthesisFilterState_SBR_RToR_32f;
typedef struct ZorsSynthesisDownFilterState_SBR_CToR_32f ZorsSynthesisDownFilterState_SBR_CToR_32f;
typedef struct ZorsSynthesisDownFilterState_SBR_CToR_32fc32f ZorsSynthesisDownFilterState_SBR_CToR_32fc32f;
typedef struct ZorsSynthesisDownFilterState_SBR_RToR_32f ZorsSynthesisDownFilterState_SBR_RToR_32f;

/** The bytes of a filter's state. \return zorStsNullPtrErr. */
ZOR_API ZorStatus zorsAnalysisFilterGetSize_SBR_RToC_32f(int* sizeByte);
ZOR_API ZorStatus zorsAnalysisFilterGetSize_SBR_RToC_32f32fc(int* sizeByte);
ZOR_API ZorStatus zorsAnalysisFilterGetSize_SBR_RToR_32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisFilterGetSize_SBR_CToR_32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisFilterGetSize_SBR_CToR_32fc32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisFilterGetSize_SBR_RToR_32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisDownFilterGetSize_SBR_CToR_32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisDownFilterGetSize_SBR_CToR_32fc32f(int* sizeByte);
ZOR_API ZorStatus zorsSynthesisDownFilterGetSize_SBR_RToR_32f(int* sizeByte);

/** Sets a filter up, with an empty delay line, in memory at any address. \return zorStsNullPtrErr. */
ZOR_API ZorStatus zorsAnalysisFilterInit_SBR_RToC_32f(ZorsAnalysisFilterState_SBR_RToC_32f** state,
                                                      Zor8u* memory);
ZOR_API ZorStatus zorsAnalysisFilterInit_SBR_RToC_32f32fc(ZorsAnalysisFilterState_SBR_RToC_32f32fc** state,
                                                          Zor8u* memory);
ZOR_API ZorStatus zorsAnalysisFilterInit_SBR_RToR_32f(ZorsAnalysisFilterState_SBR_RToR_32f** state,
                                                      Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisFilterInit_SBR_CToR_32f(ZorsSynthesisFilterState_SBR_CToR_32f** state,
                                                       Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisFilterInit_SBR_CToR_32fc32f(ZorsSynthesisFilterState_SBR_CToR_32fc32f** state,
                                                           Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisFilterInit_SBR_RToR_32f(ZorsSynthesisFilterState_SBR_RToR_32f** state,
                                                       Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisDownFilterInit_SBR_CToR_32f(ZorsSynthesisDownFilterState_SBR_CToR_32f** state,
                                                           Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisDownFilterInit_SBR_CToR_32fc32f(
    ZorsSynthesisDownFilterState_SBR_CToR_32fc32f** state, Zor8u* memory);
ZOR_API ZorStatus zorsSynthesisDownFilterInit_SBR_RToR_32f(ZorsSynthesisDownFilterState_SBR_RToR_32f** state,
                                                           Zor8u* memory);

/**
 * Analyses 32 numSlots samples into numSlots lines of 32 bands.
 * \return zorStsNullPtrErr, also for a null line; zorStsSizeErr for numSlots below 1; zorStsContextErr.
 */
ZOR_API ZorStatus zorsAnalysisFilter_SBR_RToC_32f_D2L(const Zor32f* src, Zor32f* const dstRe[],
                                                      Zor32f* const dstIm[], int numSlots,
                                                      ZorsAnalysisFilterState_SBR_RToC_32f* state);
ZOR_API ZorStatus zorsAnalysisFilter_SBR_RToC_32f32fc_D2L(const Zor32f* src, Zor32fc* const dst[],
                                                          int numSlots,
                                                          ZorsAnalysisFilterState_SBR_RToC_32f32fc* state);
ZOR_API ZorStatus zorsAnalysisFilter_SBR_RToR_32f_D2L(const Zor32f* src, Zor32f* const dst[], int numSlots,
                                                      ZorsAnalysisFilterState_SBR_RToR_32f* state);

/**
 * Synthesises numSlots lines of 64 bands to 64 numSlots samples ("Down": lines of 32 bands to 32 numSlots
 * samples). \return zorStsNullPtrErr, also for a null line; zorStsSizeErr for numSlots below 1;
 * zorStsContextErr.
 */
ZOR_API ZorStatus zorsSynthesisFilter_SBR_CToR_32f_D2L(const Zor32f* const srcRe[],
                                                       const Zor32f* const srcIm[], Zor32f* dst, int numSlots,
                                                       ZorsSynthesisFilterState_SBR_CToR_32f* state);
ZOR_API ZorStatus zorsSynthesisFilter_SBR_CToR_32fc32f_D2L(const Zor32fc* const src[], Zor32f* dst,
                                                           int numSlots,
                                                           ZorsSynthesisFilterState_SBR_CToR_32fc32f* state);
ZOR_API ZorStatus zorsSynthesisFilter_SBR_RToR_32f_D2L(const Zor32f* const src[], Zor32f* dst, int numSlots,
                                                       ZorsSynthesisFilterState_SBR_RToR_32f* state);
ZOR_API ZorStatus zorsSynthesisDownFilter_SBR_CToR_32f_D2L(const Zor32f* const srcRe[],
                                                           const Zor32f* const srcIm[], Zor32f* dst,
                                                           int numSlots,
                                                           ZorsSynthesisDownFilterState_SBR_CToR_32f* state);
ZOR_API ZorStatus
zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L(const Zor32fc* const src[], Zor32f* dst, int numSlots,
                                             ZorsSynthesisDownFilterState_SBR_CToR_32fc32f* state);
ZOR_API ZorStatus zorsSynthesisDownFilter_SBR_RToR_32f_D2L(const Zor32f* const src[], Zor32f* dst,
                                                           int numSlots,
                                                           ZorsSynthesisDownFilterState_SBR_RToR_32f* state);

/**
 * Prediction coefficients of SBR inverse filtering (ISO/IEC 14496-3, 4.6.18.6.2) for bands 0 to numBands - 1
 * by the covariance method over `length` slots, the cross term relaxed by 1/(1 + 1e-6): x[n] is predicted as
 * -alpha0 x[n-1] - alpha1 x[n-2]. Both coefficients are 0 where one of them reaches magnitude 4; alpha1 is 0
 * where the equations are singular. \param src  length + 2 lines, a slot each, the two slots before the first
 * one leading \return zorStsNullPtrErr, also for a null line; zorStsSizeErr for numBands or length below 1.
 */
ZOR_API ZorStatus zorsPredictCoef_SBR_R_32f_D2L(const Zor32f* const src[], Zor32f* alpha0, Zor32f* alpha1,
                                                int numBands, int length);
ZOR_API ZorStatus zorsPredictCoef_SBR_C_32f_D2L(const Zor32f* const srcRe[], const Zor32f* const srcIm[],
                                                Zor32f* alpha0Re, Zor32f* alpha0Im, Zor32f* alpha1Re,
                                                Zor32f* alpha1Im, int numBands, int length);
ZOR_API ZorStatus zorsPredictCoef_SBR_C_32fc_D2L(const Zor32fc* const src[], Zor32fc* alpha0, Zor32fc* alpha1,
                                                 int numBands, int length);

#ifdef __cplusplus
}
#endif

#endif
