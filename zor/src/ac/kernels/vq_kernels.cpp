// Code-book searches. Vector lanes are code vectors, the sums run over the elements of a sub-vector.
#include "ac/vq.h"
#include "common/simd.h"

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

constexpr int tile = VqBook::padding, tileVectors = tile / lanesIn<V>;

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

/** Weighted energies of 16 code vectors and their weighted correlations with the target. */
inline void correlate(const VqBook& book, const VqTarget& target, int row, float* energies,
                      float* correlations) {
    V energy[tileVectors] = {}, correlation[tileVectors] = {};
    for (int i = 0; i < target.length; ++i) {
        const V weight = splat<V>(target.weights[i]),
                weighted = splat<V>(target.weights[i] * target.values[i]);
        for (int v = 0; v < tileVectors; ++v) {
            const V code = load<V>(book.byElement + i * book.paddedRows() + row + v * lanesIn<V>);
            energy[v] += weight * code * code;
            correlation[v] += weighted * code;
        }
    }
    for (int v = 0; v < tileVectors; ++v) {
        store(energies + v * lanesIn<V>, energy[v]);
        store(correlations + v * lanesIn<V>, correlation[v]);
    }
}

/** Distances without the target's own energy: energy - 2 |correlation| where the sign is free. */
void nearest(const VqBook& book, const VqTarget& target, bool signFree, int* codes, int count) {
    Nearest list(codes, count);
    for (int row = 0; row < book.rows; row += tile) {
        float energies[tile], correlations[tile];
        correlate(book, target, row, energies, correlations);
        const int inTile = book.rows - row < tile ? book.rows - row : tile;
        for (int j = 0; j < inTile; ++j) {
            const bool negative = signFree && correlations[j] < 0;
            const float correlation = negative ? -correlations[j] : correlations[j];
            list.offer(energies[j] - 2 * correlation, row + j + (negative ? book.rows : 0));
        }
    }
}

/** What a code vector c adds to the cost of a pair by itself, sum of w (c^2 / 4 - x c). */
inline float ownCost(const VqTarget& target, SignedRow code) {
    float sum = 0;
    for (int i = 0; i < target.length; ++i) {
        const float c = code.sign * code.row[i];
        sum += target.weights[i] * c * (0.25f * c - target.values[i]);
    }
    return sum;
}

/** Half the weighted code vectors of a run of first candidates, with their own costs. */
struct FirstBlock {
    static constexpr int size = 16;
    int count;
    float halves[size][VqBook::maxStep];
    float cost[size];

    FirstBlock(const VqBook& book, const VqTarget& target, const int* codes, int codeCount)
        : count(codeCount) {
        for (int a = 0; a < count; ++a) {
            const SignedRow code(book, codes[a]);
            cost[a] = ownCost(target, code);
            for (int i = 0; i < target.length; ++i)
                halves[a][i] = 0.5f * target.weights[i] * code.sign * code.row[i];
        }
    }
};

/** The signed code vectors of up to 16 second candidates in lanes; missing ones cost more than any other. */
struct SecondTile {
    float elements[VqBook::maxStep][tile] = {};
    float cost[tile];

    SecondTile(const VqBook& book, const VqTarget& target, const int* codes, int codeCount) {
        for (int b = 0; b < tile; ++b) {
            if (b >= codeCount) {
                cost[b] = std::numeric_limits<float>::max();
                continue;
            }
            const SignedRow code(book, codes[b]);
            cost[b] = ownCost(target, code);
            for (int i = 0; i < target.length; ++i)
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

/** All pairs of a block and a tile; each lane keeps its best, with the number of the first candidate as a
 * float. */
inline void comparePairs(const FirstBlock& block, const SecondTile& second, int length, int first,
                         int secondIndex, Best& best) {
    for (int v = 0; v < tileVectors; ++v) {
        V lowest = splat<V>(std::numeric_limits<float>::max()), at{};
        for (int a = 0; a < block.count; ++a) {
            V cost = load<V>(second.cost + v * lanesIn<V>) + splat<V>(block.cost[a]);
            for (int i = 0; i < length; ++i)
                cost += splat<V>(block.halves[a][i]) * load<V>(second.elements[i] + v * lanesIn<V>);
            at = cost < lowest ? splat<V>(static_cast<float>(a)) : at;
            lowest = cost < lowest ? cost : lowest;
        }
        float costs[lanesIn<V>], firsts[lanesIn<V>];
        store(costs, lowest);
        store(firsts, at);
        for (int lane = 0; lane < lanesIn<V>; ++lane)
            best.offer(costs[lane], first + static_cast<int>(firsts[lane]),
                       secondIndex + v * lanesIn<V> + lane);
    }
}

VqPair bestPair(const VqBook& book0, const VqBook& book1, const VqTarget& target, const int* candidates0,
                const int* candidates1, int count) {
    Best best;
    for (int second = 0; second < count; second += tile) {
        const SecondTile secondTile(book1, target, candidates1 + second, count - second);
        for (int first = 0; first < count; first += FirstBlock::size) {
            const int inBlock = count - first < FirstBlock::size ? count - first : FirstBlock::size;
            const FirstBlock block(book0, target, candidates0 + first, inBlock);
            comparePairs(block, secondTile, target.length, first, second, best);
        }
    }
    return {candidates0[best.first], candidates1[best.second]};
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
