// Parameters, lists, ranges and named values: text forms, sequences, listing and table cells.
#include "parameters/bxdefault.h"
#include "parameters/bxistream.h"
#include "parameters/bxiterator.h"
#include "parameters/bxmap.h"
#include "parameters/bxstepiterator.h"
#include "testsupport.h"
#include "timing/bxexception.h"

#include <gmock/gmock.h>

#include <csignal>
#include <string>
#include <unistd.h>
#include <vector>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

/** One pass over the values of an iterator, cut after 100. */
template <class Iterator>
auto pass(Iterator& iterator) {
    std::vector<decltype(iterator.value())> values;
    for (bool more = iterator.firstValue(); more && values.size() < 100; more = iterator.nextValue())
        values.push_back(iterator.value());
    return values;
}

/** What `translate` complains of; empty when it takes the text. */
std::string complaint(bxParameter& parm, const char* text) {
    try {
        parm.translate(text);
        return "";
    } catch (const bxException& e) {
        return e.info();
    }
}

enum Shape { round, square, squareish };

/** A list of shapes with names. */
struct ShapeIterator : bxMapIterator<Shape> {
    ShapeIterator() : bxMapIterator<Shape>(round, "Shape", "") {
        (*this)[square] = "long";
        (*this)[squareish] = "longstart";
        (*this)[round] = "short";
    }
};

TEST(Parameter, PlainValueIsOneValuePerPass) {
    bxDefault<int> parm(7, "Len", "");
    EXPECT_THAT(pass(parm), ElementsAre(7));
    EXPECT_THAT(pass(parm), ElementsAre(7));
    EXPECT_TRUE(parm.firstValue());
    EXPECT_FALSE(parm.nextValue());
    parm.resetIterator();
    EXPECT_TRUE(parm.nextValue());
}

TEST(Parameter, ReadsIntegersAndKeepsTheValueOtherwise) {
    bxDefault<int> parm(7, "Len", "");
    EXPECT_EQ(complaint(parm, "0x40"), "");
    EXPECT_EQ(parm.value(), 64);
    EXPECT_STREQ(parm.description().c_str(), "Len = 64");
    for (const char* wrong : {"abc", "2147483648", "-2147483649", "0x80000000", "99999999999999999999"})
        EXPECT_EQ(complaint(parm, wrong), std::string("Invalid value of Len = ") + wrong);
    EXPECT_EQ(parm.value(), 64);
    EXPECT_EQ(complaint(parm, ""), "");
    EXPECT_EQ(parm.value(), 0);
}

TEST(Parameter, PromptsWithItsNameAndTheAllowedValues) {
    bxDefault<int> plain(0, "", "");
    plain.setName("Len");
    EXPECT_STREQ(plain.prompt().c_str(), "Len");
    plain.setPrompt("Length, elements");
    EXPECT_STREQ(plain.prompt().c_str(), "Length, elements");
    bxMapDefault<bool> named(true, "By", "Count by");
    named[true] = "byte";
    named[false] = "element";
    EXPECT_STREQ(named.prompt().c_str(), "Count by {byte|element}");
}

TEST(Parameter, TableCells) {
    bxDefault<int> parm(5, "Len", "");
    bxDefault<int> nameless(5, "", "");
    parm.addDeprecated(3, "three");
    parm.addDeprecated(5, "five");
    TableCapture table;
    parm.toCStream(g_cstrm);
    nameless.toCStream(g_cstrm);
    parm.setOutputFlags(bxParameter::quoted);
    parm.toCStream(g_cstrm);
    EXPECT_TRUE(parm.setDeprecatedFlag(true));
    parm.toCStream(g_cstrm);
    EXPECT_FALSE(parm.setDeprecatedFlag(false));
    parm.setValue(4);
    EXPECT_FALSE(parm.setDeprecatedFlag(true));
    parm.toCStream(g_cstrm);
    parm.nameToCStream(g_cstrm);
    g_cstrm << "\n";
    EXPECT_EQ(table.text(), "5,-, \"5\",five, \"4\",Len\n");
    EXPECT_TRUE(parm.isDeprecatedParm());
    EXPECT_FALSE(nameless.isDeprecatedParm());
}

TEST(Parameter, FixedColumnTakesCellAndHeading) {
    struct Fixed : bxDefault<int> {
        using bxDefault<int>::bxDefault;
        int colmIndex() const override { return 1; }
    } parm(5, "Len", "");
    TableCapture table;
    g_cstrm << "a"
            << "b"
            << "c";
    parm.toCStream(g_cstrm);
    g_cstrm << "\n"
            << "a"
            << "b";
    parm.nameToCStream(g_cstrm);
    g_cstrm << "\n";
    EXPECT_EQ(table.text(), "a,5,c\na,Len\n");
}

