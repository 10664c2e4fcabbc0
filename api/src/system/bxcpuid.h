/** \file
 * CPUID leaves taken apart, and the cache sizes they tell.
 *
 * A library under test reads the same instructions by code of its own, on purpose: the harness runs without
 * any library, and its reports must not repeat what the measured library believes of the processor.
 */
#ifndef BXCPUID_H
#define BXCPUID_H

#include <array>
#include <string>

/** The four result registers of one CPUID execution. */
class CPUID {
  public:
    enum Register { EAX, EBX, ECX, EDX };
    using Registers = std::array<unsigned int, 4>;

    /** Executes CPUID; all registers are 0 on a processor without the instruction. */
    explicit CPUID(unsigned int leaf, unsigned int subleaf = 0);
    /** Registers that came from elsewhere. */
    explicit constexpr CPUID(const Registers& registers) : m_registers(registers) {}

    /** A whole register. */
    constexpr unsigned int get(int reg) const { return m_registers[static_cast<unsigned int>(reg)]; }
    /** The field from bit `high` down to bit `low`, both included. */
    constexpr unsigned int getBits(int reg, int high, int low) const {
        const unsigned int mask = high - low >= 31 ? ~0U : (1U << (high - low + 1)) - 1U;
        return get(reg) >> low & mask;
    }
    constexpr unsigned int getBit(int reg, int bit) const { return getBits(reg, bit, bit); }
    /** Byte n, 0 being the lowest. */
    constexpr unsigned int getByte(int reg, int n) const { return getBits(reg, 8 * n + 7, 8 * n); }

  private:
    Registers m_registers{};
};

/** The highest standard leaf; 0 without CPUID. */
unsigned int largestFunction();
/** The highest extended leaf, as 0x80000000 and up; 0 without extended leaves. */
unsigned int largestExFunction();
/** Whether the processor has a leaf of the standard or the extended range. */
bool validFunction(unsigned int leaf);

/** The 12 characters of the maker: EBX, EDX and ECX of leaf 0, byte by byte. */
std::string bxVendorString(const CPUID& leaf0);

/** A feature flag of the processor: where CPUID shows it, and its name. */
struct bxFeatureFlag {
    unsigned int leaf;
    int reg; /**< CPUID::Register */
    int bit;
    const char* name;        /**< short name, empty for an unassigned bit */
    const char* description; /**< empty for an unassigned bit */
};

/** Leaf 1 EDX, leaf 1 ECX, and four flags of leaf 0x80000001. */
extern const std::array<bxFeatureFlag, 68> FeatureFlags;

/** The row of a short name; null when there is none. */
const bxFeatureFlag* bxFindFeatureFlag(const char* name);

/** Size in bytes of the cache that leaf 4 describes; -1 when it describes none. */
int bxDecodeCacheSizeB(const CPUID& leaf4);

/**
 * Size in bytes of the largest data or unified cache that the one-byte descriptors of leaf 2 name
 * (the table of the public CPUID documentation); -1 when they name none.
 * The lowest byte of EAX is no descriptor, and a register with bit 31 set holds none.
 */
int bxDecodeLeaf2CacheSizeB(const CPUID& leaf2);

/** Size in bytes of the cache of a leaf-4 sub-leaf; -1 when there is none. */
int getCacheSizeB(unsigned int level);

/** The largest `getCacheSizeB` of the sub-leaves up to the first without a cache; 0 when leaf 4 is not
 * available. */
int getMaxCacheSizeB();

/** The largest cache by `bxLibraryCacheSizeB` where that knows it, else by leaf 4. */
int bxGetMaxCacheSizeB();

#endif
