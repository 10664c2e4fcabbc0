// The common dialogue: defaults, -d settings, console answers, limits, and the boxes.
#include "data/bxplacement.h"
#include "framework/bxregister.h"
#include "parameters/bxistream.h"
#include "parameters/bxiterator.h"
#include "parameters/bxparmlist.h"
#include "session/bxdialogue.h"
#include "session/bxsession.h"
#include "testsupport.h"
#include "timing/bxexception.h"
#include "timing/bxtool.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

/** The questions of a session, open to a test. */
struct Session : bxSession {
    explicit Session(int ask) { addAskMode(ask); }
    using bxSession::readDataOffset;
    using bxSession::readTestParameters;
    using bxSession::readTimingMethod;
};

/** Puts the engine, the allocator and the input back to their defaults after each test. */
class Dialogue : public testing::Test {
  protected:
    ~Dialogue() override {
        g_istrm.dataList().removeAll();
        g_istrm.setIStream(nullptr);
        g_tool = bxTool();
        bxSetAlignByByte(true);
        bxSetVectorAlign(0);
        bxSetAlignSrc(true);
        bxSetVectorShift(512);
        initTimingMethod = nullptr;
        g_pParmList = nullptr;
        std::filesystem::remove(m_answers);
    }

    static void set(std::initializer_list<const char*> settings) {
        g_istrm.dataList().removeAll();
        for (const char* setting : settings)
            g_istrm.dataList().set(setting);
    }
    /** Lets standard input give these lines. */
    void type(const char* lines) {
        m_answers = std::filesystem::temp_directory_path() / ("bxdialogue" + std::to_string(getpid()));
        std::ofstream(m_answers) << lines;
        ASSERT_NE(std::freopen(m_answers.c_str(), "r", stdin), nullptr);
    }
    /** The timing settings as the engine holds them after the questions. */
    static std::string timing(Session&& session) {
        session.readTimingMethod();
        bxString text;
        text << g_tool.method << " loops " << g_tool.manualLoops << " stat " << g_tool.statMinCalls << "/"
             << g_tool.statMaxClocks << " best " << g_tool.bestStartLoops << "/" << g_tool.bestMaxLoops
             << " accuracy " << g_tool.accuracy;
        return text.c_str();
    }

  private:
    std::filesystem::path m_answers;
};

TEST_F(Dialogue, BoxesAre79CharactersWide) {
    const auto spaces = [](std::size_t n) { return std::string(n, ' '); };
    const std::string edge = " " + std::string(78, '*') + "\n";
    const struct {
        std::size_t length, before, after;
    } rows[] = {{0, 38, 38}, {10, 33, 33}, {11, 32, 33}, {76, 0, 0}, {75, 0, 1}, {78, 0, 0}, {100, 0, 0}};
    for (const auto& row : rows) {
        const std::string title(row.length, 't');
        EXPECT_EQ(bxSession::getEnterTitle(title.c_str()).c_str(),
                  edge + " *" + spaces(row.before) + title + spaces(row.after) + "*\n" + edge);
    }
}

TEST_F(Dialogue, TimingFromSettingsWithoutAQuestion) {
    const struct {
        std::initializer_list<const char*> settings;
        const char* timing;
    } rows[] = {
        {{}, "0 loops 10 stat 12/10000 best 1/2048 accuracy 0.05"},
        {{"Accuracy=0"}, "0 loops 10 stat 12/10000 best 1/2048 accuracy 500"},
        {{"Accuracy=1"}, "0 loops 10 stat 12/10000 best 1/2048 accuracy 0.01"},
        {{"Accuracy=50"}, "0 loops 10 stat 12/10000 best 1/2048 accuracy 0.5"},
        {{"Accuracy=51"}, "0 loops 10 stat 12/10000 best 1/2048 accuracy 500"},
        {{"Method=m", "NumLoops=0", "Accuracy=7"}, "1 loops 1 stat 12/10000 best 1/2048 accuracy 0.05"},
        {{"Method=stat", "Accuracy=x"}, "2 loops 10 stat 3/10000 best 1/2048 accuracy 0.05"},
        {{"Method=stat", "NumCalls=5", "TotalCpuClocks=-1"},
         "2 loops 10 stat 5/-1 best 1/2048 accuracy 0.05"},
        {{"Method=Iter", "StartNumLoops=4", "StopNumLoops=10"},
         "3 loops 10 stat 12/10000 best 4/32 accuracy 0.05"},
        {{"Method=", "Accuracy=", "NumLoops=7"}, "0 loops 10 stat 12/10000 best 1/2048 accuracy 0.05"},
        {{"Method=Iter", "Accuracy=10"}, "3 loops 10 stat 12/10000 best 1/2048 accuracy 0.1"},
    };
    for (const auto& row : rows) {
        g_tool = bxTool();
        set(row.settings);
        Capture listing(outPerf);
        EXPECT_EQ(timing(Session(0)), row.timing);
        EXPECT_THAT(listing.text(), Not(HasSubstr("*"))) << "no box";
    }
}

