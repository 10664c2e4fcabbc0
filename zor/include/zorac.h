/** \file
 * Audio coding: the building blocks of AAC, MP3, SBR, DTS and vector quantisation, a header for each domain.
 *
 * Every function returns a ZorStatus. Arguments are checked once per call; a call that fails with a negative
 * status has written nothing unless its comment says otherwise. No function allocates memory except the
 * ones whose name ends in "InitAlloc" before the type.
 */
#ifndef ZORAC_H
#define ZORAC_H

#include "zorac/aac.h"
#include "zorac/aacfloat.h"
#include "zorac/aacstream.h"
#include "zorac/dts.h"
#include "zorac/mp3.h"
#include "zorac/sbr.h"
#include "zorac/transform.h"
#include "zorac/vq.h"
#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The version record of this library. */
ZOR_API const ZorLibraryVersion* zoracGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif
