#include "framework/bxhotlist.h"

bxStringList* g_pHotList = nullptr;

int bxRegHotFunction(bxString name) {
    // Lives until the process ends: registrations come from static initialisers in any order.
    if (!g_pHotList)
        g_pHotList = new bxStringList;
    g_pHotList->insert(g_pHotList->end(), name);
    return 1;
}

bool bxIsHotFunction(const bxString& name) {
    if (!g_pHotList)
        return false;
    for (const bxString& hot : *g_pHotList)
        if (hot == name)
            return true;
    return false;
}
