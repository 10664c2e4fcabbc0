#include "texttable.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

namespace {

constexpr std::string_view bold = "\x1b[1m", red = "\x1b[31m", yellow = "\x1b[33m", plain = "\x1b[0m";
constexpr std::size_t legible = 12;       // characters of a column that is cut
constexpr std::size_t legibleName = 32;   // and of a name cut in its middle
constexpr std::size_t mostOfWarnings = 2; // lines of a screen for the names of a warning
constexpr std::size_t leastOfScreen = 10; // lines for functions, however many warnings there are

/** Three digits at least, as many as the number has before its point. */
std::string digits(double number) {
    std::array<char, 32> text{};
    if (number > 0 && number < 1)
        std::snprintf(text.data(), text.size(), "%#.3g", number);
    else
        std::snprintf(text.data(), text.size(), "%.*f", number >= 100 ? 0 : number >= 10 ? 1 : 2, number);
    return text.data();
}

std::string timeText(double microseconds) {
    constexpr std::array<std::pair<double, const char*>, 3> units{{{1e6, " s"}, {1e3, " ms"}, {1, " us"}}};
    for (const auto& [size, name] : units)
        if (microseconds >= size)
            return digits(microseconds / size) + name;
    return digits(microseconds * 1e3) + " ns";
}

/** Parameters of a row that vary over the function's rows. */
std::string placeOf(const FunctionView& view, const ResultRow& row) {
    std::vector<std::size_t> varying = view.lines;
    if (view.axis)
        varying.insert(varying.begin(), view.axis->parameter);
    std::string text;
    for (const std::size_t i : varying)
        if (i < row.parameters.size() && !row.parameters[i].empty())
            text += (text.empty() ? "" : " ") + view.parameterNames[i] + "=" + row.parameters[i];
    if (const std::string mode = row.cacheMode(); !mode.empty())
        text += (text.empty() ? "" : " ") + mode;
    return text;
}

PlacedFunction place(const FunctionView& view, const TableRun& run, std::size_t number) {
    PlacedFunction placed{view.name, view.domain, testResult(run, view.name), 0, std::nullopt, {}, 0};
    for (const RowRef& ref : view.rows) {
        if (ref.run != number)
            continue;
        const std::string result = rowResult(run, *ref.row);
        if (placed.result.empty() || gradeOf(result) > gradeOf(placed.result))
            placed.result = result;
        if (!ref.row->clocks)
            continue;
        ++placed.rows;
        placed.least = placed.worst ? std::min(placed.least, *ref.row->clocks) : *ref.row->clocks;
        if (!placed.worst || *ref.row->clocks > placed.most())
            placed.worst = ref;
    }
    if (placed.worst)
        placed.place = placeOf(view, *placed.worst->row);
    return placed;
}

bool isWorse(const PlacedFunction& a, const PlacedFunction& b) {
    const auto failed = [](const PlacedFunction& f) { return gradeOf(f.result) == Grade::failed; };
    return failed(a) != failed(b) ? failed(a) : a.most() > b.most();
}

/** A text of the table with its look. */
struct Cell {
    std::string text;
    std::string_view look = {};
};

std::string_view lookOf(const std::string& result) {
    switch (result.empty() ? Grade::good : gradeOf(result)) {
    case Grade::failed:
        return red;
    case Grade::warned:
        return yellow;
    default:
        return {};
    }
}

/** A column, its cells to the right where they are numbers. */
struct Column {
    const char* title;
    bool number;
    int keep;              /**< of a narrow screen's columns the lowest goes first */
    std::size_t least = 0; /**< width that it may be cut to; 0: it is not cut */
    std::vector<Cell> cells = {};
    std::size_t shown = 0; /**< width on the screen */

    std::size_t width() const {
        std::size_t most = std::string_view(title).size();
        for (const Cell& cell : cells)
            most = std::max(most, cell.text.size());
        return most;
    }
};

std::string cut(std::string text, std::size_t width) {
    if (text.size() <= width)
        return text;
    text.resize(width - std::min<std::size_t>(width, 2));
    return text.append(std::min<std::size_t>(width, 2), '.');
}

/** A name without its middle: what tells names apart is at both ends. */
std::string cutName(const std::string& name, std::size_t width) {
    if (name.size() <= width || width < legible)
        return cut(name, width);
    const std::size_t end = (width - 2) / 2;
    return name.substr(0, width - 2 - end) + ".." + name.substr(name.size() - end);
}

class Table {
  public:
    explicit Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

    void add(std::vector<Cell> cells) {
        for (std::size_t i = 0; i < m_columns.size(); ++i)
            m_columns[i].cells.push_back(std::move(cells[i]));
    }
    std::string text(const Screen& screen);

  private:
    void fit(std::size_t columns);
    std::string line(std::size_t i, const Screen& screen, bool title) const;

