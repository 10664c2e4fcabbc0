#include "zorcore.h"

#include "../zor/src/core/cachesize.h"
#include "../zor/src/core/cputypes.h"
#include "zordc.h"
#include "zors.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>
#include <utility>

namespace {

using zor::CpuidLeaf;

/** Sets an environment variable while it lives. */
class Environment {
  public:
    Environment(const char* name, const char* value) : m_name(name) { setenv(name, value, 1); }
    ~Environment() { unsetenv(m_name); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

  private:
    const char* m_name;
};

/** A leaf of the deterministic cache parameters. */
constexpr CpuidLeaf cacheLeaf(unsigned type, unsigned ways, unsigned partitions, unsigned line,
                              unsigned sets) {
    return {type, (ways - 1) << 22 | (partitions - 1) << 12 | (line - 1), sets - 1, 0};
}

TEST(ZorCacheSize, TextsOfUsers) {
    const std::pair<const char*, zor::CacheBytes> cases[] = {
        {"32768", 32768}, {"512K", 524288}, {"512k", 524288}, {"8M", 8388608}, {"2047M", 2146435072},
        {"2048M", 0},     {"0", 0},         {"", 0},          {"K", 0},        {"8G", 0},
        {"8MM", 0},       {" 8", 0},        {"-8K", 0},       {"8.5M", 0},     {"99999999999999999999", 0}};
    for (const auto& [text, bytes] : cases)
        EXPECT_EQ(zor::parseCacheSize(text), bytes) << text;
}

/** Level 1 data, level 1 instruction (larger, and not data), level 2. */
CpuidLeaf threeCaches(std::uint32_t leaf, std::uint32_t subleaf) {
    constexpr CpuidLeaf caches[] = {cacheLeaf(1, 8, 1, 64, 64), cacheLeaf(2, 16, 1, 64, 4096),
                                    cacheLeaf(3, 16, 2, 64, 1024)};
    return leaf == 4 && subleaf < 3 ? caches[subleaf] : CpuidLeaf{};
}

/** The same layout in the leaf of other makers, and the older leaves contradict it. */
CpuidLeaf otherMaker(std::uint32_t leaf, std::uint32_t subleaf) {
    if (leaf == 0x8000001DU)
        return threeCaches(4, subleaf);
    return leaf == 0x80000006U ? CpuidLeaf{0, 0, 0, 16U << 18} : CpuidLeaf{};
}

/** 32 KB level 1 in one leaf, 512 KB level 2 and 6 MB level 3 in the other. */
CpuidLeaf olderMaker(std::uint32_t leaf, std::uint32_t) {
    if (leaf == 0x80000005U)
        return {0, 0, 32U << 24, 0};
    return leaf == 0x80000006U ? CpuidLeaf{0, 0, 512U << 16, 12U << 18} : CpuidLeaf{};
}

/** A processor that never ends its list. */
CpuidLeaf endlessList(std::uint32_t leaf, std::uint32_t) {
    return leaf == 4 ? cacheLeaf(1, 8, 1, 64, 64) : CpuidLeaf{};
}

TEST(ZorCacheSize, LargestDataCacheOfEverySource) {
    EXPECT_EQ(zor::cpuidCacheSize(threeCaches), 2 * 1024 * 1024);
    EXPECT_EQ(zor::cpuidCacheSize(otherMaker), 2 * 1024 * 1024);
    EXPECT_EQ(zor::cpuidCacheSize(olderMaker), 6 * 1024 * 1024);
    EXPECT_EQ(zor::cpuidCacheSize(endlessList), 32 * 1024);
    EXPECT_EQ(zor::cpuidCacheSize([](std::uint32_t, std::uint32_t) { return CpuidLeaf{}; }), 0);
}

TEST(ZorCacheSize, EnvironmentGoesFirst) {
    int plain = 0, size = 0;
    EXPECT_EQ(zorGetMaxCacheSizeB(nullptr), zorStsNullPtrErr);
    const ZorStatus plainStatus = zorGetMaxCacheSizeB(&plain);
    EXPECT_EQ(plainStatus, plain > 0 ? zorStsNoErr : zorStsUnknownCacheSize);
    {
        const Environment given("ZOR_MAX_CACHE_SIZE", "3M");
        EXPECT_EQ(zorGetMaxCacheSizeB(&size), zorStsNoErr);
        EXPECT_EQ(size, 3 * 1024 * 1024);
    }
    for (const char* text : {"much", "0", "4G", "-1M"}) {
        const Environment wrong("ZOR_MAX_CACHE_SIZE", text);
        EXPECT_EQ(zorGetMaxCacheSizeB(&size), plain > 0 ? zorStsCacheSizeIgnored : plainStatus) << text;
        EXPECT_EQ(size, plain);
    }
    const Environment empty("ZOR_MAX_CACHE_SIZE", "");
    EXPECT_EQ(zorGetMaxCacheSizeB(&size), plainStatus);
}

/** A processor with every feature bit set. */
CpuidLeaf everything(std::uint32_t, std::uint32_t) {
    return {~0U, ~0U, ~0U, ~0U};
}

TEST(ZorCpuType, StatesThatTheSystemDoesNotSaveTakeTypesAway) {
    const auto typeOf = [](std::uint64_t saved) {
        return zor::cpuTypeOf(zor::detectFeatures(everything, saved));
    };
    EXPECT_EQ(typeOf(0), zorCpuSSE42);
    EXPECT_EQ(typeOf(0x2), zorCpuSSE42);
    EXPECT_EQ(typeOf(0x6), zorCpuAVX2);
    const zor::Features withAvx = zor::detectFeatures(everything, 0x6);
    const zor::Features withAvx512 = zor::detectFeatures(everything, 0xE6);
    EXPECT_FALSE(zor::canRun(*zor::findCpuType(zorCpuX8664v4), withAvx));
    for (const zor::CpuTypeRow& type : zor::cpuTypeRows)
        EXPECT_TRUE(zor::canRun(type, withAvx512)) << type.code;
}

/** AVX2 without FMA, as some emulators have it. */
CpuidLeaf noFma(std::uint32_t leaf, std::uint32_t) {
    return leaf == 1 ? CpuidLeaf{0, 0, ~(1U << 12), ~0U} : everything(leaf, 0);
}

TEST(ZorCpuType, PathsNeedAllTheyAreCompiledFor) {
    const zor::Features features = zor::detectFeatures(noFma, ~std::uint64_t{0});
    EXPECT_EQ(zor::cpuTypeOf(features), zorCpuAVX);
    for (const zor::CpuTypeRow& type : zor::cpuTypeRows) {
        const auto needs = [&](zor::Features set) { return (type.needs & set) != 0; };
        EXPECT_TRUE(type.path < zor::CodePath::sse2 || needs(zor::feature::sse2)) << type.code;
        EXPECT_TRUE(type.path < zor::CodePath::avx || needs(zor::feature::avx)) << type.code;
        EXPECT_TRUE(type.path < zor::CodePath::avx2 || !zor::canRun(type, features)) << type.code;
    }
}

TEST(ZorCpuType, CodePathFollowsTheTypeOrStays) {
    EXPECT_EQ(zorInitCpu(zorCpuUnknown), zorStsNoErr);
    EXPECT_EQ(zor_code_path, static_cast<int>(zor::CodePath::portable));
    for (int code : {-1, 6, 63, 84, 95, 100}) {
        EXPECT_EQ(zorInitCpu(code), zorStsBadArgErr) << code;
        EXPECT_EQ(zor_code_path, 0);
    }
    for (const zor::CpuTypeRow& type : zor::cpuTypeRows) {
        zorInitCpu(zorCpuUnknown);
        const ZorStatus status = zorInitCpu(type.code);
        ASSERT_TRUE(status >= zorStsNoErr || status == zorStsCpuNotSupportedErr) << type.code;
        EXPECT_EQ(zor_code_path, status >= zorStsNoErr ? static_cast<int>(type.path) : 0) << type.code;
    }
    // Which code a type runs is said where its name does not tell.
    const std::pair<int, ZorStatus> told[] = {
        {zorCpuX87, zorStsNoErr},        {zorCpuSSE2, zorStsNoErr},   {zorCpuGen6, zorStsRunsPortable},
        {zorCpuX8664, zorStsRunsSSE2},   {zorCpuF16C, zorStsRunsAVX}, {zorCpuX8664v4, zorStsRunsAVX2},
        {zorCpuAVX512BW, zorStsRunsAVX2}};
    for (const auto& [code, status] : told) {
        const ZorStatus got = zorInitCpu(code);
        EXPECT_TRUE(got == status || got == zorStsCpuNotSupportedErr) << code << " gave " << got;
    }
    EXPECT_EQ(zorInit(), zorStsNoErr);
    EXPECT_EQ(zor_code_path, static_cast<int>(zor::findCpuType(zorGetCpuType())->path));
}

TEST(ZorCpuType, TheCompilerSeesTheSameProcessor) {
    // What the compiler's own runtime finds, asked from the top down.
    int type = 0;
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        type = zorCpuAVX2;
    else if (__builtin_cpu_supports("avx"))
        type = zorCpuAVX;
    else if (__builtin_cpu_supports("sse4.2"))
        type = zorCpuSSE42;
    else
        GTEST_SKIP() << "an old processor";
    EXPECT_EQ(zorGetCpuType(), type);
}

TEST(ZorCore, StatusTextsDiffer) {
    std::set<std::string> texts;
    const ZorStatus statuses[] = {zorStsNoErr,
                                  zorStsBadArgErr,
                                  zorStsSizeErr,
                                  zorStsNullPtrErr,
                                  zorStsMemAllocErr,
                                  zorStsCpuNotSupportedErr,
                                  zorStsStreamEndErr,
                                  zorStsBadStreamErr,
                                  zorStsContextErr,
                                  zorStsScaleRangeErr,
                                  zorStsUnknownCacheSize,
                                  zorStsCacheSizeIgnored,
                                  zorStsNoOperation,
                                  zorStsOverflow,
                                  zorStsRunsPortable,
                                  zorStsRunsSSE2,
                                  zorStsRunsAVX,
                                  zorStsRunsAVX2,
                                  -9999 /* unknown error */,
                                  9999 /* unknown warning */};
    for (ZorStatus status : statuses)
        EXPECT_TRUE(texts.insert(zorGetStatusString(status)).second) << status;
}

TEST(ZorCore, ThreadsCoresAndVersion) {
    EXPECT_EQ(zorSetNumThreads(0), zorStsSizeErr);
    EXPECT_EQ(zorSetNumThreads(1), zorStsNoErr);
    EXPECT_EQ(zorSetNumThreads(8), zorStsNoOperation);
    EXPECT_GE(zorGetNumCoresOnDie(), 1);
    EXPECT_STREQ(zorcoreGetLibVersion()->name, "libzorcore.so");
    EXPECT_STREQ(zorsGetLibVersion()->name, "libzors.so");
    EXPECT_STREQ(zordcGetLibVersion()->name, "libzordc.so");
}

} // namespace
