/** \file
 * The cells of a table line and the numbers in them.
 */
#ifndef CELLS_H
#define CELLS_H

#include "output/bxtable.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/**
 * The cells of a comma-separated line. Cells are not quoted, save one that begins with blanks and a quote: it
 * runs to the quote that stands before the next comma or the end of the line, and loses blanks and quotes. A
 * quote that is never closed is a character like any other.
 */
std::vector<std::string> splitCells(std::string_view line);

/** The text as a finite decimal number, nothing when any of it is left over. */
std::optional<double> toNumber(std::string_view text);

/** Half a unit of the last digit written, relative to the number: what rounding may have hidden ("1.61":
 * 0.0031). */
double roundingOf(std::string_view number);

/** The text without blanks, tabs and carriage returns at its ends. */
std::string_view trimmed(std::string_view text);

/** Whether a cell was left empty by the writer. */
inline bool isEmptyCell(std::string_view cell) {
    return cell.empty() || cell == bxTable::empty;
}

#endif
