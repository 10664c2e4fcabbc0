/** \file
 * Writes a bit stream, most significant bit first.
 */
#ifndef ZOR_COMMON_BITWRITER_H
#define ZOR_COMMON_BITWRITER_H

#include "zortypes.h"

#include <cstring>

namespace zor {

/** Appends bits from a position on. The caller has checked that there is room; `finish` writes the last bits.
 */
class BitWriter {
  public:
    BitWriter(Zor8u* bytes, int bitOffset) : m_bytes(bytes), m_count(bitOffset) {
        if (bitOffset > 0)
            m_register = static_cast<Zor64u>(*bytes >> (8 - bitOffset));
    }

    /** The low 0 to 32 bits of a value that has no others. */
    void put(Zor32u value, int count) {
        m_register = m_register << count | value;
        m_count += count;
        if (m_count >= 32) {
            m_count -= 32;
            const Zor32u word = __builtin_bswap32(static_cast<Zor32u>(m_register >> m_count));
            std::memcpy(m_bytes, &word, sizeof word);
            m_bytes += sizeof word;
        }
    }

    /** Writes what is left, keeps the bits behind it and hands the position back. */
    void finish(Zor8u** bytes, int* bitOffset) {
        for (; m_count >= 8; m_count -= 8)
            *m_bytes++ = static_cast<Zor8u>(m_register >> (m_count - 8));
        if (m_count > 0) {
            const auto kept = static_cast<Zor8u>(*m_bytes & (0xFF >> m_count));
            *m_bytes = static_cast<Zor8u>(m_register << (8 - m_count) | kept);
        }
        *bytes = m_bytes;
        *bitOffset = m_count;
    }

  private:
    Zor8u* m_bytes;
    Zor64u m_register = 0; // the low m_count bits are still to be written
    int m_count;
};

} // namespace zor

#endif
