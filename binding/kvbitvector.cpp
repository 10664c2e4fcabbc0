#include "kvbitvector.h"

#include <algorithm>
#include <string>

namespace {

constexpr int bitsPerLine = 64;

constexpr unsigned char bitMask(int bit) {
    return static_cast<unsigned char>(0x80 >> bit);
}

bxString valueBits(unsigned int value, int width, int start, int n) {
    std::string text;
    for (int i = std::max(start, 0); i < std::min(start + n, width); ++i)
        text += ((value >> (width - 1 - i)) & 1u) != 0 ? '1' : '0';
    return text.c_str();
}

} // namespace

bxString kvBitVector::objectInfo() const {
    bxString text("BitVector byteLen=");
    text << length();
    return text;
}

bxString kvBitVector::getString() const {
    return getByteString(getDataConst(), length());
}

bxString kvBitVector::getBitString(int start, int n) const {
    const int remaining = length() * 8 - start;
    if (n <= 0 || n > remaining)
        n = remaining;
    std::string text;
    for (int i = 0; i < n; ++i) {
        text += bitAt(start + i) != 0 ? '1' : '0';
        if (i + 1 == n || (i + 1) % bitsPerLine == 0)
            text += '\n';
        else if ((i + 1) % 4 == 0)
            text += ' ';
    }
    return text.c_str();
}

unsigned char kvBitVector::bitAt(int position) const {
    if (!p8u || position < 0 || position >= length() * 8)
        return 0;
    return (p8u[position / 8] & bitMask(position % 8)) != 0 ? 1 : 0;
}

void kvBitVector::setBitPos(int position) {
    m_byte = position >> 3;
    m_bit = position & 7;
}

void kvBitVector::setBit(unsigned char bit) {
    if (p8u && m_byte >= 0 && m_byte < length()) {
        const unsigned char mask = bitMask(m_bit);
        unsigned char& byte = p8u[m_byte];
        byte = static_cast<unsigned char>((bit & 1) != 0 ? byte | mask : byte & ~mask);
    }
    incrementPos();
}

unsigned char kvBitVector::getBit() {
    if (!p8u)
        return 0;
    const unsigned char bit = bitAt(getBitPos());
    incrementPos();
    return bit;
}

void kvBitVector::incrementPos() {
    setBitPos(getBitPos() + 1);
}

void kvBitVector::setBits(unsigned int value, int n) {
    for (int i = n - 1; i >= 0; --i)
        setBit(i < 32 ? static_cast<unsigned char>((value >> i) & 1u) : 0);
}

void kvBitVector::getBits(unsigned int& value, int n) {
    value = 0;
    for (int i = 0; i < n; ++i)
        value = (value << 1) | getBit();
}

void kvBitVector::setBits(const bxString& text) {
    for (const char* c = text.c_str(); *c != '\0'; ++c)
        if (*c == '0' || *c == '1')
            setBit(static_cast<unsigned char>(*c - '0'));
}

void kvBitVector::getBits(bxString& text, int n) {
    std::string bits;
    for (int i = 0; i < n; ++i) {
        if (i > 0 && getBitPos() % 4 == 0)
            bits += ' ';
        bits += getBit() != 0 ? '1' : '0';
    }
    text = bits.c_str();
}

bxString kvBitVector::bitString(unsigned char value, int start, int n) {
    return valueBits(value, 8, start, n);
}

bxString kvBitVector::bitString(unsigned int value, int start, int n) {
    return valueBits(value, 32, start, n);
}

void kvBitVector::bitprn(bxOStream& out, int start, int n) const {
    out << getBitString(start, n);
}
