#include "reportpage.h"

#include "cells.h"
#include "reportjson.h"
#include "templates.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <sstream>

namespace {

/** Where Debian's libjs-chart.js and node-chart.js put the library, and where the npm package has it. */
constexpr std::array libraryPlaces{
    "/usr/share/javascript/chart.js/chart.min.js",
    "/usr/share/javascript/chart.js/chart.umd.js",
    "/usr/share/nodejs/chart.js/dist/chart.min.js",
    "/usr/share/nodejs/chart.js/dist/chart.umd.js",
};

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

/** A function's anchor: its name is an identifier, but a table can hold any text. */
std::string anchor(const std::string& function) {
    std::string result = "fn-";
    for (const char c : function) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) || c == '_' || c == '.')
            result += c;
        else
            result.append("-").append(std::to_string(int{byte})).append("-");
    }
    return result;
}

const char* gradeClass(Grade grade) {
    constexpr std::array names{"", "warned", "failed"};
    return names[static_cast<std::size_t>(grade)];
}

std::string badge(std::string_view text, std::string_view kind) {
    return " <span class=\"badge " + std::string(kind) + "\">" + escaped(text) + "</span>";
}

void definition(std::ostream& out, std::string_view label, std::string_view text) {
    out << "<dt>" << escaped(label) << "</dt><dd>" << escaped(text) << "</dd>\n";
}

std::string countsLine(const TableRun& run) {
    std::string line;
    for (const auto& [label, count] : run.counts) {
        const bool zero = count == "0" && label != "Number of tests";
        if (!zero)
            line += (line.empty() ? "" : ", ") + label + " " + count;
    }
    return line;
}

std::string runCards(const std::vector<TableRun>& runs) {
    std::ostringstream out;
    out << "<div class=\"cards\">\n";
    for (const TableRun& run : runs) {
        out << "<div class=\"card\"><h2>" << escaped(run.label) << "</h2>\n<dl>\n";
        for (const auto& [label, text] : run.head.labels)
            definition(out, label, text);
        definition(out, "Table", run.file.string() + ", " + std::to_string(run.rows.size()) + " rows");
        definition(out, "Results",
                   run.hasSummary ? countsLine(run) : "no summary table (-u) beside the table");
        if (run.incomplete)
            definition(out, "Incomplete", "the table or its summary breaks off within a line");
        out << "</dl></div>\n";
    }
    out << "</div>\n";
    return out.str();
}

std::string notices(const ReportData& data, const ChartLibrary& library) {
    std::string out;
    const auto add = [&](const std::string& text) {
        out += "<p class=\"notice\">" + escaped(text) + "</p>\n";
    };
    if (!library.script)
        add("No charts: " + library.missing);
    for (const std::string& note : data.tables->notes)
        add(note);
    return out;
}

/** The tests that did not end well. A failed one has no row that could be marked. */
std::string problems(const ReportData& data) {
    std::ostringstream rows;
    std::set<std::string> charted;
    for (const FunctionView& function : data.functions)
        charted.insert(function.name);
    for (const TableRun& run : data.tables->runs) {
        for (const TestOutcome& test : run.tests) {
            const Grade grade = gradeOf(test.result);
            if (grade == Grade::good)
                continue;
            const std::string name = escaped(test.function);
            rows << "<tr class=\"" << gradeClass(grade) << "\"><td>";
            if (charted.contains(test.function))
                rows << "<a href=\"#" << anchor(test.function) << "\">" << name << "</a>";
            else
                rows << name;
            rows << "</td><td class=\"result\">" << escaped(test.result) << "</td><td>" << escaped(test.test)
                 << "</td><td>" << escaped(test.source) << "</td><td>" << escaped(run.label)
                 << "</td></tr>\n";
        }
    }
    if (rows.str().empty())
        return {};
    return "<section id=\"problems\" aria-label=\"Failed and warned tests\"><h2>Failed and warned "
           "tests</h2>\n"
           "<div "
           "class=\"scroll\"><table><thead><tr><th>Function</th><th>Result</th><th>Test</th><th>Source</th>"
           "<th>Run</th></tr></thead><tbody>\n" +
           rows.str() + "</tbody></table></div></section>\n";
}

