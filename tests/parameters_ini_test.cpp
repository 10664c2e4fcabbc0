// The ini file.
#include "inisupport.h"
#include "parameters/bxinifile.h"
#include "testsupport.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

TEST_F(IniFile, LineForms) {
    put("ignored = 1\n"
        "// [comment]\n"
        "[Benchex]\n"
        "Len = 64 // bytes\r\n"
        "  spaced key\t=  a b = c \n"
        "\n"
        "bare\n"
        "url = http://x\n"
        "Len=128\n"
        "[ two ] rest=1\n"
        "k=1\n"
        "key=[x]\n"
        "in x\n"
        "[Benchex]\n"
        "again=[1\n"
        "len=lower");
    bxIniFile ini;
    ASSERT_TRUE(ini.open(name(), false));
    const struct {
        const char *section, *key, *value;
    } rows[] = {
        {"Benchex", "ignored", "none"}, {"Benchex", "Len", "128"},    {"Benchex", "spaced key", "a b = c"},
        {"Benchex", "bare", "~~~"},     {"Benchex", "url", "http:"},  {"two", "k", "1"},
        {"two", "rest", "none"},        {"x", "in x", "~~~"},         {"Benchex", "again", "[1"},
        {"Benchex", "len", "lower"},    {"Benchex", " Len\t", "128"}, {"benchex", "Len", "none"},
        {"comment", "k", "none"},       {"Benchex", "", "none"},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(ini.read(row.section, row.key, "none").c_str(), row.value)
            << row.section << "/" << row.key;
    EXPECT_TRUE(ini.sectionExist("x"));
    EXPECT_FALSE(ini.sectionExist("comment"));
    EXPECT_EQ(ini.getSectionValues("Benchex")->size(), 6);
    EXPECT_EQ(ini.getSectionValues("none"), nullptr);
}

TEST_F(IniFile, WritesBackInTheOrderFirstMet) {
    put("// head\n[b]\nk=1 // gone\nbare\n[a]\nz=2\n");
    bxIniFile ini;
    ASSERT_TRUE(ini.open(name(), true));
    ini.write("b", "new ", "long", "long|short");
    ini.write("b", "k", "3", "not written for a key that exists");
    ini.write("c", "", "x", "");
    ini.write("b", "alone");
    ini.write("a");
    ini.write("b", "new", "short", "other");
    ini.close();
    EXPECT_EQ(content(), "\n[b]\nk=3\nbare\nnew=short\t// long|short\nalone\n\n[a]\nz=2\n\n[c]\n");
    EXPECT_THAT(files(), ElementsAre("a.ini"));
}

TEST_F(IniFile, WhatStandsBesideASectionsNameIsKept) {
    const std::string once = "\n[x]\nA=[x]\nk=1\nB=[ x ]\n\n[1]\n# from [1]\nl=2\n";
    for (const std::string& before : {std::string("A=[x] // a\nk=1\nB=[ x ]\n# from [1]\nl=2\n"), once}) {
        put(before);
        bxIniFile ini;
        ASSERT_TRUE(ini.open(name(), true));
        EXPECT_TRUE(ini.close());
        EXPECT_EQ(content(), once);
    }
}

TEST_F(IniFile, ErasesKeysAndSections) {
    put("[a]\nk=1\nl=2\n[b]\nm=3\n");
    bxIniFile ini;
    ASSERT_TRUE(ini.open(name(), true));
    ini.deleteKey("a", "k");
    ini.deleteKey("none", "k");
    ini.deleteKey("a", "none");
    EXPECT_FALSE(ini.valueExist("a", "k"));
    EXPECT_TRUE(ini.valueExist("a", "l"));
    ini.write("a", "k", "4", "");
    ini.eraseSection("b");
    ini.eraseSection("none");
    EXPECT_EQ(ini.getSectionValues("b"), nullptr);
    ini.write("b", "n", "5", "");
    EXPECT_FALSE(ini.valueExist("b", "m"));
    ini.close();
    EXPECT_EQ(content(), "\n[a]\nl=2\nk=4\n\n[b]\nn=5\n");
}

TEST_F(IniFile, ReadingLeavesTheFileAlone) {
    const std::string text = "// head\n[a]\nk=1 // comment\n";
    put(text);
    {
        bxIniFile ini;
        ASSERT_TRUE(ini.open(name(), false));
        ini.write("a", "k", "2", "");
    }
    EXPECT_EQ(content(), text);
}

TEST_F(IniFile, MissingFile) {
    Capture listing(outErr);
    bxIniFile read;
    EXPECT_FALSE(read.open(name(), false));
    EXPECT_EQ(listing.text(), std::string("-- Can't open file ") + name().c_str() +
                                  " to read: \n   No such file or directory\n");
    EXPECT_FALSE(fs::exists(m_path));
    {
        bxIniFile written;
        EXPECT_TRUE(written.open(name(), true));
        EXPECT_TRUE(fs::exists(m_path)) << "created at once";
        written.write("s", "k", "v", "");
    }
    EXPECT_EQ(content(), "\n[s]\nk=v\n");
}

TEST_F(IniFile, WhatIsNoFileIsRefusedWithAMessage) {
    const std::string nowhere = (m_dir / "none" / "a.ini").string();
    for (const std::string& path : {m_dir.string(), nowhere}) {
        for (const bool writable : {false, true}) {
            Capture listing(outErr);
            bxIniFile ini;
            EXPECT_FALSE(ini.open(path.c_str(), writable));
            EXPECT_FALSE(ini.writable());
            EXPECT_THAT(listing.text(), StartsWith("-- Can't "));
            EXPECT_THAT(listing.text(), HasSubstr(path));
        }
    }
    EXPECT_TRUE(fs::is_directory(m_dir));
}

TEST_F(IniFile, RewriteKeepsPermissionsAndReplacesTheFile) {
    put("[a]\nk=1\n");
    ASSERT_EQ(chmod(m_path.c_str(), 0604), 0);
    std::ifstream before(m_path);
    bxIniFile ini;
    ASSERT_TRUE(ini.open(name(), true));
    ini.write("a", "k", "2", "");
    ini.close();
    EXPECT_EQ(content(), "\n[a]\nk=2\n");
    std::string line;
    std::getline(before, line);
    EXPECT_EQ(line, "[a]") << "the old file stays whole for whoever has it open";
    struct stat now {};
    ASSERT_EQ(stat(m_path.c_str(), &now), 0);
    EXPECT_EQ(now.st_mode & 0777U, 0604U);
}

TEST_F(IniFile, RewriteGoesThroughLinks) {
    put("[a]\nk=1\n");
    const fs::path soft = m_dir / "soft.ini";
    const fs::path hard = m_dir / "hard.ini";
    fs::create_symlink(m_path, soft);
    fs::create_hard_link(m_path, hard);
    int n = 2;
    for (const fs::path& link : {soft, hard}) {
        bxIniFile ini;
        ASSERT_TRUE(ini.open(link.c_str(), true));
        ini.write("a", "k", bxString() << n, "");
        ini.close();
        EXPECT_EQ(content(), "\n[a]\nk=" + std::to_string(n++) + "\n");
    }
    EXPECT_TRUE(fs::is_symlink(soft));
    EXPECT_EQ(fs::hard_link_count(m_path), 2U);
}

TEST_F(IniFile, FailedRewriteLeavesTheOldFileWhole) {
    const std::string text = "[a]\nk=1\n";
    put(text);
    bxIniFile ini;
    ASSERT_TRUE(ini.open(name(), true));
    for (int i = 0; i < 1000; ++i)
        ini.write("a", bxString("key") << i, "value", "");
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit full{4096, old.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    Capture listing(outErr);
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_FALSE(ini.close());
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(content(), text);
    EXPECT_THAT(files(), ElementsAre("a.ini")) << "nothing is left beside it";
    EXPECT_THAT(listing.text(), StartsWith(std::string("-- Can't write file ") + name().c_str() + ": "));
}

TEST_F(IniFile, TimeGrowsLikeTheNumberOfKeys) {
    using Clock = std::chrono::steady_clock;
    constexpr int keys = 50000;
    const std::string value(30, 'v');
    std::string text = "[Benchex]\n";
    for (int i = 0; i < keys; ++i)
        text += "some_key" + std::to_string(i) + "=" + value + "\n";
    put(text);
    const auto start = Clock::now();
    bxIniFile ini;
    ASSERT_TRUE(ini.open(name(), true));
    for (int i = keys - 1; i >= 0; --i)
        ASSERT_TRUE(ini.valueExist("Benchex", bxString("some_key") << i));
    ini.close();
    const auto seconds = std::chrono::duration<double>(Clock::now() - start).count();
    EXPECT_EQ(content(), "\n" + text);
    RecordProperty("milliseconds", static_cast<int>(seconds * 1000));
    EXPECT_LT(seconds, 10) << "a walk for each key would take minutes";
}

} // namespace