TEST(ValueList, RunsThroughItsValuesInWrittenOrder) {
    bxIterator<int> list(9, "Len", "");
    EXPECT_EQ(list.value(), 9);
    EXPECT_THAT(pass(list), IsEmpty());
    EXPECT_EQ(list.value(), 0);
    list.add(4);
    list.add(1);
    list.add(4);
    EXPECT_THAT(pass(list), ElementsAre(4, 1, 4));
    EXPECT_FALSE(list.nextValue());
    EXPECT_STREQ(list.defaultString().c_str(), "4; 1; 4");
    list.reset();
    EXPECT_THAT(pass(list), IsEmpty());
}

TEST(ValueList, ReadsLists) {
    const struct {
        const char* text;
        std::vector<int> values;
    } rows[] = {
        {"1;2;3", {1, 2, 3}}, {" 5 ; 0x10\t;5;", {5, 16, 5}},
        {"1,2,3", {1}},       {"1 10 +3 7", {1}},
        {";;8", {8}},         {"1; ;3", {1, 3}},
    };
    for (const auto& row : rows) {
        bxIterator<int> list(0, "Len", "");
        EXPECT_EQ(complaint(list, row.text), "") << row.text;
        EXPECT_THAT(pass(list), ElementsAreArray(row.values)) << row.text;
    }
}

TEST(ValueList, RefusedTextLeavesTheOldList) {
    bxIterator<int> list(0, "Len", "");
    list.add(3);
    EXPECT_EQ(complaint(list, ""), "Empty iterator definition");
    EXPECT_EQ(complaint(list, ";;"), "Empty iterator definition");
    EXPECT_EQ(complaint(list, "1; two;x"), "Invalid value of Len = two");
    EXPECT_THAT(pass(list), ElementsAre(3));
}

TEST(ValueList, ValueSetFromOutsideDoesNotDisturbTheSequence) {
    bxIterator<int> list(0, "Len", "");
    bxStepIterator<int> range(0, "Len", "");
    range.setRange(1, 100, '*', 3);
    list.translate("1;3;9;27;81");
    for (bxIterator<int>* parm : {&list, static_cast<bxIterator<int>*>(&range)}) {
        ASSERT_TRUE(parm->firstValue());
        ASSERT_TRUE(parm->nextValue());
        parm->setValue(4096);
        EXPECT_EQ(parm->value(), 4096);
        EXPECT_STREQ(parm->valueString().c_str(), "4096");
        ASSERT_TRUE(parm->nextValue());
        EXPECT_EQ(parm->value(), 9);
        EXPECT_THAT(pass(*parm), ElementsAre(1, 3, 9, 27, 81));
    }
}

TEST(ValueList, SizesAreWidthTimesHeight) {
    bxIterator<ZoriSize> sizes({0, 0}, "Size", "");
    EXPECT_EQ(complaint(sizes, "64x48; 8; 3X5"), "");
    EXPECT_STREQ(sizes.defaultString().c_str(), "64x48; 8x8; 3x5");
    EXPECT_EQ(complaint(sizes, "1x2x3"), "Invalid value of Size = 1x2x3");
    EXPECT_EQ(complaint(sizes, "axb"), "Invalid value of Size = axb");
    ASSERT_TRUE(sizes.firstValue());
    EXPECT_EQ(sizes.value(), (ZoriSize{64, 48}));
}

