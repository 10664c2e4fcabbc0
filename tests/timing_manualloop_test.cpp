#include "timingsupport.h"

using testing::ElementsAre;

namespace {

TEST_F(Engine, ManualLoopTimesOnce) {
    tool.setMethodLoop(0);
    EXPECT_EQ(timeLoop({17}), OK);
    EXPECT_THAT(s_counts, ElementsAre(1));
    EXPECT_STREQ(tool.info.c_str(), "nLps=1");
    EXPECT_DOUBLE_EQ(tool.funcClocks, 17);
    EXPECT_DOUBLE_EQ(tool.actualAccuracy, 0);
}

struct CallCase {
    const char* what;
    std::vector<int> statuses;
    int calls;
    bxResult result;
};

TEST_F(Engine, CallLoopKeepsStatusesAndStopsAtErrors) {
    const CallCase cases[] = {
        {"clean", {}, 6, OK},
        {"a warning is kept", {0, 0, 2}, 6, FUNCWRN},
        {"an error of the untimed call", {-1}, 1, FUNCFAIL},
        {"an error in the loop ends it", {0, 0, -1}, 3, FUNCFAIL},
    };
    tool.setMethodLoop(5);
    for (const CallCase& c : cases) {
        SCOPED_TRACE(c.what);
        s_calls = s_inits = 0;
        s_statuses = c.statuses;
        EXPECT_EQ(tool.timing(nullptr, nullptr, call, init), c.result);
        EXPECT_EQ(s_calls, c.calls);
        EXPECT_EQ(s_inits, c.calls);
    }
}

} // namespace
