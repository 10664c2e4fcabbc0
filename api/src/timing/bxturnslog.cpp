#include "timing/bxturnslog.h"

#include "data/bxalloc.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unistd.h>
#include <utility>

using namespace bxTurnsForm;

namespace {

std::string memoryMap() {
    std::ifstream map("/proc/self/maps");
    return {std::istreambuf_iterator<char>(map), {}};
}

/** Address ranges of this process's memory. */
class OwnMemory {
  public:
    OwnMemory() {
        std::ifstream map("/proc/self/maps");
        for (std::string line; std::getline(map, line);) {
            unsigned long long from = 0, to = 0;
            if (std::sscanf(line.c_str(), "%llx-%llx", &from, &to) == 2)
                m_ranges.emplace_back(from, to);
        }
    }
    bool holds(std::uintptr_t address) const {
        return std::any_of(m_ranges.begin(), m_ranges.end(), [address](const auto& range) {
            return range.first <= address && address < range.second;
        });
    }

  private:
    std::vector<std::pair<unsigned long long, unsigned long long>> m_ranges;
};

/** A block whose elements have a type wider than a byte. */
bool isTyped(const bxString& info) {
    constexpr const char* vector = "Vector ";
    constexpr const char* bytes = "Vector 8";
    return info.find(vector) == 0 && info.find(bytes) != 0;
}

/** Word by word, after Fowler, Noll and Vo (FNV-1a), with words in the place of bytes. */
class Digest {
  public:
    void add(std::uint64_t word) { m_value = (m_value ^ word) * 0x100000001b3ULL ^ (m_value >> 29); }
    template <class Filter>
    void add(const char* data, std::size_t size, Filter filter) {
        std::uintptr_t word = 0;
        for (; size >= sizeof word; data += sizeof word, size -= sizeof word) {
            std::memcpy(&word, data, sizeof word);
            add(filter(word));
        }
        for (; size > 0; --size)
            add(static_cast<unsigned char>(*data++));
    }
    std::uint64_t value() const { return m_value; }

  private:
    std::uint64_t m_value = 0xcbf29ce484222325ULL;
};

} // namespace

std::string bxLogged(const bxString& text) {
    return {text.c_str(), static_cast<std::size_t>(text.length()) + 1};
}

void bxTurnsLog::write(Kind kind, Place place, const std::string& content) const {
    std::string entry =
        bxLoggedBytes(Entry{kind, place, static_cast<std::uint32_t>(content.size())}) + content;
    const char* next = entry.data();
    for (std::size_t rest = entry.size(); rest > 0;) {
        const ssize_t written = ::write(m_descriptor, next, rest);
        if (written < 0 && errno != EINTR)
            return;
        if (written > 0) {
            next += written;
            rest -= static_cast<std::size_t>(written);
        }
    }
}

bool bxTurnsLog::writeBlocks(Place place) const {
    bool work = false;
    int size = 0;
    void* owner = nullptr;
    for (void* data = bxMallocFirst(&size, &owner); data; data = bxMallocNext(&size, &owner)) {
        const auto* const object = static_cast<const bxObject*>(owner);
        if (object && object->isWorkMemory()) {
            work = true;
            continue;
        }
        const bxString info = object ? object->objectInfo() : bxString();
        write(block, place,
              bxLogged(info) + std::string(static_cast<const char*>(data), static_cast<std::size_t>(size)));
    }
    return work;
}

void bxTurnsLog::writeMappings(Place place) const {
    write(mappings, place, memoryMap());
}

std::uint64_t bxDigestOfData() {
    const OwnMemory memory;
    Digest digest;
    int size = 0;
    void* owner = nullptr;
    for (void* data = bxMallocFirst(&size, &owner); data; data = bxMallocNext(&size, &owner)) {
        const auto* const object = static_cast<const bxObject*>(owner);
        if (object && object->isWorkMemory())
            continue;
        const auto bytes = static_cast<std::size_t>(size);
        digest.add(bytes);
        if (object && isTyped(object->objectInfo()))
            digest.add(static_cast<const char*>(data), bytes, [](std::uintptr_t word) { return word; });
        else
            digest.add(static_cast<const char*>(data), bytes,
                       [&memory](std::uintptr_t word) { return memory.holds(word) ? 0 : word; });
    }
    return digest.value();
}
