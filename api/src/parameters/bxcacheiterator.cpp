#include "parameters/bxcacheiterator.h"

#include "data/bxalloc.h"
#include "data/bxobject.h"
#include "output/bxostream.h"
#include "output/bxtable.h"
#include "system/bxenvironment.h"

#include <algorithm>
#include <climits>

namespace {

constexpr int inCache = 0;
constexpr int outOfCache = 1;
constexpr int maxAttempts = 11;
// In-cache data fill between a tenth and nine tenths of the cache; where both bounds cannot hold (much other
// data, or sizes that jump across the band), a hundredth is enough. Out of cache is what exceeds the cache by
// a twentieth.
constexpr double firstLowFactor = 0.1;
constexpr double lastLowFactor = 0.01;
constexpr double factorTolerance = 0.0001; // above the last factor by more than a rounding
constexpr double highFactor = 0.9;
constexpr double outFactor = 1.05;

int clampToInt(long long size) {
    return static_cast<int>(std::clamp<long long>(size, 0, INT_MAX));
}

int share(int size, double factor) {
    return clampToInt(static_cast<long long>(size * factor));
}

/** Calls `up` for each doubling of `size` until it exceeds `target`, then `down` for each halving until below
 * it. */
template <class Up, class Down>
void approach(long long size, long long target, Up up, Down down) {
    for (; size <= target; size *= 2)
        up();
    for (; size >= target; size /= 2)
        down();
}

/** Doubles a positive value `count` times, or halves it for a negative count; false when it leaves its range.
 */
bool scale(int& value, int count) {
    if (value <= 0)
        return false;
    const long long wide = value;
    const long long scaled = count >= 0 ? wide << count : wide >> -count;
    value = clampToInt(scaled);
    return scaled > 0 && scaled <= INT_MAX;
}

/** Scales the value of a parameter of type T by its iterator's rule. */
template <class T, class Iterator>
bool scaleParameter(bxParameter* parm, int size, int target, bool step) {
    auto* const typed = dynamic_cast<bxDefault_NSC<T>*>(parm);
    if (!typed)
        return false;
    T value = typed->value();
    if (!Iterator::updateValue(value, size, target, step))
        return false;
    typed->setValue(value);
    return true;
}

} // namespace

bxCacheIterator::bxCacheIterator(bxParameter& cacheParm, bxObject* object, bxCacheSetFunc setFn)
    : bxIterator<int>(0, "cacheIterator", ""), m_cacheParm(&cacheParm), m_object(object),
      m_lowFactor(firstLowFactor), m_setFn(setFn) {
    add(inCache);
    add(outOfCache);
}

bool bxCacheIterator::nextValue() {
    m_attempts = 0;
    m_comment = "";
    m_lowFactor = firstLowFactor;
    if (!bxIterator<int>::nextValue())
        return false;
    m_cacheParm->resetIterator();
    return m_cacheParm->firstValue();
}

bool bxCacheIterator::repeatValue() {
    return ++m_attempts <= maxAttempts && setNewValue();
}

bool bxCacheIterator::setNewValue() {
    const bool shrink = m_totalSize > highSize();
    const int size = shrink ? m_totalSize : m_objectSize;
    const int target = shrink ? highSize() : lowSize();
    const bool step = m_attempts > 1;
    return m_setFn ? m_setFn(m_cacheParm, size, target, step) : setNewValueToParm(size, target, step);
}

bool bxCacheIterator::setNewValueToParm(int, int, bool) {
    return false;
}

bool bxCacheIterator::validateSize() {
    m_totalSize = getTotalSize();
    m_objectSize = getObjectSize();
    if (m_objectSize == 0)
        m_objectSize = m_totalSize;
    const bool wasTooBig = m_lastTooBig;
    const bool tooBig = m_totalSize > highSize();
    m_lastTooBig = tooBig;
    for (;;) {
        const bool tooSmall = m_objectSize < lowSize();
        if (!tooSmall && !tooBig) {
            m_attempts = 0;
            m_comment = "";
            return true;
        }
        noteMisfit(tooSmall, tooBig);
        const bool oscillates = wasTooBig && m_attempts >= 2;
        if (!tooSmall || !(tooBig || oscillates))
            return false;
        if (m_lowFactor <= lastLowFactor + factorTolerance) {
            m_attempts = maxAttempts + 1;
            return false;
        }
        m_lowFactor = lastLowFactor;
        if (tooBig)
            return false;
    }
}

void bxCacheIterator::noteMisfit(bool tooSmall, bool tooBig) {
    const bxString head = bxString("      ") + getComment() + " try: cacheParm=" + m_cacheParm->valueString();
    bxString note;
    if (tooSmall)
        note << head << (m_object ? " objectSize=" : " totalSize=") << m_objectSize << " < " << lowSize()
             << "\n";
    if (tooBig)
        note << head << " totalSize=" << m_totalSize << " > " << highSize() << "\n";
    m_comment += note;
    g_ostrm << PERF << note << endMessage;
}

int bxCacheIterator::cacheSize() const {
    return bxLibraryCacheSizeB();
}

int bxCacheIterator::lowSize() const {
    return share(cacheSize(), value() == inCache ? m_lowFactor : outFactor);
}

int bxCacheIterator::highSize() const {
    return value() == inCache ? share(cacheSize(), highFactor) : INT_MAX;
}

int bxCacheIterator::getObjectSize() const {
    return m_object ? m_object->objectSize() : 0;
}

int bxCacheIterator::getTotalSize() const {
    return clampToInt(bxAllocatedSize());
}

bxString bxCacheIterator::getComment() const {
    switch (value()) {
    case inCache:
        return bxTable::inCache;
    case outOfCache:
        return bxTable::outOfCache;
    default:
        return "";
    }
}

void bxCacheIterator::outputInfo() const {
    if (static_cast<int>(g_ostrm.outLevel()) < PERF)
        g_ostrm << ERR << m_comment << endMessage;
}

bool bxCacheIteratorInt::setNewValueToParm(int size, int target, bool step) {
    return scaleParameter<int, bxCacheIteratorInt>(cacheParm(), size, target, step);
}

bool bxCacheIteratorInt::updateValue(int& value, int size, int target, bool step) {
    if (size <= 0 || target <= 0)
        return false;
    int count = 0;
    if (step)
        count = size < target ? 1 : -1;
    else
        approach(
            size, target, [&] { ++count; }, [&] { --count; });
    return scale(value, count);
}

bool bxCacheIteratorSize::setNewValueToParm(int size, int target, bool step) {
    return scaleParameter<ZoriSize, bxCacheIteratorSize>(cacheParm(), size, target, step);
}

bool bxCacheIteratorSize::updateValue(ZoriSize& value, int size, int target, bool step) {
    if (size <= 0 || target <= 0)
        return false;
    int width = 0;
    int height = 0;
    if (!step)
        approach(
            size, target, [&] { ++(height < width ? height : width); },
            [&] { --(height < width ? width : height); });
    else if (size < target)
        ++(value.height < value.width ? height : width);
    else
        --(value.width <= value.height ? height : width);
    const bool fits = scale(value.width, width);
    return scale(value.height, height) && fits;
}
