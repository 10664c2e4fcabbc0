#include "machine.h"

#include "stepper.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sys/utsname.h>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view prefix = "machine_";

bool isFloat(Group group) {
    return group == Group::floatAdd || group == Group::floatMultiply || group == Group::multiplyAdd ||
           group == Group::floatDivide;
}

bool isVector(const Kind& kind) {
    switch (kind.group) {
    case Group::vectorInteger:
    case Group::vectorMultiply:
    case Group::logic:
    case Group::shuffle:
    case Group::convert:
        return true;
    default:
        return isFloat(kind.group);
    }
}

/** The number behind a prefix of a kernel's name. */
std::optional<std::string> behind(const SteppedCall& kernel, const std::string& what) {
    const std::string start = std::string(prefix) + what;
    if (!kernel.function.starts_with(start))
        return std::nullopt;
    return kernel.function.substr(start.size());
}

void takeRates(Machine& machine, const SteppedCall& kernel) {
    if (!kernel.instructions())
        return;
    for (const auto& [name, amount] : resourcesOf(profileOf(kernel))) {
        double& rate = machine.rates[name];
        rate = std::max(rate, amount / kernel.clocks);
    }
}

/** Groups by the names of the kernels of latencies. */
const std::map<std::string, Group>& latencyKernels() {
    static const std::map<std::string, Group> kernels = {{"integer", Group::integer},
                                                         {"imul", Group::integerMultiply},
                                                         {"div", Group::integerDivide},
                                                         {"load", Group::load},
                                                         {"add", Group::floatAdd},
                                                         {"multiply", Group::floatMultiply},
                                                         {"multiplyAdd", Group::multiplyAdd},
                                                         {"divide", Group::floatDivide},
                                                         {"vectorInteger", Group::vectorInteger},
                                                         {"vectorMultiply", Group::vectorMultiply},
                                                         {"logic", Group::logic},
                                                         {"shuffle", Group::shuffle},
                                                         {"convert", Group::convert},
                                                         {"forward", Group::load}};
    return kernels;
}

void takeLatency(Machine& machine, const SteppedCall& kernel, const std::string& name) {
    const auto found = latencyKernels().find(name);
    if (found == latencyKernels().end() || !kernel.instructions())
        return;
    // A loop of its own counts its passes with an addition each; the prologue has a load or two.
    const Profile profile = profileOf(kernel);
    long long links = 0;
    for (const auto& [address, executions] : profile.executions)
        if (profile.code.at(address).kind.group == found->second && executions > 1 &&
            profile.code.at(address).name != "dec")
            links += executions;
    if (links > 0)
        machine.latencies.byGroup[name == "forward" ? name : std::string(text(found->second))] =
            kernel.clocks / static_cast<double>(links);
}

fs::path cacheDirectory() {
    const char* const cache = std::getenv("XDG_CACHE_HOME");
    if (cache && *cache == '/')
        return fs::path(cache) / "benchex";
    const char* const home = std::getenv("HOME");
    return home && *home ? fs::path(home) / ".cache" / "benchex" : fs::path();
}

/** What makes a machine another one. */
Json conditionsNow() {
    utsname system{};
    uname(&system);
    std::string processor, features;
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line) && (processor.empty() || features.empty());) {
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos)
            continue;
        if (line.starts_with("model name"))
            processor = line.substr(colon + 2);
        if (line.starts_with("flags"))
            features = line.substr(colon + 2);
    }
    return {{"version", BENCHEX_VERSION},
            {"host", system.nodename},
            {"processor", processor},
            {"features", std::to_string(std::hash<std::string>()(features))}};
}

/** "2026-01-31 12:00:00". */
std::string timeNow() {
    std::string when(32, '\0');
    const std::time_t now = std::time(nullptr);
    tm parts{};
    when.resize(std::strftime(when.data(), when.size(), "%F %T", localtime_r(&now, &parts)));
    return when;
}

std::optional<Machine> keptMachine(const fs::path& file, const Json& conditions) {
    std::ifstream input(file);
    const Json kept = Json::parse(input, nullptr, false);
    if (kept.is_discarded() || !kept.contains("conditions") || kept["conditions"] != conditions)
        return std::nullopt;
    Machine machine;
    try {
        kept.at("rates").get_to(machine.rates);
        kept.at("latencies").get_to(machine.latencies.byGroup);
        for (const auto& [way, rates] : kept.at("memory").items())
            for (const Json& rate : rates)
                machine.memory[way].push_back(
                    {rate.at("kilobytes").get<long long>(), rate.at("bytesPerClock").get<double>()});
        machine.conditions = conditions;
        machine.measured = kept.at("measured").get<std::string>();
    } catch (const Json::exception&) {
        return std::nullopt;
    }
    return machine;
}

