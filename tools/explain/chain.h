/** \file
 * Instructions that wait for each other.
 */
#ifndef EXPLAIN_CHAIN_H
#define EXPLAIN_CHAIN_H

#include "profile.h"

/** Clocks from an instruction's operands to its result, by group; a load's and a forwarded store's too. */
struct Latencies {
    std::map<std::string, double> byGroup; /**< by the text of the group, and "forward" */

    double of(Group group) const;
    double forward() const;
};

/** The longest way through a call on which each instruction needs the result of the one before. */
struct Chain {
    double clocks = 0;
    double share = 0; /**< of the measured clocks */
    long long instructions = 0;
    std::map<Group, long long> groups; /**< what stands on it */
};

/** Through registers, flags and memory; branches are taken as foreseen. */
Chain longestChain(const SteppedCall& call, const Profile& profile, const Latencies& latencies);

/** Loads that need several stores made shortly before, or a part of one and something else: they wait until
 * these stores are done. */
long long blockedLoads(const SteppedCall& call, const Profile& profile);

#endif
