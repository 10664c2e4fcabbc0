#include "data/bxguard.h"

#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr std::size_t alignment = 16;

std::size_t roundUp(std::size_t n, std::size_t unit) {
    return (n + unit - 1) / unit * unit;
}

} // namespace

bxGuardedBlock bxMapGuarded(int size, int misalign) {
    if (size < 0)
        return {};
    const auto bytes = static_cast<std::size_t>(size);
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t usable = roundUp(bytes + alignment, page);
    void* mapping = mmap(nullptr, usable + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        return {};
    char* first = static_cast<char*>(mapping);
    if (mprotect(first + usable, page, PROT_NONE) != 0) {
        munmap(mapping, usable + page);
        return {};
    }
    const std::size_t latest = usable - bytes;
    const std::size_t start = latest - (latest - static_cast<std::size_t>(misalign)) % alignment;
    return {mapping, usable + page, first + start};
}

void bxUnmapGuarded(void* mapping, std::size_t mapped) {
    munmap(mapping, mapped);
}
