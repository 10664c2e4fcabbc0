#include "timing/bxreference.h"

#include "system/bxclock.h"

namespace {

/** The additions of `blocks` blocks. */
inline void addInChain(int blocks) {
    unsigned sum = 0;
    const unsigned one = 1;
    // A register is added, not a constant: processors exist that fold additions of constants.
    asm volatile("1:\n\t.rept 64\n\tadd %2, %0\n\t.endr\n\tsub $1, %1\n\tjnz 1b"
                 : "+r"(sum), "+r"(blocks)
                 : "r"(one)
                 : "cc");
}

/** As many, in chains that do not wait for each other. */
inline void addSideBySide(int blocks) {
    unsigned a = 0, b = 0, c = 0, d = 0;
#if defined(__x86_64__)
    unsigned e = 0, f = 0, g = 0, h = 0;
    asm volatile("1:\n\t.rept 8\n\tadd %0, %0\n\tadd %1, %1\n\tadd %2, %2\n\tadd %3, %3\n\t"
                 "add %4, %4\n\tadd %5, %5\n\tadd %6, %6\n\tadd %7, %7\n\t.endr\n\tsub $1, %8\n\tjnz 1b"
                 : "+r"(a), "+r"(b), "+r"(c), "+r"(d), "+r"(e), "+r"(f), "+r"(g), "+r"(h), "+r"(blocks)
                 :
                 : "cc");
#else // registers for four
    asm volatile("1:\n\t.rept 16\n\tadd %0, %0\n\tadd %1, %1\n\tadd %2, %2\n\tadd %3, %3\n\t.endr\n\t"
                 "sub $1, %4\n\tjnz 1b"
                 : "+r"(a), "+r"(b), "+r"(c), "+r"(d), "+r"(blocks)
                 :
                 : "cc");
#endif
}

/** Counts of `add(blocks)`, with the same start whatever ran before. */
template <auto add>
inline long long ticksOf(int blocks) {
    // Without it the shorter one of a difference, that comes first, was 0.04 % of the difference too long.
    constexpr int untimed = 16;
    add(untimed);
    const unsigned long long first = zor_get_cpu_counter();
    add(blocks);
    const unsigned long long last = zor_get_cpu_counter();
    return bxCpuTicker::toClocks(last - first);
}

} // namespace

long long bxReferenceTicks(int blocks) {
    return ticksOf<addInChain>(blocks);
}

long long bxThroughputTicks(int blocks) {
    return ticksOf<addSideBySide>(blocks);
}
