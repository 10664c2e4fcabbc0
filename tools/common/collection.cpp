// Tables gathered from files and directories, each with the tables that stand beside it.
#include "resulttable.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

namespace fs = std::filesystem;

namespace {

bool isBesideTable(const fs::path& path) {
    const std::string name = path.filename().string();
    return std::any_of(besideTables.begin(), besideTables.end(),
                       [&](const char* suffix) { return name.ends_with(suffix); });
}

std::vector<fs::path> tablesOf(const fs::path& path) {
    std::error_code error;
    if (!fs::is_directory(path, error))
        return {path};
    std::vector<fs::path> found;
    for (const auto& entry : fs::recursive_directory_iterator(path))
        if (entry.is_regular_file() && entry.path().extension() == ".csv" && !isBesideTable(entry.path()))
            found.push_back(entry.path());
    if (found.empty())
        throw TableError(path.string() + ": no table (*.csv) in this directory");
    std::sort(found.begin(), found.end());
    return found;
}

TableFile readFile(const fs::path& path, bool allowPartial) {
    std::ifstream input(path, std::ios::binary);
    if (!input)
        throw TableError(path.string() + ": cannot be opened");
    return readTable(input, path, allowPartial);
}

/** Gives each run the outcomes of the summary that the same process wrote: both heads then say the same. */
void joinSummaries(std::vector<TableRun>& runs, const std::vector<TableRun>& summaries) {
    for (const TableRun& summary : summaries) {
        const auto run = std::find_if(runs.begin(), runs.end(), [&](const TableRun& candidate) {
            return !candidate.hasSummary && candidate.head.labels == summary.head.labels;
        });
        if (run != runs.end()) {
            run->hasSummary = true;
            run->tests = summary.tests;
            run->counts = summary.counts;
            run->incomplete |= summary.incomplete;
        }
    }
}

void append(std::vector<std::string>& to, std::vector<std::string>&& from) {
    std::move(from.begin(), from.end(), std::back_inserter(to));
}

/** The shortest ends of the paths that tell all files apart: titles alone, or with their directories. */
std::vector<std::string> distinctNames(const std::vector<fs::path>& files) {
    const std::set<fs::path> different(files.begin(), files.end());
    for (int directories = 0; directories < 8; ++directories) {
        std::map<fs::path, std::string> names;
        std::set<std::string> used;
        for (const fs::path& file : different) {
            std::string name = file.stem().string();
            fs::path parent = file.parent_path();
            for (int i = 0; i < directories && parent.has_filename(); ++i, parent = parent.parent_path())
                name = parent.filename().string() + "/" + name;
            used.insert(name);
            names[file] = name;
        }
        if (used.size() == different.size()) {
            std::vector<std::string> result;
            std::transform(files.begin(), files.end(), std::back_inserter(result),
                           [&](const fs::path& file) { return names[file]; });
            return result;
        }
    }
    std::vector<std::string> whole;
    std::transform(files.begin(), files.end(), std::back_inserter(whole),
                   [](const fs::path& f) { return f.string(); });
    return whole;
}

/** Labels by file, with a number where one file holds several runs. */
void labelRuns(std::vector<TableRun>& runs) {
    std::vector<fs::path> files;
    std::transform(runs.begin(), runs.end(), std::back_inserter(files),
                   [](const TableRun& run) { return run.file; });
    const auto names = distinctNames(files);
    std::map<std::string, int> uses;
    for (const std::string& name : names)
        ++uses[name];
    std::map<std::string, int> number;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        runs[i].label = names[i];
        if (uses[names[i]] > 1)
            runs[i].label += " #" + std::to_string(++number[names[i]]);
    }
}

} // namespace

fs::path besideTable(const fs::path& table, std::string_view suffix) {
    fs::path path = table;
    return path.replace_filename(table.stem().string() + std::string(suffix));
}

Collection collectTables(const std::vector<fs::path>& paths, bool allowPartial) {
    Collection all;
    for (const fs::path& path : paths) {
        for (const fs::path& table : tablesOf(path)) {
            TableFile file = readFile(table, allowPartial);
            std::error_code error;
            if (const fs::path names = besideTable(table, bxTable::nameFile); fs::exists(names, error)) {
                TableFile besides = readFile(names, allowPartial);
                all.names.merge(besides.names);
                append(all.notes, std::move(besides.notes));
            }
            if (const fs::path summary = besideTable(table, bxTable::summaryFile);
                fs::exists(summary, error)) {
                TableFile besides = readFile(summary, allowPartial);
                append(all.notes, std::move(besides.notes));
                std::move(besides.summaries.begin(), besides.summaries.end(),
                          std::back_inserter(file.summaries));
            }
            joinSummaries(file.runs, file.summaries);
            all.names.merge(file.names);
            append(all.notes, std::move(file.notes));
            std::move(file.runs.begin(), file.runs.end(), std::back_inserter(all.runs));
        }
    }
    labelRuns(all.runs);
    return all;
}
