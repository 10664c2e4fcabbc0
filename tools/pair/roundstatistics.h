/** \file
 * What rounds of turns say about two sides, as pure functions.
 */
#ifndef PAIR_ROUNDSTATISTICS_H
#define PAIR_ROUNDSTATISTICS_H

#include <optional>
#include <span>
#include <vector>

/**
 * What one round says of a row: the middle of the logarithms of after/before over neighbouring stretches,
 * each stretch with the one before it and the one behind it, so that a drift makes as many of them too large
 * as too small. The first stretch of each side warms up and does not count.
 * \param first  clocks per call of the side that had the first turn \param second  of the other one
 * \param firstIsBefore  which one that was
 * \return nothing for fewer than two stretches a side beside the first
 */
std::optional<double> ratioOfRound(std::span<const double> first, std::span<const double> second,
                                   bool firstIsBefore);

/** A centre with an interval. The ends are infinite where there are too few values for the confidence. */
struct Centre {
    double centre = 0;
    double low = 0;
    double high = 0;
};

/** What is said of a row. */
enum class PairVerdict { slower, faster, same, cannotTell };

/** What the signed rank test makes of values that lie far off. */
struct FarValues {
    double reach; /**< those farther from a centre than so many times what half of them are are left out */
    bool capped;  /**< the ranks of the farther half count alike */
};
/** A reach of two standard deviations of values that are normally distributed. */
constexpr FarValues usually{3, true};

/**
 * The Hodges-Lehmann centre (median of the means of all pairs, each value with itself among them) and the
 * interval of those centres that a signed rank test does not refuse, exact for any number of values (Hodges
 * and Lehmann 1963, Tukey 1949; Hollander, Wolfe and Chicken 2014, 3.1 to 3.3; with capped ranks Policello
 * and Hettmansperger 1976). All that it assumes is that
 * the values lie symmetrically about the centre, which those of equal sides do whatever the machine does,
 * since the sides change places. Values that lie more than `reach` times as far from the centre in question
 * as half of them do are left out first: a round in ten is off by several per cent, and would have the
 * largest rank. Who is left out does not depend on the signs, so the test stays exact. \param alpha
 * probability that the interval misses the centre
 */
Centre signedRankCentre(std::span<const double> values, double alpha, FarValues far = usually);

/** Slower or faster where the same test refuses a centre of 0 at this probability. */
PairVerdict sideOfZero(std::span<const double> values, double alpha);

/**
 * Looks at rounds while they come in, such that the probability of any false alarm stays below alpha over all
 * looks and all rows: look k = 1, 2, ... of a row spends alpha / rows / (k (k + 1)), which sums up to
 * alpha / rows (alpha spending after Lan and DeMets 1983; the bound of Bonferroni over looks and rows holds
 * whatever depends on what). The looks are fixed beforehand: at numbers of rounds that grow by a half,
 * from the first at which so small a probability can be reached at all.
 */
class Looks {
  public:
    /** Fewest rounds to look at: the 95 % interval of fewer is as wide as their range, or has no ends. */
    static constexpr int fewest = 8;

    Looks(double alpha, std::size_t rows) : m_alpha(alpha / static_cast<double>(rows < 1 ? 1 : rows)) {}

    /** The next number of rounds to look at, behind `rounds`. */
    static int next(int rounds);
    /**
     * What a look at this many rounds may spend: one of the fixed ones, or the last one, when time is over,
     * in the place of the next fixed one. 0 where so small a probability cannot be reached yet.
     */
    double alphaAt(int rounds) const;

  private:
    double m_alpha;
};

/** What the rounds of a row say. Logarithms of after/before. */
struct Judgement {
    PairVerdict verdict = PairVerdict::cannotTell;
    Centre centre; /**< with its 95 % interval */
    bool decided = false;
};

/**
 * Judges a row at one of its looks:
 * - same: the 95 % interval lies within the threshold;
 * - slower, faster: the test refuses equality at the probability `alpha`, at this look or an earlier one that
 * the 95 % interval does not contradict since;
 * - cannot tell: neither.
 * A row is decided when it has a verdict and its interval is narrow enough to be of use: half of it below the
 * threshold, or below a tenth of the difference.
 * \param rounds  values of `ratioOfRound` \param alpha  what this look may spend
 * \param threshold  0.01 for one per cent \param before  the verdict of the look before
 */
Judgement judgeRounds(std::span<const double> rounds, double alpha, double threshold,
                      PairVerdict before = PairVerdict::cannotTell);

#endif
