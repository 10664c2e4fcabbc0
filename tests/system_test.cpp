#include "zorcore.h"

#include "system/bxcpuid.h"
#include "system/bxcputype.h"
#include "system/bxenvironment.h"
#include "system/bxfreshpages.h"
#include "system/bxhost.h"
#include "system/bxpriority.h"
#include "system/bxprobes.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <sched.h>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

TEST(Priority, IsRestored) {
    const auto niceValue = [] { return getpriority(PRIO_PROCESS, 0); };
    const int before = niceValue();
    bxSetPriority(0);
    bxResetPriority();
    EXPECT_EQ(niceValue(), before);
    if (getuid() != 0)
        GTEST_SKIP() << "needs root";
    setpriority(PRIO_PROCESS, 0, 5);
    for (const auto& [mode, value] : {std::pair(1, -20), std::pair(2, 0), std::pair(3, 10)}) {
        bxSetPriority(mode);
        EXPECT_EQ(niceValue(), value);
        bxResetPriority();
        EXPECT_EQ(niceValue(), 5);
        EXPECT_EQ(sched_getscheduler(0), SCHED_OTHER);
    }
    setpriority(PRIO_PROCESS, 0, 7);
    bxResetPriority(); // nothing was saved since
    EXPECT_EQ(niceValue(), 7);
    setpriority(PRIO_PROCESS, 0, before);
}

TEST(Probes, AgreeWithTheCompilersRuntime) {
    __builtin_cpu_init();
    EXPECT_EQ(zor_is_mmx_extension() != 0, __builtin_cpu_supports("mmx") != 0);
    EXPECT_EQ(zor_is_ssx_extension() != 0, __builtin_cpu_supports("sse") != 0);
    EXPECT_EQ(zor_is_wni_extension() != 0, __builtin_cpu_supports("sse2") != 0);
    EXPECT_EQ(zor_is_pni_extension() != 0, __builtin_cpu_supports("sse3") != 0);
    EXPECT_EQ(zor_is_mni_extension() != 0, __builtin_cpu_supports("ssse3") != 0);
    EXPECT_EQ(zor_is_sse41_extension() != 0, __builtin_cpu_supports("sse4.1") != 0);
    EXPECT_EQ(zor_is_sse42_extension() != 0, __builtin_cpu_supports("sse4.2") != 0);
    EXPECT_EQ(zor_is_avx_extension() != 0, __builtin_cpu_supports("avx") != 0);
    EXPECT_EQ(zor_has_cpuid(), 1);
    EXPECT_EQ(zor_has_rdtsc(), 1);
    EXPECT_TRUE(zor_is_x64_extension() || sizeof(void*) == 4);
}

TEST(Cpuid, IdentificationIsTakenApart) {
    const bxCpuIdent plain = bxDecodeCpuIdent(CPUID({0x000106A5, 0x00100800, 1U << 20, 1U << 25}));
    EXPECT_EQ(plain.stepping, 5);
    EXPECT_EQ(plain.model, 10);
    EXPECT_EQ(plain.family, 6);
    EXPECT_EQ(plain.extendedModel, 1);
    EXPECT_EQ(plain.displayFamily(), 6);
    EXPECT_EQ(plain.displayModel(), 0x1A);
    EXPECT_TRUE(plain.ecx(20) && plain.edx(25));
    EXPECT_FALSE(plain.ecx(19) || plain.edx(26));
    const bxCpuIdent extended = bxDecodeCpuIdent(CPUID({0x00B20F21, 0x17, 0, 0}));
    EXPECT_EQ(extended.displayFamily(), 0x1A);
    EXPECT_EQ(extended.displayModel(), 0x22);
    EXPECT_EQ(extended.brand, 0x17);
    EXPECT_EQ(bxDecodeCpuIdent(CPUID({0x000315A5, 0, 0, 0})).displayModel(), 10)
        << "family 5 has no extension";
    EXPECT_EQ(bxDecodeCpuIdent(CPUID({0x00003000, 0, 0, 0})).type, 3);
}

