// Reading tables, comparing them, and what a report makes of them.
#include "cells.h"
#include "comparison.h"
#include "json.h"
#include "reportjson.h"
#include "reportpage.h"
#include "resulttable.h"
#include "statistics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

const std::string head =
    "CPU,x86 with SSE2, 2x2.1 GHz, Max cache size 512 K\nOS,Linux (6, #1)\nComputer,one\n"
    "Library,liba.so, 2.0\nLibrary,libb.so, 2.0\nStart,Sun Nov 22 23:25:43 2026\n";
const std::string titles = "Function,Types,Descriptor,P1,P2,P3,Comment,Clocks,per,Time (usec),MFlops\n";

TableFile readText(const std::string& text, bool allowPartial = false) {
    std::istringstream input(text);
    return readTable(input, "t.csv", allowPartial);
}

/** A run of one row for each figure, of functions f0, f1, ... */
TableRun runOf(const std::vector<double>& figures, const std::string& comment = "nLps=4") {
    std::ostringstream text;
    text << head << titles;
    for (std::size_t i = 0; i < figures.size(); ++i)
        text << "f" << i << ",32s,-,64,-,-," << comment << "," << figures[i] << ",e,1,-\n";
    return readText(text.str()).runs.at(0);
}

/** Runs that measured one row each. */
std::vector<TableRun> runsOf(const std::vector<double>& figures, const std::string& comment = "nLps=4") {
    std::vector<TableRun> runs;
    for (const double figure : figures)
        runs.push_back(runOf({figure}, comment));
    return runs;
}

/** A directory of its own that is removed with what is in it. */
class TemporaryDirectory {
  public:
    TemporaryDirectory()
        : path(std::filesystem::temp_directory_path() /
               ("benchex_tools_" + std::to_string(std::random_device{}()))) {
        std::filesystem::create_directories(path);
    }
    ~TemporaryDirectory() { std::filesystem::remove_all(path); }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    void write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories((path / name).parent_path());
        std::ofstream(path / name) << text;
    }

    const std::filesystem::path path;
};

std::string failureOf(const std::string& text) {
    try {
        readText(text);
    } catch (const TableError& error) {
        return error.what();
    }
    return "no failure";
}

} // namespace

TEST(Cells, AreUnquotedSaveThoseThatCarryQuotes) {
    EXPECT_THAT(splitCells("a,-,,b c"), ElementsAre("a", "-", "", "b c"));
    EXPECT_THAT(splitCells("a, \"1,5\",b"), ElementsAre("a", "1,5", "b"));
    EXPECT_THAT(splitCells("a, \"open,b"), ElementsAre("a", " \"open", "b"));
    EXPECT_THAT(splitCells("a, \"\",\"x\"y,"), ElementsAre("a", "", "\"x\"y", ""));
}

TEST(Cells, NumbersAreWholeTexts) {
    EXPECT_EQ(toNumber("5.000e-05"), 5e-5);
    for (const char* text : {"", "-", "12x", "1 2", "inf", "nan", "1e999"})
        EXPECT_EQ(toNumber(text), std::nullopt) << text;
    EXPECT_NEAR(roundingOf("1.61"), 0.005 / 1.61, 1e-12);
    EXPECT_NEAR(roundingOf("410455"), 0.5 / 410455, 1e-12);
    EXPECT_NEAR(roundingOf("2.000e+07"), 0.0005 / 2, 1e-12);
}

