#!/usr/bin/env bash
# Builds and passes all tests, native. Arguments go to ctest, BENCHEX_CMAKE_ARGS to cmake.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${BENCHEX_BUILD:-$here/build}

"$here/tools/install_packages.sh" test
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBENCHEX_TESTS=ON ${BENCHEX_CMAKE_ARGS:-}
cmake --build "$build"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" "$@"
