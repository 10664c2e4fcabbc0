#include "output/bxlinekeys.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <numeric>

/** Length of the beginning that two texts share: eight characters at a time, since it is most of a key. */
static std::size_t sharedLength(std::string_view a, std::string_view b) {
    const std::size_t most = std::min(a.size(), b.size());
    std::size_t at = 0;
    for (std::uint64_t ours, theirs; at + sizeof ours <= most; at += sizeof ours) {
        std::memcpy(&ours, a.data() + at, sizeof ours);
        std::memcpy(&theirs, b.data() + at, sizeof theirs);
        if (ours != theirs)
            break;
    }
    while (at < most && a[at] == b[at])
        ++at;
    return at;
}

void bxLineKeys::add(std::string_view key) {
    if (m_hashes.size() % rowLength == 0) {
        m_rows.push_back(m_text.size());
        m_last.clear();
    }
    const std::size_t shared = sharedLength(key, m_last);
    addLength(shared);
    addLength(key.size() - shared);
    m_text += key.substr(shared);
    m_last = key;
    m_hashes.push_back(std::hash<std::string_view>()(key));
}

void bxLineKeys::clear() {
    *this = {};
}

/** Seven bits in a character, the lowest first; the eighth is set where more follow. */
void bxLineKeys::addLength(std::size_t length) {
    for (; length > 0x7F; length >>= 7)
        m_text += static_cast<char>(0x80 | (length & 0x7F));
    m_text += static_cast<char>(length);
}

std::size_t bxLineKeys::readLength(std::size_t& at) const {
    std::size_t length = 0;
    for (unsigned shift = 0;; shift += 7) {
        const auto part = static_cast<unsigned char>(m_text[at++]);
        length |= static_cast<std::size_t>(part & 0x7F) << shift;
        if (part < 0x80)
            return length;
    }
}

std::string bxLineKeys::key(std::size_t line) const {
    std::string text;
    std::size_t at = m_rows[line / rowLength];
    for (std::size_t i = 0; i <= line % rowLength; ++i) {
        text.resize(readLength(at));
        const std::size_t own = readLength(at);
        text.append(m_text, at, own);
        at += own;
    }
    return text;
}

/** Whether two keys may be equal; what the search below sorts takes longer. */
bool bxLineKeys::mayBeEqual() const {
    std::vector<std::size_t> hashes = m_hashes;
    std::ranges::sort(hashes);
    return std::ranges::adjacent_find(hashes) != hashes.end();
}

std::optional<std::pair<int, int>> bxLineKeys::firstEqual() const {
    if (!mayBeEqual())
        return std::nullopt;
    std::vector<unsigned> lines(m_hashes.size());
    std::iota(lines.begin(), lines.end(), 0U);
    // Those that may be equal stand together, in their order.
    std::ranges::sort(lines, {}, [this](unsigned line) { return std::pair(m_hashes[line], line); });

    std::optional<std::pair<int, int>> first;
    for (auto a = lines.begin(); a != lines.end(); ++a) {
        if (first && static_cast<int>(*a) > first->first)
            continue;
        for (auto b = a + 1; b != lines.end() && m_hashes[*b] == m_hashes[*a]; ++b) {
            if (key(*a) == key(*b)) {
                first = std::pair(static_cast<int>(*a), static_cast<int>(*b));
                break;
            }
        }
    }
    return first;
}
