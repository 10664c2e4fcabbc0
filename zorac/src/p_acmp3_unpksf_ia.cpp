// Unpacking of the scale factors of MP3.
#include "zorcore.h"

#include "bitposition.h"
#include "mp3suite.h"
#include "zorac.h"

namespace {

constexpr int streamBytes = 1024;
constexpr int scaleFactors = 36;
constexpr int scalefacCompress = 15; // lengths 4 and 3 in MPEG-1; 0, 0, 3 and 3 in MPEG-2
constexpr int granule = 0;
constexpr int channel = 0;
constexpr int scfsi[4] = {0, 0, 0, 0};

kvBitVector s_stream;
kvVector s_dst;
BitPosition<const Zor8u> s_position;
ZorMP3FrameHeader s_header;
ZorMP3SideInfo s_sideInfo;

acIdItr s_id;
bxMapIterator<int> s_blockType(acBlockLong, "", "");

class Timm3UnpackSF : public DivisorCellTest {
  public:
    using DivisorCellTest::DivisorCellTest;

    bool canStart() override {
        s_id.init({acIdMpeg1, acIdMpeg2});
        setMapParm<int>(s_blockType, "blockType", "block type",
                        {{acBlockLong, "long"}, {acBlockShort, "short"}, {acBlockMixed, "mixed"}},
                        {acBlockLong, acBlockShort, acBlockMixed});
        regParm(s_id);
        regParm(s_blockType);
        return true;
    }

    bool initData() override {
        if (!makeFirst(s_stream, kv8u, streamBytes) || !make(s_dst, kv8s, scaleFactors))
            return false;
        s_stream.setConst(255, 0);
        s_stream.setBitPos(0);
        s_position.attach(s_stream);
        s_header = mp3Header(s_id.value());
        s_sideInfo = mp3SideInfo(s_blockType.value());
        s_sideInfo.scalefacCompress = scalefacCompress;
        return true;
    }
};

int tcall_zorsUnpackScaleFactors_MP3_1u8s() {
    return zorsUnpackScaleFactors_MP3_1u8s(&s_position.bytes, &s_position.offset, s_position.end, s_dst.p8s,
                                           &s_sideInfo, scfsi, &s_header, granule, channel);
}

int tinit_zorsUnpackScaleFactors_MP3_1u8s() {
    s_position.rewind();
    return 0;
}

KV_REG_I(Timm3UnpackSF, zorsUnpackScaleFactors_MP3_1u8s)

} // namespace
