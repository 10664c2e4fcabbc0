/** \file
 * Files of the program's setting InstructionsFile: what counted calls did, step by step.
 */
#ifndef EXPLAIN_STEPFILE_H
#define EXPLAIN_STEPFILE_H

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/** Nothing can be explained; the text says why. */
class ExplainError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Memory of a call: a part of a file, or a block of test data. */
struct Region {
    std::uint64_t begin, end;
    std::uint64_t offset; /**< in the file */
    std::string name;     /**< of the file, or what the data are */

    bool holds(std::uint64_t address) const { return address >= begin && address < end; }
};

/** One counted call. */
struct SteppedCall {
    std::string function;
    std::string parameters; /**< "Len=64 Type=2" */
    double operations = 0;  /**< floating-point operations that the test declares; 0 for none */
    std::string count;      /**< as in the comment column: "instr=120 code=9d2c5680" */
    double clocks = 0;      /**< of the core, of one call; 0 where it was not measured so */
    std::optional<std::pair<double, double>> interval; /**< of the clocks */
    double shared = 0;                  /**< share of the core that others had meanwhile, relative */
    bool full = false;                  /**< not all steps are here */
    std::uint64_t thread = 0;           /**< where the thread's own data are */
    std::vector<std::string> registers; /**< names, the instruction pointer the last */
    std::vector<Region> blocks, files;
    std::map<std::uint64_t, std::vector<std::uint8_t>>
        code; /**< bytes of the instructions, and some behind */
    long long steps = 0;
    std::string data; /**< the steps, see StepReader */

    /** The number behind "instr=" in the count; nothing where there is none. */
    std::optional<long long> instructions() const;
};

/** \throws ExplainError  for a file that is none of these, or is cut off */
std::vector<SteppedCall> readSteps(std::istream& input, const std::string& name);

/** Walks through the steps of a call. */
class StepReader {
  public:
    explicit StepReader(const SteppedCall& call) : m_call(call), m_values(call.registers.size()) {}
    /** Goes to the next step; false behind the last. */
    bool next();
    /** Of the instruction that is about to be executed. */
    std::uint64_t address() const { return m_values.back(); }
    /** A register in front of it. */
    std::uint64_t value(int index) const { return m_values[static_cast<std::size_t>(index)]; }

  private:
    const SteppedCall& m_call;
    std::size_t m_at = 0;
    std::vector<std::uint64_t> m_values;
};

#endif
