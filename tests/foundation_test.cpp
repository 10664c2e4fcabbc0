#include "foundation/bxdecimal.h"
#include "foundation/bxlist.h"
#include "foundation/bxnames.h"
#include "foundation/bxnearest.h"
#include "foundation/bxparse.h"
#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<std::string> texts(const bxList<bxString>& list) {
    std::vector<std::string> out;
    for (const bxString& text : list)
        out.emplace_back(text.view());
    return out;
}

TEST(String, NullAndNegativeLengthsAreEmpty) {
    bxString text = static_cast<const char*>(nullptr);
    EXPECT_TRUE(text.empty());
    text = "abc";
    text.resize(5, 'x');
    EXPECT_STREQ(text.c_str(), "abcxx");
    text.resize(-3, 'x');
    EXPECT_TRUE(text.empty());
}

TEST(String, FindAndCut) {
    const bxString text = "abcabc";
    EXPECT_EQ(text.find("bc"), 1);
    EXPECT_EQ(text.find("bc", 2), 4);
    EXPECT_EQ(text.find("bc", 5), -1);
    EXPECT_EQ(text.find("", 3), 3);
    EXPECT_EQ(text.rfind("bc"), 4);
    EXPECT_EQ(text.rfind(""), 6);
    EXPECT_EQ(text.rfind("abcabcd"), -1);
    EXPECT_STREQ(text.substr(4).c_str(), "bc");
    EXPECT_STREQ(text.substr(7).c_str(), "");
    EXPECT_STREQ(text.substr(4, 10).c_str(), "bc");
    EXPECT_STREQ(text.substr(1, 0).c_str(), "");
    EXPECT_STREQ(text.substr(1, INT_MIN).c_str(), "");
}

TEST(String, Compare) {
    struct {
        const char *a, *b;
        int order;
    } const rows[] = {{"", "abc", -3},   {"abc", "", 3},  {"abd", "abc", 1}, {"abc", "abd", -1},
                      {"ab", "abc", -1}, {"abc", "a", 2}, {"", "", 0},       {"\x80", "a", -1}};
    for (const auto& row : rows)
        EXPECT_EQ(bxString(row.a).compare(row.b), row.order) << row.a << " " << row.b;
}

TEST(String, TrimAndLower) {
    for (const auto& [text, trimmed] : {std::pair(" \t\ra b\r\t ", "a b"), {" \t\r", ""}, {"\n a", "\n a"}}) {
        bxString word = text;
        word.trim();
        EXPECT_STREQ(word.c_str(), trimmed);
    }
    EXPECT_STREQ(bxString("AZ@[\xc4").toLower().c_str(), "az@[\xc4");
}

TEST(String, FileNames) {
    struct {
        const char *path, *dir, *name, *title;
    } const rows[] = {{"a/b\\c.txt", "a/b\\", "c.txt", "c"},
                      {"a\\b/c", "a\\b/", "c", "c"},
                      {"a.b.c", "", "a.b.c", "a.b"},
                      {"dir.x/name", "dir.x/", "name", "name"},
                      {"dir/", "dir/", "", ""},
                      {"", "", "", ""}};
    for (const auto& row : rows) {
        const bxString path = row.path;
        EXPECT_STREQ(path.getFileDir().c_str(), row.dir);
        EXPECT_STREQ(path.getFileName().c_str(), row.name);
        EXPECT_STREQ(path.getFileTitle().c_str(), row.title);
    }
}

TEST(Conversion, ValueIntoText) {
    const auto text = [](auto value) { return std::string((bxString() << value).view()); };
    EXPECT_EQ(text(INT_MIN), "-2147483648");
    EXPECT_EQ(text(LLONG_MIN), "-9223372036854775808");
    EXPECT_EQ(text(ULLONG_MAX), "18446744073709551615");
    EXPECT_EQ(text(static_cast<unsigned char>(200)), "200");
    EXPECT_EQ(text('x') + text("y") + text(true) + text(false), "xyyesno");
    EXPECT_EQ(text(2.0), "2");
    EXPECT_EQ(text(1234567.0), "1.23e+06");
    EXPECT_EQ(text(0.1F), "0.1");
    EXPECT_EQ(text(static_cast<void*>(nullptr)), "NULL");
}

