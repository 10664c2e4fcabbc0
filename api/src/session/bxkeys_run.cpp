// Keys that say what is measured, and how: selection and order of the tests, priority, library settings, data
// in the measured time, cache sizes.
#include "framework/bxconditions.h"
#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "session/bxkeys.h"
#include "session/bxsession.h"
#include "system/bxcputype.h"
#include "system/bxenvironment.h"
#include "system/bxpriority.h"
#include "timing/bxtool.h"

namespace {
/** Report of a condition around its pattern. */
struct ConditionText {
    const char* before;
    const char* after;
};

/** `texts` has a row for each kind of condition. */
bxString conditionInfo(bxString argument, const ConditionText (&texts)[4], const char* empty) {
    const int kind = getCondition(argument);
    return bxSession::unlessExit(bxSession::exitHelp,
                                 kind == condNone ? bxString(empty)
                                                  : texts[kind].before + argument + texts[kind].after);
}

void addCondition(bxString argument, bxTestedName tested, bxSession* session) {
    static constexpr bxNameMatch matches[] = {bxNameMatch::contains, bxNameMatch::alsoContains,
                                              bxNameMatch::lacks, bxNameMatch::equals}; // by kind
    const int kind = getCondition(argument);
    if (kind != condNone)
        session->addCondition(new bxRuleCondition({tested, matches[kind], argument}));
}

bool isOnly(const bxString& argument) {
    return argument.length() > 0 && argument.c_str()[0] == 'O';
}
bool isUnsorted(const bxString& argument) {
    return argument == "-";
}

struct Priority {
    char letter;
    bxPriority value; /**< of bxTool::m_priority */
    const char* name;
};
constexpr Priority priorities[] = {
    {'H', prioHigh, "high"}, {'N', prioNormal, "normal"}, {'L', prioLow, "low"}};

const Priority* priorityOf(const bxString& argument) {
    for (const Priority& row : priorities)
        if (argument.length() > 0 && argument.c_str()[0] == row.letter)
            return &row;
    return nullptr;
}

/** 0 for text that is no number. */
int threadsOf(bxString argument) {
    int threads = 0;
    threads << argument;
    return threads;
}

const char* const noEnvironment = "ignored: <zorcore.h> is not included before <kv.h> in test files";
} // namespace

const char* const f_help = "-f < or-pattern> = run tests for functions with pattern in name\n"
                           "-f-<not-pattern> = don't run tests for functions with pattern in name\n"
                           "-f+<and-pattern> = run only tests for functions with pattern in name\n"
                           "-f=< eq-pattern> = run tests for function with this full name\n";
const char* const f_descr =
    R"(    Selects tests by the name of the measured function; capital and small letters differ.
        -f<text>     functions whose name holds the text, or that another -f or -t admits
        -f=<name>    the function of exactly this name, or what another -f or -t admits
        -f+<text>    of all these only functions whose name holds the text
        -f-<text>    of all these only functions whose name does not hold the text
    Keys combine. -e shows what a selection admits.
    Default: all tests.
    Example: benchex -B -fMDCT -fDCT -f-Inv   MDCT and DCT functions without the inverse ones
)";
bxString f_info(bxString argument) {
    static constexpr ConditionText texts[4] = {{"test functions containing '", "'"},
                                               {"don't test functions without '", "' in the name"},
                                               {"don't test functions containing '", "'"},
                                               {"test function equal to '", "'"}};
    return conditionInfo(argument, texts, "ignored: empty function pattern");
}
void f_apply(bxString argument, bxSession* session) {
    addCondition(argument, bxTestedName::function, session);
}

const char* const t_help = "-t[-/+/=]<patrn> = run (don't run) tests with pattern in test name\n";
const char* const t_descr =
    R"(    As -f, for the name of the test (the column "Test" of -e):
        -t<text>     tests whose name holds the text, or that another -t or -f admits
        -t=<name>    the test of exactly this name, or what another -t or -f admits
        -t+<text>    of all these only tests whose name holds the text
        -t-<text>    of all these only tests whose name does not hold the text
    Keys combine, with -f as well.
    Default: all tests.
    Example: benchex -B -tAAC -fMP3    tests named AAC and tests of functions named MP3
)";
bxString t_info(bxString argument) {
    static constexpr ConditionText texts[4] = {{"run tests containing ", ""},
                                               {"don't run tests which doesn't contain ", ""},
                                               {"don't run tests containing ", ""},
                                               {"run test equal to ", ""}};
    return conditionInfo(argument, texts, "ignored: empty test pattern");
}
void t_apply(bxString argument, bxSession* session) {
    addCondition(argument, bxTestedName::test, session);
}

const char* const F_help = "-F<func-name>    = start testing from function with func-name full name\n";
const char* const F_descr =
    R"(    Passes over the selected tests until the first one whose function name holds the given name;
    this test and all after it run. The order is that of -e. Useful to go on after a broken run.
    The last -F is valid.
    Default: the run starts with the first selected test.
    Example: benchex -B -FzorsMDCTInv_32f -R   goes on with this function and adds to the old table
)";
bxString F_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 bxString("start testing from ") + argument + " function");
}
void F_apply(bxString argument, bxSession*) {
    bxTestList::m_startFunc = argument;
}

