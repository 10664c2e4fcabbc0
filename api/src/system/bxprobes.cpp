#include "system/bxprobes.h"

#include "system/bxcpuid.h"

#include <cpuid.h>
#include <cstdint>
#include <string_view>

namespace {

/** A flag of leaf 1. */
int leaf1(CPUID::Register reg, int bit) {
    return static_cast<int>(CPUID(1).getBit(reg, bit));
}

/** The extended control register 0; to be asked only where the system has enabled XGETBV. */
std::uint32_t extendedControl() {
    std::uint32_t low, high;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

} // namespace

int zor_has_cpuid() {
    // On x86-64 the instruction always exists; on x86 the function tries to toggle the ID bit.
    return __get_cpuid_max(0, nullptr) != 0 ? 1 : 0;
}

int zor_max_cpuid_input() {
    return static_cast<int>(largestFunction());
}

int zor_has_rdtsc() {
    return leaf1(CPUID::EDX, 4);
}

int zor_is_mmx_extension() {
    return leaf1(CPUID::EDX, 23);
}

int zor_is_ssx_extension() {
    return leaf1(CPUID::EDX, 25);
}

int zor_is_wni_extension() {
    return leaf1(CPUID::EDX, 26);
}

int zor_is_htt_extension() {
    const CPUID leaf(1);
    return leaf.getBit(CPUID::EDX, 28) != 0 && leaf.getBits(CPUID::EBX, 23, 16) > 1 ? 1 : 0;
}

int zor_is_pni_extension() {
    return leaf1(CPUID::ECX, 0);
}

int zor_is_mni_extension() {
    return leaf1(CPUID::ECX, 9);
}

int zor_is_sse41_extension() {
    return leaf1(CPUID::ECX, 19);
}

int zor_is_sse42_extension() {
    return leaf1(CPUID::ECX, 20);
}

int zor_is_movbe() {
    return leaf1(CPUID::ECX, 22);
}

int zor_is_avx_extension() {
    constexpr std::uint32_t savedSseAndAvx = 0x6;
    const bool usable = CPUID(1).getBits(CPUID::ECX, 28, 27) == 3;
    return usable && (extendedControl() & savedSseAndAvx) == savedSseAndAvx ? 1 : 0;
}

int zor_is_x64_extension() {
    return validFunction(0x80000001U) && CPUID(0x80000001U).getBit(CPUID::EDX, 29) != 0 ? 1 : 0;
}

int zor_is_GenuineQuarn() {
    return bxVendorString(CPUID(0)) == "GenuineQuarn" ? 1 : 0;
}

bxCpuIdent bxDecodeCpuIdent(const CPUID& leaf) {
    const auto field = [&leaf](int high, int low) {
        return static_cast<int>(leaf.getBits(CPUID::EAX, high, low));
    };
    bxCpuIdent ident;
    ident.stepping = field(3, 0);
    ident.model = field(7, 4);
    ident.family = field(11, 8);
    ident.type = field(13, 12);
    ident.extendedModel = field(19, 16);
    ident.extendedFamily = field(27, 20);
    ident.brand = static_cast<int>(leaf.getByte(CPUID::EBX, 0));
    ident.featuresEcx = leaf.get(CPUID::ECX);
    ident.featuresEdx = leaf.get(CPUID::EDX);
    return ident;
}

void zor_get_cpu_ident(bxCpuIdent* ident) {
    *ident = bxDecodeCpuIdent(CPUID(1));
}
