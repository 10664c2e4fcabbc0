// Function names, vectors, bit streams and code tables.
#include "zorcore.h"

#include "data/bxalloc.h"
#include "data/bxrandomdata.h"
#include "kv.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<double> valuesOf(const kvVector& vector) {
    std::vector<double> values;
    for (int i = 0; i < vector.length(); ++i)
        values.push_back(vector.getIndex(i));
    return values;
}

using Values = std::vector<double>;

TEST(FunctionName, SplitsIntoPrefixBaseTypesAndDescriptor) {
    const struct {
        const char *name, *prefix, *base, *types, *descr;
    } cases[] = {
        {"zorsDecodeTNS_AAC_32s_I", "zors", "DecodeTNS_AAC", "32s", "I"},
        {"zorsMDCTInv_AAC_32s16s", "zors", "MDCTInv_AAC", "32s16s", ""},
        {"zorsSynthesisFilter_SBR_CToR_32fc32f_D2L", "zors", "SynthesisFilter_SBR_CToR", "32fc32f", "D2L"},
        {"zorsDecodeFillElt_AAC", "zors", "DecodeFillElt_AAC", "", ""},
        {"zorsVLCEncodeInitAlloc_32s", "zors", "VLCEncodeInitAlloc", "32s", ""},
        {"ResetFDP_32f", "", "ResetFDP", "32f", ""},
        {"zoriFilter_8u_AC4R", "zori", "Filter", "8u", "AC4R"},
        {"zors", "zors", "", "", ""},
        {"", "", "", "", ""},
    };
    for (const auto& c : cases) {
        const kvFunc func(c.name);
        EXPECT_STREQ(func.prefix().c_str(), c.prefix) << c.name;
        EXPECT_STREQ(func.baseName().c_str(), c.base) << c.name;
        EXPECT_STREQ(func.typeName().c_str(), c.types) << c.name;
        EXPECT_STREQ(func.descrName().c_str(), c.descr) << c.name;
    }
    EXPECT_EQ(lenOfType("AAC"), 0);
    EXPECT_EQ(lenOfType("32s16s"), 3);
    EXPECT_EQ(lenOfType("32fcx"), 4);
    EXPECT_EQ(lenOfType("32"), 0);
    EXPECT_EQ(endOfBase("a_b_8u"), 3);
    EXPECT_EQ(endOfBase("a_b"), -1);
}

TEST(FunctionName, TellsTypesOfArguments) {
    const kvFunc func("zorsSynthesisFilter_SBR_CToR_32fc32f_D2L");
    EXPECT_EQ(func.type(1), kv32fc);
    EXPECT_EQ(func.type(2), kv32f);
    EXPECT_EQ(func.type(3), kvUndef);
    EXPECT_EQ(func.type(0), kv32fc);
    EXPECT_EQ(func.type(kvArgSrc), kv32fc);
    EXPECT_EQ(func.type(kvArgDst), kv32f);
    EXPECT_EQ(kvFunc("zorsDecodeFillElt_AAC").type(0), kv8u);
    for (const kvType type : {kv8u, kv16u, kv32u, kv64u, kv8s, kv16s, kv32s, kv64s, kv32f, kv64f, kv16uc,
                              kv8sc, kv16sc, kv32sc, kv64sc, kv32fc, kv64fc})
        EXPECT_EQ(kvFunc::stringToType(kvFunc::typeToString(type)), type);
    EXPECT_EQ(kvFunc::stringToType("24s"), kvUndef);
    EXPECT_STREQ(kvFunc::typeToString(static_cast<kvType>(3)).c_str(), "undef");
}

