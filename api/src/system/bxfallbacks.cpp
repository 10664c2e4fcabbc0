#include "system/bxcpuid.h"
#include "system/bxcputype.h"
#include "system/bxenvironment.h"
#include "system/bxprobes.h"

#include <algorithm>

namespace {

/** What the library without a core answers to all set-up calls. */
constexpr ZorStatus noCore = -2;

/** Statuses of the cache-size query. */
enum : ZorStatus { sizeFound = 0, notYetComputed = 1, notGenuine = 36, noCacheSize = 37 };

/** The largest data or unified cache by the deterministic cache parameters. */
int largestDataCache() {
    constexpr unsigned int endOfList = 0, instructionCache = 2;
    int largest = 0;
    for (unsigned int level = 0; level < 32; ++level) {
        const CPUID leaf(4, level);
        const unsigned int type = leaf.getBits(CPUID::EAX, 4, 0);
        if (type == endOfList)
            break;
        if (type != instructionCache)
            largest = std::max(largest, bxDecodeCacheSizeB(leaf));
    }
    return largest;
}

ZorStatus findMaxCacheSize(int& size) {
    size = 0;
    const int highestLeaf = zor_max_cpuid_input();
    if (!zor_has_cpuid() || highestLeaf <= 1 || !zor_is_GenuineQuarn())
        return notGenuine;
    const int found = highestLeaf < 4 ? bxDecodeLeaf2CacheSizeB(CPUID(2)) : largestDataCache();
    if (found <= 0)
        return noCacheSize;
    size = found;
    return sizeFound;
}

} // namespace

int bx_zorGetCpuType() {
    if (!zor_has_cpuid())
        return 0;
    bxCpuIdent ident;
    zor_get_cpu_ident(&ident);
    return bxCpuTypeOf(ident, {.genuine = zor_is_GenuineQuarn() != 0,
                               .avx = zor_is_avx_extension() != 0,
                               .longMode = zor_is_x64_extension() != 0});
}

int bx_zorGetNumCoresOnDie() {
    if (!zor_has_cpuid() || zor_max_cpuid_input() < 4)
        return 1;
    return static_cast<int>(CPUID(4).getBits(CPUID::EAX, 31, 26)) + 1;
}

ZorStatus bx_zorGetMaxCacheSizeB(int* size) {
    static ZorStatus storedStatus = notYetComputed;
    static int storedSize = 0;
    if (storedStatus == notYetComputed)
        storedStatus = findMaxCacheSize(storedSize);
    *size = storedSize;
    return storedStatus;
}

const char* s_zorGetStatusString(ZorStatus status) {
    return status < 0 ? "Error" : status == 0 ? "OK" : "Warning";
}

ZorStatus s_zorInit() {
    return noCore;
}

ZorStatus s_zorInitCpu(int) {
    return noCore;
}

ZorStatus s_zorSetNumThreads(int) {
    return noCore;
}
