// Resets of frequency-domain prediction.
#include "zorcore.h"

#include "suiteparms.h"
#include "suitetest.h"
#include "zorac.h"

#include <climits>

namespace {

ZorsFDPState_32f* s_state;
int s_groupNumber, s_stepLines;

bxIterator<int> s_length(0, "", ""), s_group(0, "", ""), s_step(0, "", "");

/** Names a list parameter whose default is given as text. */
void setTextParm(bxIterator<int>& parm, const char* name, const char* prompt, const char* text) {
    setParm(parm, name, prompt, {});
    parm.translate(text);
}

/** The reset of all predictors; the state is made anew for every combination. */
class CResetFDP_32f : public SuiteTest {
  public:
    using SuiteTest::SuiteTest;

    bool canStart() override {
        setTextParm(s_length, "Length", "number of predictors", "2029");
        regParm(s_length);
        return true;
    }

    bool canContinue() override {
        flushData(); // of a combination that was left out
        if (!SuiteTest::canContinue())
            return false;
        m_created =
            sound() && built(zorsFDPInitAlloc_32f(&s_state, s_length.value()), "zorsFDPInitAlloc_32f");
        return true;
    }
    /** A combination whose state could not be had is passed over. */
    bool initData() override { return m_created; }

    bool flushData() override {
        if (s_state)
            zorsFDPFree_32f(s_state);
        s_state = nullptr;
        return true;
    }

  protected:
    virtual bool sound() { return within({{s_length, 1, INT_MAX}}); }

  private:
    bool m_created = false;
};

/** The reset of the predictors that are `step` apart. */
class CResetFDPGroup_32f : public CResetFDP_32f {
  public:
    using CResetFDP_32f::CResetFDP_32f;

    bool canStart() override {
        CResetFDP_32f::canStart();
        setTextParm(s_group, "ResetGroupNumber", "number of the reset group, from 1", "1");
        setTextParm(s_step, "Step", "distance of the predictors of a group", "1");
        regParm(s_group);
        regParm(s_step);
        return true;
    }

    bool canContinue() override {
        if (!CResetFDP_32f::canContinue())
            return false;
        s_groupNumber = s_group.value();
        s_stepLines = s_step.value();
        return true;
    }

  protected:
    bool sound() override {
        const int len = s_length.value();
        return CResetFDP_32f::sound() && within({{s_group, 1, len}, {s_step, 1, len}});
    }
};

int tcall_zorsFDPReset_32f() {
    return zorsFDPReset_32f(s_state);
}

int tcall_zorsFDPResetGroup_32f() {
    return zorsFDPResetGroup_32f(s_groupNumber, s_stepLines, s_state);
}

KV_REG(CResetFDP_32f, zorsFDPReset_32f)
KV_REG(CResetFDPGroup_32f, zorsFDPResetGroup_32f)

} // namespace
