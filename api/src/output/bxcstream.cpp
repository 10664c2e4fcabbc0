#include "output/bxcstream.h"

#include "output/bxostream.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

/** Two lines, by their place in the store. */
using LinePair = std::pair<int, int>;

/** Steps through the leading columns of a store and joins the cells of each line; no cell holds a NUL. */
class KeyReader {
  public:
    KeyReader(const bxStringList* columns, int k) {
        for (int i = 0; i < k; ++i)
            m_cells.push_back(columns[i].begin());
    }
    std::string next() {
        std::string key;
        for (auto& cell : m_cells)
            key.append((cell++)->c_str()) += '\0';
        return key;
    }

  private:
    std::vector<bxStringList::const_iterator> m_cells;
};

/** The first pair of equal keys among m lines: the smallest first line, and the smallest second one for it.
 */
std::optional<LinePair> firstEqualPair(KeyReader keys, int m) {
    std::unordered_map<std::string, int> firstLines;
    std::optional<LinePair> pair;
    for (int j = 0; j < m; ++j) {
        const auto [place, isNew] = firstLines.try_emplace(keys.next(), j);
        if (!isNew && (!pair || place->second < pair->first))
            pair = LinePair(place->second, j);
    }
    return pair;
}

} // namespace

void bxCStream::Store::append(const bxString* cells) {
    for (bxStringList& column : m_columns)
        column.push_back(*cells++);
}

void bxCStream::Store::takeFirst(bxString* cells) {
    for (bxStringList& column : m_columns) {
        *cells++ = std::move(*column.begin());
        column.erase(column.begin());
    }
}

void bxCStream::Store::clear() {
    for (bxStringList& column : m_columns)
        column.clear();
}

void bxCStream::addCell(const bxString& text) {
    if (m_count < lineWidth)
        m_cells[static_cast<std::size_t>(m_count++)] = text;
}

void bxCStream::setColm(int i, const bxString& text) {
    if (i >= 0 && i < lineWidth)
        m_cells[static_cast<std::size_t>(i)] = text;
}

bool bxCStream::getColm(int i, bxString& text) const {
    if (i < 0 || i >= lineWidth)
        return false;
    text = m_cells[static_cast<std::size_t>(i)];
    return true;
}

std::string bxCStream::lineText(int n) const {
    std::string line;
    const int fields = std::min(n ? n : m_count, lineWidth);
    for (int i = 0; i < fields; ++i) {
        const bool present = i < m_count && !m_cells[static_cast<std::size_t>(i)].empty();
        line += i ? "," : "";
        line += present ? m_cells[static_cast<std::size_t>(i)].view() : "-";
    }
    return line += '\n';
}

void bxCStream::tableOut(int n) {
    if (bxOutputs::empty())
        return;
    const std::string line = lineText(n);
    for (o_stream* stream : *this)
        stream->write(line.c_str());
    flush();
}

void bxCStream::lineOut(int n) {
    tableOut(n);
    ++m_lineNumber;
    if (m_keyColumns)
        m_check.append(m_cells.data());
    tableFlush();
}

void bxCStream::tableFlush() {
    m_cells.fill(bxString());
    m_count = 0;
}

void bxCStream::linePostpone() {
    m_postponed.append(m_cells.data());
    tableFlush();
}

void bxCStream::linePostponeOut(int n) {
    while (!m_postponed.empty()) {
        m_postponed.takeFirst(m_cells.data());
        setCellCount(n);
        lineOut(n);
    }
}

void bxCStream::identicalLinesStart(int k) {
    m_keyColumns = std::clamp(k, 0, lineWidth);
    m_check.clear();
}

bool bxCStream::identicalLinesStop() {
    if (!m_keyColumns || m_check.empty())
        return false;
    const bool found = identicalLinesCheck();
    m_keyColumns = 0;
    m_check.clear();
    return found;
}

bool bxCStream::identicalLinesCheck() const {
    const int m = m_check.m_columns[0].size();
    const auto pair = firstEqualPair(KeyReader(m_check.m_columns.data(), m_keyColumns), m);
    if (!pair)
        return false;
    const int first = m_lineNumber - m + 1;
    g_ostrm << WARN << " Performance table warning:\n";
    g_ostrm << " Lines " << first + pair->first << " & " << first + pair->second;
    g_ostrm << " have identical parameters\n" << endMessageFlush;
    return true;
}

bool bxCStream::identicalColms(const bxString* a, const bxString* b, int k) {
    return std::equal(a, a + k, b);
}

bxCStream& operator<<(bxCStream& table, const bxString& text) {
    if (text == "\n")
        table.lineOut(0);
    else
        table.addCell(text);
    return table;
}
