/** \file
 * Runs that are interrupted, and the line that shows their progress.
 */
#include "framework/bxinterrupt.h"
#include "framework/bxprogress.h"
#include "frameworksupport.h"

#include <csignal>

namespace {

using FrameworkInterrupt = FrameworkFixture;

TEST_F(FrameworkInterrupt, TheRunStopsAfterTheCurrentMeasurement) {
    for (const int sig : {SIGINT, SIGTERM, SIGHUP}) {
        bxIterator<int> size(0, "Size", "");
        for (int value : {1, 2, 3})
            size.add(value);
        ScriptedTest first("zorsA");
        ScriptedTest second("zorsB");
        first.onCanStart = [&] { return first.regParm(size) != nullptr; };
        first.onTiming = [&] {
            if (size.value() == 2)
                raise(sig);
            return first.tool.timing(ScriptedTest::loop, nullptr, nullptr, nullptr);
        };
        bxTestList list;
        list.push_back(&first);
        list.push_back(&second);
        bxConditions all;
        Capture listing(outPerf);
        EXPECT_FALSE(list.runTests(all));
        EXPECT_TRUE(bxInterrupted());
        EXPECT_EQ(first.flushed, 2) << "the measurement of size 2 is complete, that of size 3 is not begun";
        EXPECT_EQ(first.result, OK);
        EXPECT_EQ(list.numTests, 1);
        EXPECT_NE(listing.text().find(std::string("-- Interrupted by ") + bxInterruptName() +
                                      ": the run stops here\n"),
                  std::string::npos);
        struct sigaction after {};
        sigaction(sig, nullptr, &after);
        EXPECT_EQ(after.sa_handler, SIG_DFL) << "the handler has gone with the run";
    }
}

TEST(InterruptDeathTest, ASecondCtrlCEndsTheProcess) {
    EXPECT_EXIT(
        {
            const bxInterruptScope interruptible;
            raise(SIGHUP);
            raise(SIGHUP); // a second hang-up does not
            raise(SIGINT);
        },
        testing::KilledBySignal(SIGINT), "");
}

TEST(Interrupt, IgnoredSignalsStayIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        const bxInterruptScope interruptible;
        raise(SIGHUP);
        EXPECT_FALSE(bxInterrupted());
    }
    std::signal(SIGHUP, SIG_DFL);
}

TEST(Progress, LineTellsWhatIsDoneAndWhatRemains) {
    EXPECT_EQ(bxProgress::line(0, 8, "zorsA", 0), "0 of 8 tests, zorsA, 00:00:00 elapsed");
    EXPECT_EQ(bxProgress::line(2, 8, "zorsB", 61),
              "2 of 8 tests, zorsB, 00:01:01 elapsed, about 00:03:03 remaining");
    EXPECT_EQ(bxProgress::line(9, 8, "zorsC", 90),
              "9 of 8 tests, zorsC, 00:01:30 elapsed, about 00:00:00 remaining")
        << "tests that were not selected at first do not count backwards";
}

} // namespace
