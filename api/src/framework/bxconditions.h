/** \file
 * Conditions that select the tests of a run by function name and test name.
 */
#ifndef BXCONDITIONS_H
#define BXCONDITIONS_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"

class bxTest;

/** What of a test a condition looks at. */
enum class bxTestedName { function, test };
/** How a name and a pattern are compared. */
enum class bxNameMatch { contains, alsoContains, lacks, equals };

/** What a -f or -t key says. */
struct bxNameRule {
    bxTestedName tested;
    bxNameMatch match;
    bxString pattern;

    bool holds(const bxTest& test) const;
    /** Additive rules are alternatives: a test needs one of them. The others restrict: it needs every one. */
    bool isAdditive() const { return match == bxNameMatch::contains || match == bxNameMatch::equals; }
};

/** A condition that a program may make up itself. */
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

/** The condition of a rule. */
class bxRuleCondition : public RunCondition {
  public:
    explicit bxRuleCondition(const bxNameRule& rule);
    bool tobeRun(const bxTest* test) const override { return m_rule.holds(*test); }

  private:
    bxNameRule m_rule;
};

// Each kind under a name of its own, for programs that build them one by one.
struct RunCondition_f : bxRuleCondition {
    explicit RunCondition_f(bxString pattern)
        : bxRuleCondition({bxTestedName::function, bxNameMatch::contains, pattern}) {}
};
struct RunCondition_fAnd : bxRuleCondition {
    explicit RunCondition_fAnd(bxString pattern)
        : bxRuleCondition({bxTestedName::function, bxNameMatch::alsoContains, pattern}) {}
};
struct RunCondition_fNot : bxRuleCondition {
    explicit RunCondition_fNot(bxString pattern)
        : bxRuleCondition({bxTestedName::function, bxNameMatch::lacks, pattern}) {}
};
struct RunCondition_fEqual : bxRuleCondition {
    explicit RunCondition_fEqual(bxString pattern)
        : bxRuleCondition({bxTestedName::function, bxNameMatch::equals, pattern}) {}
};
struct RunCondition_t : bxRuleCondition {
    explicit RunCondition_t(bxString pattern)
        : bxRuleCondition({bxTestedName::test, bxNameMatch::contains, pattern}) {}
};
struct RunCondition_tAnd : bxRuleCondition {
    explicit RunCondition_tAnd(bxString pattern)
        : bxRuleCondition({bxTestedName::test, bxNameMatch::alsoContains, pattern}) {}
};
struct RunCondition_tNot : bxRuleCondition {
    explicit RunCondition_tNot(bxString pattern)
        : bxRuleCondition({bxTestedName::test, bxNameMatch::lacks, pattern}) {}
};
struct RunCondition_tEqual : bxRuleCondition {
    explicit RunCondition_tEqual(bxString pattern)
        : bxRuleCondition({bxTestedName::test, bxNameMatch::equals, pattern}) {}
};

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
