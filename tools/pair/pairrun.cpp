#include "pairrun.h"

#include "examination.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <sched.h>
#include <tuple>
#include <unistd.h>

using namespace bxTurnsForm;
using Clock = std::chrono::steady_clock;

namespace {

/** Clocks of a stretch: some 15 microseconds. A change of process costs about a third of that. */
constexpr double stretchClocks = 33'000;
/** Stretches of each side in a round, with the one that warms up. */
constexpr int fewestTurns = 5;
constexpr int usualTurns = 21;
/** Clocks that the stretches of a round should take, so that the start of its processes is not most of it. */
constexpr double worthwhile = 30e6;
/** Rounds in a row that may give nothing before a row is given up. */
constexpr int mostMissed = 3;
constexpr int mostCalls = 1 << 20;
/** Rows on which the sides differ by more have stretches of the same time, others of the same calls: what a
 * stretch costs by itself, and what calls make of data that they work on in place, is then alike. */
constexpr double similar = 1.5;

double secondsSince(Moment start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

int callsFor(double clocks) {
    return std::clamp(static_cast<int>(stretchClocks / clocks + 0.5), 1, mostCalls);
}

double medianOf(std::span<const double> clocks) {
    std::vector<double> sorted(clocks.begin(), clocks.end());
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
}

/** Two pipe ends. */
struct Pipe {
    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw PairError("no pipe for the two sides");
        in = Descriptor(ends[0]);
        out = Descriptor(ends[1]);
    }
    Descriptor in, out;
};

/** The core of the next round: the last one that this process may use, until others work there as well. */
class CoreForSides {
  public:
    CoreForSides() {
        cpu_set_t cores;
        if (sched_getaffinity(0, sizeof cores, &cores) != 0)
            return;
        for (int core = CPU_SETSIZE; core-- > 0;)
            if (CPU_ISSET(static_cast<unsigned>(core), &cores))
                m_cores.push_back(core);
    }
    /** -1 where the system does not say. */
    int number() const { return m_cores.empty() ? -1 : m_cores[m_present]; }
    /** \param share  of the core's time that the two sides had in a round */
    void tell(double share) {
        if (share < 1 - mostCompany && !m_cores.empty())
            m_present = (m_present + 1) % m_cores.size();
    }

  private:
    std::vector<int> m_cores;
    std::size_t m_present = 0;
};

/** Whether the sides execute different files, which lie in different memory for as long as they are in use.
 */
bool haveOtherFiles(const Sides& sides) {
    const auto loaded = [](const Side& side) {
        std::vector<std::string> settings;
        std::copy_if(side.environment.begin(), side.environment.end(), std::back_inserter(settings),
                     [](const std::string& setting) { return setting.starts_with("LD_"); });
        return std::tuple(side.program, side.libraries, settings);
    };
    return loaded(sides[0]) != loaded(sides[1]);
}

/** Rounds over the rows that are still open. */
class Rounds {
  public:
    Rounds(const Sides& sides, const PairRules& rules, Moment start, PairResult& result)
        : m_sides(sides), m_rules(rules), m_start(start), m_result(result), m_random(rules.seed),
          m_looks(rules.alpha, result.rows.size()), m_otherFiles(haveOtherFiles(sides)) {}

    bool open() const {
        return !interrupted() && secondsSince(m_start) < m_rules.seconds &&
               std::any_of(m_result.rows.begin(), m_result.rows.end(),
                           [](const RowProgress& row) { return row.open(); });
    }

    void round() {
        m_open.clear();
        for (RowProgress& row : m_result.rows)
            if (row.open())
                m_open.push_back(&row);
        makePlan();
        const int starter = static_cast<int>(m_random() % 2);
        std::string mishap = run(starter);
        ++m_result.rounds;
        collect(mishap);
    }

    /** What is known when no more rounds come. */
    void conclude() {
        for (RowProgress& row : m_result.rows)
            if (row.judgement.centre.low == row.judgement.centre.high || row.open())
                judge(row);
    }

  private:
    using Processes = std::array<std::unique_ptr<SideProcess>, 2>;

