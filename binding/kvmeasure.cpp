#include "kvmeasure.h"

#include "framework/bxregister.h"
#include "output/bxostream.h"
#include "timing/bxexception.h"

#include <cstdint>
#include <cstring>

namespace kv {

namespace {

/**
 * Whether some pointer of a call leads to the variables of the set-up that made it, which are gone: it was
 * captured by reference. The set-up ran just below the present frame.
 */
bool capturesByReference(const unsigned char* bytes, std::size_t size) {
    if constexpr (sizeof(void*) < 8)
        return false; // there, the addresses of a stack are numbers like any other
    constexpr std::uintptr_t reach = 64 * 1024;
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    for (std::size_t at = 0; at + sizeof here <= size; at += sizeof here) {
        std::uintptr_t word;
        std::memcpy(&word, bytes + at, sizeof word);
        if (word < here && here - word < reach)
            return true;
    }
    return false;
}

} // namespace

MeasuredTest::MeasuredTest(bxFuncCall call, bxFuncInit before, bxFuncLoop loop, bxFuncStat stat,
                           const char* function, const char* file, const bxString& about, kvFailure failure)
    : kvTest(call, before, loop, stat, function, file,
             bxString(file).getFileTitle() + "/" + about + "/kvMeasure") {
    m_failure = failure;
}

bool MeasuredTest::canStart() {
    m_size = nullptr;
    for (AnyParm* const parm : makeParms()) {
        bxIterator<int>* const size = parm->size();
        if (size != nullptr)
            regCacheParm(*size);
        else
            regParm(parm->parameter());
        m_size = m_size == nullptr ? size : m_size;
    }
    return true;
}

bool MeasuredTest::initData() {
    m_data.begin();
    if (m_size != nullptr)
        m_data.per(m_size->value());
    try {
        const auto [bytes, size] = setUp(m_data);
        if (capturesByReference(bytes, size))
            throw bxException("The call captures variables of its set-up by reference; write [=]");
    } catch (const PassedOver&) {
        return false;
    }
    return true;
}

bool MeasuredTest::flushData() {
    dropCall();
    m_data.end();
    return true;
}

double MeasuredTest::getDivisor() {
    return m_data.units();
}

bxString MeasuredTest::getUnit() {
    return m_data.unit();
}

bxString MeasuredTest::regInfo() {
    bxString text = kvTest::regInfo();
    const bxString macro(" macro");
    const int at = text.find(macro);
    return at < 0 ? text : text.substr(0, at) + text.substr(at + macro.length());
}

} // namespace kv
