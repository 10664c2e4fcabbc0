#include "framework/bxcpureport.h"

#include "system/bxprobes.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

constexpr unsigned int leafIdent = 1;
constexpr unsigned int leafCaches = 4;
constexpr unsigned int leafExtended = 0x80000000U;
constexpr unsigned int leafBrand = 0x80000002U;
constexpr unsigned int leafL2 = 0x80000006U;
constexpr unsigned int leafSizes = 0x80000008U;
constexpr unsigned int leafOtherCaches = 0x8000001DU;
constexpr unsigned int leafTopology = 0x8000001EU;

CPUID askProcessor(unsigned int leaf, unsigned int subleaf) {
    return CPUID(leaf, subleaf);
}

/** A bit field, printed as its value plus `plus`. */
struct Field {
    const char* label;
    int reg;
    int high;
    int low;
    unsigned int plus;
    const char* note;
};

bxString line(const char* indent, const Field& field, const CPUID& registers) {
    return bxString(indent) << field.label << registers.getBits(field.reg, field.high, field.low) + field.plus
                            << field.note << "\n";
}

constexpr Field cacheLevel = {"Cache Level       ", CPUID::EAX, 7, 5, 0, ""};
constexpr std::array cacheFields = {
    Field{"Threads Sharing   ", CPUID::EAX, 25, 14, 1, " - Maximum number of threads sharing this cache"},
    Field{"Number of Sets    ", CPUID::ECX, 31, 0, 1, ""},
    Field{"Line Size         ", CPUID::EBX, 11, 0, 1, " - System coherency line size"},
    Field{"Line Partitions   ", CPUID::EBX, 21, 12, 1, " - Physical line partitions"},
    Field{"Associativity     ", CPUID::EBX, 31, 22, 1, " - Ways of associativity"},
};

/** A line that stands for a bit that is set. */
struct Remark {
    int reg;
    int bit;
    const char* text;
};
constexpr std::array cacheRemarks = {
    Remark{CPUID::EAX, 9, "Fully Associative cache\n"},
    Remark{CPUID::EAX, 8, "Self Initializing cache level\n"},
    Remark{CPUID::EDX, 1, "Cache is inclusive to lower cache levels\n"},
    Remark{CPUID::EDX, 0, "WBINVD/INVD behavior on lower level caches\n"},
};
constexpr std::array cacheTypes = {"", "Data Cache", "Instruction Cache", "Unified Cache"};

/** Associativity codes of the extended L2 leaf; null for a code that is not assigned. */
constexpr std::array<const char*, 16> l2Associativity = {
    "Disabled", "Direct mapped", "2-Way",  "3-Way",  "4-Way",  "6-Way",  "8-Way",   nullptr,
    "16-Way",   nullptr,         "32-Way", "48-Way", "64-Way", "96-Way", "128-Way", "Fully associative"};

constexpr std::array reportedFlags = {"MMX", "SSE", "SSE2", "SSE3", "SSSE3", "SSE4.1", "SSE4.2", "x2APIC"};
/** Leaf 0x80000001 EDX bit 29: the flag of the 64-bit architecture. */
constexpr int bit64 = 29;

bxString flagLine(const char* name, unsigned int value, const char* description) {
    char text[160];
    std::snprintf(text, sizeof text, "%-11s%u - %s\n", name, value, description);
    return text;
}

bxString hex(unsigned int value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", value);
    return text;
}

void appendRegister(bxString& text, const CPUID& registers, int reg) {
    for (int n = 0; n < 4; n++)
        if (const auto byte = static_cast<char>(registers.getByte(reg, n)))
            text << byte;
}

} // namespace

bxCpuReport::bxCpuReport(bxCpuidQuery query) : m_query(query ? query : askProcessor) {}

bool bxCpuReport::valid(unsigned int number) const {
    return number <= leaf(number & leafExtended).get(CPUID::EAX);
}

bxString bxCpuReport::asterisks() {
    bxString stars;
    stars.resize(79, '*');
    return stars << "\n";
}

bxString bxCpuReport::vendor() const {
    const CPUID registers = leaf(0);
    bxString text;
    for (int reg : {CPUID::EBX, CPUID::EDX, CPUID::ECX})
        appendRegister(text, registers, reg);
    return text;
}

bxString bxCpuReport::brand() const {
    bxString text;
    for (unsigned int n = 0; n < 3; n++) {
        const CPUID registers = leaf(leafBrand + n);
        for (int reg : {CPUID::EAX, CPUID::EBX, CPUID::ECX, CPUID::EDX})
            appendRegister(text, registers, reg);
    }
    return text;
}

bxString bxCpuReport::title() const {
    bxString text = asterisks();
    text << "    Quarn(R) Processor Identification\n"
         << "    Got by CPUID Instruction Functions\n";
    if (!(vendor() == "GenuineQuarn"))
        text << "\n"
             << "    ATTENTION! It is not Genuine Quarn processor.\n"
             << "    Information below may be inadequate.\n";
    return text << asterisks() << "\n";
}

