#include "system/bxcpuid.h"

#include "system/bxenvironment.h"

#include <algorithm>
#include <cpuid.h>
#include <iterator>
#include <string_view>

namespace {

constexpr unsigned int extendedRange = 0x80000000U;

/** A one-byte descriptor of leaf 2 that stands for a data or unified cache. */
struct CacheDescriptor {
    unsigned char code;
    int kiloBytes;
};

/** Data caches of level 1 and unified caches of levels 2 and 3, in the order of their codes. */
constexpr CacheDescriptor cacheDescriptors[] = {
    {0x0A, 8},     {0x0C, 16},    {0x0D, 16},    {0x0E, 24},   {0x1D, 128},  {0x21, 256},  {0x22, 512},
    {0x23, 1024},  {0x24, 1024},  {0x25, 2048},  {0x29, 4096}, {0x2C, 32},   {0x39, 128},  {0x3A, 192},
    {0x3B, 128},   {0x3C, 256},   {0x3D, 384},   {0x3E, 512},  {0x41, 128},  {0x42, 256},  {0x43, 512},
    {0x44, 1024},  {0x45, 2048},  {0x46, 4096},  {0x47, 8192}, {0x48, 3072}, {0x49, 4096}, {0x4A, 6144},
    {0x4B, 8192},  {0x4C, 12288}, {0x4D, 16384}, {0x4E, 6144}, {0x60, 16},   {0x66, 8},    {0x67, 16},
    {0x68, 32},    {0x78, 1024},  {0x79, 128},   {0x7A, 256},  {0x7B, 512},  {0x7C, 1024}, {0x7D, 2048},
    {0x7F, 512},   {0x80, 512},   {0x82, 256},   {0x83, 512},  {0x84, 1024}, {0x85, 2048}, {0x86, 512},
    {0x87, 1024},  {0xD0, 512},   {0xD1, 1024},  {0xD2, 2048}, {0xD6, 1024}, {0xD7, 2048}, {0xD8, 4096},
    {0xDC, 1536},  {0xDD, 3072},  {0xDE, 6144},  {0xE2, 2048}, {0xE3, 4096}, {0xE4, 8192}, {0xEA, 12288},
    {0xEB, 18432}, {0xEC, 24576},
};

/** Size that a descriptor stands for, 0 for one that names no data cache. */
int descriptorKiloBytes(unsigned int code) {
    const auto row =
        std::ranges::find(cacheDescriptors, code, [](const CacheDescriptor& d) { return unsigned{d.code}; });
    return row == std::end(cacheDescriptors) ? 0 : row->kiloBytes;
}

} // namespace

CPUID::CPUID(unsigned int leaf, unsigned int subleaf) {
    if (__get_cpuid_max(0, nullptr) != 0)
        __cpuid_count(leaf, subleaf, m_registers[EAX], m_registers[EBX], m_registers[ECX], m_registers[EDX]);
}

unsigned int largestFunction() {
    return CPUID(0).get(CPUID::EAX);
}

unsigned int largestExFunction() {
    const unsigned int largest = CPUID(extendedRange).get(CPUID::EAX);
    return largest >= extendedRange ? largest : 0; // a processor without the range may answer anything
}

bool validFunction(unsigned int leaf) {
    return leaf < extendedRange ? leaf <= largestFunction() && largestFunction() != 0
                                : leaf <= largestExFunction();
}

std::string bxVendorString(const CPUID& leaf0) {
    std::string vendor;
    for (int reg : {CPUID::EBX, CPUID::EDX, CPUID::ECX})
        for (int n = 0; n < 4; ++n)
            vendor += static_cast<char>(leaf0.getByte(reg, n));
    return vendor;
}

int bxDecodeCacheSizeB(const CPUID& leaf4) {
    if (leaf4.getBits(CPUID::EAX, 4, 0) == 0)
        return -1;
    const unsigned int sets = leaf4.get(CPUID::ECX) + 1;
    const unsigned int lineBytes = leaf4.getBits(CPUID::EBX, 11, 0) + 1;
    const unsigned int partitions = leaf4.getBits(CPUID::EBX, 21, 12) + 1;
    const unsigned int ways = leaf4.getBits(CPUID::EBX, 31, 22) + 1;
    return static_cast<int>(sets * lineBytes * partitions * ways);
}

int bxDecodeLeaf2CacheSizeB(const CPUID& leaf2) {
    int largest = 0;
    for (int reg = CPUID::EAX; reg <= CPUID::EDX; ++reg) {
        if (leaf2.getBit(reg, 31) != 0)
            continue;
        for (int n = reg == CPUID::EAX ? 1 : 0; n < 4; ++n)
            largest = std::max(largest, descriptorKiloBytes(leaf2.getByte(reg, n)));
    }
    return largest > 0 ? largest * 1024 : -1;
}

int getCacheSizeB(unsigned int level) {
    return bxDecodeCacheSizeB(CPUID(4, level));
}

int getMaxCacheSizeB() {
    if (!validFunction(4))
        return 0;
    int largest = 0;
    for (unsigned int level = 0; level < 32; ++level) {
        const int size = getCacheSizeB(level);
        if (size == -1)
            break;
        largest = std::max(largest, size);
    }
    return largest;
}

int bxGetMaxCacheSizeB() {
    const int size = bxLibraryCacheSizeB();
    return size > 0 ? size : getMaxCacheSizeB();
}
