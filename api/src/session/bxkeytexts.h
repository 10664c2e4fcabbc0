/** \file
 * Help line and extended description of every key. Lines of at most 100 characters.
 */
#ifndef BXKEYTEXTS_H
#define BXKEYTEXTS_H

inline constexpr const char* B_help = "-B               = batch mode (no console input)\n";
inline constexpr const char* B_descr =
    R"(    Nothing is asked on the console: every value comes from a -d key, from the ini file (-i) or is
    the default. -B wins over -A, whatever their order.
    Default: without -A and -B the timing method and the common parameters are asked.
    Example: benchex -B -fMDCT -r      measures the MDCT functions without a question
)";

inline constexpr const char* A_help =
    "-A<Timing|Params|Misalign|All> = set detail level of the console input\n";
inline constexpr const char* A_descr =
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

inline constexpr const char* d_help = "-d<name>=<value> = set BX parameter value\n";
inline constexpr const char* d_descr =
    R"(    Sets a parameter of the session or of a test. This value has the highest priority: before the
    ini file, the console and the default. Keys combine; the last one for a name is valid. The
    value cannot hold "=", and an empty one stands for the default. A list is written 64;128;256,
    a range 16;1024;*2 (put quotes around them in a shell). -I shows the names of all parameters;
    a name that nothing asked for is named at the end. Beside these, Precise=yes measures by
    differences against a chain of additions and gives core clocks with their 95 % interval, to
    within PreciseAccuracy (per cent; the Accuracy where it is not given); Instructions=yes counts
    the instructions of a call, up to InstructionsMost (200000); WatchdogSeconds=<n> ends a
    combination that takes longer; GuardBlocks=yes ends test data at a protected page;
    Strict=yes gives the exit status 2 when the run ended before its tests, no test ran, a key or a
    name was not known, or an output could not be written.
    Default: no value is set.
    Example: benchex -B -dMethod=Manual -dNumLoops=100
)";

inline constexpr const char* i_help = "-i[<file-name>]  = read BX parameters from ini-file\n";
inline constexpr const char* i_descr =
    R"(    Reads parameter values from an ini file. The section [Benchex] holds the common parameters;
    each function has a section of its name. A value counts only where no -d key gives one;
    parameters that the file does not give are asked on the console (-A) or get their defaults. A
    file that cannot be read is reported, and the run goes on without it. Keys and sections that
    nothing asked for are named at the end. The last of all -i and -I keys is valid. -I makes a
    file with all parameters and their allowed values.
    Default: the input directory (-p), the title name (-n) and ".ini".
    Example: benchex -B -i night       reads night.ini beside the program
)";

inline constexpr const char* I_help = "-I[<file-name>]  = write BX parameters to ini-file and exit\n";
inline constexpr const char* I_descr =
    R"(    Writes the parameters of every selected test with their present values into an ini file, one
    section for each function and [Benchex] for the common parameters; the allowed values stand
    behind as a comment. Of what the file already holds, sections, keys and values are kept in
    their order, unless a -d key changes a value; your own comments, blank lines and lines before
    the first section are not. The file is written at the end of the run.
    Nothing is measured. The last of all -i and -I keys is valid.
    Default: the input directory (-p), the title name (-n) and ".ini".
    Example: benchex -B -fTNS -I tns   makes tns.ini, to be edited and read back with -i tns
)";

inline constexpr const char* P_help = "-P               = read tested function names from ini-file\n";
inline constexpr const char* P_descr =
    R"(    Measures only those functions that have a section in the ini file. Has an effect together with
    -i only. Selection by -f, -t and -H still applies.
    Default: the functions in the ini file do not limit the run.
    Example: benchex -B -i night -P    runs the functions that night.ini names
)";

