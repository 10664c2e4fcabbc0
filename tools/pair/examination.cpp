#include "examination.h"

#include "sideplan.h"
#include "sideprocess.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace bxTurnsForm;

namespace {

/** Takes the parts of an entry from its front; what is cut off is empty. */
class Parts {
  public:
    explicit Parts(std::span<const char> content) : m_rest(content) {}
    std::string_view text() {
        const auto* const end = std::find(m_rest.data(), m_rest.data() + m_rest.size(), '\0');
        const std::string_view text(m_rest.data(), static_cast<std::size_t>(end - m_rest.data()));
        m_rest = m_rest.subspan(std::min(text.size() + 1, m_rest.size()));
        return text;
    }
    template <class Value>
    Value value() {
        Value value{};
        if (m_rest.size() >= sizeof value)
            std::memcpy(&value, m_rest.data(), sizeof value);
        m_rest = m_rest.subspan(std::min(sizeof value, m_rest.size()));
        return value;
    }
    std::span<const char> rest() const { return m_rest; }

  private:
    std::span<const char> m_rest;
};

AddressRanges rangesOf(std::string_view map) {
    AddressRanges ranges;
    std::istringstream lines{std::string(map)};
    for (std::string line; std::getline(lines, line);) {
        unsigned long long from = 0, to = 0;
        if (std::sscanf(line.c_str(), "%llx-%llx", &from, &to) == 2)
            ranges.emplace_back(from, to);
    }
    return ranges;
}

/** Adds entry by entry to an examination. */
class LogReader {
  public:
    explicit LogReader(Examination& examination) : m_examination(examination) {}

    /** False for the entry behind which there is none. */
    bool add(const Entry& entry, std::span<const char> content) {
        Parts parts(content);
        switch (entry.kind) {
        case testBegins:
            m_examination.lastTest = entry.place.test;
            m_examination.lastFunction = parts.text();
            break;
        case combinationBegins:
            begin(entry.place, parts);
            break;
        case called:
            present(entry, [&](Combination& c) {
                const auto status = parts.value<std::int32_t>();
                if (c.calls++ == 0)
                    c.status = status;
            });
            break;
        case block:
            present(entry, [&](Combination& c) {
                const std::string_view what = parts.text();
                c.blocks.push_back({c.calls, what, parts.rest()});
            });
            break;
        case cost:
            present(entry, [&](Combination& c) { c.clocks = parts.value<double>(); });
            break;
        case testEnded:
            end(entry, parts);
            break;
        case mappings:
            for (const auto& range : rangesOf({content.data(), content.size()}))
                m_examination.memory.push_back(range);
            break;
        default:
            return entry.kind != runEnded;
        }
        return true;
    }

  private:
    template <class Change>
    void present(const Entry& entry, Change change) {
        auto& all = m_examination.combinations;
        if (!all.empty() && all.back().place == entry.place)
            change(all.back());
    }
    void begin(Place place, Parts& parts) {
        Combination combination;
        combination.place = place;
        combination.function = parts.text();
        combination.parameters = parts.text();
        combination.digest = parts.value<std::uint64_t>();
        m_examination.combinations.push_back(std::move(combination));
    }
    void end(const Entry& entry, Parts& parts) {
        const std::string function(parts.text());
        const std::string result(parts.text());
        std::string message(parts.text());
        while (!message.empty() && message.back() == '\n')
            message.pop_back();
        const std::string text = message.empty() ? "the test ended as " + result : message;
        bool begun = false;
        present(entry, [&](Combination& c) {
            begun = true;
            if (!(c.clocks > 0))
                c.trouble = text;
        });
        if (!begun && !message.empty())
            m_examination.notes.push_back(function + ": " + text);
    }

    Examination& m_examination;
};

/** One side's way through its combinations, with as many processes as it takes. */
class Examiner {
  public:
    Examiner(const Sides& sides, int side, int timeLimit)
        : m_sides(sides), m_side(side), m_timeLimit(timeLimit) {}

    void start(int firstTest) {
        m_plan.emplace(examine, 0, 0);
        m_plan->head().firstTest = firstTest;
        m_plan->head().timeLimit = m_timeLimit;
        m_log = Descriptor(temporaryFile());
        m_listing = Descriptor(temporaryFile());
        SideChannels channels;
        channels.plan = m_plan->descriptor();
        channels.log = m_log.number();
        channels.listing = m_listing.number();
        process = std::make_unique<SideProcess>(m_sides, m_side, channels, Placement{});
        m_size = 0;
        m_lastChange = std::chrono::steady_clock::now();
    }

    /** Whether the log grew in the time that a combination may take, and some more. */
    bool goesOn() {
        struct stat file {};
        fstat(m_log.number(), &file);
        const auto now = std::chrono::steady_clock::now();
        if (file.st_size != m_size)
            m_lastChange = now;
        m_size = file.st_size;
        return now - m_lastChange < std::chrono::seconds(2 * m_timeLimit + 2);
    }

