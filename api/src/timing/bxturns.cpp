#include "timing/bxturns.h"

#include "system/bxclock.h"
#include "system/bxfreshpages.h"
#include "timing/bxcores.h"
#include "timing/bxwatchdog.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace bxTurnsForm;

namespace {

std::unique_ptr<bxTurns> s_side;

/** Clocks of a stretch long enough to tell what a call costs: some 15 microseconds. */
constexpr double enoughClocks = 30'000;
/** Most calls of a stretch, for functions that take next to nothing. */
constexpr int mostCalls = 1 << 20;

} // namespace

void (*bxTurns::m_reseed)() = nullptr;

bxTurns* bxTurns::side() {
    return s_side.get();
}

void bxTurns::start() {
    const char* const words = std::getenv(variable);
    Descriptors d{};
    if (!words ||
        std::sscanf(words, "%d %d %d %d %d", &d.side, &d.plan, &d.log, &d.tokenIn, &d.tokenOut) != 5)
        return;
    s_side.reset(new bxTurns(d)); // NOLINT: the constructor is private
    if (!s_side->m_plan) {
        std::fputs("benchex: the program that compares is of another version\n", stderr);
        std::_Exit(2);
    }
    const Plan& plan = *s_side->m_plan;
    if (plan.freshPages != 0)
        bxTakeFreshPages(plan.heapOffset / 16); // as random as that is, and alike on both sides
}

bxTurns::bxTurns(const Descriptors& descriptors) : m_descriptors(descriptors), m_log(descriptors.log) {
    struct stat file {};
    if (fstat(m_descriptors.plan, &file) != 0 || file.st_size < static_cast<off_t>(sizeof(Plan)))
        return;
    m_mapped = static_cast<std::size_t>(file.st_size);
    void* const plan = mmap(nullptr, m_mapped, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptors.plan, 0);
    if (plan == MAP_FAILED || static_cast<Plan*>(plan)->version != version)
        return;
    m_plan = static_cast<Plan*>(plan);
    m_rows = reinterpret_cast<Row*>(m_plan + 1);
    m_clocks = static_cast<double*>(static_cast<void*>(static_cast<char*>(plan) + m_plan->clocksAt));
    m_heapOffset.resize(static_cast<std::size_t>(m_plan->heapOffset));
    bxCpuTicker::m_freqMHz = 1000; // ratios need none, and the estimate takes seconds
}

bxTurns::~bxTurns() {
    if (!m_plan)
        return;
    if (examining())
        m_log.write(runEnded, m_place, {});
    arriveAt(static_cast<int>(m_plan->rows));
    munmap(m_plan, m_mapped);
}

// ---- Where the run is ----

const Row* bxTurns::rowAtOrBehind(Place place) const {
    const auto before = [this](const Row& row, Place p) { return row.place[m_descriptors.side] < p; };
    return std::lower_bound(m_rows, m_rows + m_plan->rows, place, before);
}

bool bxTurns::beginTest(const bxString& function) {
    ++m_place.test;
    m_place.combination = -1;
    m_row = -1;
    m_function = function;
    m_fault = "";
    if (examining()) {
        if (m_place.test < m_plan->firstTest)
            return false;
        m_log.write(testBegins, m_place, bxLogged(function));
        return true;
    }
    const Row* const next = rowAtOrBehind({m_place.test, 0});
    return next != m_rows + m_plan->rows && next->place[m_descriptors.side].test == m_place.test;
}

void bxTurns::endTest(bxResult result) {
    if (examining())
        m_log.writeMappings(m_place);
    if (examining() || !m_fault.empty())
        m_log.write(testEnded, m_place,
                    bxLogged(m_function) + bxLogged(bxResultString(result)) + bxLogged(m_fault));
}

bool bxTurns::nextCombination() {
    ++m_place.combination;
    m_row = -1;
    if (!examining()) {
        const Row* const row = rowAtOrBehind(m_place);
        if (row != m_rows + m_plan->rows && row->place[m_descriptors.side] == m_place)
            m_row = static_cast<int>(row - m_rows);
    }
    std::srand(1);
    if (m_reseed)
        m_reseed();
    return wanted();
}

