#include "timing/bxonecall.h"

bxOneCall bxCallOnce(bxFuncCall call, bool ordered) {
    bxOneCall one;
    const bxInterruptMark mark;
    const unsigned long long first = bxOrderedCounter(ordered);
    one.status = call();
    const unsigned long long last = bxOrderedCounter(ordered);
    one.interrupted = bxInterruptMark::gone();
    one.ticks = bxCpuTicker::toClocks(last - first);
    return one;
}

int bxCallNothing() {
    return 0;
}
