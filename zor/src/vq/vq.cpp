// The public functions of vector quantisation.
#include "vq/vq.h"

#include "common/arena.h"
#include "common/check.h"
#include "zorac/vq.h"

#include <algorithm>

using namespace zor;

struct ZorsVQCodeBook_32f {
    static constexpr StateTag expectedTag = stateTag('V', 'Q', 'C', 'B');
    StateTag tag;
    VqBook book;

    static ZorsVQCodeBook_32f* place(Arena& arena, const float* table, int step, int rows) {
        auto* memory = arena.take<ZorsVQCodeBook_32f>(1);
        VqBook book{step, rows, nullptr, nullptr};
        book.byRow = arena.take<float>(static_cast<std::size_t>(step * rows));
        book.byElement = arena.take<float>(static_cast<std::size_t>(step * book.paddedRows()));
        if (arena.measuring())
            return nullptr;
        std::copy_n(table, step * rows, book.byRow);
        for (int i = 0; i < step; ++i)
            for (int row = 0; row < book.paddedRows(); ++row)
                book.byElement[i * book.paddedRows() + row] = row < rows ? table[row * step + i] : 0;
        return new (memory) ZorsVQCodeBook_32f{expectedTag, book};
    }
};

namespace {

bool areLengths(const int* length, int numDivisions, int step) {
    return std::all_of(length, length + numDivisions, [=](int each) { return each >= 1 && each <= step; });
}

bool areCodes(const int* codes, int count, const ZorsVQCodeBook_32f* book) {
    return std::all_of(codes, codes + count,
                       [=](int code) { return code >= 0 && code < 2 * book->book.rows; });
}

/** Divisions over one or two books; null pointers have been looked for. */
template <class... Books>
ZorStatus checkDivisions(const int* length, int numDivisions, const Books*... books) {
    for (const ZorStatus status : {checkState(books)...})
        if (status)
            return status;
    if (numDivisions < 1)
        return zorStsSizeErr;
    return areLengths(length, numDivisions, std::min({books->book.step...})) ? zorStsNoErr : zorStsSizeErr;
}

/** Calls run(division, offset of its sub-vector). */
template <class Run>
void forDivisions(const int* length, int numDivisions, Run run) {
    for (int division = 0, offset = 0; division < numDivisions; offset += length[division++])
        run(division, offset);
}

ZorStatus select(const Zor32f* src, const Zor32f* weight, const int* length, const int* polarity,
                 int numDivisions, int* index, int numCandidates, const ZorsVQCodeBook_32f* book) {
    if (anyNull(src, weight, length, polarity, index, book))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkDivisions(length, numDivisions, book))
        return status;
    if (numCandidates < 1 || numCandidates > book->book.rows)
        return zorStsSizeErr;
    const auto nearest = kernels<VqKernels>().nearest;
    forDivisions(length, numDivisions, [&](int division, int offset) {
        const VqTarget target{src + offset, weight + offset, length[division]};
        nearest(book->book, target, polarity[division] != 0, index + division * numCandidates, numCandidates);
    });
    return zorStsNoErr;
}

} // namespace

extern "C" {

ZorStatus zorsVQCodeBookInitAlloc_32f(ZorsVQCodeBook_32f** book, const Zor32f* table, int step, int rows) {
    if (anyNull(book, table))
        return zorStsNullPtrErr;
    if (step < 1 || step > VqBook::maxStep || rows < 1 || rows > VqBook::maxRows)
        return zorStsSizeErr;
    *book = allocateState<ZorsVQCodeBook_32f>(table, step, rows);
    return *book ? zorStsNoErr : zorStsMemAllocErr;
}

ZorStatus zorsVQCodeBookFree_32f(ZorsVQCodeBook_32f* book) {
    return freeState(book);
}

ZorStatus zorsVQPreliminarySelect_32f(const Zor32f* src, const Zor32f* weight, const int* length,
                                      const int* polarity, int numDivisions, int* index, int numCandidates,
                                      const ZorsVQCodeBook_32f* book) {
    return select(src, weight, length, polarity, numDivisions, index, numCandidates, book);
}

ZorStatus zorsVQMainSelect_32f(const Zor32f* src, const Zor32f* weight, const int* length, int numDivisions,
                               const int* candidates0, const int* candidates1, int numCandidates, int* index0,
                               int* index1, const ZorsVQCodeBook_32f* book0,
                               const ZorsVQCodeBook_32f* book1) {
    if (anyNull(src, weight, length, candidates0, candidates1, index0, index1, book0, book1))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkDivisions(length, numDivisions, book0, book1))
        return status;
    if (numCandidates < 1 || numCandidates > std::min(book0->book.rows, book1->book.rows))
        return zorStsSizeErr;
    if (!areCodes(candidates0, numDivisions * numCandidates, book0) ||
        !areCodes(candidates1, numDivisions * numCandidates, book1))
        return zorStsBadArgErr;
    const auto bestPair = kernels<VqKernels>().bestPair;
    forDivisions(length, numDivisions, [&](int division, int offset) {
        const VqTarget target{src + offset, weight + offset, length[division]};
        const int at = division * numCandidates;
        const VqPair best =
            bestPair(book0->book, book1->book, target, candidates0 + at, candidates1 + at, numCandidates);
        index0[division] = best.code0;
        index1[division] = best.code1;
    });
    return zorStsNoErr;
}

ZorStatus zorsVQIndexSelect_32f(const Zor32f* src, const Zor32f* weight, const int* length,
                                const int* polarity, int numDivisions, int* index,
                                const ZorsVQCodeBook_32f* book) {
    return select(src, weight, length, polarity, numDivisions, index, 1, book);
}

ZorStatus zorsVQReconstruction_32f(const int* index0, const int* index1, const int* length, int numDivisions,
                                   Zor32f* dst, const ZorsVQCodeBook_32f* book0,
                                   const ZorsVQCodeBook_32f* book1) {
    if (anyNull(index0, index1, length, dst, book0, book1))
        return zorStsNullPtrErr;
    if (const ZorStatus status = checkDivisions(length, numDivisions, book0, book1))
        return status;
    if (!areCodes(index0, numDivisions, book0) || !areCodes(index1, numDivisions, book1))
        return zorStsBadArgErr;
    const auto mean = kernels<VqKernels>().mean;
    forDivisions(length, numDivisions, [&](int division, int offset) {
        mean(book0->book, book1->book, {index0[division], index1[division]}, dst + offset, length[division]);
    });
    return zorStsNoErr;
}
}
