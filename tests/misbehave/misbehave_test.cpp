// Runs tests of functions that misbehave: each ends its own test with the right result, the next test is that
// of an undisturbed run, and the thousandth is like the first.
#include "bx.h"
#include "data/bxplacement.h"
#include "misbehaviours.h"
#include "suite.h"
#include "testsupport.h"
#include "timing/bxcallwatch.h"
#include "timing/bxwatchdog.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr char storage[] = "--ZOR. Signal: Illegal storage access. in zorFunctionCalls\n";
constexpr char arithmetic[] =
    "--ZOR. Signal: FP error, such as overflow, division by zero, invalid operation. in zorFunctionCalls\n";

struct Misbehaviour {
    const char* function;
    bxResult result;
    const char* message;
};

const Misbehaviour misbehaviours[] = {
    {"zorsNullStore", EXCPTFAIL, storage},
    {"zorsWildRead", EXCPTFAIL, storage},
    {"zorsJumpToNowhere", EXCPTFAIL, storage},
    {"zorsIllegalInstruction", EXCPTFAIL, "--ZOR. Signal: Illegal instruction. in zorFunctionCalls\n"},
    {"zorsDivideInteger", EXCPTFAIL, arithmetic},
    {"zorsDivide87", EXCPTFAIL, arithmetic},
    {"zorsOverflowStack", EXCPTFAIL, storage},
    {"zorsWritePastEnd", EXCPTFAIL, storage},
    {"zorsCorruptHeap", EXCPTFAIL, "--ZOR. Signal: Unknown exception in zorFunctionCalls\n"},
    {"zorsExit", EXCPTFAIL, "--ZOR. Signal: The function called exit(3). in zorFunctionCalls\n"},
    {"zorsExitAtOnce", EXCPTFAIL, "--ZOR. Signal: The function called _exit(4). in zorFunctionCalls\n"},
    {"zorsRound87", BADSTSWRN,
     "-- Control   87: changed to Zero 64 Invalid Denormal Zerodivide Overflow Underflow Inexact \n"},
    {"zorsRoundSSX", BADSTSWRN,
     "-- Control   SSX: changed to Zero Invalid Denormal Zerodivide Overflow Underflow Inexact FlushToZero "
     "\n"},
    {"zorsDenormalSSX", BADSTSWRN,
     "-- Control   SSX: changed to Near Invalid Denormal Zerodivide Overflow Underflow Inexact NoFlushToZero "
     "\n"},
    {"zorsDenormalInputSSX", BADSTSWRN,
     "-- Control   SSX: changed to Near Invalid Denormal Zerodivide Overflow Underflow Inexact FlushToZero "
     "DenormalsAreZero \n"},
    {"zorsUnmaskSSX", BADSTSWRN,
     "-- Control   SSX: changed to Near Denormal Overflow Underflow Inexact FlushToZero \n"},
    {"zorsLeaveStack87", BADSTSWRN, " of 8 registers left in use\n"},
    {"zorsLeaveMMX", BADSTSWRN, "-- Stack     87: 8 of 8 registers left in use\n"},
    {"zorsRaise87", BADSTSWRN, "-- Status    87: ?Invalid "},
    {"zorsRaiseSSX", BADSTSWRN, "-- Status    SSX: ?Invalid "},
#if defined(__x86_64__)
    {"zorsClobberBX", BADSTSWRN, "-- Registers: rbx not preserved\n"},
    {"zorsClobberBP", BADSTSWRN, "-- Registers: rbp not preserved\n"},
    {"zorsClobberR12", BADSTSWRN, "-- Registers: r12 not preserved\n"},
    {"zorsClobberR13", BADSTSWRN, "-- Registers: r13 not preserved\n"},
    {"zorsClobberR14", BADSTSWRN, "-- Registers: r14 not preserved\n"},
    {"zorsClobberR15", BADSTSWRN, "-- Registers: r15 not preserved\n"},
    {"zorsClobberTwo", BADSTSWRN, "-- Registers: rbx r12 not preserved\n"},
#else
    // Not ebx: the position-independent caller of the function puts it back.
    {"zorsClobberBP", BADSTSWRN, "-- Registers: ebp not preserved\n"},
    {"zorsClobberSI", BADSTSWRN, "-- Registers: esi not preserved\n"},
    {"zorsClobberDI", BADSTSWRN, "-- Registers: edi not preserved\n"},
    {"zorsClobberTwo", BADSTSWRN, "-- Registers: esi edi not preserved\n"},
#endif
    {"zorsSetDirection", BADSTSWRN, "-- Registers: DF not preserved\n"},
    {"zorsThrow", EXCPTFAIL, "--ZOR. Exception: the table is empty in zorFunctionCalls\n"},
    {"zorsThrowNumber", EXCPTFAIL, "--ZOR. Signal: Unknown exception in zorFunctionCalls\n"},
    {"zorsPrint", OK, ""},
};