inline constexpr const char* o_help = "-o[<file-name>]  = create txt-file and write console output\n";
inline constexpr const char* o_descr =
    R"(    Copies everything that the console listing shows to a new file; an old file of this name is
    replaced. Every -o and -O key opens one more file. A name without "." gets ".txt". An absolute
    path is attached to the key (-o/tmp/run.txt): a separate word that begins with "/" or "-" is a
    key. A relative name lies in the output directory (-l).
    Default: no file; -o alone: the output directory (-l), the title name (-n) and ".txt".
    Example: benchex -B -LP -o night   writes night.txt
)";

inline constexpr const char* O_help = "-O[<file-name>]  = add console output to txt-file\n";
inline constexpr const char* O_descr =
    R"(    As -o, but the listing is added to the end of the file. Every -o and -O key opens one more
    file.
    Default: no file; -O alone: the output directory (-l), the title name (-n) and ".txt".
    Example: benchex -B -O history     adds this run to history.txt
)";

inline constexpr const char* L_help =
    "-L<ERR|WARN|PERF|INFO|TRACE|DATA> = set detail level of the console output\n";
inline constexpr const char* L_descr =
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

inline constexpr const char* r_help = "-r[<file-name>]  = create csv-file and write BX results\n";
inline constexpr const char* r_descr =
    R"(    Writes the result table: title lines about the run (CPU, OS, Computer, a Library line for each
    part, Start: a label and a value each), a line of column titles, then one row for each measured
    combination of parameters. An old file of this name is replaced. Every -r and -R key opens one
    more file. A name without "." gets ".csv". An absolute path is attached to the key
    (-r/tmp/run.csv).
    Default: no file; -r alone: the output directory (-l), the title name (-n) and ".csv".
    Example: benchex -B -fFIR -r fir   writes fir.csv
)";

inline constexpr const char* R_help = "-R[<file-name>]  = add BX results to csv-file\n";
inline constexpr const char* R_descr =
    R"(    As -r, but the table is added to the end of the file, with its title lines and column titles.
    Every -r and -R key opens one more file.
    Default: no file; -R alone: the output directory (-l), the title name (-n) and ".csv".
    Example: benchex -B -R history     adds the results of this run to history.csv
)";

inline constexpr const char* q_help =
    "-q[<file-name>]  = create csv-file (*_name.csv is default) and write function parameter name lines\n"
    "-q+              = add function parameter name lines to BX results table file\n";
inline constexpr const char* q_descr =
    R"(    Writes one line for each function that names its parameters in the order of the result table.
        -q[<file-name>]    into a file of its own, behind title lines and column titles as those of
                           -r; every such key opens one more file
        -q+                into the result tables of -r and -R, before the rows of the function
    Default: no name lines; -q alone: the output directory (-l), the title name (-n) and "_name.csv".
    Example: benchex -B -q names -Q    writes names_name.csv and measures nothing
)";

inline constexpr const char* Q_help =
    "-Q               = exit after function parameter name table creation\n";
inline constexpr const char* Q_descr =
    R"(    The tests write their parameter name lines (-q) but measure nothing.
    Default: the tests are measured.
    Example: benchex -B -q -Q          makes only the table of parameter names
)";

inline constexpr const char* u_help =
    "-u[<file-name>]  = create csv-file and write summary table ('_sum' is added to default title name)\n";
inline constexpr const char* u_descr =
    R"(    Writes the summary table: the title lines of -r, a line of column titles, one row for each test
    with its result, its time and the state of the floating-point control, then END_DATA and the
    counts of all results. An old file of this name is replaced. Every -u and -U key opens one more
    file. A name without "." gets "_sum.csv".
    Default: no file; -u alone: the output directory (-l), the title name (-n) and "_sum.csv".
    Example: benchex -B -u day1        writes day1_sum.csv
)";

inline constexpr const char* U_help =
    "-U[<file-name>]  = add summary table to csv-file ('_sum' is added to default title name)\n";
inline constexpr const char* U_descr =
    R"(    As -u, but the table is added to the end of the file. Every -u and -U key opens one more file.
    Default: no file; -U alone: the output directory (-l), the title name (-n) and "_sum.csv".
    Example: benchex -B -U history     adds the summary of this run to history_sum.csv
)";

