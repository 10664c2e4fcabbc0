#include "bounds.h"

#include <algorithm>
#include <cmath>

namespace {

std::string perCent(double share) {
    return std::to_string(std::lround(100 * share)) + "%";
}

/** What the call's memory costs where all of it is touched again before it is kept nearer. */
std::optional<Bound> boundOfLines(const Profile& profile, const Machine& machine) {
    constexpr double lineBytes = 64;
    const double bytes = lineBytes * static_cast<double>(profile.lines);
    const double written = lineBytes * static_cast<double>(profile.linesWritten);
    const double copied = 2 * std::min(written, bytes - written);
    Bound bound;
    for (const auto& [way, part] :
         {std::pair{"copy", copied}, std::pair{"write", std::max(0.0, 2 * written - bytes)},
          std::pair{"read", std::max(0.0, bytes - 2 * written)}}) {
        const MemoryRate* const rate = machine.memoryRate(way, bytes);
        if (!rate || part <= 0)
            continue;
        bound.clocks += part / rate->bytesPerClock;
        bound.name = "new lines, as from " + std::to_string(rate->kilobytes) + " KB";
    }
    return bound.clocks > 0 ? std::optional(bound) : std::nullopt;
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
    if (const auto lines = boundOfLines(profile, machine))
        add(lines->name, lines->clocks);
    std::stable_sort(limits.bounds.begin(), limits.bounds.end(),
                     [](const Bound& a, const Bound& b) { return a.clocks > b.clocks; });
    limits.chain = longestChain(call, profile, machine.latencies);
    limits.chain.share = std::min(1.0, limits.chain.clocks / call.clocks);
    return limits;
}
