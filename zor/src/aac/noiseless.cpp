// Noiseless decoding of an AAC channel, ISO/IEC 14496-3 4.4.2.1 individual_channel_stream.
#include "aac/bands.h"
#include "aac/huffman.h"
#include "aac/spectraldata.h"
#include "common/check.h"
#include "zorac/aacstream.h"

#include <algorithm>

namespace zor::aac {

namespace {

constexpr int noiseOffset = 90;
constexpr int reservedBook = 12;

struct Outputs {
    Zor16s* scaleFactor;
    Zor32s* spectrum;
    Zor8u* sfbCb;
    Zor8s* tnsCoef;
};

/** The pulses of a long window. */
struct Pulses {
    int count = 0;
    int startBand = 0;
    int offset[4]{};
    int amplitude[4]{};
};

/** Decodes one channel; each step returns a status and the first failure ends the decoding. */
class ChannelDecoder {
  public:
    ChannelDecoder(BitReader in, ZorAacChannel& channel, const Grouping& groups, const Outputs& out,
                   int maxOrder)
        : m_in(in), m_channel(channel), m_groups(groups), m_out(out), m_maxOrder(maxOrder) {}

    ZorStatus run(bool readsGain, bool scalable) {
        if (readsGain)
            m_channel.globalGain = static_cast<int>(m_in.read(8));
        m_channel.pulsePresent = 0;
        m_channel.tnsPresent = 0;
        std::fill_n(m_channel.tns.numFilt, 8, 0);
        ZorStatus status = sections();
        if (status == zorStsNoErr)
            status = scaleFactors();
        if (status == zorStsNoErr && !scalable)
            status = tools();
        if (status == zorStsNoErr)
            status = spectrum();
        return m_in.overrun() ? zorStsStreamEndErr : status;
    }

    [[nodiscard]] const BitReader& position() const { return m_in; }

  private:
    [[nodiscard]] bool isShort() const { return m_groups.winLen == shortLength; }
    [[nodiscard]] int groupCount() const { return static_cast<int>(m_groups.groupLen.size()); }

    ZorStatus sections() {
        for (int group = 0; group < groupCount(); ++group) {
            Zor8u* books = m_out.sfbCb + group * m_channel.maxSfb;
            for (int band = 0; band < m_channel.maxSfb;) {
                const auto book = static_cast<Zor8u>(m_in.read(4));
                const int length = sectionLength(m_channel.maxSfb - band);
                if (book == reservedBook || length < 0)
                    return zorStsBadStreamErr;
                if (m_in.overrun())
                    return zorStsStreamEndErr;
                std::fill_n(books + band, length, book);
                band += length;
            }
        }
        return zorStsNoErr;
    }

    /** Sums the increments of a section's length; -1 when they exceed the bands left. */
    int sectionLength(int most) {
        const int bits = isShort() ? 3 : 5;
        const int escape = (1 << bits) - 1;
        int length = 0;
        for (;;) {
            const auto increment = static_cast<int>(m_in.read(bits));
            length += increment;
            if (length > most)
                return -1;
            if (increment != escape)
                return length;
        }
    }

    int difference() {
        m_in.refill();
        const PrefixEntry& entry = BookTable::find(scaleFactorBook(), m_in.window());
        m_in.skip(entry.length);
        return entry.value;
    }

    ZorStatus scaleFactors() {
        int factor = m_channel.globalGain;
        int position = 0;
        int energy = m_channel.globalGain - noiseOffset;
        bool firstNoise = true;
        const int count = groupCount() * m_channel.maxSfb;
        for (int band = 0; band < count; ++band) {
            int value = 0;
            switch (m_out.sfbCb[band]) {
            case 0:
                break;
            case zorAacNoiseBook:
                energy += firstNoise ? static_cast<int>(m_in.read(9)) - 256 : difference();
                firstNoise = false;
                value = energy;
                break;
            case zorAacIntensityOutOfPhase:
            case zorAacIntensityInPhase:
                value = position += difference();
                break;
            default:
                value = factor += difference();
                if (value < 0 || value > 255)
                    return zorStsBadStreamErr;
            }
            m_out.scaleFactor[band] = static_cast<Zor16s>(value);
        }
        return zorStsNoErr;
    }

