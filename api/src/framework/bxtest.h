/** \file
 * The base class of every test: one tested function with its parameters, data and timing functions.
 */
#ifndef BXTEST_H
#define BXTEST_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"
#include "framework/bxtestinfo.h"
#include "output/bxlevels.h"
#include "parameters/bxcacheiterator.h"
#include "parameters/bxiterator.h"
#include "parameters/bxparameter.h"
#include "timing/bxresult.h"
#include "timing/bxtool.h"

#include <ctime>

class bxConditions;
class bxObject;

/** What a test is left with when a fault jumps out of a combination. */
struct bxCombination {
    bool dataLive = false;  /**< data of the combination exist */
    long long dataMark = 0; /**< of the moment before its data */
};

/**
 * One test. `run` is its whole life in a session: it announces the test, lets it register its parameters,
 * and for every combination of their values builds the data, times the function, checks the floating-point
 * state, writes the figures and frees the data. A fault or an exception ends the test, never the session.
 */
class bxTest {
  public:
    /** The name is that of the tested function; path and text are where and how the test was registered. */
    bxTest(bxFuncTool toolFunc, bxString testName, bxString path, bxString text);
    bxTest(bxFuncLoop loopFunc, bxFuncStat statFunc, bxString testName, bxString path, bxString text);
    bxTest(bxFuncCall callFunc, bxFuncInit init, bxFuncLoop loopFunc, bxFuncStat statFunc, bxString testName,
           bxString path, bxString text);
    bxTest(const bxTest&) = delete;
    bxTest& operator=(const bxTest&) = delete;

    // ---- What a derived test may replace. The order is part of the interface. ----

    virtual ~bxTest();
    /** Whether the test is selected by the conditions and, in hot mode, by the hot list. */
    virtual bool tobeRun(bxConditions& conditions);
    /** The whole test; returns UNDEFINED with `result` OK when it stopped at its ini section. */
    virtual bxResult run();
    /** Order of tests: negative, 0, positive, by function name. */
    virtual int compareFunc(const bxTest* other) const;
    /** Holds back a second table row when every deprecatable parameter has a deprecated value. */
    virtual void putTableResult_Deprecated(bxResult r);
    /** Registers the parameters in `parms`; false when the test cannot run. */
    virtual bool canStart();
    /** Undoes `canStart`. */
    virtual void flushStart();
    /** Produces the next combination of parameter values; the last registered varies fastest. */
    virtual bool canContinue();
    /** Builds the data of one combination; false passes the combination over. */
    virtual bool initData();
    /** Frees the data of one combination. */
    virtual bool flushData();
    virtual bxResult runTiming();
    /** Floating-point operations per call; not positive: not counted. */
    virtual double getFlops();
    /** Units of work per call. */
    virtual double getDivisor();
    /** Name of the unit of work. */
    virtual bxString getUnit();
    /** Writes the function columns of a table row. */
    virtual void funcToCstrm();
    virtual void parmsFromIstrm();
    virtual void parmsToOstrm();
    virtual void parmsToCstrm();
    virtual void parmsNameToCstrm();
    /** Writes the cells of the result columns. */
    virtual void resultToCstrm(bxResult r);
    /** Writes what all combinations have in common. */
    virtual void constToOstrm();
    virtual void beginTest();
    virtual void endTest();
    /** How the figure was obtained, for the comment column. */
    virtual bxString getComment();
    virtual bool isFloatFunction();
    virtual bool isHotLine();
    virtual void initSettings();
    /** Dumps the test data; returns the number of blocks printed. */
    virtual int printAllMemoryBlocks(bxString label);
    /** A figure with about three significant digits; empty when it is not positive. */
    virtual bxString formatClocks(double x);
    /** Which functions are registered, and which one measures. */
    virtual bxString regInfo();
    virtual void putTableParms();
    virtual void putTableResult(bxResult r);
    virtual void putTextParms();
    virtual void putTextParms(MessageLevel level);
    /** Measures every combination. */
    virtual void loopData();
    /** Writes the result of one combination to the listing and the table. */
    virtual void outputResult(bxResult r);
    virtual void outputConst();
    virtual void outputRegInfo();
    virtual void putTextResult(bxResult r);
    /** Lets the test register its parameters, in silence and without measuring. */
    virtual void startAndStop();

    // ---- Operations that the framework and derived tests share ----

    /** Makes the section the current one of the parameter input; false when -P leaves the test out. */
    bool setIniSection(bxString section);

    /** Appends a parameter to `parms`; returns it. The parameter stays the caller's. */
    bxParameter* regParm(bxParameter& parm);
    /**
     * Registers the parameter that sets the data size: in cache mode through a cache iterator, which
     * scales it until the data of `owner` (null: all data) fit the mode, with `check` or by powers of two.
     * Returns the registered parameter.
     */
    bxParameter* regCacheParm(bxIterator<int>& size, bxObject* owner = nullptr,
                              bxCacheSetFunc check = nullptr);