TEST(Range, RunsToItsLastValue) {
    const struct {
        const char* text;
        std::vector<int> values;
        const char* written;
        const char* described;
    } rows[] = {
        {"16 1024 *2",
         {16, 32, 64, 128, 256, 512, 1024},
         "16; 1024; *2",
         "for (Len = 16; Len <= 1024; Len *= 2)"},
        {"16; 64;*2", {16, 32, 64}, "16; 64; *2", "for (Len = 16; Len <= 64; Len *= 2)"},
        {"1 10 +3", {1, 4, 7, 10}, "1; 10; +3", "for (Len = 1; Len <= 10; Len += 3)"},
        {"10 1 -3", {10, 7, 4, 1}, "10; 1; -3", "for (Len = 10; Len >= 1; Len -= 3)"},
        {"100 1 +-25", {100, 75, 50, 25}, "100; 1; +-25", "for (Len = 100; Len >= 1; Len += -25)"},
        {"1 7 --2", {1, 3, 5, 7}, "1; 7; --2", "for (Len = 1; Len <= 7; Len -= -2)"},
        {"-1 -64 *2", {-1, -2, -4, -8, -16, -32, -64}, "-1; -64; *2", "for (Len = -1; Len >= -64; Len *= 2)"},
        {"1 100 *3", {1, 3, 9, 27, 81}, "1; 100; *3", "for (Len = 1; Len <= 100; Len *= 3)"},
        {"8 8 +1", {8}, "8; 8; +1", "for (Len = 8; Len <= 8; Len += 1)"},
        {"8 8 *2", {8}, "8; 8; *2", "for (Len = 8; Len <= 8; Len *= 2)"},
        {"0x10 0x20 +0x8", {16, 24, 32}, "16; 32; +8", "for (Len = 16; Len <= 32; Len += 8)"},
        {"1000000000 2147483647 +1000000000",
         {1000000000, 2000000000},
         "1000000000; 2147483647; +1000000000",
         "for (Len = 1000000000; Len <= 2147483647; Len += 1000000000)"},
        {"65536 2147483647 *32768", {65536}, nullptr, nullptr},
        {"-2147483648 2147483647 +2147483647", {-2147483647 - 1, -1, 2147483646}, nullptr, nullptr},
    };
    for (const auto& row : rows) {
        bxStepIterator<int> range(0, "Len", "");
        ASSERT_EQ(complaint(range, row.text), "") << row.text;
        EXPECT_TRUE(range.isRange());
        EXPECT_THAT(pass(range), ElementsAreArray(row.values)) << row.text;
        EXPECT_FALSE(range.nextValue()) << row.text;
        EXPECT_STREQ(range.prompt().c_str(), "for Len");
        if (!row.written)
            continue;
        EXPECT_STREQ(range.defaultString().c_str(), row.written);
        EXPECT_STREQ(range.description().c_str(), row.described);
        EXPECT_EQ(complaint(range, row.written), "") << "a written range reads back";
        EXPECT_THAT(pass(range), ElementsAreArray(row.values)) << row.written;
    }
}

TEST(Range, RefusedTextLeavesTheOldRange) {
    const std::string conflict = "Conflict between iterator limits and operation";
    const std::pair<const char*, std::string> rows[] = {
        {"1 16 -1", conflict},
        {"0 16 *2", conflict},
        {"-4 16 *2", conflict},
        {"0 -16 *2", conflict},
        {"-16 0 *2", conflict},
        {"1 16 *1", conflict},
        {"1 16 *0", conflict},
        {"1 16 *-2", conflict},
        {"16 1 *2", conflict},
        {"-8 -2 *2", conflict},
        {"-8 -8 *2", conflict},
        {"16 1 +1", conflict},
        {"1 16 +-1", conflict},
        {"16 1 --1", conflict},
        {"16 1 +0", conflict},
        {"1 16 +0", conflict},
        {"1 16 -0", conflict},
        {"8 8 -1", conflict},
        {"1;5;-2", conflict},
        {"1 16 +", conflict},
        {"a 16 *b", "Invalid first value = a"},
        {"1 b *c", "Invalid last value = b"},
        {"1 16 *c", "Invalid step = c"},
        {"", "Empty iterator definition"},
    };
    for (const auto& [text, message] : rows) {
        bxStepIterator<int> range(0, "Len", "");
        range.setRange(2, 8, '*', 2);
        EXPECT_EQ(complaint(range, text), message) << text;
        EXPECT_STREQ(range.defaultString().c_str(), "2; 8; *2") << text;
        EXPECT_THAT(pass(range), ElementsAre(2, 4, 8)) << text;
    }
    bxStepIterator<int> range(0, "Len", "");
    EXPECT_THROW(range.setRange(1, 2, '?', 1), bxException);
}

TEST(Range, TextDecidesBetweenListAndRange) {
    bxStepIterator<int> parm(0, "Len", "");
    parm.translate("1 4 +1");
    parm.translate("5;6");
    EXPECT_FALSE(parm.isRange());
    EXPECT_STREQ(parm.prompt().c_str(), "Len");
    EXPECT_STREQ(parm.description().c_str(), "Len = 5; 6");
    EXPECT_THAT(pass(parm), ElementsAre(5, 6));
    parm.translate("1 4 +1");
    parm.reset();
    EXPECT_THAT(pass(parm), ElementsAre(1, 2, 3, 4)) << "reset keeps the range";
}

