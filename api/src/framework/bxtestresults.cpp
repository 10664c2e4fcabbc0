/** \file
 * Figures of a measurement, and how they go to the listing and the tables.
 */
#include "foundation/bxdecimal.h"
#include "framework/bxaftermath.h"
#include "framework/bxhotlist.h"
#include "framework/bxsessionmodes.h"
#include "framework/bxtest.h"
#include "framework/bxtraced.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "output/bxtable.h"
#include "system/bxclock.h"
#include "timing/bxfiguretext.h"
#include "timing/bxsignal.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

// ---- Figures ----

double bxTest::getFlops() {
    return -1.0;
}

double bxTest::getDivisor() {
    return 1.0;
}

bxString bxTest::getUnit() {
    return " ";
}

bool bxTest::isFloatFunction() {
    return getFlops() > 0;
}

bool bxTest::isHotLine() {
    return bxIsHotFunction(name);
}

/** Zero for a zero divisor: on the x87 a division by zero traps. */
static double ratio(double dividend, double divisor) {
    return divisor != 0 ? dividend / divisor : 0;
}

/** For figures that need the frequency of the counter where it is not known. */
static const char* const notKnown = "-";

double bxTest::performance(bool flops) {
    if (!flops)
        return ratio(tool.funcClocks, getDivisor());
    return isFloatFunction() ? ratio(getFlops() * bxCpuTicker::getMHz(), tool.counterClocks()) : 0;
}

bxString bxTest::formatClocks(double x) {
    if (!(x > 0))
        return "";
    if (x < 0.0001 || x > 10000000)
        return bxString(bxDecimal::scientific(x, 3).view());
    // One decimal more for each bound that the figure stays below.
    static constexpr std::array bounds = {100.0, 10.0, 1.0, 0.1, 0.01, 0.001};
    const auto decimals =
        std::count_if(bounds.begin(), bounds.end(), [x](double bound) { return x < bound; });
    return bxString(bxDecimal::fixed(x, static_cast<int>(decimals)).view());
}

bxString bxTest::perfString(bool flops) {
    if (flops && isFloatFunction() && bxCpuTicker::getMHz() <= 0)
        return notKnown;
    return formatClocks(performance(flops));
}

bxString bxTest::usecString(bxTool& engine) {
    const double mhz = bxCpuTicker::getMHz();
    return mhz > 0 ? bxString() << ratio(engine.counterClocks(), mhz) : notKnown;
}

void bxTest::setTimingResult(double clocks, bxString comment) {
    tool.setFuncTicks(clocks);
    tool.info = comment;
}

bxString bxTest::getComment() {
    if (deprecated)
        return bxTable::deprecated;
    return cacheIter ? cacheIter->getComment() + " " + tool.info : tool.info;
}

// ---- Texts ----

/** Appends a text filled with blanks, as sFormat has it. */
static void addFilled(std::string& line, std::string_view text, int width) {
    const auto wanted = static_cast<std::size_t>(std::abs(width));
    const std::size_t missing = wanted - std::min(wanted, text.size());
    line.append(width > 0 ? missing : 0, ' ').append(text).append(width > 0 ? 0 : missing, ' ');
}

static bxString filled(std::string_view text, int width) {
    std::string line;
    addFilled(line, text, width);
    return bxString(std::move(line));
}

bxString bxTest::sFormat(bxString s, int w) {
    return filled(s.view(), w);
}

bxString bxTest::sFormat(double x, int w) {
    return filled(bxDecimal(x).view(), w);
}

bxString bxTest::sFormat(int x, int w) {
    return filled(bxDecimal(x).view(), w);
}

bxString bxTest::sFormat(long long x, int w) {
    return filled(bxDecimal(x).view(), w);
}

bxString bxTest::testResultString() {
    std::string line;
    line.reserve(128); // one piece of memory for a line, of which a run may write millions
    if (tool.method == bxTool::methodAuto || tool.method == bxTool::methodIterative) {
        line.append("  ").append(bxTable::accuracy);
        addFilled(line, bxReachedText(tool).view(), -5);
    }
    line += "  ";
    addFilled(line, tool.info.view(), -10);
    line += "  perf=";
    addFilled(line, bxDecimal(tool.funcClocks).view(), 9);
    line += '/';
    addFilled(line, bxDecimal(getDivisor()).view(), 9);
    line += '=';
    addFilled(line, perfString(false).view(), 9);
    line += " clocks";
    return bxString(std::move(line));
}

/** Name of the registered function that the engine's method calls. */
static const char* measuringFunction(const bxTest& test) {
    if (test.funcTool)
        return "oldMethod";
    if (test.funcCall && test.tool.includeDataSet)
        return "funcCall with Set&Use";
    if (test.funcCall && !test.funcLoop && !test.funcStat)
        return "funcCall";
    if (test.tool.precise && (test.funcLoop || test.funcCall))
        return test.funcLoop ? "loopMethod" : "funcCall";
    const bool callByCall =
        test.tool.method == bxTool::methodStat ? test.funcStat != nullptr : !test.funcLoop;
    return callByCall ? "statMethod" : "loopMethod";
}

