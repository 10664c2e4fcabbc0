// Vector quantisation: selections against exhaustive search, reconstruction.
#include "zorac.h"
#include "zormath.h"
#include "zorsupport.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

class VqTest : public ZorPathTest {};
INSTANTIATE_TEST_SUITE_P(Paths, VqTest, testing::ValuesIn(zorPaths), zorPathName);

using Book = StateOwner<ZorsVQCodeBook_32f, zorsVQCodeBookFree_32f>;

/** Two books and a signal in divisions of every length, with weights and free signs in two of three. */
struct Material {
    int step, rows, divisions;
    std::vector<int> lengths, polarity;
    std::vector<float> table[2], source, weight;
    Book book[2];

    Material(int stepLength, int rowCount, int divisionCount)
        : step(stepLength), rows(rowCount), divisions(divisionCount) {
        for (int i = 0; i < divisions; ++i) {
            lengths.push_back(i % step + 1);
            polarity.push_back(i % 3 - 1);
        }
        const auto total = static_cast<std::size_t>(std::accumulate(lengths.begin(), lengths.end(), 0));
        source = noise(total, 11);
        weight = noise(total, 12);
        for (float& w : weight)
            w = 1 + std::fabs(w);
        for (unsigned b : {0u, 1u}) {
            table[b] = noise(static_cast<std::size_t>(step * rows), 13 + b);
            ZorsVQCodeBook_32f* made = nullptr;
            EXPECT_EQ(zorStsNoErr, zorsVQCodeBookInitAlloc_32f(&made, table[b].data(), step, rows));
            book[b].reset(made);
        }
    }

    /** Element i of a signed code vector. */
    double code(unsigned b, int number, int i) const {
        const double value =
            static_cast<double>(table[b][static_cast<std::size_t>(number % rows * step + i)]);
        return number < rows ? value : -value;
    }

    /** Weighted distance of a division to the vector that at(i) gives. */
    template <class At>
    double distance(int division, At at) const {
        const int from = std::accumulate(lengths.begin(), lengths.begin() + division, 0);
        double sum = 0;
        for (int i = 0; i < lengths[static_cast<std::size_t>(division)]; ++i) {
            const auto n = static_cast<std::size_t>(from + i);
            const double difference = static_cast<double>(source[n]) - at(i);
            sum += static_cast<double>(weight[n]) * difference * difference;
        }
        return sum;
    }
    double distance(int division, int number) const {
        return distance(division, [&](int i) { return code(0, number, i); });
    }
    double distance(int division, int number0, int number1) const {
        return distance(division, [&](int i) { return 0.5 * (code(0, number0, i) + code(1, number1, i)); });
    }

    std::vector<int> preliminary(unsigned b, int candidates) const {
        std::vector<int> index(static_cast<std::size_t>(divisions * candidates), -1);
        EXPECT_EQ(zorStsNoErr,
                  zorsVQPreliminarySelect_32f(source.data(), weight.data(), lengths.data(), polarity.data(),
                                              divisions, index.data(), candidates, book[b].get()));
        return index;
    }
};

constexpr int shapes[][2] = {{20, 32}, {1, 1}, {7, 37}, {64, 300}, {5, 16}};

TEST_P(VqTest, PreliminarySelectionListsTheNearest) {
    for (const auto& [step, rows] : shapes) {
        const Material m(step, rows, std::min(60, 2 * step + 3));
        for (const int candidates : {1, std::min(rows, 6), rows}) {
            SCOPED_TRACE(testing::Message() << step << " x " << rows << ", " << candidates << " candidates");
            const auto index = m.preliminary(0, candidates);
            for (int division = 0; division < m.divisions; ++division) {
                const bool free = m.polarity[static_cast<std::size_t>(division)] != 0;
                std::vector<double> best;
                for (int row = 0; row < rows; ++row) {
                    const double positive = m.distance(division, row);
                    best.push_back(free ? std::min(positive, m.distance(division, row + rows)) : positive);
                }
                std::sort(best.begin(), best.end());
                for (int i = 0; i < candidates; ++i) {
                    const int code = index[static_cast<std::size_t>(division * candidates + i)];
                    ASSERT_LT(code, free ? 2 * rows : rows);
                    ASSERT_NEAR(best[static_cast<std::size_t>(i)], m.distance(division, code), 2e-4)
                        << "division " << division << " candidate " << i;
                }
            }
        }
    }
}

