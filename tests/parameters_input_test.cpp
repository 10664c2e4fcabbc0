// The -d values, and the order in which a parameter's value is sought.
#include "inisupport.h"
#include "output/bxiostream.h"
#include "output/bxpaths.h"
#include "parameters/bxdefault.h"
#include "parameters/bxistream.h"
#include "parameters/bxiterator.h"
#include "parameters/bxmap.h"
#include "parameters/bxstepiterator.h"
#include "parameters/bxunused.h"
#include "testsupport.h"
#include "timing/bxexception.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

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
    answer("5\r\n \r\n 6 ");
    const struct {
        const char *key, *value;
        int source;
    } rows[] = {
        {"Both", "4", bxIStream::fromDataKey},  {"Ini", "2", bxIStream::fromIniFile},
        {"Blank", "1", bxIStream::fromDataKey}, {"Empty", "5", bxIStream::fromConsole},
        {"Len", "1", bxIStream::fromDefault},   {"Len", "6", bxIStream::fromConsole},
        {"Len", "1", bxIStream::fromDefault},   {"Len", "1", bxIStream::fromDefault},
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

TEST_F(Resolution, UpdateWritesOnlyWhatWasAccepted) {
    const struct {
        const char *before, *given, *after;
    } rows[] = {
        {"", "Kind=most", "\n[Benchex]\n"},
        {"Kind=all", "Kind=most", "\n[Benchex]\nKind=all\n"},
        {"Kind=none", "Kind=a", "\n[Benchex]\nKind=a\t// none|all\n"},
        {"", "Len=8[x]", "\n[Benchex]\nLen=8\n"},
        {"", "Len=8 // 9", "\n[Benchex]\nLen=8\n"},
        {"", "Len=8;9", "\n[Benchex]\nLen=8;9\n"},
        {"", "Odd=", "\n[Benchex]\n"},
    };
    for (const auto& row : rows) {
        put(std::string("[Benchex]\n") + row.before + "\n");
        ASSERT_TRUE(m_in.setIniFile(name(), true));
        m_in.dataList().removeAll();
        m_in.dataList().set(row.given);
        bxMapDefault<int> kind(1, "Kind", "");
        kind[0] = "none";
        kind[1] = "all";
        bxIterator<int> len(0, "Len", "");
        len.add(1);
        bxMapDefault<int> odd(1, "Odd", "");
        odd[1] = "1//2";
        Capture listing(outErr);
        for (bxParameter* parm : {static_cast<bxParameter*>(&kind), static_cast<bxParameter*>(&len),
                                  static_cast<bxParameter*>(&odd)})
            if (bxString(row.given).find(parm->name()) == 0)
                try {
                    parm->fromIStream(m_in);
                } catch (const bxException&) {}
        EXPECT_TRUE(m_in.deleteIniFile());
        EXPECT_EQ(content(), row.after) << row.given;
    }
}

TEST_F(Resolution, WhatNothingAsksForIsNamed) {
    put("[Benchex]\nMethod=1\nMehtod=2\n[zorsCopy]\nLen=1\nLenn=2\n[zorsOther]\nx=1\n[zorsCopi]\ny=1\n");
    ASSERT_TRUE(m_in.setIniFile(name(), false));
    for (const char* text : {"len=1", "Len=2", "NumLoops=3", "Window=4"})
        m_in.dataList().set(text);
    m_in.expect("NumLoops");
    get("Method", "0");
    m_in.setIniSection("zorsCopy");
    get("Len", "0");
    bxStringList sections;
    for (const char* section : {"zorsCopy", "zorsOther"})
        sections.push_back(section);
    std::string lines;
    for (const bxString& line : bxFindUnused(m_in, sections).lines)
        lines += line.c_str();
    const std::string file = std::string("(ini file ") + name().c_str() + ", line ";
    const std::string unused = " is not used: nothing in this run asks for ";
    EXPECT_EQ(lines, "-- -dlen=1" + unused + "len, the nearest name is Len\n" + //
                         "-- -dNumLoops=3 is not used in this run\n" +          //
                         "-- -dWindow=4" + unused + "Window\n" +                //
                         "-- Mehtod of section [Benchex] " + file + "3)" + unused +
                         "Mehtod, the nearest name is Method\n" + //
                         "-- Lenn of section [zorsCopy] " + file + "6)" + unused +
                         "Lenn, the nearest name is Len\n" + //
                         "-- Section [zorsCopi] " + file + "9)" + unused +
                         "zorsCopi, the nearest name is zorsCopy\n");
}

TEST_F(Resolution, RefusalSaysWhereTheTextStands) {
    bxEnumIterator<int> rate(0, "Rate", "");
    rate.add(8);
    rate.initValidation();
    bxStepIterator<int> len(0, "Len", "");
    const struct {
        bxParameter* parm;
        const char *data, *ini, *typed;
        std::string refusal;
    } rows[] = {
        {&rate, "Rate=9", "", nullptr, "Invalid value of Rate = 9 (from -d; allowed: 8)"},
        {&rate, "", "[Benchex]\n\nRate=x", nullptr,
         std::string("Invalid value of Rate = x (from ini file ") + name().c_str() + ", line 3; allowed: 8)"},
        {&rate, "", "", "7\r\n", "Invalid value of Rate = 7 (from console; allowed: 8)"},
        {&len, "Len=2147483648", "", nullptr,
         "Invalid value of Len = 2147483648 (from -d; allowed: whole numbers from -2147483648 to "
         "2147483647)"},
        {&len, "Len=8 1 *2", "", nullptr,
         "Conflict between iterator limits and operation (Len = 8 1 *2, from -d)"},
        {&len, "Len=;", "", nullptr, "Empty iterator definition (Len = ;, from -d)"},
        {&len, "", "", nullptr, "Empty iterator definition (Len = , the default)"},
        {&len, "Len=x 9 +1", "", nullptr, "Invalid first value = x (Len = x 9 +1, from -d)"},
    };
    for (const auto& row : rows) {
        m_in.dataList().removeAll();
        m_in.dataList().set(row.data);
        put(row.ini);
        ASSERT_TRUE(m_in.setIniFile(name(), false));
        m_in.setIStream(nullptr);
        if (row.typed)
            answer(row.typed);
        testing::internal::CaptureStdout();
        std::string refusal;
        try {
            row.parm->fromIStream(m_in);
        } catch (const bxException& e) {
            refusal = e.info();
        }
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(refusal, row.refusal);
    }
}

TEST_F(Resolution, PartReadIsSaidOnce) {
    bxStepIterator<int> len(0, "Len", "");
    bxIterator<ZoriSize> size({1, 1}, "Size", "");
    const struct {
        bxParameter* parm;
        const char *text, *read;
    } rows[] = {
        {&len, "12abc", "12"},    {&len, "16 32 64", "16"},         {&len, "1e6", "1"},
        {&len, "0.5; 3", "0; 3"}, {&len, "1 5x +2", "1; 5; +2"},    {&len, "0x", "0"},
        {&size, "8x4 6", "8x4"},  {&len, " 0x10 ; +7;-3", nullptr}, {&size, "8; 6X5", nullptr},
        {&len, "1 9\t+2", "1"},
    };
    for (const auto& row : rows) {
        m_in.dataList().set(row.parm->name(), row.text);
        Capture listing(outErr);
        for (int i = 0; i < 2; ++i)
            row.parm->fromIStream(m_in);
        const std::string name = row.parm->name().c_str();
        const std::string said = row.read ? "-- Warning: only the beginning was read of " + name + " = " +
                                                row.text + ", from -d: " + row.read + "\n"
                                          : "";
        EXPECT_EQ(listing.text(), said);
    }
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
    EXPECT_EQ(g_ostrm.outLevel(), outErr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n Len [4] = \n Len [1; 2] = ");
    m_in.dataList().set("Len=;");
    EXPECT_THROW(len.fromIStream(m_in), bxException);
    g_ostrm << endMessage;
}

} // namespace
