# bash completion for benchex and its companion programs

# Lines "function<TAB>test" of the program's tests. Asked once per program file and kept for the shell's life.
_benchex_tests() {
    local program=$1
    if [[ ${_benchex_asked-} != "$program" ]]; then
        _benchex_asked=$program
        _benchex_list=$("$program" -e 2>/dev/null </dev/null | awk -F'\t' '$1 ~ /^ *[0-9]+$/ { print $2 "\t" $3 }')
    fi
    printf '%s\n' "$_benchex_list"
}

# Names for -d: the settings of every program, and the parameters of this one's tests, which -I writes.
_benchex_settings() {
    local program=$1 place
    place=$(mktemp -d) || return
    "$program" -B "-I$place/names.ini" >/dev/null 2>&1 </dev/null
    {
        printf '%s\n' Accuracy AlignVectorsBy Calls Cold FlushToZero GuardBlocks Instructions InstructionsFile \
            InstructionsMost InstructionsRow InstructionsSteps KeepGoing Layouts Method MisalignFirstVectorOnly \
            MutualVectorShift NumCalls NumLoops Precise PreciseAccuracy RandomData StartNumLoops StopNumLoops Strict \
            TotalCpuClocks VectorAlign WatchdogSeconds
        sed -n 's/^\([^[/=][^=]*\)=.*/\1/p' "$place/names.ini" 2>/dev/null
    } | sort -u
    rm -rf "$place"
}

# Candidates behind a key and its sign (prefix): words that begin with what is typed.
_benchex_words() {
    local prefix=$1 typed=$2 words=$3
    mapfile -t COMPREPLY < <(compgen -P "$prefix" -W "$words" -- "$typed")
}

# Files or directories; what readline does for plain names is done here, since a key may stand before the name.
_benchex_files() {
    local prefix=$1 typed=$2 kind=$3 name
    COMPREPLY=()
    while IFS= read -r name; do
        [[ -d $name ]] && name+=/
        COMPREPLY+=("$prefix$name")
    done < <(compgen "$kind" -- "$typed")
    [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == */ ]] && compopt -o nospace 2>/dev/null
    return 0
}

# The argument of a key: completes what stands behind "prefix".
_benchex_argument() {
    local program=$1 key=$2 prefix=$3 typed=$4
    case $key in
    f | F)
        _benchex_words "$prefix" "$typed" "$(_benchex_tests "$program" | cut -f1)"
        ;;
    t)
        _benchex_words "$prefix" "$typed" "$(_benchex_tests "$program" | cut -f2 | sort -u)"
        ;;
    A) _benchex_words "$prefix" "$typed" "Timing Params Misalign All" ;;
    L) _benchex_words "$prefix" "$typed" "ERR WARN PERF INFO TRACE DATA" ;;
    Y) _benchex_words "$prefix" "$typed" "HIGH NORMAL" ;;
    H) _benchex_words "$prefix" "$typed" "ONLY" ;;
    T)
        _benchex_words "$prefix" "$typed" \
            "$("$program" -hT 2>/dev/null </dev/null | sed '1,/Processor types:/d')"
        ;;
    d)
        local name
        while IFS= read -r name; do
            [[ $name == "${typed//\\/}"* ]] && COMPREPLY+=("$prefix$(printf %q "$name")=")
        done < <(_benchex_settings "$program")
        compopt -o nospace 2>/dev/null
        return 0
        ;;
    p | l) _benchex_files "$prefix" "$typed" -d ;;
    i | I | o | O | r | R | q | u | U | g) _benchex_files "$prefix" "$typed" -f ;;
    h | \?) _benchex_words "$prefix" "$typed" "h A B d e f F g H i I l L n N o O p P r R s S t T u U v Y" ;;
    esac
}

_benchex() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local program=${COMP_WORDS[0]}
    COMPREPLY=()
    # bash takes "=" for a word of its own: "-f=na" arrives as "-f" "=" "na".
    if [[ $current == = || $previous == = ]]; then
        local typed=${current#=}
        local word=$previous
        [[ $previous == = ]] && word=${COMP_WORDS[COMP_CWORD - 2]}
        [[ $word == -[ft] ]] && _benchex_argument "$program" "${word:1:1}" "" "$typed"
        return
    fi
    if [[ $current == [-/]?* ]]; then
        local key=${current:1:1} rest=${current:2} sign=
        if [[ $key == [ft] && $rest == [-+]* ]]; then
            sign=${rest:0:1}
            rest=${rest:1}
        fi
        _benchex_argument "$program" "$key" "${current:0:2}$sign" "$rest"
        # A key that takes no argument, or whose argument is finished, completes to itself.
        [[ ${#COMPREPLY[@]} -eq 0 && -z $rest ]] && COMPREPLY=("$current")
        return
    fi
    if [[ $previous == -[a-zA-Z] ]]; then
        _benchex_argument "$program" "${previous:1:1}" "" "$current"
        [[ ${#COMPREPLY[@]} -gt 0 || -n $current ]] && return
    fi
    _benchex_words "" "$current" \
        "-A -B -d -e -f -F -g -H -h -i -I -l -L -n -N -o -O -p -P -r -R -s -t -T -u -U -v -Y"
}

_benchex_tables() {
    local current=${COMP_WORDS[COMP_CWORD]} options=$1
    COMPREPLY=()
    if [[ $current == -* ]]; then
        _benchex_words "" "$current" "$options"
        return
    fi
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -X '!*.csv' -- "$current"; compgen -d -- "$current")
}

_benchex_report() {
    case ${COMP_WORDS[COMP_CWORD - 1]} in
    -o | --output | --chart-library) _benchex_files "" "${COMP_WORDS[COMP_CWORD]}" -f ;;
    *) _benchex_tables "--output --json --table --history --rows --alarm --title \
        --chart-library --partial --help --version" ;;
    esac
}

_benchex_compare() {
    _benchex_tables "--pair --seconds --limit --outputs --outputs-only --instructions --program --seed \
        --before --after --threshold --alpha --accuracy --time --all --csv --json --partial --help --version"
}

_benchex_explain() {
    local typed=${COMP_WORDS[COMP_CWORD]}
    case ${COMP_WORDS[COMP_CWORD - 1]} in
    --table | --steps | --program) _benchex_files "" "$typed" -f ;;
    --row | --line | --blocks | --most) ;;
    *)
        if [[ $typed == -* ]]; then
            _benchex_words "" "$typed" "--row --all --table --line --steps --blocks --most --program --no-clocks \
                --no-limits --measure --json --help --version"
        else
            _benchex_words "" "$typed" "$(_benchex_tests benchex | cut -f1)"
        fi
        ;;
    esac
}

_benchex_new() {
    case ${COMP_WORDS[COMP_CWORD - 1]} in
    --header) _benchex_files "" "${COMP_WORDS[COMP_CWORD]}" -f ;;
    --project) _benchex_files "" "${COMP_WORDS[COMP_CWORD]}" -d ;;
    *) _benchex_words "" "${COMP_WORDS[COMP_CWORD]}" "--header --link --project --help --version" ;;
    esac
}

complete -F _benchex benchex
complete -F _benchex_new benchex-new
complete -F _benchex_report benchex-report
complete -F _benchex_compare benchex-compare
complete -F _benchex_explain benchex-explain
