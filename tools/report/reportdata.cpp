#include "reportdata.h"

#include "cells.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>

namespace {

/** Whether a parameter's name says that it is a size. */
bool namesSize(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    constexpr std::array<std::string_view, 6> words{"len", "size", "count", "num", "range", "divisor"};
    return name == "n" || std::any_of(words.begin(), words.end(), [&](std::string_view word) {
               return name.starts_with(word) || name.ends_with(word);
           });
}

std::string cellOf(const ResultRow& row, std::size_t parameter) {
    return parameter < row.parameters.size() ? row.parameters[parameter] : std::string();
}

/** The numbers of a parameter, sorted, each once; nothing when some cell is none. */
std::optional<std::set<double>> numbersOf(const std::vector<RowRef>& rows, std::size_t parameter) {
    std::set<double> values;
    for (const RowRef& ref : rows) {
        const auto value = toNumber(cellOf(*ref.row, parameter));
        if (!value)
            return std::nullopt;
        values.insert(*value);
    }
    return values;
}

bool growsByFactors(const std::set<double>& values) {
    if (values.size() < 3 || *values.begin() <= 0 || *values.rbegin() < 8 * *values.begin())
        return false;
    std::size_t large = 0;
    for (auto at = values.begin(), next = std::next(at); next != values.end(); ++at, ++next)
        large += *next >= 1.5 * *at ? 1U : 0U;
    return 2 * large >= values.size() - 1;
}

/** Few numbers, numbers below 0 and numbers in a row, one by one, are codes more often than amounts. */
bool lookLikeAmounts(const std::set<double>& values) {
    return (values.size() > 3 || growsByFactors(values)) && *values.begin() >= 0 &&
           *values.rbegin() - *values.begin() != static_cast<double>(values.size() - 1);
}

/** The number of different combinations of some parameters. */
std::size_t combinations(const std::vector<RowRef>& rows, const std::vector<std::size_t>& parameters) {
    std::set<std::vector<std::string>> seen;
    for (const RowRef& ref : rows) {
        std::vector<std::string> cells;
        for (const std::size_t i : parameters)
            cells.push_back(cellOf(*ref.row, i));
        seen.insert(std::move(cells));
    }
    return seen.size();
}

/** The parameters of a set given by its bits. */
std::vector<std::size_t> chosen(const std::vector<std::size_t>& parameters, std::size_t bits) {
    std::vector<std::size_t> subset;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        if ((bits >> i & 1U) != 0)
            subset.push_back(parameters[i]);
    return subset;
}

/** Whether the rows hold each combination of the parameters' values, `count` in all. */
bool spansGrid(const std::vector<RowRef>& rows, const std::vector<std::size_t>& parameters,
               std::size_t count) {
    std::size_t product = 1;
    for (const std::size_t i : parameters) {
        product *= combinations(rows, {i});
        if (product > count)
            return false;
    }
    return product == count && combinations(rows, parameters) == count;
}

/** Names for the parameters that the function has, as many columns as any row fills. */
std::vector<std::string> namesFor(const FunctionView& function, const ParameterNames& known) {
    std::size_t used = 0;
    for (const RowRef& ref : function.rows)
        for (std::size_t i = 0; i < ref.row->parameters.size(); ++i)
            used = ref.row->parameters[i].empty() ? used : std::max(used, i + 1);
    const auto given = known.find(function.name);
    std::vector<std::string> names;
    std::set<std::string> taken;
    for (std::size_t i = 0; i < used; ++i) {
        const std::string neutral = neutralName(i);
        const bool named = given != known.end() && i < given->second.size() && !given->second[i].empty();
        const std::string name = named ? given->second[i] : neutral;
        names.push_back(taken.insert(name).second ? name : neutral);
    }
    return names;
}

} // namespace

std::string neutralName(std::size_t parameter) {
    return std::string("P").append(std::to_string(parameter + 1));
}

Grade gradeOf(std::string_view result) {
    if (result.ends_with("FAIL"))
        return Grade::failed;
    return result == "OK" ? Grade::good : Grade::warned;
}

std::vector<std::size_t> independentParameters(const std::vector<RowRef>& rows, std::size_t parameters) {
    std::vector<std::size_t> varying;
    for (std::size_t i = 0; i < parameters; ++i)
        if (combinations(rows, {i}) > 1)
            varying.push_back(i);
    const std::size_t count = combinations(rows, varying);
    std::vector<std::size_t> best;
    // Tables have eight parameter columns; with many more the sets of them are too many to try.
    const std::size_t sets = varying.size() <= 12 ? std::size_t{1} << varying.size() : 0;
    for (std::size_t bits = 1; bits < sets; ++bits) {
        const auto subset = chosen(varying, bits);
        if (subset.size() > best.size() && spansGrid(rows, subset, count))
            best = subset;
    }
    if (!best.empty())
        return best;
    for (std::size_t i = varying.size(); i-- > 0;) {
        auto rest = varying;
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
        if (!rest.empty() && combinations(rows, rest) == count)
            varying = std::move(rest);
    }
    return varying;
}

