/** \file
 * Empties the caches of what this process has in memory.
 */
#ifndef BXCACHEFLUSH_H
#define BXCACHEFLUSH_H

#include <cstddef>
#include <utility>
#include <vector>

/**
 * The process's memory as it is when one is made: program, libraries with their tables, heap, stack, mapped
 * blocks; of each the pages that are present. A call puts all of it out of every cache of the machine, line
 * by line: what is read or executed next comes from memory. The branch predictors, and what the system has of
 * its own, stay as they are.
 */
class bxCacheFlush {
  public:
    bxCacheFlush();

    /** Whether the processor can do it, and the memory is known. */
    bool possible() const { return m_lineSize > 0 && !m_pieces.empty(); }
    void operator()() const;
    /** Bytes that a call goes over. */
    std::size_t size() const;

  private:
    using Piece = std::pair<const char*, const char*>;

    std::vector<Piece> m_pieces;
    std::size_t m_lineSize = 0; /**< 0 without the instruction */
    bool m_weakly = false;      /**< there is the one that does not wait for each line */
};

#endif
