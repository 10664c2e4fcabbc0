#include "framework/bxreports.h"
#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "system/bxenvironment.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <unordered_set>

namespace {

/** Parts of the names of functions that serve others and are not worth a test. */
constexpr std::array servicePart = {"Init",   "Close",        "Alloc",       "Malloc",  "Free",
                                    "PutVal", "RotateCenter", "ResizeShift", "DrawText"};

/** Parts that mark a service unless an underscore makes them the name of an operation. */
struct Accessor {
    const char* part;
    const char* operation;
};
constexpr std::array accessors = {Accessor{"Get", "Get_"}, Accessor{"Set", "Set_"}};

bool isService(const bxString& name) {
    const auto holds = [&name](const char* part) { return name.find(part, 0) >= 0; };
    return std::any_of(servicePart.begin(), servicePart.end(), holds) ||
           std::any_of(accessors.begin(), accessors.end(),
                       [&holds](const Accessor& a) { return holds(a.part) && !holds(a.operation); });
}

/** The functions that some test measures, for many look-ups. The tests must outlive it. */
class MeasuredFunctions {
  public:
    explicit MeasuredFunctions(const bxTestList& tests) {
        for (const bxTest* test : tests)
            m_names.insert(test->name.view());
    }
    bool presentInTestList(const bxString& function) const { return m_names.count(function.view()) != 0; }

  private:
    std::unordered_set<std::string_view> m_names;
};

} // namespace

bxReportList::bxReportList(bxTestList& registry, bxConditions& conditions, int mode) {
    bxStringList names;
    if (mode != tests && createFuncList(names))
        listFunctions(registry, names, mode == missing);
    else
        listTests(registry, conditions);
}

bool bxReportList::createFuncList(bxStringList& names) {
    if (g_pLibFuncList)
        for (const bxString& name : *g_pLibFuncList)
            if (!isService(name))
                names.push_back(name);
    return !names.empty();
}

void bxReportList::addRow(std::initializer_list<bxString> cells) {
    m_columns = static_cast<int>(cells.size());
    for (const bxString& cell : cells)
        push_back(cell);
}

void bxReportList::listTests(bxTestList& registry, bxConditions& conditions) {
    addRow({"   #", "Function", "Test", "Source"});
    int n = 0;
    for (bxTest* test : registry) {
        if (!test->tobeRun(conditions))
            continue;
        char number[16];
        std::snprintf(number, sizeof number, "%4d", ++n);
        addRow({number, test->name, test->info.className, test->fileName});
    }
}

void bxReportList::listFunctions(const bxTestList& registry, const bxStringList& names, bool missingOnly) {
    addRow({"Exist", "Function"});
    const MeasuredFunctions measured(registry);
    for (const bxString& function : names) {
        const bool present = measured.presentInTestList(function);
        if (!present || !missingOnly)
            addRow({present ? "+" : "-", function});
    }
}

bxOStream& operator<<(bxOStream& out, const bxReportList& report) {
    out << ERR;
    int column = 0;
    for (const bxString& cell : report) {
        column = (column + 1) % report.columns();
        out << cell << (column == 0 ? "\n" : "\t");
    }
    return out << endMessage;
}

bxCStream& operator<<(bxCStream& out, const bxReportList& report) {
    int column = 0;
    for (const bxString& cell : report) {
        out << cell;
        column = (column + 1) % report.columns();
        if (column == 0)
            out << "\n";
    }
    return out;
}
