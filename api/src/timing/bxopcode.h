/** \file
 * What single-stepping has to know of an instruction: its kind, by its first bytes.
 */
#ifndef BXOPCODE_H
#define BXOPCODE_H

#include <cstdint>

/** The part of an instruction that says what it does and with which registers; no constants or addresses. */
struct bxOpcode {
    enum Kind {
        plain,
        repeatedString, /**< REP with a string operation: steps once an iteration */
        loadsStack,     /**< of SS: the trap comes one instruction later */
        popsFlags,      /**< POPF */
        systemCall,     /**< SYSCALL, SYSENTER, INT 80h */
        interrupt,      /**< other software interrupts, breakpoints */
        interruptReturn /**< IRET */
    };
    Kind kind = plain;
    int formBytes = 0;    /**< prefixes, opcode, ModRM and SIB */
    int displacement = 0; /**< bytes of the address behind them */
};

/**
 * Decodes prefixes, opcode, ModRM and SIB in the mode that this program runs in (64 or 32 bits).
 * \param code  an instruction; no byte behind it is read
 */
bxOpcode bxDecodeOpcode(const std::uint8_t* code);

#endif