std::optional<ChartAxis> chooseAxis(const std::vector<RowRef>& rows, const std::vector<std::string>& names,
                                    const std::vector<std::size_t>& parameters) {
    std::optional<ChartAxis> best;
    std::size_t bestValue = 0;
    for (const std::size_t i : parameters) {
        const auto numbers = numbersOf(rows, i);
        // Sizes come before other numbers, numbers before names; the number of values decides among numbers.
        const std::size_t value =
            numbers ? (namesSize(names[i]) ? 2'000'000 : 1'000'000) + numbers->size() : 1;
        if (value > bestValue) {
            bestValue = value;
            const bool quantity =
                numbers && (namesSize(names[i]) ? numbers->size() > 2 : lookLikeAmounts(*numbers));
            best = ChartAxis{i, numbers.has_value(), numbers && growsByFactors(*numbers), quantity};
        }
    }
    return best;
}

std::string domainOf(std::string_view name) {
    const auto capital = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); };
    std::string_view rest = name;
    for (std::size_t at = rest.rfind('_'); at != std::string_view::npos; at = rest.rfind('_')) {
        const std::string_view word = rest.substr(at + 1);
        if (word.size() > 1 && std::all_of(word.begin(), word.end(), capital))
            return std::string(word);
        rest = rest.substr(0, at);
    }
    const auto first = std::find_if(rest.begin(), rest.end(), capital);
    auto last = std::find_if_not(first, rest.end(), capital);
    if (last != rest.end() && last != first)
        --last; // the capital of the next word
    return last - first > 1 ? std::string(first, last) : "general";
}

std::string testResult(const TableRun& run, const std::string& function) {
    const auto test = std::find_if(run.tests.begin(), run.tests.end(),
                                   [&](const TestOutcome& outcome) { return outcome.function == function; });
    return test == run.tests.end() ? std::string() : test->result;
}

std::string rowResult(const TableRun& run, const ResultRow& row) {
    const std::string result = testResult(run, row.function);
    if (row.accuracy() || row.unknown() || row.shared())
        return "ACCURWRN";
    // A test ends with the worst of its rows; a missed accuracy is told on the row that missed it.
    return result == "ACCURWRN" ? "OK" : result;
}

bool isShortCall(const TableRun& run, const ResultRow& row) {
    const bool plain = row.comment.find(bxTable::loops) != std::string::npos &&
                       row.comment.find(bxTable::interval) == std::string::npos;
    if (!plain || !row.clocks)
        return false;
    if (row.unit.empty())
        return *row.clocks < fewClocks;
    const std::string cpu = run.head.value(bxTable::cpu);
    const std::size_t unit = cpu.find(" GHz");
    const std::size_t at = unit == std::string::npos ? 0 : cpu.find_last_not_of("0123456789.", unit - 1) + 1;
    const auto gigahertz = unit == std::string::npos ? std::nullopt : toNumber(cpu.substr(at, unit - at));
    return gigahertz && row.microseconds && *row.microseconds * *gigahertz * 1000 < fewClocks;
}

ReportData makeReport(const Collection& tables) {
    ReportData data;
    data.tables = &tables;
    std::map<std::string, std::size_t> index;
    for (std::size_t run = 0; run < tables.runs.size(); ++run) {
        data.hasInterest |= tables.runs[run].hasInterest;
        for (const ResultRow& row : tables.runs[run].rows) {
            const auto [at, added] = index.try_emplace(row.function, data.functions.size());
            if (added)
                data.functions.emplace_back().name = row.function;
            FunctionView& function = data.functions[at->second];
            function.domain = domainOf(row.name);
            function.hot |= row.hot;
            function.rows.push_back({run, &row});
        }
    }
    for (FunctionView& function : data.functions) {
        function.parameterNames = namesFor(function, tables.names);
        function.lines = independentParameters(function.rows, function.parameterNames.size());
        function.axis = chooseAxis(function.rows, function.parameterNames, function.lines);
        if (function.axis)
            std::erase(function.lines, function.axis->parameter);
    }
    std::stable_partition(data.functions.begin(), data.functions.end(),
                          [](const FunctionView& f) { return f.hot; });
    return data;
}
