/** \file
 * The life of a test: combinations, results and rows.
 */
#include "frameworksupport.h"

namespace {

using FrameworkTest = FrameworkFixture;

TEST(TestInfo, SplitsAtSlashes) {
    struct Case {
        const char *text, *className, *subName, *regKind;
    };
    for (const Case& c : {Case{"TimacAACDecodeElt//KV_REG_I", "TimacAACDecodeElt", "", "KV_REG_I"},
                          Case{"TimNone", "TimNone", "", ""}, Case{"A/b", "A", "b", ""},
                          Case{"A/b/c/d", "A", "b", "c/d"}, Case{"", "", "", ""}, Case{"/", "", "", ""}}) {
        const bxTestInfo info(c.text);
        EXPECT_STREQ(info.className.c_str(), c.className) << c.text;
        EXPECT_STREQ(info.subName.c_str(), c.subName) << c.text;
        EXPECT_STREQ(info.regKind.c_str(), c.regKind) << c.text;
    }
}

TEST_F(FrameworkTest, MeasuresOnceWithoutParameters) {
    ScriptedTest test;
    test.divisor = 8;
    Capture listing(outPerf);
    TableCapture table;
    EXPECT_EQ(test.run(), OK);
    EXPECT_EQ(test.result, OK);
    EXPECT_EQ(unframed(listing.text()),
              "   Test has been registered by KV_REG macro with loopMethod, statMethod, funcCall.\n"
              "   loopMethod is called for measuring.\n"
              "\n"
              "  nLps=1      perf=    1e+03/        8=      125 clocks\n");
    EXPECT_EQ(table.text(), "zorsScripted_32f,-,-,nLps=1,125,e,1,-\n");
    EXPECT_EQ(test.flushed, 1);
    EXPECT_EQ(test.stopped, 1);
}

TEST_F(FrameworkTest, LastParameterVariesFastest) {
    bxIterator<int> a(0, "A", "");
    bxIterator<int> b(0, "B", "");
    ScriptedTest test;
    test.onCanStart = [&] {
        for (int value : {1, 2})
            a.add(value);
        for (int value : {7, 8, 9})
            b.add(value);
        test.regParm(a);
        test.regParm(b);
        return true;
    };
    // The only combination that has no data is passed over without a row.
    test.onInit = [&] { return !(a.value() == 1 && b.value() == 9); };
    TableCapture table;
    EXPECT_EQ(test.run(), OK);
    const std::string row = ",nLps=1,1000,e,1,-\n";
    std::string expected;
    for (const char* parms : {"1,7", "1,8", "2,7", "2,8", "2,9"})
        expected += std::string("zorsScripted_32f,") + parms + row;
    EXPECT_EQ(table.text(), expected);
    EXPECT_EQ(test.flushed, 6) << "data that could not be built are freed as well";
}

TEST_F(FrameworkTest, CombinationsThatCannotBeMeasured) {
    bxIterator<int> empty(0, "A", "");
    struct Case {
        const char* what;
        std::function<void(ScriptedTest&)> arrange;
        bxResult result;
        const char* message;
    };
    const Case cases[] = {
        {"no start", [](ScriptedTest& t) { t.onCanStart = [] { return false; }; }, DATAFAIL,
         "-- Can't start timing\n"},
        {"no values",
         [&](ScriptedTest& t) {
             t.parmsFromIstrm();
             t.onCanStart = [&] { return t.regParm(empty) != nullptr; };
             empty.setNeedsInput(false);
         },
         DATAFAIL, "-- One of argument list for timing is empty\n"},
        {"no data", [](ScriptedTest& t) { t.onInit = [] { return false; }; }, DATAFAIL,
         "-- Error while initialization of function data\n"},
        {"no result", [](ScriptedTest& t) { t.onTiming = [] { return UNDEFINED; }; }, FAIL,
         "-- Internal test problem: runTiming() function returns undefined result\n"},
        {"no cache size",
         [](ScriptedTest& t) {
             static bxIterator<int> size(0, "Len", "");
             zor_GetMaxCacheSizeB = [](int*) { return ZorStatus(zorStsUnknownCacheSize); };
             bxTest::m_cache = true;
             t.onCanStart = [&t] { return t.regCacheParm(size) == t.cacheIter; };
         },
         UNDEFINED, "-- Can't run In-Outof-Cache timing: the size of the cache is not known\n"},
        {"no cache mode", [](ScriptedTest&) { bxTest::m_cache = true; }, UNDEFINED,
         "-- Can't run In-Outof-Cache timing: no program support for function zorsScripted_32f\n"
         "--No measurements have been done\n"},
    };
    for (const Case& c : cases) {
        ScriptedTest test;
        c.arrange(test);
        Capture listing(outErr);
        EXPECT_EQ(test.run(), c.result) << c.what;
        const std::string text = unframed(listing.text());
        EXPECT_NE(text.find(c.message), std::string::npos) << c.what << ": " << text;
        EXPECT_EQ(test.stopped, 1) << c.what;
        bxTest::m_cache = false;
        zor_GetMaxCacheSizeB = nullptr;
    }
}

TEST_F(FrameworkTest, ResultOfACombination) {
    struct Case {
        bxResult measured;
        OutputLevel level;
        bxResult ofTest;
        int rows;
        const char* listing;
    };
    const std::string figure = "  nLps=1      perf=    1e+03/        1=     1000 clocks\n";
    const Case cases[] = {
        {OK, outErr, OK, 2, ""},
        {FUNCWRN, outErr, OK, 2, ""},
        {FUNCWRN, outWarn, FUNCWRN, 2,
         "-- lib function warning on test parameters:\nA=1 \n-- performance:\n"},
        {ACCURWRN, outWarn, ACCURWRN, 2,
         "-- wrong measure accuracy on test parameters:\nA=1 \n-- performance:\n"},
        {FUNCFAIL, outErr, FUNCFAIL, 0, "-- lib function error on test parameters:\nA=1 \n"},
        {ACCURFAIL, outWarn, ACCURFAIL, 0, "-- accuracy error on test parameters:\nA=1 \n"},
    };
    for (const Case& c : cases) {
        bxIterator<int> a(0, "A", "");
        ScriptedTest test;
        test.onCanStart = [&] {
            a.reset();
            a.add(1);
            a.add(2);
            a.setNeedsInput(false);
            return test.regParm(a) != nullptr;
        };
        ScriptedTest::s_status = c.measured;
        Capture listing(c.level);
        TableCapture table;
        EXPECT_EQ(test.run(), c.ofTest);
        const std::string rows = table.text();
        EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), c.rows) << "a failure ends the iteration";
        std::string expected = c.listing;
        if (bxIsWarning(c.measured) && c.level == outWarn) {
            std::string second = expected;
            second.replace(second.find("A=1"), 3, "A=2");
            expected += figure + second + figure;
        }
        EXPECT_EQ(unframed(listing.text()), expected);
    }
}