TEST(Names, AbbreviationsSelectTheFirstNameThatFits) {
    const struct {
        const char* text;
        std::vector<Shape> values;
    } rows[] = {
        {"long", {square}},
        {"LONGS", {squareish}},
        {"l", {square}},
        {"short; longst;s", {round, squareish, round}},
    };
    for (const auto& row : rows) {
        ShapeIterator shapes;
        EXPECT_EQ(complaint(shapes, row.text), "") << row.text;
        EXPECT_THAT(pass(shapes), ElementsAreArray(row.values)) << row.text;
    }
    ShapeIterator shapes;
    EXPECT_EQ(complaint(shapes, "long;longish"), "Invalid value of Shape = longish");
    EXPECT_EQ(complaint(shapes, "1"), "Invalid value of Shape = 1");
}

TEST(Names, ListTheirValuesByName) {
    ShapeIterator shapes;
    shapes[square] = "other";
    shapes.add(squareish);
    shapes.add(round);
    EXPECT_STREQ(shapes.defaultString().c_str(), "longstart; short");
    EXPECT_STREQ(shapes.prompt().c_str(), "Shape {long|longstart|short}") << "the first name is kept";
    EXPECT_THAT(pass(shapes), ElementsAre(squareish, round));
    EXPECT_STREQ(shapes.valueString().c_str(), "short");
    shapes.resetMap();
    EXPECT_STREQ(shapes.prompt().c_str(), "Shape");
    EXPECT_THAT(pass(shapes), IsEmpty());
}

TEST(Names, SingleNamedValue) {
    bxMapDefault<int> parm(1, "Method", "");
    parm[0] = "Auto";
    parm[1] = "Manual";
    parm[0] = "Automatic";
    EXPECT_STREQ(parm.description().c_str(), "Method = Manual");
    EXPECT_STREQ(parm.validString().c_str(), "Automatic|Manual");
    EXPECT_EQ(complaint(parm, "aUTO"), "");
    EXPECT_EQ(parm.value(), 0);
    parm[2] = "MAN";
    EXPECT_EQ(complaint(parm, "man"), "") << "an exact name wins over a longer one";
    EXPECT_EQ(parm.value(), 2);
    EXPECT_EQ(complaint(parm, "ma"), "");
    EXPECT_EQ(parm.value(), 1);
    parm.setValue(0);
    EXPECT_EQ(complaint(parm, "x"), "Invalid value of Method = x");
    EXPECT_EQ(parm.value(), 0);
}

TEST(AllowedValues, OnlyTheseAreReadWhileValidationIsOn) {
    bxEnumIterator<int> parm(0, "Rate", "");
    EXPECT_EQ(complaint(parm, "1;2"), "");
    EXPECT_STREQ(parm.validString().c_str(), "");
    EXPECT_TRUE(parm.addValidation(4)) << "the values already in the list stay allowed";
    EXPECT_FALSE(parm.addValidation(2));
    parm.add(8);
    EXPECT_STREQ(parm.validString().c_str(), "1|2|4|8");
    EXPECT_EQ(complaint(parm, "8;1"), "");
    EXPECT_EQ(complaint(parm, "8;3"), "Invalid value of Rate = 3");
    parm.resetValidation();
    EXPECT_EQ(complaint(parm, "3"), "");
}

/** Sets the -d values of `g_istrm` for one test. */
class Input : public testing::Test {
  protected:
    ~Input() override { g_istrm.dataList().removeAll(); }
    static void data(const char* text) { g_istrm.dataList().set(text); }
};

TEST_F(Input, ListsWhatWasRead) {
    bxIterator<int> parm(0, "Len", "");
    bxDefault<int> nameless(5, "", "");
    data("Len=1;2");
    Capture listing(outErr);
    g_ostrm << ERR;
    parm.fromIStream(g_istrm);
    nameless.fromIStream(g_istrm);
    data("Len=8");
    parm.setNeedsInput(false);
    parm.fromIStream(g_istrm);
    parm.firstValue();
    parm.toOStream(g_ostrm);
    nameless.toOStream(g_ostrm);
    g_ostrm << endMessage;
    EXPECT_EQ(listing.text(), " Len = 1; 2\n Len = 1; 2\nLen=1 ");
}

TEST_F(Input, FaultWhileReadingBecomesAnException) {
    struct Faulty : bxDefault<int> {
        using bxDefault<int>::bxDefault;
        int stringToValue(bxString&) const override { return std::raise(SIGSEGV); }
    } parm(1, "Len", "");
    const auto readIt = [&] {
        try {
            parm.fromIStream(g_istrm);
        } catch (const bxException& e) {
            _exit(parm.value() == 1 && e.msg() == std::string("--ZOR. Signal: Illegal storage access.") ? 0
                                                                                                        : 1);
        }
        _exit(2);
    };
    // In a process of its own, because what the frames jumped over hold is lost.
    EXPECT_EXIT(readIt(), testing::ExitedWithCode(0), "");
}

} // namespace
