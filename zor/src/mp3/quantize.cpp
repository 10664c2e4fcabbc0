/** \file
 * The quantiser of a layer III encoder: two loops, as in the informative annex of 11172-3.
 *
 * The inner one finds the finest global gain whose code fits the bits of the granule. The outer one measures
 * the noise of every band and raises the scale factors of those where it exceeds what the model allows, until
 * none does or a limit is met; the best of the attempts is kept.
 */
#include "common/check.h"
#include "mp3/geometry.h"
#include "mp3/huffman_choice.h"
#include "mp3/intensity.h"
#include "mp3/kernel_tables.h"
#include "mp3/powers.h"
#include "mp3/scalefactor.h"

#include <bit>
#include <cmath>

namespace zor::mp3 {
namespace {

constexpr int mostPart23Length = 4095;
constexpr int mostGain = 255;
constexpr int gainOfOne = 210;    /**< a step of 1.0 */
constexpr int stepsPerFactor = 2; /**< scalefac_scale 0 */
constexpr int mostAttempts = 16;

/** One granule of one channel: its bands with the noise that they may have, in units of the lines' square. */
struct Band {
    int begin, end, factor, window; /**< factor and window as in BandLayout::forBands */
    double allowed;
    bool silent; /**< all of its lines are 0 */
};

struct BandList {
    int count = 0;
    Band band[maxRuns];
};

BandList listBands(const BandLayout& layout, const Zor32s* xr, const ZorMP3PsychInfo& info) {
    BandList list;
    layout.forBands(lines, [&](int begin, int end, int factor, int band, int window) {
        double energy = 0;
        for (int i = begin; i < end; ++i)
            energy += static_cast<double>(xr[i]) * xr[i];
        const double ratio = window < 0 ? info.ratioLong[band] : info.ratioShort[band][window];
        list.band[list.count++] = {begin, end, factor, window, energy * ratio, energy == 0};
    });
    return list;
}

/** Short bands from line, window to window, line: the inverse of the decoder's reordering. */
void toStreamOrder(const BandLayout& layout, Zor32s* spectrum, Zor32s* buffer) {
    const int begin = layout.shortStart();
    for (int band = layout.firstShort; band < shortBands; ++band) {
        const int width = layout.shortWidth(band), start = 3 * layout.shortBoundary[band];
        for (int window = 0; window < 3; ++window)
            for (int i = 0; i < width; ++i)
                buffer[start + window * width + i] = spectrum[start + 3 * i + window];
    }
    std::copy(buffer + begin, buffer + lines, spectrum + begin);
}

/** How scale factors are sent: bits in all, and the field that says so. */
struct FactorCode {
    int bits = 0;
    int compress = 0;
};

/**
 * Bits that the largest factor of each run of a partition needs; with `positions` so many that it is not the
 * largest number of its length, which says that a band is not in intensity stereo.
 */
FactorPartition lengthsNeeded(FactorPartition partition, const Zor8s* factors, bool positions) {
    for (int group = 0, at = 0; group < 4; at += partition.count[group++]) {
        int largest = 0;
        for (int i = at; i < at + partition.count[group]; ++i)
            largest = std::max<int>(largest, factors[i]);
        const int number = largest > 0 && positions ? largest + 1 : largest;
        partition.length[group] = static_cast<int>(std::bit_width(static_cast<unsigned>(number)));
    }
    return partition;
}

int bitsOf(const FactorPartition& partition) {
    int bits = 0;
    for (int group = 0; group < 4; ++group)
        bits += partition.count[group] * partition.length[group];
    return bits;
}

/** Of id 0: the run lengths are fields of their own, so each takes what it needs. False if one is too long.
 */
bool codeLsf(const ZorMP3SideInfo& side, const Zor8s* factors, bool intensityRight, FactorCode& code) {
    ZorMP3SideInfo probe = side;
    probe.scalefacCompress = side.scalefacCompress & intensityRight; // keeps the intensity scale
    const FactorPartition need = lengthsNeeded(lsfPartition(probe, intensityRight), factors, intensityRight);
    const int* const n = need.length;
    const int limits[2][4] = {{4, 4, 3, 3}, {4, 5, 5, 0}};
    for (int group = 0; group < 4; ++group)
        if (n[group] > limits[intensityRight][group])
            return false;
    code.compress = intensityRight ? 2 * (36 * n[0] + 6 * n[1] + n[2]) + probe.scalefacCompress
                                   : (5 * n[0] + n[1]) * 16 + n[2] * 4 + n[3];
    code.bits = bitsOf(need);
    return true;
}

/** Of id 1: the cheapest of the sixteen pairs of lengths that suffices. */
bool codeMpeg1(const ZorMP3SideInfo& side, const Zor8s* factors, FactorCode& code) {
    bool found = false;
    for (int compress = 0; compress < 16; ++compress) {
        ZorMP3SideInfo probe = side;
        probe.scalefacCompress = compress;
        const FactorPartition partition = mpeg1Partition(probe),
                              need = lengthsNeeded(partition, factors, false);
        if (!std::equal(need.length, need.length + 4, partition.length,
                        [](int n, int have) { return n <= have; }))
            continue;
        if (const int bits = bitsOf(partition); !found || bits < code.bits)
            code = {bits, compress};
        found = true;
    }
    return found;
}

/**
 * Calls visit(band) for each band with a scale factor up to the last one of its window (or among the long
 * ones) for which test(band) holds.
 */
template <class Test, class Visit>
void forBandsUpTo(const BandList& bands, Test test, Visit visit) {
    bool reached[4]{}; // long bands and the three windows
    for (int i = bands.count - 1; i >= 0; --i) {
        const Band& band = bands.band[i];
        bool& ofWindow = reached[band.window + 1];
        ofWindow = ofWindow || test(band);
        if (ofWindow && band.factor >= 0)
            visit(band);
    }
}

/** The factor that says that a band of the right channel is not in intensity stereo, by the lengths that were
 * chosen. */
Zor8s illegalPosition(const ZorMP3FrameHeader& header, ZorMP3SideInfo side, const FactorCode& code,
                      int factor) {
    if (header.id == 1)
        return mpeg1Positions;
    side.scalefacCompress = code.compress;
    const FactorPartition partition = lsfPartition(side, true);
    int group = 0;
    for (int end = partition.count[0]; group < 3 && factor >= end;)
        end += partition.count[++group];
    return static_cast<Zor8s>((1 << partition.length[group]) - 1);
}

/** One attempt at a granule: the fields it sets and what comes of them. */
struct Attempt {
    ZorMP3SideInfo side;
    Zor8s factors[codedFactors];
    FactorCode factorCode;
    HuffmanCost cost;
    double excess; /**< noise above what is allowed, relative to it, summed over the bands */
};

class GranuleQuantiser {
  public:
    /** `work` holds four times 576 values. */
    GranuleQuantiser(const ZorMP3FrameHeader& header, const BandList& bands, const Zor32s* xr,
                     bool intensityRight, Zor32s* work)
        : m_header(header), m_bands(bands), m_xr(xr), m_intensityRight(intensityRight), m_values(work),
          m_power(reinterpret_cast<float*>(work + lines)) {
        m_kernel.power34(xr, m_power, lines);
    }

