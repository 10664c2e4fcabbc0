#include "system/bxfreshpages.h"

#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

struct Mapping {
    std::uintptr_t begin;
    std::size_t size;
    bool code;
};

/** What of files is mapped privately and not to be written. */
std::vector<Mapping> constantMappings() {
    std::vector<Mapping> found;
    std::FILE* const maps = std::fopen("/proc/self/maps", "re");
    if (!maps)
        return found;
    char line[4352], rights[5];
    unsigned long begin = 0, end = 0, inode = 0;
    while (std::fgets(line, sizeof line, maps))
        if (std::sscanf(line, "%lx-%lx %4s %*s %*s %lu", &begin, &end, rights, &inode) == 4 && inode != 0 &&
            rights[0] == 'r' && rights[1] == '-' && rights[3] == 'p')
            found.push_back({begin, end - begin, rights[2] == 'x'});
    std::fclose(maps);
    return found;
}

void* anonymous(std::size_t size, int flags = 0) {
    return mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
}

/** Puts a copy in the place of a mapping, by one call of the system: the code may be the one that runs. */
void replace(const Mapping& mapping, int memory) {
    void* const copy = anonymous(mapping.size);
    if (copy == MAP_FAILED)
        return;
    const ssize_t got = pread64(memory, copy, mapping.size, static_cast<off64_t>(mapping.begin));
    if (got == static_cast<ssize_t>(mapping.size) &&
        mprotect(copy, mapping.size, PROT_READ | (mapping.code ? PROT_EXEC : 0)) == 0 &&
        mremap(copy, mapping.size, mapping.size, MREMAP_MAYMOVE | MREMAP_FIXED,
               reinterpret_cast<void*>(mapping.begin)) != MAP_FAILED)
        return;
    munmap(copy, mapping.size);
}

} // namespace

void bxTakeFreshPages(int spare) {
    const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    if (memory < 0)
        return;
    if (spare > 0)
        anonymous(static_cast<std::size_t>(spare) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)),
                  MAP_POPULATE);
    for (const Mapping& mapping : constantMappings())
        replace(mapping, memory);
    close(memory);
}
