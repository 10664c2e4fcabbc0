// Keys that say where values come from: console, command line, ini file.
#include "framework/bxtest.h"
#include "output/bxpaths.h"
#include "parameters/bxistream.h"
#include "session/bxdialogue.h"
#include "session/bxkeys.h"
#include "session/bxsession.h"

namespace {
constexpr int askAll = askTiming | askParameters | askAlignment | askTests;

/** Without any letter that counts, everything is asked. */
int askModeOf(const bxString& argument) {
    struct Letter {
        char letter;
        int mode;
    };
    static constexpr Letter letters[] = {{'T', askTiming}, {'P', askParameters}, {'M', askAlignment}};
    int mode = 0;
    for (const char* c = argument.c_str(); *c != '\0'; ++c)
        for (const Letter& row : letters)
            mode |= *c == row.letter ? row.mode : 0;
    return mode != 0 ? mode : askAll;
}

/** A name and "=". */
bool isSetting(const bxString& argument) {
    bxString name = argument.substr(0, argument.find("="));
    name.trim();
    return argument.find("=") >= 0 && !name.empty();
}

bxString iniPath(bxString argument) {
    return bxSession::genInPath(argument, extIni);
}
} // namespace

bxString B_info(bxString) {
    return bxSession::unlessExit(bxSession::exitEnumerate, "batch mode");
}
void B_apply(bxString, bxSession* session) {
    session->setBatchMode(true);
}

bxString A_info(bxString argument) {
    struct Part {
        int mode;
        const char* text;
    };
    static constexpr Part parts[] = {{askTiming, " timing method"},
                                     {askParameters, " common parameters"},
                                     {askAlignment, " data misalignment"},
                                     {askTests, " each test parameters"}};
    const int mode = askModeOf(argument);
    bxString text;
    for (const Part& part : parts)
        if ((mode & part.mode) != 0)
            text += bxString(text.length() > 0 ? "," : "") + part.text;
    return bxSession::unlessExit(bxSession::exitEnumerate, bxString("ask") + text + " from console");
}
void A_apply(bxString argument, bxSession* session) {
    session->addAskMode(askModeOf(argument));
}

bxString d_info(bxString argument) {
    bxString text = bxString("set BX parameter ") + argument;
    if (argument.length() == 0)
        text = "ignored: empty data argument";
    else if (!isSetting(argument))
        text = "ignored: incorrect data format";
    else if (argument.find("=", argument.find("=") + 1) >= 0)
        text += " (without what follows the second =)";
    return bxSession::unlessExit(bxSession::exitEnumerate, text);
}
void d_apply(bxString argument, bxSession*) {
    if (isSetting(argument))
        g_istrm.dataList().set(argument);
}

bxString i_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate, bxString("read from ") + iniPath(argument));
}
void i_apply(bxString argument, bxSession* session) {
    session->setIniMode(iniPath(argument), false);
}

bxString I_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 bxString("write BX parameters to ") + iniPath(argument) + " and exit");
}
void I_apply(bxString argument, bxSession* session) {
    session->setIniMode(iniPath(argument), true);
}

bxString P_info(bxString) {
    return bxSession::unlessExit(bxSession::exitEnumerate, "read tested function names from ini-file if any");
}
void P_apply(bxString, bxSession*) {
    bxTest::m_pressing = true;
}
