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

const char* const o_help = "-o[<file-name>]  = create txt-file and write console output\n";
const char* const o_descr =
    R"(    Copies everything that the console listing shows to a new file; an old file of this name is
    replaced. Every -o and -O key opens one more file. A name without "." gets ".txt". An absolute
    path is attached to the key (-o/tmp/run.txt): a separate word that begins with "/" or "-" is a
    key. A relative name lies in the output directory (-l).
    Default: no file; -o alone: the output directory (-l), the title name (-n) and ".txt".
    Example: benchex -B -LP -o night   writes night.txt
)";
bxString o_info(bxString argument) {
    return bxString("write console output to ") + outPath(argument, extOut);
}
void o_apply(bxString argument, bxSession* session) {
    session->openOutput(g_ostrm, outPath(argument, extOut), false);
}

const char* const O_help = "-O[<file-name>]  = add console output to txt-file\n";
const char* const O_descr =
    R"(    As -o, but the listing is added to the end of the file. Every -o and -O key opens one more
    file.
    Default: no file; -O alone: the output directory (-l), the title name (-n) and ".txt".
    Example: benchex -B -O history     adds this run to history.txt
)";
bxString O_info(bxString argument) {
    return bxString("add console output to ") + outPath(argument, extOut);
}
void O_apply(bxString argument, bxSession* session) {
    session->openOutput(g_ostrm, outPath(argument, extOut), true);
}

const char* const L_help = "-L<ERR|WARN|PERF|INFO|TRACE|DATA> = set detail level of the console output\n";
const char* const L_descr =
    R"(    Chooses what the listing shows. Every capital letter counts, others do not:
        E    errors and the result of each test
        W    and warnings
        P    and the performance of each combination of parameters
        I    and the course of the measurement
        T    performance and the trace of the steps
        M    performance and memory information
        D    performance and the data before and after the call
    Letters and keys combine. Since each letter counts, -LDATA also shows the trace (its T); -LD
    does not.
    Default: -LERR.
    Example: benchex -B -LP            lists every figure
)";
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

const char* const r_help = "-r[<file-name>]  = create csv-file and write BX results\n";
const char* const r_descr =
    R"(    Writes the result table: title lines about the run (CPU, OS, Computer, a Library line for each
    part, Start: a label and a value each), a line of column titles, then one row for each measured
    combination of parameters. An old file of this name is replaced. Every -r and -R key opens one
    more file. A name without "." gets ".csv". An absolute path is attached to the key
    (-r/tmp/run.csv).
    Default: no file; -r alone: the output directory (-l), the title name (-n) and ".csv".
    Example: benchex -B -fFIR -r fir   writes fir.csv
)";
bxString r_info(bxString argument) {
    return bxString("write performance result table to ") + outPath(argument, extCsv);
}
void r_apply(bxString argument, bxSession* session) {
    session->openOutput(g_cstrm, outPath(argument, extCsv), false);
}

const char* const R_help = "-R[<file-name>]  = add BX results to csv-file\n";
const char* const R_descr =
    R"(    As -r, but the table is added to the end of the file, with its title lines and column titles.
    Every -r and -R key opens one more file.
    Default: no file; -R alone: the output directory (-l), the title name (-n) and ".csv".
    Example: benchex -B -R history     adds the results of this run to history.csv
)";
bxString R_info(bxString argument) {
    return bxString("add performance result table to ") + outPath(argument, extCsv);
}
void R_apply(bxString argument, bxSession* session) {
    session->openOutput(g_cstrm, outPath(argument, extCsv), true);
}

const char* const q_help =
    "-q[<file-name>]  = create csv-file (*_name.csv is default) and write function parameter name lines\n"
    "-q+              = add function parameter name lines to BX results table file\n";
const char* const q_descr =
    R"(    Writes one line for each function that names its parameters in the order of the result table.
        -q[<file-name>]    into a file of its own, behind title lines and column titles as those of
                           -r; every such key opens one more file
        -q+                into the result tables of -r and -R, before the rows of the function
    Default: no name lines; -q alone: the output directory (-l), the title name (-n) and "_name.csv".
    Example: benchex -B -q names -Q    writes names_name.csv and measures nothing
)";
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

const char* const Q_help = "-Q               = exit after function parameter name table creation\n";
const char* const Q_descr =
    R"(    The tests write their parameter name lines (-q) but measure nothing.
    Default: the tests are measured.
    Example: benchex -B -q -Q          makes only the table of parameter names
)";
bxString Q_info(bxString) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 "exit after function parameter name table creation and don't run tests\n");
}
void Q_apply(bxString, bxSession*) {
    bxSession::m_nameExit = true;
}

const char* const u_help =
    "-u[<file-name>]  = create csv-file and write summary table ('_sum' is added to default title name)\n";
