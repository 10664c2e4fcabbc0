/** \file
 * What a report shows, put together from runs: functions with their rows, outcomes and the axis of their
 * chart.
 */
#ifndef REPORTDATA_H
#define REPORTDATA_H

#include "json.h"
#include "resulttable.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/** How well a test or a row went. */
enum class Grade { good, warned, failed };

/** The grade of a result name: "...FAIL" failed, "OK" good, everything else ("...WRN", "WARNING",
 * "UNDEFINED") warned. */
Grade gradeOf(std::string_view result);

/** A row with the run that it is from. */
struct RowRef {
    std::size_t run = 0;
    const ResultRow* row = nullptr;
};

/** The horizontal axis of a function's chart. */
struct ChartAxis {
    std::size_t parameter = 0; /**< parameter column that grows along it */
    bool numeric = false;      /**< else its cells are names, in order of appearance */
    bool logarithmic = false;  /**< sizes that multiply rather than add up */
    /** Its values are amounts with others between them, three of a size or four of another: a line may join
     * them. */
    bool quantity = false;
};

/** A tested function over all runs. */
struct FunctionView {
    std::string name;
    std::string domain;
    bool hot = false;
    std::vector<std::string> parameterNames; /**< "P1" where none is given; as many as the function has */
    std::vector<RowRef> rows;
    std::optional<ChartAxis> axis;  /**< nothing where no parameter varies */
    std::vector<std::size_t> lines; /**< parameters that tell the chart's lines apart */
};

/** All that a report is made of. */
struct ReportData {
    const Collection* tables = nullptr;
    std::vector<FunctionView> functions; /**< hot ones first, else in the order of the tables */
    bool hasInterest = false;            /**< some run marked its hot functions */
    Json sections = Json::object();      /**< further parts of the page by name */
};

/** The name of a parameter column, counted from 0, where no other is known: "P1". */
std::string neutralName(std::size_t parameter);

/**
 * The domain that a function's name tells: its last word of capitals and digits ("AAC" of
 * "zorsDecodeTNS_AAC"), else the capitals that begin its name behind the prefix ("MDCT" of "zorsMDCTFwd"),
 * else "general".
 */
std::string domainOf(std::string_view name);

ReportData makeReport(const Collection& tables);

/**
 * The parameters that tell the rows of one function apart, without those that follow from the others (a
 * block's length from its order): the most that span a full grid of combinations, else as few as do, the
 * first ones kept.
 */
std::vector<std::size_t> independentParameters(const std::vector<RowRef>& rows, std::size_t parameters);

/**
 * The axis for some rows of one function: of the parameters given, one that is named as a size, else the
 * numeric one with the most values, else the first. The axis is logarithmic where all values are positive,
 * the largest is at least eight times the smallest, and half of the steps or more multiply by 1.5 or more.
 */
std::optional<ChartAxis> chooseAxis(const std::vector<RowRef>& rows, const std::vector<std::string>& names,
                                    const std::vector<std::size_t>& parameters);

/** The result of a function's test in a run, empty without a summary. */
std::string testResult(const TableRun& run, const std::string& function);

/** The result of a row: missed accuracy, or what its test ended with; empty where nothing is known. */
std::string rowResult(const TableRun& run, const ResultRow& row);

/** Clocks of a call below which a plain loop's figure holds too much of counter and loop to be believed. */
inline constexpr double fewClocks = 300;

/**
 * Whether a row is of a call of fewer than `fewClocks`, measured by a loop between two reads of the counter
 * (Auto and its kin), not by differences. Clocks of a call follow from the row's time and the frequency in
 * the run's head.
 */
bool isShortCall(const TableRun& run, const ResultRow& row);

#endif