/** Rows that one chart cannot set against anything are told as figures. */
bool hasChart(const FunctionView& function) {
    const auto measured = std::count_if(function.rows.begin(), function.rows.end(),
                                        [](const RowRef& ref) { return ref.row->clocks.has_value(); });
    return measured > 1;
}

std::string functionArticles(const ReportData& data, bool charts) {
    std::ostringstream out;
    for (const FunctionView& function : data.functions) {
        const std::string id = anchor(function.name);
        out << "<article id=\"" << id << "\" data-function=\"" << escaped(function.name)
            << "\"><h3><a href=\"#" << id << "\">" << escaped(function.name) << "</a>"
            << (function.hot ? badge("Hot", "hot") : "");
        std::set<std::string> told;
        for (const TableRun& run : data.tables->runs) {
            const std::string result = testResult(run, function.name);
            if (!result.empty() && gradeOf(result) != Grade::good && told.insert(result).second)
                out << badge(result, gradeClass(gradeOf(result)));
        }
        out << "</h3>\n";
        if (hasChart(function)) {
            if (charts) {
                out << "<div class=\"plot\"><canvas role=\"img\" aria-label=\"Clocks of "
                    << escaped(function.name) << "\"></canvas></div><div class=\"legend\"></div>\n";
            }
        } else {
            const ResultRow& row = *function.rows.front().row;
            out << "<p class=\"figure\">" << (row.clocks ? escaped(row.clocksText) : "no figure")
                << " <small>clocks per " << escaped(row.unit.empty() ? "call" : row.unit) << "</small></p>\n";
        }
        out << "</article>\n";
    }
    return out.str();
}

/** A column of the table of all rows: its title, and the cell of a row as HTML. */
struct PageColumn {
    std::string title;
    bool number;
    std::function<std::string(const FunctionView&, const RowRef&)> cell;
};

std::string tableCell(const std::string& content, bool number) {
    return (number ? "<td class=\"number\">" : "<td>") + content + "</td>";
}

/** A parameter with its name, sorted by its value alone. */
std::string parameterCell(const FunctionView& function, const RowRef& ref, std::size_t i) {
    if (i >= function.parameterNames.size() || i >= ref.row->parameters.size())
        return "<td></td>";
    const std::string value = escaped(ref.row->parameters[i]);
    const std::string& name = function.parameterNames[i];
    const bool named = name != neutralName(i);
    const bool number = toNumber(ref.row->parameters[i]).has_value();
    return std::string(number ? "<td class=\"number\"" : "<td") + " data-value=\"" + value + "\">" +
           (named && !value.empty() ? "<small>" + escaped(name) + "</small>" : "") + value + "</td>";
}

std::string numberCell(const std::optional<double>& number, const std::string& text) {
    return number ? "<td class=\"number\" data-value=\"" + text + "\">" + text + "</td>" : "<td></td>";
}

std::string asText(const std::optional<double>& number) {
    std::ostringstream text;
    text << number.value_or(0);
    return text.str();
}

std::vector<PageColumn> pageColumns(const ReportData& data) {
    const auto text = [](std::string title, auto get) {
        return PageColumn{std::move(title), false, [get](const FunctionView&, const RowRef& ref) {
                              return tableCell(escaped(get(ref)), false);
                          }};
    };
    const std::vector<TableRun>& runs = data.tables->runs;
    std::size_t parameters = 0;
    for (const FunctionView& function : data.functions)
        parameters = std::max(parameters, function.parameterNames.size());
    std::vector<PageColumn> columns;
    columns.push_back({"Function", false, [](const FunctionView& function, const RowRef&) {
                           return "<td><a href=\"#" + anchor(function.name) + "\">" + escaped(function.name) +
                                  "</a></td>";
                       }});
    if (runs.size() > 1)
        columns.push_back(text("Run", [&runs](const RowRef& ref) { return runs[ref.run].label; }));
    for (std::size_t i = 0; i < parameters; ++i) {
        columns.push_back({neutralName(i), true, [i](const FunctionView& function, const RowRef& ref) {
                               return parameterCell(function, ref, i);
                           }});
    }
    columns.push_back({bxTable::clocks, true, [](const FunctionView&, const RowRef& ref) {
                           return numberCell(ref.row->clocks, ref.row->clocksText);
                       }});
    columns.push_back(text(bxTable::unit, [](const RowRef& ref) { return ref.row->unit; }));
    columns.push_back({bxTable::microseconds, true, [](const FunctionView&, const RowRef& ref) {
                           return numberCell(ref.row->microseconds, ref.row->microsecondsText);
                       }});
    columns.push_back({bxTable::mflops, true, [](const FunctionView&, const RowRef& ref) {
                           return numberCell(ref.row->mflops, asText(ref.row->mflops));
                       }});
    columns.push_back({"Result", false, [&runs](const FunctionView&, const RowRef& ref) {
                           return "<td class=\"result\">" + escaped(rowResult(runs[ref.run], *ref.row)) +
                                  "</td>";
                       }});
    columns.push_back({bxTable::comment, false, [](const FunctionView&, const RowRef& ref) {
                           return "<td class=\"comment\">" + escaped(ref.row->comment) + "</td>";
                       }});
    if (data.hasInterest)
        columns.push_back(
            text(bxTable::interest, [](const RowRef& ref) { return ref.row->hot ? "Hot" : ""; }));
    return columns;
}