TEST(FunctionName, ReadsTheDescriptor) {
    const kvFunc func("zoriCopy_8u_C3AC4IRSfs");
    EXPECT_STREQ(func.srcChannelsName().c_str(), "C3");
    EXPECT_STREQ(func.dstChannelsName().c_str(), "AC4");
    EXPECT_EQ(func.channels(1), 3);
    EXPECT_EQ(func.channels(2), 4);
    EXPECT_TRUE(func.alpha(2) && !func.alpha(1));
    EXPECT_TRUE(func.inplace() && func.roi() && func.scale() && !func.mask() && !func.coi());
    const struct {
        const char *name, *first, *second; // first and second: channels, then P for planes, A for alpha
        const char* flags;
    } cases[] = {
        {"zoriCopy_8u_P3", "3P", "3P", ""},      {"zoriCopy_8u_C3P4", "3", "4P", ""},
        {"zoriCopy_8u_AP4C1M", "4PA", "1", "M"}, {"zoriCopy_8u_C3CI", "3", "3", "IC"},
        {"zoriCopy_8u_C1R", "1", "1", "R"},      {"zorsDecodeTNS_AAC_32s_I", "1", "1", "I"},
        {"zorsMDCTFwd_32f_Sfs", "1", "1", "S"},  {"zorsDecodeFillElt_AAC", "1", "1", ""},
    };
    const auto side = [](const kvFunc& f, int n) {
        return std::to_string(f.channels(n)) + (f.plane(n) ? "P" : "") + (f.alpha(n) ? "A" : "");
    };
    for (const auto& c : cases) {
        const kvFunc f(c.name);
        EXPECT_EQ(side(f, 1), c.first) << c.name;
        EXPECT_EQ(side(f, 2), c.second) << c.name;
        std::string flags;
        for (const auto& [set, letter] :
             {std::pair(f.inplace(), 'I'), {f.mask(), 'M'}, {f.scale(), 'S'}, {f.roi(), 'R'}, {f.coi(), 'C'}})
            flags.append(set ? 1 : 0, letter);
        EXPECT_EQ(flags, c.flags) << c.name;
    }
}

TEST(FunctionName, Orders) {
    const char* ascending[] = {"zorsDeinterleave_16s",  "zorsDeinterleave_32f", "zorsDeinterleave_32f_AC4",
                               "zorsDeinterleave_32fc", "zorsMDCTFwd_16s_Sfs",  "zorsMDCTFwd_32f",
                               "zorsMDCTFwd_32f_I",     "zorsMDCTFwd_AAC_32s",  "zorsPow43_8u",
                               "zorsPow43_16u8u",       "zorsPow43_8s",         "zorsPow43_8s16s"};
    for (std::size_t i = 0; i + 1 < std::size(ascending); ++i) {
        EXPECT_LT(kvFunc(ascending[i]).compare(ascending[i + 1]), 0) << ascending[i];
        EXPECT_GT(kvFunc(ascending[i + 1]).compare(ascending[i]), 0) << ascending[i];
        EXPECT_EQ(kvFunc(ascending[i]).compare(ascending[i]), 0);
    }
    EXPECT_GT(kvFunc::compareDescr("AC4", "C1"), 0);
    EXPECT_LT(kvFunc::compareDescr("C1", "AC4"), 0);
    EXPECT_GT(kvFunc::compareDescr("AI", "Z"), 0);
}

TEST(FunctionName, OrderOfSuiteNamesIsAStrictWeakOrder) {
    std::mt19937 random(5);
    const char* bases[] = {"MDCTFwd", "MDCTInv", "Pow34", "DecodeTNS_AAC"};
    const char* types[] = {"", "_16s", "_32f", "_32fc", "_32s16s", "_32f16s"};
    const char* descrs[] = {"", "_I", "_Sfs", "_D2L"};
    const auto pick = [&](const auto& from) { return from[random() % std::size(from)]; };
    std::vector<kvFunc> names;
    for (int i = 0; i < 40; ++i)
        names.push_back(kvFunc(bxString("zors") + pick(bases) + pick(types) + pick(descrs)));
    const auto less = [](const kvFunc& a, const kvFunc& b) { return a.compare(b) < 0; };
    for (const auto& a : names) {
        EXPECT_FALSE(less(a, a));
        for (const auto& b : names) {
            EXPECT_FALSE(less(a, b) && less(b, a));
            for (const auto& c : names)
                EXPECT_FALSE(less(a, b) && less(b, c) && !less(a, c));
        }
    }
}

