// Unpacking of the side information of MP3.
#include "zorcore.h"

#include "bitposition.h"
#include "mp3suite.h"
#include "zorac.h"

namespace {

constexpr int streamBytes = 1024;

kvBitVector s_stream;
BitPosition<const Zor8u> s_position;
ZorMP3FrameHeader s_header;
ZorMP3SideInfo s_sideInfo[4];
int s_mainDataBegin;
int s_privateBits;
int s_scfsi[8];

acIdItr s_id;
bxMapIterator<int> s_mode(0, "", "");

class Timm3UnpackSI : public DivisorCellTest {
  public:
    using DivisorCellTest::DivisorCellTest;

    bool canStart() override {
        s_id.init({acIdMpeg1, acIdMpeg2});
        setMapParm<int>(s_mode, "mode", "channel mode", {{0, "stereo"}, {3, "mono"}}, {0, 3});
        regParm(s_id);
        regParm(s_mode);
        return true;
    }

    bool initData() override {
        if (!makeFirst(s_stream, kv8u, streamBytes))
            return false;
        s_stream.setConst(255, 0);
        s_stream.setBitPos(0);
        s_position.attach(s_stream);
        s_header = mp3Header(s_id.value(), s_mode.value() << 4);
        return true;
    }
};

int tcall_zorsUnpackSideInfo_MP3() {
    return zorsUnpackSideInfo_MP3(&s_position.bytes, &s_position.offset, s_position.end, s_sideInfo,
                                  &s_mainDataBegin, &s_privateBits, s_scfsi, &s_header);
}

int tinit_zorsUnpackSideInfo_MP3() {
    s_position.rewind();
    return 0;
}

KV_REG_I(Timm3UnpackSI, zorsUnpackSideInfo_MP3)

} // namespace
