// Code-book searches. Vector lanes are code vectors, the sums run over the elements of a sub-vector.
#include "common/simd.h"
#include "vq/vq.h"

#include <limits>

namespace {

using zor::lanesIn;
using zor::load;
using zor::splat;
using zor::store;
using zor::VqBook;
using zor::VqPair;
using zor::VqTarget;
using V = zor::Lanes<zor::maxLanes>;

constexpr int tile = VqBook::padding;
constexpr float infinity = std::numeric_limits<float>::infinity();

/** A row of a book and its sign. */
struct SignedRow {
    const float* row;
    float sign;

    SignedRow(const VqBook& book, int code)
        : row(book.byRow + (code < book.rows ? code : code - book.rows) * book.step),
          sign(code < book.rows ? 1.0f : -1.0f) {}
};

/** The distances of a list of codes, the nearest `count` of them kept in order. */
class Nearest {
  public:
    Nearest(int* codes, int count) : m_codes(codes), m_count(count) {}

    void offer(float distance, int code) {
        if (m_filled == m_count && !(distance < m_distance[m_filled - 1]))
            return;
        int at = m_filled < m_count ? m_filled++ : m_filled - 1;
        for (; at > 0 && distance < m_distance[at - 1]; --at) {
            m_distance[at] = m_distance[at - 1];
            m_codes[at] = m_codes[at - 1];
        }
        m_distance[at] = distance;
        m_codes[at] = code;
    }

  private:
    int* m_codes;
    int m_count, m_filled = 0;
    float m_distance[VqBook::maxRows];
};

/** Of each code vector c: energy, sum of w c^2, and correlation with the target, sum of w x c. */
struct RowSums {
    float energy[VqBook::maxRows], correlation[VqBook::maxRows];

    RowSums(const VqBook& book, const VqTarget& target) {
        for (int row = 0; row < book.paddedRows(); row += lanesIn<V>)
            add(book, target, row);
    }

  private:
    void add(const VqBook& book, const VqTarget& target, int row) {
        const float* codes = book.byElement + row;
        V energies{}, correlations{};
        for (int i = 0; i < target.length; ++i, codes += book.paddedRows()) {
            const V code = load<V>(codes), weighted = splat<V>(target.weights[i]) * code;
            energies += weighted * code;
            correlations += weighted * splat<V>(target.values[i]);
        }
        store(energy + row, energies);
        store(correlation + row, correlations);
    }
};

/**
 * Distances of all rows without the target's own energy: energy - 2 |correlation| where the sign is free. One
 * that is no number counts as infinite, so that the rows have an order, and every place of a list a row,
 * whatever comes.
 */
struct Distances {
    RowSums sums;
    bool signFree;
    float value[VqBook::maxRows];

    Distances(const VqBook& book, const VqTarget& target, bool isSignFree)
        : sums(book, target), signFree(isSignFree) {
        for (int row = 0; row < book.paddedRows(); row += lanesIn<V>) {
            const V correlation = load<V>(sums.correlation + row);
            const V magnitude = signFree ? correlation < V{} ? -correlation : correlation : correlation;
            const V distance = load<V>(sums.energy + row) - 2 * magnitude, infinite = splat<V>(infinity);
            store<V>(value + row, distance < infinite ? distance : infinite);
        }
    }
    int code(const VqBook& book, int row) const {
        return row + (signFree && sums.correlation[row] < 0 ? book.rows : 0);
    }
};

/** For short lists: the nearest so far are kept in order. */
void listByInsertion(const VqBook& book, const Distances& distances, int* codes, int count) {
    Nearest list(codes, count);
    for (int row = 0; row < book.rows; ++row)
        list.offer(distances.value[row], distances.code(book, row));
}

/** Places of a vector of rows: how many rows are nearer, or as near and earlier. */
inline V ranks(const VqBook& book, const Distances& distances, int row) {
    const V own = load<V>(distances.value + row), one = splat<V>(1), zero{};
    const int behind = row + lanesIn<V>;
    V rank{};
    for (int other = 0; other < row; ++other)
        rank += splat<V>(distances.value[other]) <= own ? one : zero;
    for (int other = behind; other < book.rows; ++other)
        rank += splat<V>(distances.value[other]) < own ? one : zero;
    return rank;
}

/** For long lists: every row goes to its place. */
void listByRank(const VqBook& book, const Distances& distances, int* codes, int count) {
    for (int row = 0; row < book.rows; row += lanesIn<V>) {
        float rank[lanesIn<V>];
        store(rank, ranks(book, distances, row));
        const float* own = distances.value + row;
        const int inVector = book.rows - row < lanesIn<V> ? book.rows - row : lanesIn<V>;
        for (int lane = 0; lane < inVector; ++lane) {
            int place = static_cast<int>(rank[lane]);
            for (int other = 0; other < inVector; ++other)
                place += other < lane ? own[other] <= own[lane] : own[other] < own[lane];
            if (place < count)
                codes[place] = distances.code(book, row + lane);
        }
    }
}

void nearest(const VqBook& book, const VqTarget& target, bool signFree, int* codes, int count) {
    constexpr int shortList = 4;
    const Distances distances(book, target, signFree);
    (count <= shortList ? listByInsertion : listByRank)(book, distances, codes, count);
}

/** What the code vectors add to the cost of a pair by themselves: energy / 4 - correlation. */
inline float ownCost(const RowSums& sums, const VqBook& book, int code) {
    const int row = code < book.rows ? code : code - book.rows;
    const float correlation = sums.correlation[row];
    return 0.25f * sums.energy[row] - (code < book.rows ? correlation : -correlation);
}

/** Half the weighted code vectors of a run of first candidates, with their own costs. */
struct FirstBlock {
    static constexpr int size = 32;
    int count;
    float halves[size][VqBook::maxStep];
    float cost[size];

