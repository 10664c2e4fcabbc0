// The cache iterators: bounds, scaling, the retry protocol, and runs over real blocks.
#include "data/bxalloc.h"
#include "parameters/bxcacheiterator.h"
#include "parameters/bxistream.h"
#include "parameters/bxstepiterator.h"
#include "system/bxenvironment.h"
#include "testsupport.h"

#include <gmock/gmock.h>

#include <climits>

using testing::HasSubstr;

namespace {

constexpr int cacheBytes = 1048576;
int s_cacheBytes = cacheBytes;
ZorStatus s_cacheStatus = zorStsNoErr;

ZorStatus scriptedCacheSize(int* size) {
    *size = s_cacheBytes;
    return s_cacheStatus;
}

/** An owner of data whose size is told by the test. */
struct Data : bxObject {
    int objectSize() const override { return bytes; }
    int bytes = 0;
};

/** Binds a scripted cache size and frees the blocks of a test. */
class CacheIterator : public testing::Test {
  protected:
    CacheIterator() : m_query(zor_GetMaxCacheSizeB) {
        zor_GetMaxCacheSizeB = scriptedCacheSize;
        s_cacheBytes = cacheBytes;
        s_cacheStatus = zorStsNoErr;
    }
    ~CacheIterator() override {
        flush();
        zor_GetMaxCacheSizeB = m_query;
    }

    /** Makes one block of all data. */
    void build(int bytes) {
        flush();
        m_block = bxMalloc(bytes, 0, 0, MEM_OBJECT_IS_BUFFER);
        ASSERT_NE(m_block, nullptr);
    }
    void flush() {
        bxFree(m_block);
        m_block = nullptr;
    }
    /** Builds data of `bytesPerElement` until they fit the mode; the number of attempts, -1 after giving up.
     */
    template <class Elements>
    int settle(bxCacheIterator& iterator, Elements elements, int bytesPerElement) {
        for (int attempts = 0;; ++attempts) {
            build(elements() * bytesPerElement);
            if (iterator.validateSize())
                return attempts;
            if (!iterator.repeatValue())
                return -1;
        }
    }

