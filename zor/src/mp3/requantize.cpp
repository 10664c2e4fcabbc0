/** \file
 * Requantisation of layer III with stereo decoding and reordering.
 */
#include "common/check.h"
#include "mp3/intensity.h"
#include "mp3/kernel_tables.h"
#include "mp3/powers.h"
#include "mp3/scalefactor.h"
#include "tables/mp3_pretab.h"

#include <array>
#include <cstdlib>

namespace zor::mp3 {
namespace {

struct Granule {
    Zor32s* spectrum[2];
    int* length;
    const Zor8s* factors[2];
    const ZorMP3SideInfo* side;
    const ZorMP3FrameHeader& header;
    const BandTables& bands;

    BandLayout layout(int channel) const { return {bands, header, side[channel]}; }
};

constexpr bool isGain(const ZorMP3SideInfo& side) {
    for (const int gain : side.subblockGain)
        if (gain < 0 || gain > 7)
            return false;
    return side.globalGain >= 0 && side.globalGain <= 255 && side.blockType >= 0 && side.blockType <= 3 &&
           side.preflag >> 1 == 0 && side.scalefacScale >> 1 == 0;
}

ZorStatus checkGranule(const Granule& granule) {
    if (!isHeader(granule.header))
        return zorStsBadArgErr;
    for (int channel = 0; channel < channelsOf(granule.header); ++channel) {
        const ZorMP3SideInfo& side = granule.side[channel];
        if (granule.length[channel] < 0 || granule.length[channel] > lines)
            return zorStsSizeErr;
        if (!isGain(side) || !isScalefacCompress(granule.header.id, side.scalefacCompress) ||
            !kernels<QuantKernels>().within(granule.spectrum[channel], granule.length[channel],
                                            largestQuantised))
            return zorStsBadArgErr;
    }
    return zorStsNoErr;
}

/** The scale of every band below length, in quarter powers of two: 11172-3 2.4.3.4.7.1. */
ScaledRuns scalesOf(const Granule& granule, int channel, int length) {
    const ZorMP3SideInfo& side = granule.side[channel];
    const int factorSteps = side.scalefacScale ? 4 : 2;
    ScaledRuns runs{};
    granule.layout(channel).forBands(length, [&](int, int end, int factor, int band, int window) {
        if (runs.count == maxRuns)
            return;
        int steps = side.globalGain - 210;
        if (window >= 0)
            steps -= 8 * side.subblockGain[window];
        const int emphasis = window < 0 && side.preflag ? tables::mp3_pretab::pretab[band] : 0;
        if (factor >= 0)
            steps -= factorSteps * (granule.factors[channel][factor] + emphasis);
        runs.end[runs.count] = std::min(end, length);
        runs.scale[runs.count++] = quarterPower(steps + 4 * fractionBits);
    });
    return runs;
}

/** Where the right channel's zero part begins: bands from here on may be in intensity stereo. */
struct ZeroPart {
    int longBand;
    int shortBand[3];

