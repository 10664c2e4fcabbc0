// The table of a run for a terminal.
#include "reportdata.h"
#include "texttable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

using testing::HasSubstr;

TEST(TextTable, FitsEveryScreenAndShowsTheWorstOfEachDomainFirst) {
    std::ostringstream text;
    text << "CPU,x86 with SSE2, 2x2.1 GHz, Max cache size 512 K\nStart,Sun Nov 22 23:25:43 2026\n"
            "Function,Types,Descriptor,P1,P2,P3,Comment,Clocks,per,Time (usec),MFlops\n";
    for (int i = 0; i < 40; ++i)
        text << "zorsF" << i << (i % 2 ? "_AAC" : "_MP3") << ",32s,-,64,-,-,nLps=4"
             << (i < 30 ? " acc=7%," : ",") << i + 1 << ",e,1,-\n";
    std::istringstream written(text.str());
    TableRun run = readTable(written, "t.csv", false).runs.at(0);
    run.tests.push_back({"zorsBroken_SBR", "Tim", "t.cpp", "EXCPTFAIL", "benchex", 1.0, {}});
    const Collection tables{{run}, {}, {}};
    const ReportData data = makeReport(tables);
    for (const std::size_t lines : {5U, 12U, 24U, 60U}) {
        for (const std::size_t columns : {1U, 20U, 40U, 80U, 200U}) {
            const std::string table = textTable(data, {lines, columns, false}, 2);
            std::istringstream input(table);
            std::size_t count = 0;
            for (std::string line; std::getline(input, line); ++count)
                EXPECT_LE(line.size(), columns) << line;
            EXPECT_LE(count + 2, std::max<std::size_t>(lines, 10)) << table;
        }
    }
    const std::string table = textTable(data, {24, 80, false}, 2);
    const auto at = [&](const char* word) { return table.find(word); };
    EXPECT_LT(at("EXCPTFAIL (1): zorsBroken_SBR"), at("ACCURWRN (30): "));
    EXPECT_LT(at("\nSBR"), at("\nAAC (20)  zorsF39_AAC_32s"));
    EXPECT_LT(at("\nAAC (20)  zorsF39_AAC_32s"), at("zorsF37_AAC"));
    EXPECT_LT(at("zorsF37_AAC"), at("\nMP3 (20)  zorsF38_MP3_32s"));
    EXPECT_THAT(table, testing::Not(HasSubstr("zorsF1_")));
    EXPECT_THAT(textTable(data, {}, 2), HasSubstr("zorsF1_AAC_32s"));
    EXPECT_THAT(textTable(data, {24, 24, false}, 2), HasSubstr("zorsF39_AAC_32s    40.0\n")) << "narrow";
}

TEST(TextTable, LongNamesLoseTheirMiddleAndAWarningOfAllIsSaidOnce) {
    std::istringstream written("CPU,one\nFunction,Types,Descriptor,P1,Comment,Clocks,per,Time (usec),MFlops\n"
                               "zorsSynthesisDownFilter_SBR_CToR,32fc32f,D2L,960,nLps=4 acc=7%,6.5,e,2.5,-\n"
                               "zorsSynthesisDownFilter_SBR_RToR,32f,D2L,960,nLps=4 acc=7%,0.9,e,2.5,-\n"
                               "zorsOther,32f,-,960,nLps=4 acc=7%,1234,e,2.5,-\n");
    const Collection tables{{readTable(written, "t.csv", false).runs.at(0)}, {}, {}};
    const std::string table = textTable(makeReport(tables), {24, 36, true}, 1);
    EXPECT_THAT(table, HasSubstr("zorsSynthesis..R_32fc32f_D2L    6.50\n"));
    EXPECT_THAT(table, HasSubstr("zorsSynthesis.._RToR_32f_D2L   0.900\n"));
    EXPECT_THAT(table, HasSubstr("ACCURWRN: all 3 functions"));
    EXPECT_EQ(table.find("ACCURWRN"), table.rfind("ACCURWRN"));
}

TEST(Terminal, LinksNameFilesThatAnyAddressHolds) {
    EXPECT_EQ(fileAddress("/tmp/a b/\xc3\xa4%.html", "host"), "file://host/tmp/a%20b/%C3%A4%25.html");
    EXPECT_EQ(terminalLink("file:///x", "open"), "\x1b]8;;file:///x\x1b\\open\x1b]8;;\x1b\\");
}