TEST_F(FrameworkTest, ShowsFiguresWhileTimingWhereWarningsAreShown) {
    for (const auto& [level, during] : {std::pair{outErr, outErr}, {outWarn, outPerf}, {outPerf, outPerf}}) {
        ScriptedTest test;
        OutputLevel seen = outNone;
        test.onTiming = [&] {
            seen = g_ostrm.outLevel();
            return OK;
        };
        Capture listing(level);
        test.run();
        EXPECT_EQ(seen, during);
        EXPECT_EQ(g_ostrm.outLevel(), level);
    }
}

TEST_F(FrameworkTest, BadControlStatusIsAWarningOfItsCombination) {
    ScriptedTest test;
    test.onTiming = [&] {
        bxTool::ctrlStart();
        volatile float zero = 0;
        volatile float huge = 1 / zero; // SSE: raises the zero-divide flag, which is masked
        (void)huge;
        bxTool::ctrlStop();
        return OK;
    };
    Capture listing(outWarn);
    EXPECT_EQ(test.run(), BADSTSWRN);
    EXPECT_TRUE(test.badSSXStatus);
    EXPECT_FALSE(test.bad87Status);
    EXPECT_EQ(unframed(listing.text()).find("-- Status    SSX: ?Zerodivide \n"), 0U);
}

