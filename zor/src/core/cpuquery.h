/** \file
 * CPUID as data: what the processor answers, and the functions below that only take answers apart.
 *
 * The harness reads CPUID, XGETBV and cache sizes by code of its own, on purpose: the library must stand
 * alone beside any program, and a harness that asked the library would believe the very thing that it
 * measures.
 */
#ifndef ZOR_CPUQUERY_H
#define ZOR_CPUQUERY_H

#include <array>
#include <cstdint>

namespace zor {

/** EAX, EBX, ECX and EDX of one CPUID leaf. */
using CpuidLeaf = std::array<std::uint32_t, 4>;

/** Numbers of the registers in a leaf. */
enum CpuidRegister : unsigned { eax, ebx, ecx, edx };

/** A source of CPUID leaves: the processor, or a table in a test. Unknown leaves read all zero. */
using CpuidQuery = CpuidLeaf (*)(std::uint32_t leaf, std::uint32_t subleaf);

/** The field of a register from bit `high` down to bit `low`. */
constexpr std::uint32_t bits(std::uint32_t word, unsigned high, unsigned low) {
    return word >> low & (high - low >= 31 ? ~0U : (1U << (high - low + 1)) - 1U);
}

/** A leaf of this processor; all zero when it lacks the leaf. */
CpuidLeaf cpuid(std::uint32_t leaf, std::uint32_t subleaf);

/** The extended control register 0: which states the operating system saves; 0 without XGETBV. */
std::uint64_t extendedControl();

} // namespace zor

#endif
