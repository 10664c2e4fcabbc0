#include "system/bxenvironment.h"

#include "output/bxostream.h"
#include "system/bxcputype.h"

#include <algorithm>

// All of these are initialised at compile time, so that any static initialiser may register.
int (*zor_GetCpuType)() = nullptr;
int (*zor_GetNumCoresOnDie)() = nullptr;
ZorStatus (*zor_GetMaxCacheSizeB)(int*) = nullptr;
const char* (*zor_GetStatusString)(ZorStatus) = nullptr;
ZorStatus (*zor_Init)() = nullptr;
ZorStatus (*zor_InitCpu)(int) = nullptr;
ZorStatus (*zor_SetNumThreads)(int) = nullptr;

constinit bxEnvironmentHook zorEnvironment = nullptr;
constinit bxList<bxVersionHook>* zorVersionList = nullptr;
constinit bxStringList* g_pLibInfoList = nullptr;
constinit bxStringList* g_pLibFuncList = nullptr;
constinit int s_cpuType = -1;
constinit int s_numThreads = 0;

namespace {

/** Binds a fallback where no library function is bound. */
template <class Function>
void bindIfMissing(Function*& bound, Function* fallback) {
    if (!bound)
        bound = fallback;
}

/** "--ZOR ERROR. status = ..." with the library's text. */
void writeStatus(ZorStatus status) {
    g_ostrm << (status < 0 ? "--ZOR ERROR. " : "--ZOR WARNING. ") << "status = " << status << ": "
            << zor_GetStatusString(status) << "\n";
}

void writeResult(ZorStatus status) {
    if (status == zorStsNoErr)
        g_ostrm << "--status = zorStsNoErr\n";
    else
        writeStatus(status);
}

} // namespace

bool bxRegZorEnvironment(bxEnvironmentHook hook) {
    zorEnvironment = hook;
    return true;
}

bool bxRegZorVersion(bxVersionHook hook) {
    static bxList<bxVersionHook> list;
    zorVersionList = &list;
    list.push_back(hook);
    return true;
}

bool bxRegLibInfo(const bxString& text) {
    static bxStringList list;
    g_pLibInfoList = &list;
    if (std::ranges::find(list, text) != list.end())
        return false;
    list.push_back(text);
    return true;
}

bool bxRegLibFunc(const bxString& name) {
    if (name.empty())
        return false;
    static bxStringList list;
    g_pLibFuncList = &list;
    list.push_back(name);
    return true;
}

bool setZorEnvironment() {
    if (zorEnvironment) {
        zorEnvironment();
        g_ostrm << "\nZOR Core library functions have been integrated into BX\n";
    }
    bindIfMissing(zor_GetCpuType, bx_zorGetCpuType);
    bindIfMissing(zor_GetNumCoresOnDie, bx_zorGetNumCoresOnDie);
    bindIfMissing(zor_GetMaxCacheSizeB, bx_zorGetMaxCacheSizeB);
    bindIfMissing(zor_GetStatusString, s_zorGetStatusString);
    bindIfMissing(zor_Init, s_zorInit);
    bindIfMissing(zor_InitCpu, s_zorInitCpu);
    bindIfMissing(zor_SetNumThreads, s_zorSetNumThreads);
    return true;
}

void initStaticCpu() {
    if (!zorEnvironment)
        return;
    if (s_cpuType == -1) {
        zor_Init();
        return;
    }
    g_ostrm << ERR << "\n"
            << "--calling zorInitCpu( zorCpu" << bxCpuType::cpuLabel(s_cpuType) << "=" << s_cpuType << " )\n";
    const ZorStatus status = zor_InitCpu(s_cpuType);
    writeResult(status);
    if (status < 0) {
        g_ostrm << "--calling zorInit()\n";
        if (const ZorStatus retried = zor_Init(); retried < 0)
            writeStatus(retried);
    }
    g_ostrm << endMessage;
}

void setNumThreads() {
    if (!zorEnvironment || s_numThreads < 1)
        return;
    g_ostrm << ERR << "\n"
            << "--calling zorSetNumThreads( " << s_numThreads << " )\n";
    writeResult(zor_SetNumThreads(s_numThreads));
    g_ostrm << endMessage;
}

namespace {

/** The library's answer: a status and a size that counts only with some of them. */
ZorStatus queryCacheSize(int& size) {
    const auto query = zor_GetMaxCacheSizeB ? zor_GetMaxCacheSizeB : bx_zorGetMaxCacheSizeB;
    const ZorStatus status = query(&size);
    if (status != zorStsNoErr && status != zorStsCacheSizeIgnored)
        size = 0;
    return status;
}

} // namespace

int bxLibraryCacheSizeB() {
    int size = 0;
    queryCacheSize(size);
    return size;
}

bxString bxCacheSizeProblem() {
    int size = 0;
    const ZorStatus status = queryCacheSize(size);
    if (!zorEnvironment || status == zorStsNoErr)
        return "";
    return zor_GetStatusString(status);
}

void setZorLibInfo() {
    if (!zorVersionList)
        return;
    for (const bxVersionHook hook : *zorVersionList) {
        const ZorLibraryVersion& record = *hook();
        bxString text;
        text << record.name << ", " << record.version << ", " << record.buildDate;
        bxRegLibInfo(text);
    }
    g_ostrm << "ZOR libraries information has been set into BX\n";
}
