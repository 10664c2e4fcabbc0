// The ini file, the -d values, and the order in which a parameter's value is sought.
#include "output/bxiostream.h"
#include "output/bxpaths.h"
#include "parameters/bxdefault.h"
#include "parameters/bxinifile.h"
#include "parameters/bxistream.h"
#include "parameters/bxiterator.h"
#include "parameters/bxmap.h"
#include "testsupport.h"
#include "timing/bxexception.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string contentOf(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/** A directory of its own for every test, with one ini file in it. */
class IniFile : public testing::Test {
  protected:
    IniFile() {
        std::string pattern = (fs::temp_directory_path() / "bxini.XXXXXX").string();
        m_dir = mkdtemp(pattern.data());
        m_path = m_dir / "a.ini";
    }
    ~IniFile() override { fs::remove_all(m_dir); }

    void put(const std::string& text) const { std::ofstream(m_path) << text; }
    bxString name() const { return m_path.c_str(); }
    std::string content() const { return contentOf(m_path); }
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_dir))
            names.push_back(entry.path().filename());
        return names;
    }

    fs::path m_dir;
    fs::path m_path;
};

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
    ini.updateFile();
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

TEST(DataList, LastSettingOfANameWins) {
    const struct {
        const char *text, *name, *value;
    } rows[] = {
        {"Len=64", "Len", "64"}, {" Len = 128 ", "Len", "128"}, {"len=1", "len", "1"},   {"Bare", "Bare", ""},
        {"Two=a=b", "Two", "a"}, {"Len=256", "Len", "256"},     {"Empty=", "Empty", ""},
    };
    bxDataList list;
    for (const auto& row : rows) {
        list.set(row.text);
        bxString value = "none";
        EXPECT_TRUE(list.get(row.name, value));
        EXPECT_STREQ(value.c_str(), row.value) << row.text;
    }
    list.set(" = 5");
    list.set("");
    bxString value = "kept";
    EXPECT_FALSE(list.get("", value));
    EXPECT_FALSE(list.get("LEN", value));
    EXPECT_STREQ(value.c_str(), "kept");
    EXPECT_EQ(list.size(), 5);
    EXPECT_STREQ((--list.end())->name.c_str(), "Empty");
    EXPECT_EQ(list.find("none"), list.end());
}

/** An input stream with its ini file and a console of given answers. */
class Resolution : public IniFile {
  protected:
    void answer(const std::string& lines) {
        std::ofstream(m_dir / "answers") << lines;
        m_in.setIStream(new i_stream((m_dir / "answers").c_str(), ioRead | ioNameAsGiven, false));
    }
    std::string get(const char* key, const char* deflt, const char* valid = "") {
        return m_in.getItemValue(key, deflt, "", valid).c_str();
    }

    bxIStream m_in;
};

TEST_F(Resolution, DataKeyThenIniThenConsoleThenDefault) {
    put("[Benchex]\nIni=2\nBoth=2\nEmpty=\nOther=[\n[Test]\nIni=3\n");
    EXPECT_EQ(get("Len", "1"), "1");
    EXPECT_EQ(m_in.source(), bxIStream::fromDefault);
    ASSERT_TRUE(m_in.setIniFile(name(), false));
    testing::internal::CaptureStdout();
    m_in.dataList().set("Both=4");
    m_in.dataList().set("Blank");
    answer("5\n\n 6 ");
    const struct {
        const char *key, *value;
        int source;
    } rows[] = {
        {"Both", "4", bxIStream::fromDataKey}, {"Ini", "2", bxIStream::fromIniFile},
        {"Blank", "", bxIStream::fromDataKey}, {"Empty", "5", bxIStream::fromConsole},
        {"Len", "1", bxIStream::fromDefault},  {"Len", " 6 ", bxIStream::fromConsole},
        {"Len", "1", bxIStream::fromDefault},  {"Len", "1", bxIStream::fromDefault},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(get(row.key, "1"), row.value) << row.key;
        EXPECT_EQ(m_in.source(), row.source) << row.key;
    }
    testing::internal::GetCapturedStdout();
    EXPECT_STREQ(m_in.setIniSection("Test").c_str(), "Benchex");
    EXPECT_EQ(get("Ini", "1"), "3");
    EXPECT_STREQ(m_in.setIniSection("Benchex").c_str(), "Test");
    m_in.setIStream(nullptr);
    EXPECT_EQ(get("Empty", "1"), "1");
    EXPECT_EQ(m_in.source(), bxIStream::fromDefault);
}

TEST_F(Resolution, QuestionShowsPromptAndDefault) {
    answer("\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(m_in.getItemValue("Len", "16", "Length {16|32}", "16|32"), "16");
    EXPECT_EQ(m_in.getItemValue("Len", "16", "", ""), "16");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n Length {16|32} [16] = \n Len [16] = ");
}

TEST_F(Resolution, UpdateWritesEveryValueFound) {
    put("[Benchex]\nLen=128\nMode=long\n");
    ASSERT_TRUE(m_in.setIniFile(name(), true));
    EXPECT_TRUE(m_in.updateIni());
    m_in.dataList().set("Len=64");
    bxIterator<int> len(0, "Len", "");
    bxMapDefault<int> kind(1, "Kind", "");
    kind[0] = "none";
    kind[1] = "all";
    Capture listing(outErr);
    len.fromIStream(m_in);
    EXPECT_EQ(m_in.source(), bxIStream::fromDataKey);
    kind.fromIStream(m_in);
    m_in.setIniSection("Test");
    kind.fromIStream(m_in);
    m_in.deleteIniFile();
    EXPECT_FALSE(m_in.updateIni());
    EXPECT_EQ(m_in.iniFile(), nullptr);
    EXPECT_EQ(content(), "\n[Benchex]\nLen=64\nMode=long\nKind=all\t// none|all\n"
                         "\n[Test]\nKind=all\t// none|all\n");
}

TEST_F(Resolution, NewIniFileReleasesTheOldOne) {
    ASSERT_TRUE(m_in.setIniFile(name(), true));
    get("Len", "7");
    bxPaths::m_inDir = m_dir.c_str() + bxString("/");
    Capture listing(outErr);
    EXPECT_FALSE(m_in.setIniFile("other.ini", false));
    bxPaths::m_inDir = "";
    EXPECT_EQ(content(), "\n[Benchex]\nLen=7\n");
    EXPECT_THAT(listing.text(), HasSubstr((m_dir / "other.ini").string()));
    EXPECT_NE(m_in.iniFile(), nullptr);
    EXPECT_FALSE(m_in.updateIni());
}

TEST_F(Resolution, DialogueIsShownWhateverTheLevel) {
    bxIterator<int> len(0, "Len", "");
    len.add(4);
    answer("1;2\nx\n");
    testing::internal::CaptureStdout();
    Capture listing(outErr);
    g_ostrm << PERF;
    len.fromIStream(m_in);
    EXPECT_EQ(listing.text(), " Len = 1; 2\n");
    EXPECT_EQ(g_ostrm.outLevel(), outErr);
    EXPECT_THROW(len.fromIStream(m_in), bxException);
    EXPECT_EQ(g_ostrm.outLevel(), outPerf) << "the level of the dialogue stays when it breaks off";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n Len [4] = \n Len [1; 2] = ");
    g_ostrm.setOutLevel(outErr);
    m_in.dataList().set("Len");
    EXPECT_THROW(len.fromIStream(m_in), bxException) << "an empty value is an empty list";
    g_ostrm << endMessage;
}

} // namespace
