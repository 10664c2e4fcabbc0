#include "mp3/huffman_choice.h"

#include "mp3/kernel_tables.h"

#include <climits>

namespace zor::mp3 {
namespace {

/** The table without escapes, or of each escape book the one with the fewest linbits, that costs least. */
int cheapestTable(const Zor32s* values, int n, int& bits) {
    const int largest = n > 0 ? *std::max_element(values, values + n) : 0;
    if (largest == 0)
        return 0;
    int cheapest = 0, least = INT_MAX, lastBook = -1;
    for (int table = 1; table < pairTables; ++table) {
        const PairTable& book = pairTable[static_cast<std::size_t>(table)];
        // Tables of one book follow each other with rising linbits; larger books without need cost more.
        if (book.largest < largest || book.first == lastBook)
            continue;
        if (book.linbits > 0 && largest < 15 && least < INT_MAX)
            break;
        lastBook = book.first;
        if (const int cost = pairBits(values, n, table); cost < least) {
            least = cost;
            cheapest = table;
        }
        if (book.linbits == 0 && book.width > largest + 4)
            break;
    }
    bits += least;
    return cheapest;
}

/** Ends region 0 behind a third of the bands of the big values, region 1 behind about three fifths. */
void divideRegions(const Zor16s* boundary, ZorMP3SideInfo& side) {
    constexpr int mostRegion0 = 15, mostRegion1 = 7;
    int bands = 0;
    while (bands < longBands && boundary[bands] < 2 * side.bigValues)
        ++bands;
    side.region0Count = std::clamp(bands / 3 - 1, 0, mostRegion0);
    side.region1Count = std::clamp((bands + 3) / 4 - 1, 0, mostRegion1);
}

} // namespace

HuffmanCost chooseHuffman(const Zor32s* values, const ZorMP3FrameHeader& header, ZorMP3SideInfo& side) {
    int end = lines;
    while (end > 0 && values[end - 1] == 0 && values[end - 2] == 0)
        end -= 2;
    int big = end;
    while (big >= 4 && std::all_of(values + big - 4, values + big, [](Zor32s value) { return value <= 1; }))
        big -= 4;
    side.bigValues = big / 2;
    const BandTables bands = bandTablesOf(header);
    if (side.windowSwitching) {
        side.region0Count = isShort(side) && !side.mixedBlock ? 8 : 7;
        side.region1Count = 20 - side.region0Count;
    } else {
        divideRegions(bands.longBoundary[bandRow(header)], side);
    }
    const Regions regions = regionsOf(bands, header, side);
    HuffmanCost cost{0, end - big};
    for (int r = 0, begin = 0; r < 3; begin = regions.end[r++])
        side.tableSelect[r] = cheapestTable(values + begin, regions.end[r] - begin, cost.bits);
    const int first = quadBits(values + big, cost.countOneLen, 0),
              second = quadBits(values + big, cost.countOneLen, 1);
    side.count1TableSelect = second < first;
    cost.bits += std::min(first, second);
    return cost;
}

} // namespace zor::mp3