TEST(Table, HoldsHeadRowsAndNames) {
    const TableFile file = readText(head + titles + "zorsCopy,32f,-,Len,Offset,-,parmNames,-,-,-,-\n" +
                                    "zorsCopy,32f,I,16,0,-,inCache nLps=256 acc=7.3%,2.00,e,0.032,500\r\n" +
                                    "Plain,16,short,-,-,-,nCalls=12,-,e,-,-\n");
    ASSERT_EQ(file.runs.size(), 1U);
    const TableRun& run = file.runs[0];
    EXPECT_EQ(run.head.value("CPU"), "x86 with SSE2, 2x2.1 GHz, Max cache size 512 K");
    EXPECT_THAT(run.head.values("Library"), ElementsAre("liba.so, 2.0", "libb.so, 2.0"));
    EXPECT_THAT(file.names.at("zorsCopy_32f"), ElementsAre("Len", "Offset", ""));
    ASSERT_EQ(run.rows.size(), 2U);
    const ResultRow& row = run.rows[0];
    EXPECT_EQ(row.function, "zorsCopy_32f_I");
    EXPECT_THAT(row.parameters, ElementsAre("16", "0", ""));
    EXPECT_EQ(row.clocks, 2.0);
    EXPECT_EQ(row.mflops, 500.0);
    EXPECT_EQ(row.loops(), 256.0);
    EXPECT_NEAR(row.accuracy().value_or(0), 0.073, 1e-12);
    EXPECT_EQ(row.cacheMode(), "inCache");
    // A test without a library function: its parameters follow its name directly.
    EXPECT_EQ(run.rows[1].function, "Plain");
    EXPECT_THAT(run.rows[1].parameters, ElementsAre("16", "short", ""));
    EXPECT_EQ(run.rows[1].clocks, std::nullopt);
    EXPECT_EQ(run.rows[1].loops(), 12.0);
}

TEST(Table, MayHoldSeveralRunsAndUnknownColumns) {
    const std::string row = "f,32s,-,1,-,-,nLps=4,2.00,e,1,-";
    const TableFile file = readText(head + titles + row + "\n" + head + titles + head +
                                    "Function,Comment,Clocks,New,Interest\nf,nLps=1,3,x,Hot\n");
    ASSERT_EQ(file.runs.size(), 3U);
    EXPECT_EQ(file.runs[1].rows.size(), 0U);
    EXPECT_EQ(file.runs[1].head.value("Computer"), "one");
    ASSERT_EQ(file.runs[2].rows.size(), 1U);
    EXPECT_TRUE(file.runs[2].rows[0].hot);
    EXPECT_THAT(file.runs[2].rows[0].other, ElementsAre(Label{"New", "x"}));
    EXPECT_THAT(file.notes, ElementsAre(HasSubstr("column \"New\" is not known")));
}

TEST(Table, ThatCannotBeReadSaysWhere) {
    const std::string row = "f,32s,-,1,-,-,nLps=4,2.00,e,1,-";
    const std::pair<std::string, std::string> cases[] = {
        {"", "t.csv: no table"},
        {head, "t.csv: no table"},
        {"hello\n", "t.csv: line 1: neither"},
        {std::string("\0\xff\n", 3), "t.csv: line 1: neither"},
        {head + "Function,Types,Clocks\n", "t.csv: line 7: column \"Comment\" is missing"},
        {head + titles + row + "\nf,32s,-,1\n", "t.csv: line 9: 4 cells where the column titles are 11"},
        {head + titles + row + ",more\n", "t.csv: line 8: 12 cells"},
        {head + titles + "f,32s,-,1,-,-,nLps=4,2.x,e,1,-\n", "t.csv: line 8: \"2.x\" in column \"Clocks\""},
        {head + titles + row, "t.csv: line 8: the last line is cut off"},
        {head + titles.substr(0, 20), "t.csv: line 7: the last line is cut off"},
    };
    for (const auto& [text, failure] : cases)
        EXPECT_THAT(failureOf(text), HasSubstr(failure)) << text;
    const TableFile file = readText(head + titles + row + "\n" + row, true);
    EXPECT_EQ(file.runs.at(0).rows.size(), 1U);
    EXPECT_TRUE(file.runs[0].incomplete);
    EXPECT_THAT(file.notes, ElementsAre(HasSubstr("line 9: cut off")));
}