    ZorStatus tools() {
        ZorStatus status = zorStsNoErr;
        if (m_in.read(1) != 0)
            status = pulses();
        if (status == zorStsNoErr && m_in.read(1) != 0)
            status = filters();
        // Gain control belongs to the profile that is not served.
        if (status == zorStsNoErr && m_in.read(1) != 0)
            status = zorStsBadStreamErr;
        return status;
    }

    ZorStatus pulses() {
        m_channel.pulsePresent = 1;
        m_in.refill();
        m_pulses.count = static_cast<int>(m_in.get(2)) + 1;
        m_pulses.startBand = static_cast<int>(m_in.get(6));
        for (int i = 0; i < m_pulses.count; ++i) {
            m_pulses.offset[i] = static_cast<int>(m_in.get(5));
            m_pulses.amplitude[i] = static_cast<int>(m_in.get(4));
        }
        return isShort() || m_pulses.startBand >= m_groups.bands.count ? zorStsBadStreamErr : zorStsNoErr;
    }

    ZorStatus filters() {
        m_channel.tnsPresent = 1;
        ZorAacTns& tns = m_channel.tns;
        Zor8s* coef = m_out.tnsCoef;
        int filter = 0;
        const int windows = frameLength / m_groups.winLen;
        for (int window = 0; window < windows; ++window) {
            tns.numFilt[window] = static_cast<int>(m_in.read(isShort() ? 1 : 2));
            if (tns.numFilt[window] > 0)
                tns.coefRes[window] = static_cast<int>(m_in.get(1)) + 3;
            for (const int end = filter + tns.numFilt[window]; filter < end; ++filter)
                if (!readFilter(tns, filter, tns.coefRes[window], coef))
                    return zorStsBadStreamErr;
        }
        return zorStsNoErr;
    }

    /** Reads one filter and moves `coef` behind its coefficients; false when its order is too high. */
    bool readFilter(ZorAacTns& tns, int filter, int resolution, Zor8s*& coef) {
        m_in.refill();
        tns.regionLen[filter] = static_cast<int>(m_in.get(isShort() ? 4 : 6));
        tns.order[filter] = static_cast<int>(m_in.get(isShort() ? 3 : 5));
        tns.direction[filter] = 0;
        if (tns.order[filter] > m_maxOrder)
            return false;
        if (tns.order[filter] == 0)
            return true;
        tns.direction[filter] = static_cast<int>(m_in.get(1));
        const int bits = resolution - static_cast<int>(m_in.get(1));
        const int sign = 1 << (bits - 1);
        for (int i = 0; i < tns.order[filter]; ++i)
            *coef++ = static_cast<Zor8s>((static_cast<int>(m_in.read(bits)) ^ sign) - sign);
        return true;
    }

    ZorStatus spectrum() {
        Zor32s* lines = m_out.spectrum;
        const Zor8u* books = m_out.sfbCb;
        for (const int windows : m_groups.groupLen) {
            if (!groupLines(books, lines, windows))
                return zorStsBadStreamErr;
            books += m_channel.maxSfb;
            lines += windows * m_groups.winLen;
        }
        return m_pulses.count > 0 ? addPulses() : zorStsNoErr;
    }

    /** The lines of a group; neighbouring bands of one book in one go. */
    bool groupLines(const Zor8u* books, Zor32s* lines, int windows) {
        const std::uint16_t* offset = m_groups.bands.offset;
        for (int band = 0; band < m_channel.maxSfb;) {
            const int book = books[band];
            const int first = offset[band];
            do {
                ++band;
            } while (band < m_channel.maxSfb && books[band] == book);
            const int count = (offset[band] - first) * windows;
            Zor32s* start = lines + first * windows;
            if (book == 0 || book > escapeBook)
                std::fill_n(start, count, 0);
            else if (!decodeLines(m_in, book, start, count))
                return false;
        }
        std::fill(lines + offset[m_channel.maxSfb] * windows, lines + m_groups.winLen * windows, 0);
        return true;
    }

