#include "aac/bands.h"

#include "tables/aac_sfb_long.h"
#include "tables/aac_sfb_short.h"

#include <array>

namespace zor::aac {

namespace {

namespace longs = tables::aac_sfb_long;
namespace shorts = tables::aac_sfb_short;

/** The rows of one csv table, cut at each sampling-rate index. */
template <int rows>
struct BandTable {
    std::array<std::uint16_t, rows> offset{};
    std::array<int, samplingRates + 1> start{};

    template <class Index, class Offset>
    constexpr BandTable(const Index& samplingIndex, const Offset& lines) {
        for (int row = 0; row < rows; ++row) {
            offset[static_cast<std::size_t>(row)] = static_cast<std::uint16_t>(lines[row]);
            start[static_cast<std::size_t>(samplingIndex[row] + 1)] = row + 1;
        }
    }

    [[nodiscard]] Bands at(int samplingRateIndex) const {
        const auto i = static_cast<std::size_t>(samplingRateIndex);
        return {offset.data() + start[i], start[i + 1] - start[i] - 1};
    }
};

constexpr BandTable<longs::rows> longBands{longs::sampling_index, longs::offset};
constexpr BandTable<shorts::rows> shortBands{shorts::sampling_index, shorts::offset};

} // namespace

Bands bands(int samplingRateIndex, int winLen) {
    if (samplingRateIndex < 0 || samplingRateIndex >= samplingRates)
        return {nullptr, 0};
    if (winLen == frameLength)
        return longBands.at(samplingRateIndex);
    if (winLen == shortLength)
        return shortBands.at(samplingRateIndex);
    return {nullptr, 0};
}

ZorStatus grouping(int numWinGrp, const int* winGrpLen, int maxSfb, int samplingRateIndex, int winLen,
                   Grouping& result) {
    if (!winGrpLen)
        return zorStsNullPtrErr;
    if (samplingRateIndex < 0 || samplingRateIndex >= samplingRates)
        return zorStsBadArgErr;
    const Bands layout = bands(samplingRateIndex, winLen);
    const int windows = winLen == shortLength ? shortWindows : 1;
    if (layout.count == 0 || maxSfb < 0 || maxSfb > layout.count || numWinGrp < 1 || numWinGrp > windows)
        return zorStsSizeErr;
    const std::span lengths{winGrpLen, static_cast<std::size_t>(numWinGrp)};
    int total = 0;
    for (const int length : lengths) {
        if (length < 1 || length > windows)
            return zorStsSizeErr;
        total += length;
    }
    if (total != windows)
        return zorStsSizeErr;
    result = {layout, winLen, lengths};
    return zorStsNoErr;
}

} // namespace zor::aac
