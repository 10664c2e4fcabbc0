#include "zorcore.h"

#include <algorithm>
#include <array>

namespace {

struct StatusRow {
    ZorStatus status;
    const char* text;
};

constexpr std::array statusRows = {
    StatusRow{zorStsContextErr, "State was not set up, or for another function"},
    StatusRow{zorStsScaleRangeErr, "Scale factor is out of its range"},
    StatusRow{zorStsBadStreamErr, "Bit stream holds what its syntax forbids"},
    StatusRow{zorStsStreamEndErr, "Bit stream ends before its element does"},
    StatusRow{zorStsCpuNotSupportedErr, "Processor cannot run the requested type"},
    StatusRow{zorStsMemAllocErr, "Memory could not be allocated"},
    StatusRow{zorStsNullPtrErr, "Pointer is null"},
    StatusRow{zorStsSizeErr, "Length or count is out of its range"},
    StatusRow{zorStsBadArgErr, "Argument is out of its range"},
    StatusRow{zorStsNoErr, "No error"},
    StatusRow{zorStsRunsPortable, "Processor type has no code of its own and runs the portable one"},
    StatusRow{zorStsRunsSSE2, "Processor type has no code of its own and runs that of SSE2"},
    StatusRow{zorStsRunsAVX, "Processor type has no code of its own and runs that of AVX"},
    StatusRow{zorStsRunsAVX2, "Processor type has no code of its own and runs that of AVX2"},
    StatusRow{zorStsNoOperation, "Nothing had to be done"},
    StatusRow{zorStsOverflow, "Value did not fit and was saturated"},
    StatusRow{zorStsUnknownCacheSize, "Size of the caches is not known"},
    StatusRow{zorStsCacheSizeIgnored, "ZOR_MAX_CACHE_SIZE holds no size in bytes, K or M and is ignored"},
};

} // namespace

extern "C" const char* zorGetStatusString(ZorStatus status) {
    const auto row = std::ranges::find(statusRows, status, &StatusRow::status);
    if (row != statusRows.end())
        return row->text;
    return status < 0 ? "Unknown error" : "Unknown warning";
}
