/** \file
 * The size of the largest data cache, from the sources that processors of all makers offer.
 */
#ifndef ZOR_CACHESIZE_H
#define ZOR_CACHESIZE_H

#include "cpuquery.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

namespace zor {

/** Size in bytes, 0 where a source knows none. */
using CacheBytes = std::int64_t;

/**
 * A size as a user writes it: a decimal number of bytes, or of units of 1024 (K) or 1048576 (M).
 * \return 0 for anything else, for 0 and for 2 GiB and more.
 */
inline CacheBytes parseCacheSize(std::string_view text) {
    CacheBytes unit = 1;
    if (text.ends_with('K') || text.ends_with('k'))
        unit = 1024;
    else if (text.ends_with('M') || text.ends_with('m'))
        unit = 1024 * 1024;
    if (unit != 1)
        text.remove_suffix(1);
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const CacheBytes size = number * unit;
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && size <= std::numeric_limits<int>::max() ? size : 0;
}

/**
 * The largest data or unified cache of the deterministic cache parameters, which leaf 4 and leaf 0x8000001D
 * give in the same layout: sets x line size x partitions x ways, each stored less 1.
 */
inline CacheBytes deterministicCacheSize(CpuidQuery query, std::uint32_t leaf) {
    constexpr std::uint32_t endOfList = 0, instructionCache = 2;
    CacheBytes largest = 0;
    for (std::uint32_t i = 0; i < 32; ++i) {
        const CpuidLeaf r = query(leaf, i);
        const std::uint32_t type = bits(r[eax], 4, 0);
        if (type == endOfList)
            break;
        if (type == instructionCache)
            continue;
        const CacheBytes lineBytes = bits(r[ebx], 11, 0) + 1;
        const CacheBytes partitions = bits(r[ebx], 21, 12) + 1;
        const CacheBytes ways = bits(r[ebx], 31, 22) + 1;
        largest = std::max(largest, (CacheBytes{r[ecx]} + 1) * lineBytes * partitions * ways);
    }
    return largest;
}

/** The largest of L1 data (leaf 0x80000005), L2 and L3 (leaf 0x80000006). */
inline CacheBytes extendedCacheSize(CpuidQuery query) {
    const CacheBytes l1 = CacheBytes{bits(query(0x80000005U, 0)[ecx], 31, 24)} * 1024;
    const CpuidLeaf r = query(0x80000006U, 0);
    const CacheBytes l2 = CacheBytes{bits(r[ecx], 31, 16)} * 1024;
    const CacheBytes l3 = CacheBytes{bits(r[edx], 31, 18)} * 512 * 1024;
    return std::max({l1, l2, l3});
}

/** The first source of CPUID that knows a size. */
inline CacheBytes cpuidCacheSize(CpuidQuery query) {
    for (std::uint32_t leaf : {4U, 0x8000001DU})
        if (const CacheBytes size = deterministicCacheSize(query, leaf); size > 0)
            return size;
    return extendedCacheSize(query);
}

} // namespace zor

#endif
