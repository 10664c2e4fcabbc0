// The test of mylibScale_32f_I: what one call is, over which lengths, on which data.
#include "zorcore.h"

#include "kv.h"
#include "mylib.h"

namespace {

kvVector s_data;
bxIterator<int> s_length(64, "Length", "number of samples");

class TimScale : public kvTest {
  public:
    using kvTest::kvTest;

    bool canStart() override {
        s_length.reset();
        for (const int length : {64, 256, 1024})
            s_length.add(length);
        regParm(s_length);
        return true;
    }

    bool initData() override {
        s_data.init(kv32f);
        return s_data.createVector(s_length.value(), smRandom, -1, 1);
    }

    bool flushData() override {
        s_data.deleteVector();
        return true;
    }

    double getDivisor() override { return s_length.value(); }
    bxString getUnit() override { return "e"; }
    double getFlops() override { return s_length.value(); }
};

int tcall_mylibScale_32f_I() {
    return mylibScale_32f_I(-1.0f, s_data.p32f, s_data.length());
}

KV_REG(TimScale, mylibScale_32f_I)

} // namespace
