#!/usr/bin/env bash
# Installs the Debian packages that a job needs and this machine lacks:
#   tools/install_packages.sh build   to build and run the program
#   tools/install_packages.sh test    to build and pass the tests
#   tools/install_packages.sh check   for the slower checks
#   tools/install_packages.sh bench   for the comparison benches
#   tools/install_packages.sh coverage   for the line coverage
# What cannot be installed is named; the job goes on and fails only where it cannot do without.
set -u
declare -A needs=(
    [build]="g++ cmake ninja-build"
    [test]="g++ cmake ninja-build libgtest-dev libgmock-dev python3 parallel"
    [check]="clang clang-format clang-tidy cppcheck valgrind g++-multilib qemu-user googletest libclang-rt-14-dev
        chromium chromium-driver libjs-chart.js python3-jsonschema"
    [bench]="g++ cmake ninja-build python3 libbenchmark-dev libfftw3-dev python3-matplotlib"
    [coverage]="g++ cmake ninja-build libgtest-dev libgmock-dev python3 gcovr"
)
job=${1:-build}
missing=()
for package in ${needs[$job]:?unknown job}; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

if command -v apt-get >/dev/null && [ "$(id -u)" = 0 ]; then
    echo "Installing: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get install -y -qq "${missing[@]}" >/dev/null 2>&1 ||
        { apt-get update -qq && apt-get install -y -qq "${missing[@]}" >/dev/null; } ||
        echo "Could not install all of: ${missing[*]}"
else
    echo "Not installed, and no right to install: ${missing[*]}"
fi
exit 0