TEST_F(FrameworkTest, DeprecatedRowsComeLast) {
    bxIterator<int> a(0, "A", "");
    a.add(1);
    a.add(2);
    a.addDeprecated(1, "old");
    a.setNeedsInput(false);
    ScriptedTest test;
    test.onCanStart = [&] { return test.regParm(a) != nullptr; };
    TableCapture table;
    EXPECT_EQ(test.run(), OK);
    EXPECT_EQ(table.text(), "zorsScripted_32f,1,-,nLps=1,1000,e,1,-\n"
                            "zorsScripted_32f,2,-,nLps=1,1000,e,1,-\n"
                            "zorsScripted_32f,old,-,deprecated,1000,e,1,-\n");
}

TEST_F(FrameworkTest, RowsWithEqualParametersAreNoticed) {
    for (const auto& [level, expected] : {std::pair{outWarn, DATAWRN}, {outErr, OK}}) {
        bxIterator<int> a(0, "A", "");
        a.add(5);
        a.add(5);
        a.setNeedsInput(false);
        ScriptedTest test;
        test.onCanStart = [&] { return test.regParm(a) != nullptr; };
        Capture listing(level);
        EXPECT_EQ(test.run(), expected);
        EXPECT_EQ(listing.text().find("-- Warning: duplicate lines in performance table (csv-file)\n") !=
                      std::string::npos,
                  level == outWarn);
    }
}

/** A test with a constant description and two combinations, the first without data. */
class Described : public ScriptedTest {
  public:
    Described() {
        m_size.add(1);
        m_size.add(2);
        m_size.add(3);
        m_size.setNeedsInput(false);
        onCanStart = [this] { return regParm(m_size) != nullptr; };
        onInit = [this] { return m_size.value() > 1; };
    }
    void constToOstrm() override { g_ostrm << ERR << "constant\n" << endMessage; }

  private:
    bxIterator<int> m_size{0, "A", ""};
};

TEST_F(FrameworkTest, ConstantDescriptionStandsOnceBeforeTheFirstFigure) {
    Described test;
    Capture listing(outErr);
    EXPECT_EQ(test.run(), OK);
    EXPECT_EQ(unframed(listing.text()), "constant\n");
}

TEST_F(FrameworkTest, NameLinesInEitherTable) {
    bxIterator<int> a(0, "Len", "");
    a.add(1);
    a.setNeedsInput(false);
    ScriptedTest test;
    test.onCanStart = [&] { return test.regParm(a) != nullptr; };
    const std::string names = "zorsScripted_32f,Len,-,parmNames,-,-,-,-\n";
    bxSessionModes::m_nameMode = bxSessionModes::nameInResults | bxSessionModes::nameInOwnTable;
    bxSessionModes::m_nameExit = true;
    TableCapture results;
    TableCapture own(g_qstrm);
    EXPECT_EQ(test.run(), OK) << "nothing is measured, and that is no failure";
    EXPECT_EQ(results.text(), names);
    EXPECT_EQ(own.text(), names);
    EXPECT_EQ(test.flushed, 0);
}