TEST(Tables, AreReadWithWhatStandsBesideThem) {
    const TemporaryDirectory directory;
    const std::string later = "Start,Mon Nov 23 00:00:00 2026\n";
    const std::string row =
        "zorsF,32s,-,1,-,-,nLps=4 acc=9.0%,2.00,e,1,-\nzorsG,-,-,1,-,-,nLps=4,2.00,e,1,-\n";
    const std::string summary =
        "Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),SrcName,"
        "Result,ExeName\n";
    directory.write("one/r.csv", head + titles + row + later + titles);
    directory.write("one/r_sum.csv", later + summary + "END_DATA\n" + head + summary +
                                         "zorsF_32s,Timing,-,?,-,-,TimF,3,f.cpp,ACCURWRN,benchex\n"
                                         "zorsX,Timing,-,-,-,-,TimX,0,x.cpp,EXCPTFAIL,benchex\n"
                                         "END_DATA\n.Number of tests,2\n.....-EXCPTFAIL ,1\n");
    directory.write("one/r_name.csv", head + titles + "zorsF,32s,-,Len,-,-,parmNames,-,-,-,-\n");
    directory.write("two/r.csv", head + titles + row);
    const Collection tables = collectTables({directory.path}, false);

    std::vector<std::string> labels;
    for (const TableRun& run : tables.runs)
        labels.push_back(run.label);
    EXPECT_THAT(labels, ElementsAre("one/r #1", "one/r #2", "two/r"));
    EXPECT_THAT(tables.names.at("zorsF_32s"), ElementsAre("Len", "", ""));
    const TableRun& run = tables.runs[0];
    ASSERT_EQ(run.tests.size(), 2U);
    EXPECT_EQ(run.tests[1].result, "EXCPTFAIL");
    EXPECT_THAT(run.counts, ElementsAre(Label{"Number of tests", "2"}, Label{"EXCPTFAIL", "1"}));
    EXPECT_TRUE(tables.runs[1].tests.empty());
    EXPECT_TRUE(tables.runs[1].hasSummary);
    EXPECT_FALSE(tables.runs[2].hasSummary);
    EXPECT_EQ(rowResult(run, run.rows[0]), "ACCURWRN");
    EXPECT_EQ(rowResult(run, run.rows[1]), "");
    EXPECT_THROW(collectTables({directory.path / "none"}, false), TableError);

    const ReportData data = makeReport(tables);
    const std::string json = reportJson(data);
    EXPECT_THAT(json, HasSubstr("\"parameters\":{\"Len\":1},\"comment\":\"nLps=4 acc=9.0%\",\"loops\":4,"));
    const std::string page = reportPage(data, "A <b>", {std::nullopt, "gone"});
    EXPECT_THAT(page, HasSubstr("<title>A &lt;b&gt;</title>"));
    EXPECT_THAT(page, HasSubstr("No charts: gone"));
    EXPECT_THAT(page, HasSubstr(json)); // what the page shows is put together by its script
    EXPECT_THAT(page, testing::Not(HasSubstr("{{")));
}

TEST(Report, SingleCallsAreReadFromTheComment) {
    const std::string comment =
        "nLps=4 calls=300 least=50.0 median=60.5 99%=70 99.9%=71 most=800 interrupted=";
    const auto jsonOf = [](const std::string& text) {
        Collection tables;
        tables.runs = {runOf({1}, text)};
        return reportJson(makeReport(tables));
    };
    EXPECT_THAT(jsonOf(comment + "0 hist=299.0.1 first=900"),
                HasSubstr("\"calls\":{\"count\":300,\"least\":50,\"median\":60.5,\"percent99\":70,"
                          "\"permille999\":71,\"most\":800,\"interrupted\":0,\"apart\":true,"
                          "\"histogram\":[299,0,1]},\"first\":900,"));
    EXPECT_THAT(jsonOf(comment + "200 kept upto=9000 hist=300"),
                HasSubstr("\"interrupted\":200,\"apart\":false,\"longestInterrupted\":9000,"));
    for (const char* none : {"nCalls=50", "nLps=1 calls=?nocall", "calls take no time"})
        EXPECT_THAT(jsonOf(none), testing::Not(HasSubstr("\"calls\":{"))) << none;
}