    ZorStatus addPulses() {
        int line = m_groups.bands.offset[m_pulses.startBand];
        for (int i = 0; i < m_pulses.count; ++i) {
            line += m_pulses.offset[i];
            if (line >= frameLength)
                return zorStsBadStreamErr;
            Zor32s& value = m_out.spectrum[line];
            value += value > 0 ? m_pulses.amplitude[i] : -m_pulses.amplitude[i];
        }
        return zorStsNoErr;
    }

    BitReader m_in;
    ZorAacChannel& m_channel;
    const Grouping& m_groups;
    Outputs m_out;
    int m_maxOrder;
    Pulses m_pulses;
};

int maxOrder(int profile, bool isShort) {
    if (isShort)
        return 7;
    return profile == zorAacMain ? 20 : 12;
}

ZorStatus decode(const Zor8u** stream, int* offset, const Zor8u* end, ZorAacChannel* channel,
                 const Outputs& out, int profile, int scaleFlag, bool readsGain = true) {
    if (anyNull(stream, offset, end, channel, out.scaleFactor, out.spectrum, out.sfbCb, out.tnsCoef) ||
        *stream == nullptr)
        return zorStsNullPtrErr;
    if (*offset < 0 || *offset > 7 || channel->winSequence < zorAacOnlyLong ||
        channel->winSequence > zorAacLongStop || scaleFlag < 0 || scaleFlag > 1 ||
        (!readsGain && (channel->globalGain < 0 || channel->globalGain > 255)) ||
        (profile != zorAacMain && profile != zorAacLC && profile != zorAacLTP))
        return zorStsBadArgErr;
    const bool isShort = channel->winSequence == zorAacEightShort;
    Grouping groups;
    if (const ZorStatus status =
            grouping(channel->numWinGrp, channel->winGrpLen, channel->maxSfb, channel->samplingRateIndex,
                     isShort ? shortLength : frameLength, groups);
        status != zorStsNoErr)
        return status;
    if (*stream > end)
        return zorStsStreamEndErr;
    ChannelDecoder decoder(BitReader(*stream, *offset, end), *channel, groups, out,
                           maxOrder(profile, isShort));
    const ZorStatus status = decoder.run(readsGain, scaleFlag == 1);
    if (status == zorStsNoErr)
        decoder.position().store(stream, offset);
    return status;
}

} // namespace

} // namespace zor::aac

extern "C" ZorStatus zorsNoiselessDecoder_LC_AAC(const Zor8u** bitStream, int* bitOffset,
                                                 const Zor8u* bitStreamEnd, ZorAacChannel* channel,
                                                 Zor16s* dstScaleFactor, Zor32s* dstSpectrum, Zor8u* dstSfbCb,
                                                 Zor8s* dstTnsCoef) {
    return zor::aac::decode(bitStream, bitOffset, bitStreamEnd, channel,
                            {dstScaleFactor, dstSpectrum, dstSfbCb, dstTnsCoef}, zorAacLC, 0);
}

extern "C" ZorStatus zorsNoiselessDecode_AAC(const Zor8u** bitStream, int* bitOffset,
                                             const Zor8u* bitStreamEnd, ZorAacChannel* channel,
                                             Zor16s* dstScaleFactor, Zor32s* dstSpectrum, Zor8u* dstSfbCb,
                                             Zor8s* dstTnsCoef, int profile, int scaleFlag) {
    return zor::aac::decode(bitStream, bitOffset, bitStreamEnd, channel,
                            {dstScaleFactor, dstSpectrum, dstSfbCb, dstTnsCoef}, profile, scaleFlag);
}

extern "C" ZorStatus zorsNoiselessDecodeBehindGain_AAC(const Zor8u** bitStream, int* bitOffset,
                                                       const Zor8u* bitStreamEnd, ZorAacChannel* channel,
                                                       Zor16s* dstScaleFactor, Zor32s* dstSpectrum,
                                                       Zor8u* dstSfbCb, Zor8s* dstTnsCoef, int profile,
                                                       int scaleFlag) {
    return zor::aac::decode(bitStream, bitOffset, bitStreamEnd, channel,
                            {dstScaleFactor, dstSpectrum, dstSfbCb, dstTnsCoef}, profile, scaleFlag, false);
}
