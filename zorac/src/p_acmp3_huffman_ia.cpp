// Huffman coding of MP3.
#include "zorcore.h"

#include "bitposition.h"
#include "mp3suite.h"
#include "tables/kvsfb_mp3.h"
#include "zorac.h"

namespace {

constexpr int streamBytes = 2304;
constexpr int countOneLen = 0;
constexpr int huffmanSize = 0;
constexpr Zor16s mixedBands[2] = {6, 8}; // by id

kvVector s_values;
kvBitVector s_stream;
BitPosition<Zor8u> s_write;
BitPosition<const Zor8u> s_read;
ZorMP3FrameHeader s_header;
ZorMP3SideInfo s_sideInfo;
int s_nonZeroBound;

acIdItr s_id;
acBlockItr s_block;
bxStepIterator<int> s_huffmanLen(36, "", "");
bxMapIterator<int> s_escTable(0, "", "");

int tcall_zorsHuffmanEncode_MP3_32s1u() {
    return zorsHuffmanEncode_MP3_32s1u(s_values.p32s, &s_write.bytes, &s_write.offset, s_write.end, &s_header,
                                       &s_sideInfo, countOneLen, huffmanSize);
}

int tinit_zorsHuffmanEncode_MP3_32s1u() {
    s_write.rewind();
    return 0;
}

int tcall_zorsHuffmanDecode_MP3_1u32s() {
    return zorsHuffmanDecode_MP3_1u32s(&s_read.bytes, &s_read.offset, s_read.end, s_values.p32s,
                                       &s_nonZeroBound, &s_header, &s_sideInfo, countOneLen, huffmanSize);
}

int tinit_zorsHuffmanDecode_MP3_1u32s() {
    s_read.rewind();
    return 0;
}

int tcall_zorsHuffmanDecodeSfb_MP3_1u32s() {
    return zorsHuffmanDecodeSfb_MP3_1u32s(&s_read.bytes, &s_read.offset, s_read.end, s_values.p32s,
                                          &s_nonZeroBound, &s_header, &s_sideInfo, kvacSfbTableLong,
                                          kvacSfbTableShort, countOneLen, huffmanSize);
}

int tinit_zorsHuffmanDecodeSfb_MP3_1u32s() {
    s_read.rewind();
    return 0;
}

int tcall_zorsHuffmanDecodeSfbMbp_MP3_1u32s() {
    return zorsHuffmanDecodeSfbMbp_MP3_1u32s(&s_read.bytes, &s_read.offset, s_read.end, s_values.p32s,
                                             &s_nonZeroBound, &s_header, &s_sideInfo, kvacSfbTableLong,
                                             kvacSfbTableShort, mixedBands, countOneLen, huffmanSize);
}

int tinit_zorsHuffmanDecodeSfbMbp_MP3_1u32s() {
    s_read.rewind();
    return 0;
}

class TimacHufEnc : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        m_decode = name.find("Decode") >= 0;
        s_id.init({acIdMpeg1});
        s_block.init({acBlockLong});
        setRangeParm(s_huffmanLen, "huffmanLen", "lines of the big values", 36, mp3Lines, '*', 2);
        setMapParm<int>(s_escTable, "escTable", "tables with or without escapes", {{0, "noESC"}, {1, "ESC"}},
                        {0, 1});
        regParm(s_id);
        regParm(s_block);
        regParm(s_huffmanLen);
        regParm(s_escTable);
        return true;
    }

    bool initData() override {
        m_divisor = s_huffmanLen.value();
        if (!within({{s_huffmanLen, 1, mp3Lines}}) || !make(s_values, kv32s, mp3Lines) ||
            !make(s_stream, kv8u, streamBytes))
            return false;
        s_values.setRandom(0, 7);
        s_stream.setBitPos(0);
        s_write.attach(s_stream);
        s_read.attach(s_stream);
        s_header = mp3Header(s_id.value());
        s_sideInfo = mp3SideInfo(s_block.value());
        s_sideInfo.bigValues = m_divisor / 2;
        for (int& table : s_sideInfo.tableSelect)
            table = s_escTable.value() != 0 ? 20 : 10;
        return !m_decode ||
               !bxIsFailure(checkStatus(tcall_zorsHuffmanEncode_MP3_32s1u(), "zorsHuffmanEncode_MP3_32s1u"));
    }

  private:
    bool m_decode = false;
};

KV_REG_I(TimacHufEnc, zorsHuffmanEncode_MP3_32s1u)
KV_REG_I(TimacHufEnc, zorsHuffmanDecode_MP3_1u32s)
KV_REG_I(TimacHufEnc, zorsHuffmanDecodeSfb_MP3_1u32s)
KV_REG_I(TimacHufEnc, zorsHuffmanDecodeSfbMbp_MP3_1u32s)

} // namespace
