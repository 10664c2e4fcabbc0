/** \file
 * The core of the library: initialisation, choice of the code path, facts about the processor, status texts.
 */
#ifndef ZORCORE_H
#define ZORCORE_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Processor type codes: what a processor has to offer for the library to take the code path of the type.
 * A type is refused by zorInitCpu where the processor lacks one of its instruction sets.
 */
enum {
    zorCpuUnknown = 0,     /**< any processor */
    zorCpuX87 = 1,         /**< floating-point unit */
    zorCpuGen5 = 2,        /**< fifth generation: x87, time-stamp counter */
    zorCpuGen5MMX = 3,     /**< fifth generation with MMX */
    zorCpuGen6 = 4,        /**< sixth generation: conditional moves */
    zorCpuGen6MMX = 5,     /**< sixth generation with MMX */
    zorCpuSSE = 64,        /**< SSE */
    zorCpuSSE2 = 65,       /**< SSE2 */
    zorCpuSSE3 = 66,       /**< SSE3 */
    zorCpuSSSE3 = 67,      /**< SSSE3 */
    zorCpuSSE41 = 68,      /**< SSE4.1 */
    zorCpuSSE42 = 69,      /**< SSE4.2 */
    zorCpuAVX = 70,        /**< AVX */
    zorCpuAVX2 = 71,       /**< AVX2 with FMA */
    zorCpuMOVBE = 72,      /**< SSSE3 with MOVBE, as low-power processors have it */
    zorCpuPOPCNT = 73,     /**< SSE4.2 with POPCNT */
    zorCpuAES = 74,        /**< SSE4.2 with AES and carry-less multiplication */
    zorCpuF16C = 75,       /**< AVX with half-precision conversion */
    zorCpuFMA = 76,        /**< AVX with FMA */
    zorCpuBMI2 = 77,       /**< AVX2 with FMA and both bit manipulation sets */
    zorCpuAVXVNNI = 78,    /**< AVX2 with FMA and AVX-VNNI */
    zorCpuAVX512F = 79,    /**< AVX-512 foundation */
    zorCpuAVX512CD = 80,   /**< AVX-512 with conflict detection */
    zorCpuAVX512BW = 81,   /**< AVX-512 with CD, BW, DQ and VL */
    zorCpuAVX512VNNI = 82, /**< AVX-512 with CD, BW, DQ, VL and VNNI */
    zorCpuAVX512BF16 = 83, /**< the same with BF16 */
    zorCpuX8664 = 96,      /**< 64-bit processor: SSE2 */
    zorCpuX8664v2 = 97,    /**< 64-bit level 2: SSE4.2, POPCNT */
    zorCpuX8664v3 = 98,    /**< 64-bit level 3: AVX2, FMA, BMI, MOVBE, F16C */
    zorCpuX8664v4 = 99     /**< 64-bit level 4: AVX-512 F, CD, BW, DQ, VL */
};

/** The type of this processor: the highest of the codes from zorCpuSSE to zorCpuAVX2 that it can run. */
ZOR_API int zorGetCpuType(void);

/** The number of processor cores on the die, at least 1. */
ZOR_API int zorGetNumCoresOnDie(void);

/**
 * The size of the largest data cache in bytes.
 * Taken from the environment variable ZOR_MAX_CACHE_SIZE (bytes, or with K or M) where it is set, since
 * virtual machines often report the cache of their host; else from CPUID leaf 4, leaf 0x8000001D,
 * leaves 0x80000005 and 0x80000006, and the C library's system configuration, in this order.
 * \return zorStsNullPtrErr; zorStsUnknownCacheSize with size 0 where no source knows it;
 * zorStsCacheSizeIgnored with the size of another source where the variable holds none.
 */
ZOR_API ZorStatus zorGetMaxCacheSizeB(int* sizeByte);

/** The text of a status; never null. */
ZOR_API const char* zorGetStatusString(ZorStatus status);

/** Chooses the best code path for this processor, which is in force from the start. */
ZOR_API ZorStatus zorInit(void);

/**
 * Chooses the code path of a processor type.
 * \return zorStsNoErr for a type that the library has code for: zorCpuUnknown, zorCpuX87, zorCpuSSE2,
 * zorCpuAVX, zorCpuAVX2; for all others a positive status, zorStsRunsPortable to zorStsRunsAVX2, which tells
 * whose code they run. zorStsBadArgErr for a code that is no type, zorStsCpuNotSupportedErr for one that this
 * processor cannot run; the code path stays as it was.
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
