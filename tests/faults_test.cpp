#include "system/bxpriority.h"
#include "testsupport.h"
#include "timing/bxexception.h"
#include "timing/bxfpwatch.h"
#include "timing/bxresult.h"
#include "timing/bxsignal.h"
#include "timing/bxtool.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace {

// Functions that misbehave. Volatile objects and assembly keep the compiler from seeing through them.

void nullStore() {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

void jumpToNowhere() {
    void (*volatile nowhere)() = nullptr;
    nowhere();
}

void illegalInstruction() {
    __asm__ volatile("ud2");
}

void integerDivision() {
    int remainder;
    __asm__ volatile("xorl %%ecx, %%ecx; movl $1, %%eax; cltd; idivl %%ecx"
                     : "=d"(remainder)
                     :
                     : "eax", "ecx", "cc");
}

void x87Division() {
    __asm__ volatile("fld1; fldz; fdivrp; fwait; fstp %%st(0)" : : : "st", "st(1)");
}

/** A page of a file that has none. */
const volatile char* pageBeyondTheEnd() {
    char name[] = "/tmp/faultsXXXXXX";
    const int fd = mkstemp(name);
    unlink(name);
    void* const page = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fd, 0);
    close(fd);
    return static_cast<char*>(page);
}

void brokenMapping() {
    static const volatile char* const page = pageBeyondTheEnd();
    static_cast<void>(*page);
}

/** Goes deeper for ever; the pointer keeps the compiler from seeing that. */
int (*volatile s_deeper)(int depth);

int overflowStack(int depth) {
    volatile char frame[4096];
    frame[0] = static_cast<char>(depth);
    s_deeper = overflowStack;
    return s_deeper(depth + 1) + frame[0];
}

struct Fault {
    const char* what;
    void (*raise)();
    const char* info;
};

const Fault faults[] = {
    {"null store", nullStore, "Illegal storage access."},
    {"jump to nowhere", jumpToNowhere, "Illegal storage access."},
    {"illegal instruction", illegalInstruction, "Illegal instruction."},
    {"integer division", integerDivision, "FP error, such as overflow, division by zero, invalid operation."},
    {"abort", std::abort, "Unknown exception"},
    {"broken mapping", brokenMapping, "Unknown exception"},
    {"stack overflow", [] { overflowStack(0); }, "Illegal storage access."},
};

/** Runs a function under a guard; the text of its fault, empty when it returned. */
std::string faultOf(void (*function)()) {
    try {
        bxFaultGuard guard;
        if (sigsetjmp(guard.buffer(), 1) != 0)
            guard.raise();
        function();
    } catch (const bxException& e) {
        return e.info();
    }
    return {};
}

/** The emulator runs x87 code without its traps. */
bool x87Traps() {
    static const bool traps = [] {
        bxInitCtrlStatus();
        return !faultOf(x87Division).empty();
    }();
    return traps;
}

TEST(Faults, EachIsCaughtAndNamed) {
    for (const Fault& fault : faults)
        EXPECT_EQ(faultOf(fault.raise), fault.info) << fault.what;
    EXPECT_EQ(faultOf([] {}), "");
    EXPECT_EQ(tsSignal::m_armed, 0);
}

TEST(Faults, TheThousandthIsCaughtLikeTheFirst) {
    for (int i = 0; i < 1000; ++i)
        for (const Fault& fault : faults)
            ASSERT_EQ(faultOf(fault.raise), fault.info) << fault.what << ", time " << i;
}

TEST(Faults, FloatingPointStateIsPutBack) {
    if (!x87Traps())
        GTEST_SKIP() << "no x87 traps here";
    bxInitCtrlStatus();
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(faultOf(x87Division), faults[3].info);
        ASSERT_EQ(bx_get_sw_fpu() & 0xBFU, 0U) << "a flag is pending";
        ASSERT_EQ(bx_set_cw_fpu(0, 0) & 0xF3FU, 0x23BU);
        ASSERT_EQ(bx_get_ssx(), 0x9F80U);
    }
    __asm__ volatile("fld1; fld1; fld1; fld1; fld1; fld1; fld1; fld1");
    EXPECT_EQ(bx_get_sw_fpu() & 0x3FU, 0U) << "the register stack was not empty";
    bxResetFpState();
}

