#include "timing/bxcores.h"

#include "system/bxcpuid.h"

namespace {

bool s_pinned = false;
cpu_set_t s_before; /**< where the process may run otherwise */

} // namespace

unsigned bxCores::kind() {
    constexpr unsigned modelLeaf = 1, hybridLeaf = 0x1A;
    const unsigned model = CPUID(modelLeaf).get(CPUID::EAX);
    return largestFunction() >= hybridLeaf ? model ^ CPUID(hybridLeaf).get(CPUID::EAX) : model;
}

bool bxMoveToCore(int core) {
    if (core < 0 || core >= CPU_SETSIZE)
        return false;
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(static_cast<unsigned>(core), &only);
    return sched_setaffinity(0, sizeof only, &only) == 0;
}

bxPinnedCore::bxPinnedCore() {
    const int core = sched_getcpu();
    if (core < 0 || core >= CPU_SETSIZE)
        return;
    if (s_pinned) {
        m_core = core;
        return;
    }
    if (sched_getaffinity(0, sizeof s_before, &s_before) != 0 || !bxMoveToCore(core))
        return;
    m_core = core;
    m_outermost = s_pinned = true;
}

bxPinnedCore::~bxPinnedCore() {
    if (m_outermost)
        release();
}

void bxPinnedCore::release() {
    if (s_pinned)
        sched_setaffinity(0, sizeof s_before, &s_before);
    s_pinned = false;
}
