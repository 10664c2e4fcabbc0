#include "data/bxalloc.h"

#include "data/bxaddresslist.h"
#include "data/bxguard.h"
#include "data/bxplacement.h"
#include "output/bxostream.h"

#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr int lineSize = 64;                   /**< cache line, bytes */
constexpr std::size_t headRoom = 3 * lineSize; /**< bytes before a base block, rounded down to a line */
constexpr std::size_t bookkeeping = headRoom + lineSize; /**< bytes around a base block */
constexpr std::ptrdiff_t startWord = 2 * lineSize;       /**< distance of the word that keeps the start */

constinit long long s_allocated = 0;
volatile std::sig_atomic_t s_busy = 0;
/** Never destroyed: static objects may free their blocks after all destructors of this unit. */
constinit AddressList* s_table = nullptr;

/** While one lives, the heap and the table are being changed. */
class Busy {
  public:
    Busy() { s_busy = 1; }
    ~Busy() { s_busy = 0; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
};

void*& startOf(void* raw) {
    return *reinterpret_cast<void**>(static_cast<char*>(raw) - startWord);
}

/** Gets the memory of a block; its aligned pointer stays null on failure. */
Address obtain(int size, int misalign, int offset) {
    Address block{.size = size};
    if (g_placement.rules.guard) {
        const bxGuardedBlock guarded = bxMapGuarded(size, misalign % lineSize);
        block.raw = guarded.mapping;
        block.mapped = guarded.mapped;
        block.aligned = guarded.start;
    } else {
        block.aligned = bx_malloc(block.raw, size, misalign, offset);
    }
    return block;
}

void giveBack(const Address& block) {
    if (block.mapped)
        bxUnmapGuarded(block.raw, block.mapped);
    else
        bx_free(block.raw);
}

/** Writes what was done to a block; builds no text when it is not shown. */
void log(const char* what, const Address* block) {
    if (g_ostrm.shows(MEM))
        g_ostrm << MEM << what << (block ? block->text() : bxString()) << "\n" << endMessageFlush;
}

void* describe(const Address* block, int* size, void** owner) {
    if (!block)
        return nullptr;
    if (size)
        *size = block->size;
    if (owner)
        *owner = block->owner;
    return block->aligned;
}

/** Calls an operation of every owner; returns how many gave true. */
int forAllOwners(bool (bxObject::*operation)()) {
    int n = 0;
    if (s_table)
        for (const Address& block : *s_table)
            n += block.owner && (block.owner->*operation)();
    return n;
}

/** Whether a base block can hold so much; its size is an int. */
bool fits(int size, int misalign, int offset) {
    return size >= 0 && offset >= 0 && 0LL + misalign % lineSize + size + offset + lineSize <= INT_MAX;
}

} // namespace

void* bx_malloc(int size) {
    if (size < 0)
        return nullptr;
    void* start = std::malloc(static_cast<std::size_t>(size) + bookkeeping);
    if (!start)
        return nullptr;
    const std::size_t beyondLine = (reinterpret_cast<std::uintptr_t>(start) + headRoom) % lineSize;
    void* raw = static_cast<char*>(start) + headRoom - beyondLine;
    startOf(raw) = start;
    return raw;
}

/**
 * With x = raw + offset the block is at (x + 63) AND (m - 64): for offsets that are multiples of 64, m bytes
 * past x.
 */
void* bx_malloc(void*& raw, int size, int misalign, int offset) {
    const int m = misalign % lineSize;
    raw = fits(size, misalign, offset) ? bx_malloc(m + size + offset + lineSize) : nullptr;
    if (!raw)
        return nullptr;
    const auto base = reinterpret_cast<std::uintptr_t>(raw);
    const auto mask = static_cast<std::uintptr_t>(static_cast<std::intptr_t>(m - lineSize));
    const std::uintptr_t aligned = (base + static_cast<std::uintptr_t>(offset) + (lineSize - 1)) & mask;
    return static_cast<char*>(raw) + static_cast<std::ptrdiff_t>(aligned - base);
}

void bx_free(void* raw) {
    if (raw)
        std::free(startOf(raw));
}

void* bxMalloc(int size, int misalign, int offset, void* owner) {
    if (!fits(size, misalign, offset)) {
        bxDataError(bxString() << size << " bytes at offset " << offset);
        return nullptr;
    }
    const Busy busy;
    Address block = obtain(size, misalign, offset);
    if (!block.aligned) {
        memError(size);
        return nullptr;
    }
    block.owner = static_cast<bxObject*>(owner);
    block.number = ++s_allocated;
    if (!s_table)
        s_table = new AddressList;
    s_table->add(block);
    log(" - bxMalloc: ", &block);
    return block.aligned;
}

void* bxMalloc(void*& ptr, int size, int misalign, int offset) {
    return ptr = bxMalloc(size, misalign, offset, nullptr);
}

void bxFree(void* ptr) {
    if (!s_table || !ptr)
        return;
    const Busy busy;
    const auto found = s_table->lookup(ptr);
    if (found == s_table->end())
        return log(" - bxFree: ", nullptr);
    log(" - bxFree: ", &*found);
    const Address block = *found;
    s_table->remove(found);
    giveBack(block);
}

void bxAllocatorLeft() {
    s_busy = 0;
}

bool bxAllocatorBusy() {
    return s_busy != 0;
}

bool bxMallocInfo(void* ptr, int* size, void** owner) {
    if (!s_table)
        return false;
    const auto found = s_table->lookup(ptr);
    return found != s_table->end() && describe(&*found, size, owner);
}

void* bxMallocFirst(int* size, void** owner) {
    if (s_table)
        s_table->rewind();
    return bxMallocNext(size, owner);
}

void* bxMallocNext(int* size, void** owner) {
    return describe(s_table ? s_table->next() : nullptr, size, owner);
}

void bxFreeAll() {
    delete s_table;
    s_table = nullptr;
}

long long bxMallocMark() {
    return s_allocated;
}

int bxFreeSince(long long mark) {
    if (!s_table)
        return 0;
    auto block = s_table->end();
    while (block != s_table->begin() && std::prev(block)->number > mark)
        --block;
    int n = 0;
    for (; block != s_table->end(); ++n)
        bxFree((block++)->aligned);
    return n;
}

long long bxAllocatedSize() {
    return s_table ? s_table->totalSize() : 0;
}

int bxReserveAllVectors() {
    return forAllOwners(&bxObject::reserveCopy);
}

int bxResetAllVectors() {
    return forAllOwners(&bxObject::setReservedCopy);
}

bool memError(int size) {
    ++g_placement.failures;
    g_ostrm << ERR << "-- Memory error: can't allocate " << size << " bytes\n" << endMessage;
    return false;
}

bool bxDataError(const bxString& what) {
    ++g_placement.failures;
    g_ostrm << ERR << "-- Data error: no block can hold " << what << "\n" << endMessage;
    return false;
}
