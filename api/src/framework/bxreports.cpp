#include "framework/bxreports.h"

#include "framework/bxinterrupt.h"
#include "framework/bxreportformat.h"
#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "output/bxpaths.h"
#include "output/bxtable.h"
#include "system/bxenvironment.h"
#include "system/bxhost.h"

#include <numeric>

namespace {

/** Columns: label, ":", value. */
bxReportFormat titleFormat() {
    return bxReportFormat(false, 3, 1, 11, 13, -79, -79, -79);
}

/** Columns: label, ":", value, further text. */
bxReportFormat testTitleFormat() {
    return bxReportFormat(true, 4, 1, 12, 14, -79, -79, -79);
}

/** Columns: result, function, time. */
bxReportFormat testResultFormat() {
    return bxReportFormat(true, 3, 1, 14, -79, -79, -79, -79);
}

bxReportFormat summaryFormat() {
    return bxReportFormat(false, 1, 1, 33, 34, -79, -79, -79);
}

/** Pairs of label and value as rows of two cells. */
void putPairs(bxCStream& out, const bxStringList& pairs) {
    for (auto it = pairs.begin(); it != pairs.end(); ++it) {
        out << *it;
        out << *++it << "\n";
    }
}

/** The blocks of a test stand between separators only where the listing shows more than results. */
bool showsSeparators(const bxOStream& out) {
    return out.outLevel() > static_cast<int>(WARN);
}

} // namespace

bxReportTitle::bxReportTitle(const bxTestList& tests) {
    const auto add = [this](const bxString& label, const bxString& value) {
        push_back(label);
        push_back(value);
    };
    add(bxTable::cpu, bxReportFormat::cpuInfo());
    add(bxTable::os, bxOS().text());
    add(bxTable::computer, bxHost().name());
    if (g_pLibInfoList)
        for (const bxString& library : *g_pLibInfoList)
            add(bxTable::library, library);
    add(bxTable::start, bxCtimeText(tests.startTime));
}

bxOStream& operator<<(bxOStream& out, const bxReportTitle& report) {
    bxReportFormat format = titleFormat();
    out << ERR << format.firstLine();
    for (auto it = report.begin(); it != report.end(); ++it) {
        const bxString& label = *it;
        const bxString& value = *++it;
        if (label == bxTable::start)
            out << format.getEntry({"Test", ":"}, "Timing") << format.getEntry({"", ""}, value);
        else
            out << format.getEntry({label, ":"}, value);
    }
    return out << format.lastLine() << endMessage;
}

bxCStream& operator<<(bxCStream& out, const bxReportTitle& report) {
    putPairs(out, report);
    return out;
}

bxReportTestTitle::bxReportTestTitle(const bxTest* test) {
    const auto add = [this](const bxString& label, const bxString& value, const bxString& further) {
        push_back(label);
        push_back(value);
        push_back(further);
    };
    add("Function", test->name, "");
    add("Test", test->info.className, test->info.regKind);
    add("Description", test->info.subName, "");
    add("Source", test->fileName, "");
}

bxOStream& operator<<(bxOStream& out, const bxReportTestTitle& report) {
    const bxReportFormat format = testTitleFormat();
    const bxString separator = showsSeparators(out) ? format.sepLine() : "";
    out << separator;
    for (auto it = report.begin(); it != report.end(); ++it) {
        const bxString& label = *it;
        const bxString& value = *++it;
        out << format.getEntry({label, ":"}, value, *++it);
    }
    return out << separator;
}

bxCStream& operator<<(bxCStream& out, const bxReportTestTitle& report) {
    const bxString& function = *++report.begin();
    out << function << (function.find("__bx", 0) == 0 ? "Information" : "Timing");
    out.flush();
    return out;
}

/** What stands above a result's line where something is missing. */
static bxString remark(const bxTest& test) {
    bxString text;
    if (test.result == UNDEFINED)
        text << "--No measurements have been done\n";
    if (test.interrupted() && test.notMeasured() > 0)
        text << "--Interrupted by " << bxInterruptName() << ": "
             << (test.notMeasured() < bxTest::maxCounted ? "" : "at least ") << test.notMeasured()
             << " combinations of parameter values have not been measured\n";
    return text;
}

