/** \file
 * Joint stereo encoding: M/S and intensity stereo on the lines of the MDCT domain.
 */
#include "common/check.h"
#include "mp3/intensity.h"
#include "mp3/kernel_tables.h"
#include "mp3/scalefactor.h"

#include <cstdlib>

namespace zor::mp3 {
namespace {

/** Equally spaced lines of both channels. */
struct Band {
    Zor32s* left;
    Zor32s* right;
    int count;
    int stride;
};

Zor32s rounded(double value) {
    value = std::clamp(value, -2147483648.0, 2147483647.0);
    return static_cast<Zor32s>(value + (value < 0 ? -0.5 : 0.5));
}

void rotateBand(const Band& band) {
    for (int i = 0; i < band.count * band.stride; i += band.stride) {
        const double left = band.left[i], right = band.right[i];
        band.left[i] = rounded((left + right) / std::numbers::sqrt2);
        band.right[i] = rounded((left - right) / std::numbers::sqrt2);
    }
}

struct Energies {
    double left = 0, right = 0, sum = 0;
};

Energies energiesOf(const Band& band) {
    Energies energies;
    for (int i = 0; i < band.count * band.stride; i += band.stride) {
        const double left = band.left[i], right = band.right[i];
        energies.left += left * left;
        energies.right += right * right;
        energies.sum += (left + right) * (left + right);
    }
    return energies;
}

constexpr int largestLsfPosition = 14; /**< four bits hold it with the illegal position 15 */

/** The position whose balance is nearest to the ratio of the amplitudes. */
int positionFor(const Energies& energies, bool lsf, int intensityScale) {
    const double left = std::sqrt(energies.left), right = std::sqrt(energies.right);
    if (!lsf)
        return static_cast<int>(std::lrint(std::atan2(left, right) * 12 / std::numbers::pi));
    if (left == 0 && right == 0)
        return 0;
    // The weaker channel is 2^(-steps quarter/4) of the stronger.
    const double ratio = std::max(std::min(left, right) / std::max(left, right), 1e-10);
    const long steps = std::lrint(-4 * std::log2(ratio) / lsfQuarterSteps(intensityScale));
    if (steps == 0)
        return 0;
    return static_cast<int>(left < right ? std::min(2 * steps - 1, largestLsfPosition - 1L)
                                         : std::min<long>(2 * steps, largestLsfPosition));
}

/**
 * The left lines become the carrier, with such a gain that the decoded channels have the energy of the two
 * given; the right ones 0. The carrier is the sum of the channels, or the stronger one where they cancel.
 */
void encodeCarrier(const Band& band, const Energies& energies, Balance balance) {
    constexpr double cancelled = 1e-2;
    const double total = energies.left + energies.right;
    const bool useSum = energies.sum > cancelled * total;
    const double fromLeft = useSum || energies.left >= energies.right,
                 fromRight = useSum || energies.left < energies.right;
    const double carrier = useSum ? energies.sum : std::max(energies.left, energies.right);
    const double decoded = carrier * (balance.left * balance.left + balance.right * balance.right);
    const double gain = decoded > 0 ? std::sqrt(total / decoded) : 0;
    for (int i = 0; i < band.count * band.stride; i += band.stride) {
        band.left[i] = rounded(gain * (fromLeft * band.left[i] + fromRight * band.right[i]));
        band.right[i] = 0;
    }
}

class JointEncoder {
  public:
    JointEncoder(Zor32s* left, Zor32s* right, Zor8s* factors, const ZorMP3FrameHeader& header,
                 const ZorMP3SideInfo* side)
        : m_left(left), m_right(right), m_factors(factors), m_layout(bandTablesOf(header), header, side[0]),
          m_lsf(header.id == 0), m_ms(usesMs(header)), m_scale(side[1].scalefacCompress & 1) {}

    void longBandsFrom(int bound) {
        for (int band = 0; band < m_layout.longs; ++band) {
            const int begin = m_layout.longBoundary[band], end = m_layout.longBoundary[band + 1];
            encode({m_left + begin, m_right + begin, end - begin, 1},
                   m_factors + std::min(band, longBands - 2), {band, bound, longBands - 1});
        }
    }

    void shortBandsFrom(int window, int bound) {
        for (int band = m_layout.firstShort; band < shortBands; ++band) {
            const int begin = 3 * m_layout.shortBoundary[band] + window;
            encode({m_left + begin, m_right + begin, m_layout.shortWidth(band), 3},
                   m_factors + m_layout.shortFactor(std::min(band, shortBands - 2)) + window,
                   {band, bound, shortBands - 1});
        }
    }

  private:
    /** The highest band has no factor of its own: it shares the position of the one below, if that has one.
     */
    struct Place {
        int band, bound, highest;
        bool intensity() const { return band >= bound && bound < highest; }
        bool hasFactor() const { return band < highest; }
    };

    void encode(const Band& band, Zor8s* factor, const Place& place) {
        if (!place.intensity()) {
            if (m_ms)
                rotateBand(band);
            return;
        }
        const Energies energies = energiesOf(band);
        if (place.hasFactor())
            *factor = static_cast<Zor8s>(positionFor(energies, m_lsf, m_scale));
        encodeCarrier(band, energies, m_lsf ? lsfBalance(*factor, m_scale) : mpeg1Balance(*factor));
    }

    Zor32s* m_left;
    Zor32s* m_right;
    Zor8s* m_factors;
    BandLayout m_layout;
    bool m_lsf;
    bool m_ms;
    int m_scale;
};

bool isBounds(const int* bounds, bool isShortBlock) {
    for (int i = 0; i < (isShortBlock ? 3 : 1); ++i)
        if (bounds[i] < 0 || bounds[i] > (isShortBlock ? shortBands : longBands))
            return false;
    return true;
}

} // namespace
} // namespace zor::mp3

extern "C" ZorStatus zorsJointStereoEncode_MP3_32s_I(Zor32s* srcDstL, Zor32s* srcDstR, Zor8s* scaleFactorR,
                                                     const ZorMP3FrameHeader* frameHeader,
                                                     const ZorMP3SideInfo* sideInfo, const int* isSfbBound) {
    using namespace zor::mp3;
    if (zor::anyNull(srcDstL, srcDstR) || zor::anyNull(scaleFactorR) || zor::anyNull(frameHeader) ||
        zor::anyNull(sideInfo) || zor::anyNull(isSfbBound))
        return zorStsNullPtrErr;
    const bool inShorts = isShort(sideInfo[0]);
    if (!isHeader(*frameHeader) || inShorts != isShort(sideInfo[1]) || !isBounds(isSfbBound, inShorts))
        return zorStsBadArgErr;
    if (!usesIntensity(*frameHeader)) {
        if (usesMs(*frameHeader))
            zor::kernels<QuantKernels>().rotate(srcDstL, srcDstR, lines);
        return zorStsNoErr;
    }
    JointEncoder encoder(srcDstL, srcDstR, scaleFactorR, *frameHeader, sideInfo);
    const bool all = isSfbBound[0] == 0 && isSfbBound[1] == 0 && isSfbBound[2] == 0;
    encoder.longBandsFrom(!inShorts || all ? isSfbBound[0] : longBands);
    if (inShorts)
        for (int window = 0; window < 3; ++window)
            encoder.shortBandsFrom(window, isSfbBound[window]);
    return zorStsNoErr;
}
