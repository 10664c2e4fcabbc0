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

/** Additions in a block of either. */
inline constexpr int bxReferenceBlock = 64;

#endif
