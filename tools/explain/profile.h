/** \file
 * What a call executed, counted.
 */
#ifndef EXPLAIN_PROFILE_H
#define EXPLAIN_PROFILE_H

#include "decoder.h"

/** Instructions in a row that are always executed together. */
struct BlockCount {
    std::uint64_t begin = 0, last = 0; /**< addresses of the first and the last instruction */
    int instructions = 0;
    long long executions = 0;

    long long executed() const { return instructions * executions; }
};

/** What was read and written of some memory. */
struct MemoryUse {
    std::string name;
    long long bytesRead = 0, bytesWritten = 0;
    long long lines = 0; /**< of 64 bytes, different ones */
};

struct Profile {
    std::map<std::uint64_t, Instruction> code;
    std::map<std::uint64_t, long long>
        executions; /**< by address; a repeated string instruction counts once */
    long long instructions = 0;
    long long steps = 0;           /**< with the iterations of string instructions */
    std::map<Kind, long long> mix; /**< every instruction is of one kind */
    /** Accesses by their bytes; those of other instructions, too, without those of repeated string
     * instructions, which go line by line. */
    std::map<int, long long> loads, stores;
    long long operations = 0; /**< floating-point, a multiply-add is two */
    long long branchesTaken = 0;
    std::vector<BlockCount> blocks;           /**< the most executed instructions first */
    std::map<std::uint64_t, long long> calls; /**< of functions, by the address of their first instruction */
    std::vector<MemoryUse> memory;            /**< blocks of test data, stack, and everything else */
    long long lines = 0;                      /**< of 64 bytes, all of them */
    long long linesWritten = 0;               /**< some of these */

    long long count(Group group) const;
};

/** Summed accesses and bytes of one of the tables above. */
long long accessesIn(const std::map<int, long long>& table);
long long bytesIn(const std::map<int, long long>& table);

Profile profileOf(const SteppedCall& call);

#endif
