/** \file
 * What a side says of its combinations before anything is timed.
 */
#ifndef PAIR_EXAMINATION_H
#define PAIR_EXAMINATION_H

#include "sides.h"
#include "timing/bxturnsform.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/** A block of test data after a call. */
struct Block {
    int call = 1;
    std::string_view what; /**< its owner's words: "Vector 32f len=16"; empty for bytes */
    std::span<const char> bytes;
};

/** A combination of parameter values of one function. */
struct Combination {
    bxTurnsForm::Place place;
    std::string function;
    std::string parameters;    /**< "Len=16 Order=3" */
    std::uint64_t digest = 0;  /**< of the data before the call */
    int calls = 0;             /**< that came back */
    std::optional<int> status; /**< of the first call, if it came back */
    std::vector<Block> blocks;
    double clocks = 0;   /**< of a call, about; 0 when it was not timed */
    std::string trouble; /**< why it cannot be timed */
};

/** A file of entries, mapped while it lives; empty where there is none. */
class MappedFile {
  public:
    explicit MappedFile(int descriptor);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    std::span<const char> bytes() const { return m_bytes; }

  private:
    std::span<const char> m_bytes;
};

/** Address ranges, from and to. */
using AddressRanges = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

/** All that a side said. The blocks lie in its logs. */
struct Examination {
    std::vector<Combination> combinations; /**< in the order of the run */
    std::vector<std::string> notes;        /**< tests that could not be run */
    int lastTest = -1;                     /**< that was begun */
    std::string lastFunction;              /**< its function */
    AddressRanges memory;                  /**< of the side's processes */
    std::vector<std::shared_ptr<MappedFile>> logs;
};

/** What a log holds, added to what is known; whether the run came to its end. */
bool readLog(std::span<const char> log, Examination& examination);

/**
 * Lets both sides go through all their combinations, side by side where there are cores. A side that dies on
 * the way is started again behind the test that ended it. \param timeLimit seconds for the calls of a
 * combination
 * \throws PairError  where a side does not come to a single combination
 */
std::vector<Examination> examineSides(const Sides& sides, int timeLimit);

/** A file without a name, which goes with its descriptor. \throws PairError */
int temporaryFile();

#endif