    /** The best attempt within `bits`; its values are left in `best`. */
    Attempt run(const ZorMP3SideInfo& side, const Zor8s* factors, int bits, Zor32s* best) {
        Attempt current{side, {}, {}, {}, 0};
        Attempt kept{side, {}, {}, {}, -1}; // silence, where even that does not fit
        std::fill(best, best + lines, 0);
        std::copy(factors, factors + codedFactors, current.factors);
        for (int i = 0; i < mostAttempts && codeFactors(current) && fit(current, bits); ++i) {
            bool over[maxRuns]{};
            const bool audible = measure(current, over);
            if (kept.excess < 0 || current.excess < kept.excess) {
                kept = current;
                std::copy(m_values, m_values + lines, best);
            }
            if (!audible || !amplify(current, over))
                break;
        }
        if (m_intensityRight && kept.excess >= 0)
            forbidPositions(kept, best);
        return kept;
    }

  private:
    bool codeFactors(Attempt& attempt) const {
        Zor8s factors[codedFactors];
        std::copy(attempt.factors, attempt.factors + codedFactors, factors);
        if (m_intensityRight) { // room for what forbidPositions may put in
            const int least = m_header.id == 1 ? mpeg1Positions : 1;
            forBandsUpTo(m_bands, isHeard, [&](const Band& band) {
                factors[band.factor] = static_cast<Zor8s>(std::max<int>(factors[band.factor], least));
            });
        }
        return m_header.id == 1 ? codeMpeg1(attempt.side, factors, attempt.factorCode)
                                : codeLsf(attempt.side, factors, m_intensityRight, attempt.factorCode);
    }

    static bool isHeard(const Band& band) { return !band.silent; }

