/** \file
 * The rounds of a comparison.
 */
#ifndef PAIR_PAIRRUN_H
#define PAIR_PAIRRUN_H

#include "roundstatistics.h"
#include "rows.h"
#include "sideprocess.h"

#include <array>
#include <functional>
#include <random>
#include <string>
#include <vector>

/** What the user asks for. */
struct PairRules {
    double threshold = 0.01;   /**< difference that counts as none, relative */
    double alpha = 0.05;       /**< probability of any false alarm */
    double seconds = 300;      /**< for all of it */
    int timeLimit = 10;        /**< seconds for the calls of one combination */
    unsigned seed = 1;         /**< of the placements */
    bool outputsOnly = false;  /**< no rounds */
    bool instructions = false; /**< counted in all rows, and no rounds */
};

/** A row while rounds come in. */
struct RowProgress {
    PairRow row;
    std::vector<double> rounds; /**< values of `ratioOfRound` */
    Judgement judgement;
    int nextLook = Looks::fewest;
    /** Of a call on each side. What the examination said is alike for both: one side may have been disturbed.
     */
    std::array<double, 2> clocks{};
    int missed = 0;      /**< rounds that gave nothing */
    std::string trouble; /**< why it has no rounds (any more) */

    bool open() const { return trouble.empty() && !judgement.decided; }
};

/** Share of the core's time that others may have before it is said. */
constexpr double mostCompany = 0.1;

/** What the rounds have shown. */
struct PairResult {
    std::vector<RowProgress> rows;
    int rounds = 0;
    double seconds = 0;  /**< of all rounds */
    double ownShare = 1; /**< of the core's time that the two sides had while they ran */
    bool interrupted = false;
};

/**
 * Seconds that the open rows are likely to take: each as many rounds as narrow its interval to the threshold,
 * by the root of their number, at what a round of a row took so far.
 */
double secondsLeft(const PairResult& result, const PairRules& rules);

/** Told after every round. */
using PairObserver = std::function<void(const PairResult&)>;

/** Rounds until every row is decided, or the time is over, or the user interrupts. */
PairResult runRounds(const Sides& sides, const PairRows& rows, const PairRules& rules, Moment start,
                     const PairObserver& observer);

#endif
