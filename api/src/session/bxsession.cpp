#include "session/bxsession.h"

#include "framework/bxhotlist.h"
#include "framework/bxinfotests.h"
#include "framework/bxlayouts.h"
#include "framework/bxregister.h"
#include "framework/bxreportformat.h"
#include "framework/bxreports.h"
#include "framework/bxrun.h"
#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "parameters/bxistream.h"
#include "parameters/bxparmlist.h"
#include "session/bxcallsetting.h"
#include "session/bxdialogue.h"
#include "session/bxgiven.h"
#include "session/bxinstructionsetting.h"
#include "session/bxkeys.h"
#include "session/bxlayoutsetting.h"
#include "session/bxprecisesetting.h"
#include "session/bxprotection.h"
#include "session/bxrunsettings.h"
#include "session/bxstrict.h"
#include "system/bxenvironment.h"
#include "timing/bxexception.h"

#include <array>
#include <ctime>

const char* const BX_version = "2.0";
int bxSession::m_exitLevel = bxSession::exitNone;

namespace {
/** What zor_Init answers where no core of the library is bound. */
constexpr int coreMissing = -2;
} // namespace

bxSession::bxSession() = default;

bxSession::~bxSession() {
    for (bxOption* option : m_options)
        delete option;
}

void bxSession::initSession() {
    m_askMode = 0;
    m_batchMode = false;
    m_quickMode = false;
    m_levelMode = outErr;
    m_enumMode = noEnumeration;

    const bool coreBound = zor_Init() != coreMissing;
    for (const bxKeyRow& row : bxKeyTable()) {
        const bool missing = (row.needs == bxKeyNeeds::nameTables && !qKeys) ||
                             (row.needs == bxKeyNeeds::libraryCore && !coreBound);
        if (!missing)
            initOption(row.key, row.help, row.info, row.apply, row.descr, row.hidden);
    }
}

int bxSession::run(int argc, char** argv) {
    const bxRunScope ownRun(g_run); // from what the program has set, and leaving nothing behind
    g_ostrm.setMsgLevel(PERF);
    attachConsole();
    setZorEnvironment();
    initSession();
    bxRegTest(new __bxQuarnCpuTest("__bxQuarnCpu", __FILE__, "__bxQuarnCpuTest/Quarn CPU information"));
    pTestList->startTime = std::time(nullptr);

    const bool goesOn = parseCommandLine(argc, argv) && startSession() && !quickOutput();
    const int status = goesOn ? measure() : 0;

    pTestList->endTime = std::time(nullptr);
    if (m_headerWritten)
        outputFooter();
    reportWriteFailures();
    outputSignal();
    deleteTestList();
    m_conditions = std::make_unique<bxConditions>();
    return exitStatus(status);
}

int bxSession::exitStatus(int status) const {
    constexpr int faultyRun = 2;
    return m_faulty && bxIsStrict() ? faultyRun : status;
}

void bxSession::attachConsole() {
    for (const o_stream* output : g_ostrm)
        if (output == &c_out)
            return;
    g_ostrm.push_back(&c_out);
}

int bxSession::measure() {
    applyLibrarySettings();
    if (!m_quickMode)
        sortTests();
    outputHeader();
    m_headerWritten = true;
    if (s_parmFunc)
        s_parmFunc();
    selectTestParameters();
    if (!settleCommonData())
        return 0;
    if (!g_pHotList)
        g_pHotList = new bxStringList;
    putTableTitle();
    const bool failed = pTestList->runTests(*m_conditions);
    if (pTestList->numTests == pTestList->numResults[UNDEFINED])
        m_faulty = true; // not one test has been measured
    if (!pTestList->interruptedBy && bxReportUnused(*pTestList))
        m_faulty = true;
    bxLayouts::end();
    tellShortFigures();
    return failed || pTestList->interruptedBy ? 1 : 0;
}

void bxSession::tellShortFigures() {
    if (g_run.shortAutoFigures > 0)
        g_ostrm << ERR << "-- " << g_run.shortAutoFigures << " of " << g_run.autoFigures
                << " figures are of calls under " << bxRun::shortForAuto
                << " clocks of the counter, for which Auto errs: use -dPrecise=yes\n"
                << endMessage;
}

void bxSession::applyLibrarySettings() {
    if (zorEnvironment) {
        initStaticCpu();
        setNumThreads();
        setZorEnvironment();
    }
    setZorLibInfo();
}

void bxSession::sortTests() {
    // Past the message stream: a listing file does not show it.
    c_out << "Sorting functions...";
    c_out.flush();
    pTestList->sortFunc();
    c_out << "\n";
}

bool bxSession::quickOutput() {
    if (s_version || s_hintArg != 0)
        g_ostrm << "\nQuarn(R) Calvix. Benchex " << BX_version << ", " << __DATE__ << "\n";
    if (s_hintArg != 0) {
        hint(s_hintArg, s_hintHide);
        return true;
    }
    if (m_enumMode == noEnumeration)
        return s_version;
    if (m_enumMode == bxReportList::tests && !m_quickMode)
        pTestList->sortFunc();
    listTests(m_enumMode);
    return true;
}

void bxSession::selectTestParameters() {
    if (!g_pParmList)
        return;
    const bool batchMode = m_batchMode;
    const int mode = m_askMode;
    m_batchMode = true;
    m_askMode = 0;
    g_istrm.expect(*g_pParmList);
    pTestList->selectCommonParms(*m_conditions, *g_pParmList);
    m_batchMode = batchMode;
    m_askMode = mode;
}

bool bxSession::settleCommonData() {
    beginCommonData();
    bool settled = true;
    try {
        readCommonData();
    } catch (const bxException& wrong) {
        g_ostrm << ERR << wrong.msg() << "\n-- No test has been run\n" << endMessageFlush;
        settled = false;
        m_faulty = true;
    }
    endCommonData();
    return settled;
}

void bxSession::beginCommonData() {
    g_ostrm.setOutLevel(outPerf);
}

void bxSession::endCommonData() {
    g_ostrm.setOutLevel(m_levelMode);
    if ((m_askMode & askTests) == 0)
        g_istrm.setIStream(nullptr);
}

void bxSession::readCommonData() {
    bxReadStrict();
    bxReadProtection();
    bxReadRunSettings();
    int asked = readTimingMethod();
    bxReadPrecise();
    bxReadInstructions();
    bxReadCalls();
    bxReadLayouts(m_batchMode);
    asked += readTestParameters() + readDataOffset();
    if (asked != 0)
        g_ostrm << ERR << getEnterTitle("End of common specifications") << endMessage;
}

bool bxSession::startSession() {
    return true;
}

void bxSession::addLevelMode(OutputLevel level) {
    m_levelMode = static_cast<OutputLevel>(m_levelMode | level);
}

void bxSession::setIniMode(bxString path, bool write) {
    m_iniName = path;
    m_iniWrite = write;
}

void bxSession::addCondition(RunCondition* condition) {
    m_conditions->push_back(condition);
}

void bxSession::setSglName(bxString name) {
    m_sglName = genOutPath(name, extSgl);
}

bool bxSession::isExit(int level) {
    return m_exitLevel >= level;
}

bxString bxSession::getExitInfo() {
    static constexpr std::array texts{"ignored", "ignored because of -e option",
                                      "ignored because of -h option", "ignored because of -v option"};
    const bool known = m_exitLevel > exitNone && m_exitLevel < static_cast<int>(texts.size());
    return texts[known ? static_cast<std::size_t>(m_exitLevel) : 0];
}

bxString bxSession::unlessExit(int level, bxString text) {
    return isExit(level) ? getExitInfo() : text;
}