// Worked by hand, or from the tables of Student's distribution.
TEST(Statistics, WorkedExamples) {
    const Estimate five = lowerMean(std::vector<double>{2, 100, 4, 1, 3}); // 1 2 3, winsorised 1 2 3 3 3
    EXPECT_DOUBLE_EQ(five.location, 2);
    EXPECT_DOUBLE_EQ(five.error, std::sqrt(3.2 / 6));
    EXPECT_DOUBLE_EQ(five.freedom, 2);
    const Estimate two = lowerMean(std::vector<double>{3, 1});
    EXPECT_DOUBLE_EQ(two.location, 2);
    EXPECT_DOUBLE_EQ(two.error, 1);

    EXPECT_NEAR(studentCdf(1, 1), 0.75, 1e-12);
    EXPECT_NEAR(studentCdf(-2, 2), 0.5 - 1 / std::sqrt(6.0), 1e-12);
    EXPECT_NEAR(studentQuantile(0.975, 10), 2.228139, 1e-6);
    EXPECT_NEAR(studentQuantile(0.95, 4), 2.131847, 1e-6);
    EXPECT_NEAR(studentQuantile(0.025, infinite), -1.959964, 1e-6);

    const Estimate change = difference({10, 3, 4}, {20, 4, 8});
    EXPECT_DOUBLE_EQ(change.location, 10);
    EXPECT_DOUBLE_EQ(change.error, 5);
    EXPECT_DOUBLE_EQ(change.freedom, 625 / (81 / 4.0 + 256 / 8.0));
    EXPECT_NEAR(pValue({1.959964, 1, infinite}), 0.05, 1e-6);
    EXPECT_EQ(pValue({0, 0, infinite}), 1);
    EXPECT_EQ(pValue({0.1, 0, infinite}), 0);
    EXPECT_NEAR(halfWidth({0, 2, 4}, 0.9), 2 * 2.131847, 1e-5);

    EXPECT_THAT(adjustedP(std::vector<double>{0.01, 0.04, 0.03, 0.005}),
                ElementsAre(testing::DoubleEq(0.02), testing::DoubleEq(0.04), testing::DoubleEq(0.04),
                            testing::DoubleEq(0.02)));
    EXPECT_DOUBLE_EQ(geometricMean(std::vector<double>{2, 8}), 4);
    EXPECT_EQ(geometricMean({}), 1);
}

TEST(Comparison, Verdicts) {
    struct Case {
        const char* what;
        std::vector<double> before, after;
        Verdict verdict;
        std::string comment = "nLps=4";
    };
    const Case cases[] = {
        {"repeated", {100, 101, 99, 100, 100}, {110, 111, 109, 110, 110}, Verdict::slower},
        {"the other way", {110, 111, 109, 110, 110}, {100, 101, 99, 100, 100}, Verdict::faster},
        {"alike", {100, 101, 99, 100, 100}, {101, 100, 100, 99, 101}, Verdict::same},
        {"a sure change within the threshold", {100, 100, 100}, {102, 102, 102}, Verdict::same},
        {"disturbed runs", {100, 130, 101, 99, 400}, {110, 140, 111, 140, 109}, Verdict::slower},
        {"noise", {100, 130, 80, 115, 95}, {110, 140, 90, 105, 125}, Verdict::cannotTell},
        {"single figures, close", {100}, {104}, Verdict::cannotTell},
        {"single figures, far", {100}, {130}, Verdict::slower},
        {"single figures, far, of bad accuracy", {100}, {130}, Verdict::cannotTell, "nLps=4 acc=30.0%"},
        {"single figures of good accuracy", {100}, {101}, Verdict::same, "nLps=4 acc=0.5%"},
        {"few digits", {2, 2, 2}, {3, 3, 3}, Verdict::cannotTell},
    };
    for (const Case& c : cases) {
        const Comparison result = compareRuns(runsOf(c.before, c.comment), runsOf(c.after, c.comment), {});
        ASSERT_EQ(result.rows.size(), 1U);
        EXPECT_STREQ(verdictName(result.rows[0].verdict), verdictName(c.verdict)) << c.what;
    }
}

