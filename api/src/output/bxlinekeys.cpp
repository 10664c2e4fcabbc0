#include "output/bxlinekeys.h"

#include <algorithm>
#include <functional>

void bxLineKeys::add(std::string_view key) {
    m_text += key;
    m_lines.push_back({std::hash<std::string_view>()(key), m_text.size()});
}

void bxLineKeys::clear() {
    m_text.clear();
    m_lines.clear();
}

std::string_view bxLineKeys::key(int line) const {
    const auto i = static_cast<std::size_t>(line);
    const std::size_t begin = i == 0 ? 0 : m_lines[i - 1].end;
    return std::string_view(m_text).substr(begin, m_lines[i].end - begin);
}

std::optional<std::pair<int, int>> bxLineKeys::firstEqual() const {
    struct Hashed {
        std::size_t hash;
        int line;
        auto operator<=>(const Hashed&) const = default;
    };
    std::vector<Hashed> lines;
    lines.reserve(m_lines.size());
    for (int line = 0; line < count(); ++line)
        lines.push_back({m_lines[static_cast<std::size_t>(line)].hash, line});
    std::ranges::sort(lines); // those that may be equal stand together, in their order

    std::optional<std::pair<int, int>> first;
    for (auto a = lines.begin(); a != lines.end(); ++a) {
        if (first && a->line > first->first)
            continue;
        for (auto b = a + 1; b != lines.end() && b->hash == a->hash; ++b) {
            if (key(a->line) == key(b->line)) {
                first = std::pair(a->line, b->line);
                break;
            }
        }
    }
    return first;
}
