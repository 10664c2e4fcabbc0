/** \file
 * Parameters of the short form (kvmeasure.h): what a statement says of one, and the parameter that comes of
 * it.
 */
#ifndef KVMEASUREPARM_H
#define KVMEASUREPARM_H

#include "parameters/bxmap.h"
#include "parameters/bxstepiterator.h"

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace kv {

/** What a statement says of a parameter whose values have the type T (int, double, bool, bxString). */
template <class T>
struct Parm {
    bxString name;
    std::vector<T> values;
    bxString range;    /**< for int, in place of the values: "first; last; *factor" or "+step" */
    bool size = false; /**< the number of elements: scaled in cache mode, and clocks are given per element */
};

/** What a statement says of a parameter whose values have names. */
template <class T>
struct NamedParm {
    bxString name;
    std::vector<std::pair<bxString, T>> values;
};

/** The type of parameter for a type of values. */
template <class V>
using Stored =
    std::conditional_t<std::is_same_v<V, bool>, bool,
                       std::conditional_t<std::is_integral_v<V>, int,
                                          std::conditional_t<std::is_floating_point_v<V>, double, bxString>>>;

/** A parameter as the harness knows it, for one run of a test. */
class AnyParm {
  public:
    virtual ~AnyParm() = default;
    virtual bxParameter& parameter() = 0;
    /** The size that the cache mode may scale; null for all others. */
    virtual bxIterator<int>* size() { return nullptr; }
};

/** The parameter for one of a statement: `value()` is what its set-up is given. */
template <class Said>
class LiveParm;

template <>
class LiveParm<Parm<int>> : public AnyParm {
  public:
    explicit LiveParm(const Parm<int>& said);
    bxParameter& parameter() override { return m_parm; }
    bxIterator<int>* size() override { return m_size ? &m_parm : nullptr; }
    int value() const { return m_parm.value(); }

  private:
    bxStepIterator<int> m_parm;
    bool m_size;
};

template <>
class LiveParm<Parm<double>> : public AnyParm {
  public:
    explicit LiveParm(const Parm<double>& said);
    bxParameter& parameter() override { return m_parm; }
    double value() const { return m_parm.value(); }

  private:
    bxIterator<double> m_parm;
};

template <>
class LiveParm<Parm<bxString>> : public AnyParm {
  public:
    explicit LiveParm(const Parm<bxString>& said);
    bxParameter& parameter() override { return m_parm; }
    /** Valid until the next call. */
    const char* value() { return (m_text = m_parm.value()).c_str(); }

  private:
    bxIterator<bxString> m_parm;
    bxString m_text;
};

/** Values with names: the parameter holds their places in the statement. */
class NamedPlaces : public AnyParm {
  public:
    explicit NamedPlaces(const bxString& name) : m_parm(0, name, "") {}
    bxParameter& parameter() override { return m_parm; }

  protected:
    /** Gives a place its name; not yet a value to be measured. */
    void allow(int place, const bxString& name) { m_parm[place] = name; }
    void add(int place) { m_parm.add(place); }
    int place() const { return m_parm.value(); }

  private:
    bxMapIterator<int> m_parm;
};

template <class T>
class LiveParm<NamedParm<T>> : public NamedPlaces {
  public:
    explicit LiveParm(const NamedParm<T>& said) : NamedPlaces(said.name) {
        for (const auto& [name, value] : said.values) {
            const int place = static_cast<int>(m_values.size());
            allow(place, name);
            add(place);
            m_values.push_back(value);
        }
    }
    T value() const { return m_values[static_cast<std::size_t>(place())]; }

  private:
    std::vector<T> m_values;
};

template <>
class LiveParm<Parm<bool>> : public NamedPlaces {
  public:
    explicit LiveParm(const Parm<bool>& said);
    bool value() const { return place() != 0; }
};

template <class>
inline constexpr bool isParm = false;
template <class T>
inline constexpr bool isParm<Parm<T>> = true;
template <class T>
inline constexpr bool isParm<NamedParm<T>> = true;

/** What the set-up of a statement is given for a parameter. */
template <class Said>
using ValueOf = decltype(std::declval<LiveParm<Said>&>().value());

} // namespace kv

/**
 * A parameter and its values: int, double (one value with a point makes all of them double), bool or text.
 *
 *     kvParm("Taps", 8, 32, 128), kvParm("Rate", 0.5, 1.2), kvParm("InPlace", true, false), kvParm("File",
 * "a.wav")
 */
template <class... V>
auto kvParm(const char* name, V... values) {
    using T = kv::Stored<std::common_type_t<V...>>;
    return kv::Parm<T>{name, {static_cast<T>(values)...}, {}};
}

/** A range of integers, written as on the command line: "16; 1024; *2" or "8; 64; +8". */
inline auto kvRange(const char* name, const char* range) {
    return kv::Parm<int>{name, {}, range};
}

/**
 * The parameter that says how many elements are processed: clocks are given per element ("e"), unless the
 * set-up says otherwise, and the cache mode scales it. Values, or a range as text.
 */
template <class... V>
requires(std::is_integral_v<V>&&...) auto kvSize(const char* name, V... values) {
    return kv::Parm<int>{name, {static_cast<int>(values)...}, {}, true};
}
inline auto kvSize(const char* name, const char* range) {
    return kv::Parm<int>{name, {}, range, true};
}

/**
 * A parameter whose values have names, for example of an enumeration:
 *
 *     kvNames<Window>("Window", {{"hann", windowHann}, {"kaiser", windowKaiser}})
 */
template <class T = int>
auto kvNames(const char* name, std::initializer_list<std::pair<const char*, T>> values) {
    return kv::NamedParm<T>{name, {values.begin(), values.end()}};
}

#endif
