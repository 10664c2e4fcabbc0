// The escape VLC coder with the tables of MP3.
#include "zorcore.h"

#include "vlcsuite.h"
#include "zordc.h"

namespace {

constexpr int linBits = 4; // the largest magnitude of a block is twice that of the table: 30

VlcParms s_parms;
VlcData s_data;
kvacVLCTable s_table;
int s_len; // values of the block

int tcall_zorsVLCEncodeEscBlock_MP3_16s1u() {
    return zorsVLCEncodeEscBlock_MP3_16s1u(s_data.block.p16s, s_len, linBits, &s_data.position.bytes,
                                           &s_data.position.offset, s_data.position.end, s_data.encoder);
}

int tinit_zorsVLCEncodeEscBlock_MP3_16s1u() {
    s_data.position.rewind();
    return 0;
}

int tcall_zorsVLCCountEscBits_MP3_16s32s() {
    return zorsVLCCountEscBits_MP3_16s32s(s_data.block.p16s, s_len, linBits, &s_data.countBits,
                                          s_data.encoder);
}

int tinit_zorsVLCCountEscBits_MP3_16s32s() {
    s_data.position.rewind();
    return 0;
}

int tcall_zorsVLCDecodeEscBlock_MP3_1u16s() {
    return zorsVLCDecodeEscBlock_MP3_1u16s(&s_data.readPosition.bytes, &s_data.readPosition.offset,
                                           s_data.readPosition.end, s_data.block.p16s, s_len, linBits,
                                           s_data.decoder);
}

int tinit_zorsVLCDecodeEscBlock_MP3_1u16s() {
    s_data.readPosition.rewind();
    return 0;
}

class TimacVLC_MP3 : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        m_decode = name.find("Decode") >= 0;
        m_count = name.find("Count") >= 0;
        s_parms.init(*this, m_count, s_table.getTableSize_MP3());
        return true;
    }

    bool initData() override {
        if (!s_parms.sound(*this))
            return false;
        const int len = s_parms.len.value();
        s_len = 2 * len;
        m_divisor = m_count ? len : s_table.getTableSize_MP3();
        s_table.setTableEncode_MP3();
        if (!s_data.create(*this, len, s_parms.escapeMode.value(), s_table.maxValue()) ||
            !s_data.createEncoder(s_table) ||
            checkStatus(tcall_zorsVLCEncodeEscBlock_MP3_16s1u(), "zorsVLCEncodeEscBlock_MP3_16s1u") ==
                FUNCFAIL)
            return false;
        s_data.position.rewind();
        if (!m_decode)
            return true;
        s_table.setTableDecode_MP3();
        return s_data.createDecoder(s_table);
    }

    bool flushData() override {
        s_data.freeStates();
        return PerElementTest::flushData();
    }

  private:
    bool m_decode = false;
    bool m_count = false;
};

KV_REG_I(TimacVLC_MP3, zorsVLCEncodeEscBlock_MP3_16s1u)
KV_REG_I(TimacVLC_MP3, zorsVLCCountEscBits_MP3_16s32s)
KV_REG_I(TimacVLC_MP3, zorsVLCDecodeEscBlock_MP3_1u16s)

} // namespace
