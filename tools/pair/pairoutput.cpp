#include "pairoutput.h"

#include "json.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <ostream>

namespace {

/** printf into a string. */
template <class... T>
std::string format(const char* form, T... values) {
    std::string text(static_cast<std::size_t>(std::max(0, std::snprintf(nullptr, 0, form, values...))), '\0');
    std::snprintf(text.data(), text.size() + 1, form, values...);
    return text;
}

constexpr std::array verdicts{PairVerdict::slower, PairVerdict::cannotTell, PairVerdict::same,
                              PairVerdict::faster};

std::string outputText(const OutputComparison& output) {
    if (output.dataDiffer)
        return "data differ";
    if (output.equal)
        return "equal";
    std::string text = output.right ? "right" : "WRONG";
    if (output.ulps > 0)
        text += format(", %.3g ulp", output.ulps);
    if (std::isfinite(output.decibels))
        text += format(", %.0f dB", output.decibels);
    return text;
}

/** What is said of the instructions of a row; the same code in another time is where it lies, or what of. */
std::string countText(const PairReport& report, std::size_t i) {
    const bool differs = report.result.rows[i].judgement.verdict == PairVerdict::slower ||
                         report.result.rows[i].judgement.verdict == PairVerdict::faster;
    const bool placed = differs && report.counts[i].sameCode() && report.outputs[i].equal;
    return report.counts[i].text() + (placed ? ": placement, not code" : "");
}

/** Rows by index: wrong outputs first, then by verdict, the highest ratio first in each. */
std::vector<std::size_t> worstFirst(const PairReport& report) {
    std::vector<std::size_t> order(report.result.rows.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto rank = [&](std::size_t i) {
        const RowProgress& row = report.result.rows[i];
        const auto* const at = std::find(verdicts.begin(), verdicts.end(), row.judgement.verdict);
        return std::make_tuple(report.outputs[i].right, at, -row.judgement.centre.centre,
                               -report.counts[i].more());
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return rank(a) < rank(b); });
    return order;
}

std::string intervalText(const RowProgress& row) {
    const Centre& centre = row.judgement.centre;
    if (row.rounds.empty() || !std::isfinite(centre.low))
        return "-";
    return format("%.4f..%.4f", std::exp(centre.low), std::exp(centre.high));
}

bool isTimed(const PairReport& report) {
    return !report.rules.outputsOnly && !report.rules.instructions;
}

/** Rows with the verdict; none has one where only outputs were looked at. */
std::size_t count(const PairReport& report, PairVerdict verdict) {
    return static_cast<std::size_t>(
        std::count_if(report.result.rows.begin(), report.result.rows.end(), [&](const RowProgress& row) {
            return isTimed(report) && row.judgement.verdict == verdict;
        }));
}

const char* verdictText(const PairReport& report, std::size_t i) {
    if (report.rules.instructions)
        return report.counts[i].verdict();
    return report.rules.outputsOnly ? "-" : pairVerdictName(report.result.rows[i].judgement.verdict);
}

const char* outputsName(const OutputComparison& output) {
    return output.dataDiffer ? "data differ" : output.equal ? "equal" : output.right ? "right" : "wrong";
}

/** What there is to say of a row in words. */
std::string remark(const PairReport& report, std::size_t i) {
    std::string text;
    for (const std::string& part :
         {report.result.rows[i].trouble, report.outputs[i].difference, countText(report, i)})
        text += (text.empty() || part.empty() ? "" : "; ") + part;
    return text;
}

std::size_t countWrong(const PairReport& report) {
    return static_cast<std::size_t>(
        std::count_if(report.outputs.begin(), report.outputs.end(),
                      [](const OutputComparison& output) { return !output.right && !output.dataDiffer; }));
}

std::size_t countMore(const PairReport& report) {
    return static_cast<std::size_t>(std::count_if(report.counts.begin(), report.counts.end(),
                                                  [](const PairCount& each) { return each.more() > 0; }));
}

std::size_t countOtherData(const PairReport& report) {
    return static_cast<std::size_t>(
        std::count_if(report.outputs.begin(), report.outputs.end(),
                      [](const OutputComparison& output) { return output.dataDiffer; }));
}

bool isDull(const PairReport& report, std::size_t i) {
    const RowProgress& row = report.result.rows[i];
    return (!isTimed(report) || row.judgement.verdict == PairVerdict::same) && report.outputs[i].equal &&
           row.trouble.empty() && (!report.rules.instructions || report.counts[i].sameCode());
}

void writeRows(std::ostream& out, const PairReport& report) {
    bool headed = false;
    for (const std::size_t i : worstFirst(report)) {
        const RowProgress& row = report.result.rows[i];
        if (isDull(report, i) && !report.allRows)
            continue;
        if (!headed)
            out << format("\n%-11s %7s  %-15s %6s  %-24s %s\n", "verdict", "ratio", "95 % interval", "rounds",
                          "outputs", "function and parameters");
        headed = true;
        const std::string ratio =
            row.rounds.empty() ? "-" : format("%.4f", std::exp(row.judgement.centre.centre));
        out << format("%-11s %7s  %-15s %6zu  %-24s %s  %s\n", verdictText(report, i), ratio.c_str(),
                      intervalText(row).c_str(), row.rounds.size(), outputText(report.outputs[i]).c_str(),
                      row.row.before().function.c_str(), row.row.before().parameters.c_str());
        if (!row.trouble.empty())
            out << "            " << row.trouble << "\n";
        if (!report.outputs[i].difference.empty())
            out << "            " << report.outputs[i].difference << "\n";
        if (report.counts[i].wanted())
            out << "            " << countText(report, i) << "\n";
    }
}

std::string sideText(const Side& side) {
    return side.text.empty() ? side.program.string() : side.text;
}

struct OneSided {
    const char* name;
    const std::vector<const Combination*>& rows;
};

std::array<OneSided, 2> oneSided(const PairReport& report) {
    return {OneSided{"only before", report.rows.only[0]}, OneSided{"only after", report.rows.only[1]}};
}

/** A csv cell that reads as one (RFC 4180). */
std::string csvCell(const std::string& text) {
    if (text.find_first_of(",\"\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + "\"";
}

/** A number where there is one. */
Json finite(double value) {
    return std::isfinite(value) ? Json(value) : Json();
}

Json jsonRow(const PairReport& report, std::size_t i) {
    const RowProgress& row = report.result.rows[i];
    const OutputComparison& output = report.outputs[i];
    const Centre& centre = row.judgement.centre;
    Json json{{"function", row.row.before().function},
              {"parameters", row.row.before().parameters},
              {"verdict", verdictText(report, i)},
              {"rounds", row.rounds.size()}};
    if (!row.rounds.empty())
        json.update({{"ratio", std::exp(centre.centre)},
                     {"low", finite(std::exp(centre.low))},
                     {"high", finite(std::exp(centre.high))}});
    json["clocksBefore"] = row.row.before().clocks;
    json["clocksAfter"] = row.row.after().clocks;
    json["outputs"] = outputsName(output);
    if (!output.equal) {
        json["ulps"] = output.ulps;
        json["decibels"] = finite(output.decibels);
    }
    if (!output.difference.empty())
        json["difference"] = output.difference;
    if (!row.trouble.empty())
        json["trouble"] = row.trouble;
    if (report.counts[i].wanted())
        json["instructions"] = countText(report, i);
    if (report.counts[i].known())
        json.update({{"instructionsBefore", *report.counts[i].instructions(0)},
                     {"instructionsAfter", *report.counts[i].instructions(1)},
                     {"sameCode", report.counts[i].sameCode()}});
    return json;
}

} // namespace

const char* pairVerdictName(PairVerdict verdict) {
    constexpr std::array names{"slower", "faster", "same", "cannot tell"};
    return names[static_cast<std::size_t>(verdict)];
}

bool isSlowerThanAllowed(const RowProgress& row, const PairRules& rules) {
    return row.judgement.verdict == PairVerdict::slower &&
           row.judgement.centre.centre > std::log1p(rules.threshold);
}

void writeText(std::ostream& out, const PairReport& report) {
    out << "Before: " << sideText(report.sides[0]) << "\nAfter:  " << sideText(report.sides[1]) << "\n";
    if (!report.rules.outputsOnly)
        out << format("Ratios after/before; above 1 is slower, %.4g and less is the same.\n",
                      1 + report.rules.threshold);
    for (const std::string& note : report.notes)
        out << "Note: " << note << "\n";
    writeRows(out, report);
    for (const auto& [name, rows] : oneSided(report)) {
        if (!rows.empty())
            out << "\n" << static_cast<char>(name[0] - 'a' + 'A') << name + 1 << ":\n";
        for (const Combination* row : rows)
            out << "  " << row->function << "  " << row->parameters << "\n";
    }
    out << "\n" << report.result.rows.size() << " rows: ";
    for (const PairVerdict verdict : verdicts)
        if (isTimed(report))
            out << count(report, verdict) << " " << pairVerdictName(verdict) << ", ";
    if (report.rules.instructions)
        out << countMore(report) << " with more instructions, ";
    out << countWrong(report) << " wrong";
    if (const std::size_t rows = countOtherData(report))
        out << ", " << rows << " with different data";
    out << "; ";
    if (isTimed(report))
        out << report.result.rounds << " rounds, ";
    out << format("%.1f s\n", report.seconds);
}

void writeCsv(std::ostream& out, const PairReport& report) {
    out << "Verdict,Ratio,Low,High,Rounds,Outputs,Ulps,dB,Function,Parameters,Remark\n";
    for (const std::size_t i : worstFirst(report)) {
        const RowProgress& row = report.result.rows[i];
        const OutputComparison& output = report.outputs[i];
        const Centre& centre = row.judgement.centre;
        out << verdictText(report, i) << ",";
        if (row.rounds.empty())
            out << ",,";
        else if (!std::isfinite(centre.low))
            out << format("%.5f,,", std::exp(centre.centre));
        else
            out << format("%.5f,%.5f,%.5f", std::exp(centre.centre), std::exp(centre.low),
                          std::exp(centre.high));
        out << "," << row.rounds.size() << "," << outputsName(output) << ","
            << (output.equal ? "" : format("%.6g", output.ulps)) << ","
            << (output.equal || !std::isfinite(output.decibels) ? "" : format("%.2f", output.decibels)) << ","
            << csvCell(row.row.before().function) << "," << csvCell(row.row.before().parameters) << ","
            << csvCell(remark(report, i)) << "\n";
    }
    for (const auto& [name, rows] : oneSided(report))
        for (const Combination* row : rows)
            out << name << ",,,,,,,," << csvCell(row->function) << "," << csvCell(row->parameters) << ",\n";
}

void writeJson(std::ostream& out, const PairReport& report) {
    const Json head{{"schema", "benchex-pair-1"},
                    {"before", sideText(report.sides[0])},
                    {"after", sideText(report.sides[1])},
                    {"threshold", report.rules.threshold},
                    {"alpha", report.rules.alpha},
                    {"rounds", report.result.rounds},
                    {"seconds", report.seconds},
                    {"ownShare", report.result.ownShare},
                    {"interrupted", report.result.interrupted},
                    {"outputsOnly", report.rules.outputsOnly},
                    {"wrong", countWrong(report)},
                    {"dataDiffer", countOtherData(report)},
                    {"notes", report.notes}};
    JsonText text;
    for (const auto& [name, value] : head.items())
        text.add(name, value);
    for (const PairVerdict verdict : verdicts)
        text.add(verdict == PairVerdict::cannotTell ? "cannotTell" : pairVerdictName(verdict),
                 count(report, verdict));
    text.addList("rows", worstFirst(report), [&](std::size_t i) { return jsonRow(report, i); });
    for (std::size_t side = 0; side < 2; ++side)
        text.addList(side == 0 ? "onlyBefore" : "onlyAfter", report.rows.only[side],
                     [](const Combination* row) {
                         return Json{{"function", row->function}, {"parameters", row->parameters}};
                     });
    out << text.text();
}
