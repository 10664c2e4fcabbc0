/** \file
 * Types that the four libraries share: status codes, element types, sizes and the version record.
 * Plain C, usable from C and C++.
 *
 * Parameters speak one language in all headers: src, dst and srcDst (in place), with L and R for channels;
 * length counts elements and sizeByte bytes; bitStream, bitOffset and bitStreamEnd are a position in a
 * stream; state is what lives from call to call, memory where a caller has a state put, buffer work space of
 * one call. No name tells its type.
 */
#ifndef ZORTYPES_H
#define ZORTYPES_H

#include <stddef.h>
#include <stdint.h>

#if defined(ZOR_BUILD)
#define ZOR_API __attribute__((visibility("default")))
#else
#define ZOR_API
#endif

/** Status of a library call: 0 success, negative error (nothing was computed), positive warning. */
typedef int ZorStatus;

enum {
    zorStsNoErr = 0,                /**< success */
    zorStsBadArgErr = -5,           /**< an argument is out of its range */
    zorStsSizeErr = -6,             /**< a length or count is out of its range */
    zorStsNullPtrErr = -8,          /**< a pointer is null */
    zorStsMemAllocErr = -9,         /**< memory for a state could not be had */
    zorStsCpuNotSupportedErr = -10, /**< the processor cannot run the requested code path */
    zorStsStreamEndErr = -11,       /**< the bit stream ends before the element does */
    zorStsBadStreamErr = -12,       /**< the bit stream holds a code or a count that the syntax forbids */
    zorStsContextErr = -13,         /**< a state was not set up, or for another function */
    zorStsScaleRangeErr = -14,      /**< a scale factor is out of its range */
    zorStsUnknownCacheSize = 37,    /**< the size of the caches cannot be told */
    zorStsCacheSizeIgnored = 38,    /**< ZOR_MAX_CACHE_SIZE holds no size */
    zorStsRunsPortable = 40, /**< the processor type has no code of its own and runs the portable one */
    zorStsRunsSSE2 = 41,     /**< the same, and runs that of SSE2 */
    zorStsRunsAVX = 42,      /**< the same, and runs that of AVX */
    zorStsRunsAVX2 = 43,     /**< the same, and runs that of AVX2 */
    zorStsNoOperation = 1,   /**< nothing had to be done */
    zorStsOverflow = 12      /**< a value did not fit and was saturated */
};

/* Unsigned and signed integers, floating point; "c" is a complex pair. */
typedef uint8_t Zor8u;
typedef uint16_t Zor16u;
typedef uint32_t Zor32u;
typedef uint64_t Zor64u;
typedef int8_t Zor8s;
typedef int16_t Zor16s;
typedef int32_t Zor32s;
typedef int64_t Zor64s;
typedef float Zor32f;
typedef double Zor64f;

typedef struct {
    Zor8s re, im;
} Zor8sc;
typedef struct {
    Zor16s re, im;
} Zor16sc;
typedef struct {
    Zor16u re, im;
} Zor16uc;
typedef struct {
    Zor32s re, im;
} Zor32sc;
typedef struct {
    Zor64s re, im;
} Zor64sc;
typedef struct {
    Zor32f re, im;
} Zor32fc;
typedef struct {
    Zor64f re, im;
} Zor64fc;

/** A two-dimensional size, in elements. */
typedef struct {
    int width, height;
} ZoriSize;

/** The bits that a call has read or written: from the position in a stream before it to that behind it. */
static inline ptrdiff_t zorBitsBetween(const Zor8u* from, int fromOffset, const Zor8u* to, int toOffset) {
    return 8 * (to - from) + toOffset - fromOffset;
}

/** What a library says of itself; the texts live as long as the library is loaded. */
typedef struct {
    int major;             /**< version, before the dot */
    int minor;             /**< version, after the dot */
    const char* name;      /**< file name of the library, for example "libzorac.so" */
    const char* version;   /**< version as text */
    const char* buildDate; /**< date of the build as text */
} ZorLibraryVersion;

#endif
