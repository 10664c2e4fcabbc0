/** \file
 * A report as JSON; docs/benchex-report.schema.json describes it.
 */
#ifndef REPORTJSON_H
#define REPORTJSON_H

#include "reportdata.h"

#include <string>

std::string reportJson(const ReportData& data);

#endif