TEST(Vector, FillsByMode) {
    struct Case {
        kvType type;
        int length;
        SetMode mode;
        double a, b;
        Values expected;
    };
    const Case cases[] = {
        {kv16s, 3, smDefault, 0, 0, {2, 2, 2}},
        {kv64f, 1, smDefault, 0, 0, {1.00001}},
        {kv32s, 2, smZero, 5, 5, {0, 0}},
        {kv8u, 2, smOne, 0, 0, {1, 1}},
        {kv8s, 1, smMax, 0, 0, {127}},
        {kv8s, 1, smMin, 0, 0, {-128}},
        {kv32u, 1, smMax, 0, 0, {4294967295.0}},
        {kv64s, 1, smMin, 0, 0, {-9223372036854775808.0}},
        {kv16s, 2, smConst, -3.9, 0, {-3, -3}},
        {kv8u, 1, smConst, 255, 0, {255}},
        {kv16u, 6, smSequence, 0, 3, {0, 1, 2, 3, 0, 1}},
        {kv64f, 4, smSequence, 0, 2, {0, 0.5, 1, 1.5}},
        {kv16s, 2, static_cast<SetMode>(8), 1, 1, {2, 2}},
        {kv16s, 2, static_cast<SetMode>(-1), 1, 1, {2, 2}},
    };
    for (const Case& c : cases) {
        kvVector vector(c.type);
        ASSERT_TRUE(vector.createVector(c.length, c.mode, c.a, c.b));
        EXPECT_EQ(valuesOf(vector), c.expected) << "type " << c.type << " mode " << c.mode;
    }
}

TEST(Vector, HasRandomSamplesInsteadOfConstantsOnDemand) {
    bxSetRandomData(100);
    for (const auto& [type, most] :
         {std::pair{kv16s, 100.0}, {kv32s, 100.0}, {kv32f, 100.0}, {kv64fc, 100.0}}) {
        kvVector vector(type);
        EXPECT_TRUE(vector.createVector(1000, 0));
        const Values values = valuesOf(vector);
        const auto [low, high] = std::minmax_element(values.begin(), values.end());
        EXPECT_TRUE(*low >= -most && *low<-0.9 * most&& * high <= most&& * high> 0.9 * most) << type;
    }
    for (const kvType type : {kv8u, kv8s, kv16u, kv32u}) { // may be counts and indices
        kvVector vector(type);
        EXPECT_TRUE(vector.createVector(2, 0));
        EXPECT_EQ(valuesOf(vector), (Values{2, 2})) << type;
    }
    bxSetRandomData(0);
    kvVector vector(kv32s);
    EXPECT_TRUE(vector.createVector(2, 0));
    EXPECT_EQ(valuesOf(vector), (Values{2, 2}));
}

TEST(Vector, FillsComplexElementsInBothParts) {
    kvVector vector(kv16sc);
    ASSERT_TRUE(vector.createVector(3, 0));
    double re = 0, im = 0;
    vector.setConst(4, -5);
    vector.getIndex(2, re, im);
    EXPECT_EQ(re, 4);
    EXPECT_EQ(im, -5);
    vector.setSequence(1, 3);
    vector.getIndex(1, re, im);
    EXPECT_EQ(re, 2);
    EXPECT_EQ(im, 2);
    vector.setIndex(1, smConst, 7, 8);
    vector.getIndex(1, re, im);
    EXPECT_EQ(re, 7);
    EXPECT_EQ(im, 8);
    vector.getIndex(0, re, im);
    EXPECT_EQ(re, 1);
    for (const int outside : {-1, 3}) {
        vector.setIndex(outside, smConst, 9, 9);
        vector.getIndex(outside, re, im);
        EXPECT_TRUE(re == 0 && im == 0) << outside;
    }
}

