// Builds of a history: directories of tables, tables, or results of pairs.
#include "history.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>

namespace fs = std::filesystem;

namespace {

bool isPairResult(const fs::path& path) {
    return path.extension() == ".json";
}

/** Texts with numbers in them in the order of the numbers: "build9" before "build10". */
bool isBefore(const std::string& a, const std::string& b) {
    const auto number = [](const std::string& text, std::size_t& at) {
        const std::size_t begin = std::min(text.find_first_not_of('0', at), text.size());
        at = begin;
        while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) != 0)
            ++at;
        return text.substr(begin, at - begin);
    };
    const auto isDigit = [](const std::string& text, std::size_t at) {
        return std::isdigit(static_cast<unsigned char>(text[at])) != 0;
    };
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a, i) && isDigit(b, j)) {
            const std::string mine = number(a, i);
            const std::string other = number(b, j);
            if (mine != other)
                return mine.size() != other.size() ? mine.size() < other.size() : mine < other;
        } else if (a[i] != b[j]) {
            return a[i] < b[j];
        } else {
            ++i;
            ++j;
        }
    }
    return a.size() - i != b.size() - j ? a.size() - i < b.size() - j : a < b;
}

/** The entries of a directory that may be builds, in order; the directory itself where it holds the tables.
 */
std::vector<fs::path> buildsIn(const fs::path& directory) {
    std::vector<fs::path> entries;
    for (const auto& entry : fs::directory_iterator(directory)) {
        const fs::path& path = entry.path();
        const std::string name = path.filename().string();
        const bool beside = std::any_of(besideTables.begin(), besideTables.end(),
                                        [&](const char* suffix) { return name.ends_with(suffix); });
        if (entry.is_directory() || isPairResult(path) || (path.extension() == ".csv" && !beside))
            entries.push_back(path);
    }
    std::sort(entries.begin(), entries.end(), [](const fs::path& a, const fs::path& b) {
        return isBefore(a.filename().string(), b.filename().string());
    });
    return entries;
}

std::string parametersOf(const ResultRow& row, const ParameterNames& names) {
    const auto named = names.find(row.function);
    std::string text;
    for (std::size_t i = 0; i < row.parameters.size(); ++i) {
        if (row.parameters[i].empty())
            continue;
        if (!text.empty())
            text += " ";
        if (named != names.end() && i < named->second.size() && !named->second[i].empty())
            text.append(named->second[i]).append("=");
        text += row.parameters[i];
    }
    if (const std::string mode = row.cacheMode(); !mode.empty())
        text += (text.empty() ? "" : " ") + mode;
    return text;
}

HistoryBuild readTables(const fs::path& path, bool allowPartial, ParameterNames& names) {
    Collection tables = collectTables({path}, allowPartial);
    // The first names stay: builds that name a parameter otherwise go on in its series.
    names.merge(tables.names);
    HistoryBuild build;
    const fs::path given = path.has_filename() ? path : path.parent_path();
    build.label = (fs::is_directory(given) ? given.filename() : given.stem()).string();
    for (const TableRun& run : tables.runs) {
        std::map<std::string, int> seen; // rows of one run that read the same are told apart by their order
        for (const ResultRow& row : run.rows) {
            if (!row.clocks || *row.clocks <= 0)
                continue;
            std::string parameters = parametersOf(row, names);
            if (const int before = seen[row.function + "\n" + parameters]++; before > 0)
                parameters += " #" + std::to_string(before + 1);
            if (row.accuracy() || row.unknown() || row.shared())
                ++build.doubtful;
            else
                build.figures.push_back({row.function, parameters, std::log(*row.clocks)});
        }
    }
    return build;
}

/** Goes on from the figures of the last build, where it has the row, by the ratios of a pair. */
HistoryBuild readPair(const fs::path& path, const HistoryBuild& last) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw TableError(path.string() + ": cannot be opened");
    HistoryBuild build;
    build.label = path.stem().string();
    std::map<std::pair<std::string, std::string>, double> before;
    for (const HistoryFigure& figure : last.figures)
        before[{figure.function, figure.parameters}] = figure.logarithm;
    try {
        const Json json = Json::parse(file);
        if (json.value("schema", "") != "benchex-pair-1")
            throw TableError(path.string() + ": no result of benchex-compare --pair --json");
        build.wrong = json.value("wrong", std::size_t{0});
        for (const Json& row : json.at("rows")) {
            const std::string function = row.at("function");
            const std::string parameters = row.at("parameters");
            const auto number = [&](const char* name) {
                const auto at = row.find(name);
                return at != row.end() && at->is_number() ? at->get<double>() : 0;
            };
            const double ratio = number("ratio");
            if (ratio <= 0)
                continue;
            // What is not proven would add up to a walk over many builds, and so would the places that two
            // files of the same code happen to have in memory.
            const std::string verdict = row.value("verdict", "");
            const bool differs =
                (verdict == "slower" || verdict == "faster") && !row.value("sameCode", false);
            const auto known = before.find({function, parameters});
            const double from = known != before.end() ? known->second : 0;
            before[{function, parameters}] = from + (differs ? std::log(ratio) : 0);
        }
    } catch (const Json::exception& error) {
        throw TableError(path.string() + ": " + error.what());
    }
    for (const auto& [row, logarithm] : before)
        build.figures.push_back({row.first, row.second, logarithm});
    return build;
}

/** What a chain of pairs begins with: the rows of the first pair, all at 1. */
HistoryBuild beginningOf(const HistoryBuild& first) {
    HistoryBuild build{"before " + first.label, first.figures, 0};
    for (HistoryFigure& figure : build.figures)
        figure.logarithm = 0;
    return build;
}

} // namespace

BuildList readBuilds(const std::vector<fs::path>& given, bool allowPartial) {
    std::vector<fs::path> paths = given;
    std::error_code error;
    const bool entries = given.size() == 1 && fs::is_directory(given.front(), error);
    if (entries)
        paths = buildsIn(given.front());
    BuildList list;
    list.pairs = std::any_of(paths.begin(), paths.end(), isPairResult);
    if (list.pairs && !std::all_of(paths.begin(), paths.end(), isPairResult))
        throw TableError("a history is of tables or of results of pairs, not of both");
    ParameterNames names;
    std::string empty;
    for (const fs::path& path : paths) {
        try {
            if (!list.pairs) {
                HistoryBuild build = readTables(path, allowPartial, names);
                if (build.figures.empty()) {
                    empty += (empty.empty() ? "" : ", ") + build.label;
                    continue;
                }
                list.builds.push_back(std::move(build));
                list.last = {path};
                continue;
            }
            const HistoryBuild next =
                readPair(path, list.builds.empty() ? HistoryBuild{} : list.builds.back());
            if (list.builds.empty())
                list.builds.push_back(beginningOf(next));
            list.builds.push_back(next);
            list.last = {path};
        } catch (const TableError& trouble) {
            if (!entries) // what was named is wanted; a night that failed is not
                throw;
            list.notes.push_back(std::string(trouble.what()) + "; left out");
        }
    }
    if (const std::size_t wrong = list.builds.empty() ? 0 : list.builds.back().wrong; wrong > 0)
        list.notes.push_back(list.builds.back().label + ": the outputs of " + std::to_string(wrong) +
                             (wrong == 1 ? " row are wrong" : " rows are wrong"));
    if (!empty.empty())
        list.notes.push_back("left out, being without a figure that kept its accuracy: " + empty);
    if (list.builds.empty())
        throw TableError((given.empty() ? std::string("no directory") : given.front().string()) +
                         ": no build with a figure that kept its accuracy was found");
    return list;
}
