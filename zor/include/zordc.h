/** \file
 * Data compression: variable-length coding over code tables.
 *
 * Every function returns a ZorStatus. Arguments are checked once per call; a call that fails with a negative
 * status has written nothing unless its comment says otherwise. No function allocates memory except the
 * ones whose name ends in "InitAlloc" before the type.
 */
#ifndef ZORDC_H
#define ZORDC_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The version record of this library. */
ZOR_API const ZorLibraryVersion* zordcGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif
