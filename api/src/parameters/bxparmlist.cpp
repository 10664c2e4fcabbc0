#include "parameters/bxparmlist.h"

bxList<bxParameter*>* g_pParmList = nullptr;
void (*s_parmFunc)() = nullptr;

int bxRegParm(bxParameter& parm) {
    static bxList<bxParameter*> list;
    g_pParmList = &list;
    list.push_back(&parm);
    return 1;
}

int bxRegParmFunc(void (*function)()) {
    s_parmFunc = function;
    return 1;
}
