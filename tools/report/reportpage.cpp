#include "reportpage.h"

#include "reportjson.h"
#include "templates.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

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
    return fill(pageHtml, {{"title", escaped(title)},
                           {"style", std::string(pageCss)},
                           {"notices", notices(data, library)},
                           {"version", BENCHEX_VERSION},
                           {"data", reportJson(data)},
                           {"chart library", scriptText(library.script.value_or(""))},
                           {"script", std::string(pageJs)}});
}
