#include "data/bxalloc.h"
#include "data/bxplacement.h"
#include "testsupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

std::uintptr_t addressOf(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

/** Frees what a test leaves behind. */
class Allocator : public testing::Test {
  protected:
    ~Allocator() override {
        g_placement.rules.guard = false;
        bxFreeSince(m_mark);
        EXPECT_EQ(bxAllocatedSize(), m_size);
    }
    long long m_size = bxAllocatedSize();
    long long m_mark = bxMallocMark();
};

TEST_F(Allocator, BlocksStandAtTheirMisalignment) {
    for (const int offset : {0, 64, 512, 32256})
        for (const int misalign : {0, 1, 12, 63, 64, 70})
            for (const int size : {0, 1, 1000}) {
                void* raw = nullptr;
                void* block = bx_malloc(raw, size, misalign, offset);
                ASSERT_TRUE(block);
                EXPECT_EQ(addressOf(raw) % 64, 0U);
                EXPECT_EQ(addressOf(block) - addressOf(raw), static_cast<unsigned>(offset + misalign % 64));
                std::memset(block, 0xAA, static_cast<std::size_t>(size));
                bx_free(raw);
            }
}

TEST_F(Allocator, OddOffsetsAndMisalignments) {
    struct {
        int misalign, offset;
        unsigned low; // lowest six bits of the address
    } const rows[] = {{3, 10, 1}, {0, 10, 0}, {63, 1, 0}, {63, 10, 9}, {-3, 0, 61}, {-64, 0, 0}};
    for (const auto& row : rows) {
        void* raw = nullptr;
        void* block = bx_malloc(raw, 100, row.misalign, row.offset);
        ASSERT_TRUE(block);
        EXPECT_EQ(addressOf(block) % 64, row.low) << row.misalign << " " << row.offset;
        std::memset(block, 0xAA, 100);
        bx_free(raw);
    }
}

TEST_F(Allocator, RefusesWhatCannotBe) {
    const std::pair<int, int> rows[] = {{INT_MAX, 0}, {INT_MAX - 64, 512}, {-1, 0},
                                        {1, -512},    {1, INT_MAX},        {INT_MAX, INT_MAX}};
    for (const auto& [size, offset] : rows) {
        Capture capture(1);
        EXPECT_EQ(bxMalloc(size, 63, offset, nullptr), nullptr);
        EXPECT_EQ(capture.text(), "-- Data error: no block can hold " + std::to_string(size) +
                                      " bytes at offset " + std::to_string(offset) + "\n");
    }
    EXPECT_EQ(bx_malloc(-1), nullptr);
    bx_free(nullptr);
}

TEST_F(Allocator, SettingsAreKeptModulo64) {
    for (const auto& [set, kept] : {std::pair(64, 0), {70, 6}, {63, 63}, {-70, -6}, {0, 0}}) {
        bxSetVectorAlign(set);
        EXPECT_EQ(bxGetVectorAlign(), kept);
    }
}

TEST_F(Allocator, SaysMemoryOnlyWhenThereIsNone) {
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
    const rlimit tight{rlim_t{1} << 30, before.rlim_max};
    setrlimit(RLIMIT_AS, &tight);
    if (void* const beyond = std::malloc(INT_MAX / 4 * 3)) {
        std::free(beyond);
        setrlimit(RLIMIT_AS, &before);
        GTEST_SKIP() << "an emulator keeps no limit of the address space";
    }
    g_placement.restart();
    Capture capture(1);
    EXPECT_EQ(g_placement.allocate(INT_MAX / 4 * 3, 0, nullptr), nullptr);
    EXPECT_EQ(capture.text(), "-- Memory error: can't allocate 1610612733 bytes\n");
    setrlimit(RLIMIT_AS, &before);
    EXPECT_EQ(g_placement.failures, 1);
    EXPECT_EQ(g_placement.blocks, 0);
}

TEST_F(Allocator, BlocksOfACombinationAreSpreadAndMisalignedAsSet) {
    bxSetVectorAlign(3);
    g_placement.restart();
    const auto distance = [](int align) { return addressOf(g_placement.allocate(16, align, nullptr)) % 64; };
    EXPECT_EQ(distance(-4), 12U) << "3 elements of 4 bytes";
    EXPECT_EQ(g_placement.shift, 512);
    EXPECT_EQ(distance(-4), 0U) << "only the first block is misaligned";
    EXPECT_EQ(distance(5), 5U) << "a distance in bytes holds as given";
    bxSetAlignSrc(false);
    EXPECT_EQ(distance(g_placement.ruledAlign(4)), 3U);
    bxSetAlignByByte(false);
    EXPECT_EQ(distance(g_placement.ruledAlign(4)), 12U);
    bxSetAlignByByte(true);
    bxSetAlignSrc(true);
    bxSetVectorAlign(0);
    while (g_placement.blocks < 63)
        g_placement.allocate(1, 0, nullptr);
    EXPECT_EQ(g_placement.shift, 32256);
    g_placement.allocate(1, 0, nullptr);
    EXPECT_EQ(g_placement.shift, 0) << "starts again below 32768";
}

TEST_F(Allocator, AnotherLayoutKeepsMisalignments) {
    bxSetVectorAlign(7);
    for (const unsigned displacement : {0U, 64U, 4032U}) {
        g_placement.restart(static_cast<int>(displacement));
        for (const unsigned further : {7U, 512U}) {
            Capture log(MEM);
            void* block = g_placement.allocate(100, -1, nullptr);
            const std::string base =
                (bxString() << static_cast<const void*>(static_cast<char*>(block) - further - displacement))
                    .c_str();
            EXPECT_NE(log.text().find("address:" + base + " "), std::string::npos)
                << log.text() << displacement;
        }
    }
    bxSetVectorAlign(0);
}

TEST_F(Allocator, WalkIsInOrderAndSurvivesFrees) {
    std::vector<void*> blocks;
    for (int size = 1; size <= 4; ++size)
        blocks.push_back(bxMalloc(size, 0, 0, size == 2 ? MEM_OBJECT_IS_BUFFER : nullptr));
    int size = 0;
    void* owner = nullptr;
    void* found = bxMallocFirst(&size, &owner);
    while (found && found != blocks[0])
        found = bxMallocNext(nullptr, nullptr);
    EXPECT_EQ(bxMallocNext(&size, &owner), blocks[1]);
    EXPECT_EQ(size, 2);
    EXPECT_EQ(owner, MEM_OBJECT_IS_BUFFER);
    bxFree(blocks[2]);
    EXPECT_EQ(bxMallocNext(&size, &owner), blocks[3]);
    EXPECT_EQ(owner, nullptr);
    EXPECT_EQ(bxMallocNext(&size, &owner), nullptr);
    EXPECT_EQ(bxMallocNext(nullptr, nullptr), nullptr);
    EXPECT_EQ(size, 4) << "untouched at the end";
}

TEST_F(Allocator, InfoFindsLiveBlocksOnly) {
    void* block = nullptr;
    EXPECT_EQ(bxMalloc(block, 10, 3, 64), block);
    int size = 0;
    EXPECT_TRUE(bxMallocInfo(block, &size, nullptr));
    EXPECT_EQ(size, 10);
    EXPECT_FALSE(bxMallocInfo(static_cast<char*>(block) + 1, &size, nullptr));
    bxFree(static_cast<char*>(block) + 1);
    EXPECT_TRUE(bxMallocInfo(block, nullptr, nullptr));
    bxFree(block);
    bxFree(block);
    bxFree(nullptr);
    EXPECT_FALSE(bxMallocInfo(block, nullptr, nullptr));
}

TEST_F(Allocator, LogsAtItsLevelOnly) {
    void* block = nullptr;
    {
        Capture quiet(87);
        bxFree(bxMalloc(8, 0, 0, nullptr));
        EXPECT_EQ(quiet.text(), "");
    }
    Capture capture(39);
    block = bxMalloc(8, 1, 64, nullptr);
    const std::string record =
        std::string("size:8  address:") +
        (bxString() << static_cast<const void*>(static_cast<char*>(block) - 65)).c_str() +
        "  alignedPointer:" + (bxString() << block).c_str() + "\n";
    bxFree(block);
    bxFree(block);
    EXPECT_EQ(capture.text(), " - bxMalloc: " + record + " - bxFree: " + record + " - bxFree: \n");
}

TEST_F(Allocator, KeepsCountOfThousandsOfBlocks) {
    std::mt19937 random(1);
    std::vector<void*> blocks;
    for (int i = 0; i < 10000; ++i)
        blocks.push_back(bxMalloc(i % 7, 0, i % 64 * 512, nullptr));
    std::shuffle(blocks.begin(), blocks.end(), random);
    long long kept = bxAllocatedSize();
    for (int i = 0; i < 5000; ++i) {
        int size = 0;
        ASSERT_TRUE(bxMallocInfo(blocks[static_cast<std::size_t>(i)], &size, nullptr));
        bxFree(blocks[static_cast<std::size_t>(i)]);
        kept -= size;
    }
    EXPECT_EQ(bxAllocatedSize(), kept);
    EXPECT_EQ(bxFreeSince(m_mark), 5000);
}

TEST_F(Allocator, FreesWhatCameAfterAMark) {
    void* before = bxMalloc(1, 0, 0, nullptr);
    const long long mark = bxMallocMark();
    bxMalloc(2, 0, 0, nullptr);
    bxFree(before);
    before = bxMalloc(3, 0, 0, nullptr);
    EXPECT_EQ(bxFreeSince(mark), 2);
    EXPECT_FALSE(bxMallocInfo(before, nullptr, nullptr));
    EXPECT_EQ(bxFreeSince(mark), 0);
}

/** Counts what it is asked for. */
class Owner : public bxObject {
  public:
    bool reserveCopy() override { return ++m_reserved % 2 == 0; }
    bool setReservedCopy() override { return ++m_reset > 0; }
    int m_reserved = 0;
    int m_reset = 0;
};

TEST_F(Allocator, CopiesAreKeptByTheOwners) {
    Owner owner;
    for (void* blockOwner :
         {static_cast<void*>(&owner), static_cast<void*>(&owner), static_cast<void*>(nullptr),
          static_cast<void*>(MEM_OBJECT_IS_BUFFER), static_cast<void*>(MEM_OBJECT_IS_SUBOBJECT)})
        bxMalloc(16, 0, 0, blockOwner);
    EXPECT_EQ(bxReserveAllVectors(), 1);
    EXPECT_EQ(bxResetAllVectors(), 2);
    EXPECT_EQ(owner.m_reserved, 2);
    EXPECT_EQ(owner.m_reset, 2);
    bxFreeSince(m_mark);
}

TEST_F(Allocator, GuardedBlocksEndAtTheirPage) {
    g_placement.rules.guard = true;
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    for (const int misalign : {0, 1, 15, 63, -5})
        for (const int size : {0, 1, 16, 4096, 4097, 100000}) {
            auto* block = static_cast<char*>(bxMalloc(size, misalign, 512, nullptr));
            ASSERT_TRUE(block);
            std::memset(block, 0xAA, static_cast<std::size_t>(size));
            EXPECT_EQ((addressOf(block) - static_cast<std::uintptr_t>(misalign)) % 16, 0U);
            const std::uintptr_t end = addressOf(block) + static_cast<unsigned>(size);
            EXPECT_LT((end + page - 1) / page * page - end, 16U);
        }
    EXPECT_EQ(bxFreeSince(m_mark), 30);
    EXPECT_EQ(bxMalloc(-1, 0, 0, nullptr), nullptr);
}

using AllocatorDeathTest = Allocator;

TEST_F(AllocatorDeathTest, GuardedBlocksFaultBehindTheirEnd) {
    g_placement.rules.guard = true;
    auto* block = static_cast<volatile char*>(bxMalloc(100, 4, 0, nullptr));
    block[99] = 1;
    EXPECT_DEATH(block[112] = 1, "");
}

TEST(AllocationTable, DiscardedAtTheEndOfTheProgram) {
    static void* block = bxMalloc(4, 0, 0, nullptr);
    bxFreeAll();
    EXPECT_EQ(bxMallocFirst(nullptr, nullptr), nullptr);
    EXPECT_EQ(bxFreeSince(0), 0);
    bxFree(block);
    std::memset(block, 0, 4);
    EXPECT_FALSE(bxMallocInfo(block, nullptr, nullptr));
    EXPECT_EQ(bxAllocatedSize(), 0);
}

/** The sentinels differ and serve static initialisers. */
const bool s_sentinelsDiffer =
    MEM_OBJECT_IS_BUFFER != MEM_OBJECT_IS_SUBOBJECT && MEM_OBJECT_IS_BUFFER->objectSize() == 0;

TEST(Sentinels, AreTwo) {
    EXPECT_TRUE(s_sentinelsDiffer);
}

} // namespace
