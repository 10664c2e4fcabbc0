#include "misbehaviours.h"

#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

/** Defines a function of plain assembly, which returns 0 if it returns. */
#define ASSEMBLY(name, code)                                                                                 \
    __asm__(".pushsection .text\n\t.globl " #name "\n\t.type " #name ", @function\n" #name ":\n\t" code      \
            "\n\txorl %eax, %eax\n\tret\n\t.size " #name ", . - " #name "\n\t.popsection");

#if defined(__x86_64__)
#define SP "%rsp"
#define AX "%rax"
#else
#define SP "%esp"
#define AX "%eax"
#endif

/** Stores a word below the stack pointer, where nobody else does, and loads it into a control register. */
#define LOAD_WORD(value, instruction) "movl $" value ", -16(" SP ")\n\t" instruction " -16(" SP ")"

ASSEMBLY(zorsNullStore, "movl $1, 0")
ASSEMBLY(zorsWildRead,
         "xorl %eax, %eax\n\tnot " AX "\n\tshl $13, " AX "\n\tshr $1, " AX "\n\tmovl (" AX "), %eax")
ASSEMBLY(zorsJumpToNowhere, "xorl %eax, %eax\n\tjmp *" AX)
ASSEMBLY(zorsIllegalInstruction, "ud2")
ASSEMBLY(zorsDivideInteger, "xorl %ecx, %ecx\n\tmovl $1, %eax\n\tcltd\n\tidivl %ecx")
ASSEMBLY(zorsDivide87, "fld1\n\tfldz\n\tfdivrp\n\tfwait\n\tfstp %st(0)")
ASSEMBLY(zorsOverflowStack, "1: sub $2048, " SP "\n\tmovl $0, (" SP ")\n\tjmp 1b")
ASSEMBLY(zorsLoopForever, "1: pause\n\tjmp 1b")

ASSEMBLY(zorsRound87, LOAD_WORD("0xF7F", "fldcw"))
ASSEMBLY(zorsRoundSSX, LOAD_WORD("0xFF80", "ldmxcsr"))
ASSEMBLY(zorsDenormalSSX, LOAD_WORD("0x1F80", "ldmxcsr"))
ASSEMBLY(zorsDenormalInputSSX, LOAD_WORD("0x9FC0", "ldmxcsr"))
ASSEMBLY(zorsUnmaskSSX, LOAD_WORD("0x9D00", "ldmxcsr"))
ASSEMBLY(zorsLeaveStack87, "fld1")
ASSEMBLY(zorsLeaveMMX, "pxor %mm0, %mm0")
ASSEMBLY(zorsRaise87, "fldz\n\tfldz\n\tfdivp\n\tfstp %st(0)")
ASSEMBLY(zorsRaiseSSX, "xorps %xmm0, %xmm0\n\tdivss %xmm0, %xmm0")
ASSEMBLY(zorsClobberBX, "notl %ebx")
ASSEMBLY(zorsClobberBP, "xorl %ebp, %ebp")
#if defined(__x86_64__)
ASSEMBLY(zorsClobberR12, "movq $-1, %r12")
ASSEMBLY(zorsClobberR13, "movq $-1, %r13")
ASSEMBLY(zorsClobberR14, "incq %r14")
ASSEMBLY(zorsClobberR15, "incq %r15")
ASSEMBLY(zorsClobberTwo, "xorl %ebx, %ebx\n\tmovq $-1, %r12")
#else
ASSEMBLY(zorsClobberSI, "xorl %esi, %esi")
ASSEMBLY(zorsClobberDI, "incl %edi")
ASSEMBLY(zorsClobberTwo, "xorl %esi, %esi\n\tmovl $-1, %edi")
#endif
ASSEMBLY(zorsSetDirection, "std")

int zorsWritePastEnd(char* end) {
    __asm__ volatile("movb $1, (%0)" : : "r"(end) : "memory");
    return 0;
}

namespace {

/** A block so large that the heap maps it by itself: its ruin does not reach other blocks. */
std::size_t* loneBlock() {
    constexpr std::size_t bytes = 48U << 20;
    static auto* const block = static_cast<std::size_t*>(std::malloc(bytes));
    return block;
}

} // namespace

int zorsCorruptHeap() {
    std::size_t* volatile header = loneBlock() - 1; // the block's size, in the heap's own words
    *header = 0x2A;
    std::free(loneBlock());
    return 0;
}

int zorsThrow() {
    throw std::length_error("the table is empty");
}

int zorsThrowNumber() {
    throw 3;
}

int zorsExit() {
    std::exit(3);
}

int zorsExitAtOnce() {
    _exit(4);
}

int zorsPrint() {
    constexpr char line[] = "a line of the tested function\n";
    return write(STDOUT_FILENO, line, sizeof line - 1) < 0 ? -1 : 0;
}