TEST(Cpuid, FieldsOfRegisters) {
    const CPUID leaf({0x12345678, 0x80000001, 0, ~0U});
    EXPECT_EQ(leaf.getBits(CPUID::EAX, 31, 0), 0x12345678U);
    EXPECT_EQ(leaf.getBits(CPUID::EAX, 15, 8), 0x56U);
    EXPECT_EQ(leaf.getByte(CPUID::EAX, 3), 0x12U);
    EXPECT_EQ(leaf.getBit(CPUID::EBX, 31), 1U);
    EXPECT_EQ(leaf.getBit(CPUID::EBX, 30), 0U);
    EXPECT_EQ(bxVendorString(CPUID({0, 0x756E6547, 0x6E726175, 0x51656E69})), "GenuineQuarn");
}

TEST(Cpuid, CacheSizes) {
    EXPECT_EQ(bxDecodeCacheSizeB(CPUID({1, 7U << 22 | 63, 63, 0})), 32768);
    EXPECT_EQ(bxDecodeCacheSizeB(CPUID({0x21, 15U << 22 | 1U << 12 | 63, 1023, 0})), 2 * 1024 * 1024);
    EXPECT_EQ(bxDecodeCacheSizeB(CPUID({0, 7U << 22 | 63, 63, 0})), -1) << "no cache";
    // 32 KB level 1 (0x2C) and 2 MB level 2 (0x7D); 0xEC counts in the lowest byte of EAX no more than in a
    // register without descriptors.
    EXPECT_EQ(bxDecodeLeaf2CacheSizeB(CPUID({0x00002CEC, 0x7D, 0x800000EC, 0})), 2 * 1024 * 1024);
    EXPECT_EQ(bxDecodeLeaf2CacheSizeB(CPUID({0x00007D01, 0, 0, 0})), 2 * 1024 * 1024);
    EXPECT_EQ(bxDecodeLeaf2CacheSizeB(CPUID({1, 0, 0, 0xFF})), -1);
}

TEST(Cpuid, DescriptorsBySize) {
    const std::map<int, std::set<unsigned>> documented = {
        {8, {0x0A, 0x66}},
        {16, {0x0C, 0x0D, 0x60, 0x67}},
        {24, {0x0E}},
        {32, {0x2C, 0x68}},
        {128, {0x1D, 0x39, 0x3B, 0x41, 0x79}},
        {192, {0x3A}},
        {256, {0x21, 0x3C, 0x42, 0x7A, 0x82}},
        {384, {0x3D}},
        {512, {0x22, 0x3E, 0x43, 0x7B, 0x7F, 0x80, 0x83, 0x86, 0xD0}},
        {1024, {0x23, 0x24, 0x44, 0x78, 0x7C, 0x84, 0x87, 0xD1, 0xD6}},
        {1536, {0xDC}},
        {2048, {0x25, 0x45, 0x7D, 0x85, 0xD2, 0xD7, 0xE2}},
        {3072, {0x48, 0xDD}},
        {4096, {0x29, 0x46, 0x49, 0xD8, 0xE3}},
        {6144, {0x4A, 0x4E, 0xDE}},
        {8192, {0x47, 0x4B, 0xE4}},
        {12288, {0x4C, 0xEA}},
        {16384, {0x4D}},
        {18432, {0xEB}},
        {24576, {0xEC}},
    };
    std::map<int, std::set<unsigned>> found;
    for (unsigned code = 0; code < 256; ++code)
        if (const int bytes = bxDecodeLeaf2CacheSizeB(CPUID({code << 8 | 1, 0, 0, 0})); bytes > 0)
            found[bytes / 1024].insert(code);
    EXPECT_EQ(found, documented);
}

TEST(Cpuid, FeatureFlagsCoverTheirWords) {
    std::set<std::string> names;
    for (std::size_t i = 0; i < FeatureFlags.size(); ++i) {
        const bxFeatureFlag& flag = FeatureFlags[i];
        if (i < 64) {
            EXPECT_EQ(flag.leaf, 1U);
            EXPECT_EQ(flag.reg, i < 32 ? CPUID::EDX : CPUID::ECX);
            EXPECT_EQ(flag.bit, static_cast<int>(i % 32));
        }
        const std::string name = flag.name;
        EXPECT_EQ(name.empty(), std::string(flag.description).empty()) << i;
        EXPECT_TRUE(name.empty() || names.insert(name).second) << name;
    }
    EXPECT_EQ(names.size(), 68U - 13U);
    EXPECT_EQ(bxFindFeatureFlag("SSE4.2")->bit, 20);
    EXPECT_EQ(bxFindFeatureFlag("SYSCALL")->leaf, 0x80000001U);
    EXPECT_EQ(bxFindFeatureFlag("PSE-36")->bit, 17);
    EXPECT_EQ(bxFindFeatureFlag("SSE9"), nullptr);
    EXPECT_EQ(bxFindFeatureFlag(""), nullptr);
}

