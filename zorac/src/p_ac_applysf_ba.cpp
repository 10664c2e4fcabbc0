// Applying scale factors band by band.
#include "zorcore.h"

#include "scalarloop.h"
#include "zors.h"

#include <algorithm>
#include <climits>
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
        std::free(s_bandEnd);
        s_bandEnd = nullptr;
        return ScalarLoopTest::flushData();
    }

  protected:
    bool createData() override {
        m_divisor = s_maxValue.value();
        s_numBands = s_bands.value();
        return within({{s_maxValue, 1, INT_MAX}, {s_bands, 1, INT_MAX}}) &&
               makeFirst(s_data, kv32f, m_divisor) && make(s_factors, kv32f, s_numBands) && fill();
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
