/** \file
 * The allocator of test data: blocks at a chosen distance from a cache line, and the table of all live
 * blocks. Which distance a test's block gets is said in bxplacement.h.
 */
#ifndef BXALLOC_H
#define BXALLOC_H

#include "data/bxobject.h"

/** \name Base blocks
 * @{ */
/** A multiple of 64, with at least `size` bytes behind it and room for bookkeeping before it; null on
 * failure. */
void* bx_malloc(int size);
/** A block `offset` bytes into a fresh base block `raw` and `misalign` (modulo 64) bytes past a multiple
 * of 64. */
void* bx_malloc(void*& raw, int size, int misalign, int offset);
void bx_free(void* raw);
/** @} */

/** \name Blocks of the table
 * An owner is a bxObject (or null, or one of the two sentinels) as `void*`. Lookups take constant time.
 * @{ */
/** Null, after an ERR message, when there is no memory or the block cannot stand there. */
void* bxMalloc(int size, int misalign, int offset, void* owner);
/** The same without an owner; the block is also stored into `ptr`. */
void* bxMalloc(void*& ptr, int size, int misalign, int offset);
/** Unknown and null pointers free nothing. */
void bxFree(void* ptr);
/** Whether a block is just being made or freed: a moment that must not be left by a jump. */
bool bxAllocatorBusy();
/** After a jump out of a moment like that (a fault in a broken heap). */
void bxAllocatorLeft();
/** Looks a block up; either output may be null. */
bool bxMallocInfo(void* ptr, int* size, void** owner);
/** Walks the blocks in the order of their allocation; null at the end. No block may be freed during a walk.
 */
void* bxMallocFirst(int* size, void** owner);
void* bxMallocNext(int* size, void** owner);
/** Discards the table at the end of the program; the blocks are left to the process's exit. */
void bxFreeAll();
/** A mark of this moment for bxFreeSince. */
long long bxMallocMark();
/** Frees all blocks that were allocated after the mark, in the order of their allocation; returns their
 * number. */
int bxFreeSince(long long mark);
/** @} */

/** Summed size of all live blocks in bytes. */
long long bxAllocatedSize();
/** Lets every owner keep a copy of its data; returns how many did. */
int bxReserveAllVectors();
/** Lets every owner restore its data from the copy; returns how many did. */
int bxResetAllVectors();

/** Writes the message that `size` bytes cannot be had, and returns false. */
bool memError(int size);
/** Writes the message that no block, of whatever memory, can hold this, and returns false. */
bool bxDataError(const bxString& what);

#endif