    /** Reads the log of a process that has ended; whether there is more to examine. */
    bool finish() {
        auto log = std::make_shared<MappedFile>(m_log.number());
        const int before = examination.lastTest;
        const bool complete = readLog(log->bytes(), examination);
        examination.logs.push_back(std::move(log));
        if (complete || examination.lastTest == before) { // it does not come to a test at all
            noteUnusedNames();
            return false;
        }
        blame("the program " + process->ending());
        start(examination.lastTest + 1);
        return true;
    }

    /** Something ended the process in its last test. */
    void blame(const std::string& what) {
        Combination* const last =
            examination.combinations.empty() ? nullptr : &examination.combinations.back();
        if (last && last->place.test == examination.lastTest && !(last->clocks > 0))
            last->trouble = what;
        else
            examination.notes.push_back(examination.lastFunction + ": " + what);
    }

    /** A -d name that nothing asked for leaves the sides as they were: its line is for the user. */
    void noteUnusedNames() {
        const MappedFile listing(m_listing.number());
        std::istringstream lines(std::string(listing.bytes().begin(), listing.bytes().end()));
        for (std::string line; std::getline(lines, line);)
            if (line.starts_with("-- ") && line.find(" is not used: ") != std::string::npos)
                examination.notes.push_back(line.substr(3));
    }

    /** The side as it stands said this much and no more. */
    [[noreturn]] void refuse() const {
        const MappedFile listing(m_listing.number());
        std::string text(listing.bytes().begin(), listing.bytes().end());
        constexpr std::size_t most = 600;
        if (text.size() > most)
            text = "..." + text.substr(text.size() - most);
        throw PairError(std::string("the side ") + sideNames[static_cast<std::size_t>(m_side)] +
                        " measures nothing: " + m_sides[static_cast<std::size_t>(m_side)].program.string() +
                        " " + process->ending() + (text.empty() ? "" : "\n" + text));
    }

    std::unique_ptr<SideProcess> process;
    Examination examination;

  private:
    const Sides& m_sides;
    int m_side;
    int m_timeLimit;
    std::optional<SidePlan> m_plan;
    Descriptor m_log, m_listing;
    off_t m_size = 0;
    std::chrono::steady_clock::time_point m_lastChange;
};

} // namespace

MappedFile::MappedFile(int descriptor) {
    struct stat file {};
    if (fstat(descriptor, &file) != 0 || file.st_size == 0)
        return;
    const auto size = static_cast<std::size_t>(file.st_size);
    void* const start = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (start == MAP_FAILED)
        throw PairError("what a side wrote down cannot be read");
    m_bytes = {static_cast<const char*>(start), size};
}

MappedFile::~MappedFile() {
    if (!m_bytes.empty())
        munmap(const_cast<char*>(m_bytes.data()), m_bytes.size());
}

int temporaryFile() {
    const char* const directory = std::getenv("TMPDIR");
    std::string name = std::string(directory && *directory ? directory : "/tmp") + "/benchex-pair-XXXXXX";
    const int file = mkostemp(name.data(), O_CLOEXEC);
    if (file < 0)
        throw PairError("no temporary file " + name + ": " + std::strerror(errno));
    unlink(name.c_str());
    return file;
}

bool readLog(std::span<const char> log, Examination& examination) {
    LogReader reader(examination);
    while (log.size() >= sizeof(Entry)) {
        Entry entry;
        std::memcpy(&entry, log.data(), sizeof entry);
        log = log.subspan(sizeof entry);
        if (entry.bytes > log.size())
            return false;
        if (!reader.add(entry, log.first(entry.bytes)))
            return true;
        log = log.subspan(entry.bytes);
    }
    return false;
}

std::vector<Examination> examineSides(const Sides& sides, int timeLimit) {
    std::array<Examiner, 2> examiners{Examiner(sides, 0, timeLimit), Examiner(sides, 1, timeLimit)};
    std::vector<Examiner*> open;
    for (Examiner& examiner : examiners) {
        examiner.start(0);
        open.push_back(&examiner);
    }
    while (!open.empty()) {
        waitForChild(std::chrono::milliseconds(100));
        if (interrupted())
            throw PairError("interrupted before anything was compared");
        std::erase_if(open, [](Examiner* examiner) {
            if (!examiner->goesOn())
                examiner->process->kill();
            return !examiner->process->running() && !examiner->finish();
        });
    }
    std::vector<Examination> results;
    for (Examiner& examiner : examiners) {
        if (examiner.examination.combinations.empty())
            examiner.refuse();
        results.push_back(std::move(examiner.examination));
    }
    return results;
}
