/** \file
 * One side of a comparison of two processes that take turns on a core. A program that is not started by such
 * a comparison has none, and nothing here costs it anything.
 */
#ifndef BXTURNS_H
#define BXTURNS_H

#include "foundation/bxstring.h"
#include "timing/bxresult.h"
#include "timing/bxturnsform.h"
#include "timing/bxturnslog.h"

#include <functional>
#include <vector>

/**
 * The side that this process is. The run tells it where it is, test by test and combination by combination;
 * the side tells the run what to leave out. Examining, it logs every combination: a digest of the data, every
 * block after the first call, what a call costs. Taking turns, it times a stretch of calls whenever it has
 * the token, and hands the token on; the sides meet at every row of the plan, and pass over a row that the
 * other one does not come to.
 */
class bxTurns {
  public:
    /** Times calls: clocks per call, 0 or less when that failed. */
    using Sampler = std::function<double(int calls)>;

    /** Becomes a side if the environment says so. To be called at the start of `main`. */
    static void start();
    /** The side; null in an ordinary run. */
    static bxTurns* side();
    /** Puts the generator of test data back to its start; set by who has one beside std::rand. */
    static void (*m_reseed)();

    ~bxTurns();
    bxTurns(const bxTurns&) = delete;
    bxTurns& operator=(const bxTurns&) = delete;

    /** The next test is about to run; false when nothing of it is wanted. */
    bool beginTest(const bxString& function);
    /** Why the test could not go on. */
    void fault(const bxString& message) { m_fault = message; }
    void endTest(bxResult result);

    /** The test has its next combination, without data yet; whether it is wanted. Data start from the same
     * seed in each, whatever was left out before. */
    bool nextCombination();
    /** Whether the present combination is wanted. */
    bool wanted() const { return examining() || m_row >= 0; }
    /** The present combination has its data and will be called. */
    void beginCombination(const bxString& parameters);
    /** The function was called with these data. \return whether it should be called again: what it leaves in
     * its work memory shows in nothing but the results of the next call */
    bool calledOnce(int status);
    /** What a call of the present combination executes. */
    void countedAs(const bxString& text);
    /** Measures the present combination as the task demands; false when a call failed. */
    bool measure(const Sampler& sampler);

    bool examining() const { return m_plan->task == bxTurnsForm::examine; }
    bool counting() const { return m_plan->task == bxTurnsForm::count; }

  private:
    struct Descriptors {
        int side, plan, log, tokenIn, tokenOut;
    };

    explicit bxTurns(const Descriptors& descriptors);
    bool estimateCost(const Sampler& sampler) const;
    bool takeTurns(const Sampler& sampler);
    bool meet();
    void arriveAt(int row);
    void giveToken();
    void waitForToken();
    int otherPosition() const;
    const bxTurnsForm::Row* rowAtOrBehind(bxTurnsForm::Place place) const;

    Descriptors m_descriptors;
    bxTurnsLog m_log;
    bxTurnsForm::Plan* m_plan = nullptr;
    bxTurnsForm::Row* m_rows = nullptr;
    double* m_clocks = nullptr;
    std::size_t m_mapped = 0;
    std::vector<char> m_heapOffset;
    bxTurnsForm::Place m_place{-1, -1};
    int m_row = -1; /**< of the plan, where the present combination is one */
    bool m_token = false;
    bool m_pinned = false;
    bool m_alone = false; /**< the other side has ended */
    bxString m_function;
    bxString m_fault;
};

#endif
