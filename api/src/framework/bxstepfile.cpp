#include "framework/bxstepfile.h"

#include "data/bxalloc.h"
#include "output/bxdiscard.h"

#include <algorithm>
#include <fstream>
#include <pthread.h>
#include <sstream>
#include <string>

namespace {

/** Code that is mapped into this process. */
struct Mapping {
    std::uintptr_t begin, end;
    std::string line; /**< for the file */
};

struct Output {
    std::string name;
    std::ofstream file;
};

Output& output() {
    static Output output;
    return output;
}

std::vector<Mapping> executableMappings() {
    std::vector<Mapping> mappings;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        std::string range, rights, offset, device, node, file;
        words >> range >> rights >> offset >> device >> node >> std::ws;
        std::getline(words, file);
        const std::size_t dash = range.find('-');
        if (rights.find('x') == std::string::npos || dash == std::string::npos)
            continue;
        const std::string begin = range.substr(0, dash);
        const std::string end = range.substr(dash + 1);
        mappings.push_back({static_cast<std::uintptr_t>(std::stoull(begin, nullptr, 16)),
                            static_cast<std::uintptr_t>(std::stoull(end, nullptr, 16)),
                            begin + " " + end + " " + offset + " " + file});
    }
    return mappings;
}

/** An instruction has at most 15 bytes; none behind its mapping is read. */
void writeCode(std::ostream& out, std::uintptr_t address, const std::vector<Mapping>& mappings) {
    constexpr std::uintptr_t longest = 15;
    constexpr const char* digits = "0123456789abcdef";
    const auto place = std::find_if(mappings.begin(), mappings.end(), [address](const Mapping& m) {
        return address >= m.begin && address < m.end;
    });
    if (place == mappings.end())
        return;
    const std::uintptr_t bytes = std::min(longest, place->end - address);
    const auto* const code = reinterpret_cast<const std::uint8_t*>(address);
    out << "code " << address << " ";
    for (std::uintptr_t i = 0; i < bytes; ++i)
        out << digits[code[i] >> 4] << digits[code[i] & 15];
    out << "\n";
}

void writeBlocks(std::ostream& out) {
    int size = 0;
    void* owner = nullptr;
    for (void* block = bxMallocFirst(&size, &owner); block; block = bxMallocNext(&size, &owner)) {
        out << "block " << reinterpret_cast<std::uintptr_t>(block) << " " << size;
        if (owner)
            out << " " << static_cast<const bxObject*>(owner)->objectInfo().c_str();
        out << "\n";
    }
}

void writeFigure(std::ostream& out, const bxPreciseFigure& figure) {
    if (!(figure.clocks > 0))
        return;
    out << "clocks " << figure.clocks << "\n";
    if (figure.known)
        out << "interval " << figure.low << " " << figure.high << "\n";
    if (figure.lost > 0)
        out << "shared " << figure.lost << "\n";
}

void writeLog(std::ostream& out, const bxStepLog& log) {
    if (log.full())
        out << "full\n";
    out << "thread " << reinterpret_cast<std::uintptr_t>(reinterpret_cast<void*>(pthread_self()))
        << "\nregisters " << bxStepLog::names << "\n";
    writeBlocks(out);
    const std::vector<Mapping> mappings = executableMappings();
    for (const Mapping& mapping : mappings)
        out << "map " << mapping.line << "\n";
    for (const std::uintptr_t address : log.addresses())
        writeCode(out, address, mappings);
    out << "steps " << log.steps() << "\ndata " << log.bytes() << "\n";
    out.write(log.data(), static_cast<std::streamsize>(log.bytes()));
}

} // namespace

bool bxStepFile::open(const bxString& name) {
    Output& out = output();
    if (out.file.is_open() && out.name == name.c_str())
        return true;
    out.name = g_discardOutput ? "/dev/null" : name.c_str();
    out.file = std::ofstream(out.name, std::ios::binary);
    return out.file.good();
}

bool bxStepFile::add(const bxStepRecord& record) {
    std::ofstream& out = output().file;
    out.precision(12);
    out << "function " << record.function.c_str() << "\nparameters " << record.parameters.c_str() << "\n";
    if (record.operations > 0)
        out << "operations " << record.operations << "\n";
    out << "count " << record.count.text().c_str() << "\n";
    writeFigure(out, record.figure);
    if (record.log)
        writeLog(out, *record.log);
    else
        out << "data 0\n";
    out << "\n" << std::flush;
    return out.good();
}
