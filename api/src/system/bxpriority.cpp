#include "system/bxpriority.h"

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

bool _bSavedPrio = false;
int _prio = 0;
int _policy = 0;
sched_param _param{};

bool isRoot() {
    return getuid() == 0;
}

void setPriority(int nice, int policy, int realTimePriority) {
    setpriority(PRIO_PROCESS, 0, nice);
    const sched_param param{.sched_priority = realTimePriority};
    sched_setscheduler(0, policy, &param);
}

void setHighPriority() {
    const int highest = sched_get_priority_max(SCHED_FIFO);
    if (highest != -1)
        setPriority(-20, SCHED_RR, highest);
    else
        setpriority(PRIO_PROCESS, 0, -20);
}

} // namespace

void bxSetPriority(int mode) {
    _bSavedPrio = mode != prioKeep;
    if (mode == prioKeep || !isRoot())
        return;
    _prio = getpriority(PRIO_PROCESS, 0);
    _policy = sched_getscheduler(0);
    sched_getparam(0, &_param);
    switch (mode) {
    case prioHigh:
        setHighPriority();
        break;
    case prioNormal:
        setPriority(0, SCHED_OTHER, 0);
        break;
    case prioLow:
        setPriority(10, SCHED_OTHER, 0);
        break;
    default:
        break;
    }
}

void bxResetPriority() {
    if (!_bSavedPrio)
        return;
    _bSavedPrio = false;
    if (!isRoot())
        return;
    setpriority(PRIO_PROCESS, 0, _prio);
    sched_setscheduler(0, _policy, &_param);
}
