#include "framework/bxregister.h"

// Constant-initialised, so that a hook may be called from any static initialiser.
bxSession* pSession = nullptr;
bxString* pCmdLine = nullptr;
void (*initTimingMethod)(bxTool&) = nullptr;
bool qKeys = false;

int bxRegSession(bxSession* session) {
    pSession = session;
    return 1;
}

int bxRegCmdLine(bxString text) {
    static bxString commandLine;
    commandLine += bxString(" ") + text;
    pCmdLine = &commandLine;
    return 1;
}

int bxRegTimingMethod(void (*initialiser)(bxTool&)) {
    initTimingMethod = initialiser;
    return 1;
}

int bxRegQKeys() {
    qKeys = true;
    return 1;
}
