#include "counts.h"

#include "output/bxtable.h"
#include "sideplan.h"
#include "sideprocess.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <sys/stat.h>

using namespace bxTurnsForm;

namespace {

constexpr std::string_view key = bxTable::instructions;

/** Counted calls in a log: their places and what was found. */
std::vector<std::pair<Place, std::string>> countsIn(std::span<const char> log) {
    std::vector<std::pair<Place, std::string>> counts;
    while (log.size() >= sizeof(Entry)) {
        Entry entry;
        std::memcpy(&entry, log.data(), sizeof entry);
        log = log.subspan(sizeof entry);
        if (entry.bytes > log.size())
            break;
        if (entry.kind == counted)
            counts.emplace_back(
                entry.place,
                std::string(log.data(), strnlen(log.data(), static_cast<std::size_t>(entry.bytes))));
        log = log.subspan(entry.bytes);
    }
    return counts;
}

/** One side's way through the rows, with as many processes as it takes. */
class Counter {
  public:
    Counter(const Sides& sides, const PairRows& rows, const std::vector<std::size_t>& wanted, int side,
            std::vector<PairCount>& counts)
        : m_sides(sides), m_rows(rows), m_wanted(wanted), m_side(side), m_counts(counts) {}

    void start() {
        m_plan.emplace(count, m_wanted.size() - m_next, 0);
        for (std::size_t i = m_next; i < m_wanted.size(); ++i)
            for (std::size_t side = 0; side < 2; ++side)
                m_plan->rows()[i - m_next].place[side] = m_rows.both[m_wanted[i]].sides[side]->place;
        m_log = Descriptor(temporaryFile());
        m_listing = Descriptor(temporaryFile());
        SideChannels channels;
        channels.plan = m_plan->descriptor();
        channels.log = m_log.number();
        channels.listing = m_listing.number();
        process = std::make_unique<SideProcess>(m_sides, m_side, channels, Placement{});
    }

    /** Whether it is worthwhile to wait: a step takes microseconds, a call has a limit of them. */
    bool goesOn() {
        struct stat file {};
        fstat(m_log.number(), &file);
        const Moment now = std::chrono::steady_clock::now();
        if (file.st_size != m_size)
            m_lastChange = now;
        m_size = file.st_size;
        constexpr std::chrono::seconds longest{120};
        return now - m_lastChange < longest;
    }

    /** Takes what a process that has ended found; whether there is more to count. */
    bool finish() {
        const MappedFile log(m_log.number());
        std::size_t behindLast = m_next;
        for (auto& [place, text] : countsIn(log.bytes()))
            for (std::size_t i = m_next; i < m_wanted.size(); ++i)
                if (placeOf(i) == place) {
                    textOf(i) = std::move(text);
                    behindLast = i + 1;
                    break;
                }
        const bool complete = m_plan->head().position[m_side] == static_cast<int>(m_plan->rows().size());
        if (complete || behindLast >= m_wanted.size())
            return false;
        textOf(behindLast) = std::string(key) + "?" + process->ending();
        m_next = behindLast + 1;
        m_size = 0;
        m_lastChange = std::chrono::steady_clock::now();
        if (m_next >= m_wanted.size())
            return false;
        start();
        return true;
    }

    std::unique_ptr<SideProcess> process;

  private:
    Place placeOf(std::size_t i) const {
        return m_rows.both[m_wanted[i]].sides[static_cast<std::size_t>(m_side)]->place;
    }
    std::string& textOf(std::size_t i) {
        return m_counts[m_wanted[i]].texts[static_cast<std::size_t>(m_side)];
    }

    const Sides& m_sides;
    const PairRows& m_rows;
    const std::vector<std::size_t>& m_wanted;
    int m_side;
    std::vector<PairCount>& m_counts;
    std::size_t m_next = 0; /**< of the wanted ones, the first that is not done */
    std::optional<SidePlan> m_plan;
    Descriptor m_log, m_listing;
    long long m_size = 0;
    Moment m_lastChange = std::chrono::steady_clock::now();
};

} // namespace

std::optional<long long> PairCount::instructions(int side) const {
    const std::string& text = texts[static_cast<std::size_t>(side)];
    if (!text.starts_with(key) || text.size() == key.size() ||
        !std::isdigit(static_cast<unsigned char>(text[key.size()])))
        return std::nullopt;
    return std::stoll(text.substr(key.size()));
}

const char* PairCount::verdict() const {
    if (!known())
        return "cannot tell";
    return more() > 0 ? "more" : more() < 0 ? "fewer" : sameCode() ? "same" : "other";
}

std::string PairCount::text() const {
    if (!wanted())
        return "";
    if (!known()) {
        const auto what = [this](std::size_t side) {
            return texts[side].empty() ? std::string("not counted") : texts[side];
        };
        return what(0) == what(1) ? what(0) : what(0) + " and " + what(1);
    }
    const std::string before = std::to_string(*instructions(0));
    if (*instructions(0) == *instructions(1))
        return before + (sameCode() ? " instructions, the same code" : " instructions, other code");
    return "instructions " + before + " -> " + std::to_string(*instructions(1));
}

std::vector<PairCount> countRows(const Sides& sides, const PairRows& rows,
                                 const std::vector<std::size_t>& wanted, Moment until) {
    std::vector<PairCount> counts(rows.both.size());
    if (wanted.empty())
        return counts;
    std::array<Counter, 2> counters{Counter(sides, rows, wanted, 0, counts),
                                    Counter(sides, rows, wanted, 1, counts)};
    std::vector<Counter*> open;
    for (Counter& counter : counters) {
        counter.start();
        open.push_back(&counter);
    }
    while (!open.empty() && !interrupted() && std::chrono::steady_clock::now() < until) {
        waitForChild(std::chrono::milliseconds(100));
        std::erase_if(open, [](Counter* counter) {
            if (!counter->goesOn())
                counter->process->kill();
            return !counter->process->running() && !counter->finish();
        });
    }
    return counts;
}
