// Keys that select and order the tests.
#include "framework/bxconditions.h"
#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "session/bxkeys.h"
#include "session/bxsession.h"

namespace {
/** Report of a condition around its pattern. */
struct ConditionText {
    const char* before;
    const char* after;
};

/** `texts` has a row for each kind of condition. */
bxString conditionInfo(bxString argument, const ConditionText (&texts)[4], const char* empty) {
    const int kind = getCondition(argument);
    return bxSession::unlessExit(bxSession::exitHelp,
                                 kind == condNone ? bxString(empty)
                                                  : texts[kind].before + argument + texts[kind].after);
}

void addCondition(bxString argument, bxTestedName tested, bxSession* session) {
    static constexpr bxNameMatch matches[] = {bxNameMatch::contains, bxNameMatch::alsoContains,
                                              bxNameMatch::lacks, bxNameMatch::equals}; // by kind
    const int kind = getCondition(argument);
    if (kind != condNone)
        session->addCondition(new bxRuleCondition({tested, matches[kind], argument}));
}

bool isOnly(const bxString& argument) {
    return argument.length() > 0 && argument.c_str()[0] == 'O';
}
bool isUnsorted(const bxString& argument) {
    return argument == "-";
}
} // namespace

bxString f_info(bxString argument) {
    static constexpr ConditionText texts[4] = {{"test functions containing '", "'"},
                                               {"don't test functions without '", "' in the name"},
                                               {"don't test functions containing '", "'"},
                                               {"test function equal to '", "'"}};
    return conditionInfo(argument, texts, "ignored: empty function pattern");
}
void f_apply(bxString argument, bxSession* session) {
    addCondition(argument, bxTestedName::function, session);
}

bxString t_info(bxString argument) {
    static constexpr ConditionText texts[4] = {{"run tests containing ", ""},
                                               {"don't run tests which doesn't contain ", ""},
                                               {"don't run tests containing ", ""},
                                               {"run test equal to ", ""}};
    return conditionInfo(argument, texts, "ignored: empty test pattern");
}
void t_apply(bxString argument, bxSession* session) {
    addCondition(argument, bxTestedName::test, session);
}

bxString F_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 bxString("start testing from ") + argument + " function");
}
void F_apply(bxString argument, bxSession*) {
    bxTestList::m_startFunc = argument;
}

bxString H_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitHelp, isOnly(argument)
                                                          ? "run tests for hot functions only"
                                                          : "add 'Interest' column to table file");
}
void H_apply(bxString argument, bxSession*) {
    bxTest::m_hot = isOnly(argument) ? bxTest::hotOnly : bxTest::hotColumn;
}

bxString s_info(bxString argument) {
    return bxSession::unlessExit(bxSession::exitHelp,
                                 isUnsorted(argument) ? "don't sort functions" : "sort functions");
}
void s_apply(bxString argument, bxSession* session) {
    session->setQuickMode(isUnsorted(argument));
}
