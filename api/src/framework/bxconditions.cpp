#include "framework/bxconditions.h"

#include "framework/bxtest.h"

RunCondition::RunCondition(bool additive, bxString pattern) : m_additive(additive), m_pattern(pattern) {}

template <bxTestedName NAME, bxNameMatch MATCH>
bool bxNameCondition<NAME, MATCH>::tobeRun(const bxTest* test) const {
    const bxString& tested = NAME == bxTestedName::function ? test->name : test->info.className;
    if constexpr (MATCH == bxNameMatch::equals)
        return tested == m_pattern;
    else
        return (tested.find(m_pattern, 0) >= 0) != (MATCH == bxNameMatch::lacks);
}

template class bxNameCondition<bxTestedName::function, bxNameMatch::contains>;
template class bxNameCondition<bxTestedName::function, bxNameMatch::alsoContains>;
template class bxNameCondition<bxTestedName::function, bxNameMatch::lacks>;
template class bxNameCondition<bxTestedName::function, bxNameMatch::equals>;
template class bxNameCondition<bxTestedName::test, bxNameMatch::contains>;
template class bxNameCondition<bxTestedName::test, bxNameMatch::alsoContains>;
template class bxNameCondition<bxTestedName::test, bxNameMatch::lacks>;
template class bxNameCondition<bxTestedName::test, bxNameMatch::equals>;

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
