#include "explanation.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace {

/** "4,733". */
std::string grouped(long long number) {
    const std::string digits = std::to_string(number);
    std::string text;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += ',';
        text += digits[i];
    }
    return text;
}

std::string rounded(double number, int digits) {
    std::ostringstream text;
    text << std::setprecision(digits) << number;
    return text.str();
}

std::string fixed(double number, int decimals) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << number;
    return text.str();
}

double share(long long part, long long whole) {
    return whole > 0 ? static_cast<double>(part) / static_cast<double>(whole) : 0;
}

std::string perCent(double part) {
    return fixed(100 * part, 1) + " %";
}

std::string hexadecimal(std::uint64_t number) {
    std::ostringstream text;
    text << "0x" << std::hex << number;
    return text.str();
}

/** Kinds by how often, the most frequent first. */
std::vector<std::pair<Kind, long long>> sorted(const std::map<Kind, long long>& mix) {
    std::vector<std::pair<Kind, long long>> kinds(mix.begin(), mix.end());
    std::stable_sort(kinds.begin(), kinds.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    return kinds;
}

std::string name(const Place& place) {
    return place.offset > 0 ? place.function + "+" + hexadecimal(place.offset) : place.function;
}

/** One thing said, as a table line with a label of fixed width. */
void writeRow(std::ostream& out, const std::string& label, const std::string& number,
              const std::string& more) {
    out << "  " << std::left << std::setw(36) << label << std::right << std::setw(14) << number;
    if (!more.empty())
        out << "  " << more;
    out << "\n";
}

void writeHead(std::ostream& out, const Explanation& e) {
    const SteppedCall& call = e.call;
    out << call.function << (call.parameters.empty() ? "" : " ") << call.parameters << "\n";
    if (const auto counted = call.instructions())
        out << "  " << grouped(*counted) << " instructions";
    else
        out << "  the first " << grouped(e.profile.instructions) << " instructions (" << call.count << ")";
    if (e.profile.steps > e.profile.instructions)
        out << ", " << grouped(e.profile.steps) << " with the iterations of string instructions";
    if (call.clocks > 0) {
        out << ", " << rounded(call.clocks, 5) << " core clocks";
        if (call.interval)
            out << " (" << rounded(call.interval->first, 5) << " to " << rounded(call.interval->second, 5)
                << ")";
        if (e.instructionsPerClock() > 0)
            out << ", " << rounded(e.instructionsPerClock(), 3) << " a clock";
    }
    out << "\n";
    if (call.full)
        out << "  there was no memory for all of its steps: what follows is about the first\n";
}

void writeLimits(std::ostream& out, const Explanation& e) {
    if (!e.limits)
        return;
    out << "  " << e.limits->text() << "\n\n  lower bounds\n";
    constexpr std::size_t most = 5;
    const auto& bounds = e.limits->bounds;
    for (std::size_t i = 0; i < std::min(most, bounds.size()); ++i)
        writeRow(out, "  " + bounds[i].name, rounded(bounds[i].clocks, 5), perCent(bounds[i].share));
    const Chain& chain = e.limits->chain;
    std::string links;
    for (const auto& [group, count] : chain.groups)
        links += (links.empty() ? "" : ", ") + grouped(count) + " " + std::string(text(group));
    writeRow(out, "  longest chain (may overlap calls)", rounded(chain.clocks, 5),
             perCent(chain.share) + ": " + links);
}

void writeMix(std::ostream& out, const Explanation& e) {
    out << "\n  instructions by kind\n";
    for (const auto& [kind, count] : sorted(e.profile.mix))
        writeRow(out, "  " + text(kind), grouped(count), perCent(share(count, e.profile.instructions)));
    const long long branches = e.profile.count(Group::branch);
    if (branches > 0)
        out << "    " << perCent(share(e.profile.branchesTaken, branches)) << " of the branches are taken\n";
}

void writeMemory(std::ostream& out, const Explanation& e) {
    const auto byBytes = [](const std::map<int, long long>& table) {
        std::string sizes;
        for (const auto& [bytes, count] : table)
            sizes += (sizes.empty() ? "" : ", ") + grouped(count) + " of " + std::to_string(bytes);
        return sizes;
    };
    const Profile& p = e.profile;
    out << "\n  memory\n";
    writeRow(out, "  loads", grouped(accessesIn(p.loads)),
             grouped(bytesIn(p.loads)) + " bytes: " + byBytes(p.loads));
    writeRow(out, "  stores", grouped(accessesIn(p.stores)),
             grouped(bytesIn(p.stores)) + " bytes: " + byBytes(p.stores));
    writeRow(out, "  lines of 64 bytes, different ones", grouped(p.lines), "");
    if (e.blockedLoads > 0)
        writeRow(out, "  loads that wait for stores", grouped(e.blockedLoads),
                 "they take parts of several recent ones, or more than one wrote");
    for (const MemoryUse& use : p.memory)
        writeRow(out, "    " + use.name.substr(0, 31), grouped(use.lines),
                 grouped(use.bytesRead) + " bytes read, " + grouped(use.bytesWritten) + " written");
}

void writeOperations(std::ostream& out, const Explanation& e) {
    const long long executed = e.profile.operations;
    const auto declared = static_cast<long long>(e.call.operations);
    if (executed == 0 && declared == 0)
        return;
    out << "\n  floating-point operations\n";
    writeRow(out, "  executed", grouped(executed),
             e.call.clocks > 0 ? rounded(static_cast<double>(executed) / e.call.clocks, 3) + " a clock" : "");
    if (declared > 0)
        writeRow(out, "  declared by the test", grouped(declared),
                 rounded(share(executed, declared), 3) + " executed for each");
}

void writeFunctions(std::ostream& out, const Explanation& e) {
    out << "\n  functions\n";
    for (const FunctionCount& function : e.functions)
        writeRow(out,
                 "  " + perCent(share(function.instructions, e.profile.instructions)) + ", " +
                     grouped(function.calls) + (function.calls == 1 ? " call" : " calls"),
                 grouped(function.instructions), function.place.function + " (" + function.place.file + ")");
}

void writeBlocks(std::ostream& out, const Explanation& e) {
    if (!e.blocks.empty())
        out << "\n  hottest blocks\n";
    for (const ExplainedBlock& block : e.blocks) {
        out << "    " << perCent(share(block.count.executed(), e.profile.instructions)) << ": "
            << grouped(block.count.executions) << " times " << block.count.instructions << ", "
            << name(block.place) << " (" << block.place.file << ")\n";
        constexpr std::size_t most = 40;
        for (std::size_t i = 0; i < std::min(most, block.code.size()); ++i) {
            const CodeLine& line = block.code[i];
            out << "      " << hexadecimal(line.address) << "  " << std::left
                << std::setw(line.line.empty() ? 0 : 50) << line.text << std::right
                << (line.line.empty() ? "" : " ; " + line.line) << "\n";
        }
        if (block.code.size() > most)
            out << "      and " << block.code.size() - most << " more, which --json shows\n";
    }
}

Json accesses(const std::map<int, long long>& table) {
    Json list = Json::object();
    for (const auto& [bytes, count] : table)
        list[std::to_string(bytes)] = count;
    return {{"count", accessesIn(table)}, {"bytes", bytesIn(table)}, {"byBytes", list}};
}

Json toJson(const ExplainedBlock& block) {
    Json code = Json::array();
    for (const CodeLine& line : block.code) {
        Json entry = {{"address", hexadecimal(line.address)}, {"text", line.text}};
        if (!line.line.empty())
            entry["line"] = line.line;
        code.push_back(entry);
    }
    return {{"place", name(block.place)},
            {"file", block.place.file},
            {"executions", block.count.executions},
            {"instructions", block.count.instructions},
            {"code", code}};
}

} // namespace

