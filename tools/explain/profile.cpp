#include "profile.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace {

constexpr std::uint64_t lineBytes = 64;

/** Memory by what it is for. */
class MemoryUses {
  public:
    explicit MemoryUses(const SteppedCall& call) : m_call(call), m_lines(call.blocks.size() + 2) {
        for (const Region& block : call.blocks)
            m_uses.push_back({block.name, 0, 0, 0});
        m_uses.push_back({"stack", 0, 0, 0});
        m_uses.push_back({"constants and others", 0, 0, 0});
        const auto pointer =
            std::find_if(call.registers.begin(), call.registers.end(),
                         [](const std::string& name) { return name == "rsp" || name == "esp"; });
        m_stack = static_cast<int>(pointer - call.registers.begin());
    }

    void begin(const StepReader& first) { m_entry = first.value(m_stack); }
    void take(const Access& access, std::uint64_t at, const StepReader& step) {
        const std::size_t place = placeOf(at, step);
        MemoryUse& use = m_uses[place];
        use.bytesRead += access.read ? access.bytes : 0;
        use.bytesWritten += access.write ? access.bytes : 0;
        const std::uint64_t end = at + static_cast<std::uint64_t>(std::max(1, access.bytes));
        for (std::uint64_t line = at / lineBytes; line <= (end - 1) / lineBytes; ++line) {
            m_lines[place].insert(line);
            if (access.write)
                m_written.insert(line);
        }
    }
    long long linesWritten() const { return static_cast<long long>(m_written.size()); }
    /** What was used at all, the most used first. */
    std::vector<MemoryUse> uses() {
        for (std::size_t i = 0; i < m_uses.size(); ++i)
            m_uses[i].lines = static_cast<long long>(m_lines[i].size());
        std::vector<MemoryUse> used;
        std::copy_if(m_uses.begin(), m_uses.end(), std::back_inserter(used),
                     [](const MemoryUse& use) { return use.lines > 0; });
        std::stable_sort(used.begin(), used.end(), [](const MemoryUse& a, const MemoryUse& b) {
            return a.bytesRead + a.bytesWritten > b.bytesRead + b.bytesWritten;
        });
        return used;
    }

  private:
    std::size_t placeOf(std::uint64_t at, const StepReader& step) const {
        const auto& blocks = m_call.blocks;
        const auto block =
            std::find_if(blocks.begin(), blocks.end(), [at](const Region& b) { return b.holds(at); });
        if (block != blocks.end())
            return static_cast<std::size_t>(block - blocks.begin());
        constexpr std::uint64_t below = 256;  // that a function may use without reserving it
        constexpr std::uint64_t above = 4096; // of its callers: arguments
        const bool stack = at + below >= step.value(m_stack) && at < m_entry + above;
        return blocks.size() + (stack ? 0 : 1);
    }

    const SteppedCall& m_call;
    std::vector<MemoryUse> m_uses;
    std::vector<std::set<std::uint64_t>> m_lines;
    std::set<std::uint64_t> m_written;
    int m_stack;
    std::uint64_t m_entry = 0;
};

class Profiler {
  public:
    explicit Profiler(const SteppedCall& call) : m_call(call), m_memory(call) {
        m_profile.code = decode(call);
    }

    Profile run() {
        StepReader step(m_call);
        while (step.next()) {
            const auto found = m_profile.code.find(step.address());
            if (found == m_profile.code.end())
                throw ExplainError("code that is not in the file, in " + m_call.function);
            take(found->second, step);
        }
        countBlocks();
        m_profile.memory = m_memory.uses();
        for (const MemoryUse& use : m_profile.memory)
            m_profile.lines += use.lines;
        m_profile.linesWritten = m_memory.linesWritten();
        return std::move(m_profile);
    }

  private:
    void take(const Instruction& now, const StepReader& step) {
        if (m_profile.steps == 0)
            m_memory.begin(step);
        const bool again = m_last && m_last->repeats && m_last->address == now.address;
        noteTransfer(now);
        ++m_profile.steps;
        if (!again) {
            ++m_profile.instructions;
            ++m_profile.executions[now.address];
            ++m_profile.mix[now.kind];
            m_profile.operations += now.operations;
        }
        const bool idle = now.repeats && now.counter >= 0 && step.value(now.counter) == 0;
        if (!idle)
            takeAccesses(now, step);
        m_last = &now;
    }

    void takeAccesses(const Instruction& now, const StepReader& step) {
        for (const Access& access : now.accesses) {
            // The iterations of a repeated string instruction are not carried out one by one.
            if (access.read && !now.repeats)
                ++m_profile.loads[access.bytes];
            if (access.write && !now.repeats)
                ++m_profile.stores[access.bytes];
            if (!access.inVector)
                m_memory.take(access, access.address(step, m_call.thread), step);
        }
    }

    /** How the last instruction led here: what is called, and where blocks begin. */
    void noteTransfer(const Instruction& now) {
        if (!m_last || m_last->endsBlock || m_last->next() != now.address)
            m_leaders.insert(now.address);
        if (!m_last)
            return;
        if (m_last->kind.group == Group::call)
            ++m_profile.calls[now.address];
        if (m_last->kind.group == Group::branch && m_last->next() != now.address)
            ++m_profile.branchesTaken;
    }

    void countBlocks() {
        const Instruction* before = nullptr;
        for (const auto& [address, executions] : m_profile.executions) {
            const Instruction& now = m_profile.code.at(address);
            if (!before || before->endsBlock || before->next() != address || m_leaders.count(address) > 0)
                m_profile.blocks.push_back({.begin = address, .executions = executions});
            BlockCount& block = m_profile.blocks.back();
            block.last = address;
            ++block.instructions;
            before = &now;
        }
        std::stable_sort(
            m_profile.blocks.begin(), m_profile.blocks.end(),
            [](const BlockCount& a, const BlockCount& b) { return a.executed() > b.executed(); });
    }

    const SteppedCall& m_call;
    MemoryUses m_memory;
    Profile m_profile;
    const Instruction* m_last = nullptr;
    std::set<std::uint64_t> m_leaders;
};

} // namespace

long long Profile::count(Group group) const {
    return std::accumulate(mix.begin(), mix.end(), 0LL, [group](long long sum, const auto& entry) {
        return sum + (entry.first.group == group ? entry.second : 0);
    });
}

long long accessesIn(const std::map<int, long long>& table) {
    return std::accumulate(table.begin(), table.end(), 0LL,
                           [](long long sum, const auto& entry) { return sum + entry.second; });
}

long long bytesIn(const std::map<int, long long>& table) {
    return std::accumulate(table.begin(), table.end(), 0LL,
                           [](long long sum, const auto& entry) { return sum + entry.first * entry.second; });
}

Profile profileOf(const SteppedCall& call) {
    return Profiler(call).run();
}
