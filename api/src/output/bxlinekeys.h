/** \file
 * The check for table lines of the same key.
 */
#ifndef BXLINEKEYS_H
#define BXLINEKEYS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/** Keys of table lines, kept in little memory: a run may write hundreds of thousands. */
class bxLineKeys {
  public:
    void add(std::string_view key);
    void clear();
    int count() const { return static_cast<int>(m_lines.size()); }

    /**
     * The first two lines with equal keys, by their index: the smallest first line, and the smallest second
     * one for it. None if all keys differ.
     */
    std::optional<std::pair<int, int>> firstEqual() const;

  private:
    struct Line {
        std::size_t hash;
        std::size_t end; ///< of its key in the text; it begins where that of the line before ends
    };

    std::string_view key(int line) const;

    std::string m_text; ///< all keys
    std::vector<Line> m_lines;
};

#endif
