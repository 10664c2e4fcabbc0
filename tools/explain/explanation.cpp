#include "explanation.h"

#include <algorithm>

namespace {

std::vector<FunctionCount> functionsOf(const Profile& profile, Symbols& symbols) {
    std::map<std::string, FunctionCount> counts;
    for (const auto& [address, executions] : profile.executions) {
        Place place = symbols.at(address);
        FunctionCount& count = counts[place.file + ":" + place.function];
        count.place = place;
        count.instructions += executions;
    }
    for (const auto& [address, calls] : profile.calls) {
        const Place place = symbols.at(address);
        counts[place.file + ":" + place.function].calls += calls;
    }
    std::vector<FunctionCount> sorted;
    for (const auto& [name, count] : counts)
        sorted.push_back(count);
    std::stable_sort(sorted.begin(), sorted.end(), [](const FunctionCount& a, const FunctionCount& b) {
        return a.instructions > b.instructions;
    });
    return sorted;
}

ExplainedBlock explained(const BlockCount& count, const Profile& profile, Symbols& symbols) {
    ExplainedBlock block{count, symbols.at(count.begin), {}};
    std::vector<std::uint64_t> addresses;
    for (auto at = profile.code.find(count.begin); at != profile.code.end() && at->first <= count.last; ++at)
        if (profile.executions.count(at->first) > 0)
            addresses.push_back(at->first);
    const std::vector<std::string> lines = symbols.lines(addresses);
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        const bool same = i > 0 && lines[i] == lines[i - 1];
        block.code.push_back(
            {addresses[i], profile.code.at(addresses[i]).text, same ? std::string() : lines[i]});
    }
    return block;
}

} // namespace

double Explanation::instructionsPerClock() const {
    const auto counted = call.instructions();
    return counted && call.clocks > 0 ? static_cast<double>(*counted) / call.clocks : 0;
}

Explanation explain(const SteppedCall& call, int blocks, const Machine* machine) {
    Explanation result{call, profileOf(call), {}, {}, 0, std::nullopt};
    Symbols symbols(call);
    result.functions = functionsOf(result.profile, symbols);
    const auto shown = std::min(static_cast<std::size_t>(blocks), result.profile.blocks.size());
    for (std::size_t i = 0; i < shown; ++i)
        result.blocks.push_back(explained(result.profile.blocks[i], result.profile, symbols));
    result.blockedLoads = blockedLoads(call, result.profile);
    if (machine && call.instructions() && !call.full && call.clocks > 0)
        result.limits = limitsOf(call, result.profile, *machine);
    return result;
}