    /**
     * A decoder takes the factors of all bands above the right channel's last value for positions. The bands
     * among them that were not silent before they were quantised are in no intensity stereo.
     */
    void forbidPositions(Attempt& attempt, const Zor32s* values) const {
        bool coded[codedFactors]{};
        const auto hasValues = [values](const Band& band) {
            return std::any_of(values + band.begin, values + band.end,
                               [](Zor32s value) { return value != 0; });
        };
        forBandsUpTo(m_bands, hasValues, [&](const Band& band) { coded[band.factor] = true; });
        forBandsUpTo(m_bands, isHeard, [&](const Band& band) {
            if (!coded[band.factor])
                attempt.factors[band.factor] =
                    illegalPosition(m_header, attempt.side, attempt.factorCode, band.factor);
        });
    }

    int stepsOf(const Attempt& attempt, const Band& band) const {
        const int factor = band.factor < 0 ? 0 : attempt.factors[band.factor];
        return attempt.side.globalGain - gainOfOne - stepsPerFactor * factor;
    }

    /** Quantises with the attempt's gain. False if a value is too large or the code takes more than `bits`.
     */
    bool quantise(Attempt& attempt, int bits) {
        ScaledRuns runs{};
        for (int i = 0; i < m_bands.count; ++i) {
            runs.end[i] = m_bands.band[i].end;
            runs.scale[i] = quantiserScale(stepsOf(attempt, m_bands.band[i]));
        }
        runs.count = m_bands.count;
        if (m_kernel.quantise(m_power, m_values, runs) >= largestQuantised)
            return false;
        attempt.cost = chooseHuffman(m_values, m_header, attempt.side);
        return attempt.cost.bits <= bits;
    }

    /** The least gain that fits, by bisection; the last quantisation made is the one that counts. */
    bool fit(Attempt& attempt, int bits) {
        bits -= attempt.factorCode.bits;
        if (bits < 0)
            return false;
        int low = 0, high = mostGain;
        while (low < high) {
            attempt.side.globalGain = (low + high) / 2;
            if (quantise(attempt, bits))
                high = attempt.side.globalGain;
            else
                low = attempt.side.globalGain + 1;
        }
        attempt.side.globalGain = low;
        return quantise(attempt, bits);
    }

    /** Marks the bands whose noise is above what is allowed. */
    bool measure(Attempt& attempt, bool* over) const {
        bool any = false;
        attempt.excess = 0;
        for (int i = 0; i < m_bands.count; ++i) {
            const Band& band = m_bands.band[i];
            const float step = quarterPower(stepsOf(attempt, band) + 4 * fractionBits);
            double noise = 0;
            for (int line = band.begin; line < band.end; ++line) {
                const double error = std::abs(static_cast<float>(m_xr[line])) -
                                     fourThirds()[static_cast<std::size_t>(m_values[line])] * step;
                noise += error * error;
            }
            over[i] = noise > band.allowed;
            if (over[i]) {
                attempt.excess += std::log2(noise / std::max(band.allowed, 1.0));
                any = true;
            }
        }
        return any;
    }

    /** Raises the factors of marked bands. False where none or every band would be raised. */
    bool amplify(Attempt& attempt, const bool* over) const {
        int raised = 0, raisable = 0;
        for (int i = 0; i < m_bands.count; ++i) {
            const int factor = m_bands.band[i].factor;
            if (factor < 0)
                continue;
            ++raisable;
            if (over[i]) {
                ++attempt.factors[factor];
                ++raised;
            }
        }
        return raised > 0 && raised < raisable;
    }

    const ZorMP3FrameHeader& m_header;
    const BandList& m_bands;
    const Zor32s* m_xr;
    bool m_intensityRight;
    Zor32s* m_values;
    float* m_power;
    const QuantKernels& m_kernel = kernels<QuantKernels>();
};

/** Bits that a frame of this header has for main data; 0 for a free or forbidden bit rate. */
int mainDataBits(const ZorMP3FrameHeader& header) {
    const int bytes = unpaddedFrameBytes(header);
    const int overhead = headerBytes(header) + sideInfoBytes(header);
    return bytes > 0 ? 8 * (bytes + (header.paddingBit != 0) - overhead) : 0;
}

/** The most bits that main_data_begin can reach back. */
constexpr int mostReservoir(int id) {
    return id == 1 ? 511 * 8 : 255 * 8;
}

/**
 * The bits that may lie ahead of the next frame: main_data_begin reaches them, and together with that frame,
 * which may be padded, they fit into a decoder's buffer.
 */
int reservoirLimit(const ZorMP3FrameHeader& header) {
    constexpr int decoderBuffer = 7680;
    return std::clamp(decoderBuffer - 8 * (unpaddedFrameBytes(header) + 1), 0, mostReservoir(header.id));
}

/** What the channels of a granule may take: its even share, what there is, and what would not fit the
 * reservoir. */
struct GranuleBudget {
    int share, left, limit;

