#include "chain.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace {

/** When something is there, and the step that made it, -1 for none. */
struct Ready {
    double clocks = 0;
    long long step = -1;
};

void takeLater(Ready& to, const Ready& other) {
    if (other.clocks > to.clocks)
        to = other;
}

/** Follows what each step waits for. */
class Tracer {
  public:
    Tracer(const SteppedCall& call, const Profile& profile, const Latencies& latencies)
        : m_call(call), m_profile(profile), m_latencies(latencies) {}

    Chain run() {
        StepReader step(m_call);
        std::uint64_t before = 0;
        while (step.next()) {
            const Instruction& now = m_profile.code.at(step.address());
            // The iterations of a repeated string instruction do not wait for each other.
            if (!now.repeats || step.address() != before)
                take(now, step);
            before = step.address();
        }
        Chain chain;
        chain.clocks = m_last.clocks;
        for (long long at = m_last.step; at >= 0; at = m_before[static_cast<std::size_t>(at)]) {
            ++chain.instructions;
            ++chain.groups[m_groups[static_cast<std::size_t>(at)]];
        }
        return chain;
    }

  private:
    static constexpr std::uint64_t cell = 4; // bytes that are kept apart

    void take(const Instruction& now, const StepReader& step) {
        Ready ready = ofRegisters(now.reads);
        const Ready address = ofRegisters(now.addressReads);
        for (const Access& access : now.accesses)
            if (access.read)
                takeLater(ready, loaded(access, step, address));
        const Group group = now.kind.group;
        const bool moves = group == Group::move || group == Group::load || group == Group::store;
        const double latency = moves ? 0 : m_latencies.of(group);
        const auto number = static_cast<long long>(m_before.size());
        m_before.push_back(ready.step);
        m_groups.push_back(group);
        const Ready result{ready.clocks + latency, number};
        for (const int reg : now.writes)
            m_registers[static_cast<std::size_t>(reg)] = result;
        for (const Access& access : now.accesses)
            if (access.write && !access.inVector)
                store(access.address(step, m_call.thread), access.bytes, result);
        takeLater(m_last, result);
    }

    Ready ofRegisters(const std::vector<int>& registers) const {
        Ready ready;
        for (const int reg : registers)
            takeLater(ready, m_registers[static_cast<std::size_t>(reg)]);
        return ready;
    }

    Ready loaded(const Access& access, const StepReader& step, const Ready& address) const {
        Ready ready{address.clocks + m_latencies.of(Group::load), address.step};
        if (access.inVector)
            return ready;
        const std::uint64_t begin = access.address(step, m_call.thread);
        for (std::uint64_t at = begin / cell; at <= (begin + lastByte(access.bytes)) / cell; ++at)
            if (const auto found = m_memory.find(at); found != m_memory.end())
                takeLater(ready, {found->second.clocks + m_latencies.forward(), found->second.step});
        return ready;
    }

    void store(std::uint64_t begin, int bytes, const Ready& result) {
        for (std::uint64_t at = begin / cell; at <= (begin + lastByte(bytes)) / cell; ++at)
            m_memory[at] = result;
    }

    static std::uint64_t lastByte(int bytes) { return static_cast<std::uint64_t>(std::max(bytes, 1) - 1); }

    const SteppedCall& m_call;
    const Profile& m_profile;
    const Latencies& m_latencies;
    std::array<Ready, Instruction::registers> m_registers{};
    std::unordered_map<std::uint64_t, Ready> m_memory;
    std::vector<long long> m_before; /**< of each step, the one that it waited for */
    std::vector<Group> m_groups;
    Ready m_last;
};

} // namespace

double Latencies::of(Group group) const {
    const auto found = byGroup.find(std::string(::text(group)));
    return found == byGroup.end() ? 1 : found->second;
}

double Latencies::forward() const {
    const auto found = byGroup.find("forward");
    return found == byGroup.end() ? of(Group::load) : found->second;
}

Chain longestChain(const SteppedCall& call, const Profile& profile, const Latencies& latencies) {
    return Tracer(call, profile, latencies).run();
}

long long blockedLoads(const SteppedCall& call, const Profile& profile) {
    // Stores leave their buffer after a while; this many are surely not more than there are.
    constexpr std::size_t kept = 32;
    struct Stored {
        std::uint64_t begin = 0, end = 0;
    };
    std::array<Stored, kept> recent{};
    std::size_t next = 0;
    long long blocked = 0;
    StepReader step(call);
    while (step.next()) {
        for (const Access& access : profile.code.at(step.address()).accesses) {
            if (access.inVector || access.bytes <= 0)
                continue;
            const std::uint64_t begin = access.address(step, call.thread);
            const std::uint64_t end = begin + static_cast<std::uint64_t>(access.bytes);
            if (access.read) {
                // The youngest store that has a part of it decides.
                for (std::size_t i = 1; i <= kept; ++i) {
                    const Stored& stored = recent[(next + kept - i) % kept];
                    if (stored.begin >= end || stored.end <= begin)
                        continue;
                    blocked += stored.begin > begin || stored.end < end ? 1 : 0;
                    break;
                }
            }
            if (access.write)
                recent[next++ % kept] = {begin, end};
        }
    }
    return blocked;
}
