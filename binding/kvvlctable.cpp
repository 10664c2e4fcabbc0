#include "kvvlctable.h"

#include "tables/vlc_aac_pairs.h"
#include "tables/vlc_mp3_pairs.h"

#include <array>

namespace {

namespace aac = kv::tables::vlc_aac_pairs;
namespace mp3 = kv::tables::vlc_mp3_pairs;

/** The pair's number, counted x slowest. */
constexpr Zor32s encoderValue(int x, int y, int largest) {
    return (x + largest) * (2 * largest + 1) + (y + largest);
}

/** x in the high, y in the low 16 bits. */
constexpr Zor32s decoderValue(int x, int y, int) {
    return static_cast<Zor32s>(static_cast<Zor32u>(x) << 16 | (static_cast<Zor32u>(y) & 0xFFFFU));
}

/** The records of all pairs up to a magnitude; `value` packs a pair. */
template <int largest, class Code, class Length>
constexpr auto records(const Code& code, const Length& length, Zor32s (*value)(int, int, int)) {
    constexpr int width = 2 * largest + 1;
    std::array<ZorVLCTable_32s, width * width> table{};
    for (int i = 0; i < width * width; ++i)
        table[static_cast<std::size_t>(i)] = {value(i / width - largest, i % width - largest, largest),
                                              code[i], length[i]};
    return table;
}

constexpr auto encodeAac = records<16>(aac::code, aac::length, encoderValue);
constexpr auto decodeAac = records<16>(aac::code, aac::length, decoderValue);
constexpr auto encodeMp3 = records<15>(mp3::code, mp3::length, encoderValue);
constexpr auto decodeMp3 = records<15>(mp3::code, mp3::length, decoderValue);

} // namespace

bool kvacVLCTable::setTableEncode_AAC() {
    m_table = encodeAac.data();
    m_size = getTableSize_AAC();
    return true;
}

bool kvacVLCTable::setTableDecode_AAC() {
    m_table = decodeAac.data();
    m_size = getTableSize_AAC();
    return true;
}

bool kvacVLCTable::setTableEncode_MP3() {
    m_table = encodeMp3.data();
    m_size = getTableSize_MP3();
    return true;
}

bool kvacVLCTable::setTableDecode_MP3() {
    m_table = decodeMp3.data();
    m_size = getTableSize_MP3();
    return true;
}

int kvacVLCTable::getTableSize_AAC() const {
    return static_cast<int>(encodeAac.size());
}

int kvacVLCTable::getTableSize_MP3() const {
    return static_cast<int>(encodeMp3.size());
}
