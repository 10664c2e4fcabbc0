// Data-stream and fill elements of AAC.
#include "zorcore.h"

#include "aacstream.h"
#include "bitposition.h"
#include "suiteparms.h"
#include "suitetest.h"
#include "zorac.h"

#include <algorithm>

namespace {

kvBitVector s_stream;
kvVector s_bytes;
BitPosition<const Zor8u> s_position;
int s_tag;
int s_dataCount; // what the function returns

bxStepIterator<int> s_count(1, "", "");

class TimacAACDecodeElt : public PerElementTest {
  public:
    using PerElementTest::PerElementTest;

    bool canStart() override {
        m_fill = name.find("Fill") >= 0;
        setRangeParm(s_count, "count", "bytes of the element", 1, m_fill ? aacMaxFill : 512, '*', 2);
        regParm(s_count);
        return true;
    }

    bool initData() override {
        const int count = s_count.value();
        if (!within({{s_count, 1, 512}}) || !makeFirst(s_stream, kv8u, count + 32) ||
            !make(s_bytes, kv8u, count))
            return false;
        s_stream.setConst(0, 0);
        s_stream.setBitPos(0);
        m_divisor = s_dataCount = std::min(count, m_fill ? aacMaxFill : aacMaxData);
        if (m_fill)
            putFillHead(s_stream, s_dataCount);
        else
            putDataHead(s_stream, s_dataCount);
        s_position.attach(s_stream);
        return true;
    }

    /** A call behind the element, as -S makes one, finds no bytes. */
    double getDivisor() override { return s_dataCount > 0 ? s_dataCount : m_divisor; }

  private:
    bool m_fill = false;
};

int tcall_zorsDecodeDatStrElt_AAC() {
    return zorsDecodeDatStrElt_AAC(&s_position.bytes, &s_position.offset, s_position.end, &s_tag,
                                   &s_dataCount, s_bytes.p8u, s_bytes.length());
}

int tinit_zorsDecodeDatStrElt_AAC() {
    s_position.rewind();
    return 0;
}

int tcall_zorsDecodeFillElt_AAC() {
    return zorsDecodeFillElt_AAC(&s_position.bytes, &s_position.offset, s_position.end, &s_dataCount,
                                 s_bytes.p8u, s_bytes.length());
}

int tinit_zorsDecodeFillElt_AAC() {
    s_position.rewind();
    return 0;
}

KV_REG_I(TimacAACDecodeElt, zorsDecodeDatStrElt_AAC)
KV_REG_I(TimacAACDecodeElt, zorsDecodeFillElt_AAC)

} // namespace
