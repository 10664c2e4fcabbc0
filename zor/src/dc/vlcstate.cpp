#include "dc/vlcstate.h"

#include <algorithm>
#include <span>

using namespace zor;
using namespace zor::vlc;

ZorVLCEncodeState_32s* ZorVLCEncodeState_32s::place(Arena& arena, int size, LengthRange lengths) {
    auto* state = arena.take<ZorVLCEncodeState_32s>(1);
    auto* words = arena.take<Word>(static_cast<std::size_t>(size));
    if (state)
        *state = {expectedTag, size, lengths, words};
    return state;
}

ZorVLCDecodeState_32s* ZorVLCDecodeState_32s::place(Arena& arena, int size, LengthRange lengths,
                                                    std::size_t entryCount) {
    auto* state = arena.take<ZorVLCDecodeState_32s>(1);
    auto* entries = arena.take<PrefixEntry>(entryCount);
    if (state)
        *state = {expectedTag, size, lengths, entries};
    return state;
}

namespace {

using Records = std::span<const ZorVLCTable_32s>;

bool validWord(const ZorVLCTable_32s& record) {
    return record.length >= 1 && record.length <= maxLength && record.code >= 0 &&
           record.code >> record.length == 0;
}

ZorStatus checkTable(const ZorVLCTable_32s* table, int size, const void* result) {
    if (!table || !result)
        return zorStsNullPtrErr;
    if (size < 1)
        return zorStsSizeErr;
    const Records records{table, static_cast<std::size_t>(size)};
    return std::all_of(records.begin(), records.end(), validWord) ? zorStsNoErr : zorStsBadArgErr;
}

LengthRange lengthRange(Records records) {
    const auto shorter = [](const ZorVLCTable_32s& a, const ZorVLCTable_32s& b) {
        return a.length < b.length;
    };
    const auto [shortest, longest] = std::minmax_element(records.begin(), records.end(), shorter);
    return {shortest->length, longest->length};
}

/** Enters every code word under its value; false when a value is out of its range or comes twice. */
bool fillWords(Records records, Word* words) {
    std::fill_n(words, records.size(), Word{0});
    for (const ZorVLCTable_32s& record : records) {
        if (record.value < 0 || static_cast<std::size_t>(record.value) >= records.size())
            return false;
        Word& word = words[record.value];
        if (word.packed != 0)
            return false;
        word.packed = static_cast<Zor32u>(record.length) << maxLength | static_cast<Zor32u>(record.code);
    }
    return true;
}

} // namespace

extern "C" ZorStatus zorsVLCEncodeInitAlloc_32s(const ZorVLCTable_32s* table, int tableSize,
                                                ZorVLCEncodeState_32s** state) {
    if (const ZorStatus status = checkTable(table, tableSize, state); status != zorStsNoErr)
        return status;
    const Records records{table, static_cast<std::size_t>(tableSize)};
    auto* built = allocateState<ZorVLCEncodeState_32s>(tableSize, lengthRange(records));
    if (!built)
        return zorStsMemAllocErr;
    if (!fillWords(records, built->words)) {
        freeState(built);
        return zorStsBadArgErr;
    }
    *state = built;
    return zorStsNoErr;
}

extern "C" ZorStatus zorsVLCDecodeInitAlloc_32s(const ZorVLCTable_32s* table, int tableSize,
                                                ZorVLCDecodeState_32s** state) {
    if (const ZorStatus status = checkTable(table, tableSize, state); status != zorStsNoErr)
        return status;
    const Records records{table, static_cast<std::size_t>(tableSize)};
    Table::PrefixBits bits;
    const std::size_t total = Table::measure(records, bits);
    auto* built = allocateState<ZorVLCDecodeState_32s>(tableSize, lengthRange(records), total);
    if (!built)
        return zorStsMemAllocErr;
    if (!Table::build(records, bits, {built->entries, total})) {
        freeState(built);
        return zorStsBadArgErr;
    }
    *state = built;
    return zorStsNoErr;
}

extern "C" ZorStatus zorsVLCEncodeFree_32s(ZorVLCEncodeState_32s* state) {
    return freeState(state);
}

extern "C" ZorStatus zorsVLCDecodeFree_32s(ZorVLCDecodeState_32s* state) {
    return freeState(state);
}