TEST(CpuType, LabelsNamesAndCodes) {
    std::set<int> codes;
    std::set<std::string> labels;
    for (const bxCpuType::Row& row : bxCpuType::table) {
        EXPECT_TRUE(codes.insert(row.code).second) << row.code;
        EXPECT_TRUE(labels.insert(bxString(row.label).toLower().c_str()).second) << row.label;
        EXPECT_EQ(std::string(row.label).find(' '), std::string::npos);
        EXPECT_EQ(bxCpuType::cpuType(row.label), row.code);
        EXPECT_NE(zorInitCpu(row.code), zorStsBadArgErr) << "the library does not know " << row.label;
    }
    zorInitCpu(zorCpuUnknown);
    for (int code : {0, 64, 65, 66, 67, 68, 69, 70, 96})
        EXPECT_EQ(codes.count(code), 1U) << code;
    EXPECT_EQ(bxCpuType::cpuType("sse41"), zorCpuSSE41);
    EXPECT_EQ(bxCpuType::cpuType("SSE4"), -1);
    EXPECT_EQ(bxCpuType::cpuType(""), -1);
    EXPECT_STREQ(bxCpuType::cpuLabel(zorCpuAVX2).c_str(), "AVX2");
    EXPECT_STREQ(bxCpuType::cpuLabel(1000).c_str(), "Undefined");
    EXPECT_STREQ(bxCpuType::cpuName(1000).c_str(), "Unknown processor");
}

struct TypeCase {
    const char* what;
    int family, model;
    unsigned int ecx, edx;
    bxCpuFacts facts;
    int code;
};

TEST(CpuType, OfAProcessor) {
    constexpr unsigned sse = 1U << 25, sse2 = sse | 1U << 26;
    constexpr unsigned sse3 = 1, ssse3 = sse3 | 1U << 9, sse41 = ssse3 | 1U << 19, sse42 = sse41 | 1U << 20;
    const TypeCase cases[] = {
        {"nothing", 4, 1, 0, 0, {}, 0},
        {"long mode only", 15, 1, 0, 0, {.longMode = true}, 96},
        {"SSE", 6, 99, 0, sse, {}, 64},
        {"SSE2 goes before long mode", 15, 99, 0, sse2, {.longMode = true}, 65},
        {"SSE3", 6, 99, sse3, sse2, {}, 66},
        {"SSSE3", 6, 99, ssse3, sse2, {}, 67},
        {"SSE4.1", 6, 99, sse41, sse2, {}, 68},
        {"SSE4.2", 6, 99, sse42, sse2, {}, 69},
        {"AVX", 6, 99, sse42, sse2, {.avx = true}, 70},
        {"a known model", 6, 0x1C, ssse3, sse2, {.genuine = true}, 72},
        {"the same of another maker", 6, 0x1C, ssse3, sse2, {}, 67},
        {"a known model with more than it can have",
         6,
         0x06,
         sse42,
         sse2,
         {.genuine = true, .avx = true},
         70},
        {"an early model", 5, 4, 0, 0, {.genuine = true}, 3},
    };
    for (const TypeCase& c : cases) {
        bxCpuIdent ident;
        ident.family = c.family;
        ident.model = c.model & 15;
        ident.extendedModel = c.model >> 4;
        ident.featuresEcx = c.ecx;
        ident.featuresEdx = c.edx;
        EXPECT_EQ(bxCpuTypeOf(ident, c.facts), c.code) << c.what;
    }
}

