/** \file
 * Vector quantisation.
 */
#ifndef ZORAC_VQ_H
#define ZORAC_VQ_H

#include "zortypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Vector quantisation in the manner of the transform-domain weighted interleave quantiser (ISO/IEC 14496-3,
 * TwinVQ): a signal is divided into sub-vectors, which lie one after another, and each is coded by the mean
 * of two code vectors, one of each of two books, with a polarity (sign) each. A code is the row of the book
 * for positive and the row plus the number of rows for negative polarity.
 */
typedef struct ZorsVQCodeBook_32f ZorsVQCodeBook_32f;

/**
 * Makes a code book of `rows` code vectors of `step` elements; sub-vectors use as many elements as they have.
 * \return zorStsNullPtrErr; zorStsSizeErr for step outside 1 to 64 or rows outside 1 to 1024;
 * zorStsMemAllocErr.
 */
ZOR_API ZorStatus zorsVQCodeBookInitAlloc_32f(ZorsVQCodeBook_32f** book, const Zor32f* table, int step,
                                              int rows);
/** \return zorStsNullPtrErr, zorStsContextErr. */
ZOR_API ZorStatus zorsVQCodeBookFree_32f(ZorsVQCodeBook_32f* book);

/*
 * Statuses of the four below: zorStsNullPtrErr, zorStsContextErr; zorStsSizeErr for fewer than 1 division or
 * candidate, more candidates than rows, or a sub-vector length outside 1 to the book's step; zorStsBadArgErr
 * for a code that the book does not have. Where a value, a weight or a code vector is infinite or no number,
 * a distance that is no number counts as infinite.
 */

/**
 * The numCandidates best codes of one book for each division by the weighted distance
 * sum over i of weight[i] (src[i] - sign code[i])^2, nearest first, equal ones in the order of their rows.
 * \param polarity  for each division: not 0 where the sign may be chosen, 0 where it is positive
 * \param index  numCandidates codes for each division
 */
ZOR_API ZorStatus zorsVQPreliminarySelect_32f(const Zor32f* src, const Zor32f* weight, const int* length,
                                              const int* polarity, int numDivisions, int* index,
                                              int numCandidates, const ZorsVQCodeBook_32f* book);

/**
 * The best pair of candidates for each division by the weighted distance to the mean of the two signed code
 * vectors; the first such pair in the order of the lists.
 */
ZOR_API ZorStatus zorsVQMainSelect_32f(const Zor32f* src, const Zor32f* weight, const int* length,
                                       int numDivisions, const int* candidates0, const int* candidates1,
                                       int numCandidates, int* index0, int* index1,
                                       const ZorsVQCodeBook_32f* book0, const ZorsVQCodeBook_32f* book1);

/** The best code of a single book for each division, by the distance of the preliminary selection. */
ZOR_API ZorStatus zorsVQIndexSelect_32f(const Zor32f* src, const Zor32f* weight, const int* length,
                                        const int* polarity, int numDivisions, int* index,
                                        const ZorsVQCodeBook_32f* book);

/** The mean of the two signed code vectors of each division. */
ZOR_API ZorStatus zorsVQReconstruction_32f(const int* index0, const int* index1, const int* length,
                                           int numDivisions, Zor32f* dst, const ZorsVQCodeBook_32f* book0,
                                           const ZorsVQCodeBook_32f* book1);

#ifdef __cplusplus
}
#endif

#endif