TEST(Faults, PriorityIsPutBack) {
    if (getuid() != 0)
        GTEST_SKIP() << "needs root";
    const int before = getpriority(PRIO_PROCESS, 0);
    setpriority(PRIO_PROCESS, 0, 5);
    faultOf([] {
        bxSetPriority(3);
        nullStore();
    });
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), 5);
    setpriority(PRIO_PROCESS, 0, before);
}

TEST(Faults, GuardsNest) {
    bxFaultGuard outer;
    volatile int caughtOutside = 0;
    if (sigsetjmp(outer.buffer(), 1) == 0) {
        EXPECT_EQ(faultOf(nullStore), "Illegal storage access.");
        EXPECT_EQ(faultOf([] {}), "");
        illegalInstruction(); // the inner guards are gone: this one is for the outer
        ADD_FAILURE() << "not caught";
    } else {
        caughtOutside = 1;
        EXPECT_EQ(tsSignal::code(), SIGILL);
    }
    EXPECT_EQ(caughtOutside, 1);
}

/** The process ended by a signal, or by the report of a sanitizer, which takes unguarded faults over. */
class DiedOf {
  public:
    explicit DiedOf(int sig) : m_sig(sig) {}
    bool operator()(int status) const {
#if defined(__SANITIZE_ADDRESS__)
        constexpr bool sanitized = true;
#elif defined(__has_feature)
        constexpr bool sanitized = __has_feature(address_sanitizer);
#else
        constexpr bool sanitized = false;
#endif
        return testing::KilledBySignal(m_sig)(status) || (sanitized && status != 0);
    }

  private:
    int m_sig;
};

TEST(FaultsDeathTest, WithoutAGuardTheProcessDiesOfItsFault) {
    EXPECT_EXIT(nullStore(), DiedOf(SIGSEGV), "");
    EXPECT_EXIT(std::abort(), DiedOf(SIGABRT), "");
    EXPECT_EXIT(
        {
            faultOf(nullStore);
            illegalInstruction();
        },
        DiedOf(SIGILL), "");
}

TEST(FaultsDeathTest, ASecondFaultOnTheWayOutDoesNotGoRoundInCircles) {
    EXPECT_EXIT(
        {
            bxFaultGuard guard;
            if (sigsetjmp(guard.buffer(), 1) != 0)
                nullStore();
            illegalInstruction();
        },
        DiedOf(SIGSEGV), "");
}

// Floating-point watch.

TEST(FpWatch, DefaultControlWords) {
    bxInitCtrlStatus();
    bxTool::ctrlStart();
    bxTool::ctrlStop();
    EXPECT_STREQ(g_ctrl87.strCW().c_str(), "Near 53 Invalid Denormal Overflow Underflow Inexact ");
    EXPECT_STREQ(g_ssx.strCW().c_str(),
                 "Near Invalid Denormal Zerodivide Overflow Underflow Inexact FlushToZero ");
    EXPECT_STREQ(g_ctrl87.strSW().c_str(), "Ok");
    EXPECT_FALSE(bxBadCtrlStatus());
}

TEST(FpWatch, FlagsByName) {
    const std::pair<int, const char*> flags[] = {{0, "Ok"},
                                                 {0x20, "_Inexact "},
                                                 {0x02, "?Denormal "},
                                                 {0x3F, "?Invalid ?Denormal ?Zerodivide ?Overflow ?Underflow "
                                                        "_Inexact "}};
    for (const auto& [value, text] : flags) {
        EXPECT_STREQ(ts87Base::strSW(value).c_str(), text);
        EXPECT_STREQ(tsSSXBase(true).strExceptionState(value | 0x1F80).c_str(), text);
        EXPECT_STREQ(tsSSXBase(false).strExceptionState(value).c_str(), "cpu has not SSX extension");
    }
    EXPECT_STREQ(ts87Base::strCW(0xF3F).c_str(),
                 "Zero 64 Invalid Denormal Zerodivide Overflow Underflow Inexact ");
    EXPECT_STREQ(ts87Base::strCW(0x400).c_str(), "Down 24 ");
    EXPECT_STREQ(tsSSXBase(true).strCW(0x4200).c_str(), "Up Zerodivide NoFlushToZero ");
    EXPECT_STREQ(tsSSXBase(false).strCW(0).c_str(), "cpu has not SSX extension");
}

