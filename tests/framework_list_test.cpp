/** \file
 * The list of tests: registration, selection, order and counting.
 */
#include "frameworksupport.h"

#include <map>
#include <memory>

namespace {

using TestListTest = FrameworkFixture;

/** The conditions of some -f and -t keys, each written as "f+pattern". */
class Keys : public bxConditions {
  public:
    Keys(std::initializer_list<const char*> keys) {
        for (const char* key : keys) {
            bxString arg = key + 1;
            const int kind = getCondition(arg);
            push_back((*key == 'f' ? functionKinds : testKinds)[kind](arg));
        }
    }

  private:
    using Make = RunCondition* (*)(const bxString& pattern);
    template <class Condition>
    static RunCondition* make(const bxString& pattern) {
        return new Condition(pattern);
    }
    // In the order of bxConditionKind.
    static constexpr Make functionKinds[] = {make<RunCondition_f>, make<RunCondition_fAnd>,
                                             make<RunCondition_fNot>, make<RunCondition_fEqual>};
    static constexpr Make testKinds[] = {make<RunCondition_t>, make<RunCondition_tAnd>,
                                         make<RunCondition_tNot>, make<RunCondition_tEqual>};
};

TEST(Conditions, KindOfArgument) {
    struct Case {
        const char* arg;
        int kind;
        const char* pattern;
    };
    for (const Case& c : {Case{"MDCT", 0, "MDCT"},
                          {"+MDCT", 1, "MDCT"},
                          {"-Inv", 2, "Inv"},
                          {"=zorsX", 3, "zorsX"},
                          {"", 4, ""},
                          {"-", 4, ""},
                          {"+", 4, ""},
                          {"=", 4, ""},
                          {"--x", 2, "-x"},
                          {"M-D", 0, "M-D"}}) {
        bxString arg = c.arg;
        EXPECT_EQ(getCondition(arg), c.kind) << c.arg;
        EXPECT_STREQ(arg.c_str(), c.pattern);
    }
}

TEST_F(TestListTest, KeysSelectTests) {
    struct Case {
        std::initializer_list<const char*> keys;
        const char* selected;
    };
    const Case cases[] = {
        {{}, "zorsMDCTFwd_32f zorsMDCTInv_32f zorsDCTFwd_32f zorsHuff_MP3_1u"},
        {{"fMDCT", "fDCT"}, "zorsMDCTFwd_32f zorsMDCTInv_32f zorsDCTFwd_32f"},
        {{"fMDCT", "f-Inv"}, "zorsMDCTFwd_32f"},
        {{"f-Inv", "fMDCT"}, "zorsMDCTFwd_32f"},
        {{"f=zorsMDCTInv_32f", "f-Inv"}, ""},
        {{"f=zorsMDCT"}, ""},
        {{"tAAC", "fMP3"}, "zorsDCTFwd_32f zorsHuff_MP3_1u"},
        {{"t=TimMdct"}, "zorsMDCTFwd_32f zorsMDCTInv_32f"},
        {{"t+Mdct", "f+Fwd"}, "zorsMDCTFwd_32f"},
        {{"t-Mdct"}, "zorsDCTFwd_32f zorsHuff_MP3_1u"},
        {{"fmdct"}, ""},
    };
    for (const Case& c : cases) {
        Suite suite;
        suite.add("zorsMDCTFwd_32f", "TimMdct//KV_REG");
        suite.add("zorsMDCTInv_32f", "TimMdct//KV_REG");
        suite.add("zorsDCTFwd_32f", "TimAAC//KV_REG");
        suite.add("zorsHuff_MP3_1u", "Timm3Huff//KV_REG");
        Keys keys(c.keys);
        EXPECT_FALSE(suite.list.runTests(keys));
        EXPECT_EQ(suite.measured(), c.selected);
    }
}

TEST_F(TestListTest, StartsFromAFunction) {
    Suite suite;
    for (const char* name : {"zorsA", "zorsMDCTFwd", "zorsMDCTInv", "zorsB"})
        suite.add(name);
    Keys keys({"f-Fwd"});
    bxTestList::m_startFunc = "MDCT";
    suite.list.runTests(keys);
    EXPECT_EQ(suite.measured(), "zorsMDCTInv zorsB");
    EXPECT_EQ(suite.list.numTests, 2) << "tests passed over do not count";
    EXPECT_TRUE(bxTestList::m_startFunc.empty());
    EXPECT_EQ(bxTestList::m_pCurrentTest, nullptr);

    Suite none;
    none.add("zorsA");
    bxTestList::m_startFunc = "nowhere";
    EXPECT_FALSE(none.list.runTests(keys));
    EXPECT_EQ(none.list.numTests, 0);
}

TEST_F(TestListTest, HotFunctionsOnly) {
    bxStringList hot;
    hot.push_back("zorsHot");
    bxStringList* const registered = std::exchange(g_pHotList, &hot);
    Keys all({});
    for (const auto& [mode, selected] :
         {std::pair{0, "zorsHot zorsHotter"}, {1, "zorsHot zorsHotter"}, {2, "zorsHot"}}) {
        Suite suite;
        suite.add("zorsHot");
        suite.add("zorsHotter");
        bxTest::m_hot = mode;
        bxTest::m_numResultColm = mode ? 6 : 5;
        TableCapture table;
        suite.list.runTests(all);
        EXPECT_EQ(suite.measured(), selected);
        EXPECT_EQ(table.text().substr(0, table.text().find('\n')),
                  mode ? "zorsHot,-,-,nLps=1,1000,e,1,-,Hot" : "zorsHot,-,-,nLps=1,1000,e,1,-");
    }
    g_pHotList = registered;
}

TEST_F(TestListTest, CountsResults) {
    struct Case {
        bxResult result;
        bxResult general; // the aggregate that it also counts under
    };
    for (const Case& c : {Case{UNDEFINED, UNDEFINED},
                          {OK, OK},
                          {ACCURWRN, WARNING},
                          {BADSTSWRN, WARNING},
                          {DATAWRN, WARNING},
                          {FUNCWRN, WARNING},
                          {WARNING, WARNING},
                          {ACCURFAIL, FAIL},
                          {DATAFAIL, FAIL},
                          {FUNCFAIL, FAIL},
                          {EXCPTFAIL, FAIL},
                          {FAIL, FAIL}}) {
        bxTestList list;
        list.plus(c.result);
        EXPECT_EQ(list.numTests, 1);
        for (int code = UNDEFINED; code <= FAIL; code++)
            EXPECT_EQ(list.numResults[code], code == c.result || code == c.general)
                << c.result << " under " << code;
    }
}

TEST_F(TestListTest, ATestThatEndsUndefinedCounts) {
    Suite suite;
    suite.add("zorsA");
    bxTest::m_cache = true; // which the test does not support
    Capture listing(outErr);
    Keys all({});
    EXPECT_FALSE(suite.list.runTests(all));
    EXPECT_EQ(suite.list.numTests, 1);
    EXPECT_EQ(suite.list.numResults[UNDEFINED], 1);
}

TEST_F(TestListTest, AFailureFailsTheRunAndAWarningDoesNot) {
    for (const auto& [status, failed] : {std::pair{OK, false}, {FUNCWRN, false}, {FUNCFAIL, true}}) {
        Suite suite;
        suite.add("zorsA");
        ScriptedTest::s_status = status;
        Capture listing(outWarn);
        Keys all({});
        EXPECT_EQ(suite.list.runTests(all), failed);
        EXPECT_EQ(suite.list.numResults[status], 1);
    }
}

// ---- Order ----

/** A test whose order is the case's. */
class OrderedTest : public ScriptedTest {
  public:
    using ScriptedTest::ScriptedTest;
    int compareFunc(const bxTest* other) const override { return s_order(*this, *other); }
    static inline int (*s_order)(const bxTest&, const bxTest&);
};

TEST_F(TestListTest, SortsByNameAndKeepsEqualNames) {
    Suite suite;
    std::vector<const bxTest*> equal;
    for (const char* name : {"zorsC", "zorsB", "zorsA", "zorsB", "zorsAB", "zorsB"}) {
        const ScriptedTest& test = suite.add(name);
        if (test.name == "zorsB")
            equal.push_back(&test);
    }
    suite.list.sortFunc();
    EXPECT_EQ(suite.names(), "zorsA zorsAB zorsB zorsB zorsB zorsC");
    auto it = suite.list.begin();
    std::advance(it, 2);
    for (const bxTest* test : equal)
        EXPECT_EQ(*it++, test);
    bxTest* none = nullptr;
    EXPECT_FALSE(aless(none, *suite.list.begin()));
    EXPECT_FALSE(aless(*suite.list.begin(), none));
}

TEST_F(TestListTest, SortsUnderAnOrderThatIsNotTransitive) {
    // Rock, paper, scissors: each comes before the next, in a circle.
    OrderedTest::s_order = [](const bxTest& a, const bxTest& b) {
        const int distance = (a.name[0] - b.name[0] + 3) % 3;
        return distance == 0 ? 0 : distance == 1 ? 1 : -1;
    };
    std::vector<std::unique_ptr<OrderedTest>> tests;
    std::map<const bxTest*, int> number;
    bxTestList list;
    for (unsigned i = 0, x = 1; i < 1000; i++, x = x * 1664525U + 1013904223U) {
        const char name[] = {static_cast<char>('A' + (x >> 16) % 3), 0};
        tests.push_back(std::make_unique<OrderedTest>(name));
        list.push_back(tests.back().get());
        number[tests.back().get()] = static_cast<int>(i);
    }
    list.sortFunc();
    EXPECT_EQ(list.size(), 1000);
    std::map<std::string, int> last;
    for (const bxTest* test : list) {
        const int before = last.try_emplace(test->name.c_str(), -1).first->second;
        ASSERT_GT(number.at(test), before) << "equal names keep their order, every test stands there once";
        last[test->name.c_str()] = number.at(test);
    }
}

TEST_F(TestListTest, SortingManyTestsTakesFewComparisons) {
    static long long comparisons;
    comparisons = 0;
    OrderedTest::s_order = [](const bxTest& a, const bxTest& b) {
        ++comparisons;
        return a.name.compare(b.name);
    };
    std::vector<std::unique_ptr<OrderedTest>> tests;
    bxTestList list;
    for (unsigned i = 0, x = 1; i < 10000; i++, x = x * 1664525U + 1013904223U) {
        tests.push_back(std::make_unique<OrderedTest>(std::to_string(x).c_str()));
        list.push_back(tests.back().get());
    }
    list.sortFunc();
    EXPECT_LT(comparisons, 10000 * 14) << "n log2 n";
    for (auto it = list.begin(), next = ++list.begin(); next != list.end(); ++it, ++next)
        ASSERT_LE((*it)->name.compare((*next)->name), 0);
}

// ---- Common parameters ----

TEST_F(TestListTest, CommonParametersAreThoseOfSelectedTests) {
    bxIterator<int> used(0, "used", ""), wrapped(0, "wrapped", ""), other(0, "other", ""),
        unused(0, "unused", "");
    Suite suite;
    int asked = 0;
    ScriptedTest& first = suite.add("zorsA");
    first.onCanStart = [&] { return first.regParm(used) != nullptr; };
    ScriptedTest& second = suite.add("zorsB");
    second.onCanStart = [&] { return second.regCacheParm(wrapped) != nullptr; };
    ScriptedTest& third = suite.add("zorsC");
    third.onCanStart = [&] { return ++asked, third.regParm(other) != nullptr; };
    suite.add("zorsD").onCanStart = []() -> bool { throw bxException(bxString("no such file")); };

    Keys keys({"f-C"});
    bxTest::m_cache = true;
    Capture listing(outPerf);
    const auto select = [&](std::initializer_list<bxParameter*> parms) {
        bxList<bxParameter*> common;
        for (bxParameter* parm : parms)
            common.push_back(parm);
        suite.list.selectCommonParms(keys, common);
        return std::vector<bxParameter*>(common.begin(), common.end());
    };
    EXPECT_EQ(select({&unused, &wrapped, &other, &used}), (std::vector<bxParameter*>{&wrapped, &used}));
    EXPECT_EQ(asked, 0) << "the test is not selected";
    EXPECT_EQ(listing.text(), "--ZOR. Exception: no such file in startAndStop of zorsD test\n");
    EXPECT_EQ(g_ostrm.outLevel(), outPerf);
    EXPECT_EQ(second.cacheIter, nullptr);
    EXPECT_TRUE(second.parms.empty());

    first.stopped = second.stopped = 0;
    EXPECT_EQ(select({&used}), std::vector<bxParameter*>{&used});
    EXPECT_EQ(second.stopped, 0) << "nothing is left to be found";
}

} // namespace