// ---- Examining ----

void bxTurns::beginCombination(const bxString& parameters) {
    if (bxGetTimeLimit() == 0 && !counting()) // what stepping takes says nothing of the function
        bxSetTimeLimit(m_plan->timeLimit);
    if (examining())
        m_log.write(combinationBegins, m_place,
                    bxLogged(m_function) + bxLogged(parameters) + bxLoggedBytes(bxDigestOfData()));
}

bool bxTurns::calledOnce(int status) {
    if (!examining())
        return false;
    m_log.write(called, m_place, bxLoggedBytes(static_cast<std::int32_t>(status)));
    return m_log.writeBlocks(m_place);
}

void bxTurns::countedAs(const bxString& text) {
    m_log.write(counted, m_place, bxLogged(text));
}

bool bxTurns::measure(const Sampler& sampler) {
    return examining() ? estimateCost(sampler) : takeTurns(sampler);
}

/** The least of some stretches that are long enough to say something. */
bool bxTurns::estimateCost(const Sampler& sampler) const {
    constexpr int tries = 3;
    double least = std::numeric_limits<double>::infinity();
    int calls = 1;
    for (int i = 0; i < tries;) {
        const double clocks = sampler(calls);
        if (!(clocks > 0))
            return false;
        const bool enough = clocks * calls >= enoughClocks || calls == mostCalls;
        if (enough) {
            least = std::min(least, clocks);
            ++i;
        } else {
            const double wanted = 1.2 * enoughClocks / clocks;
            // Few calls are mostly their fixed cost: not more than ten times as many at once.
            calls = static_cast<int>(std::min({wanted + 1, 10.0 * calls, static_cast<double>(mostCalls)}));
        }
    }
    m_log.write(cost, m_place, bxLoggedBytes(least));
    return true;
}

// ---- Taking turns ----

int bxTurns::otherPosition() const {
    if (m_alone)
        return static_cast<int>(m_plan->rows);
    return std::atomic_ref(m_plan->position[1 - m_descriptors.side]).load();
}

void bxTurns::giveToken() {
    const char token = 1;
    m_token = false;
    while (write(m_descriptors.tokenOut, &token, 1) < 0 && errno == EINTR) {}
}

void bxTurns::waitForToken() {
    char token = 0;
    ssize_t got = 0;
    while ((got = read(m_descriptors.tokenIn, &token, 1)) < 0 && errno == EINTR) {}
    m_alone |= got <= 0;
    m_token = true; // where the other side has ended there is nobody to share it with
}

void bxTurns::arriveAt(int row) {
    if (m_plan->core >= 0 && !m_pinned)
        bxMoveToCore(m_plan->core);
    m_pinned = true;
    std::atomic_ref(m_plan->position[m_descriptors.side]).store(row);
}

/** Waits until both sides are at the present row and this one has the token; false when the other one has
 * passed it over. */
bool bxTurns::meet() {
    arriveAt(m_row);
    if (!m_token)
        waitForToken();
    while (otherPosition() < m_row) {
        giveToken();
        waitForToken();
    }
    return otherPosition() == m_row;
}

bool bxTurns::takeTurns(const Sampler& sampler) {
    if (m_row < 0 || !meet())
        return true;
    const int side = m_descriptors.side;
    Row& row = m_rows[m_row];
    double* const clocks = m_clocks + row.first + (side == 0 ? 0 : row.turns);
    if (row.taken[1 - side] == 0)
        row.starter = side;
    for (int turn = 0; turn < row.turns; ++turn) {
        if (turn > 0) {
            bxStopWatchdog(); // the other side's time is its own
            giveToken();
            waitForToken();
            bxStartWatchdog();
            if (otherPosition() != m_row && turn >= row.taken[1 - side])
                return true;
        }
        clocks[turn] = sampler(row.calls[side]);
        if (!(clocks[turn] > 0))
            return false;
        row.taken[side] = turn + 1;
    }
    return true;
}
