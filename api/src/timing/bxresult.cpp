#include "timing/bxresult.h"

#include <iterator>

namespace {

struct ResultRow {
    const char* name;
    const char* text;
};

/** By result code. */
constexpr ResultRow resultRows[] = {
    {"UNDEFINED", "was not run"},
    {"OK", "successfully"},
    {"ACCURWRN", "wrong measure accuracy"},
    {"BADSTSWRN", "modified control status"},
    {"DATAWRN", "test data warning"},
    {"FUNCWRN", "lib function warning"},
    {"WARNING", "warning"},
    {"ACCURFAIL", "accuracy error"},
    {"DATAFAIL", "test data error"},
    {"FUNCFAIL", "lib function error"},
    {"EXCPTFAIL", "exception"},
    {"FAIL", "error"},
};

constexpr ResultRow unknownRow = {"UNKNOWN", "unknown result"};

const ResultRow& findRow(bxResult r) {
    return r >= 0 && r < static_cast<int>(std::size(resultRows)) ? resultRows[r] : unknownRow;
}

} // namespace

const char* bxResultName(bxResult r) {
    return findRow(r).name;
}

const char* bxResultString(bxResult r) {
    return findRow(r).text;
}
