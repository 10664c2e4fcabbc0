#include "kvmeasure.h"

#include "framework/bxregister.h"
#include "output/bxostream.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace kv {

namespace {

/** The stack below a frame, where the variables of a set-up stood that was called from there. */
constexpr std::uintptr_t reach = 64 * 1024;

/** The words of what a set-up returned. */
std::vector<std::uintptr_t> wordsOf(std::pair<const unsigned char*, std::size_t> bytes) {
    std::vector<std::uintptr_t> words(bytes.second / sizeof(std::uintptr_t));
    if (!words.empty())
        std::memcpy(words.data(), bytes.first, words.size() * sizeof words[0]);
    return words;
}

bool isBelow(std::uintptr_t word, std::uintptr_t frame) {
    return word < frame && frame - word < reach;
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
        if (size)
            regCacheParm(*size);
        else
            regParm(parm->parameter());
        m_size = m_size ? m_size : size;
    }
    return true;
}

bool MeasuredTest::initData() {
    try {
        if (!refersToSetUp())
            return true;
        dropCall();
    } catch (const PassedOver&) {
        return false;
    }
    throw std::invalid_argument("The call captures variables of its set-up by reference; write [=]");
}

/** Lets the set-up make data and call, and gives the call's words. */
std::vector<std::uintptr_t> MeasuredTest::makeWork() {
    m_data.begin();
    if (m_size)
        m_data.per(m_size->value());
    return wordsOf(setUp(m_data));
}

/** The same with the set-up's variables elsewhere on the stack. */
[[gnu::noinline]] std::vector<std::uintptr_t> MeasuredTest::makeWorkElsewhere() {
    char room[512];
    __asm__ volatile("" : : "r"(room) : "memory");
    dropCall();
    return makeWork();
}

/**
 * Makes data and call, and tells whether the call leads to variables of the set-up that made it, which are
 * gone by now: it captured them by reference. Any number may look like an address of the stack, so where one
 * does the set-up is called again: an address moves with its variable, a number stays.
 */
bool MeasuredTest::refersToSetUp() {
    const auto frame = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    const auto leads = [frame](std::uintptr_t word) { return isBelow(word, frame); };
    const std::vector<std::uintptr_t> words = makeWork();
    if (std::ranges::none_of(words, leads))
        return false;
    const std::vector<std::uintptr_t> again = makeWorkElsewhere();
    return !std::ranges::equal(words, again, [&](std::uintptr_t word, std::uintptr_t other) {
        return word == other || !leads(word) || !leads(other);
    });
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