TEST(CpuType, ModelsByType) {
    constexpr unsigned ssse3 = 1U << 9, sse42 = 1U << 20;
    const struct {
        int code, family;
        unsigned ecx;
        bool avx;
        std::set<int> models;
    } rows[] = {
        {2, 5, 0, false, {0x01, 0x02}},
        {3, 5, 0, false, {0x04, 0x08}},
        {4, 6, 0, false, {0x01}},
        {5, 6, 0, false, {0x03, 0x05, 0x06}},
        {72, 6, ssse3, false, {0x1C, 0x26, 0x27, 0x35, 0x36}},
        {73, 6, sse42, false, {0x1A, 0x1E, 0x1F, 0x2E}},
        {74, 6, sse42, false, {0x25, 0x2C, 0x2F}},
        {75, 6, sse42, true, {0x3A, 0x3E}},
        {77, 6, sse42, true, {0x3C, 0x3F, 0x45, 0x46, 0x3D, 0x47, 0x4F, 0x4E, 0x5E}},
        {81, 6, sse42, true, {0x55}},
    };
    for (const auto& row : rows) {
        std::set<int> found;
        const int models = row.family == 6 ? 256 : 16; // the extended model counts in family 6 only
        for (int model = 0; model < models; ++model) {
            bxCpuIdent ident;
            ident.family = row.family;
            ident.model = model & 15;
            ident.extendedModel = model >> 4;
            ident.featuresEcx = row.ecx;
            if (bxCpuTypeOf(ident, {.genuine = true, .avx = row.avx}) == row.code)
                found.insert(model);
        }
        EXPECT_EQ(found, row.models) << row.code;
    }
}

// The library environment, with a core of our own.

int s_initCalls, s_initCpuCalls;
ZorStatus s_initStatus, s_initCpuStatus, s_threadsStatus;

void bindTestCore() {
    zor_GetStatusString = [](ZorStatus) -> const char* { return "text"; };
    zor_Init = [] { return ++s_initCalls, s_initStatus; };
    zor_InitCpu = [](int) { return ++s_initCpuCalls, s_initCpuStatus; };
    zor_SetNumThreads = [](int) { return s_threadsStatus; };
}

/** Unbinds everything before and after. */
class LibraryEnvironment : public testing::Test {
  protected:
    LibraryEnvironment() { clear(); }
    ~LibraryEnvironment() override { clear(); }
    static void clear() {
        zorEnvironment = nullptr;
        zor_GetCpuType = nullptr;
        zor_GetNumCoresOnDie = nullptr;
        zor_GetMaxCacheSizeB = nullptr;
        zor_GetStatusString = nullptr;
        zor_Init = nullptr;
        zor_InitCpu = nullptr;
        zor_SetNumThreads = nullptr;
        s_cpuType = -1;
        s_numThreads = 0;
        s_initCalls = s_initCpuCalls = 0;
        s_initStatus = s_initCpuStatus = s_threadsStatus = 0;
    }
};

TEST_F(LibraryEnvironment, FallbacksWithoutAHook) {
    Capture capture(7);
    EXPECT_TRUE(setZorEnvironment());
    EXPECT_EQ(zor_Init(), -2);
    EXPECT_EQ(zor_InitCpu(70), -2);
    EXPECT_EQ(zor_SetNumThreads(1), -2);
    EXPECT_STREQ(zor_GetStatusString(-5), "Error");
    EXPECT_STREQ(zor_GetStatusString(0), "OK");
    EXPECT_STREQ(zor_GetStatusString(5), "Warning");
    EXPECT_GE(zor_GetNumCoresOnDie(), 1);
    EXPECT_GE(zor_GetCpuType(), 64);
    int size = -1;
    const ZorStatus status = zor_GetMaxCacheSizeB(&size);
    EXPECT_EQ(status == 0, size > 0);
    EXPECT_TRUE(status == 36 || zor_is_GenuineQuarn());
    EXPECT_EQ(zor_GetMaxCacheSizeB(&size), status);
    s_cpuType = 70;
    s_numThreads = 4;
    initStaticCpu();
    setNumThreads();
    EXPECT_EQ(capture.text(), "") << "no hook, no calls";
}

