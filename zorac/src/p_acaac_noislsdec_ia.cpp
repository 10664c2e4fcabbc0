// Noiseless decoding of AAC.
#include "zorcore.h"

#include "aacparms.h"
#include "aacstream.h"
#include "bitposition.h"
#include "suitetest.h"
#include "zorac.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int streamBytes = 3072;
constexpr int tnsCoefs = 60;
constexpr int globalGain = 100;
constexpr int maxGroups = 8;
constexpr int maxBands = 41;

enum Tuple { tuple2 = 2, tuple4 = 4, tupleEscape = 11 };

constexpr int longOffsets[] = {0,   4,   8,   12,  16,  20,  24,  28,  32,  36,  40,  44,  48,  52,
                               56,  64,  72,  80,  88,  96,  108, 120, 132, 144, 156, 172, 188, 212,
                               240, 276, 320, 384, 448, 512, 576, 640, 704, 768, 832, 896, 960, 1024};
constexpr int shortOffsets[] = {0, 4, 8, 12, 16, 20, 24, 32, 40, 48, 64, 92, 128};

/** The code word that all lines of a book's sections get. */
struct CodeWord {
    unsigned code;
    int length;
};
constexpr CodeWord codeWords[] = {{0, 0},  {109, 7}, {46, 6}, {495, 9},  {243, 8}, {2028, 11},
                                  {37, 6}, {494, 9}, {49, 6}, {989, 10}, {477, 9}, {4, 5}};
constexpr const char* escapeText = "1111011111111";

kvVector s_scaleFactors, s_spectrum, s_sfbCb, s_tnsCoefs;
kvBitVector s_stream;
BitPosition<const Zor8u> s_position;
ZorAacChannel s_channel;

aacWinSeqItr s_winSequence;
bxIterator<int> s_sectLen(1, "", "");
bxMapIterator<int> s_tuple(tuple4, "", "");

constexpr bool isUnsigned(int book) {
    return book == 3 || book == 4 || book >= 7;
}

int drawBook(int tuple) {
    switch (tuple) {
    case tuple4:
        return std::rand() % 4 + 1;
    case tuple2:
        return std::rand() % 6 + 5;
    default:
        return 11;
    }
}

/** Writes one channel stream: every band in sections of `sectLen` bands with a book of the tuple's kind. */
class ChannelWriter {
  public:
    ChannelWriter(kvBitVector& stream, const AacFrame& frame)
        : m_stream(stream), m_frame(frame), m_offsets(frame.windows > 1 ? shortOffsets : longOffsets) {}

    void write(int sectLen, int tuple) {
        m_stream.setBits(static_cast<unsigned>(globalGain), 8);
        for (int group = 0; group < m_frame.windows; ++group)
            writeSections(group, sectLen, tuple);
        for (int band = 0; band < m_frame.windows * m_frame.maxSfb; ++band)
            m_stream.setBits(0U, 1); // the same scale factor
        m_stream.setBits(0U, 3);     // no pulses, filters or gain control
        for (int group = 0; group < m_frame.windows; ++group)
            for (int band = 0; band < m_frame.maxSfb; ++band)
                writeLines(m_books[group][band], m_offsets[band + 1] - m_offsets[band]);
    }

  private:
    void writeSections(int group, int sectLen, int tuple) {
        for (int band = 0; band < m_frame.maxSfb; band += sectLen) {
            const int length = std::min(sectLen, m_frame.maxSfb - band);
            const int book = drawBook(tuple);
            std::fill_n(m_books[group] + band, length, book);
            m_stream.setBits(static_cast<unsigned>(book), 4);
            putSectionLength(m_stream, length, m_frame.windows > 1 ? 3 : 5);
        }
    }

    void writeLines(int book, int lines) {
        for (int line = 0; line < lines; line += book <= 4 ? 4 : 2) {
            m_stream.setBits(codeWords[book].code, codeWords[book].length);
            if (isUnsigned(book))
                m_stream.setBits(0U, 2);
            if (book == 11) {
                m_stream.setBits(escapeText);
                m_stream.setBits(escapeText);
            }
        }
    }

    kvBitVector& m_stream;
    AacFrame m_frame;
    const int* m_offsets;
    int m_books[maxGroups][maxBands]{};
};

class TimacAACNoiselessDec : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        s_winSequence.init({aacWinShort, aacWinLong});
        setParm(s_sectLen, "sectLen", "bands of a section", {1, 4, 12, 41});
        setMapParm<int>(s_tuple, "tuple", "kind of code books",
                        {{tuple2, "2tuple"}, {tuple4, "4tuple"}, {tupleEscape, "escape"}},
                        {tuple4, tuple2, tupleEscape});
        regParm(s_winSequence);
        regParm(s_sectLen);
        regParm(s_tuple);
        return true;
    }

    bool initData() override {
        const AacFrame frame = aacFrame(s_winSequence.value());
        const int sectLen = s_sectLen.value();
        const bool escape = s_tuple.value() == tupleEscape;
        if (!within({{s_sectLen, 1, maxBands},
                     {s_sectLen, 1, frame.maxSfb, INFO},
                     {s_sectLen, escape ? frame.maxSfb : 1, frame.maxSfb, INFO}}))
            return false;
        m_divisor = frame.lines();
        const int bands = frame.windows * frame.maxSfb;
        if (!makeFirst(s_scaleFactors, kv16s, bands) || !make(s_spectrum, kv32s, m_divisor) ||
            !make(s_sfbCb, kv8u, bands) || !make(s_tnsCoefs, kv8s, tnsCoefs) ||
            !make(s_stream, kv8u, streamBytes))
            return false;
        s_stream.setConst(0, 0);
        s_channel = {};
        s_channel.winSequence = s_winSequence.value();
        s_channel.maxSfb = frame.maxSfb;
        s_channel.numWinGrp = frame.windows;
        std::fill_n(s_channel.winGrpLen, frame.windows, 1);
        s_channel.samplingRateIndex = aacSamplingRate;
        s_stream.setBitPos(0);
        ChannelWriter(s_stream, frame).write(sectLen, s_tuple.value());
        s_position.attach(s_stream);
        return true;
    }
};

int tcall_zorsNoiselessDecoder_LC_AAC() {
    return zorsNoiselessDecoder_LC_AAC(&s_position.bytes, &s_position.offset, s_position.end, &s_channel,
                                       s_scaleFactors.p16s, s_spectrum.p32s, s_sfbCb.p8u, s_tnsCoefs.p8s);
}

int tinit_zorsNoiselessDecoder_LC_AAC() {
    s_position.rewind();
    return 0;
}

int tcall_zorsNoiselessDecode_AAC() {
    return zorsNoiselessDecode_AAC(&s_position.bytes, &s_position.offset, s_position.end, &s_channel,
                                   s_scaleFactors.p16s, s_spectrum.p32s, s_sfbCb.p8u, s_tnsCoefs.p8s,
                                   zorAacLTP, 0);
}

int tinit_zorsNoiselessDecode_AAC() {
    s_position.rewind();
    return 0;
}

KV_REG_I(TimacAACNoiselessDec, zorsNoiselessDecoder_LC_AAC)
KV_REG_I(TimacAACNoiselessDec, zorsNoiselessDecode_AAC)

} // namespace
