// Applying scale factors band by band.
#include "zorcore.h"

#include "scalarloop.h"
#include "suitedata.h"
#include "zors.h"

#include <algorithm>
#include <cstdlib>

namespace {

kvVector s_data, s_factors;
int* s_bandEnd;
int s_numBands;

kvScaleIterator s_scale;
bxStepIterator<int> s_maxValue(0, "", ""), s_bands(0, "", "");

class TimApply : public ScalarLoopTest {
  public:
    using ScalarLoopTest::ScalarLoopTest;

    bool canStart() override {
        setRangeParm(s_maxValue, "Max value of scale factor", "end of the last band", 50, 100, '+', 25);
        setRangeParm(s_bands, "number of bands", "number of bands", 5, 10, '+', 1);
        regParm(s_maxValue);
        regParm(s_bands);
        regScale(s_scale);
        return true;
    }

    bool flushData() override {
        s_data.deleteVector();
        s_factors.deleteVector();
        std::free(s_bandEnd);
        s_bandEnd = nullptr;
        return true;
    }

    double getDivisor() override { return s_maxValue.value(); }

  protected:
    bool createData() override {
        s_numBands = s_bands.value();
        return makeVector(s_data, kv32f, s_maxValue.value()) && makeVector(s_factors, kv32f, s_numBands, 1) &&
               fill();
    }

  private:
    static bool fill() {
        s_factors.setVector(smConst, 1, 0);
        s_bandEnd = static_cast<int*>(std::malloc(static_cast<std::size_t>(s_numBands) * sizeof(int)));
        if (!s_bandEnd)
            return false;
        std::srand(1);
        std::generate_n(s_bandEnd, s_numBands, [] { return std::rand() % s_maxValue.value(); });
        std::sort(s_bandEnd, s_bandEnd + s_numBands);
        s_bandEnd[s_numBands - 1] = s_maxValue.value();
        return true;
    }
};

int tcall_zorsScale_32f_I() {
    return zorsScale_32f_I(s_data.p32f, s_factors.p32f, s_bandEnd, s_numBands);
}

KV_REG(TimApply, zorsScale_32f_I)

} // namespace