TEST_F(Dialogue, RegisteredSetupGivesTheDefaults) {
    const struct {
        void (*setup)(bxTool&);
        const char* timing;
    } rows[] = {
        {[](bxTool& t) { t.setMethodLoop(77); }, "1 loops 77 stat 12/10000 best 1/2048 accuracy 0.05"},
        {[](bxTool& t) { t.setMethodStat(8, 5000); }, "2 loops 10 stat 8/5000 best 1/2048 accuracy 0.05"},
        {[](bxTool& t) { t.setMethodBest(2, 64, 9); }, "3 loops 10 stat 12/10000 best 2/64 accuracy 0.05"},
    };
    Capture listing(outErr);
    for (const auto& row : rows) {
        g_tool = bxTool();
        initTimingMethod = row.setup;
        EXPECT_EQ(timing(Session(0)), row.timing);
    }
    EXPECT_EQ(g_tool.bestMinClocks, 9);
    set({"Method=Auto"});
    timing(Session(0));
    EXPECT_TRUE(g_tool.getMethodAuto());
}

TEST_F(Dialogue, WrongSettingNamesTheParameter) {
    set({"Method=quick"});
    Capture listing(outErr);
    try {
        Session(0).readTimingMethod();
        FAIL() << "taken";
    } catch (const bxException& e) {
        EXPECT_THAT(e.info(), StartsWith("Invalid value of Method = quick (from -d; allowed: Auto|Manual|"));
    }
}

TEST_F(Dialogue, AlignmentFromSettings) {
    const struct {
        std::initializer_list<const char*> settings;
        bool byByte, firstOnly;
        int align, shift;
    } rows[] = {
        {{}, false, true, 0, 512},
        {{"AlignVectorsBy=b", "VectorAlign=70", "MutualVectorShift=100"}, true, true, 6, 64},
        {{"VectorAlign=0", "MisalignFirstVectorOnly=no"}, false, true, 0, 512},
        {{"VectorAlign=3", "MisalignFirstVectorOnly=no", "MutualVectorShift=-1"}, false, false, 3, -64},
        {{"VectorAlign=-1"}, false, true, -1, 512},
    };
    for (const auto& row : rows) {
        bxSetAlignSrc(true);
        set(row.settings);
        Capture listing(outPerf);
        EXPECT_EQ(Session(0).readDataOffset(), 0);
        EXPECT_EQ(bxGetAlignByByte(), row.byByte);
        EXPECT_EQ(bxGetVectorAlign(), row.align);
        EXPECT_EQ(bxGetAlignSrc(), row.firstOnly);
        EXPECT_EQ(bxGetVectorShift(), row.shift);
    }
    DefaultShift shift(0, "Shift", "");
    EXPECT_THROW(shift.translate("x"), bxException);
}

TEST_F(Dialogue, AsksOnlyTheOpenGroups) {
    type("stat\n\n500\n");
    Capture listing(outPerf);
    g_ostrm << PERF;
    testing::internal::CaptureStdout();
    Session session(askTiming);
    EXPECT_NE(session.readTimingMethod(), 0);
    EXPECT_EQ(session.readDataOffset(), 0);
    g_ostrm << endMessage;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n Method {Auto|Manual|Statistic|Iterative} [Auto] = "
                                                      "\n NumCalls [3] = "
                                                      "\n TotalCpuClocks [10000] = ");
    EXPECT_EQ(listing.text(), std::string(bxSession::getEnterTitle("Specify timing method, please").c_str()) +
                                  " Method = Statistic\n NumCalls = 3\n TotalCpuClocks = 500\n"
                                  " AlignVectorsBy = element\n VectorAlign = 0\n MutualVectorShift = 512\n");
    EXPECT_EQ(g_tool.statMaxClocks, 500);
}

TEST_F(Dialogue, EndOfInputTakesTheDefaults) {
    type("byte\n5");
    Capture listing(outErr);
    testing::internal::CaptureStdout();
    EXPECT_NE(Session(askAlignment).readDataOffset(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\n AlignVectorsBy {byte|element} [element] = \n VectorAlign by Byte, 0..63 [0] = "
              "\n MisalignFirstVectorOnly {yes|no} [yes] = "
              "\n MutualVectorShift in Bytes, divisible by 64 [512] = ");
    EXPECT_EQ(bxGetVectorAlign(), 5);
    EXPECT_EQ(bxGetVectorShift(), 512);
    EXPECT_THAT(listing.text(),
                StartsWith(bxSession::getEnterTitle("Specify vectors alignment, please").c_str()));
    EXPECT_THAT(listing.text(), HasSubstr(" VectorAlign = 5\n MisalignFirstVectorOnly = yes\n"))
        << "a dialogue shows what it has understood, whatever the level";
}

TEST_F(Dialogue, CommonParametersAreReadOnce) {
    EXPECT_EQ(Session(askParameters).readTestParameters(), 0) << "none is registered";
    bxIterator<int> len(0, "Len", "");
    bxList<bxParameter*> common;
    common.push_back(&len);
    g_pParmList = &common;
    type("4;5\n");
    Capture listing(outPerf);
    testing::internal::CaptureStdout();
    EXPECT_NE(Session(askParameters).readTestParameters(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n Len [] = ");
    EXPECT_FALSE(len.needsInput());
    EXPECT_STREQ(len.defaultString().c_str(), "4; 5");
    EXPECT_EQ(Session(0).readTestParameters(), 0);
    EXPECT_EQ(g_istrm.iStream(), nullptr);
}

} // namespace
