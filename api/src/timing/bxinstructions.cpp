#include "timing/bxinstructions.h"

#include "output/bxtable.h"
#include "timing/bxexception.h"
#include "timing/bxopcode.h"
#include "timing/bxsignal.h"
#include "timing/bxsteplog.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <sys/syscall.h>
#include <ucontext.h>
#include <utility>

/** Sets the trap flag, calls, and clears it; keeps all registers of its caller, whatever the function does.
 */
extern "C" int bx_step_call(int (*function)());
/** The first byte behind it. */
extern "C" const char bx_step_end[];

#if defined(__x86_64__)
__asm__(R"(
    .pushsection .text
    .hidden bx_step_call
    .globl bx_step_call
    .type bx_step_call, @function
    .hidden bx_step_end
    .globl bx_step_end
bx_step_call:
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
    subq $8, %rsp
    .cfi_adjust_cfa_offset 8
    pushfq
    orl $0x100, (%rsp)
    popfq
    call *%rdi
    pushfq
    andl $0xFFFFFEFF, (%rsp)
    popfq
    cld
    addq $8, %rsp
    .cfi_adjust_cfa_offset -8
    popq %r15
    .cfi_adjust_cfa_offset -8
    popq %r14
    .cfi_adjust_cfa_offset -8
    popq %r13
    .cfi_adjust_cfa_offset -8
    popq %r12
    .cfi_adjust_cfa_offset -8
    popq %rbp
    .cfi_adjust_cfa_offset -8
    popq %rbx
    .cfi_adjust_cfa_offset -8
    ret
    .cfi_endproc
bx_step_end:
    .size bx_step_call, . - bx_step_call
    .popsection
)");
#else
__asm__(R"(
    .pushsection .text
    .hidden bx_step_call
    .globl bx_step_call
    .type bx_step_call, @function
    .hidden bx_step_end
    .globl bx_step_end
bx_step_call:
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
    movl 20(%esp), %eax
    subl $12, %esp
    .cfi_adjust_cfa_offset 12
    pushfl
    orl $0x100, (%esp)
    popfl
    call *%eax
    pushfl
    andl $0xFFFFFEFF, (%esp)
    popfl
    cld
    addl $12, %esp
    .cfi_adjust_cfa_offset -12
    popl %edi
    .cfi_adjust_cfa_offset -4
    popl %esi
    .cfi_adjust_cfa_offset -4
    popl %ebp
    .cfi_adjust_cfa_offset -4
    popl %ebx
    .cfi_adjust_cfa_offset -4
    ret
    .cfi_endproc
bx_step_end:
    .size bx_step_call, . - bx_step_call
    .popsection
)");
#endif

namespace {

using Address = std::uintptr_t;

/** Registers of the interrupted code that stepping looks at. */
#if defined(__x86_64__)
enum : int {
    instructionPointer = REG_RIP,
    stackPointer = REG_RSP,
    flags = REG_EFL,
    callNumber = REG_RAX,
    firstArgument = REG_RDI
};
constexpr std::array setsHandler = {SYS_rt_sigaction};
#else
enum : int {
    instructionPointer = REG_EIP,
    stackPointer = REG_ESP,
    flags = REG_EFL,
    callNumber = REG_EAX,
    firstArgument = REG_EBX
};
constexpr std::array setsHandler = {SYS_rt_sigaction, SYS_sigaction, SYS_signal};
#endif

constexpr long trapFlag = 0x100;

/** What the handler knows of the call that is being stepped. It must not allocate. */
struct Stepping {
    long long most = 0;
    bxStepLog* log = nullptr; /**< may be null */
    long long instructions = 0;
    long long steps = 0;
    std::uint32_t digest = 2166136261U; /**< FNV-1a */
    Address entryStack = 0;             /**< stack pointer at the entry of the function */
    Address previous = 0;               /**< address of the last instruction */
    Address behindHoldOff = 0; /**< of the next one, if the last may have held off its trap; else 0 */
    const char* problem = "";
    bool active = false;
    bool overLimit = false;
    bool returned = false;

    /** A trap in front of an instruction; false when it was the last one. */
    bool trap(const gregset_t& registers);

