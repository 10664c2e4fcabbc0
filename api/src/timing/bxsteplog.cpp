#include "timing/bxsteplog.h"

#include <algorithm>
#include <sys/mman.h>

bxStepLog::bxStepLog(long long steps) {
    const auto wanted = static_cast<std::uint64_t>(steps + 1) * mostOfStep;
    constexpr std::uint64_t most = sizeof(void*) == 8 ? std::uint64_t{1} << 34 : std::uint64_t{1} << 28;
    const auto size = static_cast<std::size_t>(std::min(wanted, most));
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED)
        return;
    m_data = static_cast<char*>(memory);
    m_capacity = size;
    m_full = false;
}

bxStepLog::~bxStepLog() {
    if (m_data)
        munmap(m_data, m_capacity);
}

void bxStepLog::clear() {
    m_bytes = 0;
    m_steps = 0;
    m_full = m_data == nullptr;
}

std::vector<std::uintptr_t> bxStepLog::addresses() const {
    std::vector<std::uintptr_t> found;
    constexpr std::size_t pointer = places.size() - 1;
    for (std::size_t at = 0; at < m_bytes;) {
        std::uint32_t changed = 0;
        std::memcpy(&changed, m_data + at, sizeof changed);
        at += sizeof changed;
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (!(changed >> i & 1))
                continue;
            std::uint64_t value = 0;
            std::memcpy(&value, m_data + at, sizeof value);
            at += sizeof value;
            if (i == pointer)
                found.push_back(static_cast<std::uintptr_t>(value));
        }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}
