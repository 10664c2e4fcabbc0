#include "framework/bxreportformat.h"

#include "system/bxclock.h"
#include "system/bxcpuid.h"
#include "system/bxcputype.h"
#include "system/bxenvironment.h"
#include "system/bxhost.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

namespace {

/** Column of the closing "|" of a framed line. */
constexpr int frameColumn = 78;

/** A text without the characters that would break a line or move its columns. */
bxString onOneLine(const bxString& text) {
    std::string line(text.view());
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' '; }, ' ');
    bxString trimmed{std::string_view(line)};
    trimmed.trim();
    return trimmed;
}

} // namespace

bxReportFormat::bxReportFormat(bool frame, int columns, int c0, int c1, int c2, int c3, int c4, int c5)
    : m_frame(frame), m_columns(columns), m_col{c0, c1, c2, c3, c4, c5} {}

bxString bxReportFormat::firstLine() {
    m_frame = true;
    return sepLine();
}

bxString bxReportFormat::lastLine() {
    m_frame = false;
    return sepLine();
}

bxString bxReportFormat::sepLine() const {
    bxString line = "+";
    line.resize(frameColumn, '-');
    return line << "+\n";
}

bxString bxReportFormat::startLine() const {
    return m_frame ? "|" : " ";
}

bxString bxReportFormat::closedLine(bxString line) const {
    if (m_frame && getLastLen(line) <= frameColumn) {
        setOffsetLine(line, frameColumn);
        line << '|';
    }
    return line << '\n';
}

bxString bxReportFormat::getLine(const bxString& a, const bxString& b, const bxString& c, const bxString& d,
                                 const bxString& e, const bxString& f) const {
    bxString line = startLine();
    const bxString* item[] = {&a, &b, &c, &d, &e, &f};
    for (size_t i = 0; i < m_col.size(); i++)
        setItem(line, *item[i], m_col[i]);
    return closedLine(line);
}

bxString bxReportFormat::getEntry(std::initializer_list<bxString> heads, const bxString& value,
                                  const bxString& further) const {
    const int column = m_col[heads.size()];
    bxString line = startLine();
    for (size_t i = 0; const bxString& head : heads)
        setItem(line, head, m_col[i++]);

    bxString rest = onOneLine(value);
    bxString piece;
    bxString block;
    while (takePiece(rest, piece, std::max(frameColumn - std::max(column, getLastLen(line) + 1), 1))) {
        rest.trim();
        setItem(line, piece, column);
        block << closedLine(std::exchange(line, startLine()));
    }
    setItem(line, rest, column);

    // Beside the value if there is room, else on a line of its own.
    const bxString side = onOneLine(further).substr(0, frameColumn - 2);
    if (!side.empty() && getLastLen(line) >= frameColumn - side.length())
        block << closedLine(std::exchange(line, startLine()));
    setItem(line, side, m_col[heads.size() + 1]);
    return block << closedLine(line);
}

bool bxReportFormat::takePiece(bxString& text, bxString& piece, int width) {
    if (text.length() <= width)
        return false;
    const bool split = getPieceItem(text, piece, width);
    if (!split)
        std::swap(piece, text);
    if (piece.length() > width) {
        // A word wider than the column is cut: a whole frame is worth more than a whole word.
        bxString remainder = piece.substr(width);
        if (split)
            remainder << ' ' << text;
        text = remainder;
        piece = piece.substr(0, width);
    }
    return true;
}

int bxReportFormat::getLastLen(const bxString& text) {
    return text.length() - 1 - text.rfind("\n");
}

bool bxReportFormat::setOffsetLine(bxString& line, int col) {
    const int missing = col - getLastLen(line);
    if (missing < 0)
        return false;
    line.resize(line.length() + missing, ' ');
    return true;
}

void bxReportFormat::setItem(bxString& line, const bxString& item, int col) {
    if (item.empty())
        return;
    const int start = col < 0 ? -item.length() - 1 - col : col;
    if (start >= 0)
        setItemLeft(line, item, start);
}

void bxReportFormat::setItemLeft(bxString& line, const bxString& item, int col) {
    if (getLastLen(line) < col)
        setOffsetLine(line, col);
    else
        line << ' ';
    line << item;
}

bool bxReportFormat::getPieceItem(bxString& text, bxString& piece, int width) {
    if (text.length() <= width)
        return false;
    const std::string_view whole = text.view();
    size_t cut = whole.rfind(' ');
    if (cut == whole.npos)
        return false;
    while (cut > static_cast<size_t>(std::max(width, 0))) {
        const size_t earlier = whole.substr(0, cut).rfind(' ');
        if (earlier == whole.npos)
            break;
        cut = earlier;
    }
    piece = bxString(whole.substr(0, cut));
    text = bxString(whole.substr(cut + 1));
    return true;
}

bxString bxReportFormat::getTimeStr(int seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text;
}

bxString bxReportFormat::cutoffNL(const bxString& text) {
    const int end = text.find("\n", 0);
    return end < 0 ? text : text.substr(0, end);
}

/** In GHz from 1000 MHz on. */
static bxString frequency(int mhz) {
    return mhz > 999 ? bxString() << mhz / 1000.0 << " GHz" : bxString() << mhz << " MHz";
}

bxString bxReportFormat::cpuInfo() {
    const int type = zor_GetCpuType ? zor_GetCpuType() : bx_zorGetCpuType();
    const int freqMHz = bxCpuTicker::getFreq();
    const bxString text = cpuInfo(bxCpuType::cpuName(type), bxGetNumOfProcessors(), freqMHz,
                                  bxGetMaxCacheSizeB(), bxNominalCpuMHz(freqMHz));
    const bxString problem = bxCacheSizeProblem();
    return problem.empty() ? text : text + " (library: " + problem + ")";
}

bxString bxReportFormat::cpuInfo(const bxString& name, int processors, int freqMHz, int cacheBytes,
                                 int nominalMHz) {
    bxString text = name;
    text << ", ";
    if (processors > 1)
        text << processors << 'x';
    text << (freqMHz > 0 ? frequency(freqMHz) : "frequency not known");
    if (nominalMHz > 0 && !(frequency(nominalMHz) == frequency(freqMHz)))
        text << " (nominal " << frequency(nominalMHz) << ")";
    text << ", ";
    if (cacheBytes > 0)
        text << "Max cache size " << cacheBytes / 1024 << " K";
    return text;
}

bxString bxCtimeText(time_t when) {
    const char* text = std::ctime(&when);
    return bxReportFormat::cutoffNL(text ? text : "");
}
