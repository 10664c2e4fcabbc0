/** \file
 * The binding of the harness to the library: all that a test unit includes beside the library's headers.
 *
 * Where the library's core header is included first, the unit hands the library's core functions to the
 * harness; without it the harness's own stand in for them.
 */
#ifndef KV_H
#define KV_H

#include "bxunit.h"
#include "kvbitvector.h"
#include "kvfunc.h"
#include "kvregister.h"
#include "kvscaleiterator.h"
#include "kvtest.h"
#include "kvtype.h"
#include "kvvector.h"
#include "kvvlctable.h"

extern "C" const ZorLibraryVersion* zoracGetLibVersion(void);

namespace {

/** The version record of the audio-coding domain. */
const ZorLibraryVersion* kvGetZorVersion_zorac() {
    return zoracGetLibVersion();
}

[[maybe_unused]] const bool s_kvVersionRegistered = bxRegZorVersion(kvGetZorVersion_zorac);

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
