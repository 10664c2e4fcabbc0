/** \file
 * Conditions that select the tests of a run by function name and test name.
 */
#ifndef BXCONDITIONS_H
#define BXCONDITIONS_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"

class bxTest;

/**
 * One -f or -t key. Additive conditions are alternatives: a test needs one of them.
 * The others restrict: a test needs every one of them.
 */
class RunCondition {
  public:
    RunCondition(bool additive, bxString pattern);
    virtual ~RunCondition() = default;
    RunCondition(const RunCondition&) = delete;
    RunCondition& operator=(const RunCondition&) = delete;

    virtual bool tobeRun(const bxTest* test) const = 0;
    bool isAdditive() const { return m_additive; }

  protected:
    bool m_additive;
    bxString m_pattern;
};

/** What of a test a condition looks at. */
enum class bxTestedName { function, test };
/** How the name and the pattern are compared; `contains` and `equals` conditions are additive. */
enum class bxNameMatch { contains, alsoContains, lacks, equals };

template <bxTestedName NAME, bxNameMatch MATCH>
class bxNameCondition : public RunCondition {
  public:
    explicit bxNameCondition(bxString pattern)
        : RunCondition(MATCH == bxNameMatch::contains || MATCH == bxNameMatch::equals, pattern) {}
    bool tobeRun(const bxTest* test) const override;
};

using RunCondition_f = bxNameCondition<bxTestedName::function, bxNameMatch::contains>;
using RunCondition_fAnd = bxNameCondition<bxTestedName::function, bxNameMatch::alsoContains>;
using RunCondition_fNot = bxNameCondition<bxTestedName::function, bxNameMatch::lacks>;
using RunCondition_fEqual = bxNameCondition<bxTestedName::function, bxNameMatch::equals>;
using RunCondition_t = bxNameCondition<bxTestedName::test, bxNameMatch::contains>;
using RunCondition_tAnd = bxNameCondition<bxTestedName::test, bxNameMatch::alsoContains>;
using RunCondition_tNot = bxNameCondition<bxTestedName::test, bxNameMatch::lacks>;
using RunCondition_tEqual = bxNameCondition<bxTestedName::test, bxNameMatch::equals>;

/** The conditions of a session; owns them. */
class bxConditions : public bxList<RunCondition*> {
  public:
    bxConditions() = default;
    ~bxConditions() override;
    bxConditions(const bxConditions&) = delete;
    bxConditions& operator=(const bxConditions&) = delete;

    /** Whether a test is selected: some additive condition holds (if there are any), and every other one. */
    bool tobeRun(const bxTest* test);
};

/** Kind of a -f or -t argument. */
enum bxConditionKind { condPlain = 0, condAnd = 1, condNot = 2, condEqual = 3, condNone = 4 };

/** The kind of a condition's argument, by its first character, which is removed; 4 when nothing remains. */
int getCondition(bxString& arg);

#endif
