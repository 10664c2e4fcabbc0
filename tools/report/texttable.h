/** \file
 * A report as text for a terminal: what went wrong, and the functions by domain.
 */
#ifndef TEXTTABLE_H
#define TEXTTABLE_H

#include "reportdata.h"
#include "terminal.h"

#include <optional>
#include <string>
#include <vector>

/** A function in the table, shown by its worst-placed row: the one with the most clocks per unit. */
struct PlacedFunction {
    std::string name;
    std::string domain;
    std::string result;          /**< the worst of its test and its rows; empty where nothing is known */
    std::size_t rows = 0;        /**< with a figure */
    std::optional<RowRef> worst; /**< nothing where no row has a figure */
    std::string place;           /**< the worst row's parameters as far as they vary, "Len=16 Window=short" */
    double least = 0;            /**< clocks per unit of its best row */

    double most() const { return worst ? *worst->row->clocks : 0; }
};

/** A domain with its functions, worst-placed first. */
struct PlacedDomain {
    std::string name;
    std::vector<PlacedFunction> functions;
};

/**
 * The functions of a run by domain. Worst-placed first: those that failed, then the others by the clocks per
 * unit of their worst-placed row; domains in the order of their first functions. Warnings change no place:
 * they tell of the figure, not of the function.
 */
std::vector<PlacedDomain> placeFunctions(const ReportData& data, std::size_t run);

/**
 * The last run as a table that fits the screen, with `reserved` lines of it left for what follows: head,
 * failures and warnings by name, functions by domain. Where not all fit, every domain shows as many of its
 * worst-placed functions as any other, and says how many more it has.
 */
std::string textTable(const ReportData& data, const Screen& screen, std::size_t reserved);

#endif
