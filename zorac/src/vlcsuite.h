/** \file
 * What the VLC tests of AAC and MP3 share: parameters, the block of values, the stream and the coder's
 * states.
 */
#ifndef VLCSUITE_H
#define VLCSUITE_H

#include "bitposition.h"
#include "suiteparms.h"
#include "suitetest.h"
#include "zordc.h"

#include <cstdlib>

/** Which magnitudes a block has. */
enum EscapeMode { noEscape, halfEscape, onlyEscape };

/** The parameters of a VLC test. */
struct VlcParms {
    bxStepIterator<int> len{36, "", ""};
    bxMapIterator<int> escapeMode{noEscape, "", ""};
    bxIterator<int> tableSize{0, "", ""};

    /** The stream has 32 bytes for a pair. */
    bool sound(SuiteTest& test) const {
        constexpr int most = 1 << 20;
        return test.within({{len, 1, most}, {tableSize, records, records}});
    }

    void init(kvTest& test, bool count, int tableRecords) {
        records = tableRecords;
        setRangeParm(len, "len", "pairs of values", 36, count ? 36 : 576, '*', 2);
        setMapParm<int>(escapeMode, "escapeMode", "escapes among the values",
                        {{noEscape, "no_escape"}, {halfEscape, "half_escape"}, {onlyEscape, "escape"}},
                        {noEscape, halfEscape, onlyEscape});
        setParm(tableSize, "tableSize", "records of the table", {records});
        test.regParm(len);
        test.regParm(escapeMode);
        test.regParm(tableSize);
    }

    int records = 0;
};

/** Fills a block with magnitudes of the escape mode's range and random signs. */
inline void fillEscapeBlock(kvVector& block, int escapeMode, int maxValue) {
    const int low = escapeMode == onlyEscape ? maxValue + 1 : 0;
    const int high = escapeMode == noEscape ? maxValue : 2 * maxValue;
    for (int i = 0; i < block.length(); ++i) {
        const int value = std::rand() % (high - low + 1) + low;
        block.p16s[i] = static_cast<Zor16s>(std::rand() % 2 != 0 ? -value : value);
    }
}

/** Vectors and states of one combination. */
struct VlcData {
    kvVector block;
    kvBitVector stream;
    BitPosition<Zor8u> position;           /**< of the encoder */
    BitPosition<const Zor8u> readPosition; /**< of the decoder */
    Zor32s countBits = 0;
    ZorVLCEncodeState_32s* encoder = nullptr;
    ZorVLCDecodeState_32s* decoder = nullptr;

    bool create(SuiteTest& test, int len, int escapeMode, int maxValue) {
        if (!test.makeFirst(block, kv16s, 2 * len) || !test.make(stream, kv8u, 32 * len))
            return false;
        fillEscapeBlock(block, escapeMode, maxValue);
        stream.setBitPos(0);
        position.attach(stream);
        readPosition.attach(stream);
        return true;
    }

    /** Builds the encoder from the table selected; false when the library refuses it. */
    bool createEncoder(const kvacVLCTable& table) {
        return kvTest::checkStatus(zorsVLCEncodeInitAlloc_32s(table.table(), table.size(), &encoder),
                                   "zorsVLCEncodeInitAlloc_32s") != FUNCFAIL;
    }

    bool createDecoder(const kvacVLCTable& table) {
        return kvTest::checkStatus(zorsVLCDecodeInitAlloc_32s(table.table(), table.size(), &decoder),
                                   "zorsVLCDecodeInitAlloc_32s") != FUNCFAIL;
    }

    void freeStates() {
        if (encoder)
            zorsVLCEncodeFree_32s(encoder);
        if (decoder)
            zorsVLCDecodeFree_32s(decoder);
        encoder = nullptr;
        decoder = nullptr;
    }
};

#endif
