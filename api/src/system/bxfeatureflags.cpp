#include "system/bxcpuid.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr unsigned int exLeaf = 0x80000001U;

} // namespace

constinit const std::array<bxFeatureFlag, 68> FeatureFlags = {{
    {1, CPUID::EDX, 0, "FPU", "Floating-point unit on chip"},
    {1, CPUID::EDX, 1, "VME", "Virtual 8086 mode enhancements"},
    {1, CPUID::EDX, 2, "DE", "Debugging extensions"},
    {1, CPUID::EDX, 3, "PSE", "Page size extension"},
    {1, CPUID::EDX, 4, "TSC", "Time-stamp counter"},
    {1, CPUID::EDX, 5, "MSR", "Model-specific registers"},
    {1, CPUID::EDX, 6, "PAE", "Physical address extension"},
    {1, CPUID::EDX, 7, "MCE", "Machine check exception"},
    {1, CPUID::EDX, 8, "CX8", "CMPXCHG8B instruction"},
    {1, CPUID::EDX, 9, "APIC", "APIC on chip"},
    {1, CPUID::EDX, 10, "", ""},
    {1, CPUID::EDX, 11, "SEP", "SYSENTER and SYSEXIT instructions"},
    {1, CPUID::EDX, 12, "MTRR", "Memory type range registers"},
    {1, CPUID::EDX, 13, "PGE", "Page global bit"},
    {1, CPUID::EDX, 14, "MCA", "Machine check architecture"},
    {1, CPUID::EDX, 15, "CMOV", "Conditional move instructions"},
    {1, CPUID::EDX, 16, "PAT", "Page attribute table"},
    {1, CPUID::EDX, 17, "PSE-36", "36-bit page size extension"},
    {1, CPUID::EDX, 18, "PSN", "Processor serial number"},
    {1, CPUID::EDX, 19, "CLFSH", "CLFLUSH instruction"},
    {1, CPUID::EDX, 20, "", ""},
    {1, CPUID::EDX, 21, "DS", "Debug store"},
    {1, CPUID::EDX, 22, "ACPI", "Thermal monitor and clock control"},
    {1, CPUID::EDX, 23, "MMX", "MMX instructions"},
    {1, CPUID::EDX, 24, "FXSR", "FXSAVE and FXRSTOR instructions"},
    {1, CPUID::EDX, 25, "SSE", "Streaming SIMD extensions"},
    {1, CPUID::EDX, 26, "SSE2", "Streaming SIMD extensions 2"},
    {1, CPUID::EDX, 27, "SS", "Self-snoop"},
    {1, CPUID::EDX, 28, "MT", "Multi-threading"},
    {1, CPUID::EDX, 29, "TM", "Thermal monitor"},
    {1, CPUID::EDX, 30, "ALT64", "Other 64-bit architecture running x86 code"},
    {1, CPUID::EDX, 31, "PBE", "Pending break enable"},
    {1, CPUID::ECX, 0, "SSE3", "Streaming SIMD extensions 3"},
    {1, CPUID::ECX, 1, "", ""},
    {1, CPUID::ECX, 2, "DTES64", "64-bit debug store area"},
    {1, CPUID::ECX, 3, "MONITOR", "MONITOR and MWAIT instructions"},
    {1, CPUID::ECX, 4, "DS-CPL", "CPL-qualified debug store"},
    {1, CPUID::ECX, 5, "VMX", "Virtual machine extensions"},
    {1, CPUID::ECX, 6, "SMX", "Safer mode extensions"},
    {1, CPUID::ECX, 7, "EFS", "Enhanced frequency stepping"},
    {1, CPUID::ECX, 8, "TM2", "Thermal monitor 2"},
    {1, CPUID::ECX, 9, "SSSE3", "Supplemental streaming SIMD extensions 3"},
    {1, CPUID::ECX, 10, "CNXT-ID", "L1 context identifier"},
    {1, CPUID::ECX, 11, "", ""},
    {1, CPUID::ECX, 12, "", ""},
    {1, CPUID::ECX, 13, "CX16", "CMPXCHG16B instruction"},
    {1, CPUID::ECX, 14, "xTPR", "Task priority update control"},
    {1, CPUID::ECX, 15, "PDCM", "Performance and debug capability register"},
    {1, CPUID::ECX, 16, "", ""},
    {1, CPUID::ECX, 17, "", ""},
    {1, CPUID::ECX, 18, "DCA", "Direct cache access"},
    {1, CPUID::ECX, 19, "SSE4.1", "Streaming SIMD extensions 4.1"},
    {1, CPUID::ECX, 20, "SSE4.2", "Streaming SIMD extensions 4.2"},
    {1, CPUID::ECX, 21, "x2APIC", "Extended APIC"},
    {1, CPUID::ECX, 22, "MOVBE", "MOVBE instruction"},
    {1, CPUID::ECX, 23, "POPCNT", "POPCNT instruction"},
    {1, CPUID::ECX, 24, "", ""},
    {1, CPUID::ECX, 25, "", ""},
    {1, CPUID::ECX, 26, "XSAVE", "XSAVE and XRSTOR instructions"},
    {1, CPUID::ECX, 27, "OSXSAVE", "XSAVE enabled by the operating system"},
    {1, CPUID::ECX, 28, "", ""},
    {1, CPUID::ECX, 29, "", ""},
    {1, CPUID::ECX, 30, "", ""},
    {1, CPUID::ECX, 31, "", ""},
    {exLeaf, CPUID::EDX, 11, "SYSCALL", "SYSCALL and SYSRET instructions"},
    {exLeaf, CPUID::EDX, 20, "XD Bit", "Execute disable bit"},
    {exLeaf, CPUID::EDX, 29, "64-bit", "64-bit architecture"},
    {exLeaf, CPUID::ECX, 0, "LAHF", "LAHF and SAHF instructions in 64-bit mode"},
}};

const bxFeatureFlag* bxFindFeatureFlag(const char* name) {
    const std::string_view wanted = name;
    const auto row = std::ranges::find(FeatureFlags, wanted,
                                       [](const bxFeatureFlag& f) { return std::string_view(f.name); });
    return wanted.empty() || row == FeatureFlags.end() ? nullptr : &*row;
}