TEST_F(FrameworkTest, IniSectionDecidesWhatRuns) {
    const std::string path = ::testing::TempDir() + "framework_sections.ini";
    std::FILE* file = std::fopen(path.c_str(), "w");
    std::fputs("[zorsKnown_32f]\nLen=3\n", file);
    std::fclose(file);
    ASSERT_TRUE(g_istrm.setIniFile(path.c_str(), false));
    bxTest::m_pressing = true;

    bxTestList list;
    ScriptedTest known("zorsKnown_32f");
    ScriptedTest unknown("zorsUnknown_32f");
    list.push_back(&known);
    list.push_back(&unknown);
    bxConditions all;
    Capture listing(outErr);
    EXPECT_FALSE(list.runTests(all));
    EXPECT_EQ(list.numTests, 1) << "a test without a section does not count";
    EXPECT_EQ(list.numResults[OK], 1);
    EXPECT_EQ(known.flushed, 1);
    EXPECT_EQ(unknown.stopped, 0);
    EXPECT_EQ(listing.text().find("zorsUnknown"), std::string::npos);
    g_istrm.deleteIniFile();
    std::remove(path.c_str());
}

TEST_F(FrameworkTest, ParametersAreWrittenToAnIniFileInsteadOfMeasuring) {
    const std::string path = ::testing::TempDir() + "framework_written.ini";
    std::remove(path.c_str());
    ASSERT_TRUE(g_istrm.setIniFile(path.c_str(), true));
    bxIterator<int> a(0, "Len", "");
    a.add(64);
    ScriptedTest test;
    test.onCanStart = [&] { return test.regParm(a) != nullptr; };
    EXPECT_EQ(test.run(), OK);
    EXPECT_EQ(test.flushed, 0);
    EXPECT_STREQ(g_istrm.iniFile()->read("zorsScripted_32f", "Len", "").c_str(), "64");
    g_istrm.deleteIniFile();
    std::remove(path.c_str());
}

TEST_F(FrameworkTest, AnUnfitDataSizeIsScaledOrGivenUp) {
    struct Case {
        int givesUpAfter;
        bxResult result;
        int measured;
    };
    static int attempts;
    static int limit;
    const auto doubleLength = [](bxParameter* parm, int, int, bool) {
        auto& length = dynamic_cast<bxIterator<int>&>(*parm);
        length.setValue(2 * length.value());
        return ++attempts <= limit;
    };
    const auto savedQuery = zor_GetMaxCacheSizeB;
    zor_GetMaxCacheSizeB = [](int* size) { return *size = 1 << 20, ZorStatus(zorStsNoErr); };
    bxTest::m_cache = true;
    // From 4000 bytes: 5 doublings into the cache (104857 to 943718 bytes), 9 out of it (from 1101004).
    for (const Case& c : {Case{99, OK, 2}, Case{6, DATAFAIL, 1}, Case{3, DATAFAIL, 0}}) {
        attempts = 0;
        limit = c.givesUpAfter;
        bxIterator<int> size(0, "Len", "");
        size.add(1000);
        ScriptedTest test;
        test.onCanStart = [&] { return test.regCacheParm(size, nullptr, doubleLength) == test.cacheIter; };
        void* block = nullptr;
        test.onInit = [&] { return (block = bxTest::allocate(4 * size.value(), -1)) != nullptr; };
        test.onFlush = [&] { bxTest::deallocate(block); };
        int measured = 0;
        test.onTiming = [&] {
            ++measured;
            return OK;
        };
        bxTest::m_numParmsColm = 1; // the comment alone tells the two rows apart
        Capture listing(outErr);
        TableCapture table;
        EXPECT_EQ(test.run(), c.result);
        EXPECT_EQ(measured, c.measured);
        const std::string row = "zorsScripted_32f,inCache ,-,e,0,-\n";
        EXPECT_EQ(table.text().substr(0, row.size()), c.measured ? row : "");
        const std::string text = listing.text();
        EXPECT_EQ(text.find("-- Fail to allocate ") != std::string::npos, c.result == DATAFAIL) << text;
        EXPECT_EQ(text.find(" try: cacheParm=") != std::string::npos, c.result == DATAFAIL)
            << "where the attempts were hidden, a failure shows them";
        EXPECT_EQ(text.find("inCache:\n") != std::string::npos, c.measured == 0);
    }
    zor_GetMaxCacheSizeB = savedQuery;
}