/** Each kernel with the middle one of its clocks. */
std::vector<SteppedCall> middleOf(std::vector<std::vector<SteppedCall>> runs) {
    std::vector<SteppedCall> kernels = std::move(runs.back());
    runs.pop_back();
    for (SteppedCall& kernel : kernels) {
        std::vector<double> clocks{kernel.clocks};
        for (const std::vector<SteppedCall>& run : runs)
            for (const SteppedCall& other : run)
                if (other.function == kernel.function && other.clocks > 0)
                    clocks.push_back(other.clocks);
        std::sort(clocks.begin(), clocks.end());
        kernel.clocks = clocks[clocks.size() / 2];
    }
    return kernels;
}

} // namespace

const MemoryRate* Machine::memoryRate(const std::string& way, double bytes) const {
    constexpr double kilobyte = 1024;
    const MemoryRate* best = nullptr;
    const auto found = memory.find(way);
    if (found == memory.end())
        return nullptr;
    for (const MemoryRate& rate : found->second)
        if (static_cast<double>(rate.kilobytes) * kilobyte <= bytes)
            best = &rate;
    return best;
}

Json toJson(const Machine& machine) {
    Json memory = Json::object();
    for (const auto& [way, rates] : machine.memory)
        for (const MemoryRate& rate : rates)
            memory[way].push_back({{"kilobytes", rate.kilobytes}, {"bytesPerClock", rate.bytesPerClock}});
    return {{"conditions", machine.conditions},
            {"measured", machine.measured},
            {"rates", machine.rates},
            {"latencies", machine.latencies.byGroup},
            {"memory", memory}};
}

std::map<std::string, double> resourcesOf(const Profile& profile) {
    std::map<std::string, double> amounts;
    amounts["instructions"] = static_cast<double>(profile.instructions);
    for (const auto& [kind, count] : profile.mix) {
        const auto number = static_cast<double>(count);
        // What only moves is counted with loads and stores, or costs nothing.
        if (kind.group != Group::load && kind.group != Group::store && kind.group != Group::move &&
            kind.group != Group::other && kind.group != Group::string)
            amounts[text(kind)] += number;
        const std::string wide = kind.bits >= 256 ? " of " + std::to_string(kind.bits) : "";
        if (isFloat(kind.group))
            amounts["float arithmetic" + wide] += number;
        if (isVector(kind))
            amounts["vector instructions"] += number;
    }
    for (const auto& [bytes, count] : profile.loads)
        amounts["loads of " + std::to_string(bytes)] += static_cast<double>(count);
    for (const auto& [bytes, count] : profile.stores)
        amounts["stores of " + std::to_string(bytes)] += static_cast<double>(count);
    amounts["loads"] = static_cast<double>(accessesIn(profile.loads));
    amounts["stores"] = static_cast<double>(accessesIn(profile.stores));
    amounts["loads and stores"] = amounts["loads"] + amounts["stores"];
    amounts["taken branches"] = static_cast<double>(profile.branchesTaken);
    return amounts;
}

Machine machineFrom(const std::vector<SteppedCall>& kernels) {
    Machine machine;
    for (const SteppedCall& kernel : kernels) {
        if (!(kernel.clocks > 0))
            continue;
        if (const auto block = behind(kernel, "memory_")) {
            constexpr double kilobyte = 1024;
            const std::size_t size = block->find('_') + 1;
            const long long kilobytes = std::stoll(block->substr(size));
            machine.memory[block->substr(0, size - 1)].push_back(
                {kilobytes, static_cast<double>(kilobytes) * kilobyte / kernel.clocks});
        } else if (const auto group = behind(kernel, "latency_")) {
            takeLatency(machine, kernel, *group);
        } else {
            takeRates(machine, kernel);
        }
    }
    for (auto& [way, rates] : machine.memory) {
        std::sort(rates.begin(), rates.end(),
                  [](const MemoryRate& a, const MemoryRate& b) { return a.kilobytes < b.kilobytes; });
        // Less memory is never slower.
        for (std::size_t i = rates.size(); i > 1; --i)
            rates[i - 2].bytesPerClock = std::max(rates[i - 2].bytesPerClock, rates[i - 1].bytesPerClock);
    }
    return machine;
}

Machine thisMachine(const fs::path& program, bool again) {
    const Json conditions = conditionsNow();
    const fs::path directory = cacheDirectory();
    const fs::path file = directory / "machine.json";
    if (!again && !directory.empty())
        if (std::optional<Machine> kept = keptMachine(file, conditions))
            return *kept;
    constexpr int most = 30'000; // steps; the blocks of memory are told by their names
    constexpr int times = 3;     // a neighbour on the core, or a change of its frequency, may spoil one
    std::vector<std::vector<SteppedCall>> runs;
    for (int i = times; i-- > 0;) // what they execute is the same each time: looked at in the last alone
        runs.push_back(stepThrough("", {.program = program, .keys = {}, .most = i == 0 ? most : 1}));
    Machine machine = machineFrom(middleOf(std::move(runs)));
    machine.conditions = conditions;
    machine.measured = timeNow();
    if (!machine.known())
        throw ExplainError(program.string() + ": nothing of this machine could be measured");
    std::error_code ignored;
    fs::create_directories(directory, ignored);
    std::ofstream output(file);
    output << toJson(machine).dump(1) << "\n";
    return machine;
}
