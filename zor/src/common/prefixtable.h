/** \file
 * Look-up tables for prefix codes: the next bits of a stream find their code word in one or two reads.
 */
#ifndef ZOR_COMMON_PREFIXTABLE_H
#define ZOR_COMMON_PREFIXTABLE_H

#include "zortypes.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace zor {

/**
 * What the next bits of the stream stand for: a value and the length of its code word; a length of 0 where no
 * code word fits; or, with `more` bits above 0, the place of the table for those bits.
 */
struct PrefixEntry {
    Zor32s value;
    Zor16s length;
    Zor16s more;
};

/**
 * Tables whose root looks at `rootBits` bits; words that are longer go on in a table of their own prefix. A
 * Record has the fields value, code and length; its code fits into its length.
 */
template <int rootBits>
struct PrefixTable {
    static constexpr std::size_t rootSize = std::size_t{1} << rootBits;
    /** Per prefix of rootBits bits: how many bits the longest of its words has beyond. */
    using PrefixBits = Zor8u[rootSize];

    /** Finds the sizes of the tables behind the root; returns the number of entries of all tables. */
    template <class Record>
    static constexpr std::size_t measure(std::span<const Record> records, PrefixBits& bits) {
        std::fill_n(bits, rootSize, Zor8u{0});
        for (const Record& record : records)
            if (record.length > rootBits) {
                Zor8u& longest = bits[prefixOf(record)];
                longest = std::max(longest, static_cast<Zor8u>(record.length - rootBits));
            }
        std::size_t total = rootSize;
        for (const Zor8u count : bits)
            total += count > 0 ? std::size_t{1} << count : 0;
        return total;
    }

    /** Fills the entries that `measure` counted; false when a word is, or begins, another one. */
    template <class Record>
    static constexpr bool build(std::span<const Record> records, const PrefixBits& bits,
                                std::span<PrefixEntry> entries) {
        linkTables(bits, entries);
        return std::all_of(records.begin(), records.end(),
                           [&](const Record& record) { return fillWord(record, entries.data()); });
    }

    /** Looks the next bits up; `window` holds them, the first one most significant. */
    static constexpr const PrefixEntry& find(const PrefixEntry* entries, Zor64u window) {
        const PrefixEntry* entry = entries + (window >> (64 - rootBits));
        if (entry->more > 0)
            entry = entries + entry->value + (window << rootBits >> (64 - entry->more));
        return *entry;
    }

  private:
    /** The root index of a word longer than rootBits. */
    template <class Record>
    static constexpr std::size_t prefixOf(const Record& record) {
        return static_cast<std::size_t>(record.code >> (record.length - rootBits));
    }

    static constexpr void linkTables(const PrefixBits& bits, std::span<PrefixEntry> entries) {
        std::fill(entries.begin(), entries.end(), PrefixEntry{0, 0, 0});
        auto next = static_cast<Zor32s>(rootSize);
        for (std::size_t prefix = 0; prefix < rootSize; ++prefix)
            if (bits[prefix] > 0) {
                entries[prefix] = {next, 0, bits[prefix]};
                next += Zor32s{1} << bits[prefix];
            }
    }

    /** Enters a word wherever the bits that a table looks at begin with it; false where another one is. */
    static constexpr bool fillRange(PrefixEntry* table, int tableBits, Zor32u code, int length,
                                    PrefixEntry entry) {
        const int open = tableBits - length;
        PrefixEntry* first = table + (static_cast<std::size_t>(code) << open);
        PrefixEntry* last = first + (std::size_t{1} << open);
        if (std::any_of(first, last, [](const PrefixEntry& old) { return old.length != 0 || old.more != 0; }))
            return false;
        std::fill(first, last, entry);
        return true;
    }

    template <class Record>
    static constexpr bool fillWord(const Record& record, PrefixEntry* entries) {
        const PrefixEntry entry{record.value, static_cast<Zor16s>(record.length), 0};
        const auto code = static_cast<Zor32u>(record.code);
        const int beyond = record.length - rootBits;
        if (beyond <= 0)
            return fillRange(entries, rootBits, code, record.length, entry);
        const PrefixEntry link = entries[prefixOf(record)];
        if (link.more == 0) // a shorter word has taken the prefix
            return false;
        return fillRange(entries + link.value, link.more, code & ((Zor32u{1} << beyond) - 1), beyond, entry);
    }
};

} // namespace zor

#endif
