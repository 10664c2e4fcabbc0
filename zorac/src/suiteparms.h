/** \file
 * How the tests of the suite declare their parameters. Tests of one unit share its parameter objects, so each
 * test sets them anew when it starts.
 */
#ifndef SUITEPARMS_H
#define SUITEPARMS_H

#include "kv.h"

#include <initializer_list>

/** Names a list parameter and gives it its values; the first one is the default. */
template <class T>
void setParm(bxIterator_NSC<T>& parm, const char* name, const char* prompt, std::initializer_list<T> values) {
    parm.reset();
    parm.setName(name);
    parm.setPrompt(prompt);
    for (const T value : values)
        parm.add(value);
}

/** Names a range parameter: first, the operation '+' or '*' and its step, up to last. */
inline void setRangeParm(bxStepIterator<int>& parm, const char* name, const char* prompt, int first, int last,
                         char operation, int step) {
    parm.reset();
    parm.setName(name);
    parm.setPrompt(prompt);
    parm.setRange(first, last, operation, step);
}

/** A value of a named parameter with its name. */
template <class T>
struct NamedValue {
    T value;
    const char* name;
};

/** Names a parameter of named values; `values` are the ones to run through. */
template <class T>
void setMapParm(bxMapIterator<T>& parm, const char* name, const char* prompt,
                std::initializer_list<NamedValue<T>> names, std::initializer_list<T> values) {
    parm.resetMap();
    for (const NamedValue<T>& entry : names)
        parm[entry.value] = entry.name;
    setParm(parm, name, prompt, values);
}

#endif