/** Leaves the x87 "invalid operation" flag behind. */
void raiseInvalid87() {
    __asm__ volatile("fld1; fchs; fsqrt; fstp %%st(0)" : : : "st");
}

/** Leaves a flag in MXCSR. */
void raiseSSX(unsigned int flag) {
    bx_set_ssx(flag, flag);
}

TEST(FpWatch, CollectsFlagsOverMeasurements) {
    bxInitCtrlStatus();
    raiseInvalid87(); // before the bracket: not the function's
    bxTool::ctrlStart();
    bxTool::ctrlStop();
    EXPECT_FALSE(bxBadCtrlStatus());
    raiseSSX(0x20);
    bxTool::ctrlStart();
    bxTool::ctrlStop();
    EXPECT_FALSE(bxBadCtrlStatus()) << "inexact is not bad";
    bxTool::ctrlStart();
    raiseInvalid87();
    bxTool::ctrlStop();
    raiseSSX(0x8); // SSE flags count from the start of the combination on
    bxTool::ctrlStart();
    bxTool::ctrlStop();
    bool bad87 = false, badSSX = false;
    EXPECT_TRUE(bxBadCtrlStatus(bad87, badSSX));
    Capture capture(3);
    bxPrintCtrlStatus(bad87, badSSX);
    EXPECT_EQ(capture.text(), "-- Status    87: ?Invalid \n-- Status    SSX: ?Overflow _Inexact \n");
    bxClearCtrlStatus();
    bxTool::ctrlStart();
    bxTool::ctrlStop();
    EXPECT_FALSE(bxBadCtrlStatus());
}

TEST(FpWatch, ResetUndoesWhatAFunctionLeft) {
    __asm__ volatile("fld1; fld1; fld1; fld1; fld1; fld1; fld1; fld1"); // the whole register stack
    bx_set_cw_fpu(0xC3F, 0xF3F);
    bx_set_ssx(0x60C1, 0xE0FF);
    bxResetFpState();
    EXPECT_EQ(bx_set_cw_fpu(0, 0) & 0xF3FU, 0x23BU);
    EXPECT_EQ(bx_get_ssx(), 0x9F80U);
    __asm__ volatile("fld1; fstp %%st(0)" : : : "st"); // would overflow a stack that is still full
    EXPECT_EQ(bx_get_sw_fpu() & 0x3FU, 0U);
}

TEST(Exception, SaysWhatItIs) {
    const bxException wrong(bxString("no such value"));
    EXPECT_STREQ(wrong.msg(), "--ZOR. Exception: no such value");
    EXPECT_STREQ(wrong.info(), "no such value");
    EXPECT_STREQ(wrong.what(), wrong.msg());
    EXPECT_STREQ(bxException("Illegal instruction.").msg(), "--ZOR. Signal: Illegal instruction.");
    const std::string longText(1000, 'x');
    EXPECT_EQ(std::string(bxException(longText.c_str()).info()).size(), 255U);
    EXPECT_EQ(std::string(bxException(longText.c_str()).msg()).size(), 255U);
}

TEST(Result, HasANameAndAText) {
    EXPECT_STREQ(bxResultName(UNDEFINED), "UNDEFINED");
    EXPECT_STREQ(bxResultName(FUNCWRN), "FUNCWRN");
    EXPECT_STREQ(bxResultString(EXCPTFAIL), "exception");
    EXPECT_STREQ(bxResultString(BADSTSWRN), "modified control status");
    for (int outside : {-1, 12}) {
        EXPECT_STREQ(bxResultName(static_cast<bxResult>(outside)), "UNKNOWN");
        EXPECT_STREQ(bxResultString(static_cast<bxResult>(outside)), "unknown result");
    }
}

} // namespace
