// Keys that change how is measured: priority, library settings, data in the measured time, cache sizes.
#include "framework/bxtest.h"
#include "session/bxkeys.h"
#include "session/bxsession.h"
#include "system/bxcputype.h"
#include "system/bxenvironment.h"
#include "system/bxpriority.h"
#include "timing/bxtool.h"

namespace {
struct Priority {
    char letter;
    bxPriority value; ///< of bxTool::m_priority
    const char* name;
};
constexpr Priority priorities[] = {
    {'H', prioHigh, "high"}, {'N', prioNormal, "normal"}, {'L', prioLow, "low"}};

const Priority* priorityOf(const bxString& argument) {
    for (const Priority& row : priorities)
        if (argument.length() > 0 && argument.c_str()[0] == row.letter)
            return &row;
    return nullptr;
}

/** 0 for text that is no number. */
int threadsOf(bxString argument) {
    int threads = 0;
    threads << argument;
    return threads;
}

const char* const noEnvironment = "ignored: <zorcore.h> is not included before <kv.h> in test files";
} // namespace

bxString Y_info(bxString argument) {
    const Priority* priority = priorityOf(argument);
    return bxSession::unlessExit(bxSession::exitEnumerate,
                                 priority != nullptr ? bxString("set ") + priority->name + " process priority"
                                                     : bxString("ignored: incorrect process priority value"));
}
void Y_apply(bxString argument, bxSession*) {
    if (const Priority* priority = priorityOf(argument))
        bxTool::m_priority = priority->value;
}

bxString T_info(bxString argument) {
    bxString text = bxString("call zorInitStaticCpu ( zorCpu") + argument + " )";
    if (!zorEnvironment)
        text = noEnvironment;
    else if (bxCpuType::cpuType(argument) == -1)
        text = "ignored: incorrect CPU type";
    return text;
}
void T_apply(bxString argument, bxSession*) {
    s_cpuType = bxCpuType::cpuType(argument);
}

bxString N_info(bxString argument) {
    bxString text = bxString("call zorSetNumThreads(") + argument + ")";
    if (!zorEnvironment)
        text = noEnvironment;
    else if (threadsOf(argument) < 1)
        text = "ignored: incorrect number of threads";
    return text;
}
void N_apply(bxString argument, bxSession*) {
    s_numThreads = threadsOf(argument);
}

bxString S_info(bxString) {
    return bxSession::unlessExit(bxSession::exitEnumerate, "include to measurement data set & use time");
}
void S_apply(bxString, bxSession*) {
    g_tool.includeDataSet = true;
}

bxString C_info(bxString) {
    return bxSession::unlessExit(
        bxSession::exitEnumerate,
        "test data size will be in cache and out of cache if that is supported by test");
}
void C_apply(bxString, bxSession*) {
    bxTest::m_cache = true;
}
