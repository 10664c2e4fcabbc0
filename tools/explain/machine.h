/** \file
 * What a core can do, measured.
 */
#ifndef EXPLAIN_MACHINE_H
#define EXPLAIN_MACHINE_H

#include "chain.h"
#include "json.h"

#include <filesystem>

/** Bytes in a clock when a block of this size is gone through again and again. */
struct MemoryRate {
    long long kilobytes;
    double bytesPerClock;
};

struct Machine {                         // NOLINT(bugprone-exception-escape): moving Json takes no memory
    std::map<std::string, double> rates; /**< of what `resourcesOf` names, in a core clock */
    Latencies latencies;
    /** By what is done: "read", "write" (lines that nobody reads), "copy" from one half to the other, the
     * bytes of both counted; by size, ascending. */
    std::map<std::string, std::vector<MemoryRate>> memory;
    Json conditions;      /**< what makes it this machine: processor, host, version */
    std::string measured; /**< when */

    /** The fastest way to so many bytes; null where there are fewer than in the smallest block. */
    const MemoryRate* memoryRate(const std::string& way, double bytes) const;
    bool known() const { return !rates.empty(); }
};

/** How much of everything that can be short a call needs: instructions, each kind, loads and stores by bytes,
 * branches, arithmetic of all kinds. */
std::map<std::string, double> resourcesOf(const Profile& profile);

Json toJson(const Machine& machine);

/** What kernels did that have nothing else to do (program benchex-machine). */
Machine machineFrom(const std::vector<SteppedCall>& kernels);

/**
 * The machine that this is, from $XDG_CACHE_HOME/benchex (~/.cache), or measured now and kept there.
 * \param program  benchex-machine \param again  measure although it is known
 * \throws ExplainError  where it cannot be measured
 */
Machine thisMachine(const std::filesystem::path& program, bool again);

#endif
