/** \file
 * How far a call is from what the machine can do.
 */
#ifndef EXPLAIN_BOUNDS_H
#define EXPLAIN_BOUNDS_H

#include "chain.h"
#include "machine.h"

/** A number of clocks that a call cannot do without, and what needs them. */
struct Bound {
    std::string name; /**< "loads of 32" */
    double clocks = 0;
    double share = 0; /**< of the measured clocks, at most 1 */
};

struct Limits {
    std::vector<Bound> bounds; /**< the largest first */
    Chain chain;               /**< the longest of instructions that wait for each other */

    /** Whether the largest bound explains half of the clocks or more. */
    bool explained() const { return !bounds.empty() && bounds.front().share >= 0.5; }
    /** "limit=loads of 32 61%", or "limit=latency or waiting" with what the chain explains. */
    std::string text() const;
};

/**
 * What the mix of a call costs at least on a machine. A rate of the machine is the best that any kernel
 * showed; where a call was faster, it has shown the better one itself, and its share is 1. \param clocks  of
 * the core, measured
 */
Limits limitsOf(const SteppedCall& call, const Profile& profile, const Machine& machine);

#endif
