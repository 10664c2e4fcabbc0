/** \file
 * Processor types: the instruction sets that each needs and the code path that serves it.
 */
#ifndef ZOR_CPUTYPES_H
#define ZOR_CPUTYPES_H

#include "zorcore.h"

#include "../codepath.h"
#include "cpuquery.h"

#include <algorithm>
#include <array>

namespace zor {

/** Instruction sets, as a set of bits. */
using Features = std::uint32_t;

namespace feature {
enum : Features {
    fpu = 1U << 0,
    tsc = 1U << 1,
    mmx = 1U << 2,
    cmov = 1U << 3,
    sse = 1U << 4,
    sse2 = 1U << 5,
    sse3 = 1U << 6,
    ssse3 = 1U << 7,
    sse41 = 1U << 8,
    sse42 = 1U << 9,
    movbe = 1U << 10,
    popcnt = 1U << 11,
    aes = 1U << 12,
    avx = 1U << 13,
    f16c = 1U << 14,
    fma = 1U << 15,
    avx2 = 1U << 16,
    bmi = 1U << 17,
    avxVnni = 1U << 18,
    avx512f = 1U << 19,
    avx512cd = 1U << 20,
    avx512bw = 1U << 21,
    avx512Vnni = 1U << 22,
    avx512Bf16 = 1U << 23,
    longMode = 1U << 24
};
} // namespace feature

/** States that the operating system must save for an instruction set to be usable (bits of XCR0). */
namespace osstate {
enum : std::uint64_t { none = 0, avx = 0x06, avx512 = 0xE6 };
}

/** Where CPUID shows an instruction set; all bits of `mask` have to be set. */
struct FeatureRow {
    Features feature;
    std::uint32_t leaf, subleaf;
    CpuidRegister reg;
    std::uint32_t mask;
    std::uint64_t state;
};

inline constexpr std::array featureRows = {
    FeatureRow{feature::fpu, 1, 0, edx, 1U << 0, osstate::none},
    FeatureRow{feature::tsc, 1, 0, edx, 1U << 4, osstate::none},
    FeatureRow{feature::cmov, 1, 0, edx, 1U << 15, osstate::none},
    FeatureRow{feature::mmx, 1, 0, edx, 1U << 23, osstate::none},
    FeatureRow{feature::sse, 1, 0, edx, 1U << 25, osstate::none},
    FeatureRow{feature::sse2, 1, 0, edx, 1U << 26, osstate::none},
    FeatureRow{feature::sse3, 1, 0, ecx, 1U << 0, osstate::none},
    FeatureRow{feature::aes, 1, 0, ecx, 1U << 1 | 1U << 25, osstate::none},
    FeatureRow{feature::ssse3, 1, 0, ecx, 1U << 9, osstate::none},
    FeatureRow{feature::fma, 1, 0, ecx, 1U << 12, osstate::avx},
    FeatureRow{feature::sse41, 1, 0, ecx, 1U << 19, osstate::none},
    FeatureRow{feature::sse42, 1, 0, ecx, 1U << 20, osstate::none},
    FeatureRow{feature::movbe, 1, 0, ecx, 1U << 22, osstate::none},
    FeatureRow{feature::popcnt, 1, 0, ecx, 1U << 23, osstate::none},
    FeatureRow{feature::avx, 1, 0, ecx, 1U << 27 | 1U << 28, osstate::avx},
    FeatureRow{feature::f16c, 1, 0, ecx, 1U << 29, osstate::avx},
    FeatureRow{feature::bmi, 7, 0, ebx, 1U << 3 | 1U << 8, osstate::none},
    FeatureRow{feature::avx2, 7, 0, ebx, 1U << 5, osstate::avx},
    FeatureRow{feature::avx512f, 7, 0, ebx, 1U << 16, osstate::avx512},
    FeatureRow{feature::avx512cd, 7, 0, ebx, 1U << 28, osstate::avx512},
    FeatureRow{feature::avx512bw, 7, 0, ebx, 1U << 17 | 1U << 30 | 1U << 31, osstate::avx512},
    FeatureRow{feature::avx512Vnni, 7, 0, ecx, 1U << 11, osstate::avx512},
    FeatureRow{feature::avxVnni, 7, 1, eax, 1U << 4, osstate::avx},
    FeatureRow{feature::avx512Bf16, 7, 1, eax, 1U << 5, osstate::avx512},
    FeatureRow{feature::longMode, 0x80000001U, 0, edx, 1U << 29, osstate::none},
};

/** The instruction sets of the processor that `query` describes, as far as the system saves their state. */
inline Features detectFeatures(CpuidQuery query, std::uint64_t savedStates) {
    Features found = 0;
    for (const FeatureRow& row : featureRows) {
        const bool present = (query(row.leaf, row.subleaf)[row.reg] & row.mask) == row.mask;
        if (present && (savedStates & row.state) == row.state)
            found |= row.feature;
    }
    return found;
}

/** A type with what it needs and the path that serves it. */
struct CpuTypeRow {
    int code;
    Features needs;
    CodePath path;
};

/** Sets that the types build on. */
namespace level {
inline constexpr Features gen5 = feature::fpu | feature::tsc;
inline constexpr Features gen6 = gen5 | feature::cmov;
inline constexpr Features sse = gen6 | feature::mmx | feature::sse;
inline constexpr Features sse2 = sse | feature::sse2;
inline constexpr Features sse3 = sse2 | feature::sse3;
inline constexpr Features ssse3 = sse3 | feature::ssse3;
inline constexpr Features sse41 = ssse3 | feature::sse41;
inline constexpr Features sse42 = sse41 | feature::sse42;
inline constexpr Features avx = sse42 | feature::avx;
inline constexpr Features avx2 = avx | feature::fma | feature::avx2;
inline constexpr Features avx512f = avx2 | feature::avx512f;
inline constexpr Features avx512cd = avx512f | feature::avx512cd;
inline constexpr Features avx512bw = avx512cd | feature::avx512bw;
inline constexpr Features avx512vnni = avx512bw | feature::avx512Vnni;
inline constexpr Features x64v2 = sse42 | feature::popcnt | feature::longMode;
inline constexpr Features x64v3 = x64v2 | avx2 | feature::bmi | feature::movbe | feature::f16c;
} // namespace level

inline constexpr std::array cpuTypeRows = {
    CpuTypeRow{zorCpuUnknown, 0, CodePath::portable},
    CpuTypeRow{zorCpuX87, feature::fpu, CodePath::portable},
    CpuTypeRow{zorCpuGen5, level::gen5, CodePath::portable},
    CpuTypeRow{zorCpuGen5MMX, level::gen5 | feature::mmx, CodePath::portable},
    CpuTypeRow{zorCpuGen6, level::gen6, CodePath::portable},
    CpuTypeRow{zorCpuGen6MMX, level::gen6 | feature::mmx, CodePath::portable},
    CpuTypeRow{zorCpuSSE, level::sse, CodePath::portable},
    CpuTypeRow{zorCpuSSE2, level::sse2, CodePath::sse2},
    CpuTypeRow{zorCpuSSE3, level::sse3, CodePath::sse2},
    CpuTypeRow{zorCpuSSSE3, level::ssse3, CodePath::sse2},
    CpuTypeRow{zorCpuSSE41, level::sse41, CodePath::sse2},
    CpuTypeRow{zorCpuSSE42, level::sse42, CodePath::sse2},
    CpuTypeRow{zorCpuAVX, level::avx, CodePath::avx},
    CpuTypeRow{zorCpuAVX2, level::avx2, CodePath::avx2},
    CpuTypeRow{zorCpuMOVBE, level::ssse3 | feature::movbe, CodePath::sse2},
    CpuTypeRow{zorCpuPOPCNT, level::sse42 | feature::popcnt, CodePath::sse2},
    CpuTypeRow{zorCpuAES, level::sse42 | feature::aes, CodePath::sse2},
    CpuTypeRow{zorCpuF16C, level::avx | feature::f16c, CodePath::avx},
    CpuTypeRow{zorCpuFMA, level::avx | feature::fma, CodePath::avx},
    CpuTypeRow{zorCpuBMI2, level::avx2 | feature::bmi, CodePath::avx2},
    CpuTypeRow{zorCpuAVXVNNI, level::avx2 | feature::avxVnni, CodePath::avx2},
    CpuTypeRow{zorCpuAVX512F, level::avx512f, CodePath::avx2},
    CpuTypeRow{zorCpuAVX512CD, level::avx512cd, CodePath::avx2},
    CpuTypeRow{zorCpuAVX512BW, level::avx512bw, CodePath::avx2},
    CpuTypeRow{zorCpuAVX512VNNI, level::avx512vnni, CodePath::avx2},
    CpuTypeRow{zorCpuAVX512BF16, level::avx512vnni | feature::avx512Bf16, CodePath::avx2},
    CpuTypeRow{zorCpuX8664, level::sse2 | feature::longMode, CodePath::sse2},
    CpuTypeRow{zorCpuX8664v2, level::x64v2, CodePath::sse2},
    CpuTypeRow{zorCpuX8664v3, level::x64v3, CodePath::avx2},
    CpuTypeRow{zorCpuX8664v4, level::x64v3 | level::avx512bw, CodePath::avx2},
};

/** Whether a type names the code path that serves it, and not only one that it can run. */
constexpr bool hasOwnPath(const CpuTypeRow& type) {
    constexpr std::array owners = {zorCpuUnknown, zorCpuX87, zorCpuSSE2, zorCpuAVX, zorCpuAVX2};
    return std::ranges::find(owners, type.code) != owners.end();
}

/** The row of a code; null for a code that is no type. */
inline const CpuTypeRow* findCpuType(int code) {
    const auto row = std::ranges::find(cpuTypeRows, code, &CpuTypeRow::code);
    return row == cpuTypeRows.end() ? nullptr : &*row;
}

/** Whether a processor with these instruction sets can run a type. */
inline bool canRun(const CpuTypeRow& type, Features features) {
    return (type.needs & ~features) == 0;
}

/** The highest plain instruction-set type that a processor with these instruction sets can run. */
inline int cpuTypeOf(Features features) {
    int best = zorCpuUnknown;
    for (const CpuTypeRow& row : cpuTypeRows)
        if (row.code >= zorCpuSSE && row.code <= zorCpuAVX2 && canRun(row, features))
            best = std::max(best, row.code);
    return best;
}

} // namespace zor

#endif
