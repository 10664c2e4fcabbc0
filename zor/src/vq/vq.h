/** \file
 * Vector quantisation: the code book and the searches of one division.
 */
#ifndef ZOR_VQ_VQ_H
#define ZOR_VQ_VQ_H

#include "codepath.h"

namespace zor {

/** Code vectors, by rows and by elements; the rows of `byElement` are padded with zeros to whole vectors. */
struct VqBook {
    static constexpr int maxStep = 64, maxRows = 1024;
    static constexpr int padding = 16;

    int step, rows;
    float* byRow;     /**< [row][step] */
    float* byElement; /**< [element][paddedRows()] */

    int paddedRows() const { return (rows + padding - 1) / padding * padding; }
};

/** One sub-vector with its weights. */
struct VqTarget {
    const float* values;
    const float* weights;
    int length;
};

struct VqPair {
    int code0, code1;
};

struct VqKernels {
    /** The `count` best codes, nearest first. */
    void (*nearest)(const VqBook& book, const VqTarget& target, bool signFree, int* codes, int count);
    /** The best pair of candidates. */
    VqPair (*bestPair)(const VqBook& book0, const VqBook& book1, const VqTarget& target,
                       const int* candidates0, const int* candidates1, int count);
    /** Half the sum of two signed code vectors. */
    void (*mean)(const VqBook& book0, const VqBook& book1, VqPair codes, float* dst, int length);
};

} // namespace zor

#endif