inline constexpr const char* g_help =
    "-g[<file-name>]  = create signal file at the end of the whole testing\n";
inline constexpr const char* g_descr =
    R"(    The last thing that a run writes, also after an error or a wrong value: the duration as hours,
    minutes and seconds, and the time of the end. Its appearance tells a watching script that the
    run is over: one of an earlier run is removed when the run starts. A name without "." gets
    ".end". The last -g is valid.
    Default: no file; -g alone: the output directory (-l), the title name (-n) and ".end".
    Example: benchex -B -r -g done     writes done.end when the table is complete
)";

inline constexpr const char* n_help = "-n<title-name>   = default title name for ini-file and output files\n";
inline constexpr const char* n_descr =
    R"(    The name that -i, -I, -o, -O, -r, -R, -q, -u, -U and -g use when they give none. The position
    of this key on the command line does not matter. The last -n is valid.
    Default: the name of the program file without its extension.
    Example: benchex -B -n night -r -u   writes night.csv and night_sum.csv
)";

inline constexpr const char* p_help =
    "-p<dir-name>     = default directory for input files i.e. ini & test data files\n";
inline constexpr const char* p_descr =
    R"(    Where files are read from when their name is not absolute. A relative directory is relative to
    the directory of the program, not to the current one. The last -p is valid. When the program was
    found through PATH its directory is not known: the current one stands for it.
    Default: the directory of the program.
    Example: benchex -B -p settings -i night   reads settings/night.ini beside the program
)";

inline constexpr const char* l_help = "-l<dir-name>     = default directory for output files (listings)\n";
inline constexpr const char* l_descr =
    R"(    Where files are written to when their name is not absolute. The directory has to exist. A
    relative one is relative to the directory of the program, not to the current one. The last -l
    is valid. When the program was found through PATH its directory is not known: the current one
    stands for it.
    Default: the directory of the program.
    Example: benchex -B -l/tmp/results -r   writes the result table into /tmp/results
)";

inline constexpr const char* f_help =
    "-f < or-pattern> = run tests for functions with pattern in name\n"
    "-f-<not-pattern> = don't run tests for functions with pattern in name\n"
    "-f+<and-pattern> = run only tests for functions with pattern in name\n"
    "-f=< eq-pattern> = run tests for function with this full name\n";
inline constexpr const char* f_descr =
    R"(    Selects tests by the name of the measured function; capital and small letters differ.
        -f<text>     functions whose name holds the text, or that another -f or -t admits
        -f=<name>    the function of exactly this name, or what another -f or -t admits
        -f+<text>    of all these only functions whose name holds the text
        -f-<text>    of all these only functions whose name does not hold the text
    Keys combine. -e shows what a selection admits.
    Default: all tests.
    Example: benchex -B -fMDCT -fDCT -f-Inv   MDCT and DCT functions without the inverse ones
)";

inline constexpr const char* t_help = "-t[-/+/=]<patrn> = run (don't run) tests with pattern in test name\n";
inline constexpr const char* t_descr =
    R"(    As -f, for the name of the test (the column "Test" of -e):
        -t<text>     tests whose name holds the text, or that another -t or -f admits
        -t=<name>    the test of exactly this name, or what another -t or -f admits
        -t+<text>    of all these only tests whose name holds the text
        -t-<text>    of all these only tests whose name does not hold the text
    Keys combine, with -f as well.
    Default: all tests.
    Example: benchex -B -tAAC -fMP3    tests named AAC and tests of functions named MP3
)";

inline constexpr const char* F_help =
    "-F<func-name>    = start testing from function with func-name full name\n";
inline constexpr const char* F_descr =
    R"(    Passes over the selected tests until the first one whose function name holds the given name;
    this test and all after it run. The order is that of -e. Useful to go on after a broken run.
    The last -F is valid.
    Default: the run starts with the first selected test.
    Example: benchex -B -FzorsMDCTInv_32f -R   goes on with this function and adds to the old table
)";

