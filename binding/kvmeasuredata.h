/** \file
 * The data of one combination of parameter values in the short form (kvmeasure.h).
 */
#ifndef KVMEASUREDATA_H
#define KVMEASUREDATA_H

#include "kvvector.h"

#include <complex>
#include <concepts>
#include <deque>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

class kvData;

namespace kv {

template <class T>
inline constexpr bool isComplexNumber = false;
template <std::floating_point T>
inline constexpr bool isComplexNumber<std::complex<T>> = true;
template <class T>
inline constexpr bool isPairOfNumbers = false; // as C libraries have complex numbers
template <std::floating_point T>
inline constexpr bool isPairOfNumbers<T[2]> = true;
template <class T>
inline constexpr bool isPlainNumber =
    std::is_arithmetic_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, long double>;

/** The element type of a C++ type; kvUndef for one that is neither a number nor a pair of numbers. */
template <class T>
constexpr kvType typeOf() {
    const auto numbers = [](bool isSigned, bool isFloat, bool isPair, std::size_t bytes) {
        return static_cast<kvType>((isSigned ? kvSignedBit : 0) | (isFloat ? kvFloatBit : 0) |
                                   (isPair ? kvComplexBit : 0) | static_cast<int>(8 * bytes));
    };
    if constexpr (isPlainNumber<T>)
        return numbers(std::is_integral_v<T> && std::is_signed_v<T>, std::is_floating_point_v<T>, false,
                       sizeof(T));
    else if constexpr (isComplexNumber<T>)
        return numbers(false, true, true, sizeof(typename T::value_type));
    else if constexpr (isPairOfNumbers<T>)
        return numbers(false, true, true, sizeof(std::remove_extent_t<T>));
    else if constexpr (std::is_class_v<T> && requires(T pair) { pair.re, pair.im; })
        return static_cast<kvType>(typeOf<decltype(T::re)>() | kvComplexBit);
    else
        return kvUndef;
}

/** How a block is to be filled; becomes the block where it is given to a pointer. */
struct Fill {
    SetMode mode;
    double first, last;
    bool ranged; /**< first and last were given */
    bool work;   /**< the function's own memory */
};

/** A number of elements, from a whole number of any type. */
class Length {
  public:
    template <std::integral T>
    Length(T elements) : m_elements(static_cast<long long>(elements)) {}
    operator long long() const { return m_elements; }

  private:
    long long m_elements;
};

/** A block that takes its type from the pointer that it is given to; `Numbers`: one of numbers. */
template <bool Numbers>
class [[nodiscard]] AskedBlock {
  public:
    AskedBlock(kvData& data, long long length, const Fill& fill)
        : m_data(data), m_length(length), m_fill(fill) {}
    AskedBlock(const AskedBlock&) = delete;
    AskedBlock& operator=(const AskedBlock&) = delete;

    template <class T>
    operator T*() &&;

  private:
    kvData& m_data;
    long long m_length;
    Fill m_fill;
};

/** The same, filled element by element with what a function gives for their indices. */
template <class F>
class [[nodiscard]] AskedValues {
  public:
    AskedValues(kvData& data, long long length, F value)
        : m_data(data), m_length(length), m_value(std::move(value)) {}
    AskedValues(const AskedValues&) = delete;
    AskedValues& operator=(const AskedValues&) = delete;

    template <class T>
    operator T*() &&;

  private:
    kvData& m_data;
    long long m_length;
    F m_value;
};

/** Ends a set-up whose combination is passed over; what was to be said has been said. */
struct PassedOver {};

} // namespace kv

/**
 * What the set-up of a `kvMeasure` makes the data of a combination with. All of it lives until the
 * combination has been measured, and then goes, in the reverse order.
 *
 * The type of a block is that of the variable it is given to: numbers, std::complex and pairs of numbers as
 * float[2], or, for `zero`, `output`, `work` and `fill`, any type that can do with zeroed memory. Lengths are
 * in elements. Blocks stand where the run has them (-a, VectorAlign, GuardBlocks, cache mode), are kept and
 * restored by -S and shown by -LD. A block that cannot be had ends the set-up, and the test says so.
 *
 *     float *x = data.random(length), *y = data.output(length);
 */
class kvData {
  public:
    kvData() = default;
    kvData(const kvData&) = delete;
    kvData& operator=(const kvData&) = delete;

