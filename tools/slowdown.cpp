// Slows one function of the library down, for compare_selfcheck.sh: to be put before the library with
// LD_PRELOAD. Built with -DSLOWED_FUNCTION=name and -DSLOWED_PERCENT=10. Good for functions of at most ten
// arguments, all of them integers or pointers (x86-64 passes six in registers, the others on the stack; what
// is not there is passed on, but not used).
#include <algorithm>
#include <dlfcn.h>
#include <x86intrin.h>

#define TEXT_OF(name) #name
#define NAME_TEXT(name) TEXT_OF(name)

namespace {

using Clock = unsigned long long;

// The counter once all instructions before have ended: unfenced, the delay would overlap with the function's
// last ones.
Clock fencedClock() {
    _mm_lfence();
    const Clock clock = __rdtsc();
    _mm_lfence();
    return clock;
}

// What two fenced reads with nothing between them differ by.
Clock emptyDifference() {
    Clock least = ~0ULL;
    for (int i = 0; i < 1000; ++i) {
        const Clock start = fencedClock();
        least = std::min(least, fencedClock() - start);
    }
    return least;
}

} // namespace

extern "C" long SLOWED_FUNCTION(long a, long b, long c, long d, long e, long f, long g, long h, long i,
                                long j) {
    using Function = long (*)(long, long, long, long, long, long, long, long, long, long);
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, NAME_TEXT(SLOWED_FUNCTION)));
    static const Clock empty = emptyDifference();
    const Clock start = fencedClock();
    const long result = original(a, b, c, d, e, f, g, h, i, j);
    const Clock taken = fencedClock() - start;
    const Clock until = start + std::max(taken, empty) - empty + taken * SLOWED_PERCENT / 100;
    while (__rdtsc() < until) {}
    return result;
}
