// Levels of series, and builds put together to a history.
#include "history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/** Figures of some builds around 0, with a disturbed one now and then and four in a row at 40. */
std::vector<double> noisy(std::size_t builds, double noise, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0, noise);
    std::vector<double> figures(builds);
    for (std::size_t i = 0; i < builds; ++i) {
        figures[i] = normal(random) + (i % 17 == 9 ? 0.2 : 0);
        figures[i] += i >= 40 && i < 44 ? 0.1 : 0;
    }
    return figures;
}

class HistoryFiles : public testing::Test {
  protected:
    HistoryFiles() { fs::create_directories(m_directory); }
    ~HistoryFiles() override { fs::remove_all(m_directory); }
    fs::path write(const fs::path& name, const std::string& text) const {
        fs::create_directories((m_directory / name).parent_path());
        std::ofstream(m_directory / name) << text;
        return m_directory / name;
    }
    /** A table of two functions: f with two rows, g with one. */
    void writeTable(const fs::path& name, double f, double g, const std::string& comment = "nLps=4") const {
        const auto row = [&](const char* cells, double clocks) {
            return cells + comment + "," + std::to_string(clocks) + ",e,1,-\n";
        };
        write(name, "CPU,x\nFunction,Types,Descriptor,P1,P2,Comment,Clocks,per,Time (usec),MFlops\n" +
                        row("f,32s,-,8,-,", f) + row("f,32s,-,16,-,", 7 * f) + row("g,32s,-,8,-,", g));
    }
    const fs::path m_directory = fs::temp_directory_path() / ("benchex-history-" + std::to_string(getpid()));
};

} // namespace

TEST(Levels, StepsAreToldFromNoiseAndDisturbedFigures) {
    int alarms = 0;
    int found = 0;
    for (unsigned seed = 1; seed <= 100; ++seed) {
        std::vector<double> figures = noisy(100, 0.006, seed);
        alarms += findLevels(figures).size() > 1;
        for (std::size_t i = 70; i < figures.size(); ++i)
            figures[i] -= 0.03;
        const std::vector<Level> levels = findLevels(figures);
        if (levels.size() == 2 && levels[1].begin >= 68 && levels[1].begin <= 72) {
            ++found;
            EXPECT_NEAR(levels[1].at - levels[0].at, -0.03, 0.006) << seed;
        }
    }
    EXPECT_LE(alarms, 1);
    EXPECT_GE(found, 99);
}

TEST(Levels, WhatIsTooSmallOrTooShortIsNone) {
    const auto level = [](std::vector<double> figures) {
        std::vector<std::size_t> begins;
        for (const Level& each : findLevels(figures))
            begins.push_back(each.begin);
        return begins;
    };
    std::vector<double> figures(20, 1.0);
    EXPECT_THAT(level({}), ElementsAre());
    EXPECT_THAT(level({1, 2}), ElementsAre(0U));
    EXPECT_THAT(level(figures), ElementsAre(0U));
    for (std::size_t i = 17; i < 20; ++i)
        figures[i] = 1.1;
    EXPECT_THAT(level(figures), ElementsAre(0U)) << "three builds";
    figures[15] = figures[16] = 1.1;
    EXPECT_THAT(level(figures), ElementsAre(0U, 15U));
    for (std::size_t i = 15; i < 20; ++i)
        figures[i] = 1.014;
    EXPECT_THAT(level(figures), ElementsAre(0U)) << "smaller than is told";
}

TEST_F(HistoryFiles, BuildsOfADirectoryComeInTheOrderOfTheirNumbers) {
    for (int build = 1; build <= 12; ++build)
        writeTable("build" + std::to_string(build) + "/night.csv", build > 6 ? 110 : 100, 50 + build % 2);
    const BuildList list = readBuilds({m_directory}, false);
    ASSERT_EQ(list.builds.size(), 12U);
    EXPECT_EQ(list.last, std::vector<fs::path>{m_directory / "build12"});
    const History history = makeHistory(list.builds, SeriesOf::functions);
    const std::string text = historyText(history);
    EXPECT_THAT(text, HasSubstr("12 builds, from build1 to build12; 2 series"));
    EXPECT_THAT(text, HasSubstr("+10.0 %  f_32s  between build6 and build7\n"));
    ASSERT_EQ(stepsOf(history).size(), 1U);
    EXPECT_EQ(history.series[0].rows, 2U);
    EXPECT_NEAR(*history.series[0].values[11], std::log(1.1), 1e-9);
    EXPECT_EQ(makeHistory(list.builds, SeriesOf::rows).series.size(), 3U);

    // Of a night that went wrong the others are not in want, unless it was asked for by name.
    writeTable("build7/night.csv", 900, 900, "95%=unknown nLps=4");
    write("build8/night.csv", "nothing\n");
    const BuildList less = readBuilds({m_directory}, false);
    EXPECT_EQ(less.builds.size(), 10U);
    EXPECT_THAT(less.notes, ElementsAre(HasSubstr("build8/night.csv"), HasSubstr("accuracy: build7")));
    EXPECT_THROW((void)readBuilds({m_directory / "build1", m_directory / "build8"}, false), TableError);
    const History first =
        makeHistory(readBuilds({m_directory / "build1"}, false).builds, SeriesOf::functions);
    EXPECT_THAT(historyText(first), HasSubstr("1 build, from")) << "the first night";
    fs::create_directories(m_directory / "none");
    EXPECT_THROW((void)readBuilds({m_directory / "none"}, false), TableError);
}

TEST_F(HistoryFiles, PairsContinueWhereTheOnesBeforeEndedAndTellAtOnce) {
    const auto pair = [&](const std::string& name, double ratio, const char* verdict, const char* more = "") {
        return write(name,
                     R"({"schema": "benchex-pair-1", "rows": [{"function": "f", "parameters": "Len=8", )"
                     R"("verdict": ")" +
                         std::string(verdict) + R"(", "ratio": )" + std::to_string(ratio) + more + "}]}");
    };
    // What was not proven, or is the same code in another place, counts as no change; proven ones too small
    // to be told count together.
    const std::vector<fs::path> files{
        pair("a.json", 1.03, "slower"), pair("b.json", 1.02, "slower", R"(, "sameCode": true)"),
        pair("c.json", 0.99, "faster"), pair("d.json", 0.99, "faster"),
        pair("e.json", 1.009, "same"),  pair("f.json", 1.05, "slower")};
    const BuildList list = readBuilds(files, false);
    ASSERT_EQ(list.builds.size(), 7U);
    EXPECT_EQ(list.builds[0].label, "before a");
    std::vector<double> ratios;
    for (const HistoryBuild& build : list.builds)
        ratios.push_back(std::exp(build.figures.at(0).logarithm));
    EXPECT_THAT(ratios, testing::Pointwise(testing::DoubleNear(1e-9),
                                           {1.0, 1.03, 1.03, 1.0197, 1.009503, 1.009503, 1.05997815}));
    StepRules rules;
    rules.proven = list.pairs;
    EXPECT_THAT(historyText(makeHistory(list.builds, SeriesOf::functions, rules)),
                HasSubstr("    +5.0 %  f  between e and f\n"
                          "    -2.0 %  f  between c and d\n"
                          "    +3.0 %  f  between before a and a\n"));
    writeTable("t.csv", 1, 1);
    EXPECT_THROW((void)readBuilds({files[0], m_directory / "t.csv"}, false), TableError);
    EXPECT_THROW((void)readBuilds({files[0], write("d.json", "{\"schema\": \"other\"}")}, false), TableError);
    EXPECT_THROW((void)readBuilds({files[0], write("e.json", "{")}, false), TableError);
}
