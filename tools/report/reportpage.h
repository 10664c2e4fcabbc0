/** \file
 * A report as one HTML page that needs nothing else.
 */
#ifndef REPORTPAGE_H
#define REPORTPAGE_H

#include "reportdata.h"

#include <filesystem>
#include <optional>
#include <string>

/** The chart library's script, or why there is none. */
struct ChartLibrary {
    std::optional<std::string> script;
    std::string missing; /**< what is missing, for the page's reader */
};

/** Reads the library from a file; with an empty path, from where the packages put it. */
ChartLibrary findChartLibrary(const std::filesystem::path& path);

/** The page with tables, charts (where there is a library) and the data itself. */
std::string reportPage(const ReportData& data, const std::string& title, const ChartLibrary& library);

#endif
