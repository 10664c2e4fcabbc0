// The code-book searches of interleaved vector quantisation.
#include "zorcore.h"

#include "suitetest.h"
#include "zorac.h"

namespace {

constexpr int divisions = 60;
constexpr int sourceLen = 1200;
constexpr int codeLen = 20;                      /**< elements of a code vector */
constexpr int codes = 32;                        /**< code vectors of a book */
constexpr int candidates = 32;                   /**< of a division */
constexpr int tableLen = codeLen * codes;        // 640
constexpr int indexLen = divisions * candidates; // 1920

/** One of the two books with what is known of the divisions in it. */
struct BookData {
    kvVector table, index, selected;
    ZorsVQCodeBook_32f* book = nullptr;

    bool create(SuiteTest& test) {
        if (!test.make(table, kv32f, tableLen) || !test.make(index, kv32s, indexLen) ||
            !test.make(selected, kv32s, divisions))
            return false;
        table.setRandom(-255, 255);
        return zorsVQCodeBookInitAlloc_32f(&book, table.p32f, codeLen, codes) == zorStsNoErr;
    }

    void free() {
        if (book)
            zorsVQCodeBookFree_32f(book);
        book = nullptr;
    }
};

kvVector s_source, s_weights, s_lengths, s_polarity, s_result;
BookData s_books[2];

int preliminarySelect(BookData& data) {
    return zorsVQPreliminarySelect_32f(s_source.p32f, s_weights.p32f, s_lengths.p32s, s_polarity.p32s,
                                       divisions, data.index.p32s, candidates, data.book);
}

int mainSelect() {
    return zorsVQMainSelect_32f(s_source.p32f, s_weights.p32f, s_lengths.p32s, divisions,
                                s_books[0].index.p32s, s_books[1].index.p32s, candidates,
                                s_books[0].selected.p32s, s_books[1].selected.p32s, s_books[0].book,
                                s_books[1].book);
}

/** The signal, its weights and divisions, and the first book; everything is created when the test starts. */
class CPreSelect_VQ_32f : public SuiteTest {
  public:
    using SuiteTest::SuiteTest;

    bool canStart() override { return createSignal() && s_books[0].create(*this); }

    bool canContinue() override { return firstIteration; }

    void flushStart() override {
        flushData();
        for (BookData& data : s_books)
            data.free();
    }

  private:
    bool createSignal() {
        if (!makeFirst(s_source, kv32f, sourceLen) || !make(s_weights, kv32f, sourceLen) ||
            !make(s_lengths, kv32s, divisions) || !make(s_polarity, kv32s, divisions))
            return false;
        s_source.setRandom(-255, 255);
        s_weights.setRandom(1, 11);
        s_lengths.setRandom(2, 19);
        s_polarity.setRandom(-255, 255);
        return true;
    }
};

/** Searches the first book for one code only. */
class CIndexSelect_VQ_32f : public CPreSelect_VQ_32f {
  public:
    using CPreSelect_VQ_32f::CPreSelect_VQ_32f;
};

/** Adds the second book and the candidates of both. */
class CMainSelect_VQ_32f : public CPreSelect_VQ_32f {
  public:
    using CPreSelect_VQ_32f::CPreSelect_VQ_32f;

    bool canStart() override {
        return CPreSelect_VQ_32f::canStart() && s_books[1].create(*this) &&
               preliminarySelect(s_books[0]) == zorStsNoErr && preliminarySelect(s_books[1]) == zorStsNoErr;
    }
};

/** Reconstructs what the searches have selected. */
class CVectorReconstruction_VQ_32f : public CMainSelect_VQ_32f {
  public:
    using CMainSelect_VQ_32f::CMainSelect_VQ_32f;

    bool canStart() override {
        return CMainSelect_VQ_32f::canStart() && mainSelect() == zorStsNoErr &&
               make(s_result, kv32f, sourceLen);
    }
};

int tcall_zorsVQPreliminarySelect_32f() {
    return preliminarySelect(s_books[0]);
}

int tcall_zorsVQMainSelect_32f() {
    return mainSelect();
}

int tcall_zorsVQIndexSelect_32f() {
    return zorsVQIndexSelect_32f(s_source.p32f, s_weights.p32f, s_lengths.p32s, s_polarity.p32s, divisions,
                                 s_books[0].selected.p32s, s_books[0].book);
}

int tcall_zorsVQReconstruction_32f() {
    return zorsVQReconstruction_32f(s_books[0].selected.p32s, s_books[1].selected.p32s, s_lengths.p32s,
                                    divisions, s_result.p32f, s_books[0].book, s_books[1].book);
}

KV_REG(CPreSelect_VQ_32f, zorsVQPreliminarySelect_32f)
[[maybe_unused]] const bool reg_zorsVQMainSelect_32f =
    kv::registerTest<CMainSelect_VQ_32f, "zorsVQMainSelect_32f", tcall_zorsVQMainSelect_32f>(
        __FILE__, "CMainSelect_VQ_32f");
KV_REG(CIndexSelect_VQ_32f, zorsVQIndexSelect_32f)
KV_REG(CVectorReconstruction_VQ_32f, zorsVQReconstruction_32f)

} // namespace