const char* const u_descr =
    R"(    Writes the summary table: the title lines of -r, a line of column titles, one row for each test
    with its result, its time and the state of the floating-point control, then END_DATA and the
    counts of all results. An old file of this name is replaced. Every -u and -U key opens one more
    file. A name without "." gets "_sum.csv".
    Default: no file; -u alone: the output directory (-l), the title name (-n) and "_sum.csv".
    Example: benchex -B -u day1        writes day1_sum.csv
)";
bxString u_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 bxString("write summary table to ") + outPath(argument, extSum));
}
void u_apply(bxString argument, bxSession* session) {
    session->openOutput(g_ustrm, outPath(argument, extSum), false);
}

const char* const U_help =
    "-U[<file-name>]  = add summary table to csv-file ('_sum' is added to default title name)\n";
const char* const U_descr =
    R"(    As -u, but the table is added to the end of the file. Every -u and -U key opens one more file.
    Default: no file; -U alone: the output directory (-l), the title name (-n) and "_sum.csv".
    Example: benchex -B -U history     adds the summary of this run to history_sum.csv
)";
bxString U_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 bxString("add summary table to ") + outPath(argument, extSum));
}
void U_apply(bxString argument, bxSession* session) {
    session->openOutput(g_ustrm, outPath(argument, extSum), true);
}

const char* const g_help = "-g[<file-name>]  = create signal file at the end of the whole testing\n";
const char* const g_descr =
    R"(    The last thing that a run writes, also after an error or a wrong value: the duration as hours,
    minutes and seconds, and the time of the end. Its appearance tells a watching script that the
    run is over: one of an earlier run is removed when the run starts. A name without "." gets
    ".end". The last -g is valid.
    Default: no file; -g alone: the output directory (-l), the title name (-n) and ".end".
    Example: benchex -B -r -g done     writes done.end when the table is complete
)";
bxString g_info(bxString argument) {
    return bxString("create file ") + outPath(argument, extSgl) + " at the end of BX work";
}
void g_apply(bxString argument, bxSession* session) {
    session->setSglName(argument);
}

const char* const n_help = "-n<title-name>   = default title name for ini-file and output files\n";
const char* const n_descr =
    R"(    The name that -i, -I, -o, -O, -r, -R, -q, -u, -U and -g use when they give none. The position
    of this key on the command line does not matter. The last -n is valid.
    Default: the name of the program file without its extension.
    Example: benchex -B -n night -r -u   writes night.csv and night_sum.csv
)";
bxString n_info(bxString argument) {
    if (argument.length() == 0)
        return "ignored: empty default name";
    return bxString("name ini-file and output files as ") + argument + ".<proper-ext>";
}
void n_apply(bxString, bxSession*) {}

const char* const p_help =
    "-p<dir-name>     = default directory for input files i.e. ini & test data files\n";
const char* const p_descr =
    R"(    Where files are read from when their name is not absolute. A relative directory is relative to
    the directory of the program, not to the current one. The last -p is valid. When the program was
    found through PATH its directory is not known: the current one stands for it.
    Default: the directory of the program.
    Example: benchex -B -p settings -i night   reads settings/night.ini beside the program
)";
bxString p_info(bxString argument) {
    return directoryInfo("open test data files & ini-file in ", argument);
}
void p_apply(bxString, bxSession*) {}

const char* const l_help = "-l<dir-name>     = default directory for output files (listings)\n";
const char* const l_descr =
    R"(    Where files are written to when their name is not absolute. The directory has to exist. A
    relative one is relative to the directory of the program, not to the current one. The last -l
    is valid. When the program was found through PATH its directory is not known: the current one
    stands for it.
    Default: the directory of the program.
    Example: benchex -B -l/tmp/results -r   writes the result table into /tmp/results
)";
bxString l_info(bxString argument) {
    return directoryInfo("open output files in ", argument);
}
void l_apply(bxString, bxSession*) {}

std::span<const bxKeyRow> bxOutputKeys() {
    using enum bxKeyNeeds;
    constexpr bool shown = false;
    static const bxKeyRow rows[] = {
        {'o', nothing, shown, o_help, o_info, o_apply, o_descr, {&extOut}},
        {'O', nothing, shown, O_help, O_info, O_apply, O_descr, {&extOut}},
        {'L', nothing, shown, L_help, L_info, L_apply, L_descr},
        {'r', nothing, shown, r_help, r_info, r_apply, r_descr, {&extCsv}},
        {'R', nothing, shown, R_help, R_info, R_apply, R_descr, {&extCsv}},
        {'q', nameTables, shown, q_help, q_info, q_apply, q_descr, {&extName}},
        {'Q', nameTables, shown, Q_help, Q_info, Q_apply, Q_descr},
        {'u', nothing, shown, u_help, u_info, u_apply, u_descr, {&extSum}},
        {'U', nothing, shown, U_help, U_info, U_apply, U_descr, {&extSum}},
        {'g', nothing, shown, g_help, g_info, g_apply, g_descr, {&extSgl, true}},
        {'n', nothing, shown, n_help, n_info, n_apply, n_descr},
        {'p', nothing, shown, p_help, p_info, p_apply, p_descr},
        {'l', nothing, shown, l_help, l_info, l_apply, l_descr},
    };
    return rows;
}
