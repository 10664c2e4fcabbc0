// The program of the command-line tests: a handful of tests whose clocks are not measured but computed, so
// that listings and tables are the same in every run.
#include "zorcore.h"

#include "kv.h"

namespace {

// ---- Timing functions with a fixed price for each call ----

int s_callClocks = 100;
ZorStatus s_status = 0;

bxResult pricedLoop(int count, long long* clocks) {
    *clocks = static_cast<long long>(count) * s_callClocks;
    return kvTest::checkStatus(s_status, "zorsPriced");
}

bxResult pricedStat(int* calls, long long* clocks) {
    const long long reached = (*clocks + s_callClocks - 1) / s_callClocks;
    *calls = static_cast<int>(reached > *calls ? reached : *calls);
    *clocks = static_cast<long long>(*calls) * s_callClocks;
    return kvTest::checkStatus(s_status, "zorsPriced");
}

/** A real call, for what the engine times itself. */
int realCall() {
    static volatile unsigned sum = 0;
    for (unsigned i = 0; i < 1000; ++i)
        sum = sum + i;
    return 0;
}

// ---- Parameters: one of each kind ----

/** A parameter with its table of names or list of values. */
template <class Parameter, class Fill>
Parameter* filled(Parameter* parameter, Fill fill) {
    fill(*parameter);
    return parameter;
}

bxDefault<int> s_offset(0, "Offset", "Offset of the data");
bxIterator<int>& s_len = *filled(new bxIterator<int>(16, "Len", ""), [](auto& len) {
    len.add(16);
    len.add(64);
});
bxStepIterator<int>& s_range =
    *filled(new bxStepIterator<int>(8, "Range", ""), [](auto& range) { range.setRange(8, 32, '*', 2); });
bxEnumIterator<int>& s_order = *filled(new bxEnumIterator<int>(3, "Order", ""), [](auto& order) {
    order.add(3);
    order.initValidation();
    order.addValidation(5);
});
bxMapIterator<int>& s_window = *filled(new bxMapIterator<int>(0, "Window", ""), [](auto& window) {
    window[0] = "long";
    window[1] = "short";
    window.add(0);
    window.add(1);
});
bxMapDefault<bool>& s_inverse =
    *filled(new bxMapDefault<bool>(false, "Inverse", "Inverse transform"), [](auto& map) {
        map[false] = "no";
        map[true] = "yes";
    });
bxIterator<int>& s_scale = *filled(new bxIterator<int>(1, "Scale", ""), [](auto& scale) {
    scale.add(1);
    scale.add(2);
    scale.addDeprecated(2, "old");
});

// ---- Tests ----

class TimPriced : public kvTest {
  public:
    explicit TimPriced(const char* function, const char* testName)
        : kvTest(pricedLoop, pricedStat, function, __FILE__, testName) {}
    double getDivisor() override { return s_len.value(); }
    bxString getUnit() override { return "e"; }
};

/** Two lengths; knows the common parameter. */
class TimCopy : public TimPriced {
  public:
    using TimPriced::TimPriced;
    bool canStart() override {
        regParm(s_len);
        regParm(s_offset);
        return true;
    }
    bool initData() override {
        s_callClocks = 2 * s_len.value();
        s_status = 0;
        return true;
    }
    double getFlops() override { return s_len.value(); }
};

/** A parameter of every kind; some values are deprecated. */
class TimMix : public TimPriced {
  public:
    using TimPriced::TimPriced;
    bool canStart() override {
        for (bxParameter* parameter :
             std::initializer_list<bxParameter*>{&s_range, &s_order, &s_window, &s_inverse, &s_scale})
            regParm(*parameter);
        return true;
    }
    bool initData() override {
        s_callClocks = s_range.value() * s_order.value();
        s_status = 0;
        return true;
    }
    double getDivisor() override { return s_range.value(); }
};

/** The library warns of every call. */
class TimWarn : public TimCopy {
  public:
    using TimCopy::TimCopy;
    bool initData() override {
        TimCopy::initData();
        s_status = 1;
        return true;
    }
};

/** The library refuses the larger length. */
class TimFail : public TimCopy {
  public:
    using TimCopy::TimCopy;
    bool initData() override {
        TimCopy::initData();
        s_status = s_len.value() > 16 ? -5 : 0;
        return true;
    }
};

/** Stores through a null pointer. */
class TimFault : public TimCopy {
  public:
    using TimCopy::TimCopy;
    __attribute__((no_sanitize("undefined"))) bxResult runTiming() override {
        static int* volatile nowhere = nullptr;
        *nowhere = 1;
        return OK;
    }
};

/** Has data whose size may be chosen by the cache. */
class TimFill : public TimCopy {
  public:
    using TimCopy::TimCopy;
    bool canStart() override {
        regCacheParm(s_len);
        return true;
    }
    bool initData() override {
        m_data = static_cast<Zor8u*>(allocate(s_len.value(), 1, MEM_OBJECT_IS_BUFFER));
        for (int i = 0; m_data && i < s_len.value(); ++i)
            m_data[i] = static_cast<Zor8u>(i);
        return m_data && TimCopy::initData();
    }
    bool flushData() override {
        deallocate(m_data);
        return true;
    }

  private:
    Zor8u* m_data = nullptr;
};

/** Has no timing functions of its own: the engine calls the function. */
class TimCall : public kvTest {
  public:
    explicit TimCall(const char* function, const char* testName)
        : kvTest(realCall, nullptr, nullptr, nullptr, function, __FILE__, testName) {}
};

/** What the unit announces; every hook returns something, so that it can be called here. */
[[maybe_unused]] const int s_registered[] = {
    bxCpuTicker::m_freqMHz = 1000,
    bxRegParm(s_offset),
    bxRegHotFunction("zorsCopy_32f"),
    bxRegQKeys(),
    bxRegTest(new TimMix("zorsMix_16s_I", "TimMix//KV_REG")),
    bxRegTest(new TimCopy("zorsCopy_32f", "TimCopy//KV_REG")),
    bxRegTest(new TimWarn("zorsWarn_32s", "TimWarn//KV_REG")),
    bxRegTest(new TimFail("zorsFail_32s", "TimFail//KV_REG")),
    bxRegTest(new TimFault("zorsFault_8u", "TimFault//KV_REG")),
    bxRegTest(new TimCall("zorsCall_8u", "TimCall//KV_REG_X")),
    bxRegTest(new TimFill("zorsFill_8u", "TimFill//KV_REG")),
};

} // namespace
