#include "timing/bxinstructions.h"
#include "timing/bxopcode.h"

#include <gtest/gtest.h>

#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// Functions whose instructions can be counted by hand. A is the accumulator, S the stack pointer, of the
// width of the machine.
#if defined(__x86_64__)
#define A "%rax"
#define C "%rcx"
#define S "%rsp"
#define SI "%rsi"
#define DI "%rdi"
#define FLAGS "q"
#else
#define A "%eax"
#define C "%ecx"
#define S "%esp"
#define SI "%esi"
#define DI "%edi"
#define FLAGS "l"
#endif

/** Defines `int name()` from its instructions. */
#define ASSEMBLE(name, code)                                                                                 \
    extern "C" int name();                                                                                   \
    __asm__(".pushsection .text\n.type " #name ", @function\n" #name ":\n" code "\n.size " #name             \
            ", . - " #name "\n.popsection\n");

ASSEMBLE(straight, "nop; nop; xor %eax, %eax; ret")
ASSEMBLE(countsDown, "mov $1000, %ecx; 1: dec %ecx; jnz 1b; ret")
ASSEMBLE(inner, "nop; ret")
ASSEMBLE(calls, "call inner; call inner; call inner; jmp inner")
ASSEMBLE(copies, "sub $256, " S "; push " DI "; push " SI "; lea 16(" S "), " DI "; mov " DI ", " SI
                 "; mov $100, %ecx;"
                 "rep movsb; xor %ecx, %ecx; rep movsb; pop " SI "; pop " DI "; add $256, " S "; ret")
ASSEMBLE(fills,
         "sub $256, " S "; push " DI "; lea 16(" S "), " DI "; mov $16, %ecx; rep stos " A ", (" DI ");"
         "mov $1, %ecx; repne scasb; pop " DI "; add $256, " S "; ret")
ASSEMBLE(loadsSS, "mov %ss, %eax; mov %eax, %ss; nop; nop; ret")
ASSEMBLE(loadsSSTwice, "mov %ss, %eax; mov %eax, %ss; mov %eax, %ss; nop; ret")
ASSEMBLE(loadsSSFromMemory, "mov %ss, %eax; push " A "; mov 0(" S "), %ss; pop " A "; ret")
ASSEMBLE(loadsSSBeforeReturn, "mov %ss, %eax; mov %eax, %ss; ret")
ASSEMBLE(keepsFlags, "pushf" FLAGS "; popf" FLAGS "; nop; ret")
ASSEMBLE(clearsTrapFlag, "pushf" FLAGS "; andl $0xFFFFFEFF, (" S "); popf" FLAGS "; nop; nop; ret")
ASSEMBLE(loadsFlags, "push $0x202; popf" FLAGS "; nop; ret")
ASSEMBLE(loadsHalfFlags, "pushw $0x202; popfw; nop; ret")
ASSEMBLE(illegal, "nop; ud2")
ASSEMBLE(readsNull, "xor %eax, %eax; mov (" A "), %eax; ret")
ASSEMBLE(breaks, "nop; int3; ret")
ASSEMBLE(asksKernel, "mov $39, %eax; int $0x80; ret")
ASSEMBLE(endless, "mov $100000, %ecx; 1: dec %ecx; jnz 1b; ret")
ASSEMBLE(widest, "vpxord %zmm0, %zmm0, %zmm0; vpaddd 64(" S "), %zmm0, %zmm1{%k1}; vzeroupper; ret")
ASSEMBLE(wide, "vxorps %ymm0, %ymm0, %ymm0; vperm2f128 $1, %ymm0, %ymm0, %ymm1; vzeroall; ret")
#if defined(__x86_64__)
ASSEMBLE(callsKernel, "mov $39, %eax; syscall; ret")
ASSEMBLE(returnsByInterrupt,
         "mov %rsp, %rax; mov %ss, %ecx; push %rcx; push %rax; pushfq; mov %cs, %ecx; push %rcx;"
         "lea 1f(%rip), %rcx; push %rcx; iretq; 1: ret")
// The same twice, in front of and behind some other code, and with another addition.
#define MOVED(target, operation)                                                                             \
    "lea " target "(%rip), %rax; mov (%rax), %ecx; " operation                                               \
    "; call inner; cmp $3, %ecx; je 1f; nop; 1: ret"
ASSEMBLE(before, MOVED("calls", "add %ecx, %ecx"))
ASSEMBLE(filler, ".fill 999, 1, 0x90; ret")
ASSEMBLE(after, MOVED("inner", "add %ecx, %ecx"))
ASSEMBLE(changed, MOVED("inner", "sub %ecx, %ecx"))
#endif

namespace {

constexpr long long most = 4'000;

struct Counted {
    const char* name;
    int (*function)();
    long long instructions, steps;
};
#define COUNTED(function, instructions, steps)                                                               \
    Counted {                                                                                                \
#function, function, instructions, steps                                                             \
    }

TEST(Instructions, OfKnownFunctions) {
    const Counted rows[] = {
        COUNTED(inner, 2, 2),
        COUNTED(straight, 4, 4),
        COUNTED(countsDown, 2002, 2002),
        COUNTED(calls, 12, 12),
        COUNTED(copies, 13, 112),
        COUNTED(fills, 10, 25),
        COUNTED(loadsSS, 5, 5),
        COUNTED(loadsSSTwice, 5, 5), // some hold the trap off for the first alone, others for both
        COUNTED(loadsSSFromMemory, 5, 5),
        COUNTED(loadsSSBeforeReturn, 3, 3),
        COUNTED(keepsFlags, 4, 4),
        COUNTED(clearsTrapFlag, 6, 6),
        COUNTED(loadsFlags, 4, 4),
        COUNTED(loadsHalfFlags, 4, 4),
    };
    for (const Counted& row : rows) {
        const bxInstructionCount count = bxCountInstructions(row.function, most);
        EXPECT_TRUE(count.known()) << row.name << count.problem.c_str();
        EXPECT_EQ(count.instructions, row.instructions) << row.name;
        EXPECT_EQ(count.steps, row.steps) << row.name;
    }
    if (__builtin_cpu_supports("avx")) {
        EXPECT_EQ(bxCountInstructions(wide, most).instructions, 4);
    }
    if (__builtin_cpu_supports("avx512f")) {
        EXPECT_EQ(bxCountInstructions(widest, most).instructions, 4);
    }
}

std::jmp_buf s_outside;

/** Whether a function returns here: not every kernel takes int 80h from a program of 64 bits. */
bool returns(int (*function)()) {
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGSEGV, SIG_DFL);
        function();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status);
}