TEST(Vector, SequencesClampAndWrap) {
    kvVector vector(kv8u);
    ASSERT_TRUE(vector.createVector(4, 0));
    vector.setSequence(0, 3);
    EXPECT_EQ(valuesOf(vector), (Values{0, 1, 2, 3}));
    vector.setSequence(-10, 300, 100, false);
    EXPECT_EQ(valuesOf(vector), (Values{0, 100, 200, 255}));
    vector.setSequence(250, 300, 5, true);
    EXPECT_EQ(valuesOf(vector), (Values{250, 255, 250, 255}));
}

TEST(Vector, JaehneIsAChirp) {
    kvVector vector(kv16s);
    ASSERT_TRUE(vector.createVector(8, 0));
    vector.setJaehne();
    for (int n = 0; n < 8; ++n)
        EXPECT_EQ(vector.getIndex(n), std::trunc(32767.5 * std::sin(M_PI * n * n / 16.0))) << n;
    vector.setConst(1, 0);
    vector.setJaehne(-1);
    EXPECT_EQ(vector.getIndex(3), 1);

    kvVector bytes(kv8u);
    ASSERT_TRUE(bytes.createVector(4, 0));
    bytes.setJaehne(1000);
    EXPECT_EQ(bytes.getIndex(0), 127);
    EXPECT_EQ(bytes.getIndex(2), 255);
}

// Outputs of an independent script for the seed 7.
TEST(Vector, RandomFillFollowsTheGenerator) {
    kvVector words(kv16s);
    ASSERT_TRUE(words.createVector(10, 0));
    kvVector::m_seed = 7;
    words.setRandom();
    EXPECT_EQ(valuesOf(words),
              (Values{-17957, -24245, -4145, -21101, 5117, -13716, -14754, 4011, 10867, -5747}));
    EXPECT_EQ(kvVector::m_seed, 3546670730u);

    kvVector raw(kv32s);
    ASSERT_TRUE(raw.createVector(4, 0));
    raw.setRandom();
    const double expected[] = {-1324236456, 417294192, 329224600, 770751714};
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(raw.getIndex(i), expected[i], 1.0);
    EXPECT_EQ(kvVector::m_seed, 83101765u);

    kvVector pairs(kv64fc);
    ASSERT_TRUE(pairs.createVector(5, 0));
    pairs.setRandom(-1, 1, 7);
    double re = 0, im = 0;
    pairs.getIndex(0, re, im);
    EXPECT_NEAR(re, -0.5480098221451053, 1e-12);
    EXPECT_NEAR(im, -0.7399064591154467, 1e-12);
    pairs.getIndex(4, re, im);
    EXPECT_NEAR(im, -0.17538210144266514, 1e-12);
}

TEST(Vector, RandomStaysInBounds) {
    kvVector vector(kv32s);
    ASSERT_TRUE(vector.createVector(20000, 0));
    vector.setRandom(0, 7);
    const Values values = valuesOf(vector);
    EXPECT_EQ(*std::min_element(values.begin(), values.end()), 0);
    EXPECT_LE(*std::max_element(values.begin(), values.end()), 7);
    EXPECT_GE(*std::max_element(values.begin(), values.end()), 6);

    kvVector numbers(kv32f);
    ASSERT_TRUE(numbers.createVector(20000, 0));
    numbers.setRandom();
    const Values all = valuesOf(numbers);
    EXPECT_NEAR(*std::min_element(all.begin(), all.end()), -1, 1e-3);
    EXPECT_NEAR(*std::max_element(all.begin(), all.end()), 1, 1e-3);
}

TEST(Vector, ReservedCopyRestoresContent) {
    kvVector vector(kv32f);
    EXPECT_FALSE(vector.reserveCopy());
    constexpr int length = 100000; // a copy too short would not stay unnoticed
    ASSERT_TRUE(vector.createVector(length, smConst, 3, 0));
    EXPECT_FALSE(vector.setReservedCopy());
    ASSERT_TRUE(vector.reserveCopy());
    vector.setConst(9, 0);
    ASSERT_TRUE(vector.setReservedCopy());
    EXPECT_EQ(valuesOf(vector), Values(length, 3));
    vector.deleteReservedCopy();
    EXPECT_EQ(vector.getReservedData(), nullptr);
}

