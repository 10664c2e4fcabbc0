#include "timing/bxcallwatch.h"

#include "output/bxostream.h"
#include "timing/bxfpwatch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

/**
 * Loads a known value into each register that a function has to preserve, calls, and stores a bit for each
 * that came back with another one. Its own caller finds the registers as they were.
 */
extern "C" int bx_call_registers(int (*function)(), unsigned* changed);

#if defined(__x86_64__)
__asm__(R"(
    .pushsection .text
    .hidden bx_call_registers
    .globl bx_call_registers
    .type bx_call_registers, @function
bx_call_registers:
    .cfi_startproc
    pushq %rbx
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %rbx, 0
    pushq %rbp
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %rbp, 0
    pushq %r12
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %r12, 0
    pushq %r13
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %r13, 0
    pushq %r14
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %r14, 0
    pushq %r15
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %r15, 0
    pushq %rsi
    .cfi_adjust_cfa_offset 8
    movq $0x5EED0001, %rbx
    movq $0x5EED0002, %rbp
    movq $0x5EED0004, %r12
    movq $0x5EED0008, %r13
    movq $0x5EED0010, %r14
    movq $0x5EED0020, %r15
    call *%rdi
    xorl %ecx, %ecx
    cmpq $0x5EED0001, %rbx
    je 1f
    orl $0x01, %ecx
1:  cmpq $0x5EED0002, %rbp
    je 1f
    orl $0x02, %ecx
1:  cmpq $0x5EED0004, %r12
    je 1f
    orl $0x04, %ecx
1:  cmpq $0x5EED0008, %r13
    je 1f
    orl $0x08, %ecx
1:  cmpq $0x5EED0010, %r14
    je 1f
    orl $0x10, %ecx
1:  cmpq $0x5EED0020, %r15
    je 1f
    orl $0x20, %ecx
1:  pushfq
    popq %rdx
    testl $0x400, %edx
    je 1f
    orl $0x40, %ecx
    cld
1:  popq %rsi
    .cfi_adjust_cfa_offset -8
    movl %ecx, (%rsi)
    popq %r15
    .cfi_adjust_cfa_offset -8
    .cfi_restore %r15
    popq %r14
    .cfi_adjust_cfa_offset -8
    .cfi_restore %r14
    popq %r13
    .cfi_adjust_cfa_offset -8
    .cfi_restore %r13
    popq %r12
    .cfi_adjust_cfa_offset -8
    .cfi_restore %r12
    popq %rbp
    .cfi_adjust_cfa_offset -8
    .cfi_restore %rbp
    popq %rbx
    .cfi_adjust_cfa_offset -8
    .cfi_restore %rbx
    ret
    .cfi_endproc
    .size bx_call_registers, . - bx_call_registers
    .popsection
)");
#else
__asm__(R"(
    .pushsection .text
    .hidden bx_call_registers
    .globl bx_call_registers
    .type bx_call_registers, @function
bx_call_registers:
    .cfi_startproc
    pushl %ebx
    .cfi_adjust_cfa_offset 4
    .cfi_rel_offset %ebx, 0
    pushl %ebp
    .cfi_adjust_cfa_offset 4
    .cfi_rel_offset %ebp, 0
    pushl %esi
    .cfi_adjust_cfa_offset 4
    .cfi_rel_offset %esi, 0
    pushl %edi
    .cfi_adjust_cfa_offset 4
    .cfi_rel_offset %edi, 0
    subl $12, %esp
    .cfi_adjust_cfa_offset 12
    movl $0x5EED0001, %ebx
    movl $0x5EED0002, %ebp
    movl $0x5EED0004, %esi
    movl $0x5EED0008, %edi
    call *32(%esp)
    xorl %ecx, %ecx
    cmpl $0x5EED0001, %ebx
    je 1f
    orl $0x01, %ecx
1:  cmpl $0x5EED0002, %ebp
    je 1f
    orl $0x02, %ecx
1:  cmpl $0x5EED0004, %esi
    je 1f
    orl $0x04, %ecx
1:  cmpl $0x5EED0008, %edi
    je 1f
    orl $0x08, %ecx
1:  pushfl
    popl %edx
    testl $0x400, %edx
    je 1f
    orl $0x40, %ecx
    cld
1:  movl 36(%esp), %edx
    movl %ecx, (%edx)
    addl $12, %esp
    .cfi_adjust_cfa_offset -12
    popl %edi
    .cfi_adjust_cfa_offset -4
    .cfi_restore %edi
    popl %esi
    .cfi_adjust_cfa_offset -4
    .cfi_restore %esi
    popl %ebp
    .cfi_adjust_cfa_offset -4
    .cfi_restore %ebp
    popl %ebx
    .cfi_adjust_cfa_offset -4
    .cfi_restore %ebx
    ret
    .cfi_endproc
    .size bx_call_registers, . - bx_call_registers
    .popsection
)");
#endif