bool underSanitizer() {
#if defined(__SANITIZE_ADDRESS__)
    return true;
#elif defined(__has_feature)
    return __has_feature(address_sanitizer);
#else
    return false;
#endif
}

#ifdef BENCHEX_EMULATED
constexpr bool underEmulator = true;
#else
constexpr bool underEmulator = false;
#endif

/** The processor as this process sees it: the emulator runs x87 code without its traps. */
bool x87Traps() {
    static const bool traps = [] {
        bxInitCtrlStatus();
        try {
            bxFaultGuard guard;
            if (sigsetjmp(guard.buffer(), 1) != 0)
                guard.raise();
            zorsDivide87();
        } catch (const bxException&) {
            return true;
        }
        bxResetFpState();
        return false;
    }();
    return traps;
}

/** Whether the kind can be shown here. */
bool possible(const Misbehaviour& kind) {
    const std::string function = kind.function;
    return (function != "zorsDivide87" || x87Traps()) && (function != "zorsCorruptHeap" || !underSanitizer());
}

bxTest& testOf(const std::string& function) {
    for (bxTest* test : *pTestList)
        if (function == test->name.c_str())
            return *test;
    throw std::invalid_argument(function);
}

/** Standard output and errors go nowhere while it lives: functions and the heap write there. */
class Silence {
  public:
    Silence() {
        std::fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY);
        for (int fd : {STDOUT_FILENO, STDERR_FILENO}) {
            m_kept.push_back(dup(fd));
            dup2(nowhere, fd);
        }
        close(nowhere);
    }
    ~Silence() {
        for (int fd : {STDOUT_FILENO, STDERR_FILENO}) {
            const int kept = m_kept[static_cast<std::size_t>(fd - STDOUT_FILENO)];
            dup2(kept, fd);
            close(kept);
        }
    }

  private:
    std::vector<int> m_kept;
};

/** Runs a test by a method; the listing of the run. */
std::string listingOf(bxTest& test, int method = bxTool::methodLoop) {
    g_tool = bxTool();
    g_tool.setMethodLoop(3);
    g_tool.setMethodBest(1, 64, 0);
    g_tool.method = method;
    g_tool.accuracy = 500; // of any figure: what is tested here is not how steady they are
    bxTestList::m_pCurrentTest = &test;
    Capture listing(outPerf);
    {
        const Silence silence;
        test.run();
    }
    bxTestList::m_pCurrentTest = nullptr;
    return listing.text();
}

Witness witness() {
    s_witness = {};
    bxTest& test = testOf("zorsWitness_32f");
    const std::string listing = listingOf(test);
    EXPECT_EQ(test.result, OK) << listing;
    return s_witness;
}

/** A line of /proc/self/status in kilobytes. */
long memoryOf(const std::string& what) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(what + ":", 0) == 0)
            return std::stol(line.substr(what.size() + 1));
    return -1;
}

long openFiles() {
    long n = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++n;
    return n;
}

class Misbehave : public testing::Test {
  protected:
    void SetUp() override {
        bxCpuTicker::m_freqMHz = 1000;
        bxTest::m_numParmsColm = 3;
        bxTest::m_numResultColm = 5;
        g_placement.rules.guard = true;
    }
    void TearDown() override {
        g_placement.rules.guard = false;
        bxSetTimeLimit(0);
    }
};

