// The session: key parser, key table, help and the order of a run. What a user sees of it is tested in cli/.
#include "framework/bxregister.h"
#include "framework/bxtestlist.h"
#include "output/bxostream.h"
#include "session/bxdialogue.h"
#include "session/bxkeys.h"
#include "session/bxsession.h"
#include "system/bxenvironment.h"
#include "testsupport.h"
#include "timing/bxexception.h"
#include "timing/bxtool.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string str(const bxString& text) {
    return text.c_str();
}

/** "key:argument" of every key, joined by blanks. */
std::string keysOf(const bxCommandList& keys) {
    std::string text;
    for (const bxCommandKey& key : keys)
        text.append(text.empty() ? "" : " ").append(1, key.key()).append(":").append(str(key.argument()));
    return text;
}

// ---- Words and keys ----

TEST(CommandKey, IsReadFromAWordAndTheNext) {
    struct Row {
        const char* word;
        const char* next;
        const char* expected; /**< key and argument, null: no key */
    };
    const Row rows[] = {
        {"-B", "", "B"},
        {"/B", "", "B"},
        {"-oout.txt", "", "oout.txt"},
        {"-o", "out.txt", "oout.txt"},
        {"-oa", "b", "oa"},
        {"-f-", "MDCT", "f-MDCT"},
        {"-f-MDCT", "x", "f-MDCT"},
        {"-f=", "", "f="},
        {"-f=+a", "", "f=+a"},
        {"-q+", "", "q+"},
        {"--", "x", "-x"},
        {"--help", "x", "h"},
        {"--version", "x", "v"},
        {"--helpless", "", "-helpless"},
        {"-?", "", "?"},
        {"-", "x", nullptr},
        {"/", "", nullptr},
        {"", "", nullptr},
        {"word", "x", nullptr},
        {"=x", "", nullptr},
    };
    for (const Row& row : rows) {
        bxCommandKey key;
        EXPECT_EQ(key.setArg(row.word, row.next), row.expected != nullptr) << row.word;
        EXPECT_EQ(isKeyString(row.word), row.expected != nullptr) << row.word;
        if (row.expected) {
            bxString argument = "untouched";
            EXPECT_FALSE(key.getArg('~', argument));
            EXPECT_EQ(str(argument), "untouched");
            EXPECT_TRUE(key.getArg(row.expected[0], argument)) << row.word;
            EXPECT_EQ(str(argument), row.expected + 1) << row.word;
        }
    }
    EXPECT_TRUE(bxCommandKey().isKey(' '));
}

TEST(CommandList, TakesTheNextWordUnlessItIsAKey) {
    struct Row {
        const char* line;
        const char* expected;
    };
    const Row rows[] = {
        {"", ""},
        {"-B -ftns", "B: f:tns"},
        {"-f tns -o", "f:tns o:"},
        {"-fMDCT extra -B", "f:MDCT B:"},
        {"lost -B lost too -v", "B:lost v:"},
        {"-N -1", "N: 1:"},
        {"-o /tmp/x", "o: t:mp/x"},
        {"-o - -B", "o:- B:"},
        {"-B;-v\t-e\r\n-s-", "B: v: e: s:-"},
        {"-d \"Len=1; 2\" -B", "d:\"Len=1; 2\" B:"},
    };
    for (const Row& row : rows) {
        bxCommandList keys;
        keys.setArgs(row.line);
        EXPECT_EQ(keysOf(keys), row.expected) << row.line;
    }
}

TEST(CommandList, KeepsBlanksInsideTheWordsOfAVector) {
    std::string words[] = {"-d", "Len=1; 2", "-f"};
    char* argv[] = {words[0].data(), words[1].data(), words[2].data()};
    bxCommandList keys;
    keys.setArgs(3, argv);
    EXPECT_EQ(keysOf(keys), "d:Len=1; 2 f:");
}

TEST(CommandList, AnswersForTheLastKeyOfItsCharacter) {
    bxCommandList keys;
    keys.setArgs("-nfirst -n second -B");
    EXPECT_TRUE(keys.setArg('f', "-Inv"));
    EXPECT_FALSE(keys.setArg("word", "-n"));
    bxString argument;
    EXPECT_TRUE(keys.getArg('n', argument));
    EXPECT_EQ(str(argument), "second");
    EXPECT_TRUE(keys.getArg('f', argument));
    EXPECT_EQ(str(argument), "-Inv");
    EXPECT_TRUE(keys.isKey('B'));
    EXPECT_FALSE(keys.isKey('b'));
    EXPECT_FALSE(keys.getArg('N', argument));
}

// ---- A session whose steps can be seen ----

int s_initCalls = 0;
ZorStatus s_initStatus = 0;
ZorStatus countedInit() {
    ++s_initCalls;
    return s_initStatus;
}

/** Notes each step and does it; its inner operations are open to the tests. */
class OpenSession : public bxSession {
  public:
    std::string steps;
    const char* wrongValue = nullptr; /**< thrown by the common settings */
    bool starts = true;

