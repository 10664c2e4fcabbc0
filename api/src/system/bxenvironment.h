/** \file
 * The tested library's core as the harness sees it: seven bound functions with fallbacks, the hooks that test
 * units register, and what the library says of itself. Registration works from any static initialiser.
 */
#ifndef BXENVIRONMENT_H
#define BXENVIRONMENT_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"
#include "zortypes.h"

/** \name Bound core functions
 * Null until `setZorEnvironment`, then the library's functions or the fallbacks. */
/** @{ */
extern int (*zor_GetCpuType)();
extern int (*zor_GetNumCoresOnDie)();
extern ZorStatus (*zor_GetMaxCacheSizeB)(int* sizeByte);
extern const char* (*zor_GetStatusString)(ZorStatus status);
extern ZorStatus (*zor_Init)();
extern ZorStatus (*zor_InitCpu)(int cpuType);
extern ZorStatus (*zor_SetNumThreads)(int number);
/** @} */

using bxEnvironmentHook = void (*)();
using bxVersionHook = const ZorLibraryVersion* (*)();

/** The hook that binds the library's core functions; null where no unit registered one. */
extern bxEnvironmentHook zorEnvironment;
/** Version hooks in the order of their registration; null before the first. */
extern bxList<bxVersionHook>* zorVersionList;
/** Texts of the libraries, each once; null before the first. */
extern bxStringList* g_pLibInfoList;
/** Names of library functions registered as applied; null before the first. */
extern bxStringList* g_pLibFuncList;
/** Processor type chosen by -T; -1 for none. */
extern int s_cpuType;
/** Number of threads chosen by -N; 0 for none. */
extern int s_numThreads;

/** Registers the hook that binds the core functions; the last one counts. Always true. */
bool bxRegZorEnvironment(bxEnvironmentHook hook);
/** Registers one more version hook. Always true. */
bool bxRegZorVersion(bxVersionHook hook);
/** Adds a library text; false when it is there already. */
bool bxRegLibInfo(const bxString& text);
/** Adds the name of an applied library function; false for an empty name. */
bool bxRegLibFunc(const bxString& name);

/** Binds the core functions: the library's through the hook, fallbacks for what is still missing. */
bool setZorEnvironment();
/** Tells the library the processor type of -T, or to choose one; only with a hook. */
void initStaticCpu();
/** Tells the library the number of threads of -N; only with a hook. */
void setNumThreads();
/** Collects the texts of the registered version hooks. */
void setZorLibInfo();

/**
 * Size in bytes of the largest cache by the library's query or, before one is bound, its fallback; 0 where it
 * does not know. A setting that was ignored does not make the size unknown.
 */
int bxLibraryCacheSizeB();
/** What the library's query says beside a size, or in place of one; empty where all is well or without a
 * library. */
bxString bxCacheSizeProblem();

/** \name Fallbacks for a library without core functions */
/** @{ */
int bx_zorGetCpuType();
int bx_zorGetNumCoresOnDie();
ZorStatus bx_zorGetMaxCacheSizeB(int* size);
const char* s_zorGetStatusString(ZorStatus status);
ZorStatus s_zorInit();
ZorStatus s_zorInitCpu(int cpuType);
ZorStatus s_zorSetNumThreads(int number);
/** @} */

#endif