    /**
     * Bits for the next of `channels` channels: what the model asks for, but not below half of the even share
     * nor what the reservoir cannot take, and above it only what leaves the other channels theirs and part of
     * the reservoir.
     */
    int channelBits(int channels, double entropy) const {
        const int spare = std::max(left - share * channels, 0),
                  surplus = std::max(left - limit, 0) / channels;
        const int most = std::min({std::max(share + spare * 3 / 5, surplus), left, mostPart23Length});
        return std::clamp(entropy > 0 ? static_cast<int>(std::min(entropy * 1.1, 1e6)) : 0,
                          std::min(std::max(share / 2, surplus), most), most);
    }
};

bool isQuantisable(const ZorMP3FrameHeader& header, const ZorMP3SideInfo* side, int reservoir) {
    if (!isHeader(header) || header.bitrateIndex < 1 || header.bitrateIndex > 14 ||
        mainDataBits(header) <= 0 || reservoir < 0 || reservoir > mostReservoir(header.id))
        return false;
    for (int granule = 0; granule < granulesOf(header); ++granule)
        for (int channel = 0; channel < channelsOf(header); ++channel)
            if (const int type = side[2 * granule + channel].blockType; type < 0 || type > 3)
                return false;
    return true;
}

/** The fields that say nothing, with the block fields of `side`. */
ZorMP3SideInfo clearedSide(const ZorMP3SideInfo& side) {
    ZorMP3SideInfo cleared{};
    cleared.windowSwitching = side.windowSwitching;
    cleared.blockType = side.blockType;
    cleared.mixedBlock = side.mixedBlock;
    cleared.scalefacCompress = side.scalefacCompress & 1;
    return cleared;
}

} // namespace
} // namespace zor::mp3

extern "C" ZorStatus zorsQuantize_MP3_32s_I(Zor32s* srcDst, Zor8s* scaleFactor, int* countOneLen,
                                            int* hufSize, const ZorMP3PsychInfo* psychInfo,
                                            ZorMP3SideInfo* sideInfo, const ZorMP3FrameHeader* frameHeader,
                                            int* reservoir, Zor32s* buffer) {
    using namespace zor::mp3;
    if (zor::anyNull(srcDst, buffer) || zor::anyNull(scaleFactor) || zor::anyNull(psychInfo) ||
        zor::anyNull(sideInfo) || zor::anyNull(frameHeader) || zor::anyNull(countOneLen, hufSize, reservoir))
        return zorStsNullPtrErr;
    const ZorMP3FrameHeader& header = *frameHeader;
    if (!isQuantisable(header, sideInfo, *reservoir))
        return zorStsBadArgErr;
    const int channels = channelsOf(header), granules = granulesOf(header);
    const int mean = mainDataBits(header) / granules;
    GranuleBudget budget{mean / channels, *reservoir, reservoirLimit(header)};
    for (int granule = 0; granule < granules; ++granule) {
        budget.left += mean;
        for (int channel = 0; channel < channels; ++channel) {
            const int at = 2 * granule + channel;
            Zor32s* const xr = srcDst + at * lines;
            Zor8s* const factors = scaleFactor + at * zorMP3ScaleFactors;
            const bool intensityRight = channel == 1 && usesIntensity(header);
            if (!intensityRight)
                std::fill(factors, factors + codedFactors, Zor8s{0});
            const ZorMP3SideInfo side = clearedSide(sideInfo[at]);
            const BandLayout layout(bandTablesOf(header), header, side);
            toStreamOrder(layout, xr, buffer);
            const BandList bands = listBands(layout, xr, psychInfo[at]);
            GranuleQuantiser quantiser(header, bands, xr, intensityRight, buffer);
            const int bits = budget.channelBits(channels - channel, psychInfo[at].perceptualEntropy);
            Zor32s* const best = buffer + 2 * lines;
            const Attempt result = quantiser.run(side, factors, bits, best);
            for (int i = 0; i < lines; ++i)
                xr[i] = xr[i] < 0 ? -best[i] : best[i];
            std::copy(result.factors, result.factors + codedFactors, factors);
            sideInfo[at] = result.side;
            sideInfo[at].scalefacCompress = result.factorCode.compress;
            sideInfo[at].part23Length = result.factorCode.bits + result.cost.bits;
            countOneLen[at] = result.cost.countOneLen;
            hufSize[at] = result.cost.bits;
            budget.left -= sideInfo[at].part23Length;
        }
    }
    *reservoir = std::min(budget.left, budget.limit) & ~7; // main data begins with a whole byte
    return zorStsNoErr;
}