bxReportTestResult::bxReportTestResult(const bxTest* test) {
    if (!test) {
        for (const char* title : bxTable::summary::columns)
            m_row << (m_row.empty() ? "" : ",") << title;
        return;
    }
    const bxString code =
        test->interrupted() ? bxString(bxTable::summary::interrupted) : bxResultName(test->result);
    push_back(code);
    push_back(test->name);
    push_back(bxCtimeText(test->endTime));
    push_back(remark(*test));

    const char* watch87 = test->bad87Status ? "?" : "-";
    const char* watchSSX = test->badSSXStatus ? "?" : "-";
    m_row << watch87 << ',' << watch87 << ',' << watchSSX << ',' << watchSSX;
    const auto addCell = [this](const bxString& cell) {
        m_row << ',' << (cell.empty() ? bxString(bxTable::empty) : cell);
    };
    addCell(test->info.className);
    addCell(bxString() << static_cast<long long>(test->endTime - test->startTime));
    addCell(test->fileName);
    addCell(code);
    addCell(bxPaths::m_exePath.getFileName());
}

bxOStream& operator<<(bxOStream& out, const bxReportTestResult& report) {
    if (report.empty())
        return out;
    auto item = report.begin();
    const bxString& code = *item++;
    const bxString& function = *item++;
    const bxString& when = *item++;
    const bxString& nothingDone = *item;

    const bxReportFormat format = testResultFormat();
    const bxString separator = showsSeparators(out) ? format.sepLine() : "";
    return out << ERR << nothingDone << separator << format.getEntry({"-" + code}, function, when)
               << separator << endMessage;
}

bxCStream& operator<<(bxCStream& out, const bxReportTestResult& report) {
    if (!report.row().empty())
        out << report.row() << "\n";
    return out;
}

bxReportEnd::bxReportEnd(const bxTestList& tests) {
    const auto count = [&tests](std::initializer_list<bxResult> codes) {
        return std::accumulate(codes.begin(), codes.end(), 0,
                               [&tests](int sum, bxResult code) { return sum + tests.numResults[code]; });
    };
    const auto add = [this](const char* label, const bxString& value) {
        push_back(label);
        push_back(value);
    };
    const auto addCount = [&add](const char* label, int n) { add(label, bxString() << n); };

    const int fails = count({ACCURFAIL, DATAFAIL, FUNCFAIL, EXCPTFAIL});
    const int warnings = count({ACCURWRN, BADSTSWRN, DATAWRN, FUNCWRN});
    addCount(".Number of tests", tests.numTests);
    addCount(".Successes      ", count({OK}));
    addCount(".Failures       ", fails + warnings);
    addCount("...Fails        ", fails);
    addCount(".....-FAIL      ", count({ACCURFAIL, DATAFAIL, FUNCFAIL}));
    addCount(".....-EXCPTFAIL ", count({EXCPTFAIL}));
    addCount("...Warnings     ", warnings);
    addCount(".....-WARNING   ", count({ACCURWRN, DATAWRN, FUNCWRN}));
    addCount(".....-BADSTSWRN ", count({BADSTSWRN}));
    addCount("...Undefined    ", tests.numTests - count({OK}) - fails - warnings - tests.numInterrupted);
    if (tests.numInterrupted > 0)
        addCount(".Interrupted    ", tests.numInterrupted);
    add(".Total time     ", bxReportFormat::getTimeStr(static_cast<int>(tests.endTime - tests.startTime)));
}

bxOStream& operator<<(bxOStream& out, const bxReportEnd& report) {
    bxReportFormat format = summaryFormat();
    out << ERR << format.firstLine() << format.getLine("BX Summary");
    for (auto it = report.begin(); it != report.end(); ++it) {
        const bxString& label = *it;
        out << format.getLine(label + " : " + *++it);
    }
    return out << format.lastLine() << endMessage;
}

bxCStream& operator<<(bxCStream& out, const bxReportEnd& report) {
    out << bxTable::summary::end << "\n";
    putPairs(out, report);
    return out;
}
