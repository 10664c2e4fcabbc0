#include "suite.h"

#include "misbehaviours.h"

#include <cstdint>
#include <numeric>

namespace {

kvVector s_data(kv32f);

} // namespace

Witness s_witness;

bool TimMisbehave::initData() {
    return s_data.createVector(length, smRandom, -1, 1);
}

bool TimMisbehave::flushData() {
    s_data.deleteVector();
    return true;
}

static int zorsWitness_32f() {
    struct {
        std::uint32_t control, status, tags, rest[4];
    } environment;
    __asm__ volatile("fnstenv %0\n\tfldenv %0" : "+m"(environment));
    s_witness.control87 = environment.control & 0xF3FU;
    s_witness.tags87 = environment.tags & 0xFFFFU;
    s_witness.controlSSX = bx_get_ssx() & 0xFFC0U;
    s_witness.seed = kvVector::m_seed;
    s_witness.sum = std::accumulate(s_data.p32f, s_data.p32f + s_data.length(), 0.0);
    return 0;
}

// How each function is called.

#define CALL(function)                                                                                       \
    static int tcall_##function() {                                                                          \
        return function();                                                                                   \
    }                                                                                                        \
    KV_REG(TimMisbehave, function)

CALL(zorsWitness_32f)
CALL(zorsNullStore)
CALL(zorsWildRead)
CALL(zorsJumpToNowhere)
CALL(zorsIllegalInstruction)
CALL(zorsDivideInteger)
CALL(zorsDivide87)
CALL(zorsOverflowStack)
CALL(zorsCorruptHeap)
CALL(zorsThrow)
CALL(zorsThrowNumber)
CALL(zorsExit)
CALL(zorsExitAtOnce)
CALL(zorsLoopForever)
CALL(zorsRound87)
CALL(zorsRoundSSX)
CALL(zorsDenormalSSX)
CALL(zorsDenormalInputSSX)
CALL(zorsUnmaskSSX)
CALL(zorsLeaveStack87)
CALL(zorsLeaveMMX)
CALL(zorsRaise87)
CALL(zorsRaiseSSX)
CALL(zorsClobberBX)
CALL(zorsClobberBP)
#if defined(__x86_64__)
CALL(zorsClobberR12)
CALL(zorsClobberR13)
CALL(zorsClobberR14)
CALL(zorsClobberR15)
#else
CALL(zorsClobberSI)
CALL(zorsClobberDI)
#endif
CALL(zorsClobberTwo)
CALL(zorsSetDirection)
CALL(zorsPrint)

static int tcall_zorsWritePastEnd() {
    return zorsWritePastEnd(reinterpret_cast<char*>(s_data.p32f + s_data.length()));
}
KV_REG(TimMisbehave, zorsWritePastEnd)
