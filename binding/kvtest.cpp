#include "kvtest.h"

#include "data/bxalloc.h"
#include "framework/bxtestlist.h"
#include "output/bxcstream.h"
#include "output/bxostream.h"
#include "output/bxtrace.h"
#include "parameters/bxcacheiterator.h"
#include "timing/bxtool.h"
#include "timing/bxturns.h"

#include <algorithm>
#include <vector>

bool kvTest::m_checkErrorsOnly = false;

namespace {

constexpr unsigned int firstSeed = 7;

/** The engine's own call loops know no function name: the status belongs to the test that is running. */
bxResult checkStatusOfCurrentTest(int status) {
    auto* test = dynamic_cast<kvTest*>(bxTestList::m_pCurrentTest);
    return test ? test->checkStatus(status) : kvTest::checkStatus(status, "");
}

bxString statusTitle(bool error, ZorStatus status, const bxString& function) {
    bxString title(error ? "--ZOR ERROR. " : "--ZOR WARNING. ");
    title << "status = " << status;
    if (function.length() > 0)
        title << " in " << function;
    return title;
}

/** The warnings of one measurement. */
class Warnings {
  public:
    /** From now on, or no more, a repeated warning is one to be counted. */
    void count(bool on) {
        m_counting = on;
        m_seen.clear();
    }

    /** Whether a warning is to be shown: the first time while they are counted. */
    bool isNew(ZorStatus status, const bxString& function) {
        if (!m_counting)
            return true;
        for (Seen& seen : m_seen)
            if (seen.status == status && seen.function == function)
                return ++seen.times == 1;
        m_seen.push_back({status, function, 1});
        return true;
    }

    void tellRepeated() const {
        for (const Seen& seen : m_seen)
            if (seen.times > 1)
                g_ostrm << WARN << statusTitle(false, seen.status, seen.function) << ": " << seen.times
                        << " times\n"
                        << endMessage;
    }

  private:
    struct Seen {
        ZorStatus status;
        bxString function;
        int times;
    };
    std::vector<Seen> m_seen;
    bool m_counting = false;
};

Warnings s_warnings;

const bool s_statusCheckInstalled = [] {
    bxTool::m_pCheckStatus = checkStatusOfCurrentTest;
    bxTurns::m_reseed = [] { kvVector::m_seed = firstSeed; };
    return true;
}();

} // namespace

bxResult kvTest::run() {
    m_checkErrorsOnly = false;
    kvVector::m_seed = firstSeed;
    s_warnings.count(false);
    return bxTest::run();
}

bxResult kvTest::runTiming() {
    s_warnings.count(true);
    const bxResult r = bxTest::runTiming();
    s_warnings.tellRepeated();
    s_warnings.count(false);
    return r;
}

int kvTest::compareFunc(const bxTest* other) const {
    return m_func.compare(kvFunc(other->name));
}

void kvTest::funcToCstrm() {
    g_cstrm << m_cells.function << m_cells.types << m_cells.descr;
}

bool kvTest::isFloatFunction() {
    return bxTest::isFloatFunction() && (name.find("32f", 0) >= 0 || name.find("64f", 0) >= 0);
}

bxString kvTest::regInfo() {
    const bxString text = bxTest::regInfo();
    const int at = text.find("BX_", 0);
    return at < 0 ? text : text.substr(0, at) + "KV_" + text.substr(at + 3);
}

bxParameter* kvTest::regCacheParm(bxIterator<ZoriSize>& size, bool (*check)(bxParameter*, int, int, bool)) {
    if (!m_cache || cacheIter) {
        parms.insert(parms.end(), &size);
        return &size;
    }
    cacheIter = new bxCacheIteratorSize(size, nullptr, check);
    parms.insert(parms.end(), cacheIter);
    return cacheIter;
}

namespace {

bxResult report(ZorStatus status, const bxString& function, kvFailure failure) {
    const kvStatusKind kind = kvLibrary::kindOf(status, failure);
    if (kind == kvStatusKind::good || (kind == kvStatusKind::warning && kvTest::m_checkErrorsOnly))
        return OK;
    const bool error = kind == kvStatusKind::error;
    if (error || s_warnings.isNew(status, function))
        g_ostrm << (error ? ERR : WARN) << statusTitle(error, status, function) << ": "
                << kvLibrary::statusText(status, error) << "\n"
                << endMessage;

    const bxResult result = error ? FUNCFAIL : FUNCWRN;
    const bool hiddenWarning = !error && static_cast<int>(g_ostrm.outLevel()) <= static_cast<int>(ERR);
    bxTest::m_currentResult = std::max(bxTest::m_currentResult, hiddenWarning ? OK : result);
    return result;
}

} // namespace

bxResult kvTest::checkStatus(ZorStatus status, bxString funcName) {
    return report(status, funcName, kvAsLibrary);
}

bxResult kvTest::checkStatus(ZorStatus status) {
    return report(status, m_func, m_failure);
}

int kvTest::printAllMemoryBlocks(bxString title) {
    if (!g_ostrm.beginMessage(DATA))
        return 0;
    g_trace.traceIn("printAllMemoryBlocks");
    printFirstDebugLine(title);
    int count = 0;
    int size = 0;
    void* owner = nullptr;
    for (void* block = bxMallocFirst(&size, &owner); block; block = bxMallocNext(&size, &owner)) {
        auto* object = static_cast<bxObject*>(owner);
        if (!object || object == MEM_OBJECT_IS_SUBOBJECT)
            continue;
        printFirstBlockLine(++count, object, size);
        if (auto* vector = dynamic_cast<kvVector*>(object))
            printVectorBlock(vector);
        else
            printByteBlock(block, size);
        printLastBlockLine(count, object);
    }
    printLastDebugLine(title);
    g_ostrm << endMessage;
    g_trace.traceOut("printAllMemoryBlocks");
    return count;
}

void kvTest::printFirstDebugLine(bxString title) {
    g_ostrm << DATA << "======== OBJECTS OUTPUT START === " << title << " === OBJECTS OUTPUT START ========\n"
            << endMessage;
}

void kvTest::printLastDebugLine(bxString title) {
    g_ostrm << DATA << "======== OBJECTS OUTPUT END === " << title << " === OBJECTS OUTPUT END ========\n"
            << endMessage;
}

void kvTest::printFirstBlockLine(int number, bxObject* owner, int size) {
    bxString line("======== Object ");
    line << number << ": ";
    if (owner && owner != MEM_OBJECT_IS_BUFFER)
        line << owner->objectInfo() << "\n";
    else
        line << "MemoryBlock size=" << size << "\n";
    g_ostrm << DATA << line << endMessage;
}

void kvTest::printLastBlockLine(int, bxObject*) {
    g_ostrm << DATA << "\n" << endMessage;
}

void kvTest::printVectorBlock(kvVector* vector) {
    g_ostrm << DATA << vector->getString() << "\n" << endMessage;
}

void kvTest::printByteBlock(void* data, int size) {
    g_ostrm << DATA << kvVector::getByteString(data, size) << "\n" << endMessage;
}
