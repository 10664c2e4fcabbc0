// The statistics of rounds: worked answers, and simulated comparisons of which the truth is known.
#include "pairrun.h"
#include "roundstatistics.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr FarValues textbook{infinite, false};

// ---- Worked answers ----

TEST(PairRound, TakesTheMiddleOfNeighboursAndNoticesNoDrift) {
    // Clocks fall by 1 % from stretch to stretch; the second side takes 2 % more. The first pair warms up.
    std::vector<double> first{500}, second{900};
    double clocks = 100;
    for (int i = 0; i < 10; ++i) {
        first.push_back(clocks);
        second.push_back(clocks * 0.99 * 1.02);
        clocks *= 0.99 * 0.99;
    }
    second[4] *= 7; // an interrupt
    const double drift = -std::log(0.99);
    EXPECT_NEAR(ratioOfRound(first, second, true).value(), std::log(1.02), drift);
    EXPECT_DOUBLE_EQ(ratioOfRound(first, second, false).value(), -ratioOfRound(first, second, true).value());
    second[4] /= 7;
    // Nine neighbours fall and ten rise: of 19, the middle one is one of the two kinds.
    const std::vector<double> even(11, 100.0), slower(11, 102.0);
    EXPECT_NEAR(ratioOfRound(even, slower, true).value(), std::log(1.02), 1e-12);
}

TEST(PairRound, GivesNothingForTooFewStretches) {
    const std::vector<double> two{1, 1}, three{1, 1, 1};
    EXPECT_FALSE(ratioOfRound(two, three, true));
    EXPECT_TRUE(ratioOfRound(three, three, true));
}

// Depression scores of nine patients before and after a therapy (Hollander, Wolfe and Chicken, table 3.1):
// the published centre is 0.46, its 96.1 % interval 0.010 to 0.786.
TEST(PairCentre, GivesThePublishedAnswer) {
    const std::vector<double> fall{0.952, -0.147, 1.022, 0.430, 0.620, 0.590, 0.490, -0.080, 0.010};
    const Centre centre = signedRankCentre(fall, 0.05, textbook);
    EXPECT_NEAR(centre.centre, 0.46, 1e-9);
    EXPECT_NEAR(centre.low, 0.010, 1e-9);
    EXPECT_NEAR(centre.high, 0.786, 1e-9);
}

// One round in four is far off, all of them on one side: with them in it, the test refuses nothing.
TEST(PairCentre, LeavesOutWhatIsFarOff) {
    const std::vector<double> rounds{0.0051, -0.04, 0.0049, 0.0052, 0.0048, -0.05, 0.005, 0.0053};
    EXPECT_EQ(sideOfZero(rounds, 0.04), PairVerdict::slower); // 2 of 64
    EXPECT_EQ(sideOfZero(rounds, 0.03), PairVerdict::cannotTell);
    EXPECT_LT(signedRankCentre(rounds, 0.05, textbook).low, 0);
    const Centre centre = signedRankCentre(rounds, 0.05);
    EXPECT_NEAR(centre.centre, 0.00505, 1e-9);
    EXPECT_NEAR(centre.low, 0.0048, 1e-9);
}

// Two rounds of nineteen lie on the other side, a little farther than all the rest and not far enough to be
// left out: the two largest ranks would outweigh the others.
TEST(PairCentre, DoesNotLetTheFarthestDecide) {
    std::vector<double> rounds{-0.0061, -0.0062};
    while (rounds.size() < 19)
        rounds.push_back(0.005 + 1e-5 * static_cast<double>(rounds.size()));
    constexpr double spent = 0.05 / 12; // at the third look
    EXPECT_LT(signedRankCentre(rounds, spent, textbook).low, 0);
    EXPECT_EQ(sideOfZero(rounds, spent), PairVerdict::slower);
}

TEST(PairCentre, HasNoEndsWhereTheConfidenceCannotBeHad) {
    const std::vector<double> five{1, 2, 3, 4, 5};
    EXPECT_EQ(signedRankCentre(five, 0.05).low, -infinite); // 2 of 32 is more than 5 %
    EXPECT_NEAR(signedRankCentre(five, 2.0 / 32).low, 1, 1e-9);
    EXPECT_NEAR(signedRankCentre(five, 2.0 / 32).high, 5, 1e-9);
    EXPECT_EQ(signedRankCentre({}, 0.05).high, infinite);
}

TEST(PairLooks, SpendNoMoreThanThereIs) {
    for (const std::size_t rows : {1U, 20U, 3000U}) {
        const double alpha = 0.05;
        const Looks looks(alpha, rows);
        double spent = 0;
        int first = 0;
        for (int at = Looks::fewest; at < 1000; at = Looks::next(at)) {
            spent += looks.alphaAt(at);
            if (first == 0 && looks.alphaAt(at) > 0)
                first = at;
        }
        EXPECT_LE(spent * static_cast<double>(rows), alpha);
        EXPECT_GT(spent * static_cast<double>(rows), 0.8 * alpha) << rows;
        // The first look that spends anything can find something: all of its values on one side.
        const std::vector<double> allAbove(static_cast<std::size_t>(first), 0.01);
        EXPECT_EQ(judgeRounds(allAbove, looks.alphaAt(first), 0.001).verdict, PairVerdict::slower);
    }
}

struct JudgementCase {
    const char* what;
    double shift;
    double spread;
    double threshold;
    PairVerdict before;
    PairVerdict expected;
    bool decided;
};

