#include "comparison.h"

#include "cells.h"
#include "statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>

namespace {

constexpr double intervalConfidence = 0.90;

/** The part of a CPU line that does not change from run to run: the frequency behind it is measured. */
std::string processorName(const std::string& cpu) {
    const std::size_t cache = std::min(cpu.rfind(", Max cache size"), cpu.size());
    return cache == 0 ? cpu : cpu.substr(0, cpu.rfind(", ", cache - 1));
}

/** What one run has of a row. */
struct Figure {
    double log = 0;
    std::optional<double> missed; /**< accuracy, where the wanted one was missed */
    bool unknown = false; /**< nobody knows how far it is off: others used the core, or too few slices */
    double value = 0;
};

/** The figures of one row on one side. */
struct Figures {
    std::vector<Figure> runs;
    double rounding = 0; /**< the largest share that the table's digits may have dropped */
    std::string unit;
    bool coreClocks = false;

    /** No run of the row knows how far it is off. */
    bool unknown() const {
        return std::all_of(runs.begin(), runs.end(), [](const Figure& run) { return run.unknown; });
    }
};

using Side = std::map<RowKey, Figures>;

/** Counts of the counter and clocks of the core are different units, and differ from moment to moment. */
[[noreturn]] void refuseMixedClocks(const std::string& function) {
    throw TableError(function +
                     ": some figures are in clocks of the core (the precise mode), others in counts of "
                     "the clock counter, which runs at a rate of its own; --time compares "
                     "microseconds instead");
}

Side gather(const std::vector<TableRun>& runs, const ComparisonRules& rules) {
    Side side;
    for (const TableRun& run : runs) {
        std::map<RowKey, int> seen;
        for (const ResultRow& row : run.rows) {
            RowKey key{row.function, row.parameters, row.cacheMode(), 0};
            while (!key.parameters.empty() && key.parameters.back().empty())
                key.parameters.pop_back();
            key.repetition = seen[key]++;
            const auto figure = rules.instructions ? row.instructions()
                                : rules.time       ? row.microseconds
                                                   : row.clocks;
            if (!figure || *figure <= 0)
                continue;
            Figures& figures = side[key];
            const bool coreClocks = rules.inClocks() && row.inCoreClocks();
            if (!figures.runs.empty() && figures.coreClocks != coreClocks)
                refuseMixedClocks(key.function);
            figures.coreClocks = coreClocks;
            figures.runs.push_back(
                {std::log(*figure), row.accuracy(), row.shared() || row.unknown(), *figure});
            figures.rounding =
                std::max(figures.rounding, roundingOf(rules.time ? row.microsecondsText : row.clocksText));
            figures.unit = row.unit;
        }
    }
    return side;
}

/** Leaves out what missed its accuracy where another run of the row reached it. \return how many */
std::size_t leaveOutMissed(Side& side) {
    std::size_t count = 0;
    for (auto& [key, figures] : side) {
        const auto reached = [](const Figure& figure) { return !figure.missed && !figure.unknown; };
        if (std::any_of(figures.runs.begin(), figures.runs.end(), reached))
            count += std::erase_if(figures.runs, std::not_fn(reached));
    }
    return count;
}

Estimate estimate(const Figures& figures, const ComparisonRules& rules) {
    std::vector<double> logs;
    std::transform(figures.runs.begin(), figures.runs.end(), std::back_inserter(logs),
                   [](const Figure& figure) { return figure.log; });
    Estimate result;
    if (logs.size() == 1) {
        // A stated accuracy is the largest deviation seen in a few measurements: taken as two standard
        // errors.
        result = {logs.front(), figures.runs.front().missed.value_or(rules.accuracy) / 2,
                  std::numeric_limits<double>::infinity()};
    } else {
        result = lowerMean(logs);
    }
    // Rounding moves a figure evenly within its half unit; runs that agree round alike, so it does not
    // average out.
    result.error = std::hypot(result.error, figures.rounding / std::sqrt(3.0));
    return result;
}

RowComparison compareRow(const RowKey& key, const Figures& before, const Figures& after,
                         const ComparisonRules& rules) {
    RowComparison row;
    row.key = key;
    row.unit = after.unit;
    const Estimate first = estimate(before, rules);
    const Estimate second = estimate(after, rules);
    const Estimate change = difference(first, second);
    row.before = std::exp(first.location);
    row.after = std::exp(second.location);
    row.runsBefore = before.runs.size();
    row.runsAfter = after.runs.size();
    row.ratio = std::exp(change.location);
    if (before.unknown() || after.unknown()) { // however well its runs agree: they may be disturbed alike
        row.low = 0;
        row.high = std::numeric_limits<double>::infinity();
        return row;
    }
    const double width = halfWidth(change, intervalConfidence);
    row.low = std::exp(change.location - width);
    row.high = std::exp(change.location + width);
    row.p = pValue(change);
    return row;
}

/** Counts are exact: they differ or they do not. */
RowComparison compareCounts(const RowKey& key, const Figures& before, const Figures& after) {
    RowComparison row;
    row.key = key;
    row.unit = after.unit;
    row.before = before.runs.front().value;
    row.after = after.runs.front().value;
    row.runsBefore = before.runs.size();
    row.runsAfter = after.runs.size();
    row.ratio = row.low = row.high = row.after / row.before;
    const auto oneCount = [](const Figures& side) {
        return std::all_of(side.runs.begin(), side.runs.end(),
                           [&](const Figure& run) { return run.value == side.runs.front().value; });
    };
    if (!oneCount(before) || !oneCount(after))
        return row;
    row.p = row.adjusted = row.before == row.after ? 1 : 0;
    row.verdict = row.after > row.before   ? Verdict::slower
                  : row.after < row.before ? Verdict::faster
                                           : Verdict::same;
    return row;
}

Verdict judge(const RowComparison& row, const ComparisonRules& rules) {
    const double limit = 1 + rules.threshold;
    if (row.adjusted <= rules.alpha && row.ratio > limit)
        return Verdict::slower;
    if (row.adjusted <= rules.alpha && row.ratio < 1 / limit)
        return Verdict::faster;
    return row.low >= 1 / limit && row.high <= limit ? Verdict::same : Verdict::cannotTell;
}

void judgeAll(std::vector<RowComparison>& rows, const ComparisonRules& rules) {
    std::vector<double> p;
    std::transform(rows.begin(), rows.end(), std::back_inserter(p),
                   [](const RowComparison& row) { return row.p; });
    const auto adjusted = adjustedP(p);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i].adjusted = adjusted[i];
        rows[i].verdict = judge(rows[i], rules);
    }
}

