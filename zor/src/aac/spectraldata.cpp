#include "aac/spectraldata.h"

#include "aac/huffman.h"

#include <bit>

namespace zor::aac {

namespace {

/** The kinds of spectral books, known to the compiler for each loop. */
struct BookKind {
    int dimension;
    bool isSigned;
    bool escapes;
};

/** Gives a magnitude the sign of the next bit, if it is not 0: it alone has a sign bit. */
int signedValue(int magnitude, Zor64u& signs) {
    const int present = magnitude != 0;
    const int negative = static_cast<int>(signs >> 63) & present;
    signs <<= present;
    return (magnitude ^ -negative) + negative;
}

/** Reads the escape sequence of a value that asks for one: N ones, a zero, N + 4 bits. */
bool readEscape(BitReader& in, int& value) {
    if (value != escapeMagnitude && value != -escapeMagnitude)
        return true;
    const int ones = std::countl_one(in.window());
    if (ones > 8)
        return false;
    in.skip(ones + 1);
    const int magnitude = (1 << (ones + 4)) + static_cast<int>(in.get(ones + 4));
    value = value < 0 ? -magnitude : magnitude;
    return true;
}

template <BookKind kind>
bool decodeKind(BitReader& stream, const PrefixEntry* table, Zor32s* lines, int count) {
    BitReader in = stream; // a copy that lives in registers
    bool valid = true;
    for (const Zor32s* end = lines + count; lines < end; lines += kind.dimension) {
        // At most 12 bits of code, 2 signs and 2 escapes of 21 bits: one refill is enough.
        in.refill();
        const PrefixEntry entry = BookTable::find(table, in.window());
        Zor64u signs = in.window() << entry.length;
        in.skip(entry.length + (kind.isSigned ? 0 : packing::nonZero(entry.value)));
        for (int i = 0; i < kind.dimension; ++i) {
            const int value = packing::value(entry.value, i);
            lines[i] = kind.isSigned ? value : signedValue(value, signs);
        }
        if constexpr (kind.escapes)
            for (int i = 0; i < kind.dimension; ++i)
                valid &= readEscape(in, lines[i]);
    }
    stream = in;
    return valid;
}

} // namespace

bool decodeLines(BitReader& in, int book, Zor32s* lines, int count) {
    const PrefixEntry* table = spectralBook(book);
    if (book <= 2)
        return decodeKind<BookKind{4, true, false}>(in, table, lines, count);
    if (book <= 4)
        return decodeKind<BookKind{4, false, false}>(in, table, lines, count);
    if (book <= 6)
        return decodeKind<BookKind{2, true, false}>(in, table, lines, count);
    if (book < escapeBook)
        return decodeKind<BookKind{2, false, false}>(in, table, lines, count);
    return decodeKind<BookKind{2, false, true}>(in, table, lines, count);
}

} // namespace zor::aac
