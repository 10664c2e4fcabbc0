/** \file
 * Layout of report blocks, what the blocks say, and the report of the processor.
 */
#include "framework/bxcpureport.h"
#include "frameworksupport.h"

#include <map>

namespace {

using ReportsTest = FrameworkFixture;

std::string str(const bxString& text) {
    return std::string(text.view());
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    for (size_t at = 0; at < text.size();) {
        const size_t end = text.find('\n', at);
        all.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return all;
}

std::string separatorLine() {
    std::string line(79, '-');
    line.front() = line.back() = '+';
    return line.append("\n");
}

/** Every line of a framed block begins and ends with its frame and is 79 characters long. */
void expectFramed(const std::string& text) {
    for (const std::string& line : lines(text)) {
        EXPECT_EQ(line.size(), 79U) << line;
        EXPECT_TRUE(line.front() == line.back() && (line.front() == '|' || line.front() == '+')) << line;
    }
}

TEST(ReportFormat, PlacesItems) {
    struct Case {
        const char *line, *item;
        int col;
        const char* placed;
    };
    for (const Case& c : {Case{"|", "a", 3, "|  a"},
                          {"|", "a", 1, "| a"},
                          {"|  b", "a", 2, "|  b a"},
                          {"| b", "", 9, "| b"},
                          {"|", "ab", -6, "|  ab"},
                          {"|", "abcdefgh", -6, "|"},
                          {"| xy", "ab", -6, "| xy ab"},
                          {"| long\n|", "a", 3, "| long\n|  a"}}) {
        bxString line = c.line;
        bxReportFormat::setItem(line, c.item, c.col);
        EXPECT_EQ(str(line), c.placed);
    }
    bxString line = "x\nabc";
    EXPECT_EQ(bxReportFormat::getLastLen(line), 3);
    EXPECT_FALSE(bxReportFormat::setOffsetLine(line, 2));
    EXPECT_TRUE(bxReportFormat::setOffsetLine(line, 3));
    EXPECT_TRUE(bxReportFormat::setOffsetLine(line, 5));
    EXPECT_EQ(str(line), "x\nabc  ");
}

TEST(ReportFormat, LinesAndSeparators) {
    bxReportFormat format(false, 4, 1, 12, 14, -79, -79, -79);
    EXPECT_EQ(str(format.getLine("a", ":", "b")), "  a         : b\n") << "no frame, no filling";
    const std::string separator = separatorLine();
    EXPECT_EQ(str(format.firstLine()), separator);
    EXPECT_EQ(str(format.getLine("a", ":", "b", "c")),
              "| a" + std::string(9, ' ') + ": b" + std::string(62, ' ') + "c|\n");
    // A label that reaches its neighbour's column pushes what follows by one blank.
    EXPECT_EQ(str(format.getLine("Description", ":", "b")).substr(0, 17), "| Description : b");
    const std::string wide(90, 'w');
    EXPECT_EQ(str(format.getLine(wide.c_str())), "| " + wide + "\n") << "past the frame the line stays open";
    EXPECT_EQ(str(format.lastLine()), separator);
    EXPECT_EQ(str(format.getLine("a")), "  a\n");
}

TEST(ReportFormat, SplitsAtTheLastFittingBlank) {
    struct Case {
        const char* text;
        int width;
        bool split;
        const char *piece, *rest;
    };
    for (const Case& c : {Case{"one two three", 13, false, "", "one two three"},
                          {"one two three", 12, true, "one two", "three"},
                          {"one two three", 7, true, "one two", "three"},
                          {"one two three", 6, true, "one", "two three"},
                          {"one two three", 2, true, "one", "two three"},
                          {"onetwothree", 4, false, "", "onetwothree"}}) {
        bxString text = c.text;
        bxString piece;
        EXPECT_EQ(bxReportFormat::getPieceItem(text, piece, c.width), c.split) << c.text << c.width;
        EXPECT_EQ(str(piece), c.piece);
        EXPECT_EQ(str(text), c.rest);
    }
}

TEST(ReportFormat, LongValuesKeepTheFrameAndTheirColumn) {
    bxReportFormat format(true, 4, 1, 12, 14, -79, -79, -79);
    const std::string words[] = {"word ", "x", "a-word-of-twenty-chr ", "w\n", "tab\t", "  "};
    for (const std::string& word : words) {
        std::string value;
        for (int n = 0; n < 200; n++, value += word) {
            const std::string block = str(format.getEntry({"Label", ":"}, value.c_str(), "further text"));
            expectFramed(block);
            std::string shown;
            for (const std::string& line : lines(block))
                shown += line.substr(13, 65);
            const auto letters = [](const std::string& text) {
                return std::count_if(text.begin(), text.end(), [](char c) { return c > ' '; });
            };
            ASSERT_EQ(letters(shown), letters(value) + 11) << "nothing is lost: " << block;
        }
    }
    EXPECT_EQ(str(format.getEntry({"Label", ":"}, ("first " + std::string(60, 'x') + " last").c_str())),
              "| Label     : first" + std::string(59, ' ') + "|\n" + "|" + std::string(13, ' ') +
                  std::string(60, 'x') + std::string(4, ' ') + "|\n|" + std::string(13, ' ') + "last" +
                  std::string(60, ' ') + "|\n");
    expectFramed(str(
        format.getEntry({"Description", ":"}, std::string(300, 'y').c_str(), std::string(300, 'z').c_str())));
}

TEST(ReportFormat, ProcessorLine) {
    struct Case {
        int processors, freq, cache;
        const char* line;
    };
    for (const Case& c : {Case{1, 800, 512 << 10, "Cpu, 800 MHz, Max cache size 512 K"},
                          {4, 2500, (1 << 20) + 1023, "Cpu, 4x2.5 GHz, Max cache size 1024 K"},
                          {1, 999, 0, "Cpu, 999 MHz, "},
                          {2, 1000, -1, "Cpu, 2x1 GHz, "},
                          {1, 0, 1024, "Cpu, frequency not known, Max cache size 1 K"}})
        EXPECT_EQ(str(bxReportFormat::cpuInfo("Cpu", c.processors, c.freq, c.cache)), c.line);
    EXPECT_EQ(str(bxReportFormat::cpuInfo("Cpu", 1, 993, 0, 1000)), "Cpu, 993 MHz (nominal 1 GHz), ");
    EXPECT_EQ(str(bxReportFormat::cpuInfo("Cpu", 1, 1996, 0, 2000)), "Cpu, 2 GHz, ") << "the same text";
    EXPECT_EQ(str(bxReportFormat::getTimeStr(0)), "00:00:00");
    EXPECT_EQ(str(bxReportFormat::getTimeStr(100 * 3600 + 61)), "100:01:01");
}

TEST_F(ReportsTest, Summary) {
    bxTestList list;
    for (int i = 0; i < 10; i++)
        list.plus(OK);
    for (bxResult r : {DATAWRN, EXCPTFAIL, BADSTSWRN, ACCURFAIL, UNDEFINED, WARNING, FAIL})
        list.plus(r);
    list.endTime = list.startTime + 3725;
    const bxReportEnd report(list);
    const std::pair<const char*, const char*> expected[] = {
        {".Number of tests", "17"}, {".Successes      ", "10"},      {".Failures       ", "4"},
        {"...Fails        ", "2"},  {".....-FAIL      ", "1"},       {".....-EXCPTFAIL ", "1"},
        {"...Warnings     ", "2"},  {".....-WARNING   ", "1"},       {".....-BADSTSWRN ", "1"},
        {"...Undefined    ", "3"},  {".Total time     ", "01:02:05"}};
    std::string rows = "END_DATA\n";
    std::string block = separatorLine().append("| BX Summary").append(66, ' ').append("|\n");
    for (const auto& [label, value] : expected) {
        rows.append(label).append(",").append(value).append("\n");
        std::string line = "| ";
        line.append(label).append(" : ").append(value);
        line.resize(78, ' ');
        block.append(line).append("|\n");
    }
    TableCapture summary(g_ustrm);
    Capture listing(outErr);
    g_ustrm << report;
    g_ostrm << report;
    EXPECT_EQ(summary.text(), rows);
    EXPECT_EQ(listing.text(), block + separatorLine());
}

TEST_F(ReportsTest, RunTitle) {
    bxStringList libraries;
    libraries.push_back(
        "libzorac.so, 1.0, Jan  1 2024, with a description that is much too long for a single line");
    libraries.push_back("libzors.so, 1.0");
    bxStringList* const registered = std::exchange(g_pLibInfoList, &libraries);
    bxTestList list;
    const bxReportTitle title(list);
    g_pLibInfoList = registered;

    Capture listing(outErr);
    TableCapture table;
    g_ostrm << title;
    g_cstrm << title;
    EXPECT_EQ(framedLines(listing.text()), listing.text());
    expectFramed(listing.text());
    const std::vector<std::string> block = lines(listing.text());
    const auto has = [&block](const std::string& start) {
        return std::any_of(block.begin(), block.end(),
                           [&](const std::string& line) { return line.find(start) == 0; });
    };
    for (const char* start : {"| CPU      : ", "| OS       : ", "| Computer : ", "| Library  : libzorac.so",
                              "| Library  : libzors.so", "| Test     : Timing "})
        EXPECT_TRUE(has(start)) << start << "\n" << listing.text();
    EXPECT_EQ(block[block.size() - 2].find(str(bxCtimeText(list.startTime))), 13U);
    EXPECT_FALSE(has("| Start"));

    const std::vector<std::string> rows = lines(table.text());
    EXPECT_EQ(rows.front().find("CPU,"), 0U);
    EXPECT_EQ(rows.back(), "Start," + str(bxCtimeText(list.startTime)));
}

TEST_F(ReportsTest, BlocksOfATest) {
    const bxString exePath = std::exchange(bxPaths::m_exePath, "/opt/bin/benchex");
    ScriptedTest test("zorsSynthesisFilter_SBR_CToR_32fc32f_D2L", "TimSynth/Synthesis/KV_REG_I");
    TableCapture summary(g_ustrm);
    for (const OutputLevel level : {outErr, outPerf}) {
        Capture listing(level);
        test.run();
        const std::string text = listing.text();
        const std::string framed = framedLines(text);
        expectFramed(framed);
        const auto separators = std::count(framed.begin(), framed.end(), '+') / 2;
        EXPECT_EQ(separators, level == outErr ? 0 : 4);
        const std::string end = str(bxCtimeText(test.endTime));
        for (const std::string& line :
             {std::string("| Function  : zorsSynthesisFilter_SBR_CToR_32fc32f_D2L"),
              std::string("| Test      : TimSynth"), std::string("| Description : Synthesis"),
              std::string("KV_REG_I|\n"), std::string("| Source    : p_scripted.cpp"),
              std::string("| -OK         zorsSynthesisFilter_SBR_CToR_32fc32f_D2L"), end + "|"})
            EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
    }
    test.endTime = test.startTime + 5;
    test.bad87Status = true;
    test.result = BADSTSWRN;
    g_ustrm << bxReportTestTitle(&test) << bxReportTestResult(&test) << bxReportTestResult(nullptr);
    const std::vector<std::string> rows = lines(summary.text());
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[0], rows[1]);
    EXPECT_EQ(rows[2], "zorsSynthesisFilter_SBR_CToR_32fc32f_D2L,Timing,?,?,-,-,TimSynth,5,p_scripted.cpp,"
                       "BADSTSWRN,benchex");
    EXPECT_EQ(
        rows[3],
        "Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),SrcName,Result,ExeName");
    EXPECT_EQ(std::count(rows[2].begin(), rows[2].end(), ','),
              std::count(rows[3].begin(), rows[3].end(), ','));
    bxPaths::m_exePath = exePath;
}

TEST_F(ReportsTest, Enumeration) {
    bxTestList list;
    ScriptedTest a("zorsA", "TimA//KV_REG"), b("zorsB", "TimB//KV_REG"), c("zorsC", "TimC//KV_REG");
    for (bxTest* test : {&a, &b, &c})
        list.push_back(test);
    bxConditions conditions;
    conditions.push_back(new RunCondition_fNot("B"));
    bxStringList functions;
    for (const char* name : {"zorsC", "zorsMissing", "zorsInit_x", "zorsGetSize_x", "zorsGet_x", "zorsSet_x",
                             "zorsSetup", "zorsFree", "zorsA"})
        functions.push_back(name);

    struct Case {
        bxStringList* known;
        int mode;
        const char* rows;
    };
    bxStringList onlyServices;
    onlyServices.push_back("zorsInit");
    const char* const tests = "   #\tFunction\tTest\tSource\n"
                              "   1\tzorsA\tTimA\tp_scripted.cpp\n"
                              "   2\tzorsC\tTimC\tp_scripted.cpp\n";
    const Case cases[] = {
        {&functions, 0, tests},
        {&functions, 1, "Exist\tFunction\n+\tzorsC\n-\tzorsMissing\n-\tzorsGet_x\n-\tzorsSet_x\n+\tzorsA\n"},
        {&functions, -1, "Exist\tFunction\n-\tzorsMissing\n-\tzorsGet_x\n-\tzorsSet_x\n"},
        {nullptr, 1, tests},
        {&onlyServices, -1, tests},
    };
    bxStringList* const registered = g_pLibFuncList;
    for (const Case& each : cases) {
        g_pLibFuncList = each.known;
        const bxReportList report(list, conditions, each.mode);
        Capture listing(outErr);
        TableCapture table;
        g_ostrm << report;
        g_cstrm << report;
        EXPECT_EQ(listing.text(), each.rows);
        std::string cells = each.rows;
        std::replace(cells.begin(), cells.end(), '\t', ',');
        EXPECT_EQ(table.text(), cells);
    }
    g_pLibFuncList = registered;
}

// ---- Processor ----

/** The leaves of a processor, by leaf and sub-leaf; others read 0. */
using Leaves = std::map<std::pair<unsigned, unsigned>, CPUID::Registers>;
const Leaves* s_leaves;

CPUID query(unsigned leaf, unsigned subleaf) {
    const auto it = s_leaves->find({leaf, subleaf});
    return CPUID(it == s_leaves->end() ? CPUID::Registers{} : it->second);
}

/** A register as four characters. */
constexpr unsigned word(const char (&text)[5]) {
    unsigned value = 0;
    for (unsigned i = 0; i < 4; i++)
        value |= static_cast<unsigned>(static_cast<unsigned char>(text[i])) << (8 * i);
    return value;
}

/** 64 sets of 8 ways, lines of 64 bytes, one partition: 32 K of level-1 data for two threads. */
constexpr CPUID::Registers level1 = {1U << 26 | 1U << 14 | 1U << 8 | 1U << 5 | 1, 7U << 22 | 63, 63, 2};
constexpr CPUID::Registers level2 = {1U << 9 | 2U << 5 | 3, 15U << 22 | 63, 1023, 1};

const std::string cacheSection = "    Deterministic Cache Parameters\n"
                                 "Cache Type Data Cache\n"
                                 "    Cache Level       1\n"
                                 "    Cache Size Kb     32\n"
                                 "    Threads Sharing   2 - Maximum number of threads sharing this cache\n"
                                 "    Number of Sets    64\n"
                                 "    Line Size         64 - System coherency line size\n"
                                 "    Line Partitions   1 - Physical line partitions\n"
                                 "    Associativity     8 - Ways of associativity\n"
                                 "    Self Initializing cache level\n"
                                 "    Cache is inclusive to lower cache levels\n"
                                 "Cache Type Unified Cache\n"
                                 "    Cache Level       2\n"
                                 "    Cache Size Kb     1024\n"
                                 "    Threads Sharing   1 - Maximum number of threads sharing this cache\n"
                                 "    Number of Sets    1024\n"
                                 "    Line Size         64 - System coherency line size\n"
                                 "    Line Partitions   1 - Physical line partitions\n"
                                 "    Associativity     16 - Ways of associativity\n"
                                 "    Fully Associative cache\n"
                                 "    WBINVD/INVD behavior on lower level caches\n";

const std::string attention = "\n    ATTENTION! It is not Genuine Quarn processor.\n"
                              "    Information below may be inadequate.\n";

TEST(CpuReport, GenuineProcessor) {
    // The vendor stands in EBX, EDX, ECX.
    const Leaves genuine = {
        {{0, 0}, {4, word("Genu"), word("uarn"), word("ineQ")}},
        {{1, 0}, {0x000106A5, 0x00100800 | 2, 1U << 19 | 1U << 9 | 1, 1U << 28 | 1U << 23 | 1U << 25}},
        {{4, 0}, level1},
        {{4, 1}, level2},
        {{0x80000000, 0}, {0x80000006, 0, 0, 0}},
        {{0x80000001, 0}, {0, 0, 0, 1U << 29}},
        {{0x80000002, 0}, {word("A qu"), word("ick "), word("CPU\0"), 0}},
        {{0x80000006, 0}, {0, 0, 256U << 16 | 6U << 12 | 64, 0}},
    };
    s_leaves = &genuine;
    const bxCpuReport report(query);
    EXPECT_EQ(str(report.title()), std::string(79, '*') +
                                       "\n    Quarn(R) Processor Identification\n"
                                       "    Got by CPUID Instruction Functions\n" +
                                       std::string(79, '*') + "\n\n");
    EXPECT_EQ(str(report.identity()), "Largest Standard Function 0x00000004\n"
                                      "Largest Extended Function 0x80000006\n"
                                      "Vendor-ID      GenuineQuarn\n"
                                      "Brand String   A quick CPU\n");
    EXPECT_EQ(str(report.signature()), "    Processor Identification Signature\n\n"
                                       "Type     0\nFamily   6\nModel    26\nStepping 5\nBrand ID 2\n");
    const std::vector<std::string> flags = lines(str(report.flags()));
    ASSERT_EQ(flags.size(), 11U);
    const char* const starts[] = {"MMX        1 - ", "SSE        1 - ", "SSE2       0 - ", "SSE3       1 - ",
                                  "SSSE3      1 - ", "SSE4.1     1 - ", "SSE4.2     0 - ", "x2APIC     0 - "};
    for (size_t i = 0; i < std::size(starts); i++)
        EXPECT_EQ(flags[i + 2].find(starts[i]), 0U) << flags[i + 2];
    EXPECT_NE(flags[10].find(" 1 - "), std::string::npos) << "the 64-bit flag";
    EXPECT_EQ(str(report.multiThreading()),
              "    Multi Threading Features\n\n"
              "Multi-threading or multiple cores are supported\n"
              "Logical Processors 16 - Number of logical processors per physical package\n"
              "Cores per Package  2 - Maximum number of processor cores per package\n");
    EXPECT_EQ(str(report.cacheParms()), cacheSection);
    EXPECT_EQ(str(report.l2Features()), "    Extended L2 Cache Features\n\n"
                                        "L2 Cache Size Kb       256\n"
                                        "L2 Cache Line Size     64\n"
                                        "L2 Cache Associativity 8-Way\n");
}

TEST(CpuReport, ProcessorOfAnotherVendorIsReportedWhole) {
    const Leaves other = {
        {{0, 0}, {13, word("Some"), word("Else"), word("body")}},
        {{1, 0}, {0x00830F10, 0x00100800, 0, 1U << 28}}, // family 15 + 8, model 0x31
        {{0x80000000, 0}, {0x8000001E, 0, 0, 0}},
        {{0x80000006, 0}, {0, 0, 512U << 16 | 9U << 12 | 64, 0}},
        {{0x80000008, 0}, {0, 0, 15, 0}},
        {{0x8000001D, 0}, level1},
        {{0x8000001D, 1}, level2},
        {{0x8000001E, 0}, {0, 1U << 8, 0, 0}},
    };
    s_leaves = &other;
    const bxCpuReport report(query);
    EXPECT_NE(str(report.title()).find(attention), std::string::npos);
    EXPECT_NE(str(report.identity()).find("Vendor-ID      SomebodyElse\n"), std::string::npos);
    EXPECT_NE(str(report.signature()).find("Family   23\nModel    49\nStepping 0\n"), std::string::npos);
    EXPECT_NE(str(report.multiThreading()).find("Cores per Package  8 - "), std::string::npos)
        << "16 threads, 2 a core";
    EXPECT_EQ(str(report.cacheParms()), cacheSection);
    EXPECT_NE(str(report.l2Features()).find("L2 Cache Size Kb       512\n"), std::string::npos);
    EXPECT_NE(str(report.l2Features()).find("L2 Cache Associativity 9\n"), std::string::npos);
}

TEST(CpuReport, LeavesThatAreMissingAreLeftOut) {
    const Leaves old = {{{0, 0}, {1, word("Some"), word("Else"), word("body")}},
                        {{1, 0}, {0x00000543, 0, 0, 0}}};
    s_leaves = &old;
    const bxCpuReport report(query);
    EXPECT_EQ(str(report.identity()).find("Brand String"), std::string::npos);
    EXPECT_EQ(str(report.multiThreading()), "    Multi Threading Features\n\n"
                                            "Neither multi-threading nor multiple cores are supported\n");
    EXPECT_EQ(str(report.cacheParms()), "");
    EXPECT_EQ(str(report.l2Features()), "");
}

TEST_F(ReportsTest, InformationTests) {
    __bxQuarnCpuTest cpu("__bxQuarnCpu", __FILE__, "__bxQuarnCpuTest/Quarn CPU information");
    __bxOSTest os("__bxOS", __FILE__, "__bxOSTest/System");
    __bxHostTest host("__bxHost", __FILE__, "__bxHostTest/Computer");
    TableCapture summary(g_ustrm);
    for (const auto& [test, text] : {std::pair<bxTest*, std::string>{&cpu, "    Selected Feature Flags\n"},
                                     {&os, " OS       : " + std::string(bxOS().text()) + "\n"},
                                     {&host, " Computer : " + std::string(bxHost().name()) + "\n"}}) {
        Capture listing(outErr);
        EXPECT_EQ(test->run(), OK);
        EXPECT_NE(unframed(listing.text()).find(text), std::string::npos);
        EXPECT_EQ(listing.text().find("Vendor-ID"), std::string::npos)
            << "details only where figures are shown";
    }
    for (const std::string& row : lines(summary.text()))
        EXPECT_NE(row.find(",Information,-,-,-,-,"), std::string::npos) << row;
    Capture listing(outPerf);
    cpu.run();
    EXPECT_NE(listing.text().find("Vendor-ID      "), std::string::npos);
}

} // namespace