// Twenty values, evenly around the shift.
TEST(PairJudgement, FollowsTheIntervals) {
    using enum PairVerdict;
    const JudgementCase cases[] = {
        {"far above", 0.05, 0.01, 0.01, cannotTell, slower, true},
        {"far below", -0.05, 0.01, 0.01, cannotTell, faster, true},
        {"near", 0.0, 0.01, 0.01, cannotTell, same, true},
        {"proven, but within the threshold", 0.004, 0.001, 0.01, cannotTell, same, true},
        {"wide", 0.0, 0.2, 0.01, cannotTell, cannotTell, false},
        {"proven, but too wide to be of use", 0.05, 0.05, 0.002, cannotTell, slower, false},
        {"proven at an earlier look", 0.04, 0.1, 0.01, slower, slower, false},
        {"not borne out since", 0.01, 0.1, 0.01, slower, cannotTell, false},
    };
    for (const JudgementCase& c : cases) {
        std::vector<double> rounds;
        for (int i = 0; i < 20; ++i)
            rounds.push_back(c.shift + c.spread * (i - 9.5) / 10);
        const Judgement judgement = judgeRounds(rounds, 1e-3, c.threshold, c.before);
        EXPECT_EQ(judgement.verdict, c.expected) << c.what;
        EXPECT_EQ(judgement.decided, c.decided) << c.what;
        EXPECT_NEAR(judgement.centre.centre, c.shift, 1e-9) << c.what;
    }
}

// Widths shrink with the root of the rounds.
TEST(PairProgress, GuessesWhatOpenRowsWillTake) {
    const PairRules rules;
    PairResult result;
    EXPECT_EQ(secondsLeft(result, rules), 0);
    result.seconds = 10;
    result.rows.resize(3);
    for (std::size_t i = 0; i < 2; ++i)
        result.rows[i].rounds.assign(10, 0.0);
    result.rows[0].judgement.decided = true;
    result.rows[1].judgement.centre = {0, -2 * std::log(1.01), 2 * std::log(1.01)}; // 30 more
    result.rows[2].trouble = "ended by signal 9";
    EXPECT_NEAR(secondsLeft(result, rules), 15, 1e-9);
    result.rows[2].trouble.clear(); // 8 to begin with
    EXPECT_NEAR(secondsLeft(result, rules), 19, 1e-9);
}

// ---- Simulated comparisons ----

/** Rounds as a busy machine gives them: most spread by 0.3 %, one in ten by 3 %. */
class Machine {
  public:
    explicit Machine(unsigned seed) : m_random(seed) {} // NOLINT: the same numbers in every run
    double round(double truth) {
        constexpr double spread = 0.003;
        return truth + m_normal(m_random) * (m_random() % 10 == 0 ? 10 * spread : spread);
    }

  private:
    std::mt19937 m_random;
    std::normal_distribution<double> m_normal;
};

/** One row until it is decided or the rounds are over. */
Judgement compareRow(Machine& machine, const Looks& looks, double truth, double threshold, int mostRounds) {
    std::vector<double> rounds;
    Judgement judgement;
    for (int at = Looks::fewest; at <= mostRounds && !judgement.decided; at = Looks::next(at)) {
        while (static_cast<int>(rounds.size()) < at)
            rounds.push_back(machine.round(truth));
        judgement = judgeRounds(rounds, looks.alphaAt(at), threshold, judgement.verdict);
    }
    return judgement;
}

bool isAlarm(const Judgement& judgement) {
    return judgement.verdict == PairVerdict::slower || judgement.verdict == PairVerdict::faster;
}

// The threshold is so small that no row is ever the same, and all looks are taken.
TEST(PairSimulation, AComparisonOfEqualSidesRaisesAnyAlarmInFivePerCentAtMost) {
    struct Size {
        std::size_t rows;
        int comparisons;
    };
    int all = 0;
    for (const auto [rows, comparisons] : {Size{1, 3000}, Size{30, 100}}) {
        Machine machine(1);
        int alarms = 0;
        for (int i = 0; i < comparisons; ++i) {
            const Looks looks(0.05, rows);
            bool any = false;
            for (std::size_t row = 0; row < rows; ++row)
                any |= isAlarm(compareRow(machine, looks, 0, 1e-9, 50));
            alarms += any;
        }
        std::printf("%zu rows: %d of %d comparisons with an alarm\n", rows, alarms, comparisons);
        EXPECT_LE(alarms, comparisons * 5 / 100);
        all += alarms;
    }
    EXPECT_GT(all, 0); // a procedure that never raises any proves nothing
}

TEST(PairSimulation, FindsWhatIsThereAndHoldsTheTruth) {
    struct Case {
        double truth;
        double threshold;
        int rounds;
        double leastFound;
    };
    constexpr int tries = 1000;
    for (const Case& c :
         {Case{0.01, 0.005, 40, 0.99}, Case{0.005, 0.0025, 40, 0.95}, Case{0, 0.01, 100, 0}}) {
        Machine machine(2);
        int found = 0, held = 0;
        for (int i = 0; i < tries; ++i) {
            const Judgement judgement = compareRow(machine, Looks(0.05, 1), c.truth, c.threshold, c.rounds);
            found += judgement.verdict == PairVerdict::slower;
            held += judgement.centre.low <= c.truth && c.truth <= judgement.centre.high;
        }
        std::printf("%.2f %% slower, threshold %.2f %%: found %d, interval held the truth %d of %d\n",
                    100 * c.truth, 100 * c.threshold, found, held, tries);
        EXPECT_GE(found, c.leastFound * tries);
        EXPECT_GE(held, 0.93 * tries);
        EXPECT_LE(held, 0.98 * tries);
    }
}

} // namespace
