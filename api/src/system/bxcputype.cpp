#include "system/bxcputype.h"

#include "system/bxenvironment.h"
#include "system/bxprobes.h"

#include <algorithm>
#include <iterator>

namespace {

const bxCpuType::Row* findCode(int code) {
    const auto row = std::ranges::find(bxCpuType::table, code, &bxCpuType::Row::code);
    return row == bxCpuType::table.end() ? nullptr : &*row;
}

/** Codes of the plain instruction-set types. */
enum Extension { none = 0, sse = 64, sse2, sse3, ssse3, sse41, sse42, avx, longMode = 96 };

/** A flag of leaf 1 that proves an extension. */
struct ExtensionRow {
    Extension code;
    bool inEcx;
    int bit;
};

/** Highest first. */
constexpr ExtensionRow extensionRows[] = {{sse42, true, 20}, {sse41, true, 19}, {ssse3, true, 9},
                                          {sse3, true, 0},   {sse2, false, 26}, {sse, false, 25}};

/** Models whose type says more than their highest extension. */
struct ModelRow {
    int family;
    int model;
    Extension highest; /**< what the real model has; an emulated one may differ */
    int code;
};

constexpr ModelRow modelRows[] = {
    {6, 0x1C, ssse3, 72}, {6, 0x26, ssse3, 72}, {6, 0x27, ssse3, 72}, {6, 0x35, ssse3, 72},
    {6, 0x36, ssse3, 72}, {6, 0x1A, sse42, 73}, {6, 0x1E, sse42, 73}, {6, 0x1F, sse42, 73},
    {6, 0x2E, sse42, 73}, {6, 0x25, sse42, 74}, {6, 0x2C, sse42, 74}, {6, 0x2F, sse42, 74},
    {6, 0x3A, avx, 75},   {6, 0x3E, avx, 75},   {6, 0x3C, avx, 77},   {6, 0x3F, avx, 77},
    {6, 0x45, avx, 77},   {6, 0x46, avx, 77},   {6, 0x3D, avx, 77},   {6, 0x47, avx, 77},
    {6, 0x4F, avx, 77},   {6, 0x4E, avx, 77},   {6, 0x5E, avx, 77},   {6, 0x55, avx, 81},
    {5, 0x04, none, 3},   {5, 0x08, none, 3},   {5, 0x01, none, 2},   {5, 0x02, none, 2},
    {6, 0x01, none, 4},   {6, 0x03, none, 5},   {6, 0x05, none, 5},   {6, 0x06, none, 5},
};

Extension highestExtension(const bxCpuIdent& ident, const bxCpuFacts& facts) {
    if (facts.avx)
        return avx;
    for (const ExtensionRow& row : extensionRows)
        if (row.inEcx ? ident.ecx(row.bit) : ident.edx(row.bit))
            return row.code;
    return facts.longMode ? longMode : none;
}

} // namespace

constinit const std::array<bxCpuType::Row, 30> bxCpuType::table = {{
    {0, "Unknown", "Any x86"},
    {1, "X87", "x86 with x87"},
    {2, "Gen5", "x86 generation 5"},
    {3, "Gen5MMX", "x86 generation 5 with MMX"},
    {4, "Gen6", "x86 generation 6"},
    {5, "Gen6MMX", "x86 generation 6 with MMX"},
    {64, "SSE", "x86 with SSE"},
    {65, "SSE2", "x86 with SSE2"},
    {66, "SSE3", "x86 with SSE3"},
    {67, "SSSE3", "x86 with SSSE3"},
    {68, "SSE41", "x86 with SSE4.1"},
    {69, "SSE42", "x86 with SSE4.2"},
    {70, "AVX", "x86 with AVX"},
    {71, "AVX2", "x86 with AVX2+FMA"},
    {72, "MOVBE", "x86 with SSSE3 MOVBE"},
    {73, "POPCNT", "x86 with SSE4.2 POPCNT"},
    {74, "AES", "x86 with SSE4.2 AES"},
    {75, "F16C", "x86 with AVX F16C"},
    {76, "FMA", "x86 with AVX FMA"},
    {77, "BMI2", "x86 with AVX2+FMA BMI2"},
    {78, "AVXVNNI", "x86 with AVX2+FMA VNNI"},
    {79, "AVX512F", "x86 with AVX-512 F"},
    {80, "AVX512CD", "x86 with AVX-512 F CD"},
    {81, "AVX512BW", "x86 with AVX-512 F CD BW DQ VL"},
    {82, "AVX512VNNI", "x86 with AVX-512 F CD BW DQ VL VNNI"},
    {83, "AVX512BF16", "x86 with AVX-512 F CD BW DQ VL VNNI BF16"},
    {96, "X8664", "x86-64"},
    {97, "X8664v2", "x86-64 level 2"},
    {98, "X8664v3", "x86-64 level 3"},
    {99, "X8664v4", "x86-64 level 4"},
}};

int bxCpuType::cpuType(const bxString& label) {
    const bxString wanted = label.toLower();
    const auto row =
        std::ranges::find_if(table, [&](const Row& r) { return bxString(r.label).toLower() == wanted; });
    return row == table.end() ? -1 : row->code;
}

bxString bxCpuType::cpuName(int code) {
    const Row* const row = findCode(code);
    return row ? row->name : "Unknown processor";
}

bxString bxCpuType::cpuLabel(int code) {
    const Row* const row = findCode(code);
    return row ? row->label : "Undefined";
}

bxString bxCpuType::optimizedList() {
    bxString list;
    if (!zorVersionList)
        return list;
    // Types below SSE2 are served by the portable code.
    const int code = s_cpuType != -1 ? s_cpuType : zor_GetCpuType ? zor_GetCpuType() : none;
    const bool optimized = zorEnvironment && code >= sse2;
    bxStringList seen; // every test unit registers the same hook
    for (const bxVersionHook hook : *zorVersionList) {
        const bxString name = hook()->name;
        if (std::ranges::find(seen, name) != seen.end())
            continue;
        seen.push_back(name);
        list << name << ": ";
        if (optimized)
            list << "optimized for " << cpuName(code) << "\n";
        else
            list << "non optimized code\n";
    }
    return list;
}

int bxCpuTypeOf(const bxCpuIdent& ident, const bxCpuFacts& facts) {
    const Extension highest = highestExtension(ident, facts);
    if (facts.genuine)
        for (const ModelRow& row : modelRows)
            if (row.family == ident.displayFamily() && row.model == ident.displayModel() &&
                row.highest == highest)
                return row.code;
    return highest;
}
