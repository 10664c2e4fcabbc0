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
        setColm(m_count++, text);
}

void bxCStream::setColm(int i, const bxString& text) {
    if (i < 0 || i >= lineWidth)
        return;
    m_cells[static_cast<std::size_t>(i)].assign(text);
    m_used = std::max(m_used, i + 1);
}

bool bxCStream::getColm(int i, bxString& text) const {
    if (i < 0 || i >= lineWidth)
        return false;
    text = m_cells[static_cast<std::size_t>(i)];
    return true;
}

void bxCStream::tableOut(int n) {
    if (bxOutputs::empty())
        return;
    m_text.clear(); // its memory stays: a run may write millions of lines
    const int fields = std::min(n ? n : m_count, lineWidth);
    for (int i = 0; i < fields; ++i) {
        if (i)
            m_text += ',';
        const std::string_view cell = m_cells[static_cast<std::size_t>(i)].view();
        if (i < m_count && !cell.empty())
            m_text += cell;
        else
            m_text += bxTable::empty;
    }
    m_text += '\n';
    for (o_stream* stream : *this)
        stream->write(m_text);
    flush();
}

void bxCStream::lineOut(int n) {
    tableOut(n);
    ++m_lineNumber;
    if (m_keyColumns) {
        makeKey();
        m_checked->add(m_text);
    }
    tableFlush();
}

void bxCStream::tableFlush() {
    for (int i = 0; i < m_used; ++i)
        m_cells[static_cast<std::size_t>(i)].assign(std::string_view());
    m_count = m_used = 0;
}

void bxCStream::linePostpone() {
    m_postponed.push_back(m_cells);
    tableFlush();
}

void bxCStream::linePostponeOut(int n) {
    for (Line& line : std::exchange(m_postponed, {})) {
        m_cells = std::move(line);
        m_used = lineWidth;
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

void bxCStream::makeKey() {
    m_text.clear();
    int last = std::min(m_keyColumns, m_used);
    while (last > 0 && m_cells[static_cast<std::size_t>(last - 1)].empty())
        --last;
    for (int i = 0; i < last; ++i) {
        if (i)
            m_text += '\0';
        m_text += m_cells[static_cast<std::size_t>(i)].view();
    }
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
    if (text.view() == "\n")
        table.lineOut(0);
    else
        table.addCell(text);
    return table;
}
