// Keys that show something instead of running the tests.
#include "framework/bxreports.h"
#include "session/bxkeys.h"
#include "session/bxsession.h"

char s_hintArg = 0;
bool s_hintHide = true;
bool s_version = false;

namespace {
/** A -e mode for each argument; the last row stands for any other. */
struct EnumMode {
    const char* argument;
    int mode;
    const char* text;
};
constexpr EnumMode enumModes[] = {
    {"+", bxReportList::functions, "enumerate applied and not applied library functions and exit"},
    {"-", bxReportList::missing, "enumerate not applied library functions and exit"},
    {nullptr, bxReportList::tests, "enumerate tested functions and exit"}};

const EnumMode& enumModeOf(const bxString& argument) {
    const EnumMode* row = enumModes;
    while (row->argument && !(argument == row->argument))
        ++row;
    return *row;
}

/** What help an argument of -h or -? asks for. */
char hintOf(const bxString& argument) {
    return argument.length() > 0 ? argument.c_str()[0] : hintShort;
}

bxString hintInfo(const bxString& argument, char full, const char* shortText, const char* fullText) {
    const char what = hintOf(argument);
    if (what == hintShort)
        return shortText;
    return what == full ? bxString(fullText)
                        : bxString("type extended help for -") + bxString(what) + " key and exit";
}
} // namespace

bxString e_info(bxString argument) {
    return bxSession::isExit(bxSession::exitHelp) ? bxSession::getExitInfo()
                                                  : bxString(enumModeOf(argument).text);
}
void e_apply(bxString argument, bxSession* session) {
    session->setEnumMode(enumModeOf(argument).mode);
}

bxString v_info(bxString) {
    return "type the version number of the Benchex and exit";
}
void v_apply(bxString, bxSession*) {
    s_version = true;
}

bxString h_info(bxString argument) {
    return hintInfo(argument, 'h', "type short help and exit", "type extended help and exit");
}
void h_apply(bxString argument, bxSession*) {
    s_hintHide = true;
    s_hintArg = hintOf(argument);
}

bxString hq_info(bxString argument) {
    return hintInfo(argument, '?', "type short help with hidden key sand exit",
                    "type extended help with hidden keys and exit");
}
void hq_apply(bxString argument, bxSession*) {
    s_hintHide = false;
    s_hintArg = hintOf(argument);
}
