/** \file
 * Runs that are interrupted, and the line that shows their progress.
 */
#include "framework/bxinterrupt.h"
#include "framework/bxprogress.h"
#include "frameworksupport.h"

#include <csignal>
#include <unistd.h>

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
        TableCapture summary(g_ustrm);
        EXPECT_FALSE(list.runTests(all));
        EXPECT_NE(list.interruptedBy, nullptr);
        EXPECT_EQ(first.flushed, 2) << "the measurement of size 2 is complete, that of size 3 is not begun";
        EXPECT_EQ(first.result, OK);
        EXPECT_EQ(list.numTests, 1);
        EXPECT_EQ(list.numResults[OK], 0) << "a test that was cut short is no success";
        EXPECT_EQ(list.numInterrupted, 1);
        g_ostrm << bxReportEnd(list);
        g_ustrm << bxReportEnd(list);
        const std::string by = list.interruptedBy;
        for (const std::string& line :
             {"--Interrupted by " + by + ": 1 combinations of parameter values have not been measured\n",
              std::string("| -INTERRUPTED zorsA"), "-- Interrupted by " + by + ": the run stops here\n",
              std::string(".Interrupted     : 1")})
            EXPECT_NE(listing.text().find(line), std::string::npos) << line;
        EXPECT_NE(summary.text().find(",INTERRUPTED,"), std::string::npos);
        EXPECT_NE(summary.text().find(".Interrupted    ,1\n"), std::string::npos);
        struct sigaction after {};
        sigaction(sig, nullptr, &after);
        EXPECT_EQ(after.sa_handler, SIG_DFL) << "the handler has gone with the run";
    }
}

TEST_F(FrameworkInterrupt, AnInterruptionThatLosesNothingIsNotCounted) {
    Suite suite;
    suite.add("zorsA").onTiming = [] { return raise(SIGINT), OK; };
    bxConditions all;
    Capture listing(outErr);
    suite.list.runTests(all);
    EXPECT_EQ(suite.list.numResults[OK], 1);
    EXPECT_EQ(listing.text().find(".Interrupted"), std::string::npos);
}

TEST_F(FrameworkInterrupt, ASignalAtAQuestionEndsIt) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    bxDefault<int> size(0, "Size", "");
    bxDefault<int> order(0, "Order", "");
    Suite suite;
    ScriptedTest& asked = suite.add("zorsA");
    asked.onCanStart = [&] {
        g_istrm.setIStream(new i_stream(fdopen(ends[0], "r"))); // an answer never comes
        const pid_t self = getpid();
        if (fork() == 0) {
            usleep(100000);
            kill(self, SIGINT);
            raise(SIGKILL);
        }
        return asked.regParm(size) && asked.regParm(order);
    };
    bxConditions all;
    Capture listing(outErr);
    suite.list.runTests(all);
    g_istrm.setIStream(nullptr);
    close(ends[1]);
    EXPECT_EQ(suite.list.numInterrupted, 1);
    EXPECT_EQ(asked.flushed, 0) << "nothing is measured";
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
