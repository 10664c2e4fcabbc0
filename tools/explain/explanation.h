/** \file
 * What there is to say about a call, as text and as JSON.
 */
#ifndef EXPLAIN_EXPLANATION_H
#define EXPLAIN_EXPLANATION_H

#include "bounds.h"
#include "json.h"
#include "profile.h"
#include "symbols.h"

#include <iosfwd>

/** A function by its part of the instructions. */
struct FunctionCount {
    Place place; /**< of some address in it */
    long long instructions = 0;
    long long calls = 0; /**< by CALL; a function that was jumped to has none */
};

/** One instruction of a block. */
struct CodeLine {
    std::uint64_t address;
    std::string text;
    std::string line; /**< of the source; empty where it is not known, or that of the instruction before */
};

struct ExplainedBlock {
    BlockCount count;
    Place place;
    std::vector<CodeLine> code;
};

/** A call with names. */
struct Explanation {
    const SteppedCall& call;
    Profile profile;
    std::vector<FunctionCount> functions;
    std::vector<ExplainedBlock> blocks; /**< the hottest */
    long long blockedLoads = 0;         /**< see chain.h */
    std::optional<Limits> limits;       /**< where machine and clocks are known */

    /** Instructions in a core clock; 0 where that is not known. */
    double instructionsPerClock() const;
};

/** \param blocks  how many of the hottest are shown \param machine  null where it is not known */
Explanation explain(const SteppedCall& call, int blocks, const Machine* machine = nullptr);

void writeText(std::ostream& out, const Explanation& explanation);
Json toJson(const Explanation& explanation);

#endif
