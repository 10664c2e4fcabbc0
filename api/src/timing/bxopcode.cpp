#include "timing/bxopcode.h"

#include <algorithm>
#include <array>

namespace {

constexpr bool longMode = sizeof(void*) == 8;

struct Range {
    int first, last;
};

/** Opcodes of one byte with a ModRM byte, beside the arithmetic ones of the first 64. */
constexpr std::array modRmOneByte = {
    Range{0x62, 0x63}, Range{0x69, 0x69}, Range{0x6B, 0x6B}, Range{0x80, 0x8F}, Range{0xC0, 0xC1},
    Range{0xC4, 0xC7}, Range{0xD0, 0xD3}, Range{0xD8, 0xDF}, Range{0xF6, 0xF7}, Range{0xFE, 0xFF}};
/** Opcodes behind 0F without one. */
constexpr std::array noModRmTwoBytes = {Range{0x04, 0x0C}, Range{0x0E, 0x0E}, Range{0x30, 0x37},
                                        Range{0x77, 0x77}, Range{0x80, 0x8F}, Range{0xA0, 0xA2},
                                        Range{0xA8, 0xAA}, Range{0xC8, 0xCF}};
/** String operations. */
constexpr std::array stringCodes = {Range{0x6C, 0x6F}, Range{0xA4, 0xA7}, Range{0xAA, 0xAF}};

template <class Ranges>
constexpr bool holds(const Ranges& ranges, int code) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [code](const Range& r) { return code >= r.first && code <= r.last; });
}

constexpr bool isPrefix(int byte) {
    constexpr std::array prefixes = {0x26, 0x2E, 0x36, 0x3E, 0x64, 0x65, 0x66, 0x67, 0xF0, 0xF2, 0xF3};
    return std::find(prefixes.begin(), prefixes.end(), byte) != prefixes.end() ||
           (longMode && byte >= 0x40 && byte <= 0x4F);
}

enum Map { oneByte, twoBytes, others };

/** Steps through the bytes of one instruction. */
class Decoder {
  public:
    explicit Decoder(const std::uint8_t* code) : m_start(code), m_at(code) {}

    bxOpcode decode() {
        bool repeats = false;
        for (; isPrefix(*m_at); ++m_at)
            repeats |= *m_at == 0xF2 || *m_at == 0xF3;
        const Map map = takeMap();
        const int code = *m_at++;
        bxOpcode opcode{.kind = kindOf(map, code, repeats)};
        if (hasModRm(map, code))
            takeModRm(opcode, map == oneByte && code == 0x8E);
        opcode.formBytes = static_cast<int>(m_at - m_start);
        return opcode;
    }

  private:
    /** Outside of long mode these opcodes have another meaning with a memory operand. */
    bool isVectorPrefix() const { return longMode || m_at[1] >= 0xC0; }

    /** Moves to the opcode. */
    Map takeMap() {
        if (*m_at == 0x0F)
            return takeEscape();
        const int bytes = *m_at == 0xC5 ? 2 : *m_at == 0xC4 ? 3 : *m_at == 0x62 ? 4 : 0;
        if (bytes == 0 || !isVectorPrefix())
            return oneByte;
        // VZEROUPPER and VZEROALL are the only ones without a ModRM byte, in the map of two bytes.
        const bool zeroes = bytes < 4 && m_at[bytes] == 0x77 && (bytes == 2 || (m_at[1] & 0x1F) == 1);
        m_at += bytes;
        return zeroes ? twoBytes : others;
    }

    Map takeEscape() {
        ++m_at;
        if (*m_at != 0x38 && *m_at != 0x3A)
            return twoBytes;
        ++m_at;
        return others;
    }

    bxOpcode::Kind kindOf(Map map, int code, bool repeats) const {
        if (map == twoBytes)
            return code == 0x05 || code == 0x34 ? bxOpcode::systemCall : bxOpcode::plain;
        if (map != oneByte)
            return bxOpcode::plain;
        if (repeats && holds(stringCodes, code))
            return bxOpcode::repeatedString;
        switch (code) {
        case 0x17:
            return longMode ? bxOpcode::plain : bxOpcode::loadsStack;
        case 0x9D:
            return bxOpcode::popsFlags;
        case 0xCC:
        case 0xCE:
        case 0xF1:
            return bxOpcode::interrupt;
        case 0xCD:
            return *m_at == 0x80 ? bxOpcode::systemCall : bxOpcode::interrupt;
        case 0xCF:
            return bxOpcode::interruptReturn;
        default:
            return bxOpcode::plain;
        }
    }

    static bool hasModRm(Map map, int code) {
        switch (map) {
        case oneByte:
            return code < 0x40 ? (code & 7) < 4 : holds(modRmOneByte, code);
        case twoBytes:
            return !holds(noModRmTwoBytes, code);
        default:
            return true;
        }
    }

    void takeModRm(bxOpcode& opcode, bool loadsSegment) {
        const int modRm = *m_at++;
        const int mode = modRm >> 6;
        const int base = modRm & 7;
        constexpr int stackSegment = 2;
        if (loadsSegment && (modRm >> 3 & 7) == stackSegment)
            opcode.kind = bxOpcode::loadsStack;
        if (mode == 3)
            return;
        const int addressed = base == 4 ? *m_at++ & 7 : base;
        opcode.displacement = mode == 1 ? 1 : mode == 2 || addressed == 5 ? 4 : 0;
    }

    const std::uint8_t* m_start;
    const std::uint8_t* m_at;
};

} // namespace

bxOpcode bxDecodeOpcode(const std::uint8_t* code) {
    return Decoder(code).decode();
}