TEST_P(VqTest, EqualDistancesKeepTheOrderOfRows) {
    const std::vector<float> table(40, 1.0f), source{2}, weight{1};
    ZorsVQCodeBook_32f* made = nullptr;
    ASSERT_EQ(zorStsNoErr, zorsVQCodeBookInitAlloc_32f(&made, table.data(), 1, 40));
    const Book book(made);
    const int length = 1, polarity = 1;
    std::vector<int> index(40), expected(40);
    ASSERT_EQ(zorStsNoErr, zorsVQPreliminarySelect_32f(source.data(), weight.data(), &length, &polarity, 1,
                                                       index.data(), 40, made));
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(expected, index);
    int first = -1, second = -1;
    ASSERT_EQ(zorStsNoErr, zorsVQMainSelect_32f(source.data(), weight.data(), &length, 1, index.data(),
                                                index.data(), 40, &first, &second, made, made));
    EXPECT_EQ(0, first);
    EXPECT_EQ(0, second);
}

TEST_P(VqTest, EveryEntryIsWrittenWhateverTheValues) {
    // One value of a division is infinite or no number: its codes are still rows of the book, each of them
    // once, and those of the other divisions are what they were.
    constexpr int unwritten = -1;
    for (const int candidates : {1, 3, 37}) {
        Material clean(7, 37, 9);
        const auto expected = clean.preliminary(0, candidates);
        for (const float bad :
             {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
              -std::numeric_limits<float>::infinity(), 3e38f})
            for (const bool inWeights : {false, true}) {
                Material material(7, 37, 9);
                (inWeights ? material.weight : material.source)[12] = bad; // of division 4
                const auto index = material.preliminary(0, candidates);
                for (std::size_t i = 0; i < index.size(); ++i) {
                    if (i / static_cast<std::size_t>(candidates) != 4) {
                        EXPECT_EQ(index[i], expected[i]);
                    }
                }
                std::vector<int> rows;
                for (int i = 4 * candidates; i < 5 * candidates; ++i)
                    rows.push_back(index[static_cast<std::size_t>(i)]);
                EXPECT_EQ(std::count(rows.begin(), rows.end(), unwritten), 0) << bad << " of " << candidates;
                for (int& row : rows)
                    row %= material.rows;
                std::sort(rows.begin(), rows.end());
                EXPECT_EQ(std::adjacent_find(rows.begin(), rows.end()), rows.end())
                    << bad << " of " << candidates;
                std::vector<int> index0(9, unwritten), index1 = index0;
                const auto second = material.preliminary(1, candidates);
                ASSERT_EQ(zorStsNoErr,
                          zorsVQMainSelect_32f(material.source.data(), material.weight.data(),
                                               material.lengths.data(), 9, index.data(), second.data(),
                                               candidates, index0.data(), index1.data(),
                                               material.book[0].get(), material.book[1].get()));
                EXPECT_EQ(std::count(index0.begin(), index0.end(), unwritten), 0);
                EXPECT_EQ(std::count(index1.begin(), index1.end(), unwritten), 0);
            }
    }
}