std::string tableTitles(const std::vector<PageColumn>& columns) {
    std::string out;
    for (const PageColumn& column : columns) {
        out += std::string(column.number ? "<th class=\"number\">" : "<th>") + "<button type=\"button\">" +
               escaped(column.title) + "</button></th>";
    }
    return out;
}

std::string tableRows(const ReportData& data, const std::vector<PageColumn>& columns) {
    std::string out;
    for (const FunctionView& function : data.functions) {
        for (const RowRef& ref : function.rows) {
            const std::string result = rowResult(data.tables->runs[ref.run], *ref.row);
            const Grade grade = result.empty() ? Grade::good : gradeOf(result);
            out += std::string("<tr class=\"") + gradeClass(grade) + "\" data-hot=\"" +
                   (function.hot ? "1" : "0") + "\" data-function=\"" + escaped(function.name) + "\">";
            for (const PageColumn& column : columns)
                out += column.cell(function, ref);
            out += "</tr>\n";
        }
    }
    return out;
}

/** A script that cannot end the element that it stands in. */
std::string scriptText(std::string text) {
    for (std::size_t at = text.find("</"); at != std::string::npos; at = text.find("</", at + 3))
        text.replace(at, 2, "<\\/");
    return text;
}

using Contents = std::vector<std::pair<std::string_view, std::string>>;

/** The template with each "{{name}}" replaced; what is filled in is not looked at again. */
std::string fill(std::string_view form, const Contents& contents) {
    std::string page;
    for (std::size_t open = form.find("{{"); open != std::string_view::npos; open = form.find("{{")) {
        const std::size_t close = form.find("}}", open);
        const std::string_view name = form.substr(open + 2, close - open - 2);
        page += form.substr(0, open);
        page += std::find_if(contents.begin(), contents.end(), [&](const auto& c) {
                    return c.first == name;
                })->second;
        form.remove_prefix(close + 2);
    }
    return page.append(form);
}

} // namespace

ChartLibrary findChartLibrary(const std::filesystem::path& path) {
    std::vector<std::filesystem::path> places(libraryPlaces.begin(), libraryPlaces.end());
    if (!path.empty())
        places = {path};
    for (const auto& place : places) {
        std::ifstream input(place, std::ios::binary);
        std::string script{std::istreambuf_iterator<char>(input), {}};
        if (!script.empty())
            return {std::move(script), {}};
    }
    return {std::nullopt,
            "the chart library was not found when the page was written (" +
                (path.empty() ? std::string("Debian's package libjs-chart.js has it") : path.string()) + ")"};
}

std::string reportPage(const ReportData& data, const std::string& title, const ChartLibrary& library) {
    const auto columns = pageColumns(data);
    return fill(pageHtml,
                {{"title", escaped(title)},
                 {"style", std::string(pageCss)},
                 {"runs", runCards(data.tables->runs)},
                 {"notices", notices(data, library)},
                 {"problems", problems(data)},
                 {"hot option", data.hasInterest ? "<option value=\"hot\">hot functions</option>\n" : ""},
                 {"functions", functionArticles(data, library.script.has_value())},
                 {"titles", tableTitles(columns)},
                 {"rows", tableRows(data, columns)},
                 {"version", BENCHEX_VERSION},
                 {"data", reportJson(data)},
                 {"chart library", scriptText(library.script.value_or(""))},
                 {"script", std::string(pageJs)}});
}
