#include "stepfile.h"

#include "output/bxtable.h"

#include <cstring>
#include <functional>
#include <istream>
#include <sstream>

namespace {

using Words = std::istringstream;
using ReadLine = std::function<void(SteppedCall&, Words&)>;

std::string rest(Words& words) {
    std::string text;
    std::getline(words >> std::ws, text);
    return text;
}

std::vector<std::uint8_t> bytesOf(const std::string& digits) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

Region fileRegion(Words& words) {
    Region region{};
    words >> std::hex >> region.begin >> region.end >> region.offset >> std::dec;
    region.name = rest(words);
    return region;
}

Region blockRegion(Words& words) {
    Region region{};
    std::uint64_t size = 0;
    words >> region.begin >> size;
    region.end = region.begin + size;
    region.name = rest(words);
    return region;
}

/** What the lines of a call mean, by their first word. */
const std::map<std::string, ReadLine>& lineKinds() {
    static const std::map<std::string, ReadLine> kinds = {
        {"parameters", [](SteppedCall& call, Words& words) { call.parameters = rest(words); }},
        {"operations", [](SteppedCall& call, Words& words) { words >> call.operations; }},
        {"count", [](SteppedCall& call, Words& words) { call.count = rest(words); }},
        {"clocks", [](SteppedCall& call, Words& words) { words >> call.clocks; }},
        {"interval",
         [](SteppedCall& call, Words& words) {
             double low = 0, high = 0;
             words >> low >> high;
             call.interval = {low, high};
         }},
        {"shared", [](SteppedCall& call, Words& words) { words >> call.shared; }},
        {"full", [](SteppedCall& call, Words&) { call.full = true; }},
        {"thread", [](SteppedCall& call, Words& words) { words >> call.thread; }},
        {"registers",
         [](SteppedCall& call, Words& words) {
             for (std::string name; words >> name;)
                 call.registers.push_back(name);
         }},
        {"block", [](SteppedCall& call, Words& words) { call.blocks.push_back(blockRegion(words)); }},
        {"map", [](SteppedCall& call, Words& words) { call.files.push_back(fileRegion(words)); }},
        {"code",
         [](SteppedCall& call, Words& words) {
             std::uint64_t address = 0;
             std::string digits;
             words >> address >> digits;
             call.code[address] = bytesOf(digits);
         }},
        {"steps", [](SteppedCall& call, Words& words) { words >> call.steps; }},
    };
    return kinds;
}

void readData(std::istream& input, SteppedCall& call, Words& words, const std::string& name) {
    std::size_t bytes = 0;
    words >> bytes;
    constexpr std::size_t most = std::size_t{1} << 34;
    if (bytes > most)
        throw ExplainError(name + ": no file of steps");
    call.data.resize(bytes);
    const bool named = !call.registers.empty() && call.registers.size() <= 32;
    if (!input.read(call.data.data(), static_cast<std::streamsize>(bytes)) || (bytes > 0 && !named))
        throw ExplainError(name + ": cut off in " + call.function);
    input.ignore();
}

} // namespace

std::vector<SteppedCall> readSteps(std::istream& input, const std::string& name) {
    std::vector<SteppedCall> calls;
    bool open = false;
    for (std::string line; std::getline(input, line);) {
        Words words(line);
        std::string key;
        words >> key;
        if (key == "function") {
            calls.emplace_back().function = rest(words);
            open = true;
        } else if (key == "data" && open) {
            readData(input, calls.back(), words, name);
            open = false;
        } else if (const auto kind = lineKinds().find(key); open && kind != lineKinds().end()) {
            kind->second(calls.back(), words);
        } else {
            throw ExplainError(name + ": no file of steps");
        }
    }
    if (open)
        throw ExplainError(name + ": cut off in " + calls.back().function);
    return calls;
}

std::optional<long long> SteppedCall::instructions() const {
    constexpr std::string_view key = bxTable::instructions;
    if (!count.starts_with(key) || count.size() == key.size() || !std::isdigit(count[key.size()]))
        return std::nullopt;
    return std::stoll(count.substr(key.size()));
}

bool StepReader::next() {
    std::uint32_t changed = 0;
    if (m_at + sizeof changed > m_call.data.size())
        return false;
    std::memcpy(&changed, m_call.data.data() + m_at, sizeof changed);
    m_at += sizeof changed;
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (!(changed >> i & 1))
            continue;
        if (m_at + sizeof m_values[i] > m_call.data.size())
            return false;
        std::memcpy(&m_values[i], m_call.data.data() + m_at, sizeof m_values[i]);
        m_at += sizeof m_values[i];
    }
    return true;
}
