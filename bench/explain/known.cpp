// Functions whose limit is known by construction: benchex-explain has to name it (limits.py). None is one of
// the kernels that it measures the machine with, and most have their operands in other places.
#include "kv.h"

#include <cstddef>
#include <cstring>

namespace {

bool modern() {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

// Parts of a function. Each takes a number of passes; what a pass is made of stands in front of it.

// 40 multiply-adds in 10 registers, of four numbers each.
#define FMA(r) "vfmadd213pd %%ymm15, %%ymm14, %%ymm" r "\n"
#define TEN(op) op("0") op("1") op("2") op("3") op("4") op("5") op("6") op("7") op("8") op("9")
void multiplyAdds(long passes) {
    __asm__ volatile("vxorpd %%xmm14, %%xmm14, %%xmm14\nvmovapd %%ymm14, %%ymm15\n"
                     "1:\n" TEN(FMA) TEN(FMA) TEN(FMA) TEN(FMA) "dec %0\njnz 1b\nvzeroupper"
                     : "+r"(passes)::"cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7",
                       "xmm8", "xmm9", "xmm14", "xmm15");
}

// 16 times 32 bytes that are used where they come from.
#define OR(offset, r) "vpor " offset "(%1), %%ymm" r ", %%ymm" r "\n"
void loads(const char* block, long passes) {
    __asm__ volatile("1:\n" OR("0", "0") OR("32", "1") OR("64", "2") OR("96", "3") OR("128", "4")
                         OR("160", "5") OR("192", "6") OR("224", "7") OR("256", "0") OR("288", "1")
                             OR("320", "2") OR("352", "3") OR("384", "4") OR("416", "5") OR("448", "6")
                                 OR("480", "7") "dec %0\njnz 1b\nvzeroupper"
                     : "+r"(passes)
                     : "r"(block)
                     : "cc", "memory", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7");
}

// 16 times 8 bytes, one behind the other.
#define PUT(offset) "mov %1, " offset "(%2)\n"
void stores(char* block, long passes) {
    __asm__ volatile("1:\n" PUT("0") PUT("8") PUT("16") PUT("24") PUT("32") PUT("40") PUT("48") PUT("56")
                         PUT("64") PUT("72") PUT("80") PUT("88") PUT("96") PUT("104") PUT("112")
                             PUT("120") "dec %0\njnz 1b"
                     : "+r"(passes)
                     : "r"(7L), "r"(block)
                     : "cc", "memory");
}

// 10 quotients of four numbers.
#define QUOTIENT(r) "vdivpd %%ymm14, %%ymm15, %%ymm" r "\n"
void divides(const double* one, long passes) {
    __asm__ volatile("vbroadcastsd (%1), %%ymm14\nvmovapd %%ymm14, %%ymm15\n"
                     "1:\n" TEN(QUOTIENT) "dec %0\njnz 1b\nvzeroupper"
                     : "+r"(passes)
                     : "r"(one)
                     : "cc", "memory", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8",
                       "xmm9", "xmm14", "xmm15");
}

// 16 branches that are taken, over 22 bytes each.
#define OVER "jmp 2f\n.skip 22, 0x90\n2:\n"
#define FOUR(text) text text text text
void branches(long passes) {
    __asm__ volatile("1:\n" FOUR(FOUR(OVER)) "dec %0\njnz 1b" : "+r"(passes)::"cc");
}

// 16 multiply-adds, each of which waits for the one before.
#define STEP "vfmadd132sd %%xmm1, %%xmm1, %%xmm0\n"
void chain(long passes) {
    __asm__ volatile("vxorpd %%xmm0, %%xmm0, %%xmm0\nvxorpd %%xmm1, %%xmm1, %%xmm1\n"
                     "1:\n" FOUR(FOUR(STEP)) "dec %0\njnz 1b"
                     : "+r"(passes)::"cc", "xmm0", "xmm1");
}

// Lines of 64 bytes from one block to another, four in a pass.
#define LINE(offset, next)                                                                                   \
    "vmovups " offset "(%1), %%ymm0\nvmovups " next "(%1), %%ymm1\n"                                         \
    "vmovups %%ymm0, " offset "(%2)\nvmovups %%ymm1, " next "(%2)\n"
void copy(char* to, const char* from, long passes) {
    __asm__ volatile("1:\n" LINE("0", "32") LINE("64", "96") LINE("128", "160")
                         LINE("192", "224") "add $256, %1\nadd $256, %2\ndec %0\njnz 1b\nvzeroupper"
                     : "+r"(passes), "+r"(from), "+r"(to)::"cc", "memory", "xmm0", "xmm1");
}

void need(kvData& data) {
    data.need(modern(), "AVX2 and multiply-adds");
}

const kvMeasure s_multiplyAdds("known_multiplyAdds", kvParm("Passes", 200), [](kvData& data, int passes) {
    need(data);
    return [=] { multiplyAdds(passes); };
});
const kvMeasure s_loads("known_loads", kvParm("Passes", 300), [](kvData& data, int passes) {
    need(data);
    char* block = data.zero(512);
    return [=] { loads(block, passes); };
});
const kvMeasure s_stores("known_stores", kvParm("Passes", 300), [](kvData& data, int passes) {
    char* block = data.zero(128);
    return [=] { stores(block, passes); };
});
const kvMeasure s_divides("known_divides", kvParm("Passes", 200), [](kvData& data, int passes) {
    need(data);
    double* one = data.random(1, 1, 2);
    return [=] { divides(one, passes); };
});
const kvMeasure s_branches("known_branches", kvParm("Passes", 200),
                           [](kvData&, int passes) { return [=] { branches(passes); }; });
const kvMeasure s_chain("known_chain", kvParm("Passes", 400), [](kvData& data, int passes) {
    need(data);
    return [=] { chain(passes); };
});
const kvMeasure s_copy("known_copy", kvParm("KB", 2048, 32768), [](kvData& data, int kilobytes) {
    need(data);
    const int bytes = 1024 * kilobytes;
    char *from = data.zero(bytes), *to = data.zero(bytes);
    return [=] { copy(to, from, bytes / 256); };
});

// Three things one after the other, each of which takes about as long: no bound explains half.
const kvMeasure s_mixedOne("known_mixed_fds", kvParm("Passes", 60), [](kvData& data, int passes) {
    need(data);
    char* block = data.zero(128);
    double* one = data.random(1, 1, 2);
    return [=] {
        multiplyAdds(passes);
        divides(one, passes / 2);
        stores(block, 2 * passes);
    };
});
const kvMeasure s_mixedTwo("known_mixed_lcb", kvParm("Passes", 60), [](kvData& data, int passes) {
    need(data);
    char* block = data.zero(512);
    return [=] {
        loads(block, 2 * passes);
        chain(passes / 4);
        branches(2 * passes);
    };
});

} // namespace
