#!/usr/bin/env bash
# The Debian package: packed twice it is the same bit by bit, and nothing in it tells where it was built; lintian finds
# no error, and in a bare root it can be installed, used and removed.
#   package.sh WORK-DIRECTORY [from-scratch]
# SOURCE_DATE_EPOCH is the one of the tested build, which stands in build/. With "from-scratch" the second package is that
# of another build, in another place, which takes minutes. With BENCHEX_DEB a package that is there is taken.
set -euo pipefail
cd "$(dirname "$0")/.."
work=$1/package
mkdir -p "$work"
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)} CCACHE_DISABLE=1

pack() { cpack --config "$1/CPackConfig.cmake" -B "$work/$2" >/dev/null; } # pack BUILD NAME

deb=${BENCHEX_DEB:-}
if [ -z "$deb" ]; then
    pack build tested
    again=build
    if [ "${2:-}" = from-scratch ]; then
        again="$work/build"
        rm -rf "$again"
        cmake -S . -B "$again" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBENCHEX_TESTS=OFF >/dev/null
        cmake --build "$again" >/dev/null
    fi
    sleep 1 # so that a time of now would differ
    pack "$again" anew
    deb=$(echo "$work"/tested/*.deb)
    cmp "$deb" "$work/anew/$(basename "$deb")"
    echo "packed twice: the same"
    dpkg-deb -x "$deb" "$work/content"
    ! grep -rlF "$PWD" "$work/content" || exit 1
    echo "no word of where it was built"
fi

if command -v lintian >/dev/null; then
    lintian --allow-root --fail-on error --tag-display-limit 0 "$deb"
else
    echo "left out: lintian is missing"
fi

if ! command -v debootstrap >/dev/null || [ "$(id -u)" != 0 ]; then
    echo "left out: a bare root needs debootstrap and the rights of root"
    exit 0
fi
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
if ! debootstrap --variant=minbase "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root" >"$work/debootstrap.log" 2>&1; then
    echo "left out: no bare root without the archive of Debian's packages: $(tail -n 1 "$work/debootstrap.log")"
    exit 0
fi
inside() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 "$@"; }
files() { (cd "$root" && find . -xdev -not -path './var/*' -not -path './proc/*' -not -path './etc/ld.so.cache' | sort); }
files >"$work/before"
cp "$deb" "$root/benchex.deb"
# What it stands on beyond the C and C++ libraries.
companions=$(dpkg-deb -f "$deb" Depends | grep -o 'libzydis[0-9.]*' || true)
if [ -n "$companions" ]; then
    companions+=" $(apt-cache depends "$companions" | sed -n 's/.*Depends: \(libzycore.*\)/\1/p')"
    (cd "$root" && apt-get download -qq $companions && inside sh -c 'dpkg -i /libzy*.deb')
fi
inside dpkg -i /benchex.deb
inside sh -c 'cd /tmp && benchex -B -f TNS -L P -dMethod=Manual -l/tmp -r -u -q >/dev/null &&
    benchex-report -o page.html benchex.csv && benchex-compare benchex.csv benchex.csv'
if [ -n "$companions" ]; then
    inside benchex-explain --version # a call is explained from /proc, which is not here
fi
test -s "$root/tmp/page.html"
inside dpkg --purge benchex $companions
rm -rf "$root"/*.deb "$root"/tmp/*
files >"$work/after"
diff "$work/before" "$work/after"
echo "bare root: installed, used and removed"
