#include "bounds.h"

#include <algorithm>
#include <cmath>

namespace {

std::string perCent(double share) {
    return std::to_string(std::lround(100 * share)) + "%";
}

} // namespace

std::string Limits::text() const {
    if (explained())
        return "limit=" + bounds.front().name + " " + perCent(bounds.front().share);
    if (chain.share >= 0.5)
        return "limit=latency or waiting, a chain of " + std::to_string(chain.instructions) +
               " instructions " + perCent(chain.share);
    return "limit=latency or waiting";
}

Limits limitsOf(const SteppedCall& call, const Profile& profile, const Machine& machine) {
    Limits limits;
    if (!(call.clocks > 0))
        return limits;
    const auto add = [&](const std::string& name, double clocks) {
        limits.bounds.push_back({name, clocks, std::min(1.0, clocks / call.clocks)});
    };
    for (const auto& [name, amount] : resourcesOf(profile)) {
        const auto rate = machine.rates.find(name);
        if (rate != machine.rates.end() && amount > 0)
            add(name, amount / rate->second);
    }
    constexpr double lineBytes = 64;
    const double bytes = lineBytes * static_cast<double>(profile.lines);
    if (const MemoryRate* const rate = machine.memoryRate(bytes))
        add("new lines, as from " + std::to_string(rate->kilobytes) + " KB", bytes / rate->bytesPerClock);
    std::stable_sort(limits.bounds.begin(), limits.bounds.end(),
                     [](const Bound& a, const Bound& b) { return a.clocks > b.clocks; });
    limits.chain = longestChain(call, profile, machine.latencies);
    limits.chain.share = std::min(1.0, limits.chain.clocks / call.clocks);
    return limits;
}
