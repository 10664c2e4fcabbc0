#include "output/bxcstream.h"

#include "output/bxlinekeys.h"
#include "output/bxostream.h"
#include "output/bxtable.h"

#include <algorithm>
#include <utility>

bxCStream::bxCStream() : m_checked(std::make_unique<bxLineKeys>()) {}
bxCStream::~bxCStream() = default;

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
        line += present ? m_cells[static_cast<std::size_t>(i)].view() : bxTable::empty;
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
        m_checked->add(lineKey());
    tableFlush();
}

void bxCStream::tableFlush() {
    for (bxString& cell : m_cells)
        if (!cell.empty())
            cell.assign("");
    m_count = 0;
}

void bxCStream::linePostpone() {
    m_postponed.push_back(m_cells);
    tableFlush();
}

void bxCStream::linePostponeOut(int n) {
    for (Line& line : std::exchange(m_postponed, {})) {
        m_cells = std::move(line);
        setCellCount(n);
        lineOut(n);
    }
}

void bxCStream::identicalLinesStart(int k) {
    m_keyColumns = std::clamp(k, 0, lineWidth);
    m_checked->clear();
}

bool bxCStream::identicalLinesStop() {
    if (!m_keyColumns || m_checked->count() == 0)
        return false;
    const bool found = identicalLinesCheck();
    m_keyColumns = 0;
    m_checked->clear();
    return found;
}

std::string bxCStream::lineKey() const {
    std::string key;
    for (int i = 0; i < m_keyColumns; ++i)
        key.append(m_cells[static_cast<std::size_t>(i)].c_str()) += '\0';
    key.resize(key.find_last_not_of('\0') + 1);
    return key;
}

bool bxCStream::identicalLinesCheck() const {
    const auto pair = m_checked->firstEqual();
    if (!pair)
        return false;
    const int first = m_lineNumber - m_checked->count() + 1;
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
