/** \file
 * Names of code.
 */
#ifndef EXPLAIN_SYMBOLS_H
#define EXPLAIN_SYMBOLS_H

#include "stepfile.h"

#include <map>
#include <string>
#include <vector>

/** Where an address lies. */
struct Place {
    std::string function;     /**< "name", or "libzors.so+0x1200" where the file has no name for it */
    std::uint64_t offset = 0; /**< in the function */
    std::string file;         /**< without its directory */
};

/** The functions of the files that a call ran through, from their symbol tables. */
class Symbols {
  public:
    explicit Symbols(const SteppedCall& call) : m_call(call) {}

    Place at(std::uint64_t address);
    /**
     * Source lines of addresses, "fir.cpp:31"; empty where there are none, as without debug information or
     * the program addr2line.
     */
    std::vector<std::string> lines(const std::vector<std::uint64_t>& addresses);

  private:
    struct Function {
        std::uint64_t size;
        std::string name;
    };
    struct Segment {
        std::uint64_t offset, size, address;
    };
    /** Of a file, by its own addresses. */
    struct Table {
        std::map<std::uint64_t, Function> functions;
        std::vector<Segment> segments;
    };

    template <class Header, class ProgramHeader, class SectionHeader, class Symbol>
    static Table read(const std::vector<char>& file);
    static Table readFile(const std::string& name);
    const Table& table(const std::string& name);
    const Region* regionOf(std::uint64_t address) const;
    /** In the addresses of the file itself. */
    std::uint64_t inFile(const Region& region, std::uint64_t address);

    const SteppedCall& m_call;
    std::map<std::string, Table> m_tables;
};

#endif