TEST_F(Misbehave, EachEndsItsOwnTestAndDisturbsNoOther) {
    const Witness undisturbed = witness();
    EXPECT_EQ(undisturbed.control87, 0x23BU);
    EXPECT_EQ(undisturbed.controlSSX, 0x9F80U);
    EXPECT_EQ(undisturbed.tags87, 0xFFFFU);
    for (const Misbehaviour& kind : misbehaviours) {
        if (!possible(kind))
            continue;
        for (int method :
             {bxTool::methodAuto, bxTool::methodLoop, bxTool::methodStat, bxTool::methodIterative}) {
            bxTest& test = testOf(kind.function);
            const std::string listing = listingOf(test, method);
            EXPECT_EQ(test.result, kind.result) << listing;
            EXPECT_NE(listing.find(kind.message), std::string::npos) << listing;
            EXPECT_EQ(bxAllocatedSize(), 0) << kind.function;
            EXPECT_TRUE(witness() == undisturbed) << "after " << kind.function << ", method " << method;
        }
    }
}

TEST_F(Misbehave, ARegisterThatCallersPutBackIsSeenWithoutThem) {
    g_callWatch.init();
    g_callWatch.call(zorsClobberBX);
    EXPECT_STREQ(g_callWatch.registerNames().c_str(), sizeof(void*) == 8 ? "rbx " : "ebx ");
    g_callWatch.init();
}

TEST_F(Misbehave, AnEndlessLoopIsLeftAtTheTimeLimit) {
    const Witness undisturbed = witness();
    bxSetTimeLimit(1);
    for (int i = 0; i < 3; ++i) {
        bxTest& test = testOf("zorsLoopForever");
        const std::string listing = listingOf(test);
        EXPECT_EQ(test.result, EXCPTFAIL);
        EXPECT_NE(listing.find("--ZOR. Signal: Time limit of 1 s exceeded. in zorFunctionCalls\n"),
                  std::string::npos)
            << listing;
        EXPECT_TRUE(witness() == undisturbed);
    }
}

// Each kind a thousand times in one process, in mixed order and by every method (the endless loop, which
// costs a second each time, has a test of its own).
TEST_F(Misbehave, TheThousandthIsLikeTheFirst) {
    constexpr int rounds = 1000;
    const int times = underSanitizer() ? rounds / 10 : rounds;
    const int settled = times / 10; // rounds after which no first use is left
    long memory = 0;
    long data = 0;
    long files = 0;
    int runs = 0;
    {
        const Witness undisturbed = witness();
        std::vector<const Misbehaviour*> order;
        for (const Misbehaviour& kind : misbehaviours)
            if (possible(kind))
                order.push_back(&kind);
        std::mt19937 random(1); // NOLINT: the same order in every run
        for (int round = 0; round < times; ++round) {
            std::shuffle(order.begin(), order.end(), random);
            for (const Misbehaviour* kind : order) {
                bxTest& test = testOf(kind->function);
                const std::string listing = listingOf(test, round % 4);
                ASSERT_EQ(test.result, kind->result) << listing;
                ASSERT_NE(listing.find(kind->message), std::string::npos) << listing;
                ++runs;
            }
            ASSERT_TRUE(witness() == undisturbed) << "round " << round;
            if (round == settled) {
                memory = memoryOf("VmRSS");
                data = memoryOf("VmData");
                files = openFiles();
            }
        }
        memory = memoryOf("VmRSS") - memory;
        data = memoryOf("VmData") - data;
        files = openFiles() - files;
    }
    std::printf("%d tests run; after round %d: resident memory %+ld kB, data %+ld kB, file handles %+ld\n",
                runs, settled, memory, data, files);
    EXPECT_EQ(files, 0);
    if (!underSanitizer() && !underEmulator) { // both keep memory of their own
        EXPECT_LE(memory, 512);
        EXPECT_LE(data, 512);
    }
}

} // namespace