TEST(Comparison, RunsThatMissedTheirAccuracyCountOnlyWhereNoneReachedIt) {
    const auto side = [](const std::vector<double>& reached, const std::vector<double>& missed) {
        std::vector<TableRun> runs = runsOf(reached);
        for (TableRun& run : runsOf(missed, "nLps=4 shared=40.0% acc=40.0%"))
            runs.push_back(std::move(run));
        return runs;
    };
    const std::vector<TableRun> calm = runsOf({100, 101, 99, 100, 100});
    const Comparison some = compareRuns(calm, side({101, 100}, {135, 137, 136}), {});
    EXPECT_STREQ(verdictName(some.rows[0].verdict), "same");
    EXPECT_EQ(some.rows[0].runsAfter, 2U);
    EXPECT_THAT(some.notes, ElementsAre(HasSubstr("3 figures that missed their accuracy")));
    std::vector<TableRun> unknown = runsOf({135, 137, 136}, "nLps=4 95%=unknown adds/clock=3.94");
    unknown.push_back(calm.front());
    EXPECT_EQ(compareRuns(calm, unknown, {}).rows[0].runsAfter, 1U);
    const Comparison one = compareRuns(calm, side({104}, {135, 137, 136, 138}), {});
    EXPECT_STREQ(verdictName(one.rows[0].verdict), "cannot tell"); // as any single figure
    const Comparison all = compareRuns(calm, side({}, {135, 137, 136, 135, 136}), {});
    EXPECT_STREQ(verdictName(all.rows[0].verdict), "cannot tell"); // though they agree
    EXPECT_EQ(all.rows[0].runsAfter, 5U);
    EXPECT_TRUE(all.notes.empty());
}

TEST(Comparison, DifferentClocksAreRefused) {
    const std::vector<TableRun> counter = runsOf({100, 101});
    const std::vector<TableRun> core =
        runsOf({130, 131}, "nLps=4 clocks=130 core/counter=1.30238 adds/clock=3.9");
    const std::vector<TableRun> mixed{counter[0], core[0]};
    EXPECT_EQ(compareRuns(core, core, {}).count(Verdict::slower), 0U);
    EXPECT_THROW(compareRuns(counter, core, {}), TableError);
    EXPECT_THROW(compareRuns(core, counter, {}), TableError);
    EXPECT_THROW(compareRuns(mixed, mixed, {}), TableError);
    EXPECT_NO_THROW(compareRuns(counter, core, {.time = true}));
}

TEST(Comparison, CountsOfInstructionsAreExact) {
    const ComparisonRules rules{.instructions = true};
    const auto judged = [&](const std::vector<double>& clocks, const char* before, const char* after) {
        const Comparison result = compareRuns(runsOf(clocks, before), runsOf({250, 90}, after), rules);
        return result.rows.empty() ? "not compared" : verdictName(result.rows[0].verdict);
    };
    const char* const counted = "nLps=4 acc=30.0% instr=200000 code=00000001";
    EXPECT_STREQ(judged({100}, counted, "nLps=8 instr=200000 steps=200100 code=00000001"), "same");
    EXPECT_STREQ(judged({100}, counted, "nLps=4 instr=200001 code=00000001"), "slower");
    EXPECT_STREQ(judged({100}, counted, "nLps=4 shared=40.0% instr=199999 code=00000001"), "faster");
    EXPECT_STREQ(judged({100}, counted, "nLps=4 instr>200000"), "not compared");
    EXPECT_STREQ(judged({100}, "nLps=4", "nLps=4 instr=?fault"), "not compared");

    std::vector<TableRun> unlike = runsOf({100}, "instr=7");
    for (TableRun& run : runsOf({100}, "instr=8"))
        unlike.push_back(run);
    EXPECT_STREQ(verdictName(compareRuns(runsOf({100}, "instr=7"), unlike, rules).rows[0].verdict),
                 "cannot tell");
}

