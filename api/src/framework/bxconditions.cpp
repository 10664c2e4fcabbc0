#include "framework/bxconditions.h"

#include "framework/bxtest.h"

RunCondition::RunCondition(bool additive, bxString pattern) : m_additive(additive), m_pattern(pattern) {}

bool bxNameRule::holds(const bxTest& test) const {
    const bxString& name = tested == bxTestedName::function ? test.name : test.info.className;
    if (match == bxNameMatch::equals)
        return name == pattern;
    return (name.find(pattern, 0) >= 0) != (match == bxNameMatch::lacks);
}

bxRuleCondition::bxRuleCondition(const bxNameRule& rule)
    : RunCondition(rule.isAdditive(), rule.pattern), m_rule(rule) {}

bxConditions::~bxConditions() {
    for (RunCondition* condition : *this)
        delete condition;
}

bool bxConditions::tobeRun(const bxTest* test) {
    bool anyAdditive = false;
    bool admitted = false;
    for (const RunCondition* condition : *this) {
        if (!condition->isAdditive()) {
            if (!condition->tobeRun(test))
                return false;
            continue;
        }
        anyAdditive = true;
        admitted = admitted || condition->tobeRun(test);
    }
    return admitted || !anyAdditive;
}

int getCondition(bxString& arg) {
    struct Mark {
        char sign;
        bxConditionKind kind;
    };
    static constexpr Mark marks[] = {{'=', condEqual}, {'+', condAnd}, {'-', condNot}};

    if (arg.length() == 0)
        return condNone;
    for (const Mark& mark : marks)
        if (*arg.c_str() == mark.sign) {
            arg = arg.substr(1);
            return arg.length() == 0 ? condNone : mark.kind;
        }
    return condPlain;
}