    int turnsOf(const RowProgress& row) const {
        const double stretch = std::max(stretchClocks, std::max(row.clocks[0], row.clocks[1]));
        const double each = worthwhile / static_cast<double>(m_open.size()) / 2 / stretch;
        // Calls of a millisecond make a round long by themselves.
        const double fewer = std::min(1.0 * usualTurns, usualTurns * std::sqrt(stretchClocks / stretch));
        return std::max(fewestTurns, static_cast<int>(std::max(each, fewer)));
    }

    void makePlan() {
        std::size_t stretches = 0;
        for (const RowProgress* row : m_open)
            stretches += 2 * static_cast<std::size_t>(turnsOf(*row));
        m_plan.emplace(takeTurns, m_open.size(), stretches);
        m_plan->head().core = m_core.number();
        m_plan->head().freshPages = m_otherFiles ? 1 : 0;
        m_plan->head().timeLimit = m_rules.timeLimit;
        m_plan->head().heapOffset = static_cast<int>(m_random() % 4096) * 16;
        int next = 0;
        for (std::size_t i = 0; i < m_open.size(); ++i) {
            Row& row = m_plan->rows()[i];
            const auto& sides = m_open[i]->row.sides;
            const auto& clocks = m_open[i]->clocks;
            const bool alike = std::max(clocks[0], clocks[1]) < similar * std::min(clocks[0], clocks[1]);
            for (std::size_t side = 0; side < 2; ++side) {
                row.place[side] = sides[side]->place;
                row.calls[side] = callsFor(alike ? (clocks[0] + clocks[1]) / 2 : clocks[side]);
            }
            row.turns = turnsOf(*m_open[i]);
            row.first = next;
            next += 2 * row.turns;
        }
    }

    /** One pair of processes; what happened to them, if anything did. */
    std::string run(int starter) {
        const Placement placement{0, static_cast<int>(m_random() % 256) * 16};
        std::array<Pipe, 2> tokens; // to each side
        const Descriptor log(temporaryFile());
        const Descriptor listing(temporaryFile());
        Processes processes;
        const Moment begin = Clock::now();
        // Which process is the older one must not always be the same side: calls of some tens of clocks
        // differ by a per cent with it.
        const std::size_t older = m_random() % 2;
        for (const std::size_t side : {older, 1 - older}) {
            SideChannels channels;
            channels.plan = m_plan->descriptor();
            channels.log = log.number();
            channels.listing = listing.number();
            channels.tokenIn = tokens[side].in.number();
            channels.tokenOut = tokens[1 - side].out.number();
            processes[side] =
                std::make_unique<SideProcess>(m_sides, static_cast<int>(side), channels, placement);
        }
        const char token = 1;
        const auto given = write(tokens[static_cast<std::size_t>(starter)].out.number(), &token, 1);
        for (Pipe& pipe : tokens) { // the end of a side is to be seen by the other one
            pipe.in.reset();
            pipe.out.reset();
        }
        std::string mishap = given == 1 ? wait(processes) : "";
        account(processes, secondsSince(begin));
        m_messages = {};
        const MappedFile entries(log.number());
        readLog(entries.bytes(), m_messages);
        return mishap;
    }

    bool timeIsUp() const { return interrupted() || secondsSince(m_start) > m_rules.seconds; }

    std::string wait(Processes& processes) {
        long long progress = 0;
        Moment last = Clock::now();
        bool hangs = false;
        waitFor(processes, [&] {
            const long long now = m_plan->progress();
            if (now != progress)
                last = Clock::now();
            progress = now;
            hangs = secondsSince(last) > 2 * m_rules.timeLimit + 2;
            return !hangs && !timeIsUp();
        });
        if (hangs)
            return "a side did not get on within the time limit";
        for (std::size_t side = 0; side < 2 && !timeIsUp(); ++side)
            if (m_plan->head().position[side] < static_cast<int>(m_open.size()))
                return std::string(sideNames[side]) + ": the program " + processes[side]->ending();
        return "";
    }

    void account(const Processes& processes, double seconds) {
        const double own = processes[0]->processorTime() + processes[1]->processorTime();
        m_core.tell(own / seconds);
        m_processorTime += own;
        m_result.seconds += seconds;
        m_result.ownShare = std::min(1.0, m_processorTime / m_result.seconds);
    }

