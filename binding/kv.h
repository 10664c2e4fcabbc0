/** \file
 * The binding of the harness to the library: all that a test unit includes beside the library's headers.
 *
 * The short form of a test is in kvmeasure.h, what a program says of its library in kvlibrary.h.
 *
 * Where the core header of the reference library is included first, the unit hands its core functions to the
 * harness; without it the harness's own stand in for them.
 */
#ifndef KV_H
#define KV_H

#include "bxunit.h"
#include "kvbitvector.h"
#include "kvfunc.h"
#include "kvlibrary.h"
#include "kvmeasure.h"
#include "kvregister.h"
#include "kvscaleiterator.h"
#include "kvtest.h"
#include "kvtype.h"
#include "kvvector.h"
#include "kvvlctable.h"

/** Weak: programs of other libraries do not link the reference library, and the title does not name it. */
extern "C" [[gnu::weak]] const ZorLibraryVersion* zoracGetLibVersion(void);

namespace {

/** The version record of the audio-coding domain. */
const ZorLibraryVersion* kvGetZorVersion_zorac() {
    return zoracGetLibVersion();
}

[[maybe_unused]] const bool s_kvVersionRegistered =
    zoracGetLibVersion != nullptr && bxRegZorVersion(kvGetZorVersion_zorac);

#ifdef ZORCORE_H
/** Binds the seven core functions of the library. */
void kvSetZorEnvironment() {
    zor_GetCpuType = zorGetCpuType;
    zor_GetNumCoresOnDie = zorGetNumCoresOnDie;
    zor_GetMaxCacheSizeB = zorGetMaxCacheSizeB;
    zor_GetStatusString = zorGetStatusString;
    zor_Init = zorInit;
    zor_InitCpu = zorInitCpu;
    zor_SetNumThreads = zorSetNumThreads;
}

[[maybe_unused]] const bool s_kvEnvironmentRegistered = bxRegZorEnvironment(kvSetZorEnvironment);
#endif

} // namespace

#endif
