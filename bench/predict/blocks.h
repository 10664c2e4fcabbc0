/** \file
 * A decoder's calls of the library: each function of it stands between the two and lets a call pass, times it
 * or keeps what it was called with, for Benchex to repeat.
 *
 *     struct KeptScale { ...; KeptScale(Zor32f* x, int length); void repeat(auto* function); };
 *     Block<KeptScale, decltype(zorsScale_32f_I)> scale("zorsScale_32f_I");
 *     ZorStatus zorsScale_32f_I(Zor32f* x, int length) { return scale(x, length); }
 *
 * `repeat` copies what the function reads from where the decoder had it in the nearest cache, or changes, to
 * a place of the same kind, and calls. The copying is measured apart, by repeating without the function.
 */
#ifndef PREDICT_BLOCKS_H
#define PREDICT_BLOCKS_H

#include "zorcore.h"

#include "kv.h"
#include "system/bxclock.h"

#include <algorithm>
#include <array>
#include <dlfcn.h>
#include <vector>

namespace predict {

enum class Watch { nothing, time, keep };
inline Watch watch = Watch::nothing;
struct Tally;
inline const Tally* keeping = nullptr; /**< whose calls are kept */

/** The calls of a function and their ticks of the time-stamp counter, since the last time both were set to 0.
 */
struct Tally {
    explicit Tally(const char* function) : name(function) { all().push_back(this); }
    static std::vector<Tally*>& all() {
        static std::vector<Tally*> tallies;
        return tallies;
    }
    const char* name;
    std::vector<long long> ticks;
};

/** Lets the decoder of this program decode a stream; what it writes to standard error is shown. */
bool decode(const char* stream, Watch how);

/** Numbers what decoders have several of (channels) by its address, in the order of appearance. */
class Places {
  public:
    std::size_t of(const void* address) {
        const auto found = std::find(m_addresses.begin(), m_addresses.end(), address);
        if (found != m_addresses.end())
            return static_cast<std::size_t>(found - m_addresses.begin());
        m_addresses.push_back(address);
        return m_addresses.size() - 1;
    }
    void clear() { m_addresses.clear(); }

  private:
    std::vector<const void*> m_addresses;
};

template <class Kept, class Function>
class Block;

template <class Kept, class... Arguments>
class Block<Kept, ZorStatus(Arguments...)> : public Tally {
  public:
    using Function = ZorStatus(Arguments...);

    explicit Block(const char* function)
        : Tally(function), m_real(reinterpret_cast<Function*>(dlsym(RTLD_NEXT, function))),
          m_statement(name, kvParm("Stream", ""),
                      kvNames<bool>("Function", {{"called", true}, {"left out", false}}),
                      [this](kvData& data, const char* stream, bool called) {
                          m_kept.clear();
                          keeping = this;
                          data.need(decode(stream, Watch::keep), "no stream that can be decoded");
                          data.need(!m_kept.empty(), "not called");
                          data.atEnd([this] { m_kept = {}; });
                          Kept *const first = m_kept.data(), *const last = first + m_kept.size();
                          Function* const repeated = called ? m_real : nothing;
                          return [=] {
                              for (Kept* kept = first; kept < last; ++kept)
                                  kept->repeat(repeated);
                              return 0;
                          };
                      }) {}

    ZorStatus operator()(Arguments... arguments) {
        if (watch == Watch::time) {
            const unsigned long long start = zor_get_cpu_counter();
            const ZorStatus status = m_real(arguments...);
            ticks.push_back(static_cast<long long>(zor_get_cpu_counter() - start));
            return status;
        }
        if (watch == Watch::keep && keeping == this)
            m_kept.emplace_back(arguments...);
        return m_real(arguments...);
    }

  private:
    static ZorStatus nothing(Arguments...) { return 0; }

    Function* m_real;
    std::vector<Kept> m_kept;
    kvMeasure m_statement;
};

/** The bytes of a stream from a position on, at most `most`: as many as a parser may read ahead. */
class KeptBits {
  public:
    KeptBits(const Zor8u* from, int fromOffset, const Zor8u* to, std::ptrdiff_t most)
        : m_bytes(from, from + std::min(most, to - from)), m_offset(fromOffset) {}
    void rewind() {
        at = m_bytes.data();
        offset = m_offset;
    }
    const Zor8u* end() const { return m_bytes.data() + m_bytes.size(); }

    const Zor8u* at = nullptr;
    int offset = 0;

  private:
    std::vector<Zor8u> m_bytes;
    int m_offset;
};

/** A copy of an array, and the place where the decoder would have it. */
template <class T, std::size_t length>
class KeptArray {
  public:
    explicit KeptArray(const T* from, std::size_t count = length) {
        std::copy_n(from, count, m_values.begin());
    }
    /** Puts the copy where all arrays of this type and length lie in turn. */
    T* put() const {
        std::copy(m_values.begin(), m_values.end(), s_place.begin());
        return s_place.data();
    }
    const T* values() const { return m_values.data(); }

  private:
    std::array<T, length> m_values{};
    alignas(64) static inline std::array<T, length> s_place;
};

} // namespace predict

#endif
