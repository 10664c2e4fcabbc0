/** \file
 * The scale factor of functions that take one.
 */
#ifndef KVSCALEITERATOR_H
#define KVSCALEITERATOR_H

#include "kvfunc.h"
#include "parameters/bxiterator.h"

#include <concepts>
#include <initializer_list>

/**
 * The parameter "ScaleFactor": 0, 1, 2 and -1 for functions whose descriptor says that they are scaled, else
 * the single value 0 under no name. A test that needs others gives one to six values of its own.
 */
class kvScaleIterator : public bxIterator<int> {
  public:
    kvScaleIterator() : bxIterator<int>(0, "", "") {}

    /** Whether a function's descriptor contains "Sfs", or "Fix" followed by this iterator's name. */
    bool isScaled(const kvFunc& func) const;
    /** Whether the function given to `init` is scaled. */
    bool isScaled() const { return m_scaled; }

    void init(const bxString& funcName);
    template <std::same_as<int>... Values>
    requires(sizeof...(Values) >= 1 && sizeof...(Values) <= 6) void init(const bxString& funcName,
                                                                         Values... values) {
        m_scaled = isScaled(kvFunc(funcName));
        setValues("ScaleFactor", {values...});
    }

    /** The scale factor stands in the next free column. */
    int colmIndex() const override { return -1; }

  private:
    void setValues(const char* name, std::initializer_list<int> values);

    bool m_scaled = false;
};

#endif