const char* const Y_help = "-Y<HIGH|NORMAL>  = set high or normal process prioritY (normal is default)\n";
const char* const Y_descr =
    R"(    Priority of the process while it measures; it is put back afterwards. The first letter counts:
    H high, N normal, L low. High priority needs the rights for it. The last valid -Y holds.
    Default: -YNORMAL.
    Example: benchex -B -YHIGH -fFIR
)";
bxString Y_info(bxString argument) {
    const Priority* priority = priorityOf(argument);
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 priority ? bxString("set ") + priority->name + " process priority"
                                          : bxString("ignored: incorrect process priority value"));
}
void Y_apply(bxString argument, bxSession*) {
    if (const Priority* priority = priorityOf(argument))
        bxTool::m_priority = priority->value;
}

const char* const H_help =
    "-H[ONLY]         = add 'Interest' column to table file [and run only hot tests]\n";
const char* const H_descr =
    R"(    Marks functions of special interest.
        -H           adds the column "Interest" to the result table; it reads Hot for such functions
        -HONLY       runs only such functions (the letter O is enough)
    The last -H is valid.
    Default: no such column, all tests.
    Example: benchex -B -HONLY -r hot
)";
bxString H_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitHelp, isOnly(argument)
                                                          ? "run tests for hot functions only"
                                                          : "add 'Interest' column to table file");
}
void H_apply(bxString argument, bxSession*) {
    bxTest::m_hot = isOnly(argument) ? bxTest::hotOnly : bxTest::hotColumn;
}

const char* const T_help = "-T[<cpu-name>]   = call zorInitStaticCpu( zorCpu<cpu-name> )\n";
// The first TAB stands for the list of processor types.
const char* const T_descr =
    R"(    Makes the tested library use its code for the given processor type instead of the type that it
    finds itself. Works only when the core of the library is integrated into the program. A type
    that this processor cannot run is refused by the library, which then chooses by itself. An
    unknown name cancels an earlier -T. The last -T is valid.
    Default: the library chooses.
    Example: benchex -B -TSSE2 -fFIR
    Processor types:
)"
    "\t\n";
bxString T_info(bxString argument) {
    bxString text = bxString("call zorInitStaticCpu ( zorCpu") + argument + " )";
    if (!zorEnvironment)
        text = noEnvironment;
    else if (bxCpuType::cpuType(argument) == -1)
        text = "ignored: incorrect CPU type";
    return text;
}
void T_apply(bxString argument, bxSession*) {
    s_cpuType = bxCpuType::cpuType(argument);
}

const char* const N_help = "-N[<num-threads>]= call zorSetNumThreads( <num-threads> )\n";
const char* const N_descr =
    R"(    Tells the tested library how many threads it may use. Works only when the core of the library
    is integrated into the program. A value below 1 cancels an earlier -N. The last -N is valid.
    Default: the library is not told a number.
    Example: benchex -B -N 1
)";
bxString N_info(bxString argument) {
    bxString text = bxString("call zorSetNumThreads(") + argument + ")";
    if (!zorEnvironment)
        text = noEnvironment;
    else if (threadsOf(argument) < 1)
        text = "ignored: incorrect number of threads";
    return text;
}
void N_apply(bxString argument, bxSession*) {
    s_numThreads = threadsOf(argument);
}

const char* const S_help = "-SU              = measure functions with data set & use\n";
const char* const S_descr =
    R"(    The measured time then includes setting up and using the data of each call.
    Default: only the call is measured.
    Example: benchex -B -SU -fFIR
)";
bxString S_info(bxString) {
    return bxSession::unlessExit(bxSession::exitEnumerate, "include to measurement data set & use time");
}
void S_apply(bxString, bxSession*) {
    g_tool.includeDataSet = true;
}

const char* const C_help =
    "-C               = run tests with data in cache and out of cache (if that is supported by test)\n";
const char* const C_descr =
    R"(    The sizes of the test data are chosen so that the data lie inside and outside of the caches.
    Tests that do not support this say so and are not measured.
    Default: the sizes that the parameters of the test give.
    Example: benchex -B -C -tInterleave
)";
bxString C_info(bxString) {
    return bxSession::unlessExit(
        bxSession::exitEnumerate,
        "test data size will be in cache and out of cache if that is supported by test");
}
void C_apply(bxString, bxSession*) {
    bxTest::m_cache = true;
}

const char* const s_help = "-s[-]            = sort or don't sort functions (sort mode is default)\n";
const char* const s_descr =
    R"(    The order of the tests in the listing, in the tables and in the list of -e.
        -s           sorted by function
        -s-          in the order in which the program registered them
    The last -s is valid.
    Default: -s.
    Example: benchex -e -s-
)";
bxString s_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitHelp,
                                 isUnsorted(argument) ? "don't sort functions" : "sort functions");
}
void s_apply(bxString argument, bxSession* session) {
    session->setQuickMode(isUnsorted(argument));
}

std::span<const bxKeyRow> bxRunKeys() {
    using enum bxKeyNeeds;
    constexpr bool shown = false;
    constexpr bool hidden = true;
    static const bxKeyRow rows[] = {
        {'f', nothing, shown, f_help, f_info, f_apply, f_descr},
        {'t', nothing, shown, t_help, t_info, t_apply, t_descr},
        {'F', nothing, shown, F_help, F_info, F_apply, F_descr},
        {'Y', nothing, shown, Y_help, Y_info, Y_apply, Y_descr},
        {'H', nothing, shown, H_help, H_info, H_apply, H_descr},
        {'T', libraryCore, shown, T_help, T_info, T_apply, T_descr},
        {'N', libraryCore, shown, N_help, N_info, N_apply, N_descr},
        {'S', nothing, hidden, S_help, S_info, S_apply, S_descr},
        {'C', nothing, hidden, C_help, C_info, C_apply, C_descr},
        {'s', nothing, shown, s_help, s_info, s_apply, s_descr},
    };
    return rows;
}