  private:
    bool step(const gregset_t& registers, Address at);
    void takeHeldOff(Address at);
    bool end(const char* why) {
        problem = why;
        return false;
    }
    void hash(const std::uint8_t* code, int bytes) {
        for (int i = 0; i < bytes; ++i)
            digest = (digest ^ code[i]) * 16777619U;
    }
};

Stepping s_stepping;

Address registerValue(const gregset_t& registers, int index) {
    return static_cast<Address>(registers[index]);
}

bool isInStepCall(Address at) {
    return at >= reinterpret_cast<Address>(&bx_step_call) && at < reinterpret_cast<Address>(bx_step_end);
}

/** The address behind an instruction without constants. */
Address behind(Address at, const bxOpcode& opcode) {
    return at + static_cast<Address>(opcode.formBytes + opcode.displacement);
}

/**
 * Counts what was executed unseen where a trap was held off: the instruction behind a load of SS, and where
 * that is one, too, on some processors also the next.
 */
void Stepping::takeHeldOff(Address at) {
    for (Address unseen = std::exchange(behindHoldOff, 0); unseen != 0 && unseen != at;) {
        const auto* const code = reinterpret_cast<const std::uint8_t*>(unseen);
        const bxOpcode opcode = bxDecodeOpcode(code);
        hash(code, opcode.formBytes);
        ++steps;
        ++instructions;
        unseen = opcode.kind == bxOpcode::loadsStack ? behind(unseen, opcode) : 0;
    }
}

bool Stepping::trap(const gregset_t& registers) {
    const Address at = registerValue(registers, instructionPointer);
    const Address stack = registerValue(registers, stackPointer);
    if (entryStack == 0)
        entryStack = stack;
    if (isInStepCall(at)) {
        takeHeldOff(at);
        returned = true;
        return false;
    }
    if (stack > entryStack)
        return end("left");
    return step(registers, at);
}

/** Whether a system call is one that takes SIGTRAP away from the stepping. */
bool takesTrap(const gregset_t& registers) {
    const auto number = static_cast<long>(registers[callNumber]);
    return std::find(setsHandler.begin(), setsHandler.end(), number) != setsHandler.end() &&
           registers[firstArgument] == SIGTRAP;
}

bool Stepping::step(const gregset_t& registers, Address at) {
    const auto* const code = reinterpret_cast<const std::uint8_t*>(at);
    const bxOpcode opcode = bxDecodeOpcode(code);
    const bool repeats = opcode.kind == bxOpcode::repeatedString && at == previous;
    takeHeldOff(at);
    previous = at;
    ++steps;
    instructions += repeats ? 0 : 1;
    if (steps > most) {
        overLimit = true;
        return false;
    }
    if (log)
        log->add(registers);
    if (!repeats)
        hash(code, opcode.formBytes);
    switch (opcode.kind) {
    case bxOpcode::systemCall:
        return end(takesTrap(registers) ? "handler" : "syscall");
    case bxOpcode::interrupt:
        return end("interrupt");
    case bxOpcode::interruptReturn:
        return end("iret");
    case bxOpcode::popsFlags:
        // The flags that it loads keep the stepping on; it makes no difference to anything else.
        reinterpret_cast<std::uint8_t*>(registerValue(registers, stackPointer))[1] |= trapFlag >> 8;
        break;
    case bxOpcode::loadsStack:
        behindHoldOff = behind(at, opcode);
        break;
    default:
        break;
    }
    return true;
}

/** Not every emulator starts a handler of 32 bits with a stack that vector instructions can work on. */
[[gnu::force_align_arg_pointer]] void onTrap(int, siginfo_t*, void* context) {
    gregset_t& registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    if (s_stepping.active && s_stepping.trap(registers))
        return;
    s_stepping.active = false;
    registers[flags] &= ~static_cast<greg_t>(trapFlag);
}

/** Takes SIGTRAP, and lets it through, while it lives: a trap that is blocked would end the process. */
class TrapHandler {
  public:
    TrapHandler() {
        struct sigaction action {};
        action.sa_sigaction = onTrap;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        sigemptyset(&action.sa_mask);
        sigaction(SIGTRAP, &action, &m_action);
        sigset_t trap;
        sigemptyset(&trap);
        sigaddset(&trap, SIGTRAP);
        sigprocmask(SIG_UNBLOCK, &trap, &m_mask);
    }
    ~TrapHandler() {
        sigprocmask(SIG_SETMASK, &m_mask, nullptr);
        sigaction(SIGTRAP, &m_action, nullptr);
    }
    TrapHandler(const TrapHandler&) = delete;
    TrapHandler& operator=(const TrapHandler&) = delete;

  private:
    struct sigaction m_action {};
    sigset_t m_mask{};
};

/** Steps through a call; what was found stands in `s_stepping`. */
void stepThrough(int (*function)(), long long most, bxStepLog* log) {
    s_stepping = {.most = most, .log = log, .active = true};
    bxFaultGuard guard;
    if (sigsetjmp(guard.buffer(), 1) != 0) {
        s_stepping.active = false;
        s_stepping.problem = "fault";
        try {
            guard.raise(); // which puts the floating-point state right
        } catch (const bxException&) {
            return;
        }
    }
    bx_step_call(function);
    s_stepping.active = false;
    if (!s_stepping.returned && !s_stepping.overLimit && !*s_stepping.problem)
        s_stepping.problem = "lost";
}

} // namespace

/** A function of one instruction. */
extern "C" int bx_empty_call();
__asm__(R"(
    .pushsection .text
    .hidden bx_empty_call
    .globl bx_empty_call
    .type bx_empty_call, @function
bx_empty_call:
    ret
    .size bx_empty_call, . - bx_empty_call
    .popsection
)");

bxInstructionCount bxCountInstructions(int (*function)(), long long most, bxStepLog* log) {
    const TrapHandler handler;
    bxInstructionCount count;
    stepThrough(bx_empty_call, 1, nullptr);
    if (s_stepping.instructions != 1 || !s_stepping.returned) {
        count.problem = "nosteps";
        return count;
    }
    if (log)
        log->clear();
    stepThrough(function, most, log);
    count.overLimit = s_stepping.overLimit;
    count.problem = s_stepping.problem;
    count.steps = s_stepping.steps;
    if (count.overLimit || !count.problem.empty())
        return count;
    count.instructions = s_stepping.instructions;
    count.digest = s_stepping.digest;
    return count;
}

bxString bxInstructionCount::text() const {
    if (overLimit)
        return bxString("instr>") << steps - 1;
    if (!problem.empty())
        return bxString(bxTable::instructions) + "?" + problem;
    if (instructions == 0)
        return "";
    bxString line = bxString(bxTable::instructions) << instructions;
    if (steps != instructions)
        line << " " << bxTable::steps << steps;
    char code[16];
    std::snprintf(code, sizeof code, "%08x", digest);
    return line << " " << bxTable::code << code;
}
