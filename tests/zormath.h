/** \file
 * Signals and measures for the tests of the library's float functions.
 */
#ifndef ZORMATH_H
#define ZORMATH_H

#include <cmath>
#include <cstddef>
#include <memory>
#include <random>
#include <vector>

/** White noise of variance 1. */
inline std::vector<float> noise(std::size_t count, unsigned seed = 1) {
    std::mt19937 engine(seed);
    std::normal_distribution<float> draw;
    std::vector<float> values(count);
    for (float& value : values)
        value = draw(engine);
    return values;
}

/** Energy of the reference over energy of the difference, in dB; for `count` values, 400 where they are
 * equal. */
template <class Reference, class Tested>
double snr(const Reference* reference, const Tested* tested, std::size_t count) {
    double signal = 0, error = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double expected = static_cast<double>(reference[i]);
        const double difference = static_cast<double>(tested[i]) - expected;
        signal += expected * expected;
        error += difference * difference;
    }
    return error == 0 ? 400 : 10 * std::log10(signal / error);
}

template <class Reference, class Tested>
double snr(const std::vector<Reference>& reference, const std::vector<Tested>& tested) {
    return reference.size() == tested.size() ? snr(reference.data(), tested.data(), tested.size()) : -400;
}

/** A state made by an "InitAlloc" function, freed by its "Free" function. */
template <class State, int (*freeState)(State*)>
struct Freer {
    void operator()(State* state) const { freeState(state); }
};
template <class State, int (*freeState)(State*)>
using StateOwner = std::unique_ptr<State, Freer<State, freeState>>;

/** A state in caller's memory, on an odd address on purpose. */
template <class State>
class PlacedState {
  public:
    PlacedState(int (*getSize)(int*), int (*init)(State**, unsigned char*)) {
        int size = 0;
        getSize(&size);
        m_memory.resize(static_cast<std::size_t>(size) + 1);
        init(&m_state, m_memory.data() + 1);
    }
    State* get() const { return m_state; }

  private:
    std::vector<unsigned char> m_memory;
    State* m_state = nullptr;
};

/** `lines` lines of `width` elements with a list of pointers to them. */
template <class T>
class Lines {
  public:
    Lines(int lines, int width) : m_width(width), m_data(static_cast<std::size_t>(lines * width)) {
        for (int i = 0; i < lines; ++i)
            m_list.push_back(m_data.data() + i * width);
    }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    T* const* list(int from = 0) { return m_list.data() + from; }
    const T* const* constList(int from = 0) const { return m_list.data() + from; }
    T& at(int line, int i) { return m_data[static_cast<std::size_t>(line * m_width + i)]; }
    std::vector<T>& all() { return m_data; }

  private:
    int m_width;
    std::vector<T> m_data;
    std::vector<T*> m_list;
};

#endif
