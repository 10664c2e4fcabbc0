#!/bin/sh
# What benchex-new writes compiles without a warning, and says what it should: ten prototypes.
#     new_test.sh SOURCE-DIRECTORY COMPILER BENCHEX-NEW...
set -eu
source=$1 compiler=$2
shift 2
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
new="$place/benchex-new"
printf '#!/bin/sh\nexec %s "$@"\n' "$*" >"$new" # with its emulator, where it needs one
chmod +x "$new"
cat >"$place/functions.h" <<'END'
#include <complex>
#include <cstddef>
#include <cstdint>
struct Filter;
struct Size { int w, h; };
enum Mode { fast, small };
END
: >"$place/prototypes"

# Adds a prototype to the header and to the list; what follows are texts that its test must have.
expect() {
    printf '%s;\n' "$1" >>"$place/functions.h"
    text=$("$new" --header functions.h "$1")
    printf '%s\n' "$1" >>"$place/prototypes"
    shift
    for wanted in "$@"; do
        case $text in
        *"$wanted"*) ;;
        *) printf 'missing: %s\nin: %s\n' "$wanted" "$text" && exit 1 ;;
        esac
    done
}
expect 'int f(const float*, float*, int)' 'kvSize("Length"' 'float* x = data.random(length)' \
    'float* y = data.output(length)' 'return [=] { return f(x, y, length); };'
expect 'void scale(float *data, size_t n, float factor)' 'kvBefore(' 'kvParm("Factor", 0.5)' '{ scale(samples, n, factor); }'
expect 'float dot(const float *x, const float *y, unsigned int len)' 'float* y = data.random(len)' 'unsigned int len)'
expect 'extern "C" int firExecute(struct Filter* q, const float x[], float y[], int count)' 'data.state(' \
    'Filter* q{}' 'float* y = data.output(count)'
expect 'unsigned crc32(const void *buf, size_t size, unsigned seed)' 'kvNeverFails' 'unsigned char* buf' 'kvParm("Seed", 1)'
expect 'int decode(const uint8_t* in, int inSize, int16_t* out, int *written, enum Mode mode)' 'kvSize("InSize"' \
    'int16_t* out = data.output(inSize)' 'enum Mode mode{}'
expect 'void transform(const std::complex<float>* x, std::complex<float>* y, int log2n)' 'kvParm("Log2n", 1)' \
    'std::complex<float>* y = data.output(1024)'
expect 'int readAll(const char *path, void (*progress)(int, void*), void* user)' 'kvParm("Path", "text")' \
    'progress)(int, void*){}'
expect 'double design(int order, double cutoff, Size window)' 'kvParm("Cutoff", 0.5)' 'Size window{}'
expect 'bool isPower(long value)' 'return [=] { return isPower(value); };'

set_of_all() { while IFS= read -r prototype; do set -- "$@" "$prototype"; done <"$place/prototypes"; "$new" --header functions.h "$@"; }
set_of_all >"$place/measure.cpp"
"$new" 'int alone(const float* x, int n);' >"$place/alone.cpp" # declares the function itself
for unit in measure alone; do
    "$compiler" -std=c++20 -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -fsyntax-only -I"$place" -I"$source/binding" \
        -I"$source/api/src" -I"$source/zor/include" "$place/$unit.cpp"
done

# What is no prototype, and what would overwrite a file, is refused.
for wrong in 'int f' 'f(int)' 'int f(int' ''; do
    if "$new" "$wrong" >/dev/null 2>&1; then echo "taken for a prototype: $wrong" && exit 1; fi
done
"$new" --project "$place/project" --link m 'double sqrt(double x)' >/dev/null
grep -q 'benchex::kvbinding m)' "$place/project/CMakeLists.txt"
if "$new" --project "$place/project" 'double sqrt(double x)' 2>/dev/null; then echo "overwritten" && exit 1; fi