void sortWorstFirst(std::vector<RowComparison>& rows) {
    constexpr std::array order{Verdict::slower, Verdict::cannotTell, Verdict::same, Verdict::faster};
    const auto rank = [&](Verdict verdict) { return std::find(order.begin(), order.end(), verdict); };
    std::stable_sort(rows.begin(), rows.end(), [&](const RowComparison& a, const RowComparison& b) {
        return a.verdict != b.verdict ? rank(a.verdict) < rank(b.verdict) : a.ratio > b.ratio;
    });
}

std::vector<FunctionComparison> byFunction(const std::vector<RowComparison>& rows) {
    std::map<std::string, FunctionComparison> functions;
    std::map<std::string, std::vector<double>> ratios;
    for (const RowComparison& row : rows) {
        FunctionComparison& function = functions[row.key.function];
        function.function = row.key.function;
        ++function.rows;
        function.slower += row.verdict == Verdict::slower ? 1U : 0U;
        function.faster += row.verdict == Verdict::faster ? 1U : 0U;
        ratios[row.key.function].push_back(row.ratio);
    }
    std::vector<FunctionComparison> sorted;
    for (auto& [name, function] : functions) {
        function.ratio = geometricMean(ratios[name]);
        sorted.push_back(function);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.ratio > b.ratio; });
    return sorted;
}