    bool has(int band, int window) const { return band >= (window < 0 ? longBand : shortBand[window]); }
};

ZeroPart zeroPartOf(const Granule& granule) {
    const BandLayout layout = granule.layout(1);
    ZeroPart part{0, {layout.firstShort, layout.firstShort, layout.firstShort}};
    bool shortsZero = true;
    layout.forBands(granule.length[1], [&](int begin, int end, int, int band, int window) {
        const Zor32s* const line = granule.spectrum[1];
        end = std::min(end, granule.length[1]);
        if (!std::any_of(line + begin, line + end, [](Zor32s value) { return value != 0; }))
            return;
        (window < 0 ? part.longBand : part.shortBand[window]) = band + 1;
        shortsZero = shortsZero && window < 0;
    });
    if (!shortsZero)
        part.longBand = longBands; // the long part of a mixed block lies below the zero part
    return part;
}

/** What the right channel's scale factors say of the zero part; nothing where a position is illegal. */
struct Positions {
    std::array<Balance, codedFactors> balance;
    std::array<bool, codedFactors> legal;
};

Positions positionsOf(const Granule& granule) {
    static const auto mpeg1 = [] {
        std::array<Balance, mpeg1Positions> table;
        for (int i = 0; i < mpeg1Positions; ++i)
            table[static_cast<std::size_t>(i)] = mpeg1Balance(i);
        return table;
    }();
    static const auto lsf = [] {
        std::array<std::array<Balance, lsfPositions>, 2> table;
        for (int scale = 0; scale < 2; ++scale)
            for (int i = 0; i < lsfPositions; ++i)
                table[static_cast<std::size_t>(scale)][static_cast<std::size_t>(i)] = lsfBalance(i, scale);
        return table;
    }();
    const bool isLsf = granule.header.id == 0;
    const auto& scaled = lsf[granule.side[1].scalefacCompress & 1];
    Positions positions{};
    const FactorPartition partition =
        isLsf ? lsfPartition(granule.side[1], true) : mpeg1Partition(granule.side[1]);
    std::size_t at = 0;
    for (int group = 0; group < 4; ++group) {
        // In id 0 the largest value of a length is the illegal position; without bits the position is 0.
        const int length = partition.length[group];
        const int limit = !isLsf        ? mpeg1Positions
                          : length == 0 ? 1
                                        : std::min((1 << length) - 1, lsfPositions);
        for (int i = 0; i < partition.count[group] && at < codedFactors; ++i, ++at) {
            const int position = granule.factors[1][at];
            positions.legal[at] = position >= 0 && position < limit;
            if (positions.legal[at])
                positions.balance[at] = isLsf ? scaled[static_cast<std::size_t>(position)]
                                              : mpeg1[static_cast<std::size_t>(position)];
        }
    }
    return positions;
}

/** Band by band: intensity stereo in the zero part, M/S elsewhere if it is on. */
void decodeIntensity(const Granule& granule, const ZeroPart& zero, int length) {
    const Positions positions = positionsOf(granule);
    const auto& kernel = kernels<QuantKernels>();
    const bool ms = usesMs(granule.header);
    Zor32s *const left = granule.spectrum[0], *const right = granule.spectrum[1];
    const Balance withoutPosition = balanceWithoutPosition(granule.header.id == 0);
    int lastFactor[4]{}; // of the long bands and of each window: the highest band shares the one below it
    granule.layout(1).forBands(length, [&](int begin, int end, int factor, int band, int window) {
        int& last = lastFactor[window + 1];
        last = factor >= 0 ? factor : last;
        const auto at = static_cast<std::size_t>(last);
        const int n = std::min(end, length) - begin;
        const bool alone = factor < 0 && !zero.has(band - 1, window);
        if (zero.has(band, window) && alone)
            kernel.spreadCarrier(left + begin, right + begin, n, withoutPosition.left, withoutPosition.right);
        else if (zero.has(band, window) && positions.legal[at])
            kernel.spreadCarrier(left + begin, right + begin, n, positions.balance[at].left,
                                 positions.balance[at].right);
        else if (ms)
            kernel.rotate(left + begin, right + begin, n);
    });
}

/** Lines from a channel's length up to the common one become 0, since both channels receive values there. */
int commonLength(const Granule& granule) {
    const int length = std::max(granule.length[0], granule.length[1]);
    for (int channel = 0; channel < 2; ++channel) {
        std::fill(granule.spectrum[channel] + granule.length[channel], granule.spectrum[channel] + length, 0);
        granule.length[channel] = length;
    }
    return length;
}

/** Short bands from the order window, line to line, window. */
void reorder(const BandLayout& layout, Zor32s* spectrum, int& length, Zor32s* buffer) {
    const int begin = layout.shortStart();
    if (length <= begin)
        return;
    int end = begin;
    for (int band = layout.firstShort; band < shortBands && end < length; ++band) {
        const int width = layout.shortWidth(band), start = 3 * layout.shortBoundary[band];
        end = start + 3 * width;
        if (length < end)
            std::fill(spectrum + length, spectrum + end, 0);
        for (int window = 0; window < 3; ++window)
            for (int i = 0; i < width; ++i)
                buffer[start + 3 * i + window] = spectrum[start + window * width + i];
    }
    std::copy(buffer + begin, buffer + end, spectrum + begin);
    length = std::max(length, end);
}

bool isTable(const Zor16s* boundary, int bands, int last) {
    return boundary[0] == 0 && boundary[bands] == last && std::is_sorted(boundary, boundary + bands + 1);
}

ZorStatus requantise(const Granule& granule, Zor32s* buffer) {
    if (const ZorStatus status = checkGranule(granule); status < 0)
        return status;
    const int row = bandRow(granule.header);
    if (!isTable(granule.bands.longBoundary[row], longBands, lines) ||
        !isTable(granule.bands.shortBoundary[row], shortBands, lines / 3))
        return zorStsBadArgErr;
    const int channels = channelsOf(granule.header);
    const bool intensity = usesIntensity(granule.header);
    const ZeroPart zero = intensity ? zeroPartOf(granule) : ZeroPart{};
    const auto& kernel = kernels<QuantKernels>();
    for (int channel = 0; channel < channels; ++channel)
        kernel.requantise(granule.spectrum[channel], scalesOf(granule, channel, granule.length[channel]),
                          fourThirds().data());
    if (intensity)
        decodeIntensity(granule, zero, commonLength(granule));
    else if (usesMs(granule.header))
        kernel.rotate(granule.spectrum[0], granule.spectrum[1], commonLength(granule));
    for (int channel = 0; channel < channels; ++channel)
        reorder(granule.layout(channel), granule.spectrum[channel], granule.length[channel], buffer);
    return zorStsNoErr;
}

ZorStatus requantise(Zor32s* srcDst, int* length, const Zor8s* factors, const ZorMP3SideInfo* side,
                     const ZorMP3FrameHeader* header, Zor8u* buffer, const BandTables& bands) {
    if (anyNull(srcDst, length) || anyNull(side) || anyNull(header) || anyNull(factors) || anyNull(buffer))
        return zorStsNullPtrErr;
    return requantise(
        Granule{
            {srcDst, srcDst + lines}, length, {factors, factors + zorMP3ScaleFactors}, side, *header, bands},
        reinterpret_cast<Zor32s*>(buffer));
}

} // namespace
} // namespace zor::mp3

extern "C" {

ZorStatus zorsReQuantize_MP3_32s_I(Zor32s* srcDst, int* length, const Zor8s* scaleFactor,
                                   const ZorMP3SideInfo* sideInfo, const ZorMP3FrameHeader* frameHeader,
                                   Zor8u* buffer) {
    return zor::mp3::requantise(srcDst, length, scaleFactor, sideInfo, frameHeader, buffer,
                                frameHeader ? zor::mp3::bandTablesOf(*frameHeader) : zor::mp3::BandTables{});
}

ZorStatus zorsReQuantizeSfb_MP3_32s_I(Zor32s* srcDst, int* length, const Zor8s* scaleFactor,
                                      const ZorMP3SideInfo* sideInfo, const ZorMP3FrameHeader* frameHeader,
                                      Zor8u* buffer, const Zor16s (*sfbLong)[23],
                                      const Zor16s (*sfbShort)[14]) {
    if (!sfbLong || !sfbShort)
        return zorStsNullPtrErr;
    return zor::mp3::requantise(srcDst, length, scaleFactor, sideInfo, frameHeader, buffer,
                                {.longBoundary = sfbLong, .shortBoundary = sfbShort});
}

} // extern "C"
