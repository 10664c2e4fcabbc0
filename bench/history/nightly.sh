#!/usr/bin/env bash
# Tries the nightly jobs of docs/users-guide.md as they are written there, on this project's own library: states of its
# history are pulled, built and measured one after another, each on a night of its own.
#   bench/history/nightly.sh DIR pairs|tables [NIGHTS]
# The project in DIR/mylib holds the library alone. What a night's job printed is in DIR/mails. Called again with the same
# DIR, it goes on behind the last night that was run to its end. Variables: FIRST, the commit to begin with, PROGRAMS,
# where benchex is (build/bin), and SECONDS_MOST, after which no further night begins.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
mkdir -p "${1:?directory to work in}/mails" "$1/bin"
directory=$(cd "$1" && pwd)
kind=${2:?pairs or tables}
nights=${3:-30}
first=${FIRST:-a919895} # from here on the library's files and functions have the names of today
programs=${PROGRAMS:-$root/build/bin}

# The job: the lines of the guide below its name, with the place of the project.
sed -n "/^    # nightly $kind:/,/^\$/s/^    //p" "$root/docs/users-guide.md" |
    sed "s|/home/me/mylib|$directory/mylib|" >"$directory/job"
[ -s "$directory/job" ]
# The guide's job runs once a night: so does the calendar here.
cat >"$directory/bin/date" <<END
#!/bin/sh
exec $(command -v date) -d "2026-01-01 +\$(cat "$directory/night") days" "\$@"
END
chmod +x "$directory/bin/date"

upstream=$directory/upstream
if [ ! -e "$directory/done" ]; then
    rm -rf "$upstream" "$directory/mylib"
    git init -q "$upstream"
    git -C "$upstream" config user.name nightly
    git -C "$upstream" config user.email nightly@localhost
    cat >"$upstream/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.22)
project(benchex LANGUAGES CXX)
include(GNUInstallDirs)
include(cmake/benchex_target.cmake)
add_subdirectory(zor)
set_target_properties(zorcore zors zorac zordc PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
END
    printf '/build\n/nights\n/last\n/history.html\n' >"$upstream/.gitignore"
    git -C "$root" rev-list --first-parent --reverse "$first..HEAD" >"$directory/commits"
    echo 0 >"$directory/done"
fi

mapfile -t commits <"$directory/commits"
echo "$nights nights of ${#commits[@]} commits"
for night in $(seq $(($(cat "$directory/done") + 1)) "$nights"); do
    [ "$SECONDS" -lt "${SECONDS_MOST:-1000000}" ] || break
    commit=${commits[$(((${#commits[@]} - 1) * (night - 1) / (nights > 1 ? nights - 1 : 1)))]}
    echo "$night" >"$directory/night"
    rm -rf "$upstream/zor"
    git -C "$root" archive "$commit" zor cmake/benchex_target.cmake | tar -x -C "$upstream"
    git -C "$upstream" add -A
    git -C "$upstream" commit -q --allow-empty -m "$(git -C "$root" log -1 --format='%h %s' "$commit")"
    if [ ! -d "$directory/mylib" ]; then
        git clone -q "$upstream" "$directory/mylib"
        cmake -S "$directory/mylib" -B "$directory/mylib/build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
    fi
    status=0
    start=$SECONDS
    PATH=$directory/bin:$programs:$PATH sh -e "$directory/job" >"$directory/mails/$night" 2>&1 || status=$?
    echo "night $night, $(git -C "$upstream" log -1 --format=%h), $(git -C "$root" log -1 --format='%h %s' "$commit" |
        cut -c1-60): status $status, $((SECONDS - start)) s"
    echo "$night" >"$directory/done"
done
