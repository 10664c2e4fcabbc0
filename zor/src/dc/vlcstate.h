/** \file
 * A variable-length code as an encoder and as a decoder use it.
 */
#ifndef ZOR_DC_VLCSTATE_H
#define ZOR_DC_VLCSTATE_H

#include "common/arena.h"
#include "common/prefixtable.h"
#include "zordc.h"

namespace zor::vlc {

/** The longest code word that a table may hold. */
constexpr int maxLength = 24;
using Table = PrefixTable<10>;

/** The shortest and the longest code word of a code. */
struct LengthRange {
    int shortest, longest;
};

/** A code word with its length in one number. */
struct Word {
    Zor32u packed;

    [[nodiscard]] Zor32u code() const { return packed & 0xFFFFFFU; }
    [[nodiscard]] int length() const { return static_cast<int>(packed >> maxLength); }
};

} // namespace zor::vlc

struct ZorVLCEncodeState_32s {
    static constexpr zor::StateTag expectedTag = zor::stateTag('V', 'L', 'C', 'E');
    zor::StateTag tag;
    int size;                      /**< records of the code */
    zor::vlc::LengthRange lengths; /**< of the code words */
    zor::vlc::Word* words;         /**< by value */

    static ZorVLCEncodeState_32s* place(zor::Arena& arena, int size, zor::vlc::LengthRange lengths);
};

struct ZorVLCDecodeState_32s {
    static constexpr zor::StateTag expectedTag = zor::stateTag('V', 'L', 'C', 'D');
    zor::StateTag tag;
    int size;                      /**< records of the code */
    zor::vlc::LengthRange lengths; /**< of the code words */
    zor::PrefixEntry* entries;     /**< the root table, then the tables behind it */

    static ZorVLCDecodeState_32s* place(zor::Arena& arena, int size, zor::vlc::LengthRange lengths,
                                        std::size_t entryCount);

    [[nodiscard]] const zor::PrefixEntry& find(Zor64u window) const {
        return zor::vlc::Table::find(entries, window);
    }
};

#endif