TEST(Comparison, MatchesRowsAndSortsTheWorstFirst) {
    const std::string start = head + titles;
    const auto side = [&](const std::string& rows) { return readText(start + rows).runs; };
    const Comparison result = compareRuns(side("a,32s,-,1,-,-,inCache nLps=1,100,e,1,-\n"
                                               "a,32s,-,1,-,-,outofCache nLps=1,200,e,1,-\n"
                                               "b,-,-,1,-,-,nLps=1,100,e,1,-\nb,-,-,1,-,-,nLps=1,400,e,1,-\n"
                                               "c,-,-,1,-,-,nLps=1,-,e,1,-\nd,-,-,1,x,-,nLps=1,5,e,1,-\n"),
                                          side("b,-,-,1,-,-,nLps=1,200,e,1,-\nb,-,-,1,-,-,nLps=1,400,e,1,-\n"
                                               "a,32s,-,1,-,-,outofCache nLps=1,100,e,1,-\n"
                                               "a,32s,-,1,-,-,inCache nLps=1,100,e,1,-\n"
                                               "c,-,-,1,-,-,nLps=1,7,e,1,-\n"),
                                          {});
    const ParameterNames names{{"d", {"Len", "Kind"}}};
    std::vector<std::string> rows;
    for (const RowComparison& row : result.rows) {
        rows.push_back(row.key.function + " " + describeParameters(row.key, names) + " " +
                       verdictName(row.verdict));
    }
    EXPECT_THAT(rows, ElementsAre("b 1 slower", "a_32s 1 inCache cannot tell", "b 1 #2 cannot tell",
                                  "a_32s 1 outofCache faster"));
    EXPECT_NEAR(result.ratio, 1, 1e-12);
    ASSERT_EQ(result.functions.size(), 2U);
    EXPECT_EQ(result.functions[0].function, "b");
    EXPECT_NEAR(result.functions[0].ratio, std::sqrt(2.0), 1e-12);
    ASSERT_EQ(result.onlyBefore.size(), 1U);
    EXPECT_EQ(describeParameters(result.onlyBefore[0], names), "Len=1 Kind=x");
    ASSERT_EQ(result.onlyAfter.size(), 1U);
    EXPECT_EQ(result.onlyAfter[0].function, "c");
    EXPECT_THROW(compareRuns(side("a,-,-,1,-,-,x,1,e,1,-\n"), side("a,-,-,1,-,-,x,1,byte,1,-\n"), {}),
                 TableError);
}

// What the rules promise, on figures drawn with a known noise: alarms where nothing changed, and changes
// found.
TEST(Comparison, KeepsItsErrorRates) {
    std::mt19937 random(20);
    constexpr int rows = 12;
    constexpr int trials = 200;
    const auto draw = [&](double firstRow) {
        std::vector<TableRun> runs;
        std::normal_distribution<double> noise(0, 0.01);
        for (int run = 0; run < 5; ++run) {
            std::vector<double> figures;
            for (int row = 0; row < rows; ++row)
                figures.push_back(std::round(1e4 * (row == 0 ? firstRow : 1) * std::exp(noise(random))));
            runs.push_back(runOf(figures));
        }
        return runs;
    };
    int alarms = 0;
    int found = 0;
    for (int trial = 0; trial < trials; ++trial) {
        ComparisonRules anyChange;
        anyChange.threshold = 0;
        const Comparison nothing = compareRuns(draw(1), draw(1), anyChange);
        alarms += nothing.count(Verdict::slower) + nothing.count(Verdict::faster) > 0 ? 1 : 0;
        const Comparison slowed = compareRuns(draw(1), draw(1.1), {});
        found += slowed.rows[0].verdict == Verdict::slower && slowed.rows[0].key.function == "f0_32s" ? 1 : 0;
    }
    EXPECT_LE(alarms, trials * 8 / 100); // promised: 5 %
    EXPECT_GE(found, trials * 75 / 100); // five runs a side, a noise of 1 %, one row 10 % slower
}

