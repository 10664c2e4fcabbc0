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

/** As many multiplications. */
inline void multiplyInChain(int blocks) {
    unsigned product = 1;
    const unsigned factor = 3;
    asm volatile("1:\n\t.rept 64\n\timul %2, %0\n\t.endr\n\tsub $1, %1\n\tjnz 1b"
                 : "+r"(product), "+r"(blocks)
                 : "r"(factor)
                 : "cc");
}

/**
 * As many additions, in chains that do not wait for each other: more of them than any core has adders, since
 * as many as adders keep those busy in a perfect order only, and a neighbour would find room. 32-bit code has
 * registers for four chains; beside them stand comparisons, which the same adders do and which wait for
 * nothing (4.66 a clock against 4.69 of eight chains on a core with five adders; six chains gave 4.03).
 */
inline void addSideBySide(int blocks) {
    unsigned a = 0, b = 0, c = 0, d = 0, e = 0;
#if defined(__x86_64__)
    unsigned f = 0, g = 0, h = 0;
    asm volatile("1:\n\t.rept 8\n\tadd %0, %0\n\tadd %1, %1\n\tadd %2, %2\n\tadd %3, %3\n\t"
                 "add %4, %4\n\tadd %5, %5\n\tadd %6, %6\n\tadd %7, %7\n\t.endr\n\tsub $1, %8\n\tjnz 1b"
                 : "+r"(a), "+r"(b), "+r"(c), "+r"(d), "+r"(e), "+r"(f), "+r"(g), "+r"(h), "+r"(blocks)
                 :
                 : "cc");
#else
    asm volatile("1:\n\t.rept 12\n\tadd %0, %0\n\tadd %1, %1\n\tadd %2, %2\n\tadd %3, %3\n\t"
                 "cmp %4, %4\n\t.endr\n\t.rept 4\n\tcmp %4, %4\n\t.endr\n\tsub $1, %5\n\tjnz 1b"
                 : "+r"(a), "+r"(b), "+r"(c), "+r"(d), "+r"(e), "+r"(blocks)
                 :
                 : "cc");
#endif
}

/** Counts of `work(blocks)`, with the same start whatever ran before. */
template <auto work>
inline long long ticksOf(int blocks) {
    // Without it the shorter one of a difference, that comes first, was 0.04 % of the difference too long.
    constexpr int untimed = 16;
    work(untimed);
    const unsigned long long first = zor_get_cpu_counter();
    work(blocks);
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

long long bxMultiplicationTicks(int blocks) {
    return ticksOf<multiplyInChain>(blocks);
}
