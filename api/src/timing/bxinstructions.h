/** \file
 * Counts the instructions of one call by single-stepping: exact, on any x86 processor, without counters or
 * rights. Each step is a trap into the system and back, some 10 microseconds on a virtual machine.
 */
#ifndef BXINSTRUCTIONS_H
#define BXINSTRUCTIONS_H

#include "foundation/bxstring.h"

#include <cstdint>

class bxStepLog;

/** The instructions of one call, from the entry of the function to its return, the return included. */
struct bxInstructionCount {
    long long instructions = 0; /**< a repeated string instruction is one, like any other */
    long long steps = 0;        /**< the same, with every iteration of repeated string instructions */
    /**
     * Hash of what was executed, in its order: prefixes, opcodes and registers without constants, addresses
     * and jump distances. Code that was only moved has the same.
     */
    std::uint32_t digest = 0;
    bool overLimit = false; /**< the stepping ended at the limit */
    bxString problem;       /**< a word; empty where the count holds */

    /** Whether the call was counted to its end. */
    bool known() const { return instructions > 0 && !overLimit && problem.empty(); }
    /**
     * "instr=120 code=9d2c5680", with "steps=" where that differs, "instr>200000" or
     * "instr=?fault"; empty where nothing was counted.
     */
    bxString text() const;
};

/**
 * Calls the function once, step by step. A function that ends the stepping is named in `problem`, and nothing
 * is counted: "syscall" (or int 80h, before it is made), "handler" (it installs one for SIGTRAP),
 * "interrupt", "iret", "fault" (also an exit or the time limit), "left" (it jumped out of its call), "lost"
 * (it got rid of the trap flag in another way than POPF, which is counted); "nosteps" is a machine that does
 * not step. Not reentrant; other threads are not counted. \param most  steps after which the call goes on
 * without them \param log  takes down each step, too, where there is one
 */
bxInstructionCount bxCountInstructions(int (*function)(), long long most, bxStepLog* log = nullptr);

#endif
