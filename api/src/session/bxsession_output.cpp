// What a session writes beside the reports of the tests: table heads, run title, summary, enumeration and
// signal file.
#include "framework/bxreportformat.h"
#include "framework/bxreports.h"
#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "output/bxtable.h"
#include "parameters/bxistream.h"
#include "session/bxsession.h"

#include <ctime>

void bxSession::funcTitleToCStream() {
    g_cstrm << bxTable::function << bxTable::types << bxTable::descriptor;
}

void bxSession::parmsTitleToCStream() {
    for (int i = 1; i <= bxTable::parameters; ++i)
        g_cstrm << (bxString(bxTable::parameterLetter) << i);
}

void bxSession::resultTitleToCStream() {
    g_cstrm << bxTable::comment << bxTable::clocks << bxTable::unit << bxTable::microseconds
            << bxTable::mflops;
    if (bxTest::m_hot != bxTest::hotOff)
        g_cstrm << bxTable::interest;
}

void bxSession::putTableTitle() {
    putTableTitleLine();
    if ((m_nameMode & nameInOwnTable) != 0) {
        g_cstrm.swap(g_qstrm);
        putTableTitleLine();
        g_cstrm.swap(g_qstrm);
    }
}

void bxSession::putTableTitleLine() {
    funcTitleToCStream();
    parmsTitleToCStream();
    bxTest::m_numParmsColm = g_cstrm.cellCount();
    resultTitleToCStream();
    bxTest::m_numResultColm = g_cstrm.cellCount() - bxTest::m_numParmsColm;
    g_cstrm.lineOut(0);
}

void bxSession::listTests(int mode) {
    const bxReportTitle title(*pTestList);
    g_ostrm << title;
    g_cstrm << title;
    const bxReportList list(*pTestList, *m_conditions, mode);
    g_ostrm << list;
    g_cstrm << list;
}

void bxSession::outputHeader() {
    const bxReportTitle title(*pTestList);
    g_ostrm << title;
    g_cstrm << title;
    g_qstrm << title;
    g_ustrm << title << bxReportTestResult(nullptr);
}

/** Says of a run whose tests all count as successes that it measured none of them. */
static void tellNothingMeasured() {
    const bool writesIni = g_istrm.iniFile() && g_istrm.updateIni();
    if (!writesIni && !bxSessionModes::m_nameExit)
        return;
    g_ostrm << ERR << "-- Nothing has been measured: "
            << (writesIni ? "-I only writes the parameters\n"
                          : "-Q only writes the names of the parameters\n")
            << endMessage;
}

void bxSession::outputFooter() {
    tellNothingMeasured();
    const bxReportEnd summary(*pTestList);
    g_ostrm << summary;
    g_ustrm << summary;
}

void bxSession::outputSignal() {
    if (m_sglName.empty())
        return;
    o_stream file(m_sglName, ioWrite | ioNameAsGiven, true);
    if (!file.handle()) {
        m_faulty = true;
        return;
    }
    const double seconds = std::difftime(pTestList->endTime, pTestList->startTime);
    file << bxReportFormat::getTimeStr(static_cast<int>(seconds)) << "\n"
         << std::ctime(&pTestList->endTime) << "\n";
    file.flush();
    if (file.failed())
        reportUnwritten(m_sglName);
}

void bxSession::openOutput(bxOutputs& stream, const bxString& path, bool append) {
    if (m_shared.first != 0) // nothing is opened, so that nothing is lost
        return;
    if (!stream.addStream(path, append)) {
        unopenedFile();
        return;
    }
    auto last = stream.end();
    m_outputFiles.push_back({path, *--last});
}

void bxSession::reportUnwritten(const bxString& path) {
    m_faulty = true;
    g_ostrm << ERR << "-- Can't write all of file " << path << "\n" << endMessageFlush;
}

void bxSession::reportWriteFailures() {
    if (!g_istrm.writeIniFile())
        m_faulty = true;
    for (bxOutputs* stream : {static_cast<bxOutputs*>(&g_ostrm), static_cast<bxOutputs*>(&g_cstrm),
                              static_cast<bxOutputs*>(&g_qstrm), static_cast<bxOutputs*>(&g_ustrm)})
        stream->flush();
    for (const OutputFile& output : m_outputFiles)
        if (output.file->failed())
            reportUnwritten(output.path);
    if (c_out.failed()) {
        m_faulty = true;
        std::fputs("-- Can't write all of the listing to standard output\n", stderr);
    }
}