bxString bxCpuReport::identity() const {
    bxString text;
    text << "Largest Standard Function " << hex(leaf(0).get(CPUID::EAX)) << "\n"
         << "Largest Extended Function " << hex(leaf(leafExtended).get(CPUID::EAX)) << "\n"
         << "Vendor-ID      " << vendor() << "\n";
    if (valid(leafBrand + 2))
        text << "Brand String   " << brand() << "\n";
    return text;
}

bxString bxCpuReport::signature() const {
    if (!valid(leafIdent))
        return "";
    const bxCpuIdent ident = bxDecodeCpuIdent(leaf(leafIdent));
    return bxString("    Processor Identification Signature\n\n")
           << "Type     " << ident.type << "\n"
           << "Family   " << ident.displayFamily() << "\n"
           << "Model    " << ident.displayModel() << "\n"
           << "Stepping " << ident.stepping << "\n"
           << "Brand ID " << ident.brand << "\n";
}

bxString bxCpuReport::flags() const {
    if (!valid(leafIdent))
        return "";
    bxString text = "    Selected Feature Flags\n\n";
    const auto append = [this, &text](const bxFeatureFlag& flag) {
        const unsigned int value = valid(flag.leaf) ? leaf(flag.leaf).getBit(flag.reg, flag.bit) : 0;
        text << flagLine(flag.name, value, flag.description);
    };
    for (const char* name : reportedFlags) {
        if (const bxFeatureFlag* flag = bxFindFeatureFlag(name))
            append(*flag);
        else
            text << bxString(name) << "? - unknown flag?"
                 << "??????\n";
    }
    const auto* flag64 =
        std::find_if(FeatureFlags.begin(), FeatureFlags.end(), [](const bxFeatureFlag& flag) {
            return flag.leaf == leafExtended + 1 && flag.reg == CPUID::EDX && flag.bit == bit64;
        });
    append(*flag64);
    return text;
}

bxString bxCpuReport::multiThreading() const {
    if (!valid(leafIdent))
        return "";
    bxString text = "    Multi Threading Features\n\n";
    const CPUID registers = leaf(leafIdent);
    if (registers.getBit(CPUID::EDX, 28) == 0)
        return text << "Neither multi-threading nor multiple cores are supported\n";
    text << "Multi-threading or multiple cores are supported\n"
         << line("",
                 {"Logical Processors ", CPUID::EBX, 23, 16, 0,
                  " - Number of logical processors per physical package"},
                 registers);
    if (const unsigned int cores = coresPerPackage())
        text << "Cores per Package  " << cores << " - Maximum number of processor cores per package\n";
    return text;
}

unsigned int bxCpuReport::coresPerPackage() const {
    if (valid(leafCaches) && leaf(leafCaches).getBits(CPUID::EAX, 4, 0) != 0)
        return leaf(leafCaches).getBits(CPUID::EAX, 31, 26) + 1;
    // Other vendors count the threads of the package, and the threads of a core.
    if (valid(leafSizes)) {
        const unsigned int threads = leaf(leafSizes).getBits(CPUID::ECX, 7, 0) + 1;
        const unsigned int perCore =
            valid(leafTopology) ? leaf(leafTopology).getBits(CPUID::EBX, 15, 8) + 1 : 1;
        return std::max(threads / perCore, 1U);
    }
    return valid(leafCaches) ? 1 : 0;
}

unsigned int bxCpuReport::cacheLeaf() const {
    for (unsigned int candidate : {leafCaches, leafOtherCaches})
        if (valid(candidate) && leaf(candidate).getBits(CPUID::EAX, 4, 0) != 0)
            return candidate;
    return 0;
}

bxString bxCpuReport::cacheParms() const {
    const unsigned int number = cacheLeaf();
    if (number == 0)
        return "";
    constexpr unsigned int mostCaches = 32; // no processor has as many: a limit against broken emulations
    const char* const indent = "    ";
    bxString text = "    Deterministic Cache Parameters\n";
    for (unsigned int n = 0; n < mostCaches; n++) {
        const CPUID cache = leaf(number, n);
        const unsigned int type = cache.getBits(CPUID::EAX, 4, 0);
        if (type == 0)
            break;
        text << "Cache Type " << (type < cacheTypes.size() ? cacheTypes[type] : "Unknown") << "\n"
             << line(indent, cacheLevel, cache) << indent << "Cache Size Kb     "
             << (bxDecodeCacheSizeB(cache) >> 10) << "\n";
        for (const Field& field : cacheFields)
            text << line(indent, field, cache);
        for (const Remark& remark : cacheRemarks)
            if (cache.getBit(remark.reg, remark.bit) != 0)
                text << indent << remark.text;
    }
    return text;
}

bxString bxCpuReport::l2Features() const {
    if (!valid(leafL2))
        return "";
    const CPUID registers = leaf(leafL2);
    const unsigned int code = registers.getBits(CPUID::ECX, 15, 12);
    bxString text = "    Extended L2 Cache Features\n\n";
    text << line("", {"L2 Cache Size Kb       ", CPUID::ECX, 31, 16, 0, ""}, registers)
         << line("", {"L2 Cache Line Size     ", CPUID::ECX, 7, 0, 0, ""}, registers)
         << "L2 Cache Associativity ";
    if (l2Associativity[code])
        text << l2Associativity[code];
    else
        text << code;
    return text << "\n";
}
