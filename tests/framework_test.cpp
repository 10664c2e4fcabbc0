/** \file
 * The life of a test: combinations, results, figures and rows.
 */
#include "frameworksupport.h"

#include <cmath>

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
        Capture listing(outErr);
        EXPECT_EQ(test.run(), c.result);
        EXPECT_EQ(measured, c.measured);
        EXPECT_EQ(listing.text().find("-- Fail to allocate ") != std::string::npos, c.result == DATAFAIL);
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

// ---- Figures and texts ----

TEST_F(FrameworkTest, FormatsClocks) {
    struct Case {
        double value;
        const char* text;
    };
    ScriptedTest test;
    for (const Case& c : {Case{1234.6, "1235"},
                          {12.345, "12.3"},
                          {1.2345, "1.23"},
                          {0.00005, "5.000e-05"},
                          {20000000, "2.000e+07"},
                          {0, ""},
                          {-1, ""},
                          {std::nan(""), ""},
                          {100, "100"},
                          {99.96, "100.0"},
                          {10, "10.0"},
                          {1, "1.00"},
                          {0.1, "0.100"},
                          {0.01, "0.0100"},
                          {0.001, "0.00100"},
                          {0.0005, "0.000500"},
                          {0.0001, "0.000100"},
                          {10000000, "10000000"}})
        EXPECT_STREQ(test.formatClocks(c.value).c_str(), c.text) << c.value;
}

TEST_F(FrameworkTest, FillsTextsToAWidth) {
    struct Case {
        const char* text;
        int width;
        const char* filled;
    };
    for (const Case& c :
         {Case{"ab", 5, "   ab"}, {"ab", -5, "ab   "}, {"ab", 1, "ab"}, {"ab", 0, "ab"}, {"", 2, "  "}})
        EXPECT_STREQ(bxTest::sFormat(c.text, c.width).c_str(), c.filled);
    EXPECT_STREQ(bxTest::sFormat(-7, 4).c_str(), "  -7");
    EXPECT_STREQ(bxTest::sFormat(2.0, -3).c_str(), "2  ");
    EXPECT_STREQ(bxTest::sFormat(12345678901LL, 12).c_str(), " 12345678901");
}

TEST_F(FrameworkTest, FiguresOfAMeasurement) {
    ScriptedTest test;
    test.tool.funcClocks = 4096;
    test.flops = 2048;
    test.divisor = 1024;
    EXPECT_EQ(test.performance(true), 500);
    EXPECT_EQ(test.performance(false), 4);
    EXPECT_STREQ(test.perfString(true).c_str(), "500");
    EXPECT_STREQ(bxTest::usecString(test.tool).c_str(), "4.1");
    test.flops = 0;
    EXPECT_STREQ(test.perfString(true).c_str(), "") << "no float function";

    // Where the x87 traps a division by zero, none may happen.
    test.tool.funcClocks = 0;
    test.flops = 2048;
    EXPECT_STREQ(test.perfString(true).c_str(), "");
    EXPECT_STREQ(test.perfString(false).c_str(), "");
    test.divisor = 0;
    EXPECT_EQ(test.performance(false), 0);
    bxCpuTicker::m_freqMHz = 1;
    test.setTimingResult(7, "own");
    EXPECT_STREQ(bxTest::usecString(test.tool).c_str(), "7");
    EXPECT_STREQ(test.getComment().c_str(), "own");
}

TEST_F(FrameworkTest, ResultLine) {
    ScriptedTest test;
    test.divisor = 64;
    test.tool.funcClocks = 640;
    test.tool.actualAccuracy = 0.008;
    test.tool.info = "nLps=512";
    test.tool.method = bxTool::methodAuto;
    EXPECT_STREQ(test.testResultString().c_str(),
                 "  acc=0.8%   nLps=512    perf=      640/       64=     10.0 clocks");
    test.tool.method = bxTool::methodStat;
    EXPECT_STREQ(test.testResultString().c_str(), "  nLps=512    perf=      640/       64=     10.0 clocks");
}

TEST_F(FrameworkTest, RegistrationText) {
    enum Function { loop = 1, stat = 2, own = 4, call = 8, init = 16 };
    struct Case {
        int functions;
        int method;
        bool restore;
        const char* text;
    };
    const Case cases[] = {
        {0, 0, false, " without any function to call.\n No standard timing method is available"},
        {loop | stat | call, 0, false,
         " with loopMethod, statMethod, funcCall.\n   loopMethod is called for measuring."},
        {loop | stat, 2, false, " with loopMethod, statMethod.\n   statMethod is called for measuring."},
        {loop, 2, false, " with loopMethod.\n   loopMethod is called for measuring."},
        {stat, 1, false, " with statMethod.\n   statMethod is called for measuring."},
        {call | init, 3, false, " with funcCall, funcInit.\n   funcCall is called for measuring."},
        {loop | call, 0, true,
         " with loopMethod, funcCall.\n   funcCall with Set&Use is called for measuring."},
        {own | call, 0, true, " with oldMethod, funcCall.\n   oldMethod is called for measuring."},
    };
    for (const Case& c : cases) {
        ScriptedTest test("f", "Tim//KV_REG_I");
        test.funcLoop = c.functions & loop ? &ScriptedTest::loop : nullptr;
        test.funcStat = c.functions & stat ? &ScriptedTest::stat : nullptr;
        test.funcTool = c.functions & own ? [](bxTool&, int) { return OK; } : bxFuncTool();
        test.funcCall = c.functions & call ? &ScriptedTest::call : nullptr;
        test.initFunc = c.functions & init ? &ScriptedTest::call : nullptr;
        test.tool.method = c.method;
        test.tool.includeDataSet = c.restore;
        EXPECT_EQ(std::string(test.regInfo().c_str()),
                  std::string("   Test has been registered by KV_REG_I macro") + c.text);
    }
    EXPECT_EQ(ScriptedTest("f", "Tim").regInfo().find(" by "), -1);
}

// ---- Data ----

TEST_F(FrameworkTest, BlocksAreSpreadAndMisalignedAsSet) {
    const long long mark = bxMallocMark();
    bxSetVectorAlign(3);
    bxTest::m_vectorNum = bxTest::m_vectorShift = 0;
    const auto distance = [](int align) {
        return static_cast<int>(reinterpret_cast<std::uintptr_t>(bxTest::allocate(16, align)) % 64);
    };
    EXPECT_EQ(distance(-4), 12) << "3 elements of 4 bytes";
    EXPECT_EQ(bxTest::m_vectorShift, bxGetVectorShift());
    EXPECT_EQ(distance(-4), 0) << "only the first block is misaligned";
    EXPECT_EQ(distance(5), 5) << "a distance in bytes holds as given";
    bxSetAlignSrc(false);
    EXPECT_EQ(distance(-1), 3);
    bxSetAlignSrc(true);
    bxSetVectorAlign(0);
    while (bxTest::m_vectorNum < 63)
        bxTest::allocate(1, 0);
    EXPECT_EQ(bxTest::m_vectorShift, 32256);
    bxTest::allocate(1, 0);
    EXPECT_EQ(bxTest::m_vectorShift, 0) << "starts again below 32768";
    bxFreeSince(mark);
}

} // namespace
