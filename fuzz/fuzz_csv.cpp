// Tables: cells that the harness writes are those that the tools read, and any text is a table or refused
// with a reason.
#include "cells.h"
#include "fuzzinput.h"
#include "output/bxcstream.h"
#include "reportdata.h"
#include "reportjson.h"
#include "resulttable.h"

#include <sstream>

namespace {

/** What the harness writes for these cells, n of them. */
std::string written(const std::vector<std::string>& cells, int n) {
    char* text = nullptr;
    std::size_t size = 0;
    o_stream file(open_memstream(&text, &size));
    bxCStream table;
    table.insert(table.end(), &file);
    for (const std::string& cell : cells)
        table << toText(cell);
    table.lineOut(n);
    table.erase(table.begin());
    file.close();
    const std::string line(text, size);
    std::free(text);
    return line;
}

/** Cells of the harness, which have neither commas, quotes nor line ends, come back as they were. */
void cellsComeBack(FuzzedDataProvider& input) {
    const auto n = input.ConsumeIntegralInRange(0, bxCStream::lineWidth);
    std::vector<std::string> cells = split(input.ConsumeRemainingBytesAsString(), ',');
    for (std::string& cell : cells)
        std::erase_if(cell, [](char c) { return c == '\n' || c == '"' || c == '\0'; });
    std::string line = written(cells, n);
    require(!line.empty() && line.back() == '\n' && line.find('\n') == line.size() - 1,
            "a row is one whole line");
    line.pop_back();
    std::vector<std::string> read = splitCells(line);
    cells.resize(std::min<std::size_t>(cells.size(), bxCStream::lineWidth));
    cells.resize(n ? static_cast<std::size_t>(n) : cells.size());
    require(read.size() == std::max<std::size_t>(cells.size(), 1), "as many cells are read as were written");
    for (std::size_t i = 0; i < cells.size(); ++i)
        require(read[i] == (cells[i].empty() ? "-" : cells[i]), "a cell is read as it was written");
}

/** Equal keys are found as a comparison of all pairs finds them. */
void equalKeysAreFound(FuzzedDataProvider& input) {
    const auto keys = input.ConsumeIntegralInRange(1, 4);
    bxCStream table;
    table.identicalLinesStart(keys);
    std::vector<std::vector<bxString>> rows;
    for (const std::string& line : split(input.ConsumeRemainingBytesAsString(), '\n')) {
        rows.emplace_back(bxCStream::lineWidth);
        std::size_t used = 0;
        for (const std::string& cell : split(line, ',')) {
            if (used < rows.back().size())
                rows.back()[used++] = toText(cell);
            table << toText(cell);
        }
        table.lineOut(0);
    }
    bool same = false;
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = i + 1; j < rows.size(); ++j)
            same = same || bxCStream::identicalColms(rows[i].data(), rows[j].data(), keys);
    require(table.identicalLinesStop() == same, "two rows with the same parameters are found");
}

/** Any text is a table, whose report can be written, or is refused with its place. */
void isReadOrRefused(FuzzedDataProvider& input) {
    const bool allowPartial = input.ConsumeBool();
    std::istringstream text(input.ConsumeRemainingBytesAsString());
    try {
        const TableFile file = readTable(text, "fuzz.csv", allowPartial);
        for (const TableRun& run : file.runs) {
            for (const ResultRow& row : run.rows) {
                require(row.parameters.size() == run.parameterColumns,
                        "a row has a cell for each parameter column");
                row.accuracy(), row.loops(), row.cacheMode();
            }
        }
        const Collection collection{file.runs, file.names, file.notes};
        require(!reportJson(makeReport(collection)).empty(), "a report is written");
    } catch (const TableError& refused) {
        require(std::string_view(refused.what()).find("fuzz.csv") != std::string_view::npos,
                "a refusal names the file");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    switch (input.ConsumeIntegralInRange(0, 2)) {
    case 0:
        cellsComeBack(input);
        break;
    case 1:
        equalKeysAreFound(input);
        break;
    default:
        isReadOrRefused(input);
    }
    return 0;
}