/** The C library's text of a number. */
std::string printed(const char* format, auto... values) {
    std::array<char, 400> text;
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

TEST(Decimal, AsTheCLibraryPrints) {
    std::vector<double> values = {0,         -0.0,  0.5,    1.5,      2.5,       0.125, 12.5,   112.5,
                                  999.4,     999.5, 999.6,  1000,     99.95,     9.995, 0.9995, 1e-4,
                                  9.9995e-5, 1e-5,  0.1,    0.01,     0.001,     1e22,  1e9,    999999999.5,
                                  -3.25,     1e300, 5e-324, INFINITY, -INFINITY, NAN};
    std::mt19937_64 random(15);
    for (int i = 0; i < 5000; ++i) {
        const double shorter =
            static_cast<double>(random() % 100000) / std::pow(10, static_cast<double>(random() % 8));
        values.insert(values.end(),
                      {shorter, std::bit_cast<double>(random()), std::nextafter(shorter, 0), shorter + 0.5});
    }
    for (const double value : values) {
        ASSERT_EQ(bxDecimal(value).view(), printed("%.3g", value));
        for (int decimals = 0; decimals <= 6; ++decimals)
            ASSERT_EQ(bxDecimal::fixed(value, decimals).view(), printed("%.*f", decimals, value)) << decimals;
        ASSERT_EQ(bxDecimal::scientific(value, 3).view(), printed("%.3e", value));
    }
}

TEST(Conversion, AddressIsSigned) {
    EXPECT_STREQ((bxString() << reinterpret_cast<void*>(std::uintptr_t{0xABC0})).c_str(), "ABC0");
    EXPECT_STREQ((bxString() << reinterpret_cast<void*>(~std::uintptr_t{0xF})).c_str(), "FFFFFFFFFFFFFFF0");
}

TEST(Conversion, TextIntoInteger) {
    struct {
        const char* text;
        long long value;
        bool failed;
    } const rows[] = {{"0x1F", 31, false}, {"0X1f", 31, false}, {"12abc", 12, false}, {"abc", 7, true},
                      {"", 7, false},      {"  ", 7, false},    {" -5", -5, false},   {"x", 7, true},
                      {"0", 0, false},     {"-", 7, true}};
    for (const auto& row : rows) {
        const bxString text = row.text;
        int narrow = 7;
        narrow << text;
        EXPECT_EQ(narrow, row.value) << row.text;
        EXPECT_EQ(text.failed(), row.failed) << row.text;
        long long wide = 7;
        wide << text;
        EXPECT_EQ(wide, row.value) << row.text;
        EXPECT_EQ(text.failed(), row.failed) << row.text;
    }
    const bxString large = "2147483648";
    int narrow = 7;
    EXPECT_EQ(narrow << large, 7);
    EXPECT_TRUE(large.failed()) << "it is no int";
    long long wide = 0;
    EXPECT_EQ(wide << bxString("-9223372036854775808"), LLONG_MIN);
    EXPECT_EQ(wide << bxString("0x123456789AB"), 0x123456789AB);
}

TEST(Conversion, TextIntoReal) {
    double value = 3;
    EXPECT_EQ(value << bxString("1e-3x"), 1e-3);
    const bxString bad = "one";
    float narrow = 0.1F;
    EXPECT_EQ(narrow << bad, 0.1F);
    EXPECT_TRUE(bad.failed());
}

TEST(Conversion, TextIntoBool) {
    for (const char* text : {"Yes", " TRUE ", "1", "t", "yup"}) {
        bool value = false;
        const bxString word = text;
        EXPECT_TRUE(value << word) << text;
        EXPECT_FALSE(word.failed()) << text;
    }
    for (const auto& [text, failed] : {std::pair("No", false),
                                       {"false", false},
                                       {"0", false},
                                       {"maybe", true},
                                       {"", true},
                                       {" ", true},
                                       {"10", true},
                                       {"00", true}}) {
        bool value = true;
        const bxString word = text;
        EXPECT_FALSE(value << word) << text;
        EXPECT_EQ(word.failed(), failed) << text;
    }
}

TEST(Conversion, OnlyConversionsTouchTheFlag) {
    bxString text = "abc";
    int value = 0;
    value << text;
    text = bxString("12");
    text << '3';
    EXPECT_TRUE(text.failed());
    EXPECT_FALSE(bxString(text).failed());
    EXPECT_EQ(value << text, 123);
    EXPECT_FALSE(text.failed());
}

TEST(Tables, Flags) {
    const int flags[] = {1, 2, 6};
    const bxString names[] = {"kvOne", "kvTwo", "kvTwoAndFour"};
    EXPECT_STREQ(bxString::flagString(3, flags, names, 3).c_str(), "kvOne|kvTwo|kvTwoAndFour");
    EXPECT_STREQ(bxString::flagString(8, flags, names, 3).c_str(), "8");
    struct {
        const char* text;
        int value;
        bool failed;
    } const rows[] = {
        {"one|two", 3, false}, {"KVTWOA", 6, false}, {"tw", 2, false}, {"one,zwei; two", 3, true},
        {"", 0, false},        {"1", 0, true},       {"kv", 1, false}};
    for (const auto& row : rows) {
        const bxString text = row.text;
        EXPECT_EQ(bxString::flagValue(text, flags, names, 3, 2), row.value) << row.text;
        EXPECT_EQ(text.failed(), row.failed) << row.text;
    }
}

TEST(Tables, Enumerations) {
    const int values[] = {5, 9};
    const bxString names[] = {"mono", "multi"};
    EXPECT_STREQ(bxString::enumString(9, values, names, 2).c_str(), "multi");
    EXPECT_STREQ(bxString::enumString(-1, values, names, 2).c_str(), "-1");
    bxString text = "m";
    EXPECT_EQ(bxString::enumValue(text, values, names, 2, 0), 5);
    EXPECT_EQ(bxString::enumValue("Mu", values, names, 2, 0), 9);
    EXPECT_EQ(bxString::enumValue("lti", values, names, 2, 2), 9);
    text = "multiple";
    EXPECT_EQ(bxString::enumValue(text, values, names, 2, 0), 0);
    EXPECT_TRUE(text.failed());
}

TEST(Tables, SkippingMoreThanTheNameFitsOnlyTheEmptyWord) {
    EXPECT_FALSE(fitString("x", "ab", 5));
    EXPECT_TRUE(fitString("", "ab", 5));
}

TEST(Nearest, AFewLettersApart) {
    bxStringList names;
    for (const char* name : {"NumLoops", "NumCalls", "Len", "Order"})
        names.push_back(name);
    for (const auto& [word, nearest] : {std::pair("numloop", "NumLoops"),
                                        {"NumCall", "NumCalls"},
                                        {"Lne", ""},
                                        {"Lens", "Len"},
                                        {"Ordre", ""},
                                        {"oder", "Order"},
                                        {"", ""},
                                        {"Window", ""}})
        EXPECT_STREQ(bxNearestName(word, names).c_str(), nearest) << word;
}

TEST(Parse, Words) {
    using Words = std::vector<std::string>;
    struct {
        const char *text, *separators;
        Words words;
    } const rows[] = {
        {"a, b,,c", ", ", {"a", "b", "c"}},
        {", ,", ", ", {}},
        {"", " ", {}},
        {"x=\"a b\" y", " ", {"x=\"a b\"", "y"}},
        {"\"a b\" z", " ", {"\"a b\"", "z"}},
        {"a\"\"\"\"b", " ", {"a\"b"}},
        {"\"open to the end", " ", {"\"open to the end"}},
        {"a\"b c\"d", "\" ", {"a", "b", "c", "d"}},
        // A quote right behind the opening one leaves the stretch open.
        {"\"\" b\" c", " ", {"\" b\"", "c"}},
    };
    for (const auto& row : rows) {
        bxStringList words;
        words.push_back("old");
        EXPECT_EQ(bxString(row.text).parse(words, row.separators), static_cast<int>(row.words.size()))
            << row.text;
        EXPECT_EQ(texts(words), row.words) << row.text;
    }
}

TEST(Parse, LeadingWords) {
    bxString w1 = "old", w2 = "old", w3 = "old";
    EXPECT_EQ(bxString("a b c d").parse(w1, w2, " "), 4);
    EXPECT_EQ(w1 + w2, "ab");
    EXPECT_EQ(bxString("e").parse(w1, w2, w3, " "), 1);
    EXPECT_EQ(w1 + "," + w2 + "," + w3, "e,,");
}

/** A list of pairs (key, order of arrival). */
using Pairs = bxList<std::pair<int, int>>;

bool lessKey(std::pair<int, int>& a, std::pair<int, int>& b) {
    return a.first < b.first;
}

TEST(List, MergeKeepsOwnElementsFirst) {
    Pairs mine, other;
    for (const int key : {1, 3, 3})
        mine.push_back({key, 0});
    for (const int key : {0, 1, 3, 4})
        other.push_back({key, 1});
    mine.merge(other, lessKey);
    EXPECT_TRUE(other.empty());
    const Pairs::value_type expected[] = {{0, 1}, {1, 0}, {1, 1}, {3, 0}, {3, 0}, {3, 1}, {4, 1}};
    EXPECT_TRUE(std::equal(mine.begin(), mine.end(), std::begin(expected), std::end(expected)));
    mine.merge(mine, lessKey);
    EXPECT_EQ(mine.size(), 7);
}

/** Built during static initialisation from the name tables. */
const bxString s_names = RndStr[1] + HintStr[2] + CmpStr[4] + FlagStr[3];

TEST(Names, AreThereForStaticInitialisers) {
    EXPECT_STREQ(s_names.c_str(), "nearaccurateGTnodivByAny");
}

} // namespace
