// Keys that say what is written, and where.
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "output/bxpaths.h"
#include "output/bxstreams.h"
#include "session/bxkeys.h"
#include "session/bxsession.h"

namespace {
struct Level {
    char letter;
    OutputLevel mask;
};
constexpr Level levels[] = {{'E', outErr},   {'W', outWarn}, {'P', outPerf}, {'I', outInfo},
                            {'T', outTrace}, {'M', outMem},  {'D', outData}};

int levelOf(const bxString& argument) {
    int mask = 0;
    for (const char* c = argument.c_str(); *c != '\0'; ++c)
        for (const Level& row : levels)
            mask |= *c == row.letter ? row.mask : 0;
    return mask;
}

bxString outPath(const bxString& name, const bxString& extension) {
    return bxSession::genOutPath(name, extension);
}

bool toResultTable(const bxString& argument) {
    return argument.length() > 0 && argument.c_str()[0] == '+';
}

/** Report of -l and -p. */
bxString directoryInfo(const char* text, const bxString& argument) {
    if (argument.length() == 0)
        return "ignored: empty directory name";
    return bxString(text) + bxSession::genDirName(argument);
}
} // namespace

bxString L_info(bxString argument) {
    struct Name {
        MessageLevel bit;
        const char* text;
    };
    static constexpr Name names[] = {{ERR, "errors"},
                                     {WARN, ",warnings"},
                                     {PERF, ",performance results"},
                                     {INFO, ",measurement process"},
                                     {TRACE, ",tracing info"},
                                     {MEM, ",memory info"},
                                     {DATA, ",data info"}};
    const int mask = levelOf(argument);
    bxString text = "write ";
    for (const Name& name : names)
        text += (mask & name.bit) != 0 ? name.text : "";
    text += " to console";
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 mask != 0 ? text : bxString("ignored: incorrect level of console output"));
}
void L_apply(bxString argument, bxSession* session) {
    session->addLevelMode(static_cast<OutputLevel>(levelOf(argument)));
}

bxString o_info(bxString argument) {
    return bxString("write console output to ") + outPath(argument, extOut);
}
void o_apply(bxString argument, bxSession* session) {
    session->openOutput(g_ostrm, outPath(argument, extOut), false);
}

bxString O_info(bxString argument) {
    return bxString("add console output to ") + outPath(argument, extOut);
}
void O_apply(bxString argument, bxSession* session) {
    session->openOutput(g_ostrm, outPath(argument, extOut), true);
}

bxString r_info(bxString argument) {
    return bxString("write performance result table to ") + outPath(argument, extCsv);
}
void r_apply(bxString argument, bxSession* session) {
    session->openOutput(g_cstrm, outPath(argument, extCsv), false);
}

bxString R_info(bxString argument) {
    return bxString("add performance result table to ") + outPath(argument, extCsv);
}
void R_apply(bxString argument, bxSession* session) {
    session->openOutput(g_cstrm, outPath(argument, extCsv), true);
}

bxString q_info(bxString argument) {
    return bxSession::unlessExit(
        bxSession::exitEnumerate,
        toResultTable(argument)
            ? bxString("add function parameter name lines to csv files defined by -r & -R keys")
            : bxString("write function parameter name lines to ") + outPath(argument, extName));
}
void q_apply(bxString argument, bxSession* session) {
    if (toResultTable(argument)) {
        bxSession::m_nameMode |= bxSessionModes::nameInResults;
        return;
    }
    bxSession::m_nameMode |= bxSessionModes::nameInOwnTable;
    session->openOutput(g_qstrm, outPath(argument, extName), false);
}

bxString Q_info(bxString) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 "exit after function parameter name table creation and don't run tests\n");
}
void Q_apply(bxString, bxSession*) {
    bxSession::m_nameExit = true;
}

bxString u_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 bxString("write summary table to ") + outPath(argument, extSum));
}
void u_apply(bxString argument, bxSession* session) {
    session->openOutput(g_ustrm, outPath(argument, extSum), false);
}

bxString U_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 bxString("add summary table to ") + outPath(argument, extSum));
}
void U_apply(bxString argument, bxSession* session) {
    session->openOutput(g_ustrm, outPath(argument, extSum), true);
}

bxString g_info(bxString argument) {
    return bxString("create file ") + outPath(argument, extSgl) + " at the end of BX work";
}
void g_apply(bxString argument, bxSession* session) {
    session->setSglName(argument);
}

bxString n_info(bxString argument) {
    if (argument.length() == 0)
        return "ignored: empty default name";
    return bxString("name ini-file and output files as ") + argument + ".<proper-ext>";
}
void n_apply(bxString, bxSession*) {}

bxString p_info(bxString argument) {
    return directoryInfo("open test data files & ini-file in ", argument);
}
void p_apply(bxString, bxSession*) {}

bxString l_info(bxString argument) {
    return directoryInfo("open output files in ", argument);
}
void l_apply(bxString, bxSession*) {}
