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

const char* const e_help = "-e               = enumerate tests and exit\n";
const char* const e_descr = "";
bxString e_info(bxString argument) {
    return bxSession::isExit(bxSession::exitHelp) ? bxSession::getExitInfo()
                                                  : bxString(enumModeOf(argument).text);
}
void e_apply(bxString argument, bxSession* session) {
    session->setEnumMode(enumModeOf(argument).mode);
}

const char* const v_help = "-v               = type the version number of the Benchex and exit\n";
const char* const v_descr = "";
bxString v_info(bxString) {
    return "type the version number of the Benchex and exit";
}
void v_apply(bxString, bxSession*) {
    s_version = true;
}

const char* const h_help = "-h               = type short help and exit\n"
                           "-hh              = type extended help and exit\n"
                           "-h<key>          = type extended help for the key and exit\n";
const char* const h_descr =
    R"(    A key is written as "-" or "/" and one character; its argument follows at once or as the next
    word: -oout.txt and -o out.txt are the same. A next word that begins with "-" or "/" is a key
    of its own, so such an argument is attached: -o/tmp/out.txt, -N1. Keys that may be given
    several times either combine (A, L, d, f, t) or open one more file each time (o, O, r, R, q,
    u, U); of all others the last one is valid. Without any key the first line of the file
    <program>.cfg is read as the keys, if there is one in the current directory or beside the
    program; quotes group words with blanks there. --help and --version are -h and -v.
    Default: no help.
    Example: benchex -hf               explains the key -f
)";
bxString h_info(bxString argument) {
    return hintInfo(argument, 'h', "type short help and exit", "type extended help and exit");
}
void h_apply(bxString argument, bxSession*) {
    s_hintHide = true;
    s_hintArg = hintOf(argument);
}

const char* const hq_help = "";
const char* const hq_descr = "-?               = type short help with hidden keys and exit\n"
                             "-??              = type extended help with hidden keys and exit\n"
                             "-?<key>          = type extended help for the key and exit\n"
                             "If several -? keys present in command line then only the last key "
                             "is valid\n";
bxString hq_info(bxString argument) {
    return hintInfo(argument, '?', "type short help with hidden key sand exit",
                    "type extended help with hidden keys and exit");
}
void hq_apply(bxString argument, bxSession*) {
    s_hintHide = false;
    s_hintArg = hintOf(argument);
}

std::span<const bxKeyRow> bxExitKeys() {
    using enum bxKeyNeeds;
    constexpr bool shown = false;
    static const bxKeyRow rows[] = {
        {'e', nothing, shown, e_help, e_info, e_apply, e_descr},
        {'v', nothing, shown, v_help, v_info, v_apply, v_descr},
        {'h', nothing, shown, h_help, h_info, h_apply, h_descr},
        {'?', nothing, shown, hq_help, hq_info, hq_apply, hq_descr},
    };
    return rows;
}