    void initSession() override {
        step("init");
        bxSession::initSession();
        zor_Init = m_realInit;
    }
    bool startSession() override { return step("start"), starts; }
    void updateOptions() override { step("update"), bxSession::updateOptions(); }
    bool parseCommandLine(int argc, char** argv) override {
        return step("parse"), bxSession::parseCommandLine(argc, argv);
    }
    void listTests(int mode) override { step(std::string("list").append(std::to_string(mode))); }
    void hint_quick(bool hide) override { step(hide ? "quick" : "quick-all"); }
    void hint_full(bool hide) override { step(hide ? "full" : "full-all"); }
    void hint_descr(char key) override { step(std::string("descr-") + key); }
    void outputHeader() override { step("header"); }
    void outputFooter() override { step("footer"); }
    void outputSignal() override { step("signal"); }
    void putTableTitle() override { step("heads"), bxSession::putTableTitle(); }
    void readCommonData() override {
        step("settings");
        if (wrongValue)
            throw bxException(bxString(wrongValue));
    }

    /** A run with these words after the program name. */
    int runWith(std::vector<std::string> words) {
        words.insert(words.begin(), "./program");
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        return run(static_cast<int>(argv.size()), argv.data());
    }
    /** The registered keys when zor_Init answers with a status. */
    std::string keysWhenInitGives(ZorStatus status) {
        m_realInit = zor_Init;
        s_initStatus = status;
        s_initCalls = 0;
        zor_Init = countedInit;
        initSession();
        std::string keys;
        for (const bxOption* option : m_options)
            keys += option->key;
        return keys;
    }
    int askModeFor(int mode, bool batch) {
        m_askMode = mode;
        m_batchMode = batch;
        bxSession::updateOptions();
        return m_askMode;
    }
    void hintOf(char what, bool hide) { bxSession::hint(what, hide); }
    void describe(char key) { bxSession::hint_descr(key); }

  private:
    void step(const std::string& name) { steps.append(steps.empty() ? "" : " ").append(name); }
    ZorStatus (*m_realInit)() = zor_Init;
};

class Session : public testing::Test {
  protected:
    void SetUp() override {
        setZorEnvironment();
        forgetKeys();
    }
    void TearDown() override { forgetKeys(); }

    static void forgetKeys() {
        bxSession::m_exitLevel = 0;
        s_hintArg = 0;
        s_hintHide = true;
        s_version = false;
        qKeys = false;
        bxTestList::m_startFunc = "";
        g_ostrm.setOutLevel(outErr);
    }
    OpenSession session;
};

TEST_F(Session, RegistersTheKeysThatItsProgramHas) {
    EXPECT_EQ(session.keysWhenInitGives(-2), "BAdiIPoOLrRuUgnplftFYHSCsevh?");
    EXPECT_EQ(s_initCalls, 1);
    qKeys = true;
    OpenSession withCore;
    EXPECT_EQ(withCore.keysWhenInitGives(-1), "BAdiIPoOLrRqQuUgnplftFYHTNSCsevh?");
    EXPECT_EQ(s_initCalls, 1);
}

TEST_F(Session, RunsItsStepsInOrder) {
    const std::string begin = "init parse update ";
    struct Row {
        std::vector<std::string> words;
        std::string expected;
    };
    const Row rows[] = {
        {{"-B", "-fnone"}, begin + "start header settings heads footer signal"},
        {{"-v"}, begin + "start signal"},
        {{"-h", "-e"}, begin + "start quick signal"},
        {{"-e"}, begin + "start list0 signal"},
        {{"-e+", "-v"}, begin + "start list1 signal"},
        {{"-e-"}, begin + "start list-1 signal"},
        {{"-o/no/such/directory/file"}, "init parse signal"},
        {{"-I/no/such/directory/file.ini"}, "init parse signal"},
    };
    for (const Row& row : rows) {
        forgetKeys();
        OpenSession one;
        EXPECT_EQ(one.runWith(row.words), 0);
        EXPECT_EQ(one.steps, row.expected) << row.words.front();
        EXPECT_EQ(pTestList, nullptr);
    }
    forgetKeys();
    session.starts = false;
    session.runWith({"-B"});
    EXPECT_EQ(session.steps, begin + "start signal");
}

TEST_F(Session, TakesConditionsBeforeItRuns) {
    class Selecting : public OpenSession {
      public:
        int admitted = -1;
        void putTableTitle() override {
            admitted = 0;
            for (const bxTest* test : *pTestList)
                admitted += m_conditions->tobeRun(test);
        }
    };
    Selecting selecting;
    selecting.addCondition(new RunCondition_fNot("Quarn"));
    selecting.runWith({"-B"});
    EXPECT_EQ(selecting.admitted, 0) << "the report of the processor is the only test";
}

TEST_F(Session, EndsInOrderAfterAWrongValue) {
    session.wrongValue = "Invalid value of Method = wrong";
    Capture shown(outErr);
    EXPECT_EQ(session.runWith({"-B", "-fnone"}), 0);
    EXPECT_EQ(session.steps, "init parse update start header settings footer signal");
    EXPECT_NE(shown.text().find("--ZOR. Exception: Invalid value of Method = wrong\n"), std::string::npos);
}

