#include "data/bxplacement.h"

#include "data/bxalloc.h"

namespace {

constexpr int lineSize = 64;      /**< cache line, bytes */
constexpr int pageSize = 4096;    /**< of addresses, what caches and store buffers look at first */
constexpr int shiftLimit = 32768; /**< bytes: the mutual offsets start again before they reach this */

} // namespace

void bxPlacement::restart(int displacement, int more) {
    blocks = shift = failures = 0;
    m_displacement = displacement;
    m_more = more;
}

int bxPlacement::misalignment(int align) const {
    if (align >= 0)
        return align;
    return rules.alignSrc && blocks != 0 ? 0 : -align * rules.vectorAlign;
}

void* bxPlacement::allocate(int size, int align, void* owner) {
    const int displacement = m_displacement + blocks * m_more % pageSize;
    void* const block = bxMalloc(size, misalignment(align), shift + displacement,
                                 owner ? owner : static_cast<void*>(MEM_OBJECT_IS_BUFFER));
    if (!block)
        return nullptr;
    ++blocks;
    shift += rules.vectorShift;
    if (shift >= shiftLimit)
        shift = 0;
    return block;
}

int bxGetVectorShift() {
    return g_placement.rules.vectorShift;
}

void bxSetVectorShift(int bytes) {
    g_placement.rules.vectorShift = bytes;
}

int bxGetVectorAlign() {
    return g_placement.rules.vectorAlign;
}

void bxSetVectorAlign(int distance) {
    g_placement.rules.vectorAlign = distance % lineSize;
}

bool bxGetAlignSrc() {
    return g_placement.rules.alignSrc;
}

void bxSetAlignSrc(bool firstOnly) {
    g_placement.rules.alignSrc = firstOnly;
}

bool bxGetAlignByByte() {
    return g_placement.rules.alignByByte;
}

void bxSetAlignByByte(bool byByte) {
    g_placement.rules.alignByByte = byByte;
}
