#!/usr/bin/env bash
# Installs the Debian packages that a job needs and this machine lacks:
#   tools/install_packages.sh build   to build and run the program
#   tools/install_packages.sh test    to build and pass the tests
#   tools/install_packages.sh check   for the slower checks
#   tools/install_packages.sh bench   for the comparison benches
#   tools/install_packages.sh coverage   for the line coverage
# What cannot be installed is named; the job goes on and fails only where it cannot do without.
set -u
companions="libcli11-dev nlohmann-json3-dev libboost-math-dev libzydis-dev" # without them the companion programs are left out
declare -A needs=(
    [build]="g++ cmake ninja-build $companions libjs-chart.js"
    [test]="g++ cmake ninja-build $companions libgtest-dev libgmock-dev python3 parallel"
    [check]="clang clang-format clang-tidy cppcheck valgrind g++-multilib qemu-user googletest libclang-rt-14-dev
        chromium chromium-driver libjs-chart.js python3-jsonschema zsh fish lintian debootstrap
        python3-pandas python3-matplotlib lame mpg123 ffmpeg"
    [bench]="g++ cmake ninja-build python3 libbenchmark-dev libfftw3-dev libliquid-dev python3-matplotlib
        lame mpg123 ffmpeg libavcodec-dev"
    [coverage]="g++ cmake ninja-build $companions libgtest-dev libgmock-dev python3 gcovr"
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
    install() { apt-get install -y -qq "$@" >/dev/null 2>&1; }
    if ! install "${missing[@]}" && ! { apt-get update -qq && install "${missing[@]}"; }; then
        # One that cannot be had does not keep the others away.
        for package in "${missing[@]}"; do
            install "$package" || echo "Could not install $package"
        done
    fi
else
    echo "Not installed, and no right to install: ${missing[*]}"
fi
exit 0
