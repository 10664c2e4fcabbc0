/** \file
 * The core of the library: initialisation, choice of the code path, facts about the processor, status texts.
 */
#ifndef ZORCORE_H
#define ZORCORE_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Processor type codes, by instruction set. Each code path serves its type and all above it. */
enum {
    zorCpuUnknown = 0,
    zorCpuSSE = 64,
    zorCpuSSE2 = 65,
    zorCpuSSE3 = 66,
    zorCpuSSSE3 = 67,
    zorCpuSSE41 = 68,
    zorCpuSSE42 = 69,
    zorCpuAVX = 70,
    zorCpuAVX2 = 71,
    zorCpuX8664 = 96
};

/** The type of this processor: the highest of the instruction-set codes that it can run. */
ZOR_API int zorGetCpuType(void);

/** The number of processor cores on the die, at least 1. */
ZOR_API int zorGetNumCoresOnDie(void);

/**
 * The size of the largest data cache in bytes.
 * Taken from the environment variable ZOR_MAX_CACHE_SIZE (bytes, or with K or M) where it is set, since
 * virtual machines often report the cache of their host; else from CPUID leaf 4, leaf 0x8000001D,
 * leaves 0x80000005 and 0x80000006, and the C library's system configuration, in this order.
 * \return zorStsNullPtrErr; zorStsUnknownCacheSize with size 0 where no source knows it.
 */
ZOR_API ZorStatus zorGetMaxCacheSizeB(int* sizeByte);

/** The text of a status; never null. */
ZOR_API const char* zorGetStatusString(ZorStatus status);

/** Chooses the best code path for this processor. */
ZOR_API ZorStatus zorInit(void);

/**
 * Chooses the code path of a processor type.
 * \return zorStsBadArgErr for a code that is no type, zorStsCpuNotSupportedErr for one that this processor
 *         cannot run; the code path stays as it was.
 */
ZOR_API ZorStatus zorInitCpu(int cpuType);

/**
 * Tells the number of threads that the library may use. The functions of this library run in the caller's
 * thread, so any number of 1 or more is accepted and has no effect.
 * \return zorStsSizeErr for a number below 1, zorStsNoOperation for one above 1.
 */
ZOR_API ZorStatus zorSetNumThreads(int numThr);

/** The version record of the core library. */
ZOR_API const ZorLibraryVersion* zorcoreGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif
