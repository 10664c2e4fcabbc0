/** \file
 * Element-wise work on typed memory: what fills and texts of vectors are made of.
 */
#ifndef KVELEMENTS_H
#define KVELEMENTS_H

#include "kvtype.h"
#include "zortypes.h"

#include <limits>
#include <type_traits>

namespace kv {

/** A double as a component: integers truncate toward zero and saturate, so that any double is valid. */
template <class T>
T toComponent(double value) {
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(value);
    } else {
        using Limits = std::numeric_limits<T>;
        if (!(value > static_cast<double>(Limits::min())))
            return Limits::min();
        return value >= static_cast<double>(Limits::max()) ? Limits::max() : static_cast<T>(value);
    }
}

/** Calls `f(T* components)` with the component type of a vector; nothing for the undefined type. */
template <class F>
void withComponents(kvType type, void* data, F&& f) {
    switch (kvComponent(type)) {
    case kv8u:
        return f(static_cast<Zor8u*>(data));
    case kv16u:
        return f(static_cast<Zor16u*>(data));
    case kv32u:
        return f(static_cast<Zor32u*>(data));
    case kv64u:
        return f(static_cast<Zor64u*>(data));
    case kv8s:
        return f(static_cast<Zor8s*>(data));
    case kv16s:
        return f(static_cast<Zor16s*>(data));
    case kv32s:
        return f(static_cast<Zor32s*>(data));
    case kv64s:
        return f(static_cast<Zor64s*>(data));
    case kv32f:
        return f(static_cast<Zor32f*>(data));
    case kv64f:
        return f(static_cast<Zor64f*>(data));
    default:
        return;
    }
}

/** The elements that a fill writes to. */
struct Elements {
    kvType type;
    void* data;
    int length;
};

/** Element i becomes `value(i)` in all its components. */
template <class Value>
void fillElements(const Elements& to, Value&& value) {
    withComponents(to.type, to.data, [&]<class T>(T* out) {
        const int parts = kvComponents(to.type);
        for (int i = 0; i < to.length; ++i) {
            const T element = toComponent<T>(value(i));
            for (int part = 0; part < parts; ++part)
                *out++ = element;
        }
    });
}

void fillConst(const Elements& to, double re, double im);
void fillSequence(const Elements& to, double start, double end, double step, bool wrap);
void fillJaehne(const Elements& to, double magn);
/** Uniform noise between two bounds; takes the generator's state and leaves the next. */
void fillRandom(const Elements& to, double lo, double hi, unsigned int& seed);
/** One of the fill modes; nothing for a value that is none. */
void fill(const Elements& to, int mode, double a, double b, unsigned int& seed);

} // namespace kv

#endif
