/** \file
 * Memory of library states: every array of a state lies in one block behind it.
 *
 * The same placing code serves twice: with a measuring arena it only adds up the bytes, with an arena over a
 * block it hands out the arrays. So the size that "GetSize" tells is the size that "Init" uses.
 */
#ifndef ZOR_COMMON_ARENA_H
#define ZOR_COMMON_ARENA_H

#include "zortypes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace zor {

/** Hands out arrays of one block, each on a 64-byte boundary. */
class Arena {
  public:
    static constexpr std::size_t alignment = 64;

    /** An arena that only measures. */
    Arena() = default;
    /** An arena over a block of at least size() bytes of the measuring run; any alignment. */
    explicit Arena(void* block) : m_base(aligned(block)) {}

    bool measuring() const { return !m_base; }

    /** The next `count` elements, uninitialised; null when measuring. T must be trivial. */
    template <class T>
    T* take(std::size_t count) {
        const std::size_t start = m_used;
        m_used += (count * sizeof(T) + alignment - 1) / alignment * alignment;
        return m_base ? reinterpret_cast<T*>(m_base + start) : nullptr;
    }

    /** Bytes that a block needs, whatever its alignment. */
    std::size_t size() const { return m_used + alignment - 1; }

  private:
    static std::byte* aligned(void* block) {
        const auto address = reinterpret_cast<std::uintptr_t>(block);
        return static_cast<std::byte*>(block) + (alignment - address % alignment) % alignment;
    }
    std::byte* m_base = nullptr;
    std::size_t m_used = 0;
};

/**
 * A state in a block of its own. `State::place(Arena&, arguments...)` takes the state first, then its arrays;
 * it returns null when measuring.
 */
template <class State, class... Arguments>
State* allocateState(Arguments... arguments) {
    Arena measure;
    State::place(measure, arguments...);
    const std::size_t bytes = (measure.size() + Arena::alignment) / Arena::alignment * Arena::alignment;
    void* block = std::aligned_alloc(Arena::alignment, bytes);
    if (!block)
        return nullptr;
    Arena arena(block);
    return State::place(arena, arguments...);
}

/** The bytes that `State::place` needs with these arguments. */
template <class State, class... Arguments>
int stateSize(Arguments... arguments) {
    Arena measure;
    State::place(measure, arguments...);
    return static_cast<int>(measure.size());
}

/** Marks a state as set up for one kind of function, so that a foreign or freed one is refused. */
using StateTag = std::uint32_t;

constexpr StateTag stateTag(char a, char b, char c, char d) {
    return static_cast<StateTag>(a) << 24 | static_cast<StateTag>(b) << 16 | static_cast<StateTag>(c) << 8 |
           static_cast<StateTag>(d);
}

/** Frees what allocateState made; null and foreign states are refused with a status. */
template <class State>
ZorStatus freeState(State* state) {
    if (!state)
        return zorStsNullPtrErr;
    if (state->tag != State::expectedTag)
        return zorStsContextErr;
    state->tag = 0;
    std::free(state);
    return zorStsNoErr;
}

} // namespace zor

#endif
