/** \file
 * The functions of many builds, in the order of the builds.
 */
#ifndef HISTORY_H
#define HISTORY_H

#include "changepoint.h"
#include "json.h"
#include "resulttable.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/** A figure of one row in one build. */
struct HistoryFigure {
    std::string function;
    std::string parameters; /**< tell the row from the others of its function */
    double logarithm = 0;   /**< of its clocks, or of their ratio to those of the first build */
};

/** A build with the figures of its rows; several of one row count by their median. */
struct HistoryBuild {
    std::string label;
    std::vector<HistoryFigure> figures;
    std::size_t doubtful = 0; /**< figures left out: they missed their accuracy, or the core was shared */
    std::size_t wrong = 0;    /**< rows of a pair whose outputs are wrong */
};

/** A series over the builds: a function, or one of its rows. */
struct Series {
    std::string function;
    std::string parameters; /**< of the row; empty for a function */
    std::size_t rows = 0;
    /** Logarithms relative to the first level; nothing for a build without figures. */
    std::vector<std::optional<double>> values;
    std::vector<Level> levels; /**< `begin` counts builds; the first is 0 high */
};

/** All series over all builds. */
struct History {
    std::vector<std::string> builds;
    std::vector<Series> series;
    std::vector<std::string> notes;
};

/** What becomes a series. */
enum class SeriesOf { functions, rows };

/**
 * The series of some builds with their levels. A function's value in a build is the median, over its rows, of
 * the distance from the row's own median over all builds.
 */
History makeHistory(const std::vector<HistoryBuild>& builds, SeriesOf what, const StepRules& rules = {});

/** Builds that were read. */
struct BuildList {
    std::vector<HistoryBuild> builds;
    std::vector<std::filesystem::path> last; /**< the tables, or the pair's result, of the last build */
    bool pairs = false;                      /**< results of pairs: what changes is proven */
    std::vector<std::string> notes;
};

/**
 * Reads builds in the order given. A path is a table or a directory of tables of one build; or a result of
 * benchex-compare --pair --json, each of which continues where the one before ended (a ratio counts as 1
 * unless its verdict is slower or faster); or one directory alone, whose entries are the builds, sorted by
 * their names as numbers and texts. Entries without a table or with a broken one are noted and left out.
 * \throws TableError no build, tables among results of pairs
 */
BuildList readBuilds(const std::vector<std::filesystem::path>& paths, bool allowPartial);

/** A change from one level to the next. */
struct HistoryStep {
    const Series* series = nullptr;
    std::size_t before = 0; /**< the last build of the old level that has a value */
    std::size_t after = 0;  /**< the first build of the new level */
    double size = 0;        /**< logarithm of the ratio of the levels */
};

/** All steps, the newest first, of one build the largest slowdown first. */
std::vector<HistoryStep> stepsOf(const History& history);

/** The steps as text: size, function, builds before and after. */
std::string historyText(const History& history);

/** The page's section "history". */
Json historyJson(const History& history);

#endif
