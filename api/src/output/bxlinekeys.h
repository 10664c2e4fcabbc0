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

/**
 * Keys of table lines, kept in little memory: a run may write hundreds of thousands. Neighbours differ in
 * their last cells, so of each key only what follows the part that it shares with the key before is kept.
 */
class bxLineKeys {
  public:
    void add(std::string_view key);
    void clear();
    int count() const { return static_cast<int>(m_hashes.size()); }

    /**
     * The first two lines with equal keys, by their index: the smallest first line, and the smallest second
     * one for it. None if all keys differ.
     */
    std::optional<std::pair<int, int>> firstEqual() const;

  private:
    /** Lines in a row of which the first one's key is whole. */
    static constexpr std::size_t rowLength = 64;

    bool mayBeEqual() const;
    void addLength(std::size_t length);
    std::size_t readLength(std::size_t& at) const;
    std::string key(std::size_t line) const;

    std::string m_last;              /**< key of the last line */
    std::string m_text;              /**< of each line: length shared, own length, own characters */
    std::vector<std::size_t> m_rows; /**< where each row begins in the text */
    std::vector<std::size_t> m_hashes;
};

#endif
