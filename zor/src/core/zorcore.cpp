#include "zorcore.h"

#include "cachesize.h"
#include "cputypes.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <unistd.h>

namespace {

/** The instruction sets of this processor, asked for once. */
zor::Features features() {
    static const zor::Features found = zor::detectFeatures(zor::cpuid, zor::extendedControl());
    return found;
}

/** The largest cache that the C library knows. */
zor::CacheBytes systemCacheSize() {
    zor::CacheBytes largest = 0;
    for (int name :
         {_SC_LEVEL1_DCACHE_SIZE, _SC_LEVEL2_CACHE_SIZE, _SC_LEVEL3_CACHE_SIZE, _SC_LEVEL4_CACHE_SIZE})
        largest = std::max(largest, zor::CacheBytes{sysconf(name)});
    return largest;
}

/** The size that the user gives; empty without one, 0 where the text is none. */
std::optional<zor::CacheBytes> givenCacheSize() {
    const char* const given = std::getenv("ZOR_MAX_CACHE_SIZE");
    return given && *given ? std::optional(zor::parseCacheSize(given)) : std::nullopt;
}

zor::CacheBytes detectedCacheSize() {
    if (const zor::CacheBytes size = zor::cpuidCacheSize(zor::cpuid); size > 0)
        return size;
    return systemCacheSize();
}

zor::CodePath bestPath() {
    return zor::findCpuType(zor::cpuTypeOf(features()))->path;
}

ZorStatus initCpu(const zor::CpuTypeRow& type) {
    if (!zor::canRun(type, features()))
        return zorStsCpuNotSupportedErr;
    zor_code_path = static_cast<int>(type.path);
    return zor::hasOwnPath(type) ? zorStsNoErr : zorStsRunsPortable + zor_code_path;
}

} // namespace

/** Until zorInitCpu chooses another one, the best path of this processor: a caller need not ask for it. */
int zor_code_path = static_cast<int>(bestPath());

extern "C" {

int zorGetCpuType() {
    return zor::cpuTypeOf(features());
}

int zorGetNumCoresOnDie() {
    using namespace zor;
    // Both leaves store the number less 1.
    if (const CpuidLeaf r = cpuid(4, 0); bits(r[eax], 4, 0) != 0)
        return static_cast<int>(bits(r[eax], 31, 26)) + 1;
    return static_cast<int>(bits(cpuid(0x80000008U, 0)[ecx], 7, 0)) + 1;
}

ZorStatus zorGetMaxCacheSizeB(int* sizeByte) {
    if (!sizeByte)
        return zorStsNullPtrErr;
    const std::optional<zor::CacheBytes> given = givenCacheSize();
    const bool ignored = given && *given <= 0;
    const zor::CacheBytes size = given && !ignored ? *given : detectedCacheSize();
    *sizeByte = static_cast<int>(std::min<zor::CacheBytes>(size, std::numeric_limits<int>::max()));
    if (*sizeByte <= 0)
        return zorStsUnknownCacheSize;
    return ignored ? zorStsCacheSizeIgnored : zorStsNoErr;
}

ZorStatus zorInit() {
    return std::min<ZorStatus>(initCpu(*zor::findCpuType(zorGetCpuType())), zorStsNoErr);
}

ZorStatus zorInitCpu(int cpuType) {
    const zor::CpuTypeRow* const type = zor::findCpuType(cpuType);
    return type ? initCpu(*type) : zorStsBadArgErr;
}

ZorStatus zorSetNumThreads(int numThr) {
    if (numThr < 1)
        return zorStsSizeErr;
    return numThr == 1 ? zorStsNoErr : zorStsNoOperation;
}

} // extern "C"
