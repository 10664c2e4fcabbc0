#include "symbols.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>

namespace {

/** A structure of the file; nothing where the file is too short for it. */
template <class T>
std::optional<T> structureAt(const std::vector<char>& file, std::uint64_t offset) {
    if (offset > file.size() || file.size() - offset < sizeof(T))
        return std::nullopt;
    T value;
    std::memcpy(&value, file.data() + offset, sizeof value);
    return value;
}

std::string stringAt(const std::vector<char>& file, std::uint64_t offset) {
    if (offset >= file.size())
        return {};
    const auto begin = file.begin() + static_cast<std::ptrdiff_t>(offset);
    return {begin, std::find(begin, file.end(), '\0')};
}

/** The name as it was written, without the arguments of a C++ function. */
std::string readable(const std::string& name) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(
        abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), std::free);
    if (status != 0 || !text)
        return name.substr(0, name.find('@'));
    std::string plain = text.get();
    constexpr std::string_view hidden = "(anonymous namespace)::";
    for (std::size_t at = plain.find(hidden); at != std::string::npos; at = plain.find(hidden))
        plain.erase(at, hidden.size());
    if (plain.find("operator") != std::string::npos)
        return plain;
    // Without template arguments, the arguments behind them and the type of the result.
    std::string bare;
    int depth = 0;
    for (const char c : plain) {
        depth -= c == '>' ? 1 : 0;
        if (c == '(' && depth == 0)
            break;
        if (depth == 0 && c != '<' && c != '>')
            bare += c;
        depth += c == '<' ? 1 : 0;
    }
    return bare.substr(bare.find_last_of(' ') + 1);
}

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string fileName(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

} // namespace

template <class Header, class ProgramHeader, class SectionHeader, class Symbol>
Symbols::Table Symbols::read(const std::vector<char>& file) {
    Table table;
    const auto header = structureAt<Header>(file, 0);
    if (!header)
        return table;
    for (unsigned i = 0; i < header->e_phnum; ++i) {
        const auto part = structureAt<ProgramHeader>(file, header->e_phoff + i * sizeof(ProgramHeader));
        if (part && part->p_type == PT_LOAD)
            table.segments.push_back({part->p_offset, part->p_filesz, part->p_vaddr});
    }
    const auto section = [&](std::uint64_t index) {
        return structureAt<SectionHeader>(file, header->e_shoff + index * sizeof(SectionHeader));
    };
    for (unsigned i = 0; i < header->e_shnum; ++i) {
        const auto symbols = section(i);
        if (!symbols || (symbols->sh_type != SHT_SYMTAB && symbols->sh_type != SHT_DYNSYM))
            continue;
        const auto names = section(symbols->sh_link);
        for (std::uint64_t at = 0; names && at + sizeof(Symbol) <= symbols->sh_size; at += sizeof(Symbol)) {
            const auto symbol = structureAt<Symbol>(file, symbols->sh_offset + at);
            if (!symbol)
                break;
            const unsigned type = symbol->st_info & 15U;
            if ((type == STT_FUNC || type == STT_GNU_IFUNC) && symbol->st_shndx != SHN_UNDEF)
                table.functions.try_emplace(
                    symbol->st_value,
                    Function{symbol->st_size, readable(stringAt(file, names->sh_offset + symbol->st_name))});
        }
    }
    // Stubs that lead to other files have no names of their own.
    const auto sectionNames = section(header->e_shstrndx);
    for (unsigned i = 0; sectionNames && i < header->e_shnum; ++i) {
        const auto part = section(i);
        if (!part || part->sh_type != SHT_PROGBITS)
            continue;
        const std::string name = stringAt(file, sectionNames->sh_offset + part->sh_name);
        if (name.starts_with(".plt"))
            table.functions.try_emplace(part->sh_addr, Function{part->sh_size, "calls of other files"});
    }
    return table;
}

Symbols::Table Symbols::readFile(const std::string& name) {
    std::ifstream input(name, std::ios::binary);
    const std::vector<char> file{std::istreambuf_iterator<char>(input), {}};
    if (file.size() < EI_NIDENT || std::memcmp(file.data(), ELFMAG, SELFMAG) != 0)
        return {};
    return file[EI_CLASS] == ELFCLASS64 ? read<Elf64_Ehdr, Elf64_Phdr, Elf64_Shdr, Elf64_Sym>(file)
                                        : read<Elf32_Ehdr, Elf32_Phdr, Elf32_Shdr, Elf32_Sym>(file);
}

const Symbols::Table& Symbols::table(const std::string& name) {
    const auto [entry, isNew] = m_tables.try_emplace(name);
    if (isNew)
        entry->second = readFile(name);
    return entry->second;
}

const Region* Symbols::regionOf(std::uint64_t address) const {
    const auto found = std::find_if(m_call.files.begin(), m_call.files.end(),
                                    [address](const Region& region) { return region.holds(address); });
    return found == m_call.files.end() ? nullptr : &*found;
}

std::uint64_t Symbols::inFile(const Region& region, std::uint64_t address) {
    const std::uint64_t offset = address - region.begin + region.offset;
    for (const Segment& segment : table(region.name).segments)
        if (offset >= segment.offset && offset - segment.offset < segment.size)
            return offset - segment.offset + segment.address;
    return offset;
}

Place Symbols::at(std::uint64_t address) {
    std::ostringstream number;
    number << std::hex << "0x";
    const Region* const region = regionOf(address);
    if (!region) {
        number << address;
        return {number.str(), 0, ""};
    }
    const std::uint64_t own = inFile(*region, address);
    const auto& functions = table(region->name).functions;
    auto next = functions.upper_bound(own);
    if (next != functions.begin()) {
        const auto& [begin, function] = *--next;
        if (own - begin < std::max<std::uint64_t>(function.size, 1))
            return {function.name, own - begin, fileName(region->name)};
    }
    number << own;
    return {fileName(region->name) + "+" + number.str(), 0, fileName(region->name)};
}

std::vector<std::string> Symbols::lines(const std::vector<std::uint64_t>& addresses) {
    std::vector<std::string> found(addresses.size());
    std::map<std::string, std::vector<std::size_t>> byFile;
    for (std::size_t i = 0; i < addresses.size(); ++i)
        if (const Region* const region = regionOf(addresses[i]);
            region && !table(region->name).segments.empty())
            byFile[region->name].push_back(i);
    for (const auto& [file, indices] : byFile) {
        std::ostringstream command;
        command << "addr2line -s -e " << quoted(file) << std::hex;
        for (const std::size_t i : indices)
            command << " 0x" << inFile(*regionOf(addresses[i]), addresses[i]);
        command << " 2>/dev/null";
        const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.str().c_str(), "r"), pclose);
        std::array<char, 1024> line{};
        for (const std::size_t i : indices) {
            if (!output || !std::fgets(line.data(), line.size(), output.get()))
                break;
            std::string text = line.data();
            text.erase(text.find_last_not_of(" \n") + 1);
            if (!text.starts_with("??") && !text.ends_with(":?") && !text.ends_with(":0"))
                found[i] = text;
        }
    }
    return found;
}
