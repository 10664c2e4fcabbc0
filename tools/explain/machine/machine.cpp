// benchex-machine: what a core can do. Each test is a kernel that does one thing as fast as it can be done;
// what it executes is counted like everything else, so that nothing about it has to be said twice.
#include "bx.h"
#include "kvregister.h"

#include <cstddef>
#include <cstdint>
#include <memory>

// Memory for kernels that load and store. At 2048 stands where it begins, for chains of loads; at 2056 a
// number that is 1, 1 as floats and an ordinary double.
__asm__(R"(
    .pushsection .data
    .balign 4096
machine_data:
    .zero 2048
    .quad machine_data, 0x3F8000003F800000
    .zero 2032
    .popsection
    .pushsection .text
    .p2align 6
machine_return:
    ret
    .popsection
)");

// A kernel is a loop of 100 passes over 8 times its body, long enough for what stands around the loop to take
// less than a hundredth of the clocks; rdx points to the memory. A body leaves ecx and rdx alone.
#define ANY_KERNEL(name, setup, body, cleanup)                                                               \
    extern "C" int machine_##name();                                                                         \
    __asm__(".pushsection .text\n.type machine_" #name ", @function\n.p2align 6\nmachine_" #name ":\n"       \
            "push %rbx\npush %rbp\npush %r12\npush %r13\npush %r14\npush %r15\n"                             \
            "lea machine_data(%rip), %rdx\n" setup "mov $100, %ecx\n.p2align 6\n1:\n.rept 8\n" body          \
            ".endr\ndec %ecx\njnz 1b\n" cleanup                                                              \
            "pop %r15\npop %r14\npop %r13\npop %r12\npop %rbp\npop %rbx\nxor %eax, %eax\nret\n"              \
            ".size machine_" #name ", . - machine_" #name "\n.popsection\n");                                \
    [[maybe_unused]] static const bool s_##name = registerKernel<"machine_" #name, machine_##name>

#define SPREAD(reg)                                                                                          \
    "vbroadcastsd 2056(%rdx), %" reg "0\nvbroadcastsd 2056(%rdx), %" reg "1\n"                               \
    "vbroadcastsd 2056(%rdx), %" reg "14\nvbroadcastsd 2056(%rdx), %" reg "15\n"
#define KERNEL(name, body) ANY_KERNEL(name, "", body, "")(always)
#define KERNEL_256(name, body) ANY_KERNEL(name, SPREAD("ymm"), body, "vzeroupper\n")(hasAvx2)
// Registers that depend on xmm0 as the call before left it: chains of calls in a row do not overlap.
#define AFTER_LAST "vmovq %xmm0, %rax\nand $0, %rax\nadd %rax, %rdx\n"
#define CHAIN_256(name, body) ANY_KERNEL(name, AFTER_LAST SPREAD("ymm"), body, "vzeroupper\n")(hasAvx2)
#define KERNEL_512(name, body) ANY_KERNEL(name, SPREAD("zmm"), body, "vzeroupper\n")(hasAvx512)

// Twelve registers, each of which waits for itself alone: enough for any latency times throughput in use.
#define EACH(op)                                                                                             \
    op("0") op("1") op("2") op("3") op("4") op("5") op("6") op("7") op("8") op("9") op("10") op("11")
#define GENERAL(op) op("8") op("9") op("10") op("11") op("12") op("13") op("14") op("15")

namespace {

bool always() {
    return true;
}
bool hasAvx2() {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}
bool hasAvx512() {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
           __builtin_cpu_supports("avx512bw");
}

/** A test that can run where the processor can. */
class Kernel : public bxTest {
  public:
    using bxTest::bxTest;
    bool (*m_can)() = always;
    bool canStart() override { return m_can(); }
    double getFlops() override { return 0; }
};

template <int (*call)()>
bxResult loopOf(int count, long long* clocks) {
    unsigned long long ticks = 0;
    kv::Timed<call, nullptr>::loop(count, ticks);
    *clocks = bxCpuTicker::toClocks(ticks);
    return OK;
}

template <kv::FunctionName name, int (*call)()>
bool registerKernel(bool (*can)()) {
    auto* const kernel =
        new Kernel(call, nullptr, loopOf<call>, nullptr, name.text, __FILE__, "Kernel//KV_REG");
    kernel->m_can = can;
    return bxRegTest(kernel) != 0;
}

} // namespace

// ---- Throughputs of the general registers ----

#define ADD(r) "add $1, %r" r "\n"
#define IMUL(r) "imul %rax, %r" r "\n"
#define COPY(r) "mov %rax, %r" r "\n"
#define TEST(r) "lea 1(%r" r "), %rax\n"
KERNEL(integer, GENERAL(ADD));
KERNEL(lea, GENERAL(TEST));
KERNEL(imul, GENERAL(IMUL));
KERNEL(move, GENERAL(COPY));
KERNEL(div, "mov %rdx, %rbx\nxor %edx, %edx\nmov $1000, %eax\nmov $7, %esi\ndiv %esi\nmov %rbx, %rdx\n");
KERNEL(nops, "nop\nnop\nnop\nnop\nnop\nnop\nnop\nnop\n");
KERNEL(fused, "cmp %rax, %rdx\nje 9f\nadd $1, %r8\nadd $1, %r9\nmov %rax, %r10\ncmp %rax, %rdx\nje 9f\nadd "
              "$1, %r11\n9:\n");
KERNEL(eliminated,
       "mov %rax, %r8\nadd $1, %r9\nmov %rax, %r10\nadd $1, %r11\nmov %rax, %r12\nadd $1, %r13\nnop\nnop\n");
// How many branches are taken in a clock depends on how far they go, and how many lie in a line of code.
KERNEL(taken, "jmp 9f\n9:\n");
KERNEL(taken_16, ".rept 32\njmp 9f\n.p2align 4\n9:\n.endr\n");
KERNEL(taken_32, ".rept 32\njmp 9f\n.p2align 5\n9:\n.endr\n");
KERNEL(taken_64, ".rept 16\njmp 9f\n.p2align 6\n9:\n.endr\n");
KERNEL(loops, "mov $12, %eax\n2: dec %eax\njnz 2b\n");
KERNEL(notTaken, "jo 9f\njo 9f\njo 9f\njo 9f\n9:\n");
KERNEL(calls, "call machine_return\n");
KERNEL(pushes, "push %rax\npop %rbx\n");

// ---- Throughputs of the vector registers: one number, 128, 256 and 512 bits of both precisions ----

#define OPERATION(name, op)                                                                                  \
    KERNEL_256(name##_ss, EACH(op##_ss));                                                                    \
    KERNEL_256(name##_sd, EACH(op##_sd));                                                                    \
    KERNEL_256(name##_ps128, EACH(op##_ps128));                                                              \
    KERNEL_256(name##_pd128, EACH(op##_pd128));                                                              \
    KERNEL_256(name##_ps256, EACH(op##_ps256));                                                              \
    KERNEL_256(name##_pd256, EACH(op##_pd256));                                                              \
    KERNEL_512(name##_ps512, EACH(op##_ps512));                                                              \
    KERNEL_512(name##_pd512, EACH(op##_pd512));
#define THREE(op, reg, r) op " %" reg "14, %" reg "15, %" reg r "\n"
#define ADD_ss(r) THREE("vaddss", "xmm", r)
#define ADD_sd(r) THREE("vaddsd", "xmm", r)
#define ADD_ps128(r) THREE("vaddps", "xmm", r)
#define ADD_pd128(r) THREE("vaddpd", "xmm", r)
#define ADD_ps256(r) THREE("vaddps", "ymm", r)
#define ADD_pd256(r) THREE("vaddpd", "ymm", r)
#define ADD_ps512(r) THREE("vaddps", "zmm", r)
#define ADD_pd512(r) THREE("vaddpd", "zmm", r)
#define MAX_ss(r) THREE("vmaxss", "xmm", r)
#define MAX_sd(r) THREE("vmaxsd", "xmm", r)
#define MAX_ps128(r) THREE("vmaxps", "xmm", r)
#define MAX_pd128(r) THREE("vmaxpd", "xmm", r)
#define MAX_ps256(r) THREE("vmaxps", "ymm", r)
#define MAX_pd256(r) THREE("vmaxpd", "ymm", r)
#define MAX_ps512(r) THREE("vmaxps", "zmm", r)
#define MAX_pd512(r) THREE("vmaxpd", "zmm", r)
#define MUL_ss(r) THREE("vmulss", "xmm", r)
#define MUL_sd(r) THREE("vmulsd", "xmm", r)
#define MUL_ps128(r) THREE("vmulps", "xmm", r)
#define MUL_pd128(r) THREE("vmulpd", "xmm", r)
#define MUL_ps256(r) THREE("vmulps", "ymm", r)
#define MUL_pd256(r) THREE("vmulpd", "ymm", r)
#define MUL_ps512(r) THREE("vmulps", "zmm", r)
#define MUL_pd512(r) THREE("vmulpd", "zmm", r)
#define FMA_ss(r) THREE("vfmadd231ss", "xmm", r)
#define FMA_sd(r) THREE("vfmadd231sd", "xmm", r)
#define FMA_ps128(r) THREE("vfmadd231ps", "xmm", r)
#define FMA_pd128(r) THREE("vfmadd231pd", "xmm", r)
#define FMA_ps256(r) THREE("vfmadd231ps", "ymm", r)
#define FMA_pd256(r) THREE("vfmadd231pd", "ymm", r)
#define FMA_ps512(r) THREE("vfmadd231ps", "zmm", r)
#define FMA_pd512(r) THREE("vfmadd231pd", "zmm", r)
#define DIV_ss(r) THREE("vdivss", "xmm", r)
#define DIV_sd(r) THREE("vdivsd", "xmm", r)
#define DIV_ps128(r) THREE("vdivps", "xmm", r)
#define DIV_pd128(r) THREE("vdivpd", "xmm", r)
#define DIV_ps256(r) THREE("vdivps", "ymm", r)
#define DIV_pd256(r) THREE("vdivpd", "ymm", r)
#define DIV_ps512(r) THREE("vdivps", "zmm", r)
#define DIV_pd512(r) THREE("vdivpd", "zmm", r)
OPERATION(add, ADD)
OPERATION(max, MAX)
OPERATION(multiply, MUL)
OPERATION(multiplyAdd, FMA)
OPERATION(divide, DIV)

#define WIDTHS(name, op, wide)                                                                               \
    KERNEL_256(name##_128, EACH(op##_128));                                                                  \
    KERNEL_256(name##_256, EACH(op##_256));                                                                  \
    KERNEL_512(name##_512, EACH(wide##_512));
#define TWO(op, reg, r) op " %" reg "15, %" reg r "\n"
#define PADD_128(r) THREE("vpaddd", "xmm", r)
#define PADD_256(r) THREE("vpaddd", "ymm", r)
#define PADD_512(r) THREE("vpaddd", "zmm", r)
#define PMUL_128(r) THREE("vpmaddwd", "xmm", r)
#define PMUL_256(r) THREE("vpmaddwd", "ymm", r)
#define PMUL_512(r) THREE("vpmaddwd", "zmm", r)
#define LOGIC_128(r) THREE("vandps", "xmm", r)
#define LOGIC_256(r) THREE("vandps", "ymm", r)
#define LOGIC_512(r) THREE("vandps", "zmm", r)
#define ZERO_128(r) "vpxor %xmm" r ", %xmm" r ", %xmm" r "\n"
#define ZERO_256(r) "vpxor %ymm" r ", %ymm" r ", %ymm" r "\n"
#define ZERO_512(r) "vpxord %zmm" r ", %zmm" r ", %zmm" r "\n"
#define SHUFFLE_128(r) THREE("vunpcklps", "xmm", r)
#define SHUFFLE_256(r) THREE("vunpcklps", "ymm", r)
#define SHUFFLE_512(r) THREE("vunpcklps", "zmm", r)
#define BLEND_128(r) THREE("vblendps $5,", "xmm", r)
#define BLEND_256(r) THREE("vblendps $5,", "ymm", r)
#define BLEND_512(r) THREE("vblendmps", "zmm", r)
#define CONVERT_128(r) TWO("vcvtdq2ps", "xmm", r)
#define CONVERT_256(r) TWO("vcvtdq2ps", "ymm", r)
#define CONVERT_512(r) TWO("vcvtdq2ps", "zmm", r)
#define VMOVE_128(r) TWO("vmovaps", "xmm", r)
#define VMOVE_256(r) TWO("vmovaps", "ymm", r)
#define VMOVE_512(r) TWO("vmovaps", "zmm", r)
WIDTHS(vectorInteger, PADD, PADD)
WIDTHS(vectorMultiply, PMUL, PMUL)
WIDTHS(logic, LOGIC, LOGIC)
WIDTHS(zero, ZERO, ZERO)
WIDTHS(shuffle, SHUFFLE, SHUFFLE)
WIDTHS(blend, BLEND, BLEND)
WIDTHS(convert, CONVERT, CONVERT)
WIDTHS(vectorMove, VMOVE, VMOVE)

// What several kinds can do together.
#define MIXED(reg)                                                                                           \
    THREE("vaddps", reg, "0")                                                                                \
    THREE("vfmadd231ps", reg, "1")                                                                           \
    THREE("vaddps", reg, "2")                                                                                \
    THREE("vfmadd231ps", reg, "3")                                                                           \
    THREE("vaddps", reg, "4")                                                                                \
    THREE("vfmadd231ps", reg, "5")                                                                           \
    THREE("vaddps", reg, "6")                                                                                \
    THREE("vfmadd231ps", reg, "7")                                                                           \
    THREE("vaddps", reg, "8")                                                                                \
    THREE("vfmadd231ps", reg, "9") THREE("vaddps", reg, "10") THREE("vfmadd231ps", reg, "11")
#define PAIRED(reg)                                                                                          \
    THREE("vaddps", reg, "0")                                                                                \
    THREE("vmulps", reg, "1")                                                                                \
    THREE("vaddps", reg, "2")                                                                                \
    THREE("vmulps", reg, "3") THREE("vaddps", reg, "4") THREE("vmulps", reg, "5")
KERNEL_256(paired_128, PAIRED("xmm"));
KERNEL_256(paired_256, PAIRED("ymm"));
KERNEL_512(paired_512, PAIRED("zmm"));
KERNEL_256(mixed_128, MIXED("xmm"));
KERNEL_256(mixed_256, MIXED("ymm"));
KERNEL_512(mixed_512, MIXED("zmm"));

// ---- Loads and stores ----

#define MOVE_IN(op, reg)                                                                                     \
    op " (%rdx), %" reg "\n" op " 64(%rdx), %" reg "\n" op " 128(%rdx), %" reg "\n" op " 192(%rdx), %" reg   \
       "\n" op " 256(%rdx), %" reg "\n" op " 320(%rdx), %" reg "\n"
#define MOVE_OUT(op, reg) op " %" reg ", (%rdx)\n" op " %" reg ", 8(%rdx)\n" op " %" reg ", 16(%rdx)\n"
#define STORE(op, reg)                                                                                       \
    op " %" reg ", (%rdx)\n" op " %" reg ", 64(%rdx)\n" op " %" reg ", 128(%rdx)\n" op " %" reg              \
       ", 192(%rdx)\n"
KERNEL(load_1, MOVE_IN("movzbl", "eax"));
KERNEL(load_2, MOVE_IN("movzwl", "eax"));
KERNEL(load_4, MOVE_IN("mov", "eax"));
KERNEL(load_8, MOVE_IN("mov", "rax"));
KERNEL_256(load_16, MOVE_IN("vmovaps", "xmm0"));
KERNEL_256(load_32, MOVE_IN("vmovaps", "ymm0"));
KERNEL_512(load_64, MOVE_IN("vmovaps", "zmm0"));
#define ROW_IN(op, reg, two, three, four)                                                                    \
    op " (%rdx), %" reg "0\n" op " " two "(%rdx), %" reg "1\n" op " " three "(%rdx), %" reg "2\n" op         \
       " " four "(%rdx), %" reg "3\n"
KERNEL_256(loadRow_16, ROW_IN("vmovaps", "xmm", "16", "32", "48"));
KERNEL_256(loadRow_32, ROW_IN("vmovaps", "ymm", "32", "64", "96"));
KERNEL_512(loadRow_64, ROW_IN("vmovaps", "zmm", "64", "128", "192"));
KERNEL_256(storeRow_16, "vmovaps %xmm0, (%rdx)\nvmovaps %xmm0, 16(%rdx)\nvmovaps %xmm0, 32(%rdx)\n");
KERNEL_256(storeRow_32, "vmovaps %ymm0, (%rdx)\nvmovaps %ymm0, 32(%rdx)\n");
KERNEL(store_1, MOVE_OUT("mov", "al"));
KERNEL(store_2, MOVE_OUT("mov", "ax"));
KERNEL(store_4, MOVE_OUT("mov", "eax"));
KERNEL(store_8, MOVE_OUT("mov", "rax"));
KERNEL_256(store_16, STORE("vmovaps", "xmm0"));
KERNEL_256(store_32, STORE("vmovaps", "ymm0"));
KERNEL_512(store_64, STORE("vmovaps", "zmm0"));
KERNEL(loadStore_8, "mov (%rdx), %rax\nmov 64(%rdx), %rbx\nmov %r8, 128(%rdx)\n");
KERNEL_256(loadStore_32, "vmovaps (%rdx), %ymm0\nvmovaps 64(%rdx), %ymm1\nvmovaps %ymm2, 128(%rdx)\n");

// ---- Latencies: each instruction waits for the one before ----

#define SIX(text) text text text text text text
KERNEL(latency_integer, SIX("add %r8, %r9\n"));
KERNEL(latency_imul, SIX("imul %r8, %r9\n"));
KERNEL(latency_div, "mov %rdx, %rbx\nxor %edx, %edx\nor $1, %eax\ndiv %eax\nmov %rbx, %rdx\n");
KERNEL(latency_load, SIX("mov 2048(%rdx), %rdx\n"));
CHAIN_256(latency_add, SIX("vaddps %xmm1, %xmm0, %xmm0\n"));
CHAIN_256(latency_multiply, SIX("vmulps %xmm1, %xmm0, %xmm0\n"));
CHAIN_256(latency_multiplyAdd, SIX("vfmadd231ps %xmm1, %xmm1, %xmm0\n"));
CHAIN_256(latency_divide, SIX("vdivps %xmm1, %xmm0, %xmm0\n"));
CHAIN_256(latency_vectorInteger, SIX("vpaddd %xmm1, %xmm0, %xmm0\n"));
CHAIN_256(latency_vectorMultiply, SIX("vpmaddwd %xmm1, %xmm0, %xmm0\n"));
CHAIN_256(latency_logic, SIX("vandps %xmm1, %xmm0, %xmm0\n"));
CHAIN_256(latency_shuffle, SIX("vunpcklps %xmm1, %xmm0, %xmm0\n"));
CHAIN_256(latency_convert, SIX("vcvtdq2ps %xmm0, %xmm0\n"));
CHAIN_256(latency_forward, SIX("vmovaps %xmm0, (%rdx)\nvmovaps (%rdx), %xmm0\n"));

// ---- Branches that are taken, in a loop that is small enough for any memory of decoded instructions ----

namespace {

// How many are taken in a clock depends on how far apart they are.
template <int gap>
int takenLoop() {
    int passes = 400;
    __asm__ volatile("1:\n.rept 16\njmp 2f\n.skip %c1, 0x90\n2:\n.endr\ndec %0\njnz 1b"
                     : "+r"(passes)
                     : "i"(gap)
                     : "cc");
    return 0;
}
template <kv::FunctionName name, int (*call)()>
[[maybe_unused]] const bool s_loop = registerKernel<name, call>(always);
template const bool s_loop<"machine_takenLoop_8", takenLoop<6>>;
template const bool s_loop<"machine_takenLoop_16", takenLoop<14>>;
template const bool s_loop<"machine_takenLoop_24", takenLoop<22>>;
template const bool s_loop<"machine_takenLoop_32", takenLoop<30>>;
template const bool s_loop<"machine_takenLoop_64", takenLoop<62>>;

} // namespace

// ---- Memory: a block is gone through from its beginning to its end, again and again ----

namespace {

constexpr std::size_t mostBytes = std::size_t{64} << 20;

char* block() {
    static const std::unique_ptr<char[]> memory(new char[mostBytes + 64]());
    const auto address = reinterpret_cast<std::uintptr_t>(memory.get());
    return memory.get() + (64 - address % 64) % 64;
}

template <std::size_t kilobytes>
int readBlock() {
    const char* at = block();
    const char* const end = at + kilobytes * 1024;
    __asm__ volatile("1:\n"
                     "mov (%0), %%rax\nmov 64(%0), %%rax\nmov 128(%0), %%rax\nmov 192(%0), %%rax\n"
                     "add $256, %0\ncmp %1, %0\njne 1b\n"
                     : "+r"(at)
                     : "r"(end)
                     : "rax", "cc", "memory");
    return 0;
}

template <std::size_t kilobytes>
int writeBlock() {
    char* at = block();
    char* const end = at + kilobytes * 1024;
    __asm__ volatile("1:\n"
                     "mov %2, (%0)\nmov %2, 64(%0)\nmov %2, 128(%0)\nmov %2, 192(%0)\n"
                     "add $256, %0\ncmp %1, %0\njne 1b\n"
                     : "+r"(at)
                     : "r"(end), "r"(1L)
                     : "cc", "memory");
    return 0;
}

template <std::size_t kilobytes>
int copyBlock() {
    const char* at = block();
    const char* const end = at + kilobytes / 2 * 1024;
    char* to = block() + kilobytes / 2 * 1024;
    __asm__ volatile("1:\n"
                     "mov (%0), %%rax\nmov %%rax, (%1)\nmov 64(%0), %%rax\nmov %%rax, 64(%1)\n"
                     "mov 128(%0), %%rax\nmov %%rax, 128(%1)\nmov 192(%0), %%rax\nmov %%rax, 192(%1)\n"
                     "add $256, %1\nadd $256, %0\ncmp %2, %0\njne 1b\n"
                     : "+r"(at), "+r"(to)
                     : "r"(end)
                     : "rax", "cc", "memory");
    return 0;
}

template <kv::FunctionName name, int (*call)()>
[[maybe_unused]] const bool s_memory = registerKernel<name, call>(always);
template const bool s_memory<"machine_memory_read_16", readBlock<16>>;
template const bool s_memory<"machine_memory_read_64", readBlock<64>>;
template const bool s_memory<"machine_memory_read_128", readBlock<128>>;
template const bool s_memory<"machine_memory_read_256", readBlock<256>>;
template const bool s_memory<"machine_memory_read_512", readBlock<512>>;
template const bool s_memory<"machine_memory_read_1024", readBlock<1024>>;
template const bool s_memory<"machine_memory_read_2048", readBlock<2048>>;
template const bool s_memory<"machine_memory_read_4096", readBlock<4096>>;
template const bool s_memory<"machine_memory_read_8192", readBlock<8192>>;
template const bool s_memory<"machine_memory_read_16384", readBlock<16384>>;
template const bool s_memory<"machine_memory_read_32768", readBlock<32768>>;
template const bool s_memory<"machine_memory_read_65536", readBlock<65536>>;
template const bool s_memory<"machine_memory_write_16", writeBlock<16>>;
template const bool s_memory<"machine_memory_write_128", writeBlock<128>>;
template const bool s_memory<"machine_memory_write_512", writeBlock<512>>;
template const bool s_memory<"machine_memory_write_1024", writeBlock<1024>>;
template const bool s_memory<"machine_memory_write_2048", writeBlock<2048>>;
template const bool s_memory<"machine_memory_write_4096", writeBlock<4096>>;
template const bool s_memory<"machine_memory_write_8192", writeBlock<8192>>;
template const bool s_memory<"machine_memory_write_16384", writeBlock<16384>>;
template const bool s_memory<"machine_memory_write_32768", writeBlock<32768>>;
template const bool s_memory<"machine_memory_write_65536", writeBlock<65536>>;
template const bool s_memory<"machine_memory_copy_16", copyBlock<16>>;
template const bool s_memory<"machine_memory_copy_128", copyBlock<128>>;
template const bool s_memory<"machine_memory_copy_512", copyBlock<512>>;
template const bool s_memory<"machine_memory_copy_1024", copyBlock<1024>>;
template const bool s_memory<"machine_memory_copy_2048", copyBlock<2048>>;
template const bool s_memory<"machine_memory_copy_4096", copyBlock<4096>>;
template const bool s_memory<"machine_memory_copy_8192", copyBlock<8192>>;
template const bool s_memory<"machine_memory_copy_16384", copyBlock<16384>>;
template const bool s_memory<"machine_memory_copy_32768", copyBlock<32768>>;
template const bool s_memory<"machine_memory_copy_65536", copyBlock<65536>>;

} // namespace
