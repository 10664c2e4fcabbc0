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
    return bxSession::unlessExit(2, kind == condNone ? bxString(empty)
                                                     : texts[kind].before + argument + texts[kind].after);
}

using MakeCondition = RunCondition* (*)(bxString pattern);

template <class Condition>
RunCondition* makeCondition(bxString pattern) {
    return new Condition(pattern);
}

void addCondition(bxString argument, const MakeCondition (&make)[4], bxSession* session) {
    const int kind = getCondition(argument);
    if (kind != condNone)
        session->addCondition(make[kind](argument));
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
    static constexpr MakeCondition make[4] = {makeCondition<RunCondition_f>, makeCondition<RunCondition_fAnd>,
                                              makeCondition<RunCondition_fNot>,
                                              makeCondition<RunCondition_fEqual>};
    addCondition(argument, make, session);
}

bxString t_info(bxString argument) {
    static constexpr ConditionText texts[4] = {{"run tests containing ", ""},
                                               {"don't run tests which doesn't contain ", ""},
                                               {"don't run tests containing ", ""},
                                               {"run test equal to ", ""}};
    return conditionInfo(argument, texts, "ignored: empty test pattern");
}
void t_apply(bxString argument, bxSession* session) {
    static constexpr MakeCondition make[4] = {makeCondition<RunCondition_t>, makeCondition<RunCondition_tAnd>,
                                              makeCondition<RunCondition_tNot>,
                                              makeCondition<RunCondition_tEqual>};
    addCondition(argument, make, session);
}

bxString F_info(bxString argument) {
    return bxSession::unlessExit(1, bxString("start testing from ") + argument + " function");
}
void F_apply(bxString argument, bxSession*) {
    bxTestList::m_startFunc = argument;
}

bxString H_info(bxString argument) {
    return bxSession::unlessExit(2, isOnly(argument) ? "run tests for hot functions only"
                                                     : "add 'Interest' column to table file");
}
void H_apply(bxString argument, bxSession*) {
    bxTest::m_hot = isOnly(argument) ? 2 : 1;
}

bxString s_info(bxString argument) {
    return bxSession::unlessExit(2, isUnsorted(argument) ? "don't sort functions" : "sort functions");
}
void s_apply(bxString argument, bxSession* session) {
    session->setQuickMode(isUnsorted(argument));
}
