#include "output/bxcstream.h"
#include "output/bxiostream.h"
#include "output/bxlevels.h"
#include "output/bxostream.h"
#include "output/bxpaths.h"
#include "output/bxtrace.h"
#include "testsupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

/** A file of its own for each use, removed at the end. */
class TempFile {
  public:
    explicit TempFile(const std::string& content = {}) {
        static int number = 0;
        m_path = testing::TempDir() + "benchex_output_" + std::to_string(::getpid()) + "_" +
                 std::to_string(number++);
        std::ofstream(m_path, std::ios::binary) << content;
    }
    ~TempFile() { std::remove(m_path.c_str()); }
    bxString path() const { return m_path.c_str(); }
    std::string content() const {
        std::ostringstream text;
        text << std::ifstream(m_path, std::ios::binary).rdbuf();
        return text.str();
    }

  private:
    std::string m_path;
};

/** Sets the session's paths and restores them. */
class PathSettings {
  public:
    explicit PathSettings(const bxString& exePath) { bxPaths::m_exePath = exePath; }
    ~PathSettings() {
        bxPaths::m_exePath = bxPaths::m_inDir = bxPaths::m_outDir = bxPaths::m_defName = bxString();
    }
};

TEST(Messages, ShownByLevel) {
    struct {
        int shown;
        MessageLevel level;
        bool visible;
    } const rows[] = {{1, ERR, true},    {1, WARN, false},  {1, PERF, false}, {7, PERF, true},
                      {71, DATA, true},  {39, DATA, false}, {71, MEM, false}, {0, ERR, false},
                      {87, TRACE, true}, {127, MEM, true}};
    for (const auto& row : rows) {
        Capture capture(row.shown);
        g_ostrm << row.level << "text" << endMessage;
        EXPECT_EQ(capture.text(), row.visible ? "text" : "") << row.shown << " " << row.level;
    }
}

TEST(Messages, Nest) {
    bxOStream out;
    OutputCapture capture(out);
    EXPECT_EQ(out.msgLevel(), PERF);
    out << ERR << "a" << DATA << "b" << endMessage << "c" << endMessageFlush << "d";
    EXPECT_EQ(capture.text(), "ac");
    EXPECT_EQ(out.msgLevel(), PERF);
    out << static_cast<MessageLevel>(-10);
    EXPECT_EQ(out.msgLevel(), ERR);
    out << INFO << TRACE << WARN;
    out.closeMessages(1);
    EXPECT_EQ(out.msgLevel(), INFO);
    EXPECT_EQ(out.openMessages(), 1);
}

TEST(Messages, BeginComparesNumbers) {
    bxOStream out;
    out.setOutLevel(outPerf);
    EXPECT_FALSE(out.beginMessage(INFO));
    EXPECT_EQ(out.msgLevel(), PERF);
    EXPECT_EQ(out.openMessages(), 0);
    out.setOutLevel(outData);
    EXPECT_TRUE(out.beginMessage(MEM));
    EXPECT_FALSE(out.shown());
}

TEST(Messages, ConvertValues) {
    Capture capture(1);
    g_ostrm << ERR << 'c' << -10 << " " << 4294967295U << " " << static_cast<unsigned char>(255) << " "
            << 0.25;
    g_ostrm << " " << true << static_cast<const char*>(nullptr) << endMessage;
    EXPECT_EQ(capture.text(), "c-10 4294967295 255 0.25 yes");
}

TEST(Outputs, ReceiveTheSameInOrder) {
    const TempFile first, second;
    {
        bxOStream out;
        ASSERT_TRUE(out.addStream(first.path(), false));
        ASSERT_TRUE(out.addStream(second.path(), false));
        out << ERR << "kept" << endMessage << "hidden";
    }
    bxOStream again;
    ASSERT_TRUE(again.addStream(first.path(), true));
    ASSERT_TRUE(again.addStream(second.path(), false));
    again << ERR << " and more" << endMessageFlush;
    EXPECT_EQ(first.content(), "kept and more");
    EXPECT_EQ(second.content(), " and more");
    again.close();
    again << ERR << "nowhere" << endMessage;
    EXPECT_EQ(first.content(), "kept and more");
}

TEST(Outputs, StandardStreamsStayOpen) {
    for (std::FILE* const standard : {stdin, stdout})
        EXPECT_FALSE(o_stream(standard).close());
    EXPECT_FALSE(o_stream(nullptr).close());
}

