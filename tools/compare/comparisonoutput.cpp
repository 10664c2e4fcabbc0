#include "comparisonoutput.h"

#include "json.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace {

/** printf into a string. */
template <class... T>
std::string format(const char* form, T... values) {
    std::string text(static_cast<std::size_t>(std::max(0, std::snprintf(nullptr, 0, form, values...))), '\0');
    std::snprintf(text.data(), text.size() + 1, form, values...);
    return text;
}

std::string plural(std::size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

void writeRows(std::ostream& out, const ComparisonReport& report) {
    bool headed = false;
    for (const RowComparison& row : report.comparison.rows) {
        if (row.verdict == Verdict::same && !report.allRows)
            continue;
        if (!headed) {
            out << format("\n%-12s %7s  %-13s %10s %10s  %s\n", "verdict", "ratio", "90 % interval", "before",
                          "after", "function and parameters");
            headed = true;
        }
        const std::string interval =
            std::isfinite(row.high) ? format("%.3f..%.3f", row.low, row.high) : "unknown";
        out << format(report.rules.instructions ? "%-12s %7.3f  %-13s %10.0f %10.0f  %s  %s\n"
                                                : "%-12s %7.3f  %-13s %10.4g %10.4g  %s  %s\n",
                      verdictName(row.verdict), row.ratio, interval.c_str(), row.before, row.after,
                      row.key.function.c_str(), describeParameters(row.key, report.names).c_str());
    }
}

void writeFunctions(std::ostream& out, const Comparison& comparison) {
    out << "\nFunctions, by the geometric mean of their rows' ratios:\n";
    for (const FunctionComparison& function : comparison.functions) {
        out << format("  %7.3f  %s  (%s", function.ratio, function.function.c_str(),
                      plural(function.rows, "row").c_str());
        if (function.slower > 0)
            out << ", " << function.slower << " slower";
        if (function.faster > 0)
            out << ", " << function.faster << " faster";
        out << ")\n";
    }
}

void writeOneSided(std::ostream& out, const char* title, const std::vector<RowKey>& keys,
                   const ParameterNames& names) {
    if (keys.empty())
        return;
    out << "\n" << title << " (" << plural(keys.size(), "row") << "):\n";
    for (const RowKey& key : keys)
        out << "  " << key.function << "  " << describeParameters(key, names) << "\n";
}

/** A csv cell that reads as one: quoted where it holds a comma, a quote or a line end (RFC 4180). */
std::string csvCell(const std::string& text) {
    if (text.find_first_of(",\"\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + "\"";
}

void csvOneSided(std::ostream& out, const char* verdict, const std::vector<RowKey>& keys,
                 const ParameterNames& names) {
    for (const RowKey& key : keys) {
        out << verdict << ",,,,,,,,,,," << csvCell(key.function) << ","
            << csvCell(describeParameters(key, names)) << "\n";
    }
}

Json jsonKey(const RowKey& key, const ParameterNames& names) {
    return {{"function", key.function}, {"parameters", describeParameters(key, names)}};
}

Json jsonRow(const RowComparison& row, const ParameterNames& names) {
    Json object = jsonKey(row.key, names);
    object["per"] = row.unit;
    object["verdict"] = verdictName(row.verdict);
    object["ratio"] = row.ratio;
    object["low"] = row.low;
    object["high"] = std::isfinite(row.high) ? Json(row.high) : Json();
    object["p"] = row.p;
    object["adjusted"] = row.adjusted;
    object["before"] = row.before;
    object["after"] = row.after;
    object["runsBefore"] = row.runsBefore;
    object["runsAfter"] = row.runsAfter;
    return object;
}

Json jsonFunction(const FunctionComparison& function) {
    return {{"function", function.function},
            {"ratio", function.ratio},
            {"rows", function.rows},
            {"slower", function.slower},
            {"faster", function.faster}};
}

} // namespace

void writeText(std::ostream& out, const ComparisonReport& report) {
    const Comparison& comparison = report.comparison;
    out << "Before: " << report.before << "\nAfter:  " << report.after << "\n"
        << (report.rules.instructions
                ? std::string("Ratios of instructions per call, which are exact; above 1 is slower.\n")
                : format("Ratios of %s; above 1 is slower, allowed is %.4g.\n",
                         report.rules.time ? "microseconds per call" : "clocks per unit",
                         1 + report.rules.threshold));
    for (const std::string& note : comparison.notes)
        out << "Note: " << note << "\n";
    writeRows(out, report);
    writeFunctions(out, comparison);
    writeOneSided(out, "Only before", comparison.onlyBefore, report.names);
    writeOneSided(out, "Only after", comparison.onlyAfter, report.names);
    out << format("\nAll: %.3f over %s: ", comparison.ratio, plural(comparison.rows.size(), "row").c_str());
    const char* separator = "";
    for (const Verdict verdict : {Verdict::slower, Verdict::faster, Verdict::same, Verdict::cannotTell}) {
        out << separator << comparison.count(verdict) << " " << verdictName(verdict);
        separator = ", ";
    }
    out << "\n";
}

void writeCsv(std::ostream& out, const ComparisonReport& report) {
    out << "Verdict,Ratio,Low,High,p,Adjusted p,Before,After,per,Runs before,Runs "
           "after,Function,Parameters\n";
    for (const RowComparison& row : report.comparison.rows) {
        out << format(report.rules.instructions ? "%s,%.9f,%.9f,%.9f,%.3g,%.3g,%.0f,%.0f,"
                                                : "%s,%.5f,%.5f,%.5f,%.3g,%.3g,%.6g,%.6g,",
                      verdictName(row.verdict), row.ratio, row.low, row.high, row.p, row.adjusted, row.before,
                      row.after)
            << csvCell(row.unit) << "," << row.runsBefore << "," << row.runsAfter << ","
            << csvCell(row.key.function) << "," << csvCell(describeParameters(row.key, report.names)) << "\n";
    }
    csvOneSided(out, "only before", report.comparison.onlyBefore, report.names);
    csvOneSided(out, "only after", report.comparison.onlyAfter, report.names);
}

void writeJson(std::ostream& out, const ComparisonReport& report) {
    const Comparison& comparison = report.comparison;
    const auto keyOf = [&](const RowKey& key) { return jsonKey(key, report.names); };
    JsonText json;
    json.add("schema", "benchex-compare-1");
    json.add("before", report.before);
    json.add("after", report.after);
    json.add("figure", report.rules.instructions ? "instructions" : report.rules.time ? "usec" : "clocks");
    json.add("threshold", report.rules.threshold);
    json.add("alpha", report.rules.alpha);
    json.add("ratio", comparison.ratio);
    for (const Verdict verdict : {Verdict::slower, Verdict::faster, Verdict::same, Verdict::cannotTell}) {
        json.add(verdict == Verdict::cannotTell ? "cannotTell" : verdictName(verdict),
                 comparison.count(verdict));
    }
    json.add("notes", comparison.notes);
    json.addList("functions", comparison.functions, jsonFunction);
    json.addList("rows", comparison.rows,
                 [&](const RowComparison& row) { return jsonRow(row, report.names); });
    json.addList("onlyBefore", comparison.onlyBefore, keyOf);
    json.addList("onlyAfter", comparison.onlyAfter, keyOf);
    out << json.text();
}