TEST(Report, ChoosesTheAxisThatRowsGrowAlong) {
    struct Case {
        const char* what;
        std::vector<std::vector<std::string>> rows;
        std::vector<std::string> names;
        int axis; /**< -1: none */
        bool logarithmic;
        std::vector<std::size_t> lines;
        bool quantity = false;
    };
    const Case cases[] = {
        {"one row", {{"1", "x"}}, {"P1", "P2"}, -1, false, {}},
        {"doubled sizes", {{"8", "x"}, {"16", "x"}, {"64", "x"}}, {"P1", "P2"}, 0, true, {}, true},
        {"even steps",
         {{"8"}, {"16"}, {"24"}, {"32"}, {"40"}, {"48"}, {"56"}, {"64"}},
         {"P1"},
         0,
         false,
         {},
         true},
        {"codes one by one", {{"1"}, {"2"}, {"3"}}, {"mode"}, 0, false, {}},
        {"codes apart", {{"-1"}, {"1"}, {"9"}}, {"ScaleFactor"}, 0, false, {}},
        {"sizes one by one", {{"1"}, {"2"}, {"3"}}, {"Number of bands"}, 0, false, {}, true},
        {"a size that follows from another", {{"8", "4"}, {"16", "8"}}, {"P1", "P2"}, 0, false, {}},
        {"a product",
         {{"2", "1", "2"}, {"3", "1", "3"}, {"4", "2", "2"}, {"6", "2", "3"}},
         {"P1", "P2", "P3"},
         1,
         false,
         {2}},
        {"a name that says size",
         {{"1", "7"}, {"2", "7"}, {"3", "7"}, {"1", "8"}, {"2", "8"}, {"3", "8"}},
         {"mode", "Len"},
         1,
         false,
         {0}},
        {"names only", {{"short"}, {"long"}}, {"P1"}, 0, false, {}},
        {"no full grid",
         {{"s", "1"}, {"s", "4"}, {"l", "1"}, {"l", "4"}, {"l", "12"}},
         {"P1", "P2"},
         1,
         true,
         {0},
         true},
    };
    for (const Case& c : cases) {
        Collection tables;
        TableRun& run = tables.runs.emplace_back();
        for (const auto& cells : c.rows) {
            ResultRow& row = run.rows.emplace_back();
            row.function = "f";
            row.parameters = cells;
            row.clocks = 1;
        }
        tables.names["f"] = c.names;
        const FunctionView view = makeReport(tables).functions.at(0);
        EXPECT_EQ(view.axis ? static_cast<int>(view.axis->parameter) : -1, c.axis) << c.what;
        EXPECT_EQ(view.axis && view.axis->logarithmic, c.logarithmic) << c.what;
        EXPECT_EQ(view.axis && view.axis->quantity, c.quantity) << c.what;
        EXPECT_EQ(view.lines, c.lines) << c.what;
    }
}

TEST(Report, DomainsComeFromNames) {
    const std::pair<const char*, const char*> cases[] = {
        {"zorsDecodeTNS_AAC", "AAC"},
        {"zorsPredictCoef_SBR_C", "SBR"},
        {"zorsNoiselessDecoder_LC_AAC", "AAC"},
        {"zorsVLCEncodeEscBlock_MP3", "MP3"},
        {"zorsMDCTFwd", "MDCT"},
        {"zorsVQMainSelect", "VQ"},
        {"zorsFIRBlockOne", "FIR"},
        {"zorsPow34", "general"},
        {"zorsScale", "general"},
        {"x", "general"},
        {"", "general"},
        {"f_MP3_", "MP3"},
    };
    for (const auto& [name, domain] : cases)
        EXPECT_EQ(domainOf(name), domain) << name;
}

TEST(Json, IsValidWhateverTheText) {
    JsonText json;
    json.add("t", "\"\\\n</script>\xff\xc3\xa4");
    json.add("i", jsonNumber(infinite));
    json.addList("l", std::vector<double>{0.1, 2, -3e20, 9007199254740993.0}, jsonNumber);
    EXPECT_EQ(json.text(), "{\n\"t\": \"\\\"\\\\\\n\\u003c/script>\xEF\xBF\xBD\xc3\xa4\","
                           "\n\"i\": null,\n\"l\": [\n0.1,\n2,\n-3e+20,\n9.007199254740992e+15]\n}\n");
}
