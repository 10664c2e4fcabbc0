#include "resulttable.h"

#include "cells.h"
#include "output/bxtable.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <istream>
#include <sstream>

namespace {

/** A needed or known column of a result table. */
enum class Column {
    function,
    types,
    descriptor,
    parameter,
    comment,
    clocks,
    unit,
    microseconds,
    mflops,
    interest,
    other
};

struct ColumnTitle {
    std::string_view title;
    Column column;
    bool needed;
};

constexpr std::array columnTitles{
    ColumnTitle{bxTable::function, Column::function, true},
    ColumnTitle{bxTable::types, Column::types, false},
    ColumnTitle{bxTable::descriptor, Column::descriptor, false},
    ColumnTitle{bxTable::comment, Column::comment, true},
    ColumnTitle{bxTable::clocks, Column::clocks, true},
    ColumnTitle{bxTable::unit, Column::unit, false},
    ColumnTitle{bxTable::microseconds, Column::microseconds, false},
    ColumnTitle{bxTable::mflops, Column::mflops, false},
    ColumnTitle{bxTable::interest, Column::interest, false},
};

bool isParameterTitle(std::string_view title) {
    return title.size() > 1 && title[0] == bxTable::parameterLetter &&
           title.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

Column columnOf(std::string_view title) {
    const auto at = std::find_if(columnTitles.begin(), columnTitles.end(),
                                 [&](const ColumnTitle& known) { return known.title == title; });
    if (at != columnTitles.end())
        return at->column;
    return isParameterTitle(title) ? Column::parameter : Column::other;
}

/**
 * Whether a cell of the "Types" column holds element types ("32s", "16s32f", "64fc"). A test that is bound to
 * no library function writes its name alone, and its parameters follow directly.
 */
bool looksLikeTypes(std::string_view cell) {
    if (cell.empty())
        return false;
    while (!cell.empty()) {
        const std::size_t digits = std::min(cell.find_first_not_of("0123456789"), cell.size());
        const std::string_view width = cell.substr(0, digits);
        if (width != "1" && width != "8" && width != "16" && width != "24" && width != "32" && width != "64")
            return false;
        cell.remove_prefix(digits);
        if (cell.empty() || std::string_view("usf").find(cell[0]) == std::string_view::npos)
            return false;
        cell.remove_prefix(1);
        if (!cell.empty() && cell[0] == 'c')
            cell.remove_prefix(1);
    }
    return true;
}

std::string joinedName(const ResultRow& row) {
    std::string name = row.name;
    for (const std::string* part : {&row.types, &row.descriptor})
        if (!part->empty())
            name += "_" + *part;
    return name;
}

/** The summary's count labels without the dots and dashes that show their depth (".....-FAIL " is "FAIL"). */
std::string plainLabel(std::string_view label) {
    const std::size_t first = std::min(label.find_first_not_of(".-"), label.size());
    return std::string(trimmed(label.substr(first)));
}

/** Reads one file line by line; the heading last met says what a line is. */
class Reader {
  public:
    Reader(std::istream& input, const std::filesystem::path& name, bool allowPartial)
        : m_input(input), m_name(name.string()), m_allowPartial(allowPartial) {}

    TableFile read();

  private:
    enum class Section { head, results, summary, counts };

    [[noreturn]] void fail(const std::string& what) const {
        throw TableError(m_name + ": line " + std::to_string(m_line) + ": " + what);
    }
    void takeLine(std::string_view line);
    void takeHeadLine(std::string_view line);
    bool startsHead(std::string_view line) const;
    void startResults(std::vector<std::string> titles);
    void startSummary(std::vector<std::string> titles);
    void takeResult(std::vector<std::string> cells);
    void takeSummary(const std::vector<std::string>& cells);
    void checkWidth(const std::vector<std::string>& cells) const;
    void fillRow(ResultRow& row, const std::vector<std::string>& cells) const;
    std::optional<double> number(const std::string& cell, const std::string& title) const;
    void cutOff();

    std::istream& m_input;
    std::string m_name;
    bool m_allowPartial;
    std::size_t m_line = 0;
    Section m_section = Section::head;
    RunHead m_head;
    std::vector<std::string> m_titles;
    std::vector<Column> m_columns;
    TableFile m_file;
};

TableFile Reader::read() {
    std::string line;
    while (std::getline(m_input, line)) {
        ++m_line;
        if (m_input.eof()) {
            cutOff();
            break;
        }
        if (const auto text = trimmed(line); !text.empty())
            takeLine(text);
    }
    if (m_input.bad())
        fail("cannot be read");
    if (m_file.runs.empty() && m_file.summaries.empty()) {
        throw TableError(m_name +
                         ": no table: there is no line of column titles that begins with \"Function\"");
    }
    return std::move(m_file);
}

/** The program ends every line; one without an end is the trace of a run that died or of a copy that broke
 * off. */
void Reader::cutOff() {
    if (!m_allowPartial)
        fail("the last line is cut off; with --partial what stands before it is used");
    m_file.notes.push_back(m_name + ": line " + std::to_string(m_line) + ": cut off, left out");
    auto& runs =
        m_section == Section::summary || m_section == Section::counts ? m_file.summaries : m_file.runs;
    if (!runs.empty())
        runs.back().incomplete = true;
}

/** Whether a line behind a table begins the head of the next run, appended to the same file. */
bool Reader::startsHead(std::string_view line) const {
    constexpr std::array<std::string_view, 5> labels{bxTable::cpu, bxTable::os, bxTable::computer,
                                                     bxTable::library, bxTable::start};
    const std::string_view label = line.substr(0, line.find(','));
    return std::find(labels.begin(), labels.end(), label) != labels.end();
}

void Reader::takeLine(std::string_view line) {
    if (line.starts_with(bxTable::function + std::string(","))) {
        auto titles = splitCells(line);
        if (std::find(titles.begin(), titles.end(), bxTable::summary::result) != titles.end())
            startSummary(std::move(titles));
        else
            startResults(std::move(titles));
        return;
    }
    if (m_section != Section::head && startsHead(line)) {
        m_section = Section::head;
        m_head = {};
    }
    switch (m_section) {
    case Section::head:
        takeHeadLine(line);
        break;
    case Section::results:
        takeResult(splitCells(line));
        break;
    case Section::summary:
        takeSummary(splitCells(line));
        break;
    case Section::counts:
        m_file.summaries.back().counts.emplace_back(
            plainLabel(line.substr(0, line.find(','))),
            trimmed(line.substr(std::min(line.find(','), line.size() - 1) + 1)));
        break;
    }
}

/** Values of the head are texts that may hold commas: the first comma alone divides. */
void Reader::takeHeadLine(std::string_view line) {
    const std::size_t comma = line.find(',');
    if (comma == std::string_view::npos) {
        fail("neither \"label,value\" of a table's head nor column titles: " +
             std::string(line.substr(0, 60)));
    }
    m_head.labels.emplace_back(line.substr(0, comma), trimmed(line.substr(comma + 1)));
}

void Reader::startResults(std::vector<std::string> titles) {
    for (const ColumnTitle& known : columnTitles)
        if (known.needed && std::find(titles.begin(), titles.end(), known.title) == titles.end())
            fail("column \"" + std::string(known.title) + "\" is missing");
    m_titles = std::move(titles);
    m_columns.clear();
    TableRun run;
    run.file = m_name;
    run.head = m_head;
    for (const std::string& title : m_titles) {
        const Column column = columnOf(title);
        m_columns.push_back(column);
        run.parameterColumns += column == Column::parameter ? 1U : 0U;
        run.hasInterest |= column == Column::interest;
        if (column == Column::other) {
            m_file.notes.push_back(m_name + ": column \"" + title +
                                   "\" is not known; its cells are kept as text");
        }
    }
    m_file.runs.push_back(std::move(run));
    m_section = Section::results;
}

void Reader::startSummary(std::vector<std::string> titles) {
    m_titles = std::move(titles);
    TableRun run;
    run.file = m_name;
    run.head = m_head;
    run.hasSummary = true;
    m_file.summaries.push_back(std::move(run));
    m_section = Section::summary;
}

void Reader::checkWidth(const std::vector<std::string>& cells) const {
    if (cells.size() != m_titles.size()) {
        fail(std::to_string(cells.size()) + " cells where the column titles are " +
             std::to_string(m_titles.size()));
    }
}

std::optional<double> Reader::number(const std::string& cell, const std::string& title) const {
    if (isEmptyCell(cell))
        return std::nullopt;
    const auto value = toNumber(cell);
    if (!value)
        fail("\"" + cell + "\" in column \"" + title + "\" is no number");
    return value;
}

void Reader::takeResult(std::vector<std::string> cells) {
    checkWidth(cells);
    ResultRow row;
    row.line = m_line;
    const auto comment = std::find(m_columns.begin(), m_columns.end(), Column::comment) - m_columns.begin();
    const bool nameLine = cells[static_cast<std::size_t>(comment)] == bxTable::nameLine;
    fillRow(row, cells);
    if (nameLine)
        m_file.names[row.function] = row.parameters;
    else
        m_file.runs.back().rows.push_back(std::move(row));
}

void Reader::fillRow(ResultRow& row, const std::vector<std::string>& cells) const {
    const auto typesAt = std::find(m_columns.begin(), m_columns.end(), Column::types) - m_columns.begin();
    const bool hasTypes = typesAt < static_cast<std::ptrdiff_t>(m_columns.size());
    const bool plain = hasTypes && !isEmptyCell(cells[static_cast<std::size_t>(typesAt)]) &&
                       !looksLikeTypes(cells[static_cast<std::size_t>(typesAt)]);
    std::vector<std::string> early; // parameters that stand in the function columns
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string text = isEmptyCell(cells[i]) ? std::string() : cells[i];
        switch (m_columns[i]) {
        case Column::function:
            row.name = text;
            break;
        case Column::types:
        case Column::descriptor:
            if (plain)
                early.push_back(text);
            else
                (m_columns[i] == Column::types ? row.types : row.descriptor) = text;
            break;
        case Column::parameter:
            row.parameters.push_back(text);
            break;
        case Column::comment:
            row.comment = std::string(trimmed(text));
            break;
        case Column::clocks:
            row.clocksText = text;
            row.clocks = number(cells[i], m_titles[i]);
            break;
        case Column::unit:
            row.unit = std::string(trimmed(text));
            break;
        case Column::microseconds:
            row.microsecondsText = text;
            row.microseconds = number(cells[i], m_titles[i]);
            break;
        case Column::mflops:
            row.mflops = number(cells[i], m_titles[i]);
            break;
        case Column::interest:
            row.hot = text == bxTable::hot;
            break;
        case Column::other:
            row.other.emplace_back(m_titles[i], text);
            break;
        }
    }
    if (plain) {
        row.parameters.insert(row.parameters.begin(), early.begin(), early.end());
        row.parameters.resize(row.parameters.size() - early.size());
    }
    row.function = joinedName(row);
}

void Reader::takeSummary(const std::vector<std::string>& cells) {
    if (cells.size() == 1 && cells[0] == bxTable::summary::end) {
        m_section = Section::counts;
        return;
    }
    checkWidth(cells);
    TestOutcome test;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string& title = m_titles[i];
        if (title == bxTable::function)
            test.function = cells[i];
        else if (title == bxTable::summary::test)
            test.test = cells[i];
        else if (title == bxTable::summary::source)
            test.source = cells[i];
        else if (title == bxTable::summary::result)
            test.result = cells[i];
        else if (title == bxTable::summary::program)
            test.program = cells[i];
        else if (title == bxTable::summary::seconds)
            test.seconds = number(cells[i], title);
        else if (title != bxTable::summary::kind)
            test.watch.emplace_back(title, cells[i]);
    }
    m_file.summaries.back().tests.push_back(std::move(test));
}

