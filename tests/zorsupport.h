/** \file
 * What the tests of the library share: the code paths of this processor and reproducible test data.
 */
#ifndef ZORSUPPORT_H
#define ZORSUPPORT_H

#include "zorcore.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

/** A processor type of each code path. */
struct ZorPath {
    const char* name;
    int cpuType;
};

inline constexpr ZorPath zorPaths[] = {
    {"portable", zorCpuUnknown}, {"sse2", zorCpuSSE2}, {"avx", zorCpuAVX}, {"avx2", zorCpuAVX2}};

/** A test that is run once on every code path that this processor has; the best path is restored. */
class ZorPathTest : public testing::TestWithParam<ZorPath> {
  protected:
    void SetUp() override {
        if (zorInitCpu(GetParam().cpuType) < 0)
            GTEST_SKIP() << "no " << GetParam().name;
    }
    void TearDown() override { zorInit(); }
};

inline std::string zorPathName(const testing::TestParamInfo<ZorPath>& info) {
    return info.param.name;
}

/** `count` integers, evenly spread over low to high. */
template <class T>
std::vector<T> randomInts(int count, long long low, long long high, unsigned seed) {
    std::mt19937_64 engine(seed);
    std::uniform_int_distribution<long long> draw(low, high);
    std::vector<T> values(static_cast<std::size_t>(count));
    for (T& value : values)
        value = static_cast<T>(draw(engine));
    return values;
}

/** Builds a bit stream, most significant bit first. */
class BitText {
  public:
    /** Bits beyond those of the value are 0. */
    BitText& put(unsigned value, int count) {
        for (int i = count - 1; i >= 0; --i)
            m_bits.push_back(i < 32 && (value >> i & 1) != 0);
        return *this;
    }
    BitText& put(const char* text) {
        for (; *text; ++text)
            m_bits.push_back(*text == '1');
        return *this;
    }
    int size() const { return static_cast<int>(m_bits.size()); }
    /** The bytes, filled up with zero bits. */
    std::vector<Zor8u> bytes() const {
        std::vector<Zor8u> result((m_bits.size() + 7) / 8);
        for (std::size_t i = 0; i < m_bits.size(); ++i)
            result[i / 8] = static_cast<Zor8u>(result[i / 8] | (m_bits[i] ? 0x80 >> i % 8 : 0));
        return result;
    }

  private:
    std::vector<bool> m_bits;
};

#endif