    std::vector<Column> m_columns;
};

/** Leaves columns out while those that stay could not be legible, then cuts from the last on. */
void Table::fit(std::size_t columns) {
    constexpr int kept = 8; // the name and its clocks stay
    for (Column& column : m_columns)
        column.shown = column.width();
    std::erase_if(m_columns, [](const Column& column) {
        return column.keep < kept && std::all_of(column.cells.begin(), column.cells.end(),
                                                 [](const Cell& c) { return c.text.empty(); });
    });
    const auto sum = [&](auto width) {
        std::size_t all = 2 * (m_columns.size() - 1);
        for (const Column& column : m_columns)
            all += width(column);
        return all;
    };
    const auto legibleWidth = [](const Column& c) {
        return c.least > 0 ? std::min(c.shown, c.least) : c.shown;
    };
    while (sum(legibleWidth) > columns) {
        const auto least = std::min_element(m_columns.begin(), m_columns.end(),
                                            [](const Column& a, const Column& b) { return a.keep < b.keep; });
        if (least->keep >= kept)
            break;
        m_columns.erase(least);
    }
    const std::size_t all = sum([](const Column& c) { return c.shown; });
    std::size_t over = all - std::min(all, columns);
    for (auto column = m_columns.rbegin(); column != m_columns.rend(); ++column) {
        const std::size_t taken = std::min(over, column->shown - legibleWidth(*column));
        column->shown -= taken;
        over -= taken;
    }
    m_columns.front().shown -= std::min(over, m_columns.front().shown);
}

std::string Table::line(std::size_t i, const Screen& screen, bool title) const {
    std::string line;
    std::size_t left = screen.columns;
    for (const Column& column : m_columns) {
        const Cell cell = title ? Cell{column.title, bold} : column.cells[i];
        const std::size_t width = std::min(column.shown, left);
        const std::string text =
            column.least == legibleName ? cutName(cell.text, width) : cut(cell.text, width);
        const std::string blanks(width - text.size(), ' ');
        const bool styled = screen.styled && !cell.look.empty() && !text.empty();
        line += column.number ? blanks : "";
        line.append(styled ? cell.look : "").append(text).append(styled ? plain : "");
        line += column.number ? "" : blanks;
        line += "  ";
        left -= std::min(left, width + 2);
    }
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

std::string Table::text(const Screen& screen) {
    fit(screen.columns);
    std::string text = line(0, screen, true);
    for (std::size_t i = 0; i < m_columns.front().cells.size(); ++i)
        text += line(i, screen, false);
    return text;
}

/** Words in lines of the screen's width, at most so many; the last says how many words are not there. */
std::vector<std::string> wrapped(const std::string& first, const std::vector<std::string>& words,
                                 const Screen& screen, std::size_t most) {
    std::vector<std::string> lines{first};
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string more = "and " + std::to_string(words.size() - i) + " more";
        const bool last = i + 1 == words.size();
        const std::size_t room = screen.columns - (lines.size() == most && !last ? more.size() + 2 : 0);
        if (lines.back().size() + words[i].size() + 2 > room) {
            if (lines.size() == most) {
                lines.back() += " " + more;
                return lines;
            }
            lines.emplace_back("   ");
        }
        lines.back() += " " + words[i] + (last ? "" : ",");
    }
    return lines;
}

/** The warning that all functions share: it tells of the machine then, and of no function. */
std::string sharedWarning(const std::vector<PlacedDomain>& domains) {
    constexpr std::size_t several = 3;
    const std::string& first = domains.front().functions.front().result;
    std::size_t functions = 0;
    for (const PlacedDomain& domain : domains)
        for (const PlacedFunction& function : domain.functions) {
            if (function.result.empty() || function.result != first)
                return {};
            ++functions;
        }
    return functions >= several && gradeOf(first) == Grade::warned ? first : std::string();
}

/** The lines that name failed and warned functions by their results. */
std::vector<Cell> problems(const std::vector<PlacedDomain>& domains, const Screen& screen, std::size_t most) {
    std::map<std::pair<int, std::string>, std::vector<std::string>> byResult;
    for (const PlacedDomain& domain : domains)
        for (const PlacedFunction& function : domain.functions)
            if (!function.result.empty() && gradeOf(function.result) != Grade::good)
                byResult[{-static_cast<int>(gradeOf(function.result)), function.result}].push_back(
                    function.name);
    std::vector<Cell> lines;
    for (const auto& [result, names] : byResult) {
        std::size_t left = std::max<std::size_t>(1, most - std::min(most, lines.size()));
        if (screen.lines && gradeOf(result.second) == Grade::warned)
            left = std::min(left, mostOfWarnings);
        for (const std::string& line :
             wrapped(result.second + " (" + std::to_string(names.size()) + "):", names, screen, left))
            lines.push_back({line, lookOf(result.second)});
    }
    return lines;
}

/** How many functions of each domain fit into the lines: as many of one as of another. */
std::vector<std::size_t> share(const std::vector<PlacedDomain>& domains, std::optional<std::size_t> lines) {
    std::vector<std::size_t> shown(domains.size(), 0);
    std::size_t left = lines.value_or(static_cast<std::size_t>(-1));
    for (bool added = true; added;) {
        added = false;
        for (std::size_t i = 0; i < domains.size() && left > 0; ++i) {
            if (shown[i] < domains[i].functions.size()) {
                ++shown[i];
                --left;
                added = true;
            }
        }
    }
    return shown;
}

std::vector<Cell> cellsOf(const std::string& domain, const PlacedFunction& function,
                          const std::string& shared) {
    const std::string result = function.result == shared ? std::string() : function.result;
    std::vector<Cell> cells{{domain, bold}, {function.name, lookOf(result)}, {std::to_string(function.rows)}};
    if (function.worst) {
        const ResultRow& row = *function.worst->row;
        cells.insert(cells.end(), {{digits(function.most())},
                                   {row.unit.empty() ? "call" : row.unit},
                                   {function.rows > 1 ? digits(function.least) : ""},
                                   {row.microseconds ? timeText(*row.microseconds) : ""}});
    } else {
        cells.resize(7);
    }
    const bool good = result.empty() || gradeOf(result) == Grade::good;
    cells.push_back({good ? "" : result, lookOf(result)});
    cells.push_back({function.place});
    return cells;
}

} // namespace