inline constexpr const char* Y_help =
    "-Y<HIGH|NORMAL>  = set high or normal process prioritY (normal is default)\n";
inline constexpr const char* Y_descr =
    R"(    Priority of the process while it measures; it is put back afterwards. The first letter counts:
    H high, N normal, L low. High priority needs the rights for it. The last valid -Y holds.
    Default: -YNORMAL.
    Example: benchex -B -YHIGH -fFIR
)";

inline constexpr const char* H_help =
    "-H[ONLY]         = add 'Interest' column to table file [and run only hot tests]\n";
inline constexpr const char* H_descr =
    R"(    Marks functions of special interest.
        -H           adds the column "Interest" to the result table; it reads Hot for such functions
        -HONLY       runs only such functions (the letter O is enough)
    The last -H is valid.
    Default: no such column, all tests.
    Example: benchex -B -HONLY -r hot
)";

inline constexpr const char* T_help = "-T[<cpu-name>]   = call zorInitStaticCpu( zorCpu<cpu-name> )\n";
// The first TAB stands for the list of processor types.
inline constexpr const char* T_descr =
    R"(    Makes the tested library use its code for the given processor type instead of the type that it
    finds itself. Works only when the core of the library is integrated into the program. A type
    that this processor cannot run is refused by the library, which then chooses by itself. An
    unknown name cancels an earlier -T. The last -T is valid.
    Default: the library chooses.
    Example: benchex -B -TSSE2 -fFIR
    Processor types:
)"
    "\t\n";

inline constexpr const char* N_help = "-N[<num-threads>]= call zorSetNumThreads( <num-threads> )\n";
inline constexpr const char* N_descr =
    R"(    Tells the tested library how many threads it may use. Works only when the core of the library
    is integrated into the program. A value below 1 cancels an earlier -N. The last -N is valid.
    Default: the library is not told a number.
    Example: benchex -B -N 1
)";

inline constexpr const char* S_help = "-SU              = measure functions with data set & use\n";
inline constexpr const char* S_descr =
    R"(    The measured time then includes setting up and using the data of each call.
    Default: only the call is measured.
    Example: benchex -B -SU -fFIR
)";

inline constexpr const char* C_help =
    "-C               = run tests with data in cache and out of cache (if that is supported by test)\n";
inline constexpr const char* C_descr =
    R"(    The sizes of the test data are chosen so that the data lie inside and outside of the caches.
    Tests that do not support this say so and are not measured.
    Default: the sizes that the parameters of the test give.
    Example: benchex -B -C -tInterleave
)";

inline constexpr const char* s_help =
    "-s[-]            = sort or don't sort functions (sort mode is default)\n";
inline constexpr const char* s_descr =
    R"(    The order of the tests in the listing, in the tables and in the list of -e.
        -s           sorted by function
        -s-          in the order in which the program registered them
    The last -s is valid.
    Default: -s.
    Example: benchex -e -s-
)";

inline constexpr const char* e_help = "-e               = enumerate tests and exit\n";
inline constexpr const char* e_descr = "";

inline constexpr const char* v_help = "-v               = type the version number of the Benchex and exit\n";
inline constexpr const char* v_descr = "";

inline constexpr const char* h_help = "-h               = type short help and exit\n"
                                      "-hh              = type extended help and exit\n"
                                      "-h<key>          = type extended help for the key and exit\n";
inline constexpr const char* h_descr =
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

inline constexpr const char* hq_help = "";
inline constexpr const char* hq_descr = "-?               = type short help with hidden keys and exit\n"
                                        "-??              = type extended help with hidden keys and exit\n"
                                        "-?<key>          = type extended help for the key and exit\n"
                                        "If several -? keys present in command line then only the last key "
                                        "is valid\n";

#endif