TEST_P(VqTest, MainSelectionFindsTheBestPair) {
    for (const auto& [step, rows] : shapes) {
        const Material m(step, rows, std::min(60, step + 3));
        for (const int candidates : {1, std::min(rows, 17), std::min(rows, 35)}) {
            SCOPED_TRACE(testing::Message() << step << " x " << rows << ", " << candidates << " candidates");
            const auto list0 = m.preliminary(0, candidates), list1 = m.preliminary(1, candidates);
            std::vector<int> index0(static_cast<std::size_t>(m.divisions)), index1(index0);
            ASSERT_EQ(zorStsNoErr,
                      zorsVQMainSelect_32f(m.source.data(), m.weight.data(), m.lengths.data(), m.divisions,
                                           list0.data(), list1.data(), candidates, index0.data(),
                                           index1.data(), m.book[0].get(), m.book[1].get()));
            for (int division = 0; division < m.divisions; ++division) {
                double best = std::numeric_limits<double>::max();
                const auto at = division * candidates;
                for (int a = at; a < at + candidates; ++a)
                    for (int b = at; b < at + candidates; ++b)
                        best = std::min(best, m.distance(division, list0[static_cast<std::size_t>(a)],
                                                         list1[static_cast<std::size_t>(b)]));
                const auto d = static_cast<std::size_t>(division);
                ASSERT_NEAR(best, m.distance(division, index0[d], index1[d]), 2e-4)
                    << "division " << division;
            }
        }
    }
}

TEST_P(VqTest, IndexSelectionIsTheFirstCandidate) {
    const Material m(20, 32, 60);
    std::vector<int> index(60);
    ASSERT_EQ(zorStsNoErr, zorsVQIndexSelect_32f(m.source.data(), m.weight.data(), m.lengths.data(),
                                                 m.polarity.data(), 60, index.data(), m.book[0].get()));
    EXPECT_EQ(m.preliminary(0, 1), index);
}

TEST_P(VqTest, ReconstructionIsTheMeanAndQuantisesItselfExactly) {
    const Material m(20, 32, 60);
    const auto index0 = randomInts<int>(60, 0, 63, 1), index1 = randomInts<int>(60, 0, 63, 2);
    std::vector<float> out(m.source.size());
    ASSERT_EQ(zorStsNoErr, zorsVQReconstruction_32f(index0.data(), index1.data(), m.lengths.data(), 60,
                                                    out.data(), m.book[0].get(), m.book[1].get()));
    std::size_t at = 0;
    for (std::size_t division = 0; division < 60; ++division)
        for (int i = 0; i < m.lengths[division]; ++i)
            ASSERT_FLOAT_EQ(
                static_cast<float>(0.5 * (m.code(0, index0[division], i) + m.code(1, index1[division], i))),
                out[at++]);
    EXPECT_EQ(out.size(), at);
}

TEST(Vq, RefusesBadArguments) {
    const float table[12] = {};
    ZorsVQCodeBook_32f* made = nullptr;
    for (const auto& [step, rows] : {std::pair{0, 3}, std::pair{65, 3}, std::pair{4, 0}, std::pair{4, 1025}})
        EXPECT_EQ(zorStsSizeErr, zorsVQCodeBookInitAlloc_32f(&made, table, step, rows));
    ASSERT_EQ(zorStsNoErr, zorsVQCodeBookInitAlloc_32f(&made, table, 4, 3));
    const Book book(made);
    const float data[4] = {};
    const int polarity = 1;
    int index[3];
    const auto select = [&](int length, int candidates) {
        return zorsVQPreliminarySelect_32f(data, data, &length, &polarity, 1, index, candidates, made);
    };
    EXPECT_EQ(zorStsNoErr, select(4, 3));
    EXPECT_EQ(zorStsSizeErr, select(0, 3));
    EXPECT_EQ(zorStsSizeErr, select(5, 3));
    EXPECT_EQ(zorStsSizeErr, select(4, 0));
    EXPECT_EQ(zorStsSizeErr, select(4, 4));
    float out[4];
    const int length = 4;
    for (const int code : {-1, 6}) {
        const int good = 5;
        EXPECT_EQ(zorStsBadArgErr, zorsVQReconstruction_32f(&code, &good, &length, 1, out, made, made));
        EXPECT_EQ(zorStsBadArgErr, zorsVQReconstruction_32f(&good, &code, &length, 1, out, made, made));
        EXPECT_EQ(zorStsBadArgErr,
                  zorsVQMainSelect_32f(data, data, &length, 1, &good, &code, 1, index, index, made, made));
    }
    EXPECT_EQ(zorStsNullPtrErr, zorsVQCodeBookFree_32f(nullptr));
}

} // namespace