    FirstBlock(const VqBook& book, const RowSums& sums, const VqTarget& target, const int* codes,
               int codeCount)
        : count(codeCount < size ? codeCount : size) {
        for (int a = 0; a < count; ++a) {
            const SignedRow code(book, codes[a]);
            cost[a] = ownCost(sums, book, codes[a]);
            for (int i = 0; i < target.length; ++i)
                halves[a][i] = 0.5f * target.weights[i] * code.sign * code.row[i];
        }
    }
};

/** The signed code vectors of 16 second candidates in lanes; behind the last one it is repeated. */
struct SecondTile {
    float elements[VqBook::maxStep][tile];
    float cost[tile];

    SecondTile(const VqBook& book, const RowSums& sums, int length, const int* codes, int codeCount) {
        for (int b = 0; b < tile; ++b) {
            const int number = codes[b < codeCount ? b : codeCount - 1];
            const SignedRow code(book, number);
            cost[b] = ownCost(sums, book, number);
            for (int i = 0; i < length; ++i)
                elements[i][b] = code.sign * code.row[i];
        }
    }
};

struct Best {
    float cost = std::numeric_limits<float>::max();
    int first = 0, second = 0;

    void offer(float otherCost, int otherFirst, int otherSecond) {
        const bool earlier = otherFirst < first || (otherFirst == first && otherSecond < second);
        if (otherCost < cost || (otherCost == cost && earlier))
            *this = {otherCost, otherFirst, otherSecond};
    }
};

/** All pairs of a block with two vectors of the tile; each lane keeps its best and its first candidate's
 * number. */
inline void comparePairs(const FirstBlock& block, const SecondTile& second, int length, int at, int first,
                         int secondIndex, Best& best) {
    constexpr float none = std::numeric_limits<float>::max();
    constexpr int lanes = lanesIn<V>;
    V lowest0 = splat<V>(none), lowest1 = lowest0, number0{}, number1{};
    for (int a = 0; a < block.count; ++a) {
        const V own = splat<V>(block.cost[a]), number = splat<V>(static_cast<float>(a));
        V cost0 = load<V>(second.cost + at) + own, cost1 = load<V>(second.cost + at + lanes) + own;
        for (int i = 0; i < length; ++i) {
            const V half = splat<V>(block.halves[a][i]);
            cost0 += half * load<V>(second.elements[i] + at);
            cost1 += half * load<V>(second.elements[i] + at + lanes);
        }
        number0 = cost0 < lowest0 ? number : number0;
        number1 = cost1 < lowest1 ? number : number1;
        lowest0 = cost0 < lowest0 ? cost0 : lowest0;
        lowest1 = cost1 < lowest1 ? cost1 : lowest1;
    }
    float costs[2 * lanes], numbers[2 * lanes];
    store(costs, lowest0);
    store(costs + lanes, lowest1);
    store(numbers, number0);
    store(numbers + lanes, number1);
    for (int lane = 0; lane < 2 * lanes; ++lane)
        best.offer(costs[lane], first + static_cast<int>(numbers[lane]), secondIndex + at + lane);
}

VqPair bestPair(const VqBook& book0, const VqBook& book1, const VqTarget& target, const int* candidates0,
                const int* candidates1, int count) {
    const RowSums sums0(book0, target), sums1(book1, target);
    Best best;
    for (int first = 0; first < count; first += FirstBlock::size) {
        const FirstBlock block(book0, sums0, target, candidates0 + first, count - first);
        for (int second = 0; second < count; second += tile) {
            const SecondTile secondTile(book1, sums1, target.length, candidates1 + second, count - second);
            for (int at = 0; at < tile; at += 2 * lanesIn<V>)
                comparePairs(block, secondTile, target.length, at, first, second, best);
        }
    }
    return {candidates0[best.first], candidates1[best.second < count ? best.second : count - 1]};
}

void mean(const VqBook& book0, const VqBook& book1, VqPair codes, float* dst, int length) {
    const SignedRow a(book0, codes.code0), b(book1, codes.code1);
    for (int i = 0; i < length; ++i)
        dst[i] = 0.5f * (a.sign * a.row[i] + b.sign * b.row[i]);
}

} // namespace

template <>
const zor::VqKernels& zor::kernelTable<zor::VqKernels, ZOR_PATH>() {
    static constexpr VqKernels table{.nearest = nearest, .bestPair = bestPair, .mean = mean};
    return table;
}
