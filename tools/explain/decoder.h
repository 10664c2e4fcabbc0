/** \file
 * Instructions taken apart.
 */
#ifndef EXPLAIN_DECODER_H
#define EXPLAIN_DECODER_H

#include "kinds.h"
#include "stepfile.h"

#include <map>
#include <memory>
#include <vector>

/** What an instruction reads or writes beside registers. */
struct Access {
    int base = -1, index = -1; /**< of the registers of the step file, -1 for none */
    int scale = 1;
    std::uint64_t displacement =
        0;                   /**< with the address of the next instruction, where it is relative to it */
    bool threadData = false; /**< relative to the thread's own data */
    bool inVector = false;   /**< the indices stand in a vector: the address is not known */
    int bytes = 0;           /**< all numbers together */
    bool read = false, write = false;

    std::uint64_t address(const StepReader& step, std::uint64_t thread) const;
};

/** An instruction, and what it waits for. */
struct Instruction {
    std::uint64_t address = 0;
    int length = 0;
    std::string text; /**< as a disassembler writes it */
    std::string name;
    Kind kind;
    int operations = 0; /**< floating-point operations, of a multiply-add two for each number */
    std::vector<Access> accesses;
    std::vector<int> reads, addressReads, writes; /**< registers, as numbers below `Instruction::registers` */
    bool endsBlock = false;                       /**< branch, call or return */
    bool repeats = false;                         /**< a string instruction, iteration by iteration */
    int counter = -1; /**< register of the step file that counts these iterations */

    static constexpr int registers = 64;

    std::uint64_t next() const { return address + static_cast<std::uint64_t>(length); }
    long long bytesRead() const;
    long long bytesWritten() const;
};

/** Instructions of a call by their addresses. \throws ExplainError  for one that cannot be decoded */
std::map<std::uint64_t, Instruction> decode(const SteppedCall& call);

#endif
