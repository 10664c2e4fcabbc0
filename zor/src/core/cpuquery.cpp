#include "cpuquery.h"

#include <cpuid.h>

namespace zor {

CpuidLeaf cpuid(std::uint32_t leaf, std::uint32_t subleaf) {
    CpuidLeaf r{};
    const std::uint32_t range = leaf & 0x80000000U;
    if (leaf <= static_cast<std::uint32_t>(__get_cpuid_max(range, nullptr)) &&
        __get_cpuid_max(0, nullptr) != 0)
        __cpuid_count(leaf, subleaf, r[eax], r[ebx], r[ecx], r[edx]);
    return r;
}

std::uint64_t extendedControl() {
    constexpr unsigned osxsave = 27; // leaf 1 ECX: XGETBV may be executed
    if (bits(cpuid(1, 0)[ecx], osxsave, osxsave) == 0)
        return 0;
    std::uint32_t low, high;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return std::uint64_t{high} << 32 | low;
}

} // namespace zor
