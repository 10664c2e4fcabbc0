# The slower checks, one function each; run in the order of the list at the end.

sanitizer_options=handle_segv=0:handle_sigfpe=0:handle_sigill=0:handle_abort=0:handle_sigbus=0:use_sigaltstack=0
x86=(-DCMAKE_TOOLCHAIN_FILE="$here/cmake/x86.cmake")
clang=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++)

rules_of_the_tree() { tools/check_tree.py; }

tables_match_their_sources() { tools/make_tables.py --check && python3 zor/tables/check_tables.py; }

formatted() { git ls-files '*.cpp' '*.h' | grep -v '/tables/' | xargs clang-format --dry-run -Werror; }

# 32-bit x86: no warning, all tests pass (under the emulator where the kernel needs it).
x86_tests() { build_and_test x86 "${x86[@]}" -DBENCHEX_WERROR=ON -DCMAKE_BUILD_TYPE=Release; }

tns_batch() { "$@" -B -f TNS -L P -dMethod=Manual; }

x86_tns_under_the_emulator() {
    tns_batch qemu-i386 -cpu max "$work/x86/bin/benchex" &&
        tns_batch qemu-i386 -cpu max,vendor=GenuineQuarn "$work/x86/bin/benchex"
}

# The second compiler, without warnings, with its address and undefined-behaviour sanitizers: all tests and a run.
# Faults of tested functions are the harness's own business, so the sanitizers leave the signals alone. The functions
# that misbehave on purpose are left out: they ruin registers that instrumented code relies on. So is the comparison that
# has to find a slower side, which the instrumentation makes as slow as the other.
clang_with_sanitizers_tests() {
    local flags="-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer -O1"
    export ASAN_OPTIONS=$sanitizer_options
    left_out='^(Misbehave|robust)\.|^pair\.late$' build_and_test sanitized "${clang[@]}" -DBENCHEX_WERROR=ON -DBENCHEX_FUZZ=ON \
        -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="$flags" && tns_batch "$work/sanitized/bin/benchex"
}

# Each target for ten seconds, in the build with the sanitizers.
fuzz_targets_find_nothing() { FINDINGS="$work/fuzz-findings" fuzz/run 10 "$work/sanitized"; }

valgrind_finds_nothing() {
    valgrind -q --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite,indirect \
        build/bin/benchex -B -f TNS -dMethod=Manual -L P
}

# Without precompiled headers, which are GCC's, and would hide a missing include.
clang_tidy() {
    cmake -S . -B "$work/tidy" -G Ninja -DBENCHEX_TESTS=OFF -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >"$work/tidy.log" &&
        run-clang-tidy -quiet -p "$work/tidy" "$here/(api|binding|tools)/.*" 2>/dev/null | tee "$work/tidy.txt" |
        grep -E 'warning:|error:' && return 1 || return 0
}

cppcheck_finds_nothing() {
    cppcheck --quiet --std=c++20 --enable=warning,portability --inline-suppr --error-exitcode=1 -j2 \
        -I api/src -I binding -I zor/include --suppressions-list=.ci/cppcheck.txt api binding tools
}

# Without the libraries of the companion programs these are left out and named; the harness is there. (Its build would
# find the headers all the same, since they stand among the system's.)
without_companion_libraries() {
    local dir="$work/bare"
    rm -rf "$dir"
    cmake -S . -B "$dir" -G Ninja -DBENCHEX_TESTS=ON -DCMAKE_BUILD_TYPE=None -DCMAKE_IGNORE_PATH=/usr/include >"$dir.log" &&
        grep 'left out; not found: CLI/CLI.hpp.*nlohmann/json.hpp.*boost' "$dir.log" &&
        cmake --build "$dir" --target help >"$dir.targets" && grep -q '^benchex: ' "$dir.targets" &&
        ! grep -q '^benchex-report: ' "$dir.targets"
}

# The example for notebooks, with the Python that Debian's packages are for.
notebook_example() {
    local picture="$work/sizes.png"
    rm -f "$picture"
    build/bin/benchex-report --json -o "$work/report.json" tests/tools/tables &&
        /usr/bin/python3 examples/notebook/sizes.py "$work/report.json" zorsMDCTFwd_32f_I "$picture" |
        grep -E '^4096.0 +3.92 +2.61|^4096.0 +2.61 +3.92' && [ -s "$picture" ]
}

# Reproducible, without errors of lintian; installed, used and removed in a bare root.
debian_package() { .ci/package.sh "$work"; }

# A project outside of the tree, built against what `cmake --install` puts in place. Its test has three lengths.
example_against_the_installed_package() {
    local prefix="$work/installed" example="$work/example"
    rm -rf "$prefix" "$example"
    cmake --install build --prefix "$prefix" &&
        cmake -S examples/mylib -B "$example" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$prefix" &&
        cmake --build "$example" && "$example/mybench" -B -f mylib "-l$example" -r &&
        [ "$(grep -c '^mylibScale,' "$example/mybench.csv")" = 3 ]
}

# The report's page used in a browser, and its JSON against the schema: they need packages that the tests do without.
report_in_a_browser() { ctest --test-dir build --output-on-failure -R '^tools\.(browser|schema)$'; }

checks=(rules_of_the_tree tables_match_their_sources formatted report_in_a_browser x86_tests
    x86_tns_under_the_emulator clang_with_sanitizers_tests
    fuzz_targets_find_nothing without_companion_libraries debian_package notebook_example example_against_the_installed_package
    valgrind_finds_nothing clang_tidy cppcheck_finds_nothing)