// ---- Exit keys ----

TEST_F(Session, RanksTheKeysThatEndARun) {
    struct Row {
        std::vector<std::string> words;
        int level;
        const char* info;
    };
    const Row rows[] = {
        {{"-B", "-fnone"}, 0, "ignored"},
        {{"-v", "-B"}, 3, "ignored because of -v option"},
        {{"-v", "-e"}, 1, "ignored because of -e option"},
        {{"-e", "-v", "-h"}, 2, "ignored because of -h option"},
        {{"-e", "-?"}, 2, "ignored because of -h option"},
    };
    for (const Row& row : rows) {
        forgetKeys();
        OpenSession one;
        one.runWith(row.words);
        EXPECT_EQ(bxSession::m_exitLevel, row.level) << row.words.front();
        EXPECT_EQ(str(bxSession::getExitInfo()), row.info);
    }
}

/** What of -e (1), -h (2) and -v (3) makes the report of each key "ignored because of". */
TEST_F(Session, ReportsKeysThatHaveNoEffectBesideAnExitKey) {
    struct Row {
        const char* keys;
        bool ignoredAt[4];
    };
    const Row rows[] = {
        {"BAdiIPLqQuUFYSC", {false, true, true, true}},
        {"ftHse", {false, false, true, true}},
        {"oOrRgnplTNvh?", {false, false, false, false}},
    };
    std::size_t count = 0;
    for (const Row& row : rows) {
        for (const bxKeyRow& key : bxKeyTable()) {
            if (std::string(row.keys).find(key.key) == std::string::npos)
                continue;
            ++count;
            for (int level = 0; level <= 3; ++level) {
                bxSession::m_exitLevel = level;
                EXPECT_EQ(str(key.info("X")) == str(bxSession::getExitInfo()), row.ignoredAt[level])
                    << key.key << " at " << level;
            }
        }
    }
    EXPECT_EQ(count, bxKeyTable().size());
}

TEST_F(Session, AsksByKeysUnlessInBatchMode) {
    EXPECT_EQ(session.askModeFor(0, false), 3);
    EXPECT_EQ(session.askModeFor(4, false), 4);
    EXPECT_EQ(session.askModeFor(15, true), 0);
    EXPECT_EQ(session.askModeFor(0, true), 0);
}

TEST_F(Session, KeepsThePriorityThatWasValidLast) {
    const int before = bxTool::m_priority;
    struct Row {
        const char* argument;
        int priority;
    };
    for (const Row& row : {Row{"HIGH", 1}, {"high", 1}, {"L", 3}, {"", 3}, {"NORMAL", 2}, {"1", 2}}) {
        Y_apply(row.argument, &session);
        EXPECT_EQ(bxTool::m_priority, row.priority) << row.argument;
    }
    bxTool::m_priority = before;
}

// ---- Help ----

TEST_F(Session, ChoosesTheHelpByTheCharacterBehindTheKey) {
    struct Row {
        char what;
        bool hide;
        const char* expected;
    };
    const Row rows[] = {{1, true, "quick"},       {1, false, "quick-all"}, {'h', true, "full"},
                        {'?', false, "full-all"}, {'?', true, "descr-?"},  {'h', false, "descr-h"},
                        {'B', true, "descr-B"},   {'B', false, "descr-B"}};
    for (const Row& row : rows) {
        session.steps.clear();
        session.hintOf(row.what, row.hide);
        EXPECT_EQ(session.steps, row.expected);
    }
}

TEST_F(Session, ExplainsEveryKeyWithinAHundredColumns) {
    session.keysWhenInitGives(0);
    session.askModeFor(0, true); // puts the processor types into the text of -T
    for (const bxKeyRow& key : bxKeyTable()) {
        if (key.needs == bxKeyNeeds::nameTables)
            continue;
        Capture shown(outPerf);
        session.describe(key.key);
        std::istringstream text(shown.text());
        for (std::string line; std::getline(text, line);) {
            EXPECT_LE(line.size(), 100u) << line;
            EXPECT_EQ(line.find('\t'), std::string::npos) << line;
        }
        if (std::string("ev?").find(key.key) == std::string::npos) {
            EXPECT_NE(shown.text().find("    Default: "), std::string::npos) << key.key;
            EXPECT_NE(shown.text().find("    Example: benchex "), std::string::npos) << key.key;
        }
    }
    Capture shown(outPerf);
    session.describe('T');
    EXPECT_NE(shown.text().find(" SSE2 "), std::string::npos);
}

// ---- Hooks ----

TEST(Registration, AppendsToTheForcedCommandLine) {
    EXPECT_EQ(pCmdLine, nullptr);
    EXPECT_EQ(bxRegCmdLine("-B"), 1);
    EXPECT_EQ(bxRegCmdLine("-f x"), 1);
    EXPECT_EQ(str(*pCmdLine), " -B -f x");
    pCmdLine = nullptr;
}

} // namespace