    /** Allocates test data where the placement of the run has it (bxPlacement::allocate). */
    static void* allocate(int size, int align, void* owner = nullptr);
    static void deallocate(void* block);

    /** Marks the parameters whose values are deprecated; whether all that can be are, and one is. */
    bool setDeprecatedFlag(bool on);

    /** Keeps a copy of all owned test data; restores the data from it. The number of blocks copied. */
    static int reserveAllVectors();
    static int resetAllVectors();

    /** Sets the floating-point defaults and forgets what was raised. */
    static void initCtrlStatus();
    static void clearCtrlStatus();
    /** Whether the x87 or the SSE status collected holds a flag that counts as bad. */
    static bool badCtrlStatus(bool& bad87, bool& badSSX);
    static void printCtrlStatus(bool bad87, bool badSSX);
    /** Reports bad status flags and what else the function changed, and forgets it: BADSTSWRN, or UNDEFINED.
     */
    bxResult checkCtrlStatus();

    /** MFlops (true) or clocks per unit of work (false) of the last measurement. */
    double performance(bool flops);
    bxString perfString(bool flops);
    /** Microseconds per call of the engine's figure. */
    static bxString usecString(bxTool& engine);
    /** Sets a figure that the test computed itself. */
    void setTimingResult(double clocks, bxString comment);
    /** A text filled with blanks to |w| characters: in front (w > 0) or behind (w < 0). */
    static bxString sFormat(bxString s, int w);
    static bxString sFormat(double x, int w);
    static bxString sFormat(int x, int w);
    static bxString sFormat(long long x, int w);
    /** The result line of the listing. */
    bxString testResultString();
    void putTextError(bxResult r);
    /** Writes the row of a combination that failed: its parameters and, as the comment, the result's name. */
    void putTableFailure(bxResult r);
    /** Writes the names of the parameters, where the session asks for them. */
    void putTableName();
    void putTableNameLine();

    /** Whether an interruption left combinations of a test that is sound so far. */
    bool interrupted() const { return m_interrupted && !bxIsFailure(result); }
    /** Combinations that an interruption left, counted up to `maxCounted`. */
    long long notMeasured() const { return m_notMeasured; }
    static constexpr long long maxCounted = 1000000;

    /** Values of `m_hot`. */
    enum Hot { hotOff, hotColumn, hotOnly };

    // ---- State ----

    bool deprecated = false;     /**< the row being written is that of deprecated values */
    time_t startTime;            /**< start of the last run */
    time_t endTime;              /**< end of the last run */
    bxString name;               /**< tested function */
    bxString fileName;           /**< file in which the test was registered */
    bxTestInfo info;             /**< registration text */
    bxTool tool;                 /**< own timing engine, a copy of the session's */
    bxResult result = UNDEFINED; /**< of the last run; OK while it runs */
    bxFuncLoop funcLoop = nullptr;
    bxFuncStat funcStat = nullptr;
    bxFuncCall funcCall = nullptr;
    bxFuncInit initFunc = nullptr;
    bxFuncTool funcTool = nullptr;
    bool firstIteration = true;           /**< no combination has been produced yet */
    bool bad87Status = false;             /**< some measurement left bad x87 status flags */
    bool badSSXStatus = false;            /**< some measurement left bad SSE status flags */
    bxList<bxParameter*> parms;           /**< registered parameters, not owned */
    bxCacheIterator* cacheIter = nullptr; /**< stands in for the size parameter in cache mode; owned */
    bool cacheRetry = false;              /**< the cache iterator refused the size of the combination */

    // Views of the present run and of the placement of data, under the names that test units use.
    static bxResult& m_currentResult;
    static int& m_numParmsColm;
    static int& m_numResultColm;
    static int& m_hot;
    static bool& m_pressing;
    static bool& m_cache;
    /** Blocks allocated for the current combination. */
    static int& m_vectorNum;
    /** Mutual offset of the next block, bytes. */
    static int& m_vectorShift;

  private:
    bxTest(bxString testName, bxString path, bxString text);

    friend class bxAftermath;
    friend class bxTestRun;
    friend class bxTestLoop;

    bool repeatWithNewSize();

    /** Raises the running result. */
    static void raiseResult(bxResult r);
    /** Writes an error and raises the running result. */
    static void reportError(const bxString& message, bxResult r);

    bxCombination m_combination; /**< outlives a fault */
    bool m_interrupted = false;  /**< the run stopped before the last combination */
    long long m_notMeasured = 0; /**< combinations that an interruption left */
};

#endif
