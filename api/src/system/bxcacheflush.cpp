#include "system/bxcacheflush.h"

#include "system/bxcpuid.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace {

/** A longer mapping is a reservation (of a sanitizer), not data. */
constexpr std::uintptr_t mostMapped = 1U << 30;

/** Which pages of the process are in memory; without the system's answer, all that are asked for. */
class PresentPages {
  public:
    PresentPages() : m_file(open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC)) {}
    ~PresentPages() {
        if (m_file >= 0)
            close(m_file);
    }
    PresentPages(const PresentPages&) = delete;
    PresentPages& operator=(const PresentPages&) = delete;

    bool has(std::uintptr_t page) const {
        std::uint64_t entry = 0;
        const auto at = static_cast<off_t>(page) * static_cast<off_t>(sizeof entry);
        constexpr int presentBit = 63;
        return m_file < 0 || pread(m_file, &entry, sizeof entry, at) != sizeof entry ||
               entry >> presentBit != 0;
    }

  private:
    int m_file;
};

} // namespace

bxCacheFlush::bxCacheFlush() {
    constexpr unsigned features = 1, extended = 7;
    const CPUID leaf(features);
    if (largestFunction() < features || leaf.getBit(CPUID::EDX, 19) == 0)
        return;
    m_lineSize = std::size_t{8} * leaf.getByte(CPUID::EBX, 1);
    m_weakly = largestFunction() >= extended && CPUID(extended).getBit(CPUID::EBX, 23) != 0;

    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> maps(std::fopen("/proc/self/maps", "re"),
                                                               std::fclose);
    if (!maps)
        return;
    const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const PresentPages present;
    unsigned long long from = 0, to = 0;
    char rights[5], name[8];
    for (char line[512]; std::fgets(line, sizeof line, maps.get());) {
        name[0] = 0;
        if (std::sscanf(line, "%llx-%llx %4s %*s %*s %*s %7s", &from, &to, rights, name) < 3)
            continue;
        const bool own = rights[0] == 'r' && rights[3] == 'p';
        const bool system = name[0] == '[' && name[1] == 'v'; // vdso, vvar, vsyscall
        if (!own || system || to - from > mostMapped)
            continue;
        for (auto page = static_cast<std::uintptr_t>(from); page < static_cast<std::uintptr_t>(to);
             page += pageSize) {
            if (!present.has(page / pageSize))
                continue;
            const auto* const begin = reinterpret_cast<const char*>(page); // NOLINT: the system's own words
            if (m_pieces.empty() || m_pieces.back().second != begin)
                m_pieces.emplace_back(begin, begin);
            m_pieces.back().second += pageSize;
        }
    }
}

void bxCacheFlush::operator()() const {
    asm volatile("mfence" : : : "memory");
    for (const Piece& piece : m_pieces)
        for (const char* line = piece.first; line < piece.second; line += m_lineSize) {
            if (m_weakly)
                asm volatile("clflushopt %0" : : "m"(*line));
            else
                asm volatile("clflush %0" : : "m"(*line));
        }
    asm volatile("mfence" : : : "memory");
}

std::size_t bxCacheFlush::size() const {
    std::size_t sum = 0;
    for (const Piece& piece : m_pieces)
        sum += static_cast<std::size_t>(piece.second - piece.first);
    return sum;
}