void writeText(std::ostream& out, const Explanation& explanation) {
    writeHead(out, explanation);
    writeLimits(out, explanation);
    writeMix(out, explanation);
    writeMemory(out, explanation);
    writeOperations(out, explanation);
    writeFunctions(out, explanation);
    writeBlocks(out, explanation);
}

Json toJson(const Explanation& e) {
    const Profile& p = e.profile;
    Json json = {{"function", e.call.function},
                 {"parameters", e.call.parameters},
                 {"count", e.call.count},
                 {"instructions", p.instructions},
                 {"steps", p.steps},
                 {"complete", e.call.instructions().has_value() && !e.call.full}};
    if (e.call.clocks > 0)
        json["clocks"] = e.call.clocks;
    if (e.call.interval)
        json["interval"] = {e.call.interval->first, e.call.interval->second};
    if (e.instructionsPerClock() > 0)
        json["instructionsPerClock"] = e.instructionsPerClock();
    if (e.limits) {
        json["limit"] = e.limits->explained() ? e.limits->bounds.front().name : "latency or waiting";
        json["limitShare"] = e.limits->explained() ? e.limits->bounds.front().share : e.limits->chain.share;
        json["bounds"] = Json::array();
        for (const Bound& bound : e.limits->bounds)
            json["bounds"].push_back(
                {{"name", bound.name}, {"clocks", bound.clocks}, {"share", bound.share}});
        const Chain& chain = e.limits->chain;
        json["chain"] = {
            {"clocks", chain.clocks}, {"share", chain.share}, {"instructions", chain.instructions}};
    }
    json["blockedLoads"] = e.blockedLoads;
    json["mix"] = Json::array();
    for (const auto& [kind, count] : sorted(p.mix))
        json["mix"].push_back({{"kind", text(kind)}, {"count", count}});
    json["branchesTaken"] = p.branchesTaken;
    json["loads"] = accesses(p.loads);
    json["stores"] = accesses(p.stores);
    json["lines"] = p.lines;
    json["memory"] = Json::array();
    for (const MemoryUse& use : p.memory)
        json["memory"].push_back({{"name", use.name},
                                  {"bytesRead", use.bytesRead},
                                  {"bytesWritten", use.bytesWritten},
                                  {"lines", use.lines}});
    json["operations"] = p.operations;
    if (e.call.operations > 0)
        json["operationsDeclared"] = jsonNumber(e.call.operations);
    json["functions"] = Json::array();
    for (const FunctionCount& function : e.functions)
        json["functions"].push_back({{"name", function.place.function},
                                     {"file", function.place.file},
                                     {"instructions", function.instructions},
                                     {"calls", function.calls}});
    json["blocks"] = Json::array();
    for (const ExplainedBlock& block : e.blocks)
        json["blocks"].push_back(toJson(block));
    return json;
}
