// Slows one function of the library down, for compare_selfcheck.sh: to be put before the library with
// LD_PRELOAD. Built with -DSLOWED_FUNCTION=name and -DSLOWED_PERCENT=10. Good for functions of at most six
// arguments, all of them integers or pointers (x86-64 passes those in registers).
#include <dlfcn.h>
#include <x86intrin.h>

#define TEXT_OF(name) #name
#define NAME_TEXT(name) TEXT_OF(name)

extern "C" long SLOWED_FUNCTION(long a, long b, long c, long d, long e, long f) {
    using Function = long (*)(long, long, long, long, long, long);
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, NAME_TEXT(SLOWED_FUNCTION)));
    const unsigned long long start = __rdtsc();
    const long result = original(a, b, c, d, e, f);
    const unsigned long long taken = __rdtsc() - start;
    while (__rdtsc() - start < taken + taken * SLOWED_PERCENT / 100) {}
    return result;
}
