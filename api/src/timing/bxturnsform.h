/** \file
 * What the two sides of a comparison and the program that starts them have in common: a plan in shared
 * memory, which also takes the clocks, and a log. All widths are fixed, so that programs of 32 and of 64 bits
 * may be compared. Needs nothing else of the harness.
 */
#ifndef BXTURNSFORM_H
#define BXTURNSFORM_H

#include <compare>
#include <cstdint>

namespace bxTurnsForm {

/** Names the descriptors that a side inherits: "SIDE PLAN LOG TOKEN-IN TOKEN-OUT", decimal; SIDE is 0 or 1.
 */
inline constexpr char variable[] = "BENCHEX_SIDE";

inline constexpr std::uint32_t version = 0x42580002;

/** What a side is started for. */
enum Task : std::uint32_t {
    examine = 1,   /**< alone: say what combinations there are and what the first call makes of their data */
    takeTurns = 2, /**< with the other side: time the rows of the plan */
    count = 3      /**< alone: count the instructions of a call of each row */
};

/** Where a combination stands on a side: the running number of its test, and its own within the test. */
struct Place {
    std::int32_t test = 0;
    std::int32_t combination = 0;

    auto operator<=>(const Place&) const = default;
};

/** One row of a plan: a combination of both sides. */
struct Row {
    Place place[2];
    std::int32_t calls[2]; /**< in a stretch */
    std::int32_t turns;    /**< stretches of each side */
    std::int32_t taken[2]; /**< stretches that each side has timed */
    std::int32_t starter;  /**< side that had the first turn */
    std::int32_t first;    /**< index of the row's clocks: `turns` of side 0, then those of side 1 */
};

/** Head of a plan. Behind it stand the rows, then the clocks per call of all stretches as doubles. */
struct alignas(8) Plan {
    std::uint32_t version;
    std::uint32_t task;
    std::int32_t firstTest;  /**< tests before it are left out */
    std::int32_t heapOffset; /**< bytes to allocate before anything else */
    std::int32_t freshPages; /**< 1: code and constants are to lie in other memory than in the round before */
    std::int32_t core;       /**< to run on while taking turns; -1 for any */
    std::int32_t timeLimit;  /**< seconds for the calls of a combination, where the user set none */
    std::uint32_t rows;      /**< ascending in both places */
    std::uint32_t clocksAt;  /**< offset of the clocks, bytes */
    std::int32_t position[2]; /**< row that each side is at; -1 before the first, `rows` at its orderly end */
};

/** Kinds of log entries. Texts end with a 0. */
enum Kind : std::uint32_t {
    combinationBegins = 1, /**< function, parameters (texts); 64-bit digest of the data */
    block = 2,             /**< what it is (text), then its bytes, after a call */
    called = 3,            /**< status, 32 bits */
    cost = 4,              /**< clocks per call (double) */
    testEnded = 5,         /**< function, result, message (texts) */
    mappings = 6,          /**< text of the process's memory map */
    runEnded = 7,          /**< nothing */
    testBegins = 8,        /**< function (text) */
    counted = 9            /**< "instr=120 code=9d2c5680" (text) */
};

/** Head of a log entry. */
struct Entry {
    std::uint32_t kind;
    Place place;
    std::uint32_t bytes; /**< that follow */
};

} // namespace bxTurnsForm

#endif
