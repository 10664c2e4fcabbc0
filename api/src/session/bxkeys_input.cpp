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

/** A name and "="; without one the name is empty. */
bool isSetting(const bxString& argument) {
    bxString name = argument.substr(0, argument.find("="));
    name.trim();
    return !name.empty();
}

bxString iniPath(bxString argument) {
    return bxSession::genInPath(argument, extIni);
}
} // namespace

const char* const B_help = "-B               = batch mode (no console input)\n";
const char* const B_descr =
    R"(    Nothing is asked on the console: every value comes from a -d key, from the ini file (-i) or is
    the default. -B wins over -A, whatever their order.
    Default: without -A and -B the timing method and the common parameters are asked.
    Example: benchex -B -fMDCT -r      measures the MDCT functions without a question
)";
bxString B_info(bxString) {
    return bxSession::unlessExit(bxSession::exitEnumerate, "batch mode");
}
void B_apply(bxString, bxSession* session) {
    session->setBatchMode(true);
}

const char* const A_help = "-A<Timing|Params|Misalign|All> = set detail level of the console input\n";
const char* const A_descr =
    R"(    Chooses what is asked on the console. Only the capital letters count:
        -AT, -ATiming      timing method and accuracy
        -AP, -AParams      common parameters of the tests
        -AM, -AMisalign    alignment and shift of the test data
        -A, -AAll          all of these, and each test's own parameters before the test
    Letters and keys combine: -ATimingMisalign is the same as -AT -AM. -B switches all questions
    off. A parameter is asked only when neither a -d key nor the ini file gives its value.
    Default: -ATimingParams, unless -B is given.
    Example: benchex -AM -fFIR         asks for nothing but the data alignment
)";
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

const char* const d_help = "-d<name>=<value> = set BX parameter value\n";
const char* const d_descr =
    R"(    Sets a parameter of the session or of a test. This value has the highest priority: before the
    ini file, the console and the default. Keys combine; the last one for a name is valid. The
    value cannot hold "=", and an empty one stands for the default. A list is written 64;128;256,
    a range 16;1024;*2 (put quotes around them in a shell). -I shows the names of all parameters;
    a name that nothing asked for is named at the end. Beside these, Precise=yes measures by
    differences against a chain of additions and gives core clocks with their 95 % interval, to
    within PreciseAccuracy (per cent; the Accuracy where it is not given); Instructions=yes counts
    the instructions of a call, up to InstructionsMost (200000); Calls=<n> times n single calls and
    tells the longest; Cold=yes times calls with empty caches; Layouts=<n> measures in n places of
    code, data and stack (batch mode only); WatchdogSeconds=<n> ends a combination that takes
    longer; GuardBlocks=yes ends test data at a protected page; RandomData=<n> fills data with
    random values up to n in place of constants; KeepGoing=yes lets a failure end its combination
    and not the test; FlushToZero=no lets functions compute with denormal numbers as programs do;
    Strict=yes gives the exit status 2 when the run ended before its tests, no test ran, a key or a
    name was not known, or an output could not be written.
    Default: no value is set.
    Example: benchex -B -dMethod=Manual -dNumLoops=100
)";
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

const char* const i_help = "-i[<file-name>]  = read BX parameters from ini-file\n";
const char* const i_descr =
    R"(    Reads parameter values from an ini file. The section [Benchex] holds the common parameters;
    each function has a section of its name. A value counts only where no -d key gives one;
    parameters that the file does not give are asked on the console (-A) or get their defaults. A
    file that cannot be read is reported, and the run goes on without it. Keys and sections that
    nothing asked for are named at the end. The last of all -i and -I keys is valid. -I makes a
    file with all parameters and their allowed values.
    Default: the input directory (-p), the title name (-n) and ".ini".
    Example: benchex -B -i night       reads night.ini beside the program
)";
bxString i_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate, bxString("read from ") + iniPath(argument));
}
void i_apply(bxString argument, bxSession* session) {
    session->setIniMode(iniPath(argument), false);
}

const char* const I_help = "-I[<file-name>]  = write BX parameters to ini-file and exit\n";
const char* const I_descr =
    R"(    Writes the parameters of every selected test with their present values into an ini file, one
    section for each function and [Benchex] for the common parameters; the allowed values stand
    behind as a comment. Of what the file already holds, sections, keys and values are kept in
    their order, unless a -d key changes a value; your own comments, blank lines and lines before
    the first section are not. The file is written at the end of the run.
    Nothing is measured. The last of all -i and -I keys is valid.
    Default: the input directory (-p), the title name (-n) and ".ini".
    Example: benchex -B -fTNS -I tns   makes tns.ini, to be edited and read back with -i tns
)";
bxString I_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 bxString("write BX parameters to ") + iniPath(argument) + " and exit");
}
void I_apply(bxString argument, bxSession* session) {
    session->setIniMode(iniPath(argument), true);
}

const char* const P_help = "-P               = read tested function names from ini-file\n";
const char* const P_descr =
    R"(    Measures only those functions that have a section in the ini file. Has an effect together with
    -i only. Selection by -f, -t and -H still applies.
    Default: the functions in the ini file do not limit the run.
    Example: benchex -B -i night -P    runs the functions that night.ini names
)";
bxString P_info(bxString) {
    return bxSession::unlessExit(bxSession::exitEnumerate, "read tested function names from ini-file if any");
}
void P_apply(bxString, bxSession*) {
    bxTest::m_pressing = true;
}

std::span<const bxKeyRow> bxInputKeys() {
    using enum bxKeyNeeds;
    constexpr bool shown = false;
    static const bxKeyRow rows[] = {
        {'B', nothing, shown, B_help, B_info, B_apply, B_descr},
        {'A', nothing, shown, A_help, A_info, A_apply, A_descr},
        {'d', nothing, shown, d_help, d_info, d_apply, d_descr},
        {'i', nothing, shown, i_help, i_info, i_apply, i_descr, {&extIni, true, bxPaths::genInPath}},
        {'I', nothing, shown, I_help, I_info, I_apply, I_descr, {&extIni, true, bxPaths::genInPath}},
        {'P', nothing, shown, P_help, P_info, P_apply, P_descr},
    };
    return rows;
}
