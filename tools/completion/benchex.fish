# fish completion for benchex and its companion programs

# Names of the program's tests: column 2 the functions, 3 the tests.
function __benchex_names
    set -l program (commandline -opc)[1]
    $program -e 2>/dev/null </dev/null | string match -r '^ *[0-9]+\t.*' | cut -f$argv[1] | sort -u
end

function __benchex_processors
    set -l program (commandline -opc)[1]
    $program -hT 2>/dev/null </dev/null | sed '1,/Processor types:/d' | string split -n ' '
end

# Names for -d: the settings of every program, and the parameters of this one's tests, which -I writes.
function __benchex_settings
    set -l program (commandline -opc)[1]
    set -l place (mktemp -d)
    $program -B "-I$place/names.ini" >/dev/null 2>&1 </dev/null
    begin
        string split ' ' "Accuracy AlignVectorsBy Calls Cold FlushToZero GuardBlocks Instructions InstructionsFile \
InstructionsMost InstructionsRow InstructionsSteps KeepGoing Layouts Method MisalignFirstVectorOnly \
MutualVectorShift NumCalls NumLoops Precise PreciseAccuracy RandomData StartNumLoops StopNumLoops Strict \
TotalCpuClocks VectorAlign WatchdogSeconds"
        sed -n 's/^\([^[/=][^=]*\)=.*/\1/p' $place/names.ini 2>/dev/null
    end | sort -u | string replace -r '$' =
    rm -rf $place
end

# key, kind of its argument, words, what it is for
function __benchex_key
    switch $argv[2]
        case none
            complete -c benchex -s $argv[1] -d $argv[3]
        case file
            complete -c benchex -s $argv[1] -rF -d $argv[3]
        case directory
            complete -c benchex -s $argv[1] -xa '(__fish_complete_directories (commandline -ct | string replace -r "^-." ""))' -d $argv[3]
        case '*'
            complete -c benchex -s $argv[1] -xa $argv[2] -d $argv[3]
    end
end

complete -c benchex -f
__benchex_key B none 'no console input'
__benchex_key A 'Timing Params Misalign All' 'what the console asks'
__benchex_key d '(__benchex_settings)' 'set a value'
__benchex_key i file 'read values from an ini file'
__benchex_key I file 'write values to an ini file and exit'
__benchex_key P none 'read function names from the ini file'
__benchex_key o file 'write the listing to a file'
__benchex_key O file 'add the listing to a file'
__benchex_key L 'ERR WARN PERF INFO TRACE DATA' 'detail level of the listing'
__benchex_key r file 'write a result table'
__benchex_key R file 'add to a result table'
__benchex_key q file 'write a table of parameter names'
__benchex_key Q none 'exit after the parameter names'
__benchex_key u file 'write a summary table'
__benchex_key U file 'add to a summary table'
__benchex_key g file 'write a signal file at the end'
__benchex_key p directory 'directory of input files'
__benchex_key l directory 'directory of output files'
__benchex_key f '(__benchex_names 2)' 'functions with this in their name'
__benchex_key t '(__benchex_names 3)' 'tests with this in their name'
__benchex_key F '(__benchex_names 2)' 'start at this function'
__benchex_key Y 'HIGH NORMAL' 'process priority'
__benchex_key H ONLY 'mark hot functions, or run only them'
__benchex_key T '(__benchex_processors)' 'code path of the library'
__benchex_key s none 'sort the functions'
__benchex_key e none 'list the tests and exit'
__benchex_key v none version
__benchex_key h none help

for program in benchex-report benchex-compare
    complete -c $program -f -a '(__fish_complete_suffix .csv)'
    complete -c $program -l partial -d 'accept tables whose last line is cut off'
    complete -c $program -s h -l help -d help
    complete -c $program -l version -d version
    complete -c $program -l json -d 'write JSON'
end
complete -c benchex-report -s o -l output -rF -d 'file to write'
complete -c benchex-report -l table -d 'write the last run as a table for the terminal'
complete -c benchex-report -l history -d 'the tables are of many builds in their order'
complete -c benchex-report -l rows -d 'each row of a history by itself'
complete -c benchex-report -l alarm -x -d 'exit status 1 for a slower level in the last builds'
complete -c benchex-report -l title -x -d 'title of the page'
complete -c benchex-report -l chart-library -rF -d 'script of the chart library'
complete -c benchex-compare -l pair -rF -d 'run two sides against each other'
complete -c benchex-compare -l seconds -x -d 'for all of a pair'
complete -c benchex-compare -l limit -x -d 'seconds for one combination of a pair'
complete -c benchex-compare -l outputs -x -a equal -d 'what counts as right: equal, or dB'
complete -c benchex-compare -l outputs-only -d 'compare no times'
complete -c benchex-compare -l instructions -d 'count, and compare no times'
complete -c benchex-compare -l program -rF -d 'of a side that names none'
complete -c benchex-compare -l seed -x -d 'of the layouts of memory'
complete -c benchex-compare -l before -rF -d 'tables of the first side'
complete -c benchex-compare -l after -rF -d 'tables of the second side'
complete -c benchex-compare -l threshold -x -d 'slowdown allowed, percent'
complete -c benchex-compare -l alpha -x -d 'probability of a false alarm, percent'
complete -c benchex-compare -l accuracy -x -d 'of a figure that states none, percent'
complete -c benchex-compare -l time -d 'compare microseconds per call'
complete -c benchex-compare -l all -d 'list rows that are the same'
complete -c benchex-compare -l csv -d 'write csv'
for option in 'row/which combination of its parameters' 'line/line of the table' 'blocks/how many of the hottest blocks' \
    'most/steps after which a call is given up'
    set -l parts (string split -m 1 / $option)
    complete -c benchex-explain -l $parts[1] -x -d $parts[2]
end
for option in 'table/a result table' 'steps/a file of steps' 'program/the program'
    set -l parts (string split -m 1 / $option)
    complete -c benchex-explain -l $parts[1] -rF -d $parts[2]
end
for option in 'all/all combinations' 'no-clocks/do not measure' 'no-limits/do not compare with the machine' \
    'measure/measure the machine again' 'json/write JSON' 'version/version' 'help/help'
    set -l parts (string split -m 1 / $option)
    complete -c benchex-explain -f -l $parts[1] -d $parts[2]
end
complete -c benchex-new -f
complete -c benchex-new -l header -rF -d 'include the file, which declares the functions'
complete -c benchex-new -l link -rF -d 'link a library in the project'
complete -c benchex-new -l project -xa '(__fish_complete_directories)' -d 'write a new project'
complete -c benchex-new -s h -l help -d help
complete -c benchex-new -l version -d version