    bool isWhole(const Row& row) const { return row.taken[0] == row.turns && row.taken[1] == row.turns; }

    void collect(const std::string& mishap) {
        std::size_t behindLast = 0; // the row that was at work when a process ended
        for (std::size_t i = 0; i < m_open.size(); ++i) {
            const Row& row = m_plan->rows()[i];
            if (!isWhole(row))
                continue;
            behindLast = i + 1;
            const auto value = ratioOfRound(m_plan->clocks(row, row.starter),
                                            m_plan->clocks(row, 1 - row.starter), row.starter == 0);
            for (int side = 0; side < 2; ++side)
                m_open[i]->clocks[static_cast<std::size_t>(side)] = medianOf(m_plan->clocks(row, side));
            if (value)
                add(*m_open[i], *value);
        }
        if (!mishap.empty() && behindLast < m_open.size())
            m_open[behindLast]->trouble = mishap;
        else if (mishap.empty() && !timeIsUp())
            blameFaults();
    }

    void add(RowProgress& row, double value) {
        row.missed = 0;
        row.rounds.push_back(value);
        if (static_cast<int>(row.rounds.size()) >= row.nextLook)
            judge(row);
    }

    /** A fault ends the test: of the rows of a function that gave nothing the first one is to blame. */
    void blameFaults() {
        const std::string* function = nullptr;
        for (std::size_t i = 0; i < m_open.size(); ++i) {
            RowProgress& row = *m_open[i];
            const std::string& present = row.row.before().function;
            if (isWhole(m_plan->rows()[i]) || (function && *function == present))
                continue;
            function = &present;
            if (++row.missed < mostMissed)
                continue;
            row.trouble = "a side does not come to it any more";
            for (const std::string& note : m_messages.notes)
                if (note.starts_with(present + ": "))
                    row.trouble = note.substr(present.size() + 2);
        }
    }

    void judge(RowProgress& row) {
        const int rounds = static_cast<int>(row.rounds.size());
        row.judgement =
            judgeRounds(row.rounds, m_looks.alphaAt(rounds), m_rules.threshold, row.judgement.verdict);
        row.nextLook = Looks::next(rounds);
    }

    const Sides& m_sides;
    const PairRules& m_rules;
    Moment m_start;
    PairResult& m_result;
    std::mt19937 m_random;
    Looks m_looks;
    bool m_otherFiles;
    CoreForSides m_core;
    std::vector<RowProgress*> m_open;
    std::optional<SidePlan> m_plan;
    Examination m_messages;
    double m_processorTime = 0;
};

} // namespace

double secondsLeft(const PairResult& result, const PairRules& rules) {
    double done = 0, wanted = 0;
    for (const RowProgress& row : result.rows) {
        const auto rounds = static_cast<double>(row.rounds.size());
        done += rounds;
        if (!row.open())
            continue;
        const double half = (row.judgement.centre.high - row.judgement.centre.low) / 2;
        const double narrower = half / std::log1p(rules.threshold);
        wanted += half > 0 && std::isfinite(half) ? std::max(1.0, rounds * (narrower * narrower - 1))
                                                  : std::max(1.0, Looks::fewest - rounds);
    }
    return done > 0 ? result.seconds / done * wanted : 0;
}

PairResult runRounds(const Sides& sides, const PairRows& rows, const PairRules& rules, Moment start,
                     const PairObserver& observer) {
    PairResult result;
    for (const PairRow& row : rows.both) {
        RowProgress progress;
        progress.row = row;
        for (std::size_t side = 0; side < 2; ++side)
            if (!(row.sides[side]->clocks > 0))
                progress.trouble =
                    std::string(sideNames[side]) + ": " +
                    (row.sides[side]->trouble.empty() ? "not timed" : row.sides[side]->trouble);
        progress.clocks.fill(std::min(row.before().clocks, row.after().clocks));
        result.rows.push_back(std::move(progress));
    }
    if (rules.outputsOnly || rules.instructions)
        return result;
    Rounds rounds(sides, rules, start, result);
    while (rounds.open()) {
        rounds.round();
        observer(result);
    }
    rounds.conclude();
    result.interrupted = interrupted();
    return result;
}