    /** Uniform noise, the same in every run: from -1 to 1, for integers over their whole range. */
    kv::AskedBlock<true> random(kv::Length length) { return {*this, length, {smRandom, 0, 0, false, false}}; }
    /** Uniform noise between two bounds. */
    kv::AskedBlock<true> random(kv::Length length, double low, double high) {
        return {*this, length, {smRandom, low, high, true, false}};
    }
    /** A ramp from `first` that reaches `last` at the last element. */
    kv::AskedBlock<true> ramp(kv::Length length, double first, double last) {
        return {*this, length, {smSequence, first, last, true, false}};
    }
    kv::AskedBlock<false> zero(kv::Length length) { return {*this, length, {smZero, 0, 0, true, false}}; }
    /** What the function writes; zeroes until then. */
    kv::AskedBlock<false> output(kv::Length length) { return zero(length); }
    /** Memory for the function's own use: a comparison of two builds does not look at it. */
    kv::AskedBlock<false> work(kv::Length length) { return {*this, length, {smZero, 0, 0, true, true}}; }
    /** Element i is `value(i)`. */
    template <class F>
    kv::AskedValues<F> fill(kv::Length length, F value) {
        return {*this, length, std::move(value)};
    }

    /**
     * A state object of the library and what frees it. A null pointer says that it could not be made: the
     * combination is passed over, with a warning.
     *
     *     auto q = data.state(firfilt_create(h, taps), firfilt_destroy);
     */
    template <class T, class Destroy>
    T state(T made, Destroy destroy) {
        if constexpr (std::is_pointer_v<T>)
            if (!made)
                noState();
        atEnd([made, destroy] { destroy(made); });
        return made;
    }
    /** An object that frees itself. */
    template <class T, class Deleter>
    T* state(std::unique_ptr<T, Deleter> made) {
        T* const object = made.get();
        if (!object)
            noState();
        atEnd([owner = std::shared_ptr<T>(std::move(made))]() mutable { owner.reset(); });
        return object;
    }
    /** Something else to be done when the combination has been measured. */
    void atEnd(std::function<void()> action) { m_ends.push_back(std::move(action)); }

    /** Passes a combination over that makes no sense, unless the condition holds; listings from -LP on say
     * why.
     */
    void need(bool condition, const char* what) {
        if (!condition)
            passOver(what);
    }

    /** What one call does, in units: clocks are given for one of them. */
    void per(double units, const char* unit = "e") {
        m_units = units;
        m_unit = unit;
    }
    /** Floating-point operations of one call, for the column MFlops. */
    void flops(double operations) { m_flops = operations; }

    // What the test asks.
    double units() const { return m_units; }
    const bxString& unit() const { return m_unit; }
    double operations() const { return m_flops; }
    /** A fresh combination: no data, no figures. */
    void begin();
    /** Frees everything. */
    void end();

    /** A block for T elements, filled; of no interest to a set-up. */
    void* make(long long length, int bytes, kvType type, const kv::Fill& fill);

  private:
    [[noreturn]] void passOver(const char* what);
    [[noreturn]] void noState();

    std::deque<kvVector> m_blocks;
    std::vector<std::function<void()>> m_ends;
    double m_units = 1;
    bxString m_unit{" "};
    double m_flops = -1;
};

namespace kv {

template <bool Numbers>
template <class T>
AskedBlock<Numbers>::operator T*() && {
    using Element = std::remove_const_t<T>;
    static_assert(std::is_trivially_copyable_v<Element>, "a block holds plain numbers or plain structures");
    static_assert(!Numbers || typeOf<Element>() != kvUndef,
                  "noise and ramps are for numbers and pairs of them");
    return static_cast<Element*>(m_data.make(m_length, sizeof(Element), typeOf<Element>(), m_fill));
}

template <class F>
template <class T>
AskedValues<F>::operator T*() && {
    using Element = std::remove_const_t<T>;
    static_assert(std::is_trivially_copyable_v<Element>, "a block holds plain numbers or plain structures");
    auto* const block = static_cast<Element*>(
        m_data.make(m_length, sizeof(Element), typeOf<Element>(), {smZero, 0, 0, true, false}));
    for (long long i = 0; i < m_length; ++i)
        block[i] = static_cast<Element>(m_value(static_cast<int>(i)));
    return block;
}

} // namespace kv

#endif
