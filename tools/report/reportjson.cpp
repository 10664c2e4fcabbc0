#include "reportjson.h"

#include "cells.h"
#include "json.h"
#include "output/bxtable.h"

namespace {

/** A cell as the number that it is, else as text. */
Json cell(const std::string& text) {
    const auto number = toNumber(text);
    return number ? jsonNumber(*number) : Json(text);
}

Json labels(const std::vector<Label>& pairs) {
    Json object = Json::object();
    for (const auto& [label, text] : pairs)
        object[label] = cell(text);
    return object;
}

Json test(const TestOutcome& outcome) {
    Json object{{"function", outcome.function},
                {"test", outcome.test},
                {"source", outcome.source},
                {"program", outcome.program},
                {"result", outcome.result}};
    addKnown(object, "seconds", outcome.seconds);
    object["watch"] = labels(outcome.watch);
    return object;
}

Json run(const TableRun& run) {
    Json tests = Json::array();
    for (const TestOutcome& outcome : run.tests)
        tests.push_back(test(outcome));
    return {{"label", run.label},
            {"file", run.file.string()},
            {"cpu", run.head.value(bxTable::cpu)},
            {"os", run.head.value(bxTable::os)},
            {"computer", run.head.value(bxTable::computer)},
            {"start", run.head.value(bxTable::start)},
            {"libraries", run.head.values(bxTable::library)},
            {"incomplete", run.incomplete},
            {"summary", run.hasSummary},
            {"counts", labels(run.counts)},
            {"tests", std::move(tests)}};
}

Json function(const FunctionView& view) {
    Json axis;
    if (view.axis) {
        axis = {{"parameter", view.parameterNames[view.axis->parameter]},
                {"numeric", view.axis->numeric},
                {"logarithmic", view.axis->logarithmic},
                {"quantity", view.axis->quantity}};
    }
    Json lines = Json::array();
    for (const std::size_t i : view.lines)
        lines.push_back(view.parameterNames[i]);
    return {{"name", view.name},       {"domain", view.domain},
            {"hot", view.hot},         {"parameters", view.parameterNames},
            {"axis", std::move(axis)}, {"lines", std::move(lines)}};
}

Json calls(const CallSpread& spread) {
    Json object{{"count", jsonNumber(spread.calls)},
                {"least", jsonNumber(spread.least)},
                {"median", jsonNumber(spread.median)},
                {"percent99", jsonNumber(spread.percent99)},
                {"permille999", jsonNumber(spread.permille999)},
                {"most", jsonNumber(spread.most)},
                {"interrupted", jsonNumber(spread.interrupted)},
                {"apart", spread.apart}};
    addKnown(object, "longestInterrupted", spread.longestInterrupted);
    object["histogram"] = Json::array();
    for (const double count : spread.histogram)
        object["histogram"].push_back(jsonNumber(count));
    return object;
}

Json row(const TableRun& run, const FunctionView& view, const RowRef& ref) {
    const ResultRow& row = *ref.row;
    Json parameters = Json::object();
    for (std::size_t i = 0; i < view.parameterNames.size() && i < row.parameters.size(); ++i)
        if (!row.parameters[i].empty())
            parameters[view.parameterNames[i]] = cell(row.parameters[i]);
    Json object{
        {"run", ref.run},        {"function", row.function},     {"name", row.name},
        {"types", row.types},    {"descriptor", row.descriptor}, {"parameters", std::move(parameters)},
        {"comment", row.comment}};
    addKnown(object, "loops", row.loops());
    addKnown(object, "accuracy", row.accuracy());
    addKnown(object, "shared", row.shared());
    addKnown(object, "instructions", row.instructions());
    addKnown(object, "steps", row.steps());
    addKnown(object, "ipc", row.ipc());
    if (const auto spread = row.callSpread())
        object["calls"] = calls(*spread);
    addKnown(object, "first", row.firstCall());
    if (const std::string code = row.codeDigest(); !code.empty())
        object["code"] = code;
    if (const std::string mode = row.cacheMode(); !mode.empty())
        object["cache"] = mode;
    addKnown(object, "clocks", row.clocks);
    object["per"] = row.unit;
    addKnown(object, "microseconds", row.microseconds);
    addKnown(object, "mflops", row.mflops);
    object["hot"] = row.hot;
    object["deprecated"] = row.deprecated();
    if (const std::string result = rowResult(run, row); !result.empty())
        object["result"] = result;
    if (isShortCall(run, row))
        object["short"] = true;
    object["line"] = row.line;
    if (!row.other.empty())
        object["other"] = labels(row.other);
    return object;
}

} // namespace

std::string reportJson(const ReportData& data) {
    std::vector<std::pair<const FunctionView*, const RowRef*>> rows;
    for (const FunctionView& view : data.functions)
        for (const RowRef& ref : view.rows)
            rows.emplace_back(&view, &ref);
    JsonText json;
    json.add("schema", "benchex-report-1");
    json.addList("runs", data.tables->runs, run);
    json.addList("functions", data.functions, function);
    json.addList("rows", rows, [&](const auto& place) {
        return row(data.tables->runs[place.second->run], *place.first, *place.second);
    });
    if (!data.sections.empty())
        json.add("sections", data.sections);
    json.add("notes", data.tables->notes);
    return json.text();
}
