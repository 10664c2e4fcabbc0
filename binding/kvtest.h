/** \file
 * The base of every test of a library function.
 */
#ifndef KVTEST_H
#define KVTEST_H

#include "framework/bxtest.h"
#include "kvfunc.h"
#include "kvlibrary.h"
#include "kvvector.h"
#include "zortypes.h"

/**
 * A `bxTest` bound to the library: the function's name is parsed, statuses become results, random data starts
 * from the same seed in every test, and the dump of test data knows vectors.
 */
class kvTest : public bxTest {
  public:
    using bxTest::bxTest;
    ~kvTest() override = default;

    bool tobeRun(bxConditions& conditions) override { return bxTest::tobeRun(conditions); }
    bxResult run() override;
    /** Order of the parsed function names. */
    int compareFunc(const bxTest* other) const override;
    /** Three cells: prefix and base name, type part, descriptor. */
    void funcToCstrm() override;
    /** Floating point counts where operations are counted and the name has a type of it. */
    bool isFloatFunction() override;
    int printAllMemoryBlocks(bxString title) override;
    bxString regInfo() override;
    /** A warning of the library that comes again in a measurement is counted instead of shown again. */
    bxResult runTiming() override;

    virtual void printFirstDebugLine(bxString title);
    virtual void printLastDebugLine(bxString title);
    virtual void printFirstBlockLine(int number, bxObject* owner, int size);
    virtual void printLastBlockLine(int number, bxObject* owner);
    virtual void printVectorBlock(kvVector* vector);
    virtual void printByteBlock(void* data, int size);

    /**
     * Reports the status of a call: nothing for 0, else a message with the library's text; raises the running
     * result.
     * \return OK, FUNCWRN (a warning) or FUNCFAIL (an error): a negative status is an error and a positive
     * one a warning, unless the program says something else of its library (`kvLibrary`).
     */
    static bxResult checkStatus(ZorStatus status, bxString funcName);
    /** The same under this test's function name. */
    bxResult checkStatus(ZorStatus status);

    using bxTest::regCacheParm;
    /** Registers a two-dimensional size; in cache mode a cache-size iterator stands in for it. */
    bxParameter* regCacheParm(bxIterator<ZoriSize>& size, bool (*check)(bxParameter*, int, int, bool));

    /** While true, warnings of the library are neither printed nor counted. */
    static bool m_checkErrorsOnly;

  protected:
    kvFunc m_func{name};               /**< the function under test */
    const kvFuncCells m_cells{m_func}; /**< its name in tables, parsed once */
    kvFailure m_failure = kvAsLibrary; /**< which statuses of this function are errors */
};

#endif
