/** \file
 * The filter bank of DTS coherent acoustics (ETSI TS 102 114).
 */
#ifndef ZORAC_DTS_H
#define ZORAC_DTS_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The 32-band synthesis filter of DTS coherent acoustics (ETSI TS 102 114, 512 taps). A sine of amplitude a
 * in the middle of a band comes from sub-band samples of amplitude a (synthesis factor 64 on the printed
 * taps).
 */
typedef struct ZorsSynthesisFilterState_DTS_32f ZorsSynthesisFilterState_DTS_32f;

/** \return zorStsNullPtrErr. */
ZOR_API ZorStatus zorsSynthesisFilterGetSize_DTS_32f(int* sizeByte);
/** Sets a filter up, with an empty delay line, in memory at any address. \return zorStsNullPtrErr. */
ZOR_API ZorStatus zorsSynthesisFilterInit_DTS_32f(ZorsSynthesisFilterState_DTS_32f** state, Zor8u* memory);
/**
 * 32 sub-band samples at src to 32 samples at dst.
 * \param mode  which taps: 1 those for perfect reconstruction, 0 the others (the stream's FILTS)
 * \return zorStsNullPtrErr, zorStsContextErr; zorStsBadArgErr for another mode.
 */
ZOR_API ZorStatus zorsSynthesisFilter_DTS_32f(const Zor32f* src, Zor32f* dst,
                                              ZorsSynthesisFilterState_DTS_32f* state, int mode);

#ifdef __cplusplus
}
#endif

#endif