/** The number behind a mark in a comment ("nLps=256 acc=7.3%"). */
std::optional<double> numberAfter(std::string_view text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    if (at == std::string_view::npos)
        return std::nullopt;
    const std::string_view rest = text.substr(at + mark.size());
    return toNumber(rest.substr(0, rest.find_first_not_of("0123456789.")));
}

std::optional<double> percentAfter(std::string_view text, std::string_view mark) {
    const auto percent = numberAfter(text, mark);
    return percent ? std::optional(*percent / 100) : std::nullopt;
}

} // namespace

std::string RunHead::value(std::string_view label) const {
    const auto found = values(label);
    return found.empty() ? std::string() : found.front();
}

std::vector<std::string> RunHead::values(std::string_view label) const {
    std::vector<std::string> found;
    for (const auto& [key, text] : labels)
        if (key == label)
            found.push_back(text);
    return found;
}

std::optional<double> ResultRow::accuracy() const {
    return percentAfter(comment, bxTable::accuracy);
}

std::optional<double> ResultRow::shared() const {
    return percentAfter(comment, bxTable::shared);
}

bool ResultRow::unknown() const {
    return comment.find(std::string(bxTable::interval) + bxTable::unknown) != std::string::npos;
}

bool ResultRow::inCoreClocks() const {
    return comment.find(bxTable::coreClocks) != std::string::npos;
}