TEST(Outputs, UnopenedIsReportedAndNotAttached) {
    Capture capture(1);
    bxCStream table;
    EXPECT_FALSE(table.addStream("/nonexistent/x.csv", false));
    EXPECT_TRUE(table.empty());
    i_stream in("/nonexistent/x.ini", ioRead | ioNameAsGiven, true);
    i_stream quiet("/nonexistent/x.ini", ioRead | ioNameAsGiven, false);
    bxString line = "old";
    EXPECT_FALSE(in.getline(line));
    EXPECT_TRUE(line.empty());
    EXPECT_EQ(capture.text(),
              "-- Can't open file /nonexistent/x.csv to write: \n   No such file or directory\n"
              "-- Can't open file /nonexistent/x.ini to read: \n   No such file or directory\n");
}

TEST(Outputs, FullDiskIsToldByFailedAlone) {
    bxOStream out;
    if (!out.addStream("/dev/full", true))
        GTEST_SKIP() << "no device that is always full";
    out << ERR << std::string(100000, 'x').c_str() << endMessageFlush << ERR << "more" << endMessageFlush;
    EXPECT_TRUE((*out.begin())->failed());
}

TEST(Outputs, RelativeNamesAreCompleted) {
    const TempFile file("in\n");
    PathSettings paths("/nonexistent/bench");
    bxPaths::setInDir(file.path().getFileDir());
    bxPaths::setOutDir(file.path().getFileDir());
    bxString line;
    EXPECT_TRUE(i_stream(file.path().getFileName(), ioRead, false).getline(line));
    EXPECT_STREQ(line.c_str(), "in");
    EXPECT_TRUE(o_stream(file.path().getFileName(), ioWrite, false).handle());
    EXPECT_FALSE(i_stream(file.path().getFileName(), ioRead | ioNameAsGiven, false).handle());
}

TEST(Getline, LinesOfAnyLength) {
    for (const std::size_t length : {0, 1, 510, 511, 512, 1000, 1022, 5000}) {
        const std::string text(length, 'x');
        const TempFile file(text + "\n\nb\r\n" + text);
        i_stream in(file.path(), ioRead | ioNameAsGiven, true);
        bxString line;
        for (const std::string& expected : {text, std::string(), std::string("b\r")}) {
            EXPECT_TRUE(in.getline(line)) << length;
            EXPECT_EQ(line.view(), expected);
        }
        EXPECT_EQ(in.getline(line), length > 0);
        EXPECT_EQ(line.view(), text);
        EXPECT_FALSE(in.getline(line));
    }
}

TEST(Getline, EndsOnADirectory) {
    i_stream in("/", ioRead | ioNameAsGiven, false);
    bxString line;
    EXPECT_FALSE(in.getline(line));
}

TEST(Trace, LinesAndStack) {
    Capture capture(23);
    bxTrace trace;
    trace.traceIn("a");
    trace.traceIn("b");
    EXPECT_STREQ(trace.getCurName().c_str(), "b");
    trace.traceOut("a");
    EXPECT_TRUE(trace.empty());
    EXPECT_TRUE(trace.indent().empty());
    EXPECT_STREQ(trace.getCurName().c_str(), "");
    EXPECT_EQ(capture.text(), "****** trace into   a\n******* trace into   b\n******* trace out of a\n");
}

TEST(Trace, ClosesTheInnermostOfAName) {
    Capture capture(0);
    bxTrace trace;
    for (const char* name : {"a", "b", "a", "c"})
        trace.traceIn(name);
    trace.traceOut("a");
    EXPECT_EQ(trace.size(), 2);
    EXPECT_STREQ(trace.indent().c_str(), "**");
    trace.traceOut("unknown");
    EXPECT_EQ(trace.size(), 2);
    EXPECT_STREQ(trace.indent().c_str(), "");
    trace.clear();
    EXPECT_TRUE(trace.empty());
    EXPECT_EQ(capture.text(), "");
}

TEST(Paths, Directories) {
    struct {
        const char *exe, *dir, *full;
    } const rows[] = {{"/opt/b/bench", "", "/opt/b/"},
                      {"/opt/b/bench", "out", "/opt/b/out/"},
                      {"/opt/b/bench", "/tmp/out", "/tmp/out/"},
                      {"bench", "", ""},
                      {"bench", "out\\", "out\\"},
                      {"./bench", "c:x", "c:x/"}};
    for (const auto& row : rows) {
        PathSettings paths(row.exe);
        EXPECT_STREQ(bxPaths::genDirName(row.dir).c_str(), row.full);
    }
}

