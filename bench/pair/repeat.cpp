// Makes one function of the library slower by an exact share, for goals.py: to be put before the library with
// LD_PRELOAD on both sides of a comparison. Built with -DREPEATED=name. Each call becomes REPEAT calls (from
// the environment): 100 on one side and 101 on the other are one per cent, as if one call in a hundred were
// made twice, and every stretch of calls holds its share. Good for functions of at most ten arguments, all
// integers or pointers, that may be called again with the same ones.
#include <cstdlib>
#include <dlfcn.h>

#define TEXT_OF(name) #name
#define NAME_TEXT(name) TEXT_OF(name)

extern "C" long REPEATED(long a, long b, long c, long d, long e, long f, long g, long h, long i, long j) {
    using Function = long (*)(long, long, long, long, long, long, long, long, long, long);
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, NAME_TEXT(REPEATED)));
    static const int times = [] {
        const char* const text = std::getenv("REPEAT");
        return text ? std::atoi(text) : 1;
    }();
    long status = 0;
    for (int time = 0; time < times; ++time)
        status = original(a, b, c, d, e, f, g, h, i, j);
    return status;
}
