#include "common/bitreader.h"
#include "common/bitwriter.h"
#include "common/check.h"
#include "dc/vlcstate.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace zor::vlc {

namespace {

/** Bits of a magnitude without leading zeros. */
int bitWidth(int magnitude) {
    return static_cast<int>(std::bit_width(static_cast<unsigned>(magnitude)));
}

/** A pair of values with what coding it needs. */
struct Pair {
    int x, y;
    int ax, ay; // magnitudes

    explicit Pair(const Zor16s* values) : x(values[0]), y(values[1]), ax(std::abs(x)), ay(std::abs(y)) {}
    [[nodiscard]] int signBits() const { return (x != 0) + (y != 0); }
};

/** The escape book of AAC: sequences of ones, a zero and the low bits of the magnitude. */
struct AacBook {
    static constexpr int largest = 16;
    static constexpr int longest = 14; // bits of a code word with its signs
    static constexpr int maxOnes = 8;

    static constexpr bool valid() { return true; }
    static constexpr int limit() { return 8191; }
    static int escapeBits(int magnitude) { return magnitude < largest ? 0 : 2 * bitWidth(magnitude) - 5; }

    static void write(BitWriter& out, Word word, const Pair& pair) {
        out.put(word.code(), word.length());
        writeEscape(out, pair.ax);
        writeEscape(out, pair.ay);
    }

    /** False where an escape is longer than the format allows. */
    static bool read(BitReader& in, const PrefixEntry& entry, int& x, int& y) {
        in.skip(entry.length);
        return readEscape(in, x) && readEscape(in, y);
    }

  private:
    static void writeEscape(BitWriter& out, int magnitude) {
        if (magnitude < largest)
            return;
        const int low = bitWidth(magnitude) - 1;
        const int ones = low - 4;
        out.put((Zor32u{1} << (ones + 1)) - 2, ones + 1);
        out.put(static_cast<Zor32u>(magnitude) - (Zor32u{1} << low), low);
    }

    static bool readEscape(BitReader& in, int& value) {
        if (std::abs(value) < largest)
            return true;
        const int ones = std::countl_one(in.window());
        if (ones > maxOnes)
            return false;
        in.skip(ones + 1);
        const int magnitude = (1 << (ones + 4)) + static_cast<int>(in.get(ones + 4));
        value = value < 0 ? -magnitude : magnitude;
        return true;
    }
};

/** The escape book of MP3: the excess of a magnitude stands between the code word and its sign. */
struct Mp3Book {
    static constexpr int largest = 15;
    static constexpr int longest = 14;
    int linBits;

    [[nodiscard]] bool valid() const { return linBits >= 0 && linBits <= 13; }
    [[nodiscard]] int limit() const { return largest + (1 << linBits) - 1; }
    [[nodiscard]] int escapeBits(int magnitude) const { return magnitude < largest ? 0 : linBits; }

    void write(BitWriter& out, Word word, const Pair& pair) const {
        if (linBits == 0 || (pair.ax < largest && pair.ay < largest)) {
            out.put(word.code(), word.length());
            return;
        }
        const int signs = pair.signBits();
        out.put(word.code() >> signs, word.length() - signs);
        writeValue(out, pair.x, pair.ax);
        writeValue(out, pair.y, pair.ay);
    }

    bool read(BitReader& in, const PrefixEntry& entry, int& x, int& y) const {
        if (linBits == 0 || (std::abs(x) < largest && std::abs(y) < largest)) {
            in.skip(entry.length);
            return true;
        }
        // The magnitudes are right; what was looked up as sign bits is the first excess.
        in.skip(entry.length - (x != 0) - (y != 0));
        readValue(in, x);
        readValue(in, y);
        return true;
    }

  private:
    void writeValue(BitWriter& out, int value, int magnitude) const {
        if (magnitude >= largest)
            out.put(static_cast<Zor32u>(magnitude - largest), linBits);
        if (value != 0)
            out.put(value < 0, 1);
    }