/** Least clocks of several tries. */
template <class Body>
unsigned long long leastClocks(Body body) {
    unsigned long long least = ~0ULL;
    for (int i = 0; i < 1000; ++i) {
        const unsigned long long start = zor_get_cpu_counter();
        body();
        least = std::min(least, zor_get_cpu_counter() - start);
    }
    return least;
}

// It happens before every call that is timed with restored data.
TEST(Vector, RestoringReadsNoNames) {
    kvVector vector(kv8u);
    ASSERT_TRUE(vector.createVector(1, 0) && vector.reserveCopy());
    const auto restoring = leastClocks([&] { vector.setReservedCopy(); });
    EXPECT_LT(2 * restoring, leastClocks([] { kvFunc("_8u_").type(1); }));
}

TEST(Vector, TypedPointerFollowsTheType) {
    kvVector vector(kvFunc("zorsMDCTInv_AAC_32s16s"), kvArgDst);
    EXPECT_EQ(vector.type(), kv16s);
    ASSERT_TRUE(vector.createVector(2, 0));
    EXPECT_EQ(vector.p16s, vector.data());
    EXPECT_EQ(vector.p32s, nullptr);
    EXPECT_EQ(vector.size(), 4);
    EXPECT_EQ(vector.getPointerAt(1), vector.p16s + 1);
    vector.deleteVector();
    EXPECT_EQ(vector.p16s, nullptr);
    EXPECT_EQ(vector.length(), 0);
    EXPECT_STREQ(vector.getString().c_str(), "");
}

TEST(Vector, RefusesEmptyAndOverlargeSizes) {
    Capture capture(ERR);
    kvVector vector(kv32f);
    EXPECT_FALSE(vector.createVector(0, 0));
    EXPECT_EQ(capture.text(), "-- Memory error: can't allocate 0 bytes\n");
    EXPECT_FALSE(vector.createVector(-3, 0));
    Capture overlarge(ERR);
    EXPECT_FALSE(vector.createVector(1 << 30, 0));
    EXPECT_EQ(overlarge.text(), "-- Data error: no block can hold 1073741824 elements of 4 bytes\n");
    EXPECT_EQ(vector.data(), nullptr);
}

TEST(Vector, PrintsElementsInTheirFormat) {
    const struct {
        kvType type;
        const char* text;
    } cases[] = {{kv8u, "   3"},
                 {kv16u, "     3"},
                 {kv32u, "          3"},
                 {kv8s, "    3"},
                 {kv16s, "      3"},
                 {kv32s, "           3"},
                 {kv64u, "                       3"},
                 {kv64s, "                       3"},
                 {kv32f, "           3.5"},
                 {kv64f, "                 3.5"},
                 {kv8sc, " (    3,    4)"},
                 {kv16uc, " (     3,     4)"},
                 {kv32fc, " (           3.5,           4.5)"}};
    for (const auto& c : cases) {
        kvVector vector(c.type);
        ASSERT_TRUE(vector.createVector(1, smConst, 3.5, 4.5));
        EXPECT_STREQ(vector.getString().c_str(), c.text);
    }
    kvVector vector(kv16s);
    ASSERT_TRUE(vector.createVector(2, smConst, -1, 0));
    EXPECT_STREQ(vector.getString().c_str(), "     -1     -1");
    EXPECT_STREQ(vector.objectInfo().c_str(), "Vector 16s len=2");
    EXPECT_STREQ(kvVector::getByteString(vector.data(), 3).c_str(), " FF FF FF");
}

