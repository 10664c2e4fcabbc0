#include "reportjson.h"

#include "cells.h"
#include "jsonwriter.h"

namespace {

using Layout = JsonWriter::Layout;

/** A cell as the number that it is, else as text. */
void cell(JsonWriter& json, std::string_view name, const std::string& text) {
    if (const auto number = toNumber(text))
        json.member(name, *number);
    else
        json.member(name, text);
}

void labels(JsonWriter& json, std::string_view name, const std::vector<Label>& pairs) {
    json.key(name);
    json.beginObject(Layout::flat);
    for (const auto& [label, text] : pairs)
        cell(json, label, text);
    json.endObject();
}

void head(JsonWriter& json, const RunHead& head) {
    json.member("cpu", head.value("CPU"));
    json.member("os", head.value("OS"));
    json.member("computer", head.value("Computer"));
    json.member("start", head.value("Start"));
    json.key("libraries");
    json.beginList(Layout::flat);
    for (const std::string& library : head.values("Library"))
        json.value(library);
    json.endList();
}

void test(JsonWriter& json, const TestOutcome& outcome) {
    json.beginObject(Layout::flat);
    json.member("function", outcome.function);
    json.member("test", outcome.test);
    json.member("source", outcome.source);
    json.member("program", outcome.program);
    json.member("result", outcome.result);
    json.member("seconds", outcome.seconds);
    labels(json, "watch", outcome.watch);
    json.endObject();
}

void run(JsonWriter& json, const TableRun& run) {
    json.beginObject();
    json.member("label", run.label);
    json.member("file", run.file.string());
    head(json, run.head);
    json.member("incomplete", run.incomplete);
    json.member("summary", run.hasSummary);
    labels(json, "counts", run.counts);
    json.key("tests");
    json.beginList();
    for (const TestOutcome& outcome : run.tests)
        test(json, outcome);
    json.endList();
    json.endObject();
}

void function(JsonWriter& json, const FunctionView& view) {
    json.beginObject(Layout::flat);
    json.member("name", view.name);
    json.member("hot", view.hot);
    json.key("parameters");
    json.beginList(Layout::flat);
    for (const std::string& name : view.parameterNames)
        json.value(name);
    json.endList();
    json.key("axis");
    if (view.axis) {
        json.beginObject(Layout::flat);
        json.member("parameter", view.parameterNames[view.axis->parameter]);
        json.member("numeric", view.axis->numeric);
        json.member("logarithmic", view.axis->logarithmic);
        json.endObject();
    } else {
        json.null();
    }
    json.key("lines");
    json.beginList(Layout::flat);
    for (const std::size_t i : view.lines)
        json.value(view.parameterNames[i]);
    json.endList();
    json.endObject();
}

void row(JsonWriter& json, const ReportData& data, const FunctionView& view, const RowRef& ref) {
    const ResultRow& row = *ref.row;
    const TableRun& run = data.tables->runs[ref.run];
    json.beginObject(Layout::flat);
    json.member("run", ref.run);
    json.member("function", row.function);
    json.member("name", row.name);
    json.member("types", row.types);
    json.member("descriptor", row.descriptor);
    json.key("parameters");
    json.beginObject(Layout::flat);
    for (std::size_t i = 0; i < view.parameterNames.size() && i < row.parameters.size(); ++i)
        if (!row.parameters[i].empty())
            cell(json, view.parameterNames[i], row.parameters[i]);
    json.endObject();
    json.member("comment", row.comment);
    json.member("loops", row.loops());
    json.member("accuracy", row.accuracy());
    json.member("shared", row.shared());
    if (const std::string mode = row.cacheMode(); !mode.empty())
        json.member("cache", mode);
    json.member("clocks", row.clocks);
    json.member("per", row.unit);
    json.member("microseconds", row.microseconds);
    json.member("mflops", row.mflops);
    json.member("hot", row.hot);
    json.member("deprecated", row.deprecated());
    if (const std::string result = rowResult(run, row); !result.empty())
        json.member("result", result);
    json.member("line", row.line);
    if (!row.other.empty())
        labels(json, "other", row.other);
    json.endObject();
}

} // namespace

std::string reportJson(const ReportData& data) {
    JsonWriter json;
    json.beginObject();
    json.member("schema", "benchex-report-1");
    json.key("runs");
    json.beginList();
    for (const TableRun& each : data.tables->runs)
        run(json, each);
    json.endList();
    json.key("functions");
    json.beginList();
    for (const FunctionView& view : data.functions)
        function(json, view);
    json.endList();
    json.key("rows");
    json.beginList();
    for (const FunctionView& view : data.functions)
        for (const RowRef& ref : view.rows)
            row(json, data, view, ref);
    json.endList();
    json.key("notes");
    json.beginList();
    for (const std::string& note : data.tables->notes)
        json.value(note);
    json.endList();
    json.endObject();
    return json.text() + "\n";
}