TEST_F(FrameworkTest, DeprecatedTestNeedsEveryDeprecatableParameter) {
    bxIterator<int> a(1, "A", "");
    bxIterator<int> b(1, "B", "");
    bxIterator<int> plain(1, "C", "");
    a.addDeprecated(1, "a");
    b.addDeprecated(1, "b");
    ScriptedTest test;
    for (bxIterator<int>* parm : {&plain, &a, &b})
        test.regParm(*parm);
    EXPECT_TRUE(test.setDeprecatedFlag(true));
    EXPECT_TRUE(test.deprecated);
    b.setValue(2);
    EXPECT_FALSE(test.setDeprecatedFlag(true));
    EXPECT_FALSE(test.setDeprecatedFlag(false));
    EXPECT_FALSE(test.deprecated);
}

// ---- Data ----

/** Counts how often its copy was kept. */
class Owner : public bxObject {
  public:
    bool reserveCopy() override { return ++kept != 0; }
    int kept = 0;
};

TEST_F(FrameworkTest, EveryCombinationStartsAfresh) {
    bxIterator<int> a(0, "A", "");
    a.add(1);
    a.add(2);
    a.setNeedsInput(false);
    Owner owner;
    ScriptedTest test("zorsScripted_32f", "TimScripted//KV_REG_Ibs");
    test.onCanStart = [&] { return test.regParm(a) != nullptr; };
    std::vector<int> openSteps;
    void* block = nullptr;
    test.onInit = [&] {
        EXPECT_EQ(bxTest::m_vectorNum, 0);
        EXPECT_EQ(bxTest::m_vectorShift, 0);
        openSteps.push_back(g_trace.size());
        g_trace.traceIn("left open");
        return (block = bxTest::allocate(16, -1, &owner)) != nullptr;
    };
    test.onFlush = [&] {
        bxTest::deallocate(block);
        g_trace.traceIn("left open too");
    };
    g_tool.includeDataSet = true;
    test.onTiming = [&] {
        EXPECT_TRUE(test.tool.ibsMode) << "by the registration form";
        return OK;
    };
    EXPECT_EQ(test.run(), OK);
    EXPECT_EQ(owner.kept, 2);
    ASSERT_EQ(openSteps.size(), 2U);
    EXPECT_EQ(openSteps[0], openSteps[1]) << "a step left open does not lead into the next combination";
}

/** A test none of whose combinations is hot. */
class ColdLines : public ScriptedTest {
  public:
    bool isHotLine() override { return false; }
};

TEST_F(FrameworkTest, ColdLinesAreNotMeasuredInHotMode) {
    ColdLines test;
    test.onTiming = [] { return ADD_FAILURE(), OK; };
    bxTest::m_hot = 2;
    Capture listing(outPerf);
    EXPECT_EQ(test.run(), DATAFAIL);
    EXPECT_NE(listing.text().find("  measuring is omitted: not hot line\n"), std::string::npos);
}

TEST_F(FrameworkTest, WithoutALoopTheCallsAreTimedOneByOne) {
    const std::pair<int, const char*> methods[] = {{bxTool::methodAuto, "Auto"},
                                                   {bxTool::methodIterative, "Iterative"}};
    for (const auto& [method, name] : methods) {
        ScriptedTest test;
        test.funcLoop = nullptr;
        test.funcCall = nullptr;
        g_tool.method = method;
        g_tool.statMaxClocks = 5000;
        Capture capture(outErr);
        EXPECT_EQ(test.run(), OK);
        const std::string message = std::string(" ATTENTION! The test cannot execute ") + name +
                                    " timing.\n Statistic timing will be run instead.\n";
        EXPECT_NE(capture.text().find(message), std::string::npos) << capture.text();
        EXPECT_EQ(test.tool.funcClocks, 1000);
        EXPECT_STREQ(test.tool.info.c_str(), "nCalls=12");
    }
}

} // namespace