bxString bxTest::regInfo() {
    struct Registered {
        bool present;
        const char* name;
    };
    const Registered functions[] = {{funcLoop != nullptr, "loopMethod"},
                                    {funcStat != nullptr, "statMethod"},
                                    {funcTool != nullptr, "oldMethod"},
                                    {funcCall != nullptr, "funcCall"},
                                    {initFunc != nullptr, "funcInit"}};
    bxString text = "   Test has been registered";
    if (!info.regKind.empty())
        text << " by " << info.regKind << " macro";
    bxString list;
    for (const Registered& function : functions)
        if (function.present)
            list << (list.empty() ? "" : ", ") << function.name;
    if (list.empty())
        return text << " without any function to call.\n No standard timing method is available";
    return text << " with " << list << ".\n   " << measuringFunction(*this) << " is called for measuring.";
}

// ---- Listing ----

void bxTest::outputResult(bxResult r) {
    if (r == UNDEFINED)
        return;
    putTextError(r);
    putTextResult(r);
    if (!bxIsFailure(r)) {
        putTableResult(r);
        putTableResult_Deprecated(r);
    } else if (bxKeepsGoing()) {
        putTableFailure(r);
    }
}

void bxTest::putTextError(bxResult r) {
    if (r <= OK)
        return;
    g_ostrm << (bxIsFailure(r) ? ERR : WARN) << "-- " << bxResultString(r) << " on test parameters:\n";
    putTextParms();
    g_ostrm << endMessage;
}

void bxTest::putTextResult(bxResult r) {
    const MessageLevel level = r == OK ? PERF : WARN;
    if (r == UNDEFINED || bxIsFailure(r) || !g_ostrm.shows(level))
        return;
    g_ostrm << level;
    if (r != OK)
        g_ostrm << "-- performance:\n";
    g_ostrm << (testResultString() << "\n") << endMessage;
}

void bxTest::putTextParms() {
    putTextParms(g_ostrm.msgLevel());
}

void bxTest::putTextParms(MessageLevel level) {
    if (!g_ostrm.shows(level))
        return;
    g_ostrm << level;
    if (cacheIter)
        g_ostrm << cacheIter->getComment() << ":";
    bxTraced("parmsToOstrm", [this] { parmsToOstrm(); });
    g_ostrm << "\n" << endMessage;
}

void bxTest::constToOstrm() {}

void bxTest::outputConst() {
    bxTraced("constToOstrm", [this] { constToOstrm(); });
}

void bxTest::outputRegInfo() {
    if (g_ostrm.shows(PERF))
        g_ostrm << PERF << regInfo() << "\n" << endMessage;
}

// ---- Tables ----

void bxTest::funcToCstrm() {
    g_cstrm << name;
}

void bxTest::resultToCstrm(bxResult) {
    g_cstrm << getComment() << perfString(false) << getUnit() << usecString(tool) << perfString(true)
            << (isHotLine() ? bxTable::hot : "");
}

void bxTest::putTableParms() {
    bxTraced("funcToCstrm", [this] { funcToCstrm(); });
    bxTraced("parmsToCstrm", [this] { parmsToCstrm(); });
    g_cstrm.setCellCount(m_numParmsColm);
}

void bxTest::putTableResult(bxResult r) {
    putTableParms();
    bxTraced("resultToCstrm", [this, r] { resultToCstrm(r); });
    g_cstrm.lineOut(m_numResultColm + m_numParmsColm);
}

void bxTest::putTableFailure(bxResult r) {
    putTableParms();
    g_cstrm << bxResultName(r);
    g_cstrm.lineOut(m_numResultColm + m_numParmsColm);
}

void bxTest::putTableResult_Deprecated(bxResult r) {
    if (setDeprecatedFlag(true)) {
        putTableParms();
        bxTraced("resultToCstrm", [this, r] { resultToCstrm(r); });
        g_cstrm.linePostpone();
    }
    setDeprecatedFlag(false);
}

void bxTest::putTableNameLine() {
    bxTraced("funcToCstrm", [this] { funcToCstrm(); });
    bxTraced("parmsNameToCstrm", [this] { parmsNameToCstrm(); });
    g_cstrm.setCellCount(m_numParmsColm);
    g_cstrm << bxTable::nameLine;
    g_cstrm.lineOut(m_numResultColm + m_numParmsColm);
}

namespace {

/** Sends the result table's lines to the outputs of the name table while it lives. */
class NameTableOutputs {
  public:
    NameTableOutputs() { exchange(); }
    ~NameTableOutputs() { exchange(); }
    NameTableOutputs(const NameTableOutputs&) = delete;
    NameTableOutputs& operator=(const NameTableOutputs&) = delete;

  private:
    static void exchange() { g_cstrm.swap(g_qstrm); }
};

} // namespace

void bxTest::putTableName() {
    if (bxSessionModes::m_nameMode & bxSessionModes::nameInResults)
        putTableNameLine();
    if (bxSessionModes::m_nameMode & bxSessionModes::nameInOwnTable) {
        const NameTableOutputs exchanged;
        bxGuarded([this] { putTableNameLine(); }); // a fault must not jump over the exchange back
    }
}
