// A program whose functions cost what the place of their data tells, for the command-line tests of layouts.
#include "bx.h"

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <unistd.h>

namespace {

int s_callClocks = 100;

bxResult pricedLoop(int count, long long* clocks) {
    *clocks = static_cast<long long>(count) * s_callClocks;
    return OK;
}

bxIterator<int>& s_len = *[] {
    auto* const len = new bxIterator<int>(1, "Len", "");
    len->add(1);
    len->add(2);
    return len;
}();

/** Costs nothing but its price. */
class Plain : public bxTest {
  public:
    Plain(const char* function, const char* text) : bxTest(pricedLoop, nullptr, function, __FILE__, text) {}
    bool canStart() override {
        regParm(s_len);
        return true;
    }
    bool initData() override {
        s_callClocks = 100;
        return true;
    }
};

/** Costs a clock more for each line that its second block stands further in its page. */
class Placed : public Plain {
  public:
    using Plain::Plain;
    bool initData() override {
        constexpr std::uintptr_t lineSize = 64, linesOfPage = 64;
        for (void*& block : m_blocks)
            block = allocate(1000, -1);
        s_callClocks =
            100 + static_cast<int>(reinterpret_cast<std::uintptr_t>(m_blocks[1]) / lineSize % linesOfPage);
        return true;
    }
    bool flushData() override {
        for (void* block : m_blocks)
            deallocate(block);
        return true;
    }

  private:
    void* m_blocks[2] = {};
};

/** Faults at its first combination in every layout but the first, whose process has nothing in its
 * environment; the other one ends it at once. */
class Fragile : public Plain {
  public:
    using Plain::Plain;
    bxResult runTiming() override {
        if (std::getenv("BENCHEX_LAYOUT") && (name == "zFragile" || s_len.value() == 1))
            std::raise(name == "zFragile" ? SIGKILL : SIGSEGV);
        return Plain::runTiming();
    }
};

/** Interrupts the process that leads, once another layout is measured. */
class Stopper : public Plain {
  public:
    using Plain::Plain;
    bxResult runTiming() override {
        if (std::getenv("BENCHEX_LAYOUT"))
            kill(getppid(), SIGINT);
        return Plain::runTiming();
    }
};

[[maybe_unused]] const int s_registered[] = {
    bxCpuTicker::m_freqMHz = 1000,
    bxRegTest(new Fragile("fragile", "Fragile//")),
    bxRegTest(new Fragile("zFragile", "Fragile//")),
    bxRegTest(new Plain("plain", "Plain//")),
    bxRegTest(new Stopper("stopper", "Stopper//")),
    bxRegTest(new Placed("placed", "Placed//")),
};

} // namespace