  private:
    ZorStatus (*m_query)(int*);
    void* m_block = nullptr;
};

TEST_F(CacheIterator, BoundsOfTheTwoModes) {
    bxIterator<int> len(0, "Len", "");
    len.add(64);
    bxCacheIteratorInt modes(len, nullptr, nullptr);
    EXPECT_EQ(modes.cacheParm(), &len);
    ASSERT_TRUE(modes.firstValue());
    EXPECT_EQ(modes.lowSize(), 104857);
    EXPECT_EQ(modes.highSize(), 943718);
    EXPECT_STREQ(modes.getComment().c_str(), "inCache");
    ASSERT_TRUE(modes.nextValue());
    EXPECT_EQ(modes.lowSize(), 1101004);
    EXPECT_EQ(modes.highSize(), INT_MAX);
    EXPECT_STREQ(modes.getComment().c_str(), "outofCache");
    EXPECT_FALSE(modes.nextValue());
    s_cacheBytes = INT_MAX;
    EXPECT_EQ(modes.lowSize(), INT_MAX);
    s_cacheStatus = zorStsUnknownCacheSize;
    EXPECT_EQ(modes.cacheSize(), 0);
}

TEST(CacheScaling, Integer) {
    const struct {
        int value, size, target;
        bool step, done;
        int scaled;
    } rows[] = {
        {64, 2048, 104857, false, true, 2048}, // to just below the target
        {1024, 2000000, 943718, false, true, 256},
        {64, 104857, 104857, false, true, 32}, // at the target is not below it
        {64, 2048, 104857, true, true, 128},
        {64, 2000000, 943718, true, true, 32},
        {1, 100, 50, false, false, 0},
        {1, 100, 50, true, false, 0},
        {0, 2048, 104857, false, false, 0},
        {-64, 2048, 104857, false, false, 0},
        {64, 0, 104857, false, false, 0},
        {64, 2048, 0, false, false, 0},
        {64, 0, 104857, true, false, 0},
        {1 << 30, 1, INT_MAX, false, false, 0},
        {1 << 30, 1, 100, true, false, 0},
        {1, 1, INT_MAX, false, true, 1 << 30},
        {5, INT_MAX, 1, false, false, 0},
        {64, 2, 1, true, true, 32},
    };
    for (const auto& row : rows) {
        int value = row.value;
        EXPECT_EQ(bxCacheIteratorInt::updateValue(value, row.size, row.target, row.step), row.done)
            << row.value << " " << row.size << " " << row.target;
        if (row.done) {
            EXPECT_EQ(value, row.scaled);
        }
    }
}

TEST(CacheScaling, Size) {
    const struct {
        ZoriSize value;
        int size, target;
        bool step, done;
        ZoriSize scaled;
    } rows[] = {
        {{8, 8}, 1000, 7000, false, true, {16, 16}}, {{8, 8}, 1000, 15000, false, true, {32, 16}},
        {{8, 8}, 1000, 999, false, true, {8, 4}},    {{8, 8}, 1000, 300, false, true, {4, 4}},
        {{8, 4}, 1000, 9000, true, true, {8, 8}},    {{4, 4}, 1000, 9000, true, true, {8, 4}},
        {{4, 8}, 9000, 1000, true, true, {4, 4}},    {{8, 4}, 9000, 1000, true, true, {4, 4}},
        {{1, 1}, 9000, 1000, true, false, {}},       {{0, 8}, 1000, 9000, false, false, {}},
        {{8, 8}, 0, 9000, false, false, {}},         {{8, 8}, 1000, 0, true, false, {}},
        {{8, 8}, 1, 2, true, true, {16, 8}},         {{8, 8}, 2, 1, true, true, {8, 4}},
    };
    for (const auto& row : rows) {
        ZoriSize value = row.value;
        EXPECT_EQ(bxCacheIteratorSize::updateValue(value, row.size, row.target, row.step), row.done)
            << row.size << " " << row.target;
        if (row.done) {
            EXPECT_EQ(value, row.scaled) << value.width << "x" << value.height;
        }
    }
}

TEST_F(CacheIterator, ElevenAttemptsForACombination) {
    bxDefault<int> len(1, "Len", "");
    bxCacheIteratorInt modes(len, nullptr, [](bxParameter*, int, int, bool) { return true; });
    ASSERT_TRUE(modes.firstValue());
    for (int i = 0; i < 11; ++i)
        EXPECT_TRUE(modes.repeatValue()) << i;
    EXPECT_FALSE(modes.repeatValue());
    build(cacheBytes / 2);
    EXPECT_TRUE(modes.validateSize()) << "data that fit start the count anew";
    EXPECT_TRUE(modes.repeatValue());
}

TEST_F(CacheIterator, SetFunctionIsToldWhatToReach) {
    struct Call {
        int size, target;
        bool step;
    };
    static std::vector<Call> calls;
    calls.clear();
    bxDefault<int> len(1, "Len", "");
    bxCacheIteratorInt modes(len, nullptr, [](bxParameter*, int size, int target, bool step) {
        calls.push_back({size, target, step});
        return calls.size() < 3;
    });
    ASSERT_TRUE(modes.firstValue());
    build(2000);
    EXPECT_FALSE(modes.validateSize());
    EXPECT_TRUE(modes.repeatValue());
    EXPECT_TRUE(modes.repeatValue());
    build(cacheBytes);
    EXPECT_FALSE(modes.validateSize());
    EXPECT_FALSE(modes.repeatValue()) << "a set function that cannot ends the attempts";
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(std::tie(calls[0].size, calls[0].target, calls[0].step), std::make_tuple(2000, 104857, false));
    EXPECT_EQ(std::tie(calls[1].size, calls[1].target, calls[1].step), std::make_tuple(2000, 104857, true));
    EXPECT_EQ(std::tie(calls[2].size, calls[2].target, calls[2].step),
              std::make_tuple(cacheBytes, 943718, true));
}

TEST_F(CacheIterator, MisfitsAreNotedAndListed) {
    bxDefault<int> len(16, "Len", "");
    Data data;
    bxCacheIteratorInt modes(len, &data, nullptr);
    modes.firstValue();
    data.bytes = 100;
    build(1000000);
    const std::string note = "      inCache try: cacheParm=16 objectSize=100 < 104857\n"
                             "      inCache try: cacheParm=16 totalSize=1000000 > 943718\n";
    {
        Capture listing(outPerf);
        EXPECT_FALSE(modes.validateSize());
        EXPECT_EQ(listing.text(), note);
        modes.outputInfo();
        EXPECT_EQ(listing.text(), note) << "shown already";
    }
    Capture listing(outWarn);
    build(50000);
    data.bytes = 0;
    EXPECT_TRUE(modes.validateSize()) << "after both bounds failed a hundredth of the cache is enough";
    build(500);
    EXPECT_FALSE(modes.validateSize());
    modes.outputInfo();
    EXPECT_EQ(listing.text(), "      inCache try: cacheParm=16 objectSize=500 < 10485\n");
}

TEST_F(CacheIterator, GivesUpWhereNoSizeCanFit) {
    bxDefault<int> len(16, "Len", "");
    Data data;
    bxCacheIteratorInt modes(len, &data, nullptr);
    modes.firstValue();
    data.bytes = 100; // too small beside too much other data, for either lower bound
    build(1000000);
    EXPECT_FALSE(modes.validateSize());
    EXPECT_TRUE(modes.repeatValue());
    EXPECT_FALSE(modes.validateSize());
    EXPECT_FALSE(modes.repeatValue());
}

TEST_F(CacheIterator, SizesThatJumpAcrossTheBandMayBeSmaller) {
    bxDefault<int> len(16, "Len", "");
    for (const int smallBytes : {20000, 5000}) {
        bxCacheIteratorInt modes(len, nullptr, [](bxParameter*, int, int, bool) { return true; });
        modes.firstValue();
        modes.repeatValue();
        modes.repeatValue();
        build(cacheBytes);
        EXPECT_FALSE(modes.validateSize());
        build(smallBytes);
        EXPECT_EQ(modes.validateSize(), smallBytes == 20000);
        EXPECT_EQ(modes.repeatValue(), smallBytes == 20000) << "below a hundredth it gives up";
    }
}

TEST_F(CacheIterator, BringsRealDataIntoBothModes) {
    bxIterator<int> list(0, "Len", "");
    list.add(64);
    list.add(100);
    bxStepIterator<int> range(0, "Len", "");
    range.setRange(64, 100, '+', 36);
    Capture listing(outErr);
    for (bxIterator<int>* len : {&list, static_cast<bxIterator<int>*>(&range)}) {
        bxCacheIteratorInt modes(*len, nullptr, nullptr);
        const auto elements = [&] { return len->value(); };
        ASSERT_TRUE(modes.firstValue());
        EXPECT_EQ(len->value(), 64);
        EXPECT_EQ(settle(modes, elements, 8), 2) << "to just below the bound, then over it";
        EXPECT_EQ(len->value(), 16384);
        ASSERT_TRUE(len->nextValue());
        EXPECT_EQ(len->value(), 100) << "the sequence of the parameter goes on";
        EXPECT_GE(settle(modes, elements, 8), 0);
        EXPECT_FALSE(len->nextValue());
        ASSERT_TRUE(modes.nextValue());
        EXPECT_EQ(len->value(), 64);
        EXPECT_EQ(settle(modes, elements, 8), 2);
        EXPECT_EQ(len->value(), 262144);
        EXPECT_FALSE(modes.nextValue());
    }
}

TEST_F(CacheIterator, BringsSizesIntoBothModes) {
    bxIterator<ZoriSize> size({0, 0}, "Size", "");
    size.add({8, 8});
    bxCacheIteratorSize modes(size, nullptr, nullptr);
    const auto elements = [&] { return size.value().width * size.value().height; };
    Capture listing(outErr);
    ASSERT_TRUE(modes.firstValue());
    EXPECT_GE(settle(modes, elements, 4), 0);
    EXPECT_STREQ(size.valueString().c_str(), "256x128");
    ASSERT_TRUE(modes.nextValue());
    EXPECT_GE(settle(modes, elements, 4), 0);
    EXPECT_STREQ(size.valueString().c_str(), "1024x512");
}

TEST_F(CacheIterator, EndsWithoutDataOrWithoutACacheSize) {
    bxDefault<int> len(16, "Len", "");
    bxCacheIteratorInt modes(len, nullptr, nullptr);
    Capture listing(outErr);
    modes.firstValue();
    EXPECT_FALSE(modes.validateSize()) << "no data at all";
    EXPECT_FALSE(modes.repeatValue());
    s_cacheStatus = zorStsUnknownCacheSize;
    modes.firstValue();
    build(1000);
    EXPECT_FALSE(modes.validateSize()) << "no size is small enough for no cache";
    EXPECT_FALSE(modes.repeatValue());
}

TEST_F(CacheIterator, IsSilentAsAParameter) {
    bxDefault<int> len(16, "Len", "");
    bxCacheIteratorInt modes(len, nullptr, nullptr);
    modes.firstValue();
    Capture listing(outErr);
    TableCapture table;
    g_ostrm << ERR;
    modes.fromIStream(g_istrm);
    modes.toOStream(g_ostrm);
    g_ostrm << endMessage;
    modes.toCStream(g_cstrm);
    modes.nameToCStream(g_cstrm);
    g_cstrm << "\n";
    EXPECT_EQ(listing.text() + modes.valueString().c_str() + modes.prompt().c_str(), "");
    EXPECT_EQ(table.text(), "\n");
}

} // namespace
