/** \file
 * Reads a bit stream, most significant bit first.
 */
#ifndef ZOR_COMMON_BITREADER_H
#define ZOR_COMMON_BITREADER_H

#include "zortypes.h"

#include <bit>
#include <cstddef>
#include <cstring>

namespace zor {

/** Eight bytes as a number, the first one most significant. */
inline Zor64u loadBigEndian64(const Zor8u* bytes) {
    Zor64u value;
    std::memcpy(&value, bytes, sizeof value);
    return __builtin_bswap64(value);
}

/**
 * A position in a bit stream with the next bits in a register. `refill` tops the register up to at least 56
 * bits; between two refills `window`, `skip` and `get` may use as many, without a check. Beyond the end of
 * the stream the bits are 0; whether they were used is asked once, at the end (`overrun`).
 */
class BitReader {
  public:
    static constexpr int refilled = 56;

    BitReader(const Zor8u* bytes, int bitOffset, const Zor8u* end) : m_bytes(bytes), m_size(end - bytes) {
        refill();
        skip(bitOffset);
    }

    void refill() {
        if (m_size - m_next >= 8) {
            // The bits beyond those counted are the stream's too: the next refill sets them again.
            m_register |= loadBigEndian64(m_bytes + m_next) >> m_count;
            m_next += (63 - m_count) >> 3;
            m_count |= refilled;
        } else {
            refillBytes();
        }
    }

    /** The next bits, the first one most significant. */
    [[nodiscard]] Zor64u window() const { return m_register; }
    /** The next bits as a number; count is 1 to 32. */
    [[nodiscard]] Zor32u peek(int count) const { return static_cast<Zor32u>(m_register >> (64 - count)); }

    /** Passes over 0 to 56 bits. */
    void skip(int count) {
        m_register <<= count;
        m_count -= count;
    }

    /** The next 0 to 32 bits as a number. */
    Zor32u get(int count) {
        const auto value = static_cast<Zor32u>(m_register >> 1 >> (63 - count));
        skip(count);
        return value;
    }

    /** `get` for use between elements, where the register may be empty. */
    Zor32u read(int count) {
        refill();
        return get(count);
    }

    /** Goes on to the next byte boundary. */
    void align() {
        refill();
        skip(m_count & 7);
    }

    /** Bits used so far, from the first bit of the first byte. */
    [[nodiscard]] std::ptrdiff_t position() const { return m_next * 8 - m_count; }
    [[nodiscard]] bool overrun() const { return position() > m_size * 8; }
    /** Bytes from the present byte boundary on. */
    [[nodiscard]] const Zor8u* bytes() const { return m_bytes + position() / 8; }

    /** Hands the position back to the caller. */
    void store(const Zor8u** bytes, int* bitOffset) const {
        *bytes = m_bytes + position() / 8;
        *bitOffset = static_cast<int>(position() % 8);
    }

  private:
    void refillBytes() {
        for (; m_count < refilled; m_count += 8, ++m_next)
            if (m_next < m_size)
                m_register |= static_cast<Zor64u>(m_bytes[m_next]) << (refilled - m_count);
    }

    const Zor8u* m_bytes;
    std::ptrdiff_t m_size;
    std::ptrdiff_t m_next = 0; // the byte that follows those counted
    Zor64u m_register = 0;
    int m_count = 0; // bits of the register that count
};

} // namespace zor

#endif