TEST(BitVector, WritesAndReadsMostSignificantFirst) {
    kvBitVector bits;
    ASSERT_TRUE(bits.createVector(3, smZero, 0, 0));
    bits.setBits(0x2D, 7); // 0101101
    bits.setBits("1010 x1");
    EXPECT_EQ(bits.getBitPos(), 12);
    EXPECT_EQ(bits.p8u[0], 0x5B);
    EXPECT_EQ(bits.p8u[1], 0x50);
    bits.setBitPos(0);
    unsigned int value = 99;
    bits.getBits(value, 7);
    EXPECT_EQ(value, 0x2Du);
    bxString text;
    bits.getBits(text, 5);
    EXPECT_STREQ(text.c_str(), "1 0101");
    EXPECT_STREQ(bits.getBitString().c_str(), "0101 1011 0101 0000 0000 0000\n");
    EXPECT_STREQ(bits.getBitString(4, 6).c_str(), "1011 01\n");
    EXPECT_STREQ(bits.objectInfo().c_str(), "BitVector byteLen=3");
    EXPECT_STREQ(kvBitVector::bitString(static_cast<unsigned char>(0xA5), 1, 3).c_str(), "010");
    EXPECT_STREQ(kvBitVector::bitString(static_cast<unsigned char>(0xA5), -2, 20).c_str(), "10100101");
}

TEST(BitVector, StopsAtTheEndButKeepsCounting) {
    kvBitVector bits;
    ASSERT_TRUE(bits.createVector(1, smConst, 255, 0));
    bits.setBitPos(6);
    unsigned int value = 0;
    bits.getBits(value, 4);
    EXPECT_EQ(value, 0xCu);
    EXPECT_EQ(bits.getBitPos(), 10);
    bits.setBits(0, 4);
    EXPECT_EQ(bits.p8u[0], 0xFF);
    EXPECT_EQ(bits.getBitPos(), 14);
}

TEST(ScaleIterator, FollowsTheFunctionName) {
    kvScaleIterator scale;
    scale.init("zorsMDCTFwd_16s_Sfs");
    EXPECT_TRUE(scale.isScaled());
    EXPECT_STREQ(scale.name().c_str(), "ScaleFactor");
    EXPECT_STREQ(scale.defaultString().c_str(), "0; 1; 2; -1");
    scale.init("zorsMDCTFwd_32f");
    EXPECT_FALSE(scale.isScaled());
    EXPECT_STREQ(scale.name().c_str(), "");
    EXPECT_STREQ(scale.defaultString().c_str(), "0");
    scale.init("zorsDecodeIsStereo_AAC_32s", 1, -1, 9);
    EXPECT_STREQ(scale.defaultString().c_str(), "1; -1; 9");
}

TEST(VLCTable, SelectsTablesByFormat) {
    kvacVLCTable table;
    EXPECT_EQ(table.maxValue(), 15);
    ASSERT_TRUE(table.setTableEncode_AAC());
    EXPECT_EQ(table.size(), 1089);
    ASSERT_TRUE(table.setTableDecode_MP3());
    EXPECT_EQ(table.size(), 961);
    EXPECT_EQ(table.getTableSize_AAC(), 1089);
    EXPECT_EQ(table.getTableSize_MP3(), 961);
}

// The two tables of a book list the same codes; the values number the pairs or hold them, x slowest.
TEST(VLCTable, ValuesAreThePairs) {
    const struct {
        bool (kvacVLCTable::*encode)(), (kvacVLCTable::*decode)();
        int largest;
    } books[] = {{&kvacVLCTable::setTableEncode_AAC, &kvacVLCTable::setTableDecode_AAC, 16},
                 {&kvacVLCTable::setTableEncode_MP3, &kvacVLCTable::setTableDecode_MP3, 15}};
    for (const auto& book : books) {
        kvacVLCTable encode, decode;
        ASSERT_TRUE((encode.*book.encode)() && (decode.*book.decode)());
        ASSERT_EQ(encode.size(), decode.size());
        int i = 0;
        for (int x = -book.largest; x <= book.largest; ++x) {
            for (int y = -book.largest; y <= book.largest; ++y, ++i) {
                ASSERT_EQ(encode.table()[i].value, i);
                ASSERT_EQ(decode.table()[i].value, x * 65536 + (y & 0xFFFF));
                ASSERT_EQ(encode.table()[i].code, decode.table()[i].code);
                ASSERT_EQ(encode.table()[i].length, decode.table()[i].length);
            }
        }
        EXPECT_EQ(i, encode.size());
    }
}

} // namespace