std::vector<PlacedDomain> placeFunctions(const ReportData& data, std::size_t number) {
    const TableRun& run = data.tables->runs[number];
    std::vector<PlacedFunction> functions;
    for (const FunctionView& view : data.functions) {
        const bool here = std::any_of(view.rows.begin(), view.rows.end(),
                                      [&](const RowRef& ref) { return ref.run == number; });
        if (here)
            functions.push_back(place(view, run, number));
    }
    // A failed test may have no row; one that tells of the machine has none, either.
    for (const TestOutcome& test : run.tests) {
        if (gradeOf(test.result) == Grade::failed &&
            std::none_of(functions.begin(), functions.end(),
                         [&](const PlacedFunction& f) { return f.name == test.function; }))
            functions.push_back(
                {test.function, domainOf(test.function), test.result, 0, std::nullopt, {}, 0});
    }
    std::stable_sort(functions.begin(), functions.end(), isWorse);
    std::vector<PlacedDomain> domains;
    for (PlacedFunction& function : functions) {
        auto at = std::find_if(domains.begin(), domains.end(),
                               [&](const PlacedDomain& domain) { return domain.name == function.domain; });
        if (at == domains.end())
            at = domains.insert(domains.end(), {function.domain, {}});
        at->functions.push_back(std::move(function));
    }
    return domains;
}

std::string textTable(const ReportData& data, const Screen& screen, std::size_t reserved) {
    const std::size_t number = data.tables->runs.size() - 1;
    const TableRun& run = data.tables->runs[number];
    const std::vector<PlacedDomain> domains = placeFunctions(data, number);
    std::size_t functions = 0;
    for (const PlacedDomain& domain : domains)
        functions += domain.functions.size();

    constexpr std::size_t around = 5; // the machine, the sums, the titles, the explanation, an empty line
    std::optional<std::size_t> room;
    if (screen.lines)
        room = *screen.lines - std::min(*screen.lines, around + reserved);
    const std::size_t named = !room ? functions + 1 : *room - std::min(*room, leastOfScreen);
    const std::string shared = domains.empty() ? std::string() : sharedWarning(domains);
    std::vector<Cell> bad{{shared + ": all " + std::to_string(functions) + " functions", lookOf(shared)}};
    if (shared.empty())
        bad = problems(domains, screen, std::max<std::size_t>(1, named));
    if (room)
        room = std::max<std::size_t>(1, *room - std::min(*room, bad.size()));

    const std::vector<std::size_t> shown = share(domains, room);
    Table table({{"Domain", false, 7},
                 {"Function", false, 9, legibleName},
                 {"Rows", true, 3},
                 {"Clocks", true, 8},
                 {"per", false, 6},
                 {"Best", true, 1},
                 {"Time", true, 5},
                 {"Result", false, 4},
                 {"At", false, 2, legible}});
    std::size_t hidden = 0;
    for (std::size_t i = 0; i < domains.size(); ++i) {
        const auto& of = domains[i].functions;
        hidden += of.size() - shown[i];
        for (std::size_t j = 0; j < shown[i]; ++j) {
            const std::string more = shown[i] < of.size() ? " (" + std::to_string(of.size()) + ")" : "";
            table.add(cellsOf(j == 0 ? domains[i].name + more : "", of[j], shared));
        }
    }
    std::string text = cut(run.head.value(bxTable::cpu), screen.columns) + "\n";
    text += cut(std::to_string(functions) + " functions in " + std::to_string(domains.size()) + " domains, " +
                    std::to_string(run.rows.size()) + " rows",
                screen.columns) +
            "\n";
    for (const Cell& line : bad)
        text.append(screen.styled ? line.look : "")
            .append(cut(line.text, screen.columns))
            .append(screen.styled ? plain : "") += "\n";
    text += table.text(screen);
    const std::string order =
        "Worst-placed first: failed, then by clocks per unit at the worst row, which is shown";
    text += cut(hidden > 0 ? std::to_string(hidden) + " more functions are on the page. " + order : order,
                screen.columns) +
            "\n";
    return text;
}