/** Differences of the machines that make figures hard to compare. */
std::vector<std::string> machineNotes(const std::vector<TableRun>& before,
                                      const std::vector<TableRun>& after) {
    const auto values = [](const std::vector<TableRun>& runs, const std::string& label) {
        std::set<std::string> found;
        for (const TableRun& run : runs) {
            const std::string value = run.head.value(label);
            found.insert(label == bxTable::cpu ? processorName(value) : value);
        }
        return found;
    };
    std::vector<std::string> notes;
    for (const char* label : {bxTable::cpu, bxTable::computer}) {
        if (values(before, label) != values(after, label)) {
            notes.push_back(std::string("the sides differ in ") + label +
                            "; their figures may not be comparable");
        }
    }
    return notes;
}

} // namespace

const char* verdictName(Verdict verdict) {
    constexpr std::array names{"slower", "faster", "same", "cannot tell"};
    return names[static_cast<std::size_t>(verdict)];
}

std::string describeParameters(const RowKey& key, const ParameterNames& names) {
    const auto known = names.find(key.function);
    std::string text;
    const auto add = [&](const std::string& word) { text += (text.empty() ? "" : " ") + word; };
    for (std::size_t i = 0; i < key.parameters.size(); ++i) {
        const bool named = known != names.end() && i < known->second.size() && !known->second[i].empty();
        if (!key.parameters[i].empty())
            add(named ? known->second[i] + "=" + key.parameters[i] : key.parameters[i]);
    }
    if (!key.cacheMode.empty())
        add(key.cacheMode);
    if (key.repetition > 0)
        add(std::string("#").append(std::to_string(key.repetition + 1)));
    return text;
}

std::size_t Comparison::count(Verdict verdict) const {
    return static_cast<std::size_t>(std::count_if(
        rows.begin(), rows.end(), [&](const RowComparison& row) { return row.verdict == verdict; }));
}

Comparison compareRuns(const std::vector<TableRun>& before, const std::vector<TableRun>& after,
                       const ComparisonRules& rules) {
    Comparison result;
    Side left = gather(before, rules);
    Side right = gather(after, rules);
    const std::size_t leftOut = rules.instructions ? 0 : leaveOutMissed(left) + leaveOutMissed(right);
    for (const auto& [key, figures] : left) {
        const auto other = right.find(key);
        if (other == right.end()) {
            result.onlyBefore.push_back(key);
        } else if (other->second.unit != figures.unit) {
            throw TableError(key.function + ": measured per \"" + figures.unit + "\" on one side, per \"" +
                             other->second.unit + "\" on the other");
        } else if (other->second.coreClocks != figures.coreClocks) {
            refuseMixedClocks(key.function);
        } else {
            result.rows.push_back(rules.instructions ? compareCounts(key, figures, other->second)
                                                     : compareRow(key, figures, other->second, rules));
        }
    }
    for (const auto& [key, figures] : right)
        if (!left.contains(key))
            result.onlyAfter.push_back(key);
    if (!rules.instructions)
        judgeAll(result.rows, rules);
    sortWorstFirst(result.rows);
    result.functions = byFunction(result.rows);
    std::vector<double> ratios;
    std::transform(result.rows.begin(), result.rows.end(), std::back_inserter(ratios),
                   [](const RowComparison& row) { return row.ratio; });
    result.ratio = geometricMean(ratios);
    if (rules.instructions)
        return result;
    result.notes = machineNotes(before, after);
    if (leftOut > 0) {
        result.notes.push_back(std::to_string(leftOut) +
                               " figures that missed their accuracy are left out: other runs reached it");
    }
    if (std::any_of(result.rows.begin(), result.rows.end(),
                    [](const RowComparison& row) { return row.runsBefore < 2 || row.runsAfter < 2; })) {
        result.notes.push_back(
            "rows with one run on a side: how much they differ from run to run is not known, and the chance "
            "of a false alarm is not held; only repeated runs tell");
    }
    return result;
}