TEST(Paths, Names) {
    PathSettings paths("./bench.x86");
    bxPaths::setOutDir("/o");
    bxPaths::setInDir("");
    bxPaths::setDefName("");
    EXPECT_STREQ(bxPaths::genOutPath("", extOut).c_str(), "/o/bench.txt");
    bxPaths::setDefName("run");
    EXPECT_STREQ(bxPaths::genOutPath("", extSum).c_str(), "/o/run_sum.csv");
    EXPECT_STREQ(bxPaths::genOutPath("day1", extSum).c_str(), "/o/day1_sum.csv");
    EXPECT_STREQ(bxPaths::genOutPath("res.old", extCsv).c_str(), "/o/res.old");
    EXPECT_STREQ(bxPaths::genOutPath("/abs/file", extOut).c_str(), "/abs/file");
    EXPECT_STREQ(bxPaths::genInPath("", extIni).c_str(), "./run.ini");
    EXPECT_STREQ(bxPaths::getOutPath("x").c_str(), "/o/x");
    EXPECT_STREQ(bxPaths::getInPath("./x").c_str(), "./x");
    EXPECT_STREQ(getDirPath("x", "").c_str(), "./x");
    EXPECT_STREQ(getDirPath("dir/x", "dir/").c_str(), "dir/x");
    EXPECT_STREQ(getDirPath("\\x", "dir/").c_str(), "\\x");
}

TEST(Table, Lines) {
    bxCStream table;
    TableCapture capture(table);
    table << "a"
          << ""
          << "c"
          << "\n";
    table << "\n";
    for (int i = 0; i < 40; ++i)
        table << i;
    table << "\n";
    table << "a"
          << "b"
          << "c";
    table.setColm(5, "f");
    table.setColm(32, "beyond");
    table.setColm(-1, "before");
    bxString cell = "kept";
    EXPECT_TRUE(table.getColm(5, cell));
    EXPECT_STREQ(cell.c_str(), "f");
    EXPECT_FALSE(table.getColm(32, cell));
    table.tableOut(3);
    table.lineOut(6);
    EXPECT_EQ(capture.text(),
              "a,-,c\n\n0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,"
              "30,31\na,b,c\na,b,c,-,-,-\n");
    EXPECT_EQ(table.cellCount(), 0);
}

TEST(Table, HeldBackLinesComeLast) {
    bxCStream table;
    TableCapture capture(table);
    for (const char* name : {"late1", "late2"}) {
        table << name;
        table.setColm(2, "c");
        table.linePostpone();
        table << "now"
              << "\n";
    }
    table.linePostponeOut(3);
    table.linePostponeOut(3);
    EXPECT_EQ(capture.text(), "now\nnow\nlate1,-,c\nlate2,-,c\n");
}

/** The pair of lines that the warning names; the first line of the table has number 1. */
std::string warning(bxCStream& table) {
    Capture capture(3);
    const bool found = table.identicalLinesStop();
    EXPECT_EQ(found, !capture.text().empty());
    return capture.text();
}

TEST(Table, NamesTheFirstPairOfEqualLines) {
    bxCStream table;
    table << "title"
          << "\n";
    EXPECT_EQ(warning(table), "");
    table.identicalLinesStart(2);
    EXPECT_EQ(warning(table), "");
    table.identicalLinesStart(2);
    const char* const rows[][2] = {{"a", "bc"}, {"x", "y"}, {"ab", "c"}, {"x", "y"}, {"a", "bc"}, {"x", "y"}};
    int number = 0;
    for (const auto& row : rows)
        table << row[0] << row[1] << number++ << "\n";
    EXPECT_EQ(warning(table), " Performance table warning:\n Lines 2 & 6 have identical parameters\n");
    EXPECT_FALSE(table.identicalLinesStop()) << "the check is off";
}

TEST(Table, FindsThePairOfTheDoubleLoop) {
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        bxCStream table;
        table.identicalLinesStart(2);
        std::vector<std::array<bxString, 2>> rows;
        for (int n = 0; n < 12; ++n) {
            std::array<bxString, 2> row;
            for (bxString& cell : row)
                cell = bxString() << static_cast<int>(random() % 6);
            table << row[0] << row[1] << "\n";
            rows.push_back(row);
        }
        std::string expected;
        for (std::size_t i = 0; i < rows.size() && expected.empty(); ++i)
            for (std::size_t j = i + 1; j < rows.size() && expected.empty(); ++j)
                if (bxCStream::identicalColms(rows[i].data(), rows[j].data(), 2))
                    expected = "Lines " + std::to_string(i + 1) + " & " + std::to_string(j + 1) + " have";
        EXPECT_THAT(warning(table), testing::HasSubstr(expected));
    }
}

/** Uses the streams before main and after it. */
struct StaticUser {
    StaticUser() { g_trace.traceIn("static"), g_trace.traceOut("static"); }
    ~StaticUser() {
        if (g_ostrm.shows(WARN))
            g_ostrm << ERR << "late " << extIni << endMessageFlush;
    }
} s_staticUser;

TEST(StreamsDeathTest, OutliveStaticObjects) {
    const auto finish = [] {
        g_ostrm.push_back(new o_stream(stderr));
        g_ostrm.push_back(&c_out);
        g_ostrm.setOutLevel(outWarn);
        std::exit(0);
    };
    EXPECT_EXIT(finish(), testing::ExitedWithCode(0), "late .ini");
}

} // namespace