TEST(Instructions, WhatEndsTheSteppingIsNamed) {
    const struct {
        const char* text;
        int (*function)();
    } rows[] = {
        {"instr=?fault", illegal},
        {"instr=?fault", readsNull},
        {"instr=?fault",
         [] {
             std::exit(1);
             return 0;
         }},
        {"instr=?interrupt", breaks},
        {returns(asksKernel) ? "instr=?syscall" : "instr=?fault", asksKernel},
        {"instr=?handler", [] { return std::signal(SIGTRAP, SIG_IGN) == SIG_ERR ? 1 : 0; }},
#if defined(__x86_64__)
        {"instr=?syscall", callsKernel},
        {"instr=?iret", returnsByInterrupt},
#endif
        {"instr>4000", endless},
    };
    struct sigaction before {
    }, after{};
    sigaction(SIGTRAP, nullptr, &before);
    for (const auto& row : rows) {
        const bxInstructionCount count = bxCountInstructions(row.function, most);
        EXPECT_FALSE(count.known());
        EXPECT_STREQ(count.text().c_str(), row.text);
    }
    sigaction(SIGTRAP, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
    EXPECT_EQ(bxCountInstructions(countsDown, 2002).instructions, 2002) << "just within the limit";
    EXPECT_TRUE(bxCountInstructions(countsDown, 2001).overLimit);

    if (setjmp(s_outside) == 0) {
        bxCountInstructions([]() -> int { std::longjmp(s_outside, 1); }, most);
        ADD_FAILURE() << "it does not return";
    }
    EXPECT_EQ(bxCountInstructions(straight, most).instructions, 4) << "after a jump out";
}

/** What libraries do: a function pointer, branches by data, a loop. */
int sorts() {
    static int values[5];
    for (int i = 0; i < 5; ++i)
        values[i] = i * 7919 % 13;
    std::qsort(values, 5, sizeof values[0], [](const void* a, const void* b) {
        return *static_cast<const int*>(a) - *static_cast<const int*>(b);
    });
    return values[0];
}

TEST(Instructions, AreTheSameEveryTime) {
    sorts(); // which binds it
    const bxInstructionCount first = bxCountInstructions(sorts, most);
    ASSERT_TRUE(first.known()) << first.problem.c_str();
    EXPECT_GT(first.instructions, 50);
    for (int i = 0; i < 3; ++i) {
        const bxInstructionCount again = bxCountInstructions(sorts, most);
        EXPECT_EQ(again.instructions, first.instructions);
        EXPECT_EQ(again.digest, first.digest);
    }
    // Signals that arrive meanwhile are not counted.
    static volatile int alarms = 0;
    const auto saved = std::signal(SIGALRM, [](int) { alarms = alarms + 1; });
    const itimerval often{{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &often, nullptr);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(bxCountInstructions(calls, most).steps, 12) << i;
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    std::signal(SIGALRM, saved);
    EXPECT_GT(alarms, 10);
}

#if defined(__x86_64__)
TEST(Instructions, DigestTellsMovedCodeFromOther) {
    const bxInstructionCount one = bxCountInstructions(before, most);
    const bxInstructionCount moved = bxCountInstructions(after, most);
    const bxInstructionCount other = bxCountInstructions(changed, most);
    EXPECT_EQ(one.digest, moved.digest);
    EXPECT_NE(moved.digest, other.digest);
    EXPECT_EQ(moved.instructions, other.instructions);
}
#endif

TEST(Instructions, Text) {
    bxInstructionCount count;
    EXPECT_STREQ(count.text().c_str(), "");
    count.instructions = count.steps = 120;
    count.digest = 0x1F;
    EXPECT_STREQ(count.text().c_str(), "instr=120 code=0000001f");
    count.steps = 1000;
    EXPECT_STREQ(count.text().c_str(), "instr=120 steps=1000 code=0000001f");
}

TEST(Opcode, KindAndForm) {
    const struct {
        std::initializer_list<std::uint8_t> code;
        bxOpcode::Kind kind;
        int formBytes, displacement;
    } rows[] = {
        {{0x90}, bxOpcode::plain, 1, 0},
        {{0x01, 0xC8}, bxOpcode::plain, 2, 0},                        // add %ecx, %eax
        {{0x05, 1, 0, 0, 0}, bxOpcode::plain, 1, 0},                  // add $1, %eax
        {{0x8B, 0x44, 0x24, 8}, bxOpcode::plain, 3, 1},               // mov 8(%esp), %eax
        {{0x8B, 0x05, 0, 0, 0, 0}, bxOpcode::plain, 2, 4},            // from an address
        {{0x8B, 0x04, 0x25, 0, 0, 0, 0}, bxOpcode::plain, 3, 4},      // by a SIB byte
        {{0x66, 0x8E, 0xD0}, bxOpcode::loadsStack, 3, 0},             // mov %eax, %ss
        {{0x8E, 0xD8}, bxOpcode::plain, 2, 0},                        // mov %eax, %ds
        {{0x8E, 0x94, 0x24, 0, 0, 0, 0}, bxOpcode::loadsStack, 3, 4}, // mov (%esp), %ss
        {{0xF3, 0x66, 0xA5}, bxOpcode::repeatedString, 3, 0},         // rep movsw
        {{0xA5}, bxOpcode::plain, 1, 0},                              // movsl
        {{0xF3, 0x0F, 0x10, 0xC1}, bxOpcode::plain, 4, 0},            // movss
        {{0x0F, 0x84, 0, 0, 0, 0}, bxOpcode::plain, 2, 0},            // je
        {{0x0F, 0xA2}, bxOpcode::plain, 2, 0},                        // cpuid
        {{0x0F, 0x05}, bxOpcode::systemCall, 2, 0},                   // syscall
        {{0xCD, 0x80}, bxOpcode::systemCall, 1, 0},                   // int $0x80
        {{0xCD, 0x03}, bxOpcode::interrupt, 1, 0},                    // int $3
        {{0x66, 0x9D}, bxOpcode::popsFlags, 2, 0},                    // popfw
        {{0xC5, 0xF8, 0x77}, bxOpcode::plain, 3, 0},                  // vzeroupper
        {{0xC5, 0xF8, 0x9D, 0xC1}, bxOpcode::plain, 4, 0},            // an opcode of another map
        {{0xC4, 0xE2, 0x71, 0x77, 0xC2}, bxOpcode::plain, 5, 0},      // the same number in another map
        {{0x62, 0xF1, 0x75, 0x48, 0xFE, 0x44, 0x24, 1}, bxOpcode::plain, 7, 1}, // vpaddd 64(%esp)
        {{0x66, 0x0F, 0x3A, 0x0F, 0xC1, 8}, bxOpcode::plain, 5, 0},             // palignr
    };
    for (const auto& row : rows) {
        const bxOpcode opcode = bxDecodeOpcode(row.code.begin());
        const std::string what = testing::PrintToString(std::vector<int>(row.code.begin(), row.code.end()));
        EXPECT_EQ(opcode.kind, row.kind) << what;
        EXPECT_EQ(opcode.formBytes, row.formBytes) << what;
        EXPECT_EQ(opcode.displacement, row.displacement) << what;
    }
}

} // namespace