TEST_F(LibraryEnvironment, HookBindsAndTheRestFallsBack) {
    Capture capture(7);
    EXPECT_TRUE(bxRegZorEnvironment(bindTestCore));
    setZorEnvironment();
    EXPECT_EQ(capture.text(), "\nZOR Core library functions have been integrated into BX\n");
    EXPECT_STREQ(zor_GetStatusString(0), "text");
    EXPECT_EQ(zor_GetCpuType, &bx_zorGetCpuType);
    zor_GetMaxCacheSizeB = [](int* size) { return *size = 5, ZorStatus(zorStsNoErr); };
    EXPECT_STREQ(bxCacheSizeProblem().c_str(), "");
    EXPECT_EQ(bxLibraryCacheSizeB(), 5);
    zor_GetMaxCacheSizeB = [](int*) { return ZorStatus(zorStsUnknownCacheSize); };
    EXPECT_STREQ(bxCacheSizeProblem().c_str(), "text") << "stands in the title of a run";
    EXPECT_EQ(bxLibraryCacheSizeB(), 0);
}

struct DispatchCase {
    const char* what;
    int cpuType;
    ZorStatus initCpu, init;
    const char* text;
};

TEST_F(LibraryEnvironment, ProcessorTypeIsPassedOn) {
    bxRegZorEnvironment(bindTestCore);
    setZorEnvironment();
    const DispatchCase cases[] = {
        {"none chosen", -1, 0, -5, ""},
        {"accepted", 70, 0, 0, "\n--calling zorInitCpu( zorCpuAVX=70 )\n--status = zorStsNoErr\n"},
        {"warned", 65, 3, 0, "\n--calling zorInitCpu( zorCpuSSE2=65 )\n--ZOR WARNING. status = 3: text\n"},
        {"refused", 70, -10, 0,
         "\n--calling zorInitCpu( zorCpuAVX=70 )\n--ZOR ERROR. status = -10: text\n--calling zorInit()\n"},
        {"refused twice", 1000, -10, -5,
         "\n--calling zorInitCpu( zorCpuUndefined=1000 )\n--ZOR ERROR. status = -10: text\n"
         "--calling zorInit()\n--ZOR ERROR. status = -5: text\n"},
    };
    for (const DispatchCase& c : cases) {
        SCOPED_TRACE(c.what);
        s_cpuType = c.cpuType;
        s_initCpuStatus = c.initCpu;
        s_initStatus = c.init;
        s_initCalls = s_initCpuCalls = 0;
        Capture capture(1);
        initStaticCpu();
        EXPECT_EQ(capture.text(), c.text);
        EXPECT_EQ(s_initCpuCalls, c.cpuType == -1 ? 0 : 1);
        EXPECT_EQ(s_initCalls, c.cpuType == -1 || c.initCpu < 0 ? 1 : 0);
    }
}

TEST_F(LibraryEnvironment, ThreadCountIsPassedOn) {
    bxRegZorEnvironment(bindTestCore);
    setZorEnvironment();
    Capture capture(1);
    setNumThreads();
    EXPECT_EQ(capture.text(), "");
    s_numThreads = 4;
    setNumThreads();
    s_threadsStatus = 1;
    setNumThreads();
    EXPECT_EQ(capture.text(), "\n--calling zorSetNumThreads( 4 )\n--status = zorStsNoErr\n"
                              "\n--calling zorSetNumThreads( 4 )\n--ZOR WARNING. status = 1: text\n");
}

TEST_F(LibraryEnvironment, LibraryTextsAreKeptOnce) {
    static constexpr ZorLibraryVersion record{1, 2, "libtest.so", "1.2", "Jan  1 2024"};
    Capture capture(7);
    setZorLibInfo();
    EXPECT_EQ(capture.text(), "") << "no version hook";
    EXPECT_STREQ(bxCpuType::optimizedList().c_str(), "");
    for (int unit = 0; unit < 3; ++unit)
        EXPECT_TRUE(bxRegZorVersion([] { return &record; }));
    EXPECT_EQ(zorVersionList->size(), 3);
    setZorLibInfo();
    EXPECT_EQ(capture.text(), "ZOR libraries information has been set into BX\n");
    ASSERT_EQ(g_pLibInfoList->size(), 1);
    EXPECT_STREQ((*g_pLibInfoList->begin()).c_str(), "libtest.so, 1.2, Jan  1 2024");
    EXPECT_FALSE(bxRegLibInfo("libtest.so, 1.2, Jan  1 2024"));
    EXPECT_TRUE(bxRegLibInfo("another"));

    EXPECT_STREQ(bxCpuType::optimizedList().c_str(), "libtest.so: non optimized code\n");
    bxRegZorEnvironment(bindTestCore);
    s_cpuType = 65;
    EXPECT_STREQ(bxCpuType::optimizedList().c_str(), "libtest.so: optimized for x86 with SSE2\n");
    s_cpuType = 64;
    EXPECT_STREQ(bxCpuType::optimizedList().c_str(), "libtest.so: non optimized code\n");
    s_cpuType = -1;
    zor_GetCpuType = [] { return 71; };
    EXPECT_STREQ(bxCpuType::optimizedList().c_str(), "libtest.so: optimized for x86 with AVX2+FMA\n");
}

