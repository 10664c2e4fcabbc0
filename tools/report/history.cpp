#include "history.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <map>
#include <utility>

namespace {

double medianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/** The figures of one row, by build. */
using RowFigures = std::map<std::size_t, std::vector<double>>;

/** Rows of each series in the order of their first appearance. */
class SeriesRows {
  public:
    void add(const HistoryFigure& figure, std::size_t build, SeriesOf what) {
        const std::string& parameters = what == SeriesOf::rows ? figure.parameters : std::string();
        const auto [at, isNew] = m_place.try_emplace({figure.function, parameters}, m_all.size());
        if (isNew)
            m_all.push_back({{figure.function, parameters, 0, {}, {}}, {}});
        m_all[at->second].second[figure.parameters][build].push_back(figure.logarithm);
    }
    std::vector<std::pair<Series, std::map<std::string, RowFigures>>> take() { return std::move(m_all); }

  private:
    std::map<std::pair<std::string, std::string>, std::size_t> m_place;
    std::vector<std::pair<Series, std::map<std::string, RowFigures>>> m_all;
};

/** For each build the median of its rows' distances from what is usual for them. */
std::vector<std::optional<double>> valuesOf(const std::map<std::string, RowFigures>& rows,
                                            std::size_t builds) {
    std::vector<std::vector<double>> distances(builds);
    for (const auto& [name, figures] : rows) {
        std::vector<std::pair<std::size_t, double>> ofBuilds;
        std::vector<double> all;
        for (const auto& [build, several] : figures) {
            ofBuilds.emplace_back(build, medianOf(several));
            all.push_back(ofBuilds.back().second);
        }
        const double usual = medianOf(std::move(all));
        for (const auto& [build, value] : ofBuilds)
            distances[build].push_back(value - usual);
    }
    std::vector<std::optional<double>> values(builds);
    for (std::size_t i = 0; i < builds; ++i)
        if (!distances[i].empty())
            values[i] = medianOf(std::move(distances[i]));
    return values;
}

/** Levels of the values that there are, relative to the first. */
void findLevels(Series& series, const StepRules& rules) {
    std::vector<std::size_t> builds;
    std::vector<double> figures;
    for (std::size_t i = 0; i < series.values.size(); ++i) {
        if (series.values[i]) {
            builds.push_back(i);
            figures.push_back(*series.values[i]);
        }
    }
    series.levels = findLevels(figures, rules);
    const double first = series.levels.front().at;
    for (Level& level : series.levels)
        level = {builds[level.begin], level.at - first};
    for (auto& value : series.values)
        if (value)
            *value -= first;
}

std::string percent(double logarithm) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%+.1f %%", std::expm1(logarithm) * 100);
    return text.data();
}

std::string nameOf(const Series& series) {
    return series.parameters.empty() ? series.function : series.function + "  " + series.parameters;
}

} // namespace

History makeHistory(const std::vector<HistoryBuild>& builds, SeriesOf what, const StepRules& rules) {
    History history;
    SeriesRows rows;
    std::size_t doubtful = 0;
    std::size_t all = 0;
    for (std::size_t i = 0; i < builds.size(); ++i) {
        history.builds.push_back(builds[i].label);
        doubtful += builds[i].doubtful;
        all += builds[i].figures.size() + builds[i].doubtful;
        for (const HistoryFigure& figure : builds[i].figures)
            rows.add(figure, i, what);
    }
    for (auto& [series, figures] : rows.take()) {
        series.rows = figures.size();
        series.values = valuesOf(figures, builds.size());
        findLevels(series, rules);
        history.series.push_back(std::move(series));
    }
    if (doubtful > 0)
        history.notes.push_back(std::to_string(doubtful) + " of " + std::to_string(all) +
                                " figures were left out: they missed their accuracy, or the core was shared");
    if (!rules.proven && builds.size() < 2 * rules.shortest)
        history.notes.push_back(
            std::to_string(builds.size()) + " of the " + std::to_string(2 * rules.shortest) +
            " builds that steps need: each level needs " + std::to_string(rules.shortest));
    return history;
}

std::vector<HistoryStep> stepsOf(const History& history) {
    std::vector<HistoryStep> steps;
    for (const Series& series : history.series) {
        for (std::size_t i = 1; i < series.levels.size(); ++i) {
            const std::size_t after = series.levels[i].begin;
            std::size_t before = after - 1;
            while (!series.values[before])
                --before;
            steps.push_back({&series, before, after, series.levels[i].at - series.levels[i - 1].at});
        }
    }
    std::stable_sort(steps.begin(), steps.end(), [](const HistoryStep& a, const HistoryStep& b) {
        return a.after != b.after ? a.after > b.after : a.size > b.size;
    });
    return steps;
}

std::string historyText(const History& history) {
    std::string text = std::to_string(history.builds.size()) + " build" +
                       (history.builds.size() == 1 ? "" : "s") + ", from " + history.builds.front() + " to " +
                       history.builds.back() + "; " + std::to_string(history.series.size()) + " series\n";
    for (const std::string& note : history.notes)
        text += "Note: " + note + "\n";
    const std::vector<HistoryStep> steps = stepsOf(history);
    if (steps.empty())
        return text + "No steps\n";
    text += "Steps, the newest first; above 0 is slower:\n";
    for (const HistoryStep& step : steps) {
        const std::string size = percent(step.size);
        text += std::string(10 - std::min<std::size_t>(size.size(), 9), ' ') + size + "  " +
                nameOf(*step.series) + "  between " + history.builds[step.before] + " and " +
                history.builds[step.after] + "\n";
    }
    return text;
}

Json historyJson(const History& history) {
    Json json{{"builds", history.builds},
              {"series", Json::array()},
              {"steps", Json::array()},
              {"notes", history.notes}};
    for (const Series& series : history.series) {
        Json object{{"function", series.function}, {"rows", series.rows}};
        if (!series.parameters.empty())
            object["parameters"] = series.parameters;
        for (const auto& value : series.values)
            object["values"].push_back(value ? Json(std::exp(*value)) : Json());
        for (const Level& level : series.levels)
            object["levels"].push_back({{"from", level.begin}, {"ratio", std::exp(level.at)}});
        json["series"].push_back(std::move(object));
    }
    for (const HistoryStep& step : stepsOf(history))
        json["steps"].push_back({{"function", step.series->function},
                                 {"parameters", step.series->parameters},
                                 {"before", history.builds[step.before]},
                                 {"after", history.builds[step.after]},
                                 {"ratio", std::exp(step.size)}});
    return json;
}
