/** \file
 * Work of known cost, against which the precise mode measures.
 */
#ifndef BXREFERENCE_H
#define BXREFERENCE_H

/**
 * Adds 64 times `blocks` times, each addition waiting for the one before.
 * \return counts of the time-stamp counter
 */
long long bxReferenceTicks(int blocks);

/**
 * The same number of additions, in several chains side by side: as many at once as the core can do.
 * \return counts of the time-stamp counter
 */
long long bxThroughputTicks(int blocks);

/**
 * Multiplies 64 times `blocks` times, each multiplication waiting for the one before. On nearly all
 * processors of this family one takes as long as three additions. \return counts of the time-stamp counter
 */
long long bxMultiplicationTicks(int blocks);

/** Additions or multiplications in a block. */
inline constexpr int bxReferenceBlock = 64;

#endif