TEST_F(LibraryEnvironment, AppliedFunctionsAreKeptAsOftenAsRegistered) {
    EXPECT_FALSE(bxRegLibFunc(""));
    EXPECT_EQ(g_pLibFuncList, nullptr);
    EXPECT_TRUE(bxRegLibFunc("zorsCopy"));
    EXPECT_TRUE(bxRegLibFunc("zorsCopy"));
    EXPECT_EQ(g_pLibFuncList->size(), 2);
}

TEST_F(LibraryEnvironment, LargestCacheAsksTheBoundFunctionFirst) {
    zor_GetMaxCacheSizeB = [](int* size) -> ZorStatus { return *size = 12345, 0; };
    EXPECT_EQ(bxGetMaxCacheSizeB(), 12345);
    zor_GetMaxCacheSizeB = [](int* size) -> ZorStatus { return *size = 12345, 37; };
    EXPECT_EQ(bxGetMaxCacheSizeB(), getMaxCacheSizeB());
    EXPECT_EQ(bxLibraryCacheSizeB(), 0);
    zor_GetMaxCacheSizeB = [](int* size) -> ZorStatus { return *size = 0, 0; };
    EXPECT_EQ(bxGetMaxCacheSizeB(), getMaxCacheSizeB());
    zor_GetMaxCacheSizeB = [](int* size) -> ZorStatus { return *size = 12345, zorStsCacheSizeIgnored; };
    EXPECT_EQ(bxGetMaxCacheSizeB(), 12345) << "the setting is ignored, not the size";
    EXPECT_STREQ(bxCacheSizeProblem().c_str(), "") << "no library";
    bxRegZorEnvironment(bindTestCore);
    setZorEnvironment();
    EXPECT_STREQ(bxCacheSizeProblem().c_str(), "text");
    zor_GetMaxCacheSizeB = [](int* size) -> ZorStatus { return *size = 12345, 0; };
    EXPECT_STREQ(bxCacheSizeProblem().c_str(), "");
}

#ifndef BENCHEX_EMULATED // which shows its own memory
/** Whether an address lies in memory that is no file's. */
bool isOwnMemory(const void* address) {
    std::ifstream maps("/proc/self/maps");
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    for (std::string line; std::getline(maps, line);) {
        unsigned long begin = 0, end = 0, inode = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx %*s %*s %*s %lu", &begin, &end, &inode) == 3 &&
            begin <= wanted && wanted < end)
            return inode == 0;
    }
    return false;
}

TEST(FreshPages, CodeAndConstantsStayWhatTheyAre) {
    static const char constant[] = "as it was";
    const auto code = reinterpret_cast<const void*>(&isOwnMemory);
    ASSERT_FALSE(isOwnMemory(code) || isOwnMemory(constant));
    const pid_t child = fork();
    if (child == 0) {
        bxTakeFreshPages(3);
        _exit(isOwnMemory(code) && isOwnMemory(constant) && std::string(constant) == "as it was" ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}
#endif

TEST(Host, HasANameAndASystem) {
    EXPECT_NE(std::string(bxHost().name()), "");
    const std::string os = bxOS().text();
    EXPECT_EQ(os.rfind("Linux (", 0), 0U) << os;
    EXPECT_EQ(os.back(), ')');
    EXPECT_GE(bxGetNumOfProcessors(), 1);
}

} // namespace