std::optional<double> ResultRow::instructions() const {
    return numberAfter(comment, bxTable::instructions);
}

std::optional<double> ResultRow::steps() const {
    const auto steps = numberAfter(comment, bxTable::steps);
    return steps ? steps : instructions();
}

std::optional<double> ResultRow::ipc() const {
    return numberAfter(comment, bxTable::perClock);
}

std::optional<CallSpread> ResultRow::callSpread() const {
    const std::string begin = std::string(" ") + bxTable::singleCalls; // "nCalls=" ends alike
    const std::size_t at = (" " + comment).find(begin);
    if (at == std::string::npos)
        return std::nullopt;
    const std::string_view text = std::string_view(comment).substr(at);
    CallSpread spread;
    const auto read = [text](double& number, const char* mark) {
        const auto found = numberAfter(text, mark);
        number = found.value_or(0);
        return found.has_value();
    };
    if (!read(spread.calls, bxTable::singleCalls) || !read(spread.least, bxTable::leastCall) ||
        !read(spread.median, bxTable::medianCall) || !read(spread.percent99, bxTable::percent99) ||
        !read(spread.permille999, bxTable::permille999) || !read(spread.most, bxTable::mostCall))
        return std::nullopt;
    read(spread.interrupted, bxTable::interruptedCalls);
    spread.longestInterrupted = numberAfter(text, bxTable::longestInterrupted);
    spread.apart = text.find(std::string(" ") + bxTable::interruptedKept) == std::string_view::npos;
    if (const std::size_t bins = text.find(bxTable::histogram); bins != std::string_view::npos) {
        std::istringstream counts(
            std::string(text.substr(bins + std::string_view(bxTable::histogram).size())));
        double count = 0;
        for (std::string one; std::getline(counts, one, '.') && std::istringstream(one) >> count;)
            spread.histogram.push_back(count);
    }
    return spread;
}

std::optional<double> ResultRow::firstCall() const {
    return numberAfter(comment, bxTable::firstCall);
}

std::string ResultRow::codeDigest() const {
    const std::string mark = std::string(" ") + bxTable::code;
    const std::size_t at = comment.find(mark);
    return at == std::string::npos ? std::string() : comment.substr(at + mark.size(), 8);
}

std::optional<double> ResultRow::loops() const {
    const auto loops = numberAfter(comment, bxTable::loops);
    return loops ? loops : numberAfter(comment, bxTable::calls);
}

std::string ResultRow::cacheMode() const {
    for (const char* mode : {bxTable::inCache, bxTable::outOfCache})
        if (comment.starts_with(mode))
            return mode;
    return {};
}

TableFile readTable(std::istream& input, const std::filesystem::path& name, bool allowPartial) {
    return Reader(input, name, allowPartial).read();
}
