// Unpacking of the frame header of MP3.
#include "zorcore.h"

#include "mp3suite.h"
#include "zorac.h"

namespace {

constexpr Zor8u headerWord[4] = {0xFF, 0xFF, 0xFF, 0xFF};

const Zor8u* s_stream;
ZorMP3FrameHeader s_header;

class Timm3UnpackFH : public DivisorCellTest {
  public:
    using DivisorCellTest::DivisorCellTest;
};

int tcall_zorsUnpackFrameHeader_MP3() {
    return zorsUnpackFrameHeader_MP3(&s_stream, headerWord + sizeof headerWord, &s_header);
}

int tinit_zorsUnpackFrameHeader_MP3() {
    s_stream = headerWord;
    return 0;
}

KV_REG_I(Timm3UnpackFH, zorsUnpackFrameHeader_MP3)

} // namespace
