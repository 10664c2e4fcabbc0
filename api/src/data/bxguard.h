/** \file
 * Blocks that end at a page that must not be touched.
 */
#ifndef BXGUARD_H
#define BXGUARD_H

#include <cstddef>

/** A mapping of its own for one block. */
struct bxGuardedBlock {
    void* mapping = nullptr;
    std::size_t mapped = 0; /**< bytes, with the protected page */
    void* start = nullptr;  /**< of the block; null on failure */
};

/**
 * Maps a block of `size` bytes, filled with 0, that starts `misalign` bytes past a multiple of 16 and ends
 * less than 16 bytes before the protected page.
 */
bxGuardedBlock bxMapGuarded(int size, int misalign);
void bxUnmapGuarded(void* mapping, std::size_t mapped);

#endif