    void readValue(BitReader& in, int& value) const {
        if (value == 0)
            return;
        int magnitude = std::abs(value);
        if (magnitude == largest)
            magnitude += static_cast<int>(in.get(linBits));
        value = in.get(1) != 0 ? -magnitude : magnitude;
    }
};

template <class Book>
constexpr int codeSize = (2 * Book::largest + 1) * (2 * Book::largest + 1);

template <class Book>
Word wordOf(const ZorVLCEncodeState_32s& state, const Pair& pair) {
    constexpr int most = Book::largest;
    const int x = std::clamp(pair.x, -most, most);
    const int y = std::clamp(pair.y, -most, most);
    return state.words[(x + most) * (2 * most + 1) + (y + most)];
}

template <class Book, class State>
ZorStatus check(const Book& book, const void* values, int length, const State* state) {
    if (!values || !state)
        return zorStsNullPtrErr;
    if (length < 2 || length % 2 != 0)
        return zorStsSizeErr;
    if (!book.valid())
        return zorStsBadArgErr;
    if (state->tag != State::expectedTag || state->size != codeSize<Book>)
        return zorStsContextErr;
    // Codes that cannot be this book's: without room for the signs, or too long for one refill of the reader.
    return state->lengths.shortest > 2 && state->lengths.longest <= Book::longest ? zorStsNoErr
                                                                                  : zorStsContextErr;
}

/** The bits of a block; false when a value is too large. */
template <class Book>
bool countBits(const Book& book, const Zor16s* values, int length, const ZorVLCEncodeState_32s& state,
               Zor64s& bits) {
    int largest = 0;
    Zor64s total = 0;
    for (const Zor16s* end = values + length; values < end; values += 2) {
        const Pair pair(values);
        largest = std::max({largest, pair.ax, pair.ay});
        total += wordOf<Book>(state, pair).length() + book.escapeBits(pair.ax) + book.escapeBits(pair.ay);
    }
    bits = total;
    return largest <= book.limit();
}

template <class Book>
ZorStatus count(const Book& book, const Zor16s* values, int length, Zor32s* bits,
                const ZorVLCEncodeState_32s* state) {
    if (!bits)
        return zorStsNullPtrErr;
    if (const ZorStatus status = check(book, values, length, state); status != zorStsNoErr)
        return status;
    Zor64s total = 0;
    if (!countBits(book, values, length, *state, total))
        return zorStsBadArgErr;
    if (total > 0x7FFFFFFF)
        return zorStsSizeErr;
    *bits = static_cast<Zor32s>(total);
    return zorStsNoErr;
}

/** The status of a position in a stream. */
template <class Byte>
ZorStatus checkStream(Byte** stream, const int* offset, const Zor8u* end) {
    if (anyNull(stream, offset, end) || !*stream)
        return zorStsNullPtrErr;
    if (*offset < 0 || *offset > 7)
        return zorStsBadArgErr;
    return *stream <= end ? zorStsNoErr : zorStsStreamEndErr;
}

template <class Book>
ZorStatus encode(const Book& book, const Zor16s* values, int length, Zor8u** stream, int* offset,
                 const Zor8u* end, const ZorVLCEncodeState_32s* state) {
    if (const ZorStatus status = checkStream(stream, offset, end); status != zorStsNoErr)
        return status;
    if (const ZorStatus status = check(book, values, length, state); status != zorStsNoErr)
        return status;
    Zor64s bits = 0;
    if (!countBits(book, values, length, *state, bits))
        return zorStsBadArgErr;
    if (*offset + bits > static_cast<Zor64s>(end - *stream) * 8)
        return zorStsStreamEndErr;
    BitWriter out(*stream, *offset);
    for (const Zor16s* last = values + length; values < last; values += 2) {
        const Pair pair(values);
        book.write(out, wordOf<Book>(*state, pair), pair);
    }
    out.finish(stream, offset);
    return zorStsNoErr;
}

template <class Book>
ZorStatus decode(const Book& book, const Zor8u** stream, int* offset, const Zor8u* end, Zor16s* values,
                 int length, const ZorVLCDecodeState_32s* state) {
    if (const ZorStatus status = checkStream(stream, offset, end); status != zorStsNoErr)
        return status;
    if (const ZorStatus status = check(book, values, length, state); status != zorStsNoErr)
        return status;
    BitReader in(*stream, *offset, end);
    for (const Zor16s* last = values + length; values < last; values += 2) {
        // A pair takes at most 14 + 2 * 21 bits (AAC) or 14 + 2 * 13 (MP3): one refill is enough.
        in.refill();
        const PrefixEntry& entry = state->find(in.window());
        int x = entry.value >> 16;
        int y = static_cast<Zor16s>(entry.value & 0xFFFF);
        if (entry.length == 0 || !book.read(in, entry, x, y))
            return zorStsBadStreamErr;
        values[0] = static_cast<Zor16s>(x);
        values[1] = static_cast<Zor16s>(y);
    }
    if (in.overrun())
        return zorStsStreamEndErr;
    in.store(stream, offset);
    return zorStsNoErr;
}

} // namespace

} // namespace zor::vlc

using namespace zor::vlc;

extern "C" ZorStatus zorsVLCEncodeEscBlock_AAC_16s1u(const Zor16s* src, int length, Zor8u** bitStream,
                                                     int* bitOffset, const Zor8u* bitStreamEnd,
                                                     const ZorVLCEncodeState_32s* state) {
    return encode(AacBook{}, src, length, bitStream, bitOffset, bitStreamEnd, state);
}

extern "C" ZorStatus zorsVLCCountEscBits_AAC_16s32s(const Zor16s* src, int length, Zor32s* countBits,
                                                    const ZorVLCEncodeState_32s* state) {
    return count(AacBook{}, src, length, countBits, state);
}

extern "C" ZorStatus zorsVLCDecodeEscBlock_AAC_1u16s(const Zor8u** bitStream, int* bitOffset,
                                                     const Zor8u* bitStreamEnd, Zor16s* dst, int length,
                                                     const ZorVLCDecodeState_32s* state) {
    return decode(AacBook{}, bitStream, bitOffset, bitStreamEnd, dst, length, state);
}

extern "C" ZorStatus zorsVLCEncodeEscBlock_MP3_16s1u(const Zor16s* src, int length, int linBits,
                                                     Zor8u** bitStream, int* bitOffset,
                                                     const Zor8u* bitStreamEnd,
                                                     const ZorVLCEncodeState_32s* state) {
    return encode(Mp3Book{linBits}, src, length, bitStream, bitOffset, bitStreamEnd, state);
}

extern "C" ZorStatus zorsVLCCountEscBits_MP3_16s32s(const Zor16s* src, int length, int linBits,
                                                    Zor32s* countBits, const ZorVLCEncodeState_32s* state) {
    return count(Mp3Book{linBits}, src, length, countBits, state);
}

extern "C" ZorStatus zorsVLCDecodeEscBlock_MP3_1u16s(const Zor8u** bitStream, int* bitOffset,
                                                     const Zor8u* bitStreamEnd, Zor16s* dst, int length,
                                                     int linBits, const ZorVLCDecodeState_32s* state) {
    return decode(Mp3Book{linBits}, bitStream, bitOffset, bitStreamEnd, dst, length, state);
}