namespace {

/** Bits that bx_call_registers stores. The direction flag has to be clear when a function returns. */
struct RegisterName {
    unsigned bit;
    const char* name;
};
#if defined(__x86_64__)
constexpr std::array registerRows = {RegisterName{0x01, "rbx "}, RegisterName{0x02, "rbp "},
                                     RegisterName{0x04, "r12 "}, RegisterName{0x08, "r13 "},
                                     RegisterName{0x10, "r14 "}, RegisterName{0x20, "r15 "},
                                     RegisterName{0x40, "DF "}};
#else
constexpr std::array registerRows = {RegisterName{0x01, "ebx "}, RegisterName{0x02, "ebp "},
                                     RegisterName{0x04, "esi "}, RegisterName{0x08, "edi "},
                                     RegisterName{0x40, "DF "}};
#endif

constexpr unsigned controlBits87 = 0xF3F;   /**< masks, precision and rounding */
constexpr unsigned controlBitsSSX = 0xFFC0; /**< all but the status flags */
constexpr int denormalsAreZero = 0x40;

const tsSSXBase& ssx() {
    static const tsSSXBase base; // asked once: CPUID is slow under a hypervisor
    return base;
}

/** Control words, and how many registers of the x87 are in use. */
struct State {
    int word87 = 0;
    int wordSSX = 0;
    int inUse = 0;
};

/** As FXSAVE stores it, which every processor with SSE has: it takes a third of the time of FNSTENV and
 * FLDENV. */
State savedState() {
    struct alignas(64) Image { // 16 would do, if every caller kept the stack aligned
        std::uint16_t control, status;
        std::uint8_t tags; /**< a bit for each register in use */
        std::uint8_t none[19];
        std::uint32_t mxcsr;
        std::uint8_t registers[484];
    };
    Image image;
    static_assert(sizeof image == 512);
    __asm__ volatile("fxsave %0" : "=m"(image));
    return {image.control, static_cast<int>(image.mxcsr), image.tags ? std::popcount(image.tags) : 0};
}

/** The same from the environment of the x87, which storing masks all exceptions in, so that it is loaded
 * again. */
State storedState() {
    struct Environment {
        std::uint32_t control, status, tags, instruction, code, operand, data;
    } environment;
    __asm__ volatile("fnstenv %0\n\tfldenv %0" : "+m"(environment));
    constexpr unsigned empty = 3;
    int inUse = 0;
    for (int i = 0; i < 8; ++i)
        inUse += (environment.tags >> (2 * i) & 3U) != empty;
    return {static_cast<int>(environment.control), 0, inUse};
}

State present() {
    State state = ssx().hasSSX() ? savedState() : storedState();
    state.word87 &= static_cast<int>(controlBits87);
    state.wordSSX &= static_cast<int>(controlBitsSSX);
    return state;
}

/** Empties the x87 stack and sets the control words; the SSE status flags stay. */
void setControl(int word87, int wordSSX) {
    __asm__ volatile("fninit");
    bx_set_cw_fpu(static_cast<unsigned>(word87), controlBits87);
    if (ssx().hasSSX())
        bx_set_ssx(static_cast<unsigned>(wordSSX), controlBitsSSX);
}

bxFuncCall s_shielded = nullptr;

} // namespace

constinit bxCallWatch g_callWatch;

void bxCallWatch::start() {
    const State state = present();
    m_start87 = state.word87;
    m_startSSX = state.wordSSX;
    if (state.inUse != 0)
        setControl(m_start87, m_startSSX);
}

void bxCallWatch::stop() {
    const State state = present();
    if (state.inUse == 0 && state.word87 == m_start87 && state.wordSSX == m_startSSX)
        return;
    m_stackInUse = std::max(m_stackInUse, state.inUse);
    if (state.word87 != m_start87 && !m_changed87) {
        m_changed87 = true;
        m_word87 = state.word87;
    }
    if (state.wordSSX != m_startSSX && !m_changedSSX) {
        m_changedSSX = true;
        m_wordSSX = state.wordSSX;
    }
    setControl(m_start87, m_startSSX);
}

int bxCallWatch::call(bxFuncCall function) {
    unsigned changed = 0;
    const int status = bx_call_registers(function, &changed);
    m_registers |= changed;
    return status;
}

int bxCallWatch::callShielded() {
    unsigned changed = 0;
    return bx_call_registers(s_shielded, &changed);
}

bxFuncCall bxCallWatch::shield(bxFuncCall function) {
    if (function != callShielded)
        s_shielded = function;
    return callShielded;
}

bxString bxCallWatch::registerNames() const {
    bxString names;
    for (const RegisterName& row : registerRows)
        if (m_registers & row.bit)
            names << row.name;
    return names;
}

void bxCallWatch::print() const {
    const auto warn = [](const char* what, const bxString& text) {
        g_ostrm << WARN << "-- " << what << text << "\n" << endMessage;
    };
    if (m_changed87)
        warn("Control   87: ", bxString("changed to ") + ts87Base::strCW(m_word87));
    if (m_changedSSX)
        warn("Control   SSX: ", bxString("changed to ") + ssx().strCW(m_wordSSX) +
                                    (m_wordSSX & denormalsAreZero ? "DenormalsAreZero " : ""));
    if (m_stackInUse)
        warn("Stack     87: ", bxString() << m_stackInUse << " of 8 registers left in use");
    if (clobbers())
        warn("Registers: ", registerNames() + "not preserved");
}
